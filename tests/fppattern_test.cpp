// Patterns, coverage, overlap and explanations, against definitions in terms of indices: what each
// fragment is, which bits it sets, what two molecules share, and what an atom is worth.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>

#include "korvex/circular.h"
#include "korvex/fpexplain.h"
#include "korvex/fppattern.h"
#include "korvex/fptypes.h"
#include "korvex/maccs_local.h"
#include "korvex/measuresim.h"
#include "korvex/path.h"
#include "korvex/primes.h"
#include "korvex/tree.h"
#include "tests/foreign_mol.h"
#include "tests/generator_helpers.h"
#include "tests/memory_helpers.h"

namespace ZQKorvex {
namespace {

using U = unsigned int;

const ZQFPTypeBase* const maccs = ZQGetFPType(ZQFPType::MACCS166);

std::vector<const ZQFPTypeBase*> HashedTypes() {
  return {ZQGetFPType(ZQFPType::Path), ZQGetFPType(ZQFPType::Circular), ZQGetFPType(ZQFPType::Tree),
          ZQGetPathFPType(64, 2, 4, 1, 5), ZQGetCircularFPType(100, 1, 2, 4239, 1)};
}

std::vector<std::string> DrugSmiles() {
  std::ifstream file(KORVEX_SOURCE_DIR "/data/drugs.smi");
  std::vector<std::string> all;
  for (std::string line; std::getline(file, line);) all.push_back(line.substr(0, line.find('\t')));
  return all;
}

// The molecule, or one of the same bits: of another toolkit, with index holes, hydrogens, a dummy.
std::unique_ptr<ZQMolBase> InGuise(const std::string& smiles, U guise) {
  const ZQMol mol = ReadSmiles(smiles);
  if (guise % 3 == 0) return std::make_unique<ZQMol>(mol);
  auto foreign = std::make_unique<ForeignMol>();
  Fill(*foreign, guise % 3 == 1 ? mol : WithHydrogens(mol), true);
  foreign->NewAtom(0);
  return foreign;
}

std::size_t NumData(const ZQMolBase& mol) {
  std::size_t count = 0;
  const auto add = [&count](const ZQBase& object) {
    for (auto datum = object.GetDataIter(); datum; ++datum) ++count;
  };
  for (auto atom = mol.GetAtoms(); atom; ++atom) add(*atom);
  for (auto bond = mol.GetBonds(); bond; ++bond) add(*bond);
  return count;
}

// An atom is identified by its index, a bond by its index after all atoms.
constexpr U firstBond = 1U << 20;
U IdIn(const ZQMolBase& mol, const ZQAtomBase* atom) {
  EXPECT_EQ(mol.GetAtomAt(atom->GetIdx()), atom);
  return atom->GetIdx();
}
U IdIn(const ZQMolBase& mol, const ZQBondBase* bond) {
  EXPECT_EQ(mol.GetBondAt(bond->GetIdx()), bond);
  return firstBond + bond->GetIdx();
}
std::vector<U> IdsIn(const ZQMolBase& mol, const ZQAtomBondSet& set) {
  std::vector<U> ids;
  for (const ZQAtomBase* atom : set.GetAtoms()) ids.push_back(IdIn(mol, atom));
  for (const ZQBondBase* bond : set.GetBonds()) ids.push_back(IdIn(mol, bond));
  return ids;
}

// An occurrence of a fragment: rank and text, which order an overlap, and the bits that it sets.
struct Piece {
  std::pair<U, std::string> key;
  std::vector<U> ids;
  std::set<U> bits;
  std::set<U> GetMembers() const { return {ids.begin(), ids.end()}; }
};
using Pieces = std::vector<Piece>;

Pieces MACCSPieces(const ZQMolBase& mol) {
  const std::map<U, U> keyOfElement = {{5, 18},  {7, 161}, {8, 164},  {9, 42}, {11, 35}, {14, 20},
                                       {15, 29}, {16, 88}, {17, 103}, {26, 9}, {35, 46}, {53, 27}};
  ZQGraphMol copy(mol);
  ZQPrepareForFingerprinting(copy, ZQFPType::MACCS166);
  Pieces pieces;
  for (auto atom = copy.GetAtoms(); atom; ++atom) {
    const U element = atom->GetAtomicNum();
    const auto key = keyOfElement.find(element);
    if (key == keyOfElement.end()) continue;
    const std::string text = "[#" + std::to_string(element) + "]";
    pieces.push_back({{element, text}, {atom->GetIdx()}, {key->second - 1}});
  }
  for (const MACCSKey& key : MACCS166Keys::Get()) {
    for (auto match = key.query.Match(copy, true); match; ++match) {
      Piece piece{{1000 + key.number, key.smarts}, {}, {key.number - 1}};
      for (const auto& pair : match->GetAtomPairs()) piece.ids.push_back(IdIn(copy, pair.target));
      for (const auto& pair : match->GetBondPairs()) piece.ids.push_back(IdIn(copy, pair.target));
      if (key.secondNumber != 0) piece.bits.insert(key.secondNumber - 1);
      pieces.push_back(piece);
    }
  }
  return pieces;
}

// In the order of coverage.
Pieces PiecesOf(const ZQMolBase& mol, const ZQFPTypeBase* type) {
  if (type == maccs) return MACCSPieces(mol);
  Pieces pieces;
  for (auto pattern = ZQGetFPPatterns(mol, type); pattern; ++pattern) {
    pieces.push_back({{0, pattern->GetSMARTS()}, IdsIn(mol, *pattern), {pattern->GetBit()}});
  }
  return pieces;
}

// By key, without repeats.
auto Grouped(const Pieces& pieces) {
  std::map<std::pair<U, std::string>, Pieces> groups;
  std::set<std::pair<std::pair<U, std::string>, std::set<U>>> seen;
  for (const Piece& piece : pieces) {
    if (seen.insert({piece.key, piece.GetMembers()}).second) groups[piece.key].push_back(piece);
  }
  return groups;
}

using Shared = std::pair<std::string, std::vector<std::pair<U, U>>>;

std::vector<Shared> OverlapOf(const Pieces& a, const Pieces& b, bool dropsEqual) {
  auto groupsB = Grouped(b);
  std::vector<Shared> overlap;
  std::set<std::pair<std::set<U>, std::set<U>>> seen;
  for (const auto& [key, ofA] : Grouped(a)) {
    for (const Piece& x : ofA) {
      for (const Piece& y : groupsB[key]) {
        if (!seen.insert({x.GetMembers(), y.GetMembers()}).second && dropsEqual) continue;
        overlap.push_back({key.second, {}});
        for (std::size_t i = 0; i < x.ids.size(); ++i) {
          overlap.back().second.emplace_back(x.ids[i], y.ids.at(i));
        }
      }
    }
  }
  return overlap;
}

Shared SharedOf(const ZQMatchBase& match, const ZQMolBase& a, const ZQMolBase& b,
                const std::string& text) {
  Shared shared{text, {}};
  const auto add = [&](const auto& pairs) {
    for (const auto& [inA, inB] : pairs) shared.second.emplace_back(IdIn(a, inA), IdIn(b, inB));
  };
  add(match.GetAtomPairs());
  add(match.GetBondPairs());
  return shared;
}

template <class T>
std::vector<T> GeneratedIds(U kind, Prepared<T>& from, U min, U max) {
  std::vector<T> ids;
  auto& [mol, atoms, bonds] = from;
  if (mol.NumAtoms() == 0) return ids;
  if (kind == ZQFPType::Path) ZQPathIdGeneratorStack(ids, mol, atoms, bonds, min, max);
  if (kind == ZQFPType::Circular) ZQCircularIdGenerator(ids, mol, atoms, bonds, min, max, 0, 0);
  if (kind == ZQFPType::Tree) ZQTreeIdGenerator(ids, mol, atoms, bonds, min, max, 0, 0);
  return ids;
}

std::multiset<std::string> AtomNames(const std::string& text) {
  std::multiset<std::string> names;
  for (std::size_t at = 0; (at = text.find('[', at)) != std::string::npos; ++at) {
    names.insert(text.substr(at, text.find(']', at) - at));
  }
  return names;
}

void ExpectPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type) {
  const bool isPath = type->GetFPType() == ZQFPType::Path;
  const auto [numbits, min, max, atype, btype] = ZQDecodeFPTypeID(type->GetID());
  Prepared<U> numbers(mol, atype, btype);
  Prepared<std::string> texts(mol, atype, btype);
  std::vector<U> ids;
  std::vector<std::string> names;
  std::set<U> bits;
  for (auto pattern = ZQGetFPPatterns(mol, type); pattern; ++pattern) {
    ids.push_back(pattern->GetHash());
    names.push_back(pattern->GetSMARTS());
    EXPECT_EQ(pattern->GetBit(), ids.back() % ZQGetHashSize(numbits));
    bits.insert(pattern->GetBit());
    // Each bond leads to the atom before, in an environment or tree to the earliest neighbour.
    const auto& atoms = pattern->GetAtoms();
    ASSERT_EQ(atoms.size(), pattern->GetBonds().size() + 1);
    std::string text = texts.atoms[IdIn(mol, atoms[0])];
    for (U i = 1; i < atoms.size(); ++i) {
      const ZQBondBase* bond = pattern->GetBonds()[i - 1];
      text += texts.bonds[IdIn(mol, bond) - firstBond] + texts.atoms[IdIn(mol, atoms[i])];
      std::set<const ZQAtomBase*> neighbours;
      for (auto other = atoms[i]->GetAtoms(); other; ++other) neighbours.insert(&*other);
      std::size_t earlier = isPath ? i - 1 : 0;
      while (!neighbours.contains(atoms[earlier])) ++earlier;
      EXPECT_EQ(bond->GetNbr(atoms[i]), atoms[earlier]);
    }
    // A canonical text has the same atoms in another order.
    EXPECT_TRUE(isPath ? names.back() == text : AtomNames(names.back()) == AtomNames(text));
  }
  EXPECT_EQ(ids, GeneratedIds(type->GetFPType(), numbers, min, max));
  EXPECT_EQ(names, GeneratedIds(type->GetFPType(), texts, min, max));
  ZQFingerPrint fp;
  EXPECT_TRUE(ZQMakeFP(fp, mol, type));
  EXPECT_EQ(std::vector<U>(bits.begin(), bits.end()), BitsOf(fp));
}

void ExpectCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type, const Pieces& pieces) {
  for (const bool unique : {false, true}) {
    std::set<std::pair<U, std::string>> keys;
    std::set<std::set<U>> seen;
    auto set = ZQGetFPCoverage(mol, type, unique);
    for (const Piece& piece : pieces) {
      if (!keys.insert(piece.key).second && unique) continue;
      if (!seen.insert(piece.GetMembers()).second) continue;
      ASSERT_TRUE(set);
      EXPECT_EQ(IdsIn(mol, *set), piece.ids);
      ++set;
    }
    EXPECT_FALSE(set);
  }
}

