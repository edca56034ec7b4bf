#pragma once

/// Reports as HTML pages: the explanation of a similarity, the patterns of one molecule, and the
/// hits of a search. A page is one file without outside references, and well-formed as XML too. Its
/// data are JSON, which the script of the page (apps/report/) turns into lists and marks.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "apps/command.h"
#include "contract/quarnel/graphmol.h"
#include "korvex/draw.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/fpexplain.h"
#include "korvex/fphistogram.h"
#include "korvex/fppattern.h"

namespace KorvexProgram {

/// Indices of atoms and bonds of one molecule.
struct Marks {
  std::vector<unsigned int> atoms;
  std::vector<unsigned int> bonds;
};

std::vector<unsigned int> IndicesOfMarks(const std::vector<bool>& marks);
/// The members of a set or of both sides of a match, in their order.
Marks MarksOf(const ZQAtomBondSet& set);
std::array<Marks, 2> MarksOf(const ZQMatchBase& match);

/// A molecule with its layout.
struct DrawnMolecule {
  ZQMol mol;
  std::string name;    ///< the title or, without one, the SMILES
  std::string smiles;  ///< in the order of the molecule's atoms
  ZQLayout layout;

  /// Sets name and SMILES.
  void Name();
  /// Computes the layout, oriented like that of the reference, if any; false after a message.
  bool Draw(const DrawnMolecule* reference = nullptr);
};

/// A fragment with all places where it is.
struct ReportFragment {
  std::string text;
  unsigned int size = 0;                ///< atoms of one place
  std::array<unsigned int, 2> times{};  ///< places in each molecule
  std::array<Marks, 2> marks;           ///< of all places together
  int bit = -1;                         ///< none if negative
};

/// One molecule of an explanation.
struct ReportSide {
  std::string name;
  std::string smiles;
  Marks marks;
  double coveredAtoms = 0.0;
  double coveredBonds = 0.0;
  std::vector<double> weights;
};

/// An explanation: of two molecules or, without score and counts, of one.
struct ReportPair {
  std::string measure;
  std::string score;
  std::string formula;
  std::array<unsigned int, 3> counts{};                     ///< of a, of b, common
  std::vector<std::pair<std::string, std::string>> scores;  ///< by other measures
  std::vector<ReportSide> sides;
  std::vector<ReportFragment> fragments;
};

/// The measure of a report, with the weights of Tversky.
struct ReportMeasure {
  unsigned int number = ZQSimMeasure::Tanimoto;
  float alpha = 0.95F;
  float beta = 0.05F;
};

ReportPair DescribePair(const DrawnMolecule& a, const DrawnMolecule& b,
                        const ZQSimilarityExplanation& explanation, const ReportMeasure& measure);
ReportPair DescribePatterns(const DrawnMolecule& drawn, const std::vector<ZQFPPattern>& patterns,
                            const Marks& covered);

struct ReportHit {
  unsigned int rank = 0;
  double score = 0.0;
  ReportPair pair;
  std::string drawing;  ///< SVG
};

struct ReportQuery {
  std::string name;
  std::string smiles;
  std::string drawing;  ///< SVG
  ZQFPHistogram histogram;
  std::vector<ReportHit> hits;
};

/// The drawing of a molecule for a page: with hidden halos, which the page shows. A molecule
/// without layout has an empty one.
std::string DrawForReport(const DrawnMolecule& drawn);

/// Reads a molecule by its index; false after a message. Called by many threads.
using ReadMolecule = std::function<bool(ZQMol& mol, std::uint64_t index)>;
/// Explains and draws the hits of a query on that many threads. Hits that can't be read are left
/// out; those too large to draw have an empty drawing.
ReportQuery DescribeQuery(const DrawnMolecule& query, const std::vector<ZQSimScore>& hits,
                          ZQFPHistogram histogram, const ReadMolecule& readMolecule,
                          const ZQFPTypeBase* type, const ReportMeasure& measure,
                          unsigned int threads);

/// A page with the explanation of a pair or of one molecule, whose drawings follow.
std::string MakeExplanationPage(const ZQFPTypeBase* type, const ReportPair& pair,
                                const std::vector<std::string>& drawings);
/// A page with the hits of queries.
std::string MakeSearchPage(const ZQFPTypeBase* type, unsigned int measure,
                           const std::string& database, const std::vector<ReportQuery>& queries);

}  // namespace KorvexProgram
