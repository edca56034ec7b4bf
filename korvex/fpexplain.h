#pragma once

/// The explanation of a similarity score: what two fingerprints count, the fragments that the two
/// molecules share, and the weight of each atom.

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "contract/quarnel/subsearch.h"
#include "korvex/fingerprint.h"
#include "korvex/fpatombondset.h"
#include "korvex/measuresim.h"

namespace ZQKorvex {

/// One occurrence in both molecules of a fragment with this text: pattern atoms and bonds are those
/// of molecule a, targets those of b.
struct ZQSharedFragment {
  std::string text;
  ZQMatch match;
};

/// The longest overlap of an explanation, before equal matches are removed (paths are found from
/// either end). Of drugs only MACCS keys of unconnected atoms come near: twenty oxygen atoms in
/// either molecule are 23 million matches of key 140.
inline constexpr std::size_t ZQMostSharedFragments = 1000000;

struct ZQSimilarityExplanation {
  /// What belongs to one of the two molecules.
  struct Side {
    ZQFingerPrint fp;
    /// Items that the fingerprint holds: bits, substrings of a Lingo text (characters, if one of
    /// the two texts is too short to have any), tokens of an unhashed text.
    unsigned int count = 0;
    /// Atoms and bonds in shared fragments, as marks by index. All are false for kinds without
    /// fragments.
    std::vector<bool> sharedAtoms;
    std::vector<bool> sharedBonds;
    /// Their share of the heavy atoms and of the bonds between them, 0.0 to 1.0; 0.0 without any.
    double coveredAtoms = 0.0;
    double coveredBonds = 0.0;
    /// By atom index: the score minus that of the fingerprint without the bits that fragments with
    /// this atom set; with the opposite sign for a distance. Empty for kinds without fragments.
    /// MACCS keys 125, 162 and 166 belong to no atom.
    std::vector<double> weights;
  };
  std::array<Side, 2> sides;
  /// Items that both fingerprints hold.
  unsigned int both = 0;
  /// The score by the measure.
  double score = 0.0;
  /// The matches of `ZQGetFPOverlap` for molecules whose symmetry isn't perceived: those with most
  /// atoms (then bonds) first, otherwise in its order.
  std::vector<ZQSharedFragment> overlap;
};

/// Explains the similarity of two molecules by a measure. A kind without fragments has counts and
/// score only. False if a fingerprint can't be made, and
/// after the errors "ZQExplainSimilarity() : unknown fingerprint type!" and "... : unknown
/// similarity measure type %d!".
///
/// If the matches don't fit in memory or are more than `ZQMostSharedFragments`, an error says so
/// and the overlap is empty; marks and weights are right nevertheless. If the fragments of one
/// molecule don't fit, or are more than `ZQMostFragments` (fppattern.h; without the MACCS keys of
/// unconnected atoms), all of these are empty.
///
/// The molecules must outlive the result, unedited; both are written during the call and can't be
/// used by another thread. Each molecule is enumerated once for its texts and once for its bits;
/// the weights cost a pass over the fragments.
ZQ_EXPORT bool ZQExplainSimilarity(ZQSimilarityExplanation& explanation, const ZQMolBase& a,
                                   const ZQMolBase& b, const ZQFPTypeBase* type,
                                   unsigned int measure = ZQSimMeasure::Tanimoto,
                                   float alpha = 0.95F, float beta = 0.05F);

}  // namespace ZQKorvex