// Marks, shares and weights of side `s`, from the pieces and new fingerprints.
void ExpectSide(const ZQSimilarityExplanation& explanation, std::size_t s, const ZQMolBase& mol,
                const Pieces& pieces, const Pieces& others, U measure) {
  const auto& side = explanation.sides[s];
  const auto groups = Grouped(others);
  std::set<U> shared;
  std::vector<ZQFingerPrint> without(mol.GetMaxAtomIdx(), side.fp);
  for (const Piece& piece : pieces) {
    for (const U id : piece.ids) {
      if (groups.contains(piece.key)) shared.insert(id);
      for (const U bit : piece.bits) {
        if (id < firstBond) without[id].SetBitOff(bit);
      }
    }
  }
  double heavyAtoms = 0;
  double heavyBonds = 0;
  std::vector<bool> atoms;
  std::vector<bool> bonds;
  std::vector<double> weights;
  const ZQFingerPrint& other = explanation.sides[1 - s].fp;
  for (U i = 0; i < mol.GetMaxBondIdx(); ++i) bonds.push_back(shared.contains(firstBond + i));
  for (U i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    atoms.push_back(shared.contains(i));
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    if (atom && !atom->IsHydrogen()) {
      ++heavyAtoms;
      heavyBonds += atom->GetHvyDegree() / 2.0;
    }
    const ZQFingerPrint& rest = without[i];
    const double loss = explanation.score - ZQGetSimilarity(measure, s == 0 ? rest : other,
                                                            s == 0 ? other : rest, 0.9F, 0.2F);
    weights.push_back(measure == ZQSimMeasure::Manhattan ? -loss : loss);
  }
  EXPECT_EQ(side.sharedAtoms, atoms);
  EXPECT_EQ(side.sharedBonds, bonds);
  EXPECT_EQ(side.weights, weights);
  EXPECT_DOUBLE_EQ(side.coveredAtoms * heavyAtoms, 1.0 * std::ranges::count(atoms, true));
  EXPECT_DOUBLE_EQ(side.coveredBonds * heavyBonds, 1.0 * std::ranges::count(bonds, true));
}

