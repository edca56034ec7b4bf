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
using Indices = std::vector<U>;
using Pairs = std::vector<std::pair<U, U>>;

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

U IndexIn(const ZQMolBase& mol, const ZQAtomBase* atom) {
  EXPECT_EQ(mol.GetAtomAt(atom->GetIdx()), atom);
  return atom->GetIdx();
}
U IndexIn(const ZQMolBase& mol, const ZQBondBase* bond) {
  EXPECT_EQ(mol.GetBondAt(bond->GetIdx()), bond);
  return bond->GetIdx();
}
template <class T>
Indices IndicesIn(const ZQMolBase& mol, const std::vector<T*>& items) {
  Indices indices;
  for (const T* item : items) indices.push_back(IndexIn(mol, item));
  return indices;
}

// An occurrence of a fragment.
struct Piece {
  Indices atoms;
  Indices bonds;
  std::set<U> bits;

  std::pair<std::set<U>, std::set<U>> Members() const {
    return {{atoms.begin(), atoms.end()}, {bonds.begin(), bonds.end()}};
  }
};
// By rank and text, in the order of an overlap.
using Pieces = std::map<std::pair<U, std::string>, std::vector<Piece>>;

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
    pieces[{element, "[#" + std::to_string(element) + "]"}].push_back(
        {{atom->GetIdx()}, {}, {key->second - 1}});
  }
  for (const MACCSKey& key : MACCS166Keys::Get()) {
    for (auto match = key.query.Match(copy, true); match; ++match) {
      Piece piece;
      for (const auto& pair : match->GetAtomPairs()) piece.atoms.push_back(pair.target->GetIdx());
      for (const auto& pair : match->GetBondPairs()) piece.bonds.push_back(pair.target->GetIdx());
      piece.bits = {key.number - 1};
      if (key.secondNumber != 0) piece.bits.insert(key.secondNumber - 1);
      pieces[{1000 + key.number, key.smarts}].push_back(piece);
    }
  }
  return pieces;
}

Pieces PiecesOf(const ZQMolBase& mol, const ZQFPTypeBase* type) {
  if (type == maccs) return MACCSPieces(mol);
  Pieces pieces;
  for (auto pattern = ZQGetFPPatterns(mol, type); pattern; ++pattern) {
    pieces[{0, pattern->GetSMARTS()}].push_back({IndicesIn(mol, pattern->GetAtoms()),
                                                 IndicesIn(mol, pattern->GetBonds()),
                                                 {pattern->GetBit()}});
  }
  return pieces;
}

struct Shared {
  std::string text;
  Pairs atoms;
  Pairs bonds;
  bool operator==(const Shared&) const = default;
};

Pairs Zip(const Indices& a, const Indices& b) {
  EXPECT_EQ(a.size(), b.size());
  Pairs pairs;
  for (std::size_t i = 0; i < a.size(); ++i) pairs.emplace_back(a[i], b[i]);
  return pairs;
}

std::vector<Shared> Overlap(const Pieces& a, const Pieces& b, bool dropsEqual) {
  std::vector<Shared> overlap;
  std::set<std::vector<std::set<U>>> seen;
  const auto distinct = [](const std::vector<Piece>& all) {
    std::set<std::pair<std::set<U>, std::set<U>>> members;
    std::vector<Piece> kept;
    for (const Piece& piece : all) {
      if (members.insert(piece.Members()).second) kept.push_back(piece);
    }
    return kept;
  };
  for (const auto& [key, pieces] : a) {
    if (!b.contains(key)) continue;
    for (const Piece& x : distinct(pieces)) {
      for (const Piece& y : distinct(b.at(key))) {
        const auto [atomsX, bondsX] = x.Members();
        const auto [atomsY, bondsY] = y.Members();
        if (!seen.insert({atomsX, bondsX, atomsY, bondsY}).second && dropsEqual) continue;
        overlap.push_back({key.second, Zip(x.atoms, y.atoms), Zip(x.bonds, y.bonds)});
      }
    }
  }
  return overlap;
}

Shared SharedOf(const ZQMatchBase& match, const ZQMolBase& a, const ZQMolBase& b,
                const std::string& text) {
  Shared shared{text, {}, {}};
  for (const auto& pair : match.GetAtomPairs()) {
    shared.atoms.emplace_back(IndexIn(a, pair.pattern), IndexIn(b, pair.target));
  }
  for (const auto& pair : match.GetBondPairs()) {
    shared.bonds.emplace_back(IndexIn(a, pair.pattern), IndexIn(b, pair.target));
  }
  return shared;
}

