#include "korvex/fpexplain.h"

#include <algorithm>

#include "korvex/fppattern_local.h"
#include "korvex/measures_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* operation = "ZQExplainSimilarity()";

using Side = ZQSimilarityExplanation::Side;

double ShareOf(unsigned int part, unsigned int whole) {
  return whole == 0 ? 0.0 : static_cast<double>(part) / whole;
}

void ClearLocations(Side& side, const ZQMolBase& mol) {
  side.sharedAtoms.assign(mol.GetMaxAtomIdx(), false);
  side.sharedBonds.assign(mol.GetMaxBondIdx(), false);
  side.coveredAtoms = side.coveredBonds = 0.0;
  side.weights.clear();
}

void MarkSet(Side& side, const ZQAtomBondSet& set) {
  for (const ZQAtomBase* atom : set.GetAtoms()) side.sharedAtoms[atom->GetIdx()] = true;
  for (const ZQBondBase* bond : set.GetBonds()) side.sharedBonds[bond->GetIdx()] = true;
}

void ComputeShares(Side& side, const ZQMolBase& mol) {
  unsigned int atoms = 0;
  unsigned int covered = 0;
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    if (!atom || atom->IsHydrogen()) continue;
    ++atoms;
    covered += side.sharedAtoms[i];
  }
  side.coveredAtoms = ShareOf(covered, atoms);
  unsigned int bonds = 0;
  covered = 0;
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    const ZQBondBase* bond = mol.GetBondAt(i);
    if (!bond || bond->GetBgn()->IsHydrogen() || bond->GetEnd()->IsHydrogen()) continue;
    ++bonds;
    covered += side.sharedBonds[i];
  }
  side.coveredBonds = ShareOf(covered, bonds);
}

// The bits to which each atom contributes, of one fingerprint.
struct Contribution {
  unsigned int own = 0;   // in this fingerprint alone
  unsigned int both = 0;  // in the other one too
};

// Each bit counts once for an atom, however many of its fragments set it.
std::vector<Contribution> ContributionsOf(const ZQFPFragments& fragments, unsigned int numAtoms,
                                          const ZQFingerPrint& fp, const ZQFingerPrint& other) {
  std::vector<ZQFPFragments::Setting> settings = fragments.GetSettings();
  std::ranges::sort(settings, {}, &ZQFPFragments::Setting::bit);
  std::vector<Contribution> contributions(numAtoms);
  std::vector<unsigned int> counted(numAtoms, ~0U);  // the last bit counted for an atom
  for (const auto& [bit, occurrence] : settings) {
    if (!fp.IsBitOn(bit)) continue;  // a second key with one match
    for (const ZQAtomBase* atom : fragments[occurrence].GetAtoms()) {
      const unsigned int idx = atom->GetIdx();
      if (std::exchange(counted[idx], bit) == bit) continue;
      ++(other.IsBitOn(bit) ? contributions[idx].both : contributions[idx].own);
    }
  }
  return contributions;
}

// The measure and the counts of the two fingerprints.
struct Scorer {
  const ZQMeasure& measure;
  ZQCounts counts;
  float alpha;
  float beta;

  // What the score loses without an atom's bits in one of the two fingerprints.
  double WeightOf(const Contribution& gone, bool inA) const {
    ZQCounts rest = counts;
    (inA ? rest.onlyA : rest.onlyB) -= gone.own;
    (inA ? rest.onlyB : rest.onlyA) += gone.both;
    rest.both -= gone.both;
    rest.neither += gone.own;
    const double loss = static_cast<double>(ZQScoreOf(measure, counts, alpha, beta)) -
                        static_cast<double>(ZQScoreOf(measure, rest, alpha, beta));
    return measure.isDistance ? -loss : loss;
  }
};

