#include "korvex/path.h"

#include <gtest/gtest.h>

#include <set>

#include "korvex/fold_local.h"
#include "korvex/path_local.h"
#include "korvex/primes.h"
#include "tests/generator_helpers.h"

namespace ZQKorvex {

namespace {

// Every path by plain recursion, straight from the definition.
template <class T>
class AllWalks {
 public:
  AllWalks(const Prepared<T>& from, unsigned int minbonds, unsigned int maxbonds)
      : from_(from), min_(minbonds), max_(maxbonds) {
    for (auto atom = from.mol.GetAtoms(); atom; ++atom) Walk({&*atom}, {});
    std::sort(ids.begin(), ids.end());
  }
  std::vector<T> ids;

 private:
  static void Add(unsigned int& id, unsigned int invariant, std::size_t position) {
    id += invariant * PublishedMultiplier(position - 1);
  }
  static void Add(std::string& id, const std::string& invariant, std::size_t) { id += invariant; }

  void Walk(const std::vector<const ZQAtomBase*>& atoms, const std::vector<ZQBondBase*>& bonds) {
    if (bonds.size() >= min_) {
      T id{};
      for (std::size_t i = 0; i < atoms.size(); ++i) {
        if (i != 0) Add(id, from_.bonds[bonds[i - 1]->GetIdx()], 2 * i);
        Add(id, from_.atoms[atoms[i]->GetIdx()], 2 * i + 1);
      }
      ids.push_back(id);
    }
    if (bonds.size() == max_) return;
    for (auto bond = atoms.back()->GetBonds(); bond; ++bond) {
      const ZQAtomBase* next = bond->GetNbr(atoms.back());
      if (std::find(atoms.begin(), atoms.end(), next) != atoms.end()) continue;
      auto longer = atoms;
      longer.push_back(next);
      auto with = bonds;
      with.push_back(&*bond);
      Walk(longer, with);
    }
  }