template <class T>
std::vector<T> IdsOf(U kind, Prepared<T>& from, U min, U max) {
  std::vector<T> ids;
  auto& [mol, atoms, bonds] = from;
  if (mol.NumAtoms() == 0) return ids;
  if (kind == ZQFPType::Path) ZQPathIdGeneratorStack(ids, mol, atoms, bonds, min, max);
  if (kind == ZQFPType::Circular) ZQCircularIdGenerator(ids, mol, atoms, bonds, min, max, 0, 0);
  if (kind == ZQFPType::Tree) ZQTreeIdGenerator(ids, mol, atoms, bonds, min, max, 0, 0);
  return ids;
}

// Checks the spanning bonds of a pattern, and its text and identifier against the invariants of its
// atoms and bonds.
void ExpectIsItsAtoms(const ZQFPPattern& pattern, const ZQMolBase& mol, U kind,
                      const Prepared<std::string>& texts, const Prepared<U>& numbers) {
  const Indices atoms = IndicesIn(mol, pattern.GetAtoms());
  const Indices bonds = IndicesIn(mol, pattern.GetBonds());
  ASSERT_EQ(atoms.size(), bonds.size() + 1);
  std::string text = texts.atoms[atoms[0]];
  U hash = numbers.atoms[atoms[0]] * PublishedMultiplier(0);
  for (U i = 0; i < bonds.size(); ++i) {
    text += texts.bonds[bonds[i]] + texts.atoms[atoms[i + 1]];
    hash += numbers.bonds[bonds[i]] * PublishedMultiplier(2 * i + 1) +
            numbers.atoms[atoms[i + 1]] * PublishedMultiplier(2 * i + 2);
    // To the atom before, or to the earliest neighbour.
    std::set<const ZQAtomBase*> neighbours;
    for (auto other = pattern.GetAtoms()[i + 1]->GetAtoms(); other; ++other) {
      neighbours.insert(&*other);
    }
    U earlier = kind == ZQFPType::Path ? i : 0;
    while (!neighbours.contains(pattern.GetAtoms()[earlier])) ++earlier;
    EXPECT_EQ(pattern.GetBonds()[i]->GetNbr(pattern.GetAtoms()[i + 1]),
              pattern.GetAtoms()[earlier]);
  }
  if (kind == ZQFPType::Path) {
    EXPECT_EQ(pattern.GetSMARTS(), text);
    EXPECT_EQ(pattern.GetHash(), hash);
    return;
  }
  // A canonical text has the same atoms in another order.
  const auto atomsOf = [](const std::string& all) {
    std::multiset<std::string> found;
    for (std::size_t at = 0; (at = all.find('[', at)) != std::string::npos; ++at) {
      found.insert(all.substr(at, all.find(']', at) - at));
    }
    return found;
  };
  EXPECT_EQ(atomsOf(pattern.GetSMARTS()), atomsOf(text));
}

TEST(FPPattern, PatternsAreTheFragmentsThatSetTheBits) {
  std::vector<std::string> all = DrugSmiles();
  ASSERT_GT(all.size(), 400U);
  all.insert(all.end(), SampleSmiles().begin(), SampleSmiles().end());
  all.insert(all.end(), {"[H][H]", "*", "[2H]O[2H]", "*C*", "CC.CC.O", "[H]C#[N+][H]"});
  for (U m = 0; m < all.size(); ++m) {
    SCOPED_TRACE(all[m]);
    const std::unique_ptr<ZQMolBase> mol = InGuise(all[m], m);
    for (const ZQFPTypeBase* type : HashedTypes()) {
      const U kind = type->GetFPType();
      const auto [numbits, min, max, atype, btype] = ZQDecodeFPTypeID(type->GetID());
      Prepared<U> numbers(*mol, atype, btype);
      Prepared<std::string> texts(*mol, atype, btype);
      Indices ids;
      std::vector<std::string> names;
      std::set<U> bits;
      for (auto pattern = ZQGetFPPatterns(*mol, type); pattern; ++pattern) {
        ExpectIsItsAtoms(*pattern, *mol, kind, texts, numbers);
        ids.push_back(pattern->GetHash());
        names.push_back(pattern->GetSMARTS());
        EXPECT_EQ(pattern->GetBit(), ids.back() % ZQGetHashSize(numbits));
        bits.insert(pattern->GetBit());
      }
      EXPECT_EQ(ids, IdsOf(kind, numbers, min, max));
      EXPECT_EQ(names, IdsOf(kind, texts, min, max));
      ZQFingerPrint fp;
      EXPECT_TRUE(ZQMakeFP(fp, *mol, type));
      EXPECT_EQ(Indices(bits.begin(), bits.end()), BitsOf(fp));
      EXPECT_EQ(NumData(*mol), 0U);
    }
  }
}