// Returns the number of shared fragments.
std::size_t ExpectExplained(const ZQMolBase& a, const ZQMolBase& b, const ZQFPTypeBase* type,
                            U measure) {
  const Pieces piecesA = PiecesOf(a, type);
  const Pieces piecesB = PiecesOf(b, type);
  ExpectCoverage(a, type, piecesA);
  std::vector<Shared> expected = OverlapOf(piecesA, piecesB, type->GetFPType() == ZQFPType::Path);
  std::size_t i = 0;
  for (auto match = ZQGetFPOverlap(a, b, type); match && i < expected.size(); ++match, ++i) {
    EXPECT_TRUE(SharedOf(*match, a, b, expected[i].first) == expected[i]);
  }
  EXPECT_EQ(i, expected.size());

  ZQSimilarityExplanation explanation;
  EXPECT_TRUE(ZQExplainSimilarity(explanation, a, b, type, measure, 0.9F, 0.2F));
  const auto& [sideA, sideB] = explanation.sides;
  EXPECT_EQ(explanation.score, ZQGetSimilarity(measure, sideA.fp, sideB.fp, 0.9F, 0.2F));
  const std::vector<U> bitsA = BitsOf(sideA.fp);
  EXPECT_EQ(sideA.count, bitsA.size());
  EXPECT_EQ(sideB.count, BitsOf(sideB.fp).size());
  EXPECT_EQ(explanation.both,
            std::ranges::count_if(bitsA, [&fp = sideB.fp](U bit) { return fp.IsBitOn(bit); }));
  ExpectSide(explanation, 0, a, piecesA, piecesB, measure);
  ExpectSide(explanation, 1, b, piecesB, piecesA, measure);
  std::ranges::stable_sort(expected, std::ranges::greater(), [](const Shared& shared) {
    const auto isAtom = [](const auto& pair) { return pair.first < firstBond; };
    return std::pair(std::ranges::count_if(shared.second, isAtom), shared.second.size());
  });
  std::vector<Shared> found;
  for (const auto& [text, match] : explanation.overlap) {
    found.push_back(SharedOf(match, a, b, text));
  }
  EXPECT_TRUE(found == expected);
  return expected.size();
}

