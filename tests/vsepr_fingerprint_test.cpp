// VSEPR fingerprints: worked numbers, direct enumeration of all paths, the forms of one molecule,
// and the operations on fingerprints with a history.

#include "korvex/vsepr_fingerprint.h"

#include <gtest/gtest.h>

#include <set>

#include "contract/quarnel/perception.h"
#include "korvex/vsepr_api.h"
#include "tests/foreign_mol.h"
#include "tests/memory_helpers.h"
#include "tests/mol_helpers.h"
#include "tests/molfile_helpers.h"
#include "tests/vsepr_reference.h"

namespace ZQKorvex {
namespace {

using PathCounts = ZQVseprFingerprint::PathCounts;

ZQVseprFingerprint Make(const std::string& smiles, ZQVseprOptions options = {}) {
  return {ReadSmiles(smiles), options};
}

// A fingerprint with 1.0 for each path, which shows numbers of paths.
ZQVseprOptions Counted(bool forcePathsOut = true) {
  return ZQVseprOptions().SetWeightByLength(false).SetForcePathsOut(forcePathsOut);
}

// The total weight of the paths of 1 to 8 atoms; no type is 0.
std::vector<double> ByLength(const ZQVseprFingerprint& fp) {
  std::vector<double> sums(8);
  for (const auto& [key, weight] : fp.GetPathCounts()) {
    std::size_t last = 7;
    while (key >> (8 * last) == 0) --last;
    sums[last] += weight;
  }
  return sums;
}

TEST(Vsepr, WorkedNumbers) {
  const double e4 = std::exp(4.0);
  const double e35 = std::exp(3.5);
  // CH3-CH3; CH4, which has no type; nothing; CH3-CH2(-), whose second atom has type 0.
  EXPECT_EQ(Make("CC").GetPathCounts(), (PathCounts{{0x06, e4 + e4}, {0x0606, e35 + e35}}));
  EXPECT_EQ(Make("C").GetPathCounts(), (PathCounts{{201, e4}}));
  EXPECT_EQ(Make("C", ZQVseprOptions().SetStereoAware(false)).GetPathCounts(),
            (PathCounts{{165, e4}}));
  EXPECT_EQ(Make("C", ZQVseprOptions().SetMinPathLength(1)).GetVolume(), 0.0);
  EXPECT_EQ(Make("[HH]").GetPathCounts(), PathCounts());
  EXPECT_EQ(Make("C[CH2-]").GetPathCounts(),
            (PathCounts{{0, e4}, {0x06, e4 + e35}, {0x0600, e35}}));
  EXPECT_EQ(Make("CC").GetVolume(), (e4 + e4) + (e35 + e35));

  const struct {
    const char* smiles;
    std::vector<double> out;  // along shortest routes
    std::vector<double> all;
  } cases[] = {
      {"c1ccccc1", {6, 12, 12, 12, 0, 0, 0, 0}, {6, 12, 12, 12, 12, 12, 0, 0}},
      {"C12C3C1C23", {4, 12, 0, 0, 0, 0, 0, 0}, {4, 12, 24, 24, 0, 0, 0, 0}},
      {"CCCCCCCCCC", {10, 18, 16, 14, 12, 10, 8, 6}, {10, 18, 16, 14, 12, 10, 8, 6}},
      {"C1CC1.CC", {5, 8, 0, 0, 0, 0, 0, 0}, {5, 8, 6, 0, 0, 0, 0, 0}},
      {"C12C3C4C1C5C2C3C45", {8, 24, 48, 48, 0, 0, 0, 0}, {8, 24, 48, 96, 144, 240, 192, 144}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ByLength(Make(c.smiles, Counted())), c.out) << c.smiles;
    EXPECT_EQ(ByLength(Make(c.smiles, Counted(false))), c.all) << c.smiles;
  }
}

// Every option, all three kinds of starts, and objects that had another content before.
TEST(Vsepr, EqualsDirectEnumeration) {
  std::vector<ZQVseprOptions> all;
  const std::pair<unsigned int, unsigned int> lengths[] = {{8, 0}, {3, 0}, {2, 5}, {8, 7},
                                                           {1, 1}, {0, 0}, {9, 8}, {20, 4}};
  for (unsigned int choice = 0; choice < 64; ++choice) {
    all.push_back(ZQVseprOptions()
                      .SetMaxPathLength(lengths[choice % 8].first)
                      .SetMinPathLength(lengths[choice % 8].second)
                      .SetForcePathsOut((choice & 8) != 0)
                      .SetWeightByLength((choice & 16) != 0)
                      .SetStereoAware((choice & 32) != 0));
  }
  std::vector<std::string> molecules = SampleSmiles();
  for (const char* more : {"C[CH2-].[CH2-]CC[CH2-]", "[2H]C([2H])O[H]", "[H][H].[H+]", "B1[H]B[H]1",
                           "*CC*", "", "C12C3C4C1C5C2C3C45.C[C@H](F)Cl"}) {
    molecules.emplace_back(more);
  }
  // More keys than the first sizes of the table hold.
  std::string together = "O";
  for (const std::string& smiles : molecules) together += (smiles.empty() ? "" : ".") + smiles;
  molecules.push_back(together);
  CapturedReports reports;
  ZQVseprFingerprint fp;
  std::size_t warnings = 0;
  std::size_t most = 0;
  const auto check = [&](const auto& object, const ZQVseprOptions& options, const ZQMolBase& mol,
                         const std::vector<const ZQAtomBase*>& starts) {
    VseprReference reference(mol, options);
    for (const ZQAtomBase* start : starts) reference.WalkFrom(*start);
    const PathCounts expected = reference.GetPathCounts();
    double volume = 0;
    for (const auto& [key, weight] : expected) volume += weight;
    fp.Setup(object, options);
    ASSERT_EQ(fp.GetPathCounts(), expected);
    ASSERT_EQ(fp.GetVolume(), volume);
    ASSERT_EQ(fp.GetOptions().GetMaxPathLength(), options.GetMaxPathLength());
    warnings += options.GetMaxPathLength() > 8;
    most = std::max(most, expected.size());
  };
  for (std::size_t i = 0; i < molecules.size(); ++i) {
    SCOPED_TRACE(molecules[i]);
    ZQMol mol = ReadSmiles(molecules[i]);
    if (i % 2 == 0) mol = WithHydrogens(mol);
    ZQPrepareForVsepr(mol);
    ForeignMol foreign;
    Fill(foreign, mol, true);
    foreign.SetPerceived(ZQPerceived::Aromaticity, true);
    for (auto atom = foreign.GetAtoms(); atom; ++atom) atom->SetAromatic(false);
    for (const ZQMolBase* each :
         {static_cast<ZQMolBase*>(&mol), static_cast<ZQMolBase*>(&foreign)}) {
      std::vector<const ZQAtomBase*> heavy;
      for (auto atom = each->GetAtoms(ZQIsHeavy()); atom; ++atom) heavy.push_back(&*atom);
      for (std::size_t k = i % 3; k < all.size(); k += i + 1 == molecules.size() ? 7 : 3) {
        check(*each, all[k], *each, heavy);
        for (auto atom = each->GetAtoms(); atom; ++atom) {
          if (atom->GetIdx() % 7 < 2) check(*atom, all[k], *each, {&*atom});
        }
        const auto bond = each->GetBonds();
        if (bond) check(*bond, all[k], *each, {bond->GetBgn(), bond->GetEnd()});
      }
    }
  }
  EXPECT_GT(most, 2 * 2048U);
  EXPECT_EQ(reports.Count(ZQErrorLevel::Warning), warnings);
  fp.Setup("CC"_mol, ZQVseprOptions().SetMaxPathLength(20));
  EXPECT_EQ(reports.Take().back(),
            "ZQVseprFingerprint : Setting maxPathLength, passed as 20, to the max of 8u");
}

TEST(Vsepr, OneMoleculeOneFingerprint) {
  const std::vector<Texts> groups = {
      {"Cc1ccccc1C", "CC1=CC=CC=C1C", "[H]C([H])([H])C1=C(C)C=CC=C1"},
      {"CC(C)O", "C[C@H](C)O", "C[C@@](C)([H])O"},
      {"CCC(CC)N(C)CCC", "CC[C@H](CC)[N@](C)CCC"},
      {"N[C@@H](C)C(=O)O", "N[C@@]([H])(C)C(=O)O", "[H][C@](N)(C)C(=O)O", "C[C@H](N)C(O)=O"},
      {"N[C@H](C)C(=O)O", "C[C@@H](N)C(O)=O"},
  };
  std::set<std::vector<std::uint64_t>> distinct;
  for (const Texts& group : groups) {
    PathCounts expected;
    for (const std::string& smiles : group) {
      for (const bool prepared : {false, true}) {
        ZQMol mol = ReadSmiles(smiles);
        if (prepared) ZQPrepareForVsepr(mol);
        for (const bool hydrogens : {false, true}) {
          if (hydrogens) mol = WithHydrogens(mol);
          if (hydrogens && prepared) ZQPrepareForVsepr(mol);
          const PathCounts counts = ZQVseprFingerprint(mol, Counted()).GetPathCounts();
          if (expected.empty()) expected = counts;
          EXPECT_EQ(counts, expected) << smiles;
        }
      }
    }
    std::vector<std::uint64_t> keys;
    for (const auto& [key, weight] : expected) keys.push_back(key);
    EXPECT_TRUE(distinct.insert(keys).second) << group.front();
  }
  const auto plain = Counted().SetStereoAware(false);
  EXPECT_EQ(Make(groups[3][0], plain).GetPathCounts(), Make(groups[4][0], plain).GetPathCounts());

  // 1-Fluoroethanol drawn with a wedge, and its mirror image.
  const auto draw = [](int wedge) {
    ZQMol mol;
    EXPECT_TRUE(ZQMolfileToMol(
        mol, WriteMolfile({{"C"}, {"C", -0.87, -0.5}, {"O", 0, 1}, {"F", 0.87, -0.5}},
                          {{1, 2}, {1, 3}, {1, 4, 1, wedge}}, false)));
    EXPECT_EQ(ZQVseprFingerprint(mol, {}).GetPathCounts(),
              Make(ZQMolToCanonicalSmiles(mol)).GetPathCounts());
    return mol;
  };
  EXPECT_LT(ZQVseprFingerprint(draw(1), {}).GetTanimoto({draw(3), {}}), 1.0);
  EXPECT_EQ(ZQVseprFingerprint(draw(1), plain).GetTanimoto({draw(3), plain}), 1.0);
}

TEST(Vsepr, MeasuresAndAlgebra) {
  const ZQVseprFingerprint ethane = Make("CC", Counted());    // 06: 2, 0606: 2
  const ZQVseprFingerprint propane = Make("CCC", Counted());  // 06: 2, 09: 1, 0609, 0906: 2, ...
  const PathCounts ofPropane = {{6, 2}, {9, 1}, {0x609, 2}, {0x906, 2}, {0x60906, 2}};
  ASSERT_EQ(propane.GetPathCounts(), ofPropane);
  const ZQVseprFingerprint empty;
  {
    largestRequest = 0;  // no comparison allocates
    const double tanimoto = ethane.GetTanimoto(propane);
    const double tversky = ZQGetTversky(ethane, propane, 0.5, 0.25);
    const bool isLess = ethane < propane;
    largestRequest = std::numeric_limits<std::size_t>::max();
    EXPECT_DOUBLE_EQ(tanimoto, 2.0 / 11);
    EXPECT_DOUBLE_EQ(tversky, 2.0 / (7 * 0.25 + 2 * 0.5 + 2));
    EXPECT_TRUE(isLess);
  }
  EXPECT_EQ(ZQGetTanimoto(propane, propane), 1.0);
  const std::unique_ptr<ZQGetVseprTanimotoFxn> function(ZQGetVseprTanimotoFxn().CreateCopy());
  EXPECT_EQ((*function)(propane, ethane), ethane.GetTanimoto(propane));
  EXPECT_EQ(empty.GetTanimoto(empty), 0.0);
  EXPECT_EQ(empty.GetTanimoto(ethane) + ethane.GetTanimoto(empty), 0.0);
  EXPECT_TRUE(std::isnan(ZQGetTversky(empty, empty, 1, 1)));

  const ZQVseprFingerprint half = ethane.Scale(0.5);
  const PathCounts joined = {{6, 2}, {9, 1}, {0x606, 1}, {0x609, 2}, {0x906, 2}, {0x60906, 2}};
  PathCounts sum = joined;
  sum[0].second = 3;
  const struct {
    ZQVseprFingerprint made;
    PathCounts counts;
    double volume;
  } cases[] = {
      {ethane & propane, {{6, 2}}, 2}, {half, {{6, 1}, {0x606, 1}}, 4},
      {half & propane, {{6, 1}}, 1},   {propane & half, {{6, 1}}, 1},
      {half | propane, joined, 10},    {propane | half, joined, 10},
      {half + propane, sum, 11},       {half + half, {{6, 2}, {0x606, 2}}, 4},
      {empty.Scale(2), {}, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.made.GetPathCounts(), c.counts);
    EXPECT_EQ(c.made.GetVolume(), c.volume);
  }
  EXPECT_DOUBLE_EQ(ZQGetTversky(half, half, 1, 1), 2.0 / (2 + 2 + 2));
  EXPECT_EQ(ethane.Scale(-1).GetTanimoto(ethane), (-2.0 - 2.0) / (2 + 2));

  // Results have the default options; a sum with nothing is a copy.
  const ZQVseprOptions narrow = Counted().SetMaxPathLength(7);
  const ZQVseprFingerprint few = Make("CCO", narrow);
  const ZQVseprFingerprint none = Make("", narrow);
  for (const ZQVseprFingerprint& copy : {few + none, none + few, few.Scale(1)}) {
    EXPECT_TRUE(copy.GetOptions() == narrow);
    EXPECT_EQ(copy.GetVolume(), few.GetVolume());
  }
  for (const ZQVseprFingerprint& made : {few + few, few & few, few | none}) {
    EXPECT_TRUE(made.GetOptions() == ZQVseprOptions());
  }

  CapturedReports reports;
  EXPECT_EQ(few.GetTanimoto(ethane) + ZQGetTanimoto(ethane, few), 0.0);
  EXPECT_EQ(ZQGetTversky(few, ethane, 1, 1), 0.0);
  EXPECT_FALSE(few < ethane || ethane < few);
  EXPECT_EQ((few & ethane).GetVolume() + (few | ethane).GetVolume() + (few + ethane).GetVolume(),
            0);
  EXPECT_EQ(reports.Take(), Texts(8, "Assertion"));
  const auto isEqual = [&](ZQVseprOptions options) { return options == Counted(); };
  EXPECT_FALSE(isEqual(Counted().SetMinPathLength(1)) || isEqual(Counted(false)));
  EXPECT_TRUE(isEqual(Counted().SetStereoAware(false).SetWeightByLength(true)));
}

TEST(Vsepr, Order) {
  const auto counted = Counted();
  const ZQVseprFingerprint ethane = Make("CC", counted);                          // 4 paths
  const ZQVseprFingerprint fluorine = Make("FF", counted);                        // 4, greater keys
  const ZQVseprFingerprint hydroxyls = Make("[OH-].[OH-].[OH-].[OH-]", counted);  // 4 of one key
  const ZQVseprFingerprint propane = Make("CCC", counted);
  const auto isLess = [](const ZQVseprFingerprint& a, const ZQVseprFingerprint& b) {
    return std::pair(a < b, b < a);
  };
  EXPECT_EQ(isLess(ethane, propane), std::pair(true, false));
  EXPECT_EQ(isLess(ethane, fluorine), std::pair(true, false));
  EXPECT_EQ(isLess(ethane, ethane), std::pair(false, false));
  EXPECT_EQ(isLess(ethane, hydroxyls), std::pair(true, false));
  // Weights count beyond a tolerance; volumes stay those of the source.
  EXPECT_EQ(isLess(ethane.Scale(0.5), ethane), std::pair(true, false));
  EXPECT_EQ(isLess(ethane.Scale(1 + 1e-13), ethane), std::pair(false, false));
  // One list is the beginning of the other, the volumes are equal.
  const ZQVseprFingerprint methyls = ethane & propane;
  const ZQVseprFingerprint longer = methyls | ethane.Scale(0.0);
  EXPECT_EQ(longer.GetPathCounts(), (PathCounts{{6, 2}, {0x606, 0}}));
  EXPECT_EQ(isLess(methyls, longer), std::pair(false, false));
}

TEST(Vsepr, StoredWithTheirObjects) {
  ZQMol a = "OCCN"_mol;
  ZQMol b = "OCCCN"_mol;
  EXPECT_EQ(ZQGetVseprTanimoto(a, b, -1.0), -1.0);
  ZQPrepVsepr(a, {});
  EXPECT_EQ(ZQGetVseprTanimoto(a, b, -1.0), -1.0);
  EXPECT_EQ(ZQGetVseprTanimoto(b, a, -1.0), -1.0);
  ZQPrepVsepr(b, ZQVseprOptions().SetMaxPathLength(4));
  EXPECT_EQ(ZQGetVseprTanimoto(a, b, -1.0), -1.0);
  ZQPrepVsepr(b, ZQVseprOptions().SetStereoAware(false));
  const double expected = Make("OCCN").GetTanimoto(Make("OCCCN"));
  EXPECT_EQ(ZQGetVseprTanimoto(a, b, -1.0), expected);

  // An edit changes nothing until the next call; a copy has its own.
  b.NewBond(b.GetAtomAt(4), b.NewAtom(9), 1);
  EXPECT_EQ(ZQGetVseprTanimoto(a, b, -1.0), expected);
  const ZQMol copy = b;
  ZQPrepVsepr(b, {});
  EXPECT_LT(ZQGetVseprTanimoto(a, b, -1.0), expected);
  EXPECT_EQ(ZQGetVseprTanimoto(a, copy, -1.0), expected);
  const unsigned int tag = ZQGetTag("ZQVseprFingerprint");
  b.SetData(tag, 1.0);
  EXPECT_EQ(ZQGetVseprTanimoto(a, b, -1.0), -1.0);
  b.AddData(tag, Make("OCCN"));
  EXPECT_EQ(ZQGetVseprTanimoto(a, b, -1.0), 1.0);

  const auto checkOfKind = [](auto& first, auto& second) {
    ZQPrepVsepr(first, {});
    EXPECT_EQ(ZQGetVseprTanimoto(second, first, -1.0), -1.0);
    ZQPrepVsepr(second, {});
    EXPECT_EQ(ZQGetVseprTanimoto(first, second, -1.0),
              ZQVseprFingerprint(first, {}).GetTanimoto({second, {}}));
  };
  checkOfKind(*a.GetAtomAt(0), *b.GetAtomAt(0));
  checkOfKind(*a.GetBondAt(0), *b.GetBondAt(0));
}

TEST(Vsepr, ObjectsWithAHistory) {
  ZQVseprFingerprint fp = Make("CCO", Counted());
  const PathCounts before = fp.GetPathCounts();
  ZQVseprFingerprint copy(fp);
  ZQVseprFingerprint moved(std::move(fp));
  EXPECT_EQ(fp.GetPathCounts(), PathCounts());  // NOLINT(bugprone-use-after-move): promised
  EXPECT_TRUE(fp.GetOptions() == ZQVseprOptions());
  fp = copy;
  copy.Setup("F"_mol, ZQVseprOptions().SetMaxPathLength(2));
  EXPECT_EQ(fp.GetPathCounts(), before);
  EXPECT_EQ(moved.GetPathCounts(), before);
  fp = static_cast<const ZQVseprFingerprint&>(fp);
  EXPECT_EQ(fp.GetPathCounts(), before);

  CapturedReports reports;
  const ZQMol large = ReadSmiles(Repeated("C(N)(=O)S", 400));
  largestRequest = 1 << 15;
  fp.Setup(large, Counted(false));
  largestRequest = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(reports.Take(), Texts{"ZQVseprFingerprint : out of memory"});
  EXPECT_EQ(fp.GetPathCounts(), PathCounts());
  EXPECT_EQ(fp.GetTanimoto(Make("CCO", Counted(false))), 0.0);  // comparable like any other
  EXPECT_EQ(reports.Take(), Texts());
  fp.Setup("CCO"_mol, Counted());
  EXPECT_EQ(fp.GetPathCounts(), before);
}

}  // namespace
}  // namespace ZQKorvex