std::set<std::pair<std::set<U>, std::set<U>>> CoverageOf(const ZQMolBase& mol,
                                                         const ZQFPTypeBase* type, bool unique) {
  std::set<std::pair<std::set<U>, std::set<U>>> sets;
  for (auto set = ZQGetFPCoverage(mol, type, unique); set; ++set) {
    const Piece piece{IndicesIn(mol, set->GetAtoms()), IndicesIn(mol, set->GetBonds()), {}};
    EXPECT_TRUE(sets.insert(piece.Members()).second);
  }
  return sets;
}

void ExpectCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type, const Pieces& pieces) {
  std::set<std::pair<std::set<U>, std::set<U>>> all;
  std::set<std::pair<std::set<U>, std::set<U>>> first;
  for (const auto& [key, occurrences] : pieces) {
    first.insert(occurrences[0].Members());
    for (const Piece& piece : occurrences) all.insert(piece.Members());
  }
  EXPECT_EQ(CoverageOf(mol, type, false), all);
  EXPECT_EQ(CoverageOf(mol, type, true), first);
}

// Marks, shares and weights of side `s`, from the pieces and new fingerprints.
void ExpectSide(const ZQSimilarityExplanation& explanation, std::size_t s, const ZQMolBase& mol,
                const Pieces& pieces, const Pieces& others, U measure) {
  const auto& side = explanation.sides[s];
  std::set<U> atoms;
  std::set<U> bonds;
  for (const auto& [key, occurrences] : pieces) {
    if (!others.contains(key)) continue;
    for (const Piece& piece : occurrences) {
      atoms.insert(piece.atoms.begin(), piece.atoms.end());
      bonds.insert(piece.bonds.begin(), piece.bonds.end());
    }
  }
  ASSERT_EQ(side.sharedAtoms.size(), mol.GetMaxAtomIdx());
  ASSERT_EQ(side.sharedBonds.size(), mol.GetMaxBondIdx());
  ASSERT_EQ(side.weights.size(), mol.GetMaxAtomIdx());
  for (U i = 0; i < mol.GetMaxBondIdx(); ++i) EXPECT_EQ(side.sharedBonds[i], bonds.contains(i));
  double heavyAtoms = 0;
  double heavyBonds = 0;
  for (U i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    EXPECT_EQ(side.sharedAtoms[i], atoms.contains(i));
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    if (atom && !atom->IsHydrogen()) {
      ++heavyAtoms;
      heavyBonds += atom->GetHvyDegree() / 2.0;
    }
    ZQFingerPrint fp = side.fp;
    for (const auto& [key, occurrences] : pieces) {
      for (const Piece& piece : occurrences) {
        if (std::ranges::find(piece.atoms, i) == piece.atoms.end()) continue;
        for (const U bit : piece.bits) fp.SetBitOff(bit);
      }
    }
    const ZQFingerPrint& other = explanation.sides[1 - s].fp;
    const float rest =
        ZQGetSimilarity(measure, s == 0 ? fp : other, s == 0 ? other : fp, 0.9F, 0.2F);
    const double loss = explanation.score - rest;
    EXPECT_EQ(side.weights[i], measure == ZQSimMeasure::Manhattan ? -loss : loss) << i;
  }
  EXPECT_DOUBLE_EQ(side.coveredAtoms * heavyAtoms, static_cast<double>(atoms.size()));
  EXPECT_DOUBLE_EQ(side.coveredBonds * heavyBonds, static_cast<double>(bonds.size()));
}