TEST(FPPattern, FollowsTheDefinitionsAlsoAfterAnEdit) {
  std::vector<std::string> all = DrugSmiles();
  ASSERT_GT(all.size(), 400U);
  all.insert(all.end(), SampleSmiles().begin(), SampleSmiles().end());
  all.insert(all.end(), {"[H][H]", "*", "[2H]O[2H]", "*C*", "CC.CC.O", "[H]C#[N+][H]"});
  std::size_t compared = 0;
  U measure = 0;
  std::vector<const ZQFPTypeBase*> types = HashedTypes();
  types.push_back(maccs);
  for (U m = 0; m < all.size(); ++m) {
    const std::string& partner = all[(m + 9) % all.size()];
    SCOPED_TRACE(all[m] + " " + partner);
    const std::unique_ptr<ZQMolBase> a = InGuise(all[m], m);
    const std::unique_ptr<ZQMolBase> b = InGuise(partner, m / 3);
    for (const bool edited : {false, true}) {
      if (edited) a->DeleteAtom(&*a->GetAtoms());
      for (const ZQFPTypeBase* type : HashedTypes()) ExpectPatterns(*a, type);
      if (m % 7 != 0) break;
      for (const ZQFPTypeBase* type : types) {
        measure = measure % (ZQSimMeasure::Number::End - 1) + 1;
        compared += ExpectExplained(*a, *b, type, measure);
      }
    }
    EXPECT_EQ(NumData(*a) + NumData(*b), 0U);
  }
  EXPECT_GT(compared, 50000U);
}