void ListOverlap(ZQSimilarityExplanation& explanation, const ZQFPFragments& a,
                 const ZQFPFragments& b, bool unique) {
  if (ZQCountPairs(a, b) > ZQMostSharedFragments) {
    ZQThrow.Error("%s : more than %zu shared fragments", operation, ZQMostSharedFragments);
    return;
  }
  ZQMatchList matches(unique);
  std::vector<ZQSharedFragment> overlap;
  ZQAddOverlap(matches, a, b, [&](const std::string& text) { overlap.push_back({text, {}}); });
  std::vector<ZQMatch> list = matches.Take();
  for (std::size_t i = 0; i < list.size(); ++i) overlap[i].match = std::move(list[i]);
  std::ranges::stable_sort(overlap, std::ranges::greater(), [](const ZQSharedFragment& shared) {
    return std::pair(shared.match.NumAtoms(), shared.match.NumBonds());
  });
  explanation.overlap = std::move(overlap);
}

// Marks the atoms and bonds of shared fragments, and weighs the atoms.
void LocateShared(ZQSimilarityExplanation& explanation, const std::array<const ZQMolBase*, 2>& mols,
                  const std::array<ZQFPFragments, 2>& fragments, const Scorer& scorer) {
  ZQForEachShared(fragments[0], fragments[1],
                  [&](const std::string& /*text*/, const auto& ofA, const auto& ofB) {
                    for (const std::size_t i : ofA.places) {
                      MarkSet(explanation.sides[0], fragments[0][i]);
                    }
                    for (const std::size_t i : ofB.places) {
                      MarkSet(explanation.sides[1], fragments[1][i]);
                    }
                  });
  for (std::size_t i = 0; i < mols.size(); ++i) {
    Side& side = explanation.sides[i];
    ComputeShares(side, *mols[i]);
    for (const Contribution& contribution : ContributionsOf(fragments[i], mols[i]->GetMaxAtomIdx(),
                                                            side.fp, explanation.sides[1 - i].fp)) {
      side.weights.push_back(scorer.WeightOf(contribution, i == 0));
    }
  }
}

}  // namespace

bool ZQExplainSimilarity(ZQSimilarityExplanation& explanation, const ZQMolBase& a,
                         const ZQMolBase& b, const ZQFPTypeBase* type, unsigned int measure,
                         float alpha, float beta) {
  explanation = {};
  const ZQFPKind* kind = ZQFindFPKind(type);
  const ZQMeasure* row = ZQFindMeasure(measure);
  if (!kind) ZQThrow.Error("%s : unknown fingerprint type!", operation);
  if (!row) ZQThrow.Error("%s : unknown similarity measure type %u!", operation, measure);
  if (!kind || !row) return false;
  const std::array<const ZQMolBase*, 2> mols{&a, &b};
  auto& sides = explanation.sides;
  if (!ZQMakeFP(sides[0].fp, a, type) || !ZQMakeFP(sides[1].fp, b, type)) return false;
  Scorer scorer{*row, {}, alpha, beta};
  const bool isScored = ZQGuardMemory(operation, [&] {
    scorer.counts = ZQCountItems(sides[0].fp, sides[1].fp);
    explanation.score = ZQGetSimilarity(measure, sides[0].fp, sides[1].fp, alpha, beta);
    explanation.both = scorer.counts.both;
    sides[0].count = scorer.counts.onlyA + scorer.counts.both;
    sides[1].count = scorer.counts.onlyB + scorer.counts.both;
    ClearLocations(sides[0], a);
    ClearLocations(sides[1], b);
    return true;
  });
  if (!isScored) return false;
  const ZQFPKindFragments& functions = kind->fragments;
  if (!functions.collect) return true;
  std::array<ZQFPFragments, 2> fragments;
  const bool isLocated = ZQGuardFragments(operation, [&] {
    for (std::size_t i = 0; i < mols.size(); ++i) {
      if (!functions.collect(fragments[i], *mols[i], type, true)) return false;
    }
    LocateShared(explanation, mols, fragments, scorer);
    return true;
  });
  if (!isLocated) {
    ClearLocations(sides[0], a);
    ClearLocations(sides[1], b);
    return true;
  }
  ZQGuardMemory(operation, [&] {
    ListOverlap(explanation, fragments[0], fragments[1], functions.dropsEqualMatches);
    return true;
  });
  return true;
}

}  // namespace ZQKorvex