TEST(FPPattern, OverlapCoverageAndExplanationsFollowTheirDefinitions) {
  std::vector<std::string> all = DrugSmiles();
  all.insert(all.end(), SampleSmiles().begin(), SampleSmiles().end());
  std::vector<const ZQFPTypeBase*> types = HashedTypes();
  types.push_back(maccs);
  U measure = 0;
  std::size_t compared = 0;
  for (U m = 0; m + 9 < all.size(); m += 7) {
    SCOPED_TRACE(all[m] + " " + all[m + 9]);
    const std::unique_ptr<ZQMolBase> a = InGuise(all[m], m);
    const std::unique_ptr<ZQMolBase> b = InGuise(all[m + 9], m / 3);
    for (const ZQFPTypeBase* type : types) {
      const Pieces piecesA = PiecesOf(*a, type);
      const Pieces piecesB = PiecesOf(*b, type);
      ExpectCoverage(*a, type, piecesA);
      std::vector<Shared> expected = Overlap(piecesA, piecesB, type->GetFPType() == ZQFPType::Path);
      compared += expected.size();
      std::size_t i = 0;
      for (auto match = ZQGetFPOverlap(*a, *b, type); match && i < expected.size(); ++match, ++i) {
        ASSERT_EQ(SharedOf(*match, *a, *b, expected[i].text), expected[i]);
      }
      EXPECT_EQ(i, expected.size());

      measure = measure % (ZQSimMeasure::Number::End - 1) + 1;
      ZQSimilarityExplanation explanation;
      ASSERT_TRUE(ZQExplainSimilarity(explanation, *a, *b, type, measure, 0.9F, 0.2F));
      const auto& [sideA, sideB] = explanation.sides;
      EXPECT_EQ(explanation.score, ZQGetSimilarity(measure, sideA.fp, sideB.fp, 0.9F, 0.2F));
      EXPECT_EQ(sideA.count, sideA.fp.CountBits());
      EXPECT_EQ(sideB.count, sideB.fp.CountBits());
      U both = 0;
      for (const U bit : BitsOf(sideA.fp)) both += sideB.fp.IsBitOn(bit);
      EXPECT_EQ(explanation.both, both);
      ExpectSide(explanation, 0, *a, piecesA, piecesB, measure);
      ExpectSide(explanation, 1, *b, piecesB, piecesA, measure);
      std::ranges::stable_sort(expected, std::ranges::greater(), [](const Shared& shared) {
        return std::pair(shared.atoms.size(), shared.bonds.size());
      });
      ASSERT_EQ(explanation.overlap.size(), expected.size());
      for (i = 0; i < expected.size(); ++i) {
        const auto& [text, match] = explanation.overlap[i];
        ASSERT_EQ(SharedOf(match, *a, *b, text), expected[i]);
      }
      EXPECT_EQ(NumData(*a) + NumData(*b), 0U);
    }
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
  std::set<std::string> texts;
  for (auto pattern = ZQGetFPPatterns(benzene, atomsOnly); pattern; ++pattern) {
    texts.insert(pattern->GetSMARTS());
  }
  EXPECT_EQ(texts, std::set<std::string>{"[c;h1]"});
  EXPECT_EQ(Count(ZQGetFPPatterns(benzene, atomsOnly)), 6U);
  EXPECT_EQ(Count(ZQGetFPCoverage(benzene, atomsOnly, true)), 1U);
  EXPECT_EQ(Count(ZQGetFPCoverage(benzene, atomsOnly, false)), 6U);
  EXPECT_EQ(Count(ZQGetFPOverlap(benzene, benzene, atomsOnly)), 36U);
  auto whole = ZQGetFPPatterns(benzene, ZQGetCircularFPType(4096, 3, 3, 4239, 1));
  ASSERT_TRUE(whole);
  EXPECT_EQ(whole->NumAtoms(), 6U);
  EXPECT_EQ(whole->NumBonds(), 5U);

  // Elements with a key: each nitrogen with each; carbon has none.
  const ZQMol diamine = "NCCN"_mol;
  auto match = ZQGetFPOverlap(diamine, diamine, maccs);
  for (int i = 0; i < 4; ++i, ++match) {
    ASSERT_TRUE(match);
    EXPECT_EQ(match->GetAtomPairs().size(), 1U);
    EXPECT_EQ(match->GetAtomPairs()[0].pattern->GetAtomicNum(), 7U);
  }

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

  const ZQFPPattern made(benzene.GetAtoms(), benzene.GetBonds(), "text", 12, 3);
  EXPECT_EQ(made.NumAtoms() + made.NumBonds(), 12U);
}

TEST(FPPattern, MoleculesAreUsedAgainAfterAnEdit) {
  std::vector<const ZQFPTypeBase*> types = HashedTypes();
  types.push_back(maccs);
  ZQMol a = "CC(=O)Nc1ccc(O)cc1"_mol;
  const ZQMol b = "OC(=O)c1ccccc1O"_mol;
  a.GetAtomAt(1)->AddData(7, 1);
  for (const int edit : {0, 1, 2}) {
    if (edit == 1) a.DeleteAtom(a.GetAtomAt(2));
    if (edit == 2) a.GetAtomAt(3)->SetFormalCharge(1);
    for (const ZQFPTypeBase* type : types) {
      const auto overlap =
          Overlap(PiecesOf(a, type), PiecesOf(b, type), type->GetFPType() == ZQFPType::Path);
      EXPECT_EQ(Count(ZQGetFPOverlap(a, b, type)), overlap.size());
      ZQSimilarityExplanation explanation;
      EXPECT_TRUE(ZQExplainSimilarity(explanation, a, b, type));
      EXPECT_EQ(explanation.overlap.size(), overlap.size());
      EXPECT_EQ(NumData(a), 1U);
    }
  }
}

TEST(FPPattern, KindsAndTheirMessages) {
  struct Unknown final : ZQFPTypeBase {
    Unknown() : ZQFPTypeBase(1, 0) {}
    unsigned int GetFPType() const override { return 4711; }
    std::string GetFPTypeString() const override { return "Unknown"; }
  } const unknown;
  ZQMol mol = "CCO"_mol;
  const struct {
    const ZQFPTypeBase* type;
    const char* patterns;  // the messages; null for none
    const char* others;
  } cases[] = {
      {ZQGetFPType(ZQFPType::Path), nullptr, nullptr},
      {ZQGetFPType(ZQFPType::Circular), nullptr, nullptr},
      {ZQGetFPType(ZQFPType::Tree), nullptr, nullptr},
      {maccs, "is not available for MACCS fingerprint!", nullptr},
      {ZQGetFPType(ZQFPType::Lingo), "is not available for Lingo fingerprint!",
       "is not available for Lingo fingerprint!"},
      {ZQGetFPType(ZQFPType::UnhashedPath), "unknown fingerprint type!",
       "unknown fingerprint type!"},
      {ZQGetFPType(ZQFPType::UnhashedTree), "unknown fingerprint type!",
       "unknown fingerprint type!"},
      {&unknown, "unknown fingerprint type!", "unknown fingerprint type!"},
  };
  CapturedReports reports;
  const auto message = [](const char* name, const char* text) {
    return text ? Texts{std::string(name) + " " + text} : Texts{};
  };
  for (const bool valid : {true, false}) {
    mol.SetValid(valid);
    for (const auto& [type, patterns, others] : cases) {
      EXPECT_EQ(ZQGetFPPatterns(mol, type).IsValid(), valid && !patterns);
      EXPECT_EQ(reports.Take(), valid ? message("ZQGetFPPatterns()", patterns) : Texts{});
      EXPECT_EQ(ZQGetFPCoverage(mol, type, true).IsValid(), valid && !others);
      EXPECT_EQ(reports.Take(), valid ? message("ZQGetFPCoverage()", others) : Texts{});
      EXPECT_EQ(ZQGetFPOverlap("CCN"_mol, mol, type).IsValid(), valid && !others);
      EXPECT_EQ(reports.Take(), valid ? message("ZQGetFPOverlap()", others) : Texts{});
      ZQSimilarityExplanation explanation;
      EXPECT_EQ(ZQExplainSimilarity(explanation, "CCN"_mol, mol, type), valid && type != &unknown);
      EXPECT_EQ(explanation.sides[0].weights.empty(), !valid || others);
      if (type == &unknown) {
        EXPECT_EQ(reports.Take(), Texts{"ZQExplainSimilarity() : unknown fingerprint type!"});
      } else {
        EXPECT_EQ(reports.Take(), valid ? message("ZQGetFPOverlap()", others) : Texts{});
      }
    }
  }
  mol.SetValid(true);
  const ZQFPTypeBase* const path = ZQGetFPType(ZQFPType::Path);
  EXPECT_FALSE(ZQGetFPPatterns(mol, nullptr));
  EXPECT_EQ(reports.Take(),
            (Texts{"Assertion", "ZQGetFPPatterns() invalid fingerprint type pointer!"}));
  EXPECT_FALSE(ZQGetTreeFPPatterns(mol, path) || ZQGetCircularFPCoverage(mol, path, true) ||
               ZQGetMACCSFPCoverage(mol, path, true) || ZQGetMACCSFPOverlap(mol, mol, path) ||
               ZQGetPathFPOverlap(mol, mol, nullptr));
  EXPECT_EQ(reports.Take(), Texts(5, "Assertion"));
  EXPECT_FALSE(ZQGetFPOverlap("CC"_mol, "[Na+]"_mol, path));  // nothing in common
  ZQSimilarityExplanation explanation;
  EXPECT_FALSE(ZQExplainSimilarity(explanation, mol, mol, path, 7));
  EXPECT_EQ(reports.Take(), Texts{"ZQExplainSimilarity() : unknown similarity measure type 7!"});
  EXPECT_EQ(NumData(mol), 0U);
}

TEST(FPPattern, TextsAreCountedWithoutFragments) {
  const ZQMol a = "CCOC(=O)C"_mol;
  const ZQMol b = "CCOC(=O)CC"_mol;
  CapturedReports reports;  // the warnings of kinds without fragments
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    if (!kind.IsText()) continue;
    ZQSimilarityExplanation explanation;
    ASSERT_TRUE(ZQExplainSimilarity(explanation, a, b, ZQGetFPType(kind.number)));
    const auto& [sideA, sideB] = explanation.sides;
    EXPECT_EQ(explanation.score, ZQTanimoto(sideA.fp, sideB.fp));
    // Tanimoto of the counts.
    const U all = sideA.count + sideB.count - explanation.both;
    EXPECT_FLOAT_EQ(static_cast<float>(explanation.score),
                    static_cast<float>(explanation.both) / static_cast<float>(all));
    EXPECT_EQ(sideA.sharedAtoms, std::vector<bool>(a.GetMaxAtomIdx()));
    EXPECT_TRUE(explanation.overlap.empty() && explanation.both != 0);
  }
}