template <class T>
std::size_t Count(ZQIter<T> iter) {
  std::size_t count = 0;
  for (; iter; ++iter) ++count;
  return count;
}

TEST(FPPattern, SmallMolecules) {
  const ZQFPTypeBase* const atomsOnly = ZQGetCircularFPType(4096, 0, 0, 4239, 1);
  const ZQMol benzene = "c1ccccc1"_mol;
  EXPECT_EQ(Count(ZQGetFPCoverage(benzene, atomsOnly, true)), 1U);
  EXPECT_EQ(Count(ZQGetFPCoverage(benzene, atomsOnly, false)), 6U);

  // A copy of an iterator is independent of it, and shares the matches.
  auto overlap = ZQGetFPOverlap(benzene, benzene, atomsOnly);
  ++overlap;
  const auto copy = overlap;
  const ZQMatchBase* const second = &*overlap;
  overlap = {};
  EXPECT_EQ(&*copy, second);
  EXPECT_EQ(Count(copy), 35U);

  // Perceived classes hide symmetric atoms from patterns, but not from an explanation.
  const ZQFPTypeBase* const type = ZQGetPathFPType(4096, 0, 0, 1, 1);
  ZQMol plain = "CC(C)(C)C"_mol;
  ZQPrepareForFingerprinting(plain, ZQFPType::Path);
  ZQMol perceived = plain;
  ZQPerceiveSymmetry(perceived, true, false);
  EXPECT_EQ(Count(ZQGetFPPatterns(plain, type)), 5U);
  EXPECT_EQ(Count(ZQGetFPPatterns(perceived, type)), 2U);
  ZQSimilarityExplanation explanation;
  EXPECT_TRUE(ZQExplainSimilarity(explanation, perceived, plain, type));
  EXPECT_EQ(explanation.overlap.size(), 25U);
  EXPECT_EQ(explanation.sides[0].weights, std::vector<double>(5, 1.0));
  EXPECT_TRUE(perceived.IsPerceived(ZQPerceived::Symmetry));
}