  const Prepared<T>& from_;
  std::size_t min_;
  std::size_t max_;
};

template <class T>
std::vector<T> SortedIds(Prepared<T>& from, unsigned int minbonds, unsigned int maxbonds) {
  std::vector<T> ids;
  const unsigned int count =
      ZQPathIdGeneratorStack(ids, from.mol, from.atoms, from.bonds, minbonds, maxbonds);
  EXPECT_EQ(count, ids.size());
  std::sort(ids.begin(), ids.end());
  return ids;
}

template <class T>
void ExpectAllWalks(const ZQMolBase& mol, unsigned int atype, unsigned int btype,
                    unsigned int minbonds, unsigned int maxbonds) {
  Prepared<T> from(mol, atype, btype);
  const std::vector<T> expected = AllWalks<T>(from, minbonds, maxbonds).ids;
  EXPECT_EQ(SortedIds(from, minbonds, maxbonds), expected);
  std::set<T> distinct;
  const unsigned int count =
      ZQPathIdGenerator(distinct, from.mol, from.atoms, from.bonds, minbonds, maxbonds);
  EXPECT_EQ(count, distinct.size());
  EXPECT_EQ(distinct, std::set<T>(expected.begin(), expected.end()));
  EXPECT_EQ(from.atoms.size(), from.mol.GetMaxAtomIdx());
  EXPECT_EQ(from.bonds.size(), from.mol.GetMaxBondIdx());
}

}  // namespace

TEST(Path, WorkedIdentifiersAndBits) {
  Prepared<unsigned int> ethanol("CCO"_mol, ZQFPAtomType::AtmNum, ZQFPBondType::Order);
  EXPECT_EQ(ethanol.atoms, (std::vector<unsigned int>{179, 179, 947}));
  EXPECT_EQ(ethanol.bonds, (std::vector<unsigned int>{131, 131}));
  EXPECT_EQ(SortedIds(ethanol, 2, 2), (std::vector<unsigned int>{1539975, 1647495}));
  Prepared<unsigned int> ethane("CC"_mol, ZQFPAtomType::AtmNum, ZQFPBondType::Order);
  EXPECT_EQ(SortedIds(ethane, 0, 1), (std::vector<unsigned int>{169513, 169513, 480687, 480687}));

  const struct {
    const char* smiles;
    unsigned int numbits, min, max, atype, btype;
    std::vector<unsigned int> bits;
  } cases[] = {
      {"CCO", 4096, 2, 2, 1, 1, {1007, 2109}},
      {"CC", 4096, 0, 1, 1, 1, {1700, 1806}},
      {"CC(=O)[2H]", 4096, 0, 0, 0, 1, {947}},
      {"CCN", 100, 0, 0, 0, 1, {947 % 97}},
      {"CCN", 16, 0, 0, 0, 1, {947 % 13}},
      {"CCN", 65535, 0, 0, 0, 1, {947}},
      {"", 4096, 0, 5, 191, 3, {}},
      {"[H][H]", 256, 0, 5, 191, 3, {}},
      {"C1CCCCC1", 4096, 6, 6, 1, 1, {}},  // the closing bond is never used
  };
  for (const auto& c : cases) {
    ZQMol mol;
    if (*c.smiles) ZQSmilesToMol(mol, c.smiles);
    ZQFingerPrint fp;
    ASSERT_TRUE(ZQMakePathFP(fp, mol, c.numbits, c.min, c.max, c.atype, c.btype)) << c.smiles;
    EXPECT_EQ(fp.GetSize(), c.numbits);
    EXPECT_EQ(BitsOf(fp), c.bits) << c.smiles;
    EXPECT_EQ(fp.GetFPTypeBase(), ZQGetPathFPType(c.numbits, c.min, c.max, c.atype, c.btype));
  }
}

TEST(Path, VisitsExactlyTheWalksThatTheDefinitionNames) {
  std::mt19937 random(7);
  for (const std::string& smiles : SampleSmiles()) {
    SCOPED_TRACE(smiles);
    const ZQMol mol = ReadSmiles(smiles);
    const unsigned int atype = random() % 8192;
    const unsigned int btype = random() % 8;
    const unsigned int min = random() % 4;
    ExpectAllWalks<unsigned int>(mol, atype, btype, min, min + random() % 5);
    ExpectAllWalks<std::string>(mol, atype, btype, min, min + random() % 4);
  }
  // The longest paths allowed in a fingerprint, and longer ones than the molecule has.
  ExpectAllWalks<unsigned int>("CCCNCCCCOCCCCCC(C)CCCCCSCCCF"_mol, 191, 3, 0, 20);
  ExpectAllWalks<std::string>("CCCNCCCCOC"_mol, 191, 3, 0, 20);
}

TEST(Path, SymmetricStartAtomsAreWalkedFromOnce) {
  Prepared<unsigned int> benzene("c1ccccc1"_mol, 191, 3, true);
  EXPECT_EQ(SortedIds(benzene, 5, 5).size(), 2U);  // one start, two directions
  for (auto atom = benzene.mol.GetAtoms(); atom; ++atom) atom->SetSymmetryClass(0);
  EXPECT_EQ(SortedIds(benzene, 5, 5).size(), 12U);
}

TEST(Path, PatternsHoldTheAtomsAndBondsOfEachWalk) {
  Prepared<std::string> from("OC1CC1"_mol, ZQFPAtomType::AtmNum, ZQFPBondType::Order);
  std::vector<ZQFPAtomBondSet<std::string>> patterns;
  std::vector<std::string> ids;
  PathGenerator<std::string>(from.mol, from.atoms, from.bonds, 1, 3, &patterns)
      .ForEachPath([&ids](const std::string& id) { ids.push_back(id); });
  ASSERT_EQ(patterns.size(), ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    std::string text = from.atoms[patterns[i].GetAtoms()[0]->GetIdx()];
    ASSERT_EQ(patterns[i].NumAtoms(), patterns[i].NumBonds() + 1);
    for (unsigned int j = 0; j < patterns[i].NumBonds(); ++j) {
      text += from.bonds[patterns[i].GetBonds()[j]->GetIdx()] +
              from.atoms[patterns[i].GetAtoms()[j + 1]->GetIdx()];
    }
    EXPECT_EQ(text, ids[i]);
    EXPECT_EQ(patterns[i].GetId(), ids[i]);
  }
}

TEST(Path, FoldingIsTheRemainder) {
  ZQFingerPrint fp;
  std::mt19937 random(3);
  for (const unsigned int hashSize : {13U, 61U, 4093U, 8191U, 65521U}) {
    const ZQFolder folder(fp, hashSize);
    for (const unsigned int id : {0U, 1U, hashSize - 1, hashSize, ~0U, ~0U - 1, ~0U / 2}) {
      EXPECT_EQ(folder.Fold(id), id % hashSize);
    }
    for (int i = 0; i < 100000; ++i) {
      const auto id = static_cast<unsigned int>(random());
      ASSERT_EQ(folder.Fold(id), id % hashSize);
    }
  }
}

TEST(Primes, NearestSmallerPrimeAgreesWithTheLinearScan) {
  for (unsigned int n = 2; n <= 65537; ++n) {
    const unsigned int prime = ZQGetNearestSmallerPrimeNumberBruteForce(n);
    ASSERT_EQ(ZQGetNearestSmallerPrimeNumber(n), prime) << n;
    ASSERT_EQ(ZQGetHashSize(n), prime) << n;
  }
  EXPECT_EQ(ZQGetHashSize(65535), 65521U);
  CapturedReports reports;
  EXPECT_EQ(ZQGetHashSize(1), 0U);
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
}

}  // namespace ZQKorvex