TEST(FPPattern, TooMuchIsAnErrorAndLeavesTheMoleculesAlone) {
  // Unconnected oxygen atoms: 4845 matches of one key in either molecule.
  const ZQMol sugar = ReadSmiles("C" + Repeated("C(O)", 20) + "C");
  const ZQMol chain = ReadSmiles(Repeated("c1ccc(cc1)", 40) + "C");
  const ZQFPTypeBase* const tree = ZQGetFPType(ZQFPType::Tree);
  CapturedReports reports;
  ZQSimilarityExplanation explanation;
  EXPECT_TRUE(ZQExplainSimilarity(explanation, sugar, sugar, maccs));
  EXPECT_EQ(reports.Take().size(), 1U);
  EXPECT_EQ(explanation.sides[0].coveredAtoms, 1.0);
  ZQSimilarityExplanation expected;
  EXPECT_TRUE(ZQExplainSimilarity(expected, chain, chain, ZQGetPathFPType(4096, 0, 1, 191, 3)));
  for (const bool overlapOnly : {true, false}) {
    largestRequest = std::size_t{1} << (overlapOnly ? 21 : 15);
    const bool explained =
        ZQExplainSimilarity(explanation, chain, chain, ZQGetPathFPType(4096, 0, 1, 191, 3));
    const bool found = ZQGetFPOverlap(chain, chain, tree).IsValid();
    const bool covers = ZQGetFPCoverage(chain, tree, false).IsValid();
    largestRequest = std::numeric_limits<std::size_t>::max();
    EXPECT_TRUE(explained);
    EXPECT_FALSE(found);
    EXPECT_EQ(covers, overlapOnly);
    Texts errors = {"ZQExplainSimilarity() : out of memory",
                    "ZQGetTreeFPOverlap() : out of memory"};
    if (!overlapOnly) errors.emplace_back("ZQGetTreeFPCoverage() : out of memory");
    EXPECT_EQ(reports.Take(), errors);
    EXPECT_TRUE(explanation.overlap.empty());
    EXPECT_EQ(explanation.score, 1.0);
    EXPECT_EQ(explanation.sides[1].weights,
              overlapOnly ? expected.sides[1].weights : std::vector<double>());
    EXPECT_EQ(explanation.sides[0].sharedBonds,
              std::vector<bool>(chain.GetMaxBondIdx(), overlapOnly));
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