TEST(FPPattern, KindsAndTheirMessages) {
  struct Unknown final : ZQFPTypeBase {
    Unknown() : ZQFPTypeBase(1, 0) {}
    unsigned int GetFPType() const override { return 4711; }
    std::string GetFPTypeString() const override { return "Unknown"; }
  } const unknown;
  // Of patterns, coverage, overlap and, unless there is another message, the explanation.
  const auto all = [](const std::string& text, const std::string& explanation = {}) {
    Texts texts{"ZQGetFPPatterns() " + text, "ZQGetFPCoverage() " + text,
                "ZQGetFPOverlap() " + text};
    if (!explanation.empty()) texts.push_back(explanation);
    return texts;
  };
  const std::pair<const ZQFPTypeBase*, Texts> cases[] = {
      {ZQGetFPType(ZQFPType::Path), {}},
      {maccs, {"ZQGetFPPatterns() is not available for MACCS fingerprint!"}},
      {ZQGetFPType(ZQFPType::Lingo), all("is not available for Lingo fingerprint!")},
      {ZQGetFPType(ZQFPType::UnhashedPath), all("unknown fingerprint type!")},
      {&unknown,
       all("unknown fingerprint type!", "ZQExplainSimilarity() : unknown fingerprint type!")}};
  CapturedReports reports;
  ZQMol mol = "CCOC(=O)C"_mol;
  const ZQMol other = "CCOC(=O)CC"_mol;
  ZQSimilarityExplanation explanation;
  const auto& [a, b] = explanation.sides;
  for (const auto& [type, messages] : cases) {
    const bool hasFragments = messages.size() < 2;
    for (const bool valid : {false, true}) {
      mol.SetValid(valid);
      EXPECT_EQ(ZQGetFPPatterns(mol, type).IsValid(), valid && messages.empty());
      EXPECT_EQ(ZQGetFPCoverage(mol, type, true).IsValid(), valid && hasFragments);
      EXPECT_EQ(ZQGetFPOverlap(other, mol, type).IsValid(), valid && hasFragments);
      EXPECT_EQ(ZQExplainSimilarity(explanation, other, mol, type), valid && type != &unknown);
      EXPECT_EQ(a.weights.empty(), !valid || !hasFragments);
      const bool isReported = valid || type == &unknown;
      EXPECT_EQ(reports.Take(), valid ? messages : isReported ? Texts{messages[3]} : Texts{});
    }
    if (hasFragments || type == &unknown) continue;
    EXPECT_EQ(explanation.score, ZQTanimoto(a.fp, b.fp));
    const double items = a.count + b.count - explanation.both;
    EXPECT_NEAR(explanation.score, explanation.both / items, 1e-6);
    EXPECT_EQ(a.sharedAtoms, std::vector<bool>(other.GetMaxAtomIdx()));
    EXPECT_TRUE(explanation.overlap.empty() && explanation.both != 0);
  }
  const ZQFPTypeBase* const path = ZQGetFPType(ZQFPType::Path);
  EXPECT_FALSE(ZQGetFPPatterns(mol, nullptr));
  EXPECT_EQ(reports.Take(),
            (Texts{"Assertion", "ZQGetFPPatterns() invalid fingerprint type pointer!"}));
  EXPECT_FALSE(ZQGetTreeFPPatterns(mol, path) || ZQGetCircularFPCoverage(mol, path, true) ||
               ZQGetMACCSFPCoverage(mol, path, true) || ZQGetMACCSFPOverlap(mol, mol, path) ||
               ZQGetPathFPOverlap(mol, mol, nullptr));
  EXPECT_EQ(reports.Take(), Texts(5, "Assertion"));
  EXPECT_FALSE(ZQGetFPOverlap("CC"_mol, "[Na+]"_mol, path));  // nothing in common
  EXPECT_FALSE(ZQExplainSimilarity(explanation, mol, mol, path, 7));
  EXPECT_EQ(reports.Take(), Texts{"ZQExplainSimilarity() : unknown similarity measure type 7!"});
}

TEST(FPPattern, TooMuchIsAnError) {
  const auto sugar = [](std::size_t n) { return ReadSmiles("C" + Repeated("C(O)", n) + "C"); };
  CapturedReports reports;
  ZQSimilarityExplanation explanation;
  const auto& side = explanation.sides[0];
  // The key of four oxygen atoms: 4845 matches, and more than can be listed.
  std::vector<double> weights;
  for (const std::size_t n : {20, 75}) {
    const ZQMol mol = sugar(n);
    EXPECT_TRUE(ZQExplainSimilarity(explanation, mol, mol, maccs));
    EXPECT_EQ(reports.Take(), Texts{"ZQExplainSimilarity() : more than 1000000 shared fragments"});
    EXPECT_EQ(side.coveredAtoms, 1.0);
    std::vector<double> first(side.weights.begin(), side.weights.begin() + 20);
    if (weights.empty()) weights = first;
    EXPECT_EQ(first, weights);
  }
  // Three of 170 neighbours, as a connected key, and four of 200 atoms.
  for (const ZQMol& mol : {ReadSmiles("[U]" + Repeated("(F)", 170)), sugar(200)}) {
    EXPECT_TRUE(ZQGetFPCoverage(mol, maccs, true));
    EXPECT_FALSE(ZQGetFPCoverage(mol, maccs, false) || ZQGetFPOverlap(mol, mol, maccs));
    EXPECT_EQ(reports.Take(),
              (Texts{"ZQGetMACCSFPCoverage() : more than 4000000 fragments in a molecule",
                     "ZQGetMACCSFPOverlap() : more than 4000000 fragments in a molecule"}));
    EXPECT_TRUE(ZQExplainSimilarity(explanation, mol, mol, maccs));
    EXPECT_EQ(reports.Take().size(), 1U);
    EXPECT_EQ(side.weights.empty(), mol.NumBonds() == 170);
  }

  const ZQMol chain = ReadSmiles(Repeated("c1ccc(cc1)", 40) + "C");
  const ZQFPTypeBase* const tree = ZQGetFPType(ZQFPType::Tree);
  const ZQFPTypeBase* const path = ZQGetPathFPType(4096, 0, 1, 191, 3);
  EXPECT_TRUE(ZQExplainSimilarity(explanation, chain, chain, path));
  weights = side.weights;
  for (const bool overlapOnly : {true, false}) {
    largestRequest = std::size_t{1} << (overlapOnly ? 21 : 15);
    const bool explained = ZQExplainSimilarity(explanation, chain, chain, path);
    const bool found = ZQGetFPOverlap(chain, chain, tree).IsValid();
    const bool covers = ZQGetFPCoverage(chain, tree, false).IsValid();
    largestRequest = std::numeric_limits<std::size_t>::max();
    EXPECT_TRUE(explained && !found && covers == overlapOnly);
    Texts errors = {"ZQExplainSimilarity() : out of memory",
                    "ZQGetTreeFPOverlap() : out of memory"};
    if (!overlapOnly) errors.emplace_back("ZQGetTreeFPCoverage() : out of memory");
    EXPECT_EQ(reports.Take(), errors);
    EXPECT_TRUE(explanation.overlap.empty() && explanation.score == 1.0);
    EXPECT_EQ(side.weights, overlapOnly ? weights : std::vector<double>());
    EXPECT_EQ(side.sharedBonds, std::vector<bool>(chain.GetMaxBondIdx(), overlapOnly));
    EXPECT_EQ(NumData(chain), 0U);
  }

  const ZQMol star = ReadSmiles("[U]" + Repeated("(C)", 127) + "C");
  EXPECT_FALSE(ZQGetFPPatterns(star, ZQGetFPType(ZQFPType::Circular)));
  EXPECT_EQ(reports.Take(),
            Texts{"ZQGetCircularFPPatterns() : an atom with 128 neighbours (at most "
                  "127 can be told apart in a text)"});
  EXPECT_TRUE(ZQGetFPPatterns(star, ZQGetTreeFPType(4096, 0, 1, 63, 1)));
}

}  // namespace
}  // namespace ZQKorvex
