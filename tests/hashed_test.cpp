// The common properties of the three hashed kinds with parameters.

#include <gtest/gtest.h>

#include "korvex/circular.h"
#include "korvex/path.h"
#include "korvex/tree.h"
#include "tests/generator_helpers.h"

namespace ZQKorvex {

namespace {

struct Kind {
  const char *name, *operation, *distance, *ending, *ofMaxDistance;
  unsigned int number, defaultMax, defaultAtom, defaultBond, largest;
  bool (*make)(ZQFingerPrint&, const ZQMolBase&, unsigned int, unsigned int, unsigned int,
               unsigned int, unsigned int);
  bool (*makeDefault)(ZQFingerPrint&, const ZQMolBase&);
  bool (*makeTyped)(ZQFingerPrint&, const ZQMolBase&, const ZQFPTypeBase*);
  const ZQFPTypeBase* (*type)(unsigned int, unsigned int, unsigned int, unsigned int, unsigned int);
  const char* wrongType;
};

const Kind kinds[] = {
    {"path", "ZQMakePathFP()", "bonds", "!", "", ZQFPType::Path, 5, 191, 3, 20, ZQMakePathFP,
     ZQMakePathFP, ZQMakePathFP, ZQGetPathFPType, "ZQMakePathFP : invalid path fingerprint type!"},
    {"circular", "ZQMakeCircularFP()", "radius", "", " 5", ZQFPType::Circular, 5, 4239, 1, 10,
     ZQMakeCircularFP, ZQMakeCircularFP, ZQMakeCircularFP, ZQGetCircularFPType,
     "ZQMakeCircularFP : invalid circular fingerprint type"},
    {"tree", "ZQMakeTreeFP()", "bonds", "", "", ZQFPType::Tree, 4, 63, 1, 20, ZQMakeTreeFP,
     ZQMakeTreeFP, ZQMakeTreeFP, ZQGetTreeFPType, "ZQMakeTreeFP ;invalid tree fingerprint type"}};

std::string Number(unsigned int number) { return std::to_string(number); }

std::string Join(const Texts& parts) {
  std::string text;
  for (const std::string& part : parts) text += part;
  return text;
}

}  // namespace

TEST(Hashed, BitsDontDependOnNumberingHydrogensOrKekuleStructure) {
  for (const Kind& kind : kinds) {
    std::vector<std::string> all = SampleSmiles();
    // Two assignments that differ, none of them aromatic.
    for (const char* smiles : {"Cc1ccc1C", "Clc1ccccccc1O", "Fc1cc2cccc2c1", "*1ccccc1Cl",
                               "*[n+]1ccccc1C", "Cn1(C)cccc(F)c1"}) {
      all.emplace_back(smiles);
    }
    for (const std::string& smiles : all) {
      SCOPED_TRACE(Join({kind.name, " of ", smiles}));
      const ZQMol mol = ReadSmiles(smiles);
      // All flags at once, to detect a perceived value or a class that merges too much.
      ZQFingerPrint fp;
      ASSERT_TRUE(kind.make(fp, mol, 4096, 0, 5, 127 + 4096, 7));
      for (const ZQMol& other : OtherGuises(mol, 8)) {
        ZQFingerPrint again;
        ASSERT_TRUE(kind.make(again, other, 4096, 0, 5, 127 + 4096, 7));
        EXPECT_TRUE(again == fp);
      }
    }
  }
}

/// A molecule of another kind, whose atoms still return values that aren't perceived.
class StaleMol final : public ZQStoredMol<ZQMolBase> {
 public:
  explicit StaleMol(const ZQMolBase& other) { CopyFrom(other); }
  bool IsPerceived(unsigned int step) const override {
    return step != ZQPerceived::Rings && step != ZQPerceived::Symmetry &&
           ZQStoredMol::IsPerceived(step);
  }
};

TEST(Hashed, SymmetryClassesOfAnotherGraphLeaveNothingOut) {
  const auto perceive = [](ZQMolBase& mol) {
    ZQAssignAromaticFlags(mol, 2, true, 0, false);
    ZQPerceiveSymmetry(mol, true, false);
  };
  ZQMol benzene = "c1ccccc1"_mol;
  perceive(benzene);
  ZQMol chlorobenzene = benzene;
  chlorobenzene.NewBond(chlorobenzene.GetAtomAt(0), chlorobenzene.NewAtom(17), 1);
  chlorobenzene.GetAtomAt(0)->SetImplicitHCount(0);
  ZQMol ion = "Oc1ccc(O)cc1"_mol;
  perceive(ion);
  ion.GetAtomAt(0)->SetFormalCharge(-1);
  ion.GetAtomAt(0)->SetImplicitHCount(0);
  StaleMol stale(benzene);
  stale.NewBond(stale.GetAtomAt(0), stale.NewAtom(17), 1);
  stale.GetAtomAt(0)->SetImplicitHCount(0);
  for (unsigned int i = 0; i < 6; ++i) stale.GetAtomAt(i)->SetSymmetryClass(1);
  stale.GetAtomAt(6)->SetInRing(true);
  EXPECT_FALSE(ZQGraphMol(stale).GetAtomAt(6)->IsInRing());
  for (const Kind& kind : kinds) {
    SCOPED_TRACE(kind.name);
    const auto expectSame = [&](const ZQMolBase& mol, const ZQMolBase& fresh) {
      ZQFingerPrint fp;
      ZQFingerPrint expected;
      ASSERT_TRUE(kind.makeDefault(fp, mol));
      ASSERT_TRUE(kind.makeDefault(expected, fresh));
      EXPECT_EQ(BitsOf(fp), BitsOf(expected));
    };
    expectSame(benzene, "c1ccccc1"_mol);
    expectSame(chlorobenzene, "Clc1ccccc1"_mol);
    expectSame(ion, "[O-]c1ccc(O)cc1"_mol);
    expectSame(stale, "Clc1ccccc1"_mol);
  }
  // Used unchanged, without a copy.
  std::vector<unsigned int> atoms;
  std::vector<unsigned int> bonds;
  ZQGetFingerprintAtomTypes(atoms, bonds, stale, 1, 1);
  std::vector<unsigned int> ids;
  EXPECT_EQ(ZQPathIdGeneratorStack(ids, stale, atoms, bonds, 0, 0), 7U);
  // Classes of the current graph are used, also after preparation.
  ZQGraphMol copy(benzene);
  ZQPrepareForFingerprinting(copy, ZQFPType::Circular);
  EXPECT_EQ(copy.GetAtomAt(5)->GetSymmetryClass(), 1U);
  ZQGetFingerprintAtomTypes(atoms, bonds, copy, 1, 1);
  ids.clear();
  EXPECT_EQ(ZQPathIdGeneratorStack(ids, copy, atoms, bonds, 0, 0), 1U);
}

TEST(Hashed, HolesInTheIndicesAreNoAtoms) {
  ZQMol mol = "*C(N([2H])[2H])(C)C=O"_mol;
  mol.DeleteAtom(mol.GetAtomAt(0));
  ASSERT_TRUE(mol.GetMaxAtomIdx() > mol.NumAtoms());
  mol.GetAtomAt(1)->SetImplicitHCount(1);
  for (const Kind& kind : kinds) {
    ZQFingerPrint plain;
    ZQFingerPrint holed;
    ASSERT_TRUE(kind.makeDefault(plain, "CC(N)C=O"_mol));
    ASSERT_TRUE(kind.makeDefault(holed, mol));
    EXPECT_TRUE(holed == plain) << kind.name;
    EXPECT_EQ(plain.GetFPTypeBase(), ZQGetFPType(kind.number));
  }
}

TEST(Hashed, BadParametersAreRepairedWithAWarningEach) {
  for (const Kind& k : kinds) {
    SCOPED_TRACE(k.name);
    const std::string in = Join({k.operation, " : invalid "});
    const std::string of = Join({" for ", k.name, " fingerprint"});
    const auto used = [&](unsigned int number) {
      return Join({" (default ", Number(number), " is used)", k.ending});
    };
    const auto size = [&](unsigned int number) {
      return Join({in, "bit vector size ", Number(number), of, used(4096)});
    };
    const auto min = [&](unsigned int number) {
      return Join({in, "min ", k.distance, " ", Number(number), of, used(0)});
    };
    const auto max = [&](unsigned int number) {
      return Join(
          {in, "max ", k.distance, " ", Number(number), of, k.ofMaxDistance, used(k.defaultMax)});
    };
    const auto above = [&](unsigned int least, unsigned int greatest) {
      return Join({in, "min ", k.distance, " ", Number(least), " > max ", k.distance, " ",
                   Number(greatest), of, " (min", k.distance, " = max", k.distance, " is used)",
                   k.ending});
    };
    const std::string types =
        Join({in, "to have both atom and bond types set to be None (default types are used)!"});
    const unsigned int far = k.largest + 1;
    const unsigned int d = k.defaultMax;
    const struct {
      unsigned int numbits, min, max, atype, btype;
      Texts reports;
      std::vector<unsigned int> repaired;
    } cases[] = {{15, 0, 2, 1, 1, {size(15)}, {4096, 0, 2, 1, 1}},
                 {65536, 0, 2, 1, 1, {size(65536)}, {4096, 0, 2, 1, 1}},
                 {64, far, far + 9, 1, 1, {min(far), max(far + 9)}, {64, 0, d, 1, 1}},
                 {64, far, 3, 1, 1, {min(far)}, {64, 0, 3, 1, 1}},
                 {64, 7, far, 1, 1, {max(far), above(7, d)}, {64, d, d, 1, 1}},
                 {64, 3, 2, 1, 1, {above(3, 2)}, {64, 2, 2, 1, 1}},
                 {64, 0, 1, 0, 0, {types}, {64, 0, 1, k.defaultAtom, k.defaultBond}},
                 {16, 0, 10, 1, 0, {}, {16, 0, 10, 1, 0}}};
    CapturedReports reports;
    for (const auto& c : cases) {
      ZQFingerPrint fp;
      EXPECT_TRUE(k.make(fp, "CCO"_mol, c.numbits, c.min, c.max, c.atype, c.btype));
      EXPECT_EQ(reports.Take(), c.reports);
      const auto& r = c.repaired;
      EXPECT_EQ(fp.GetFPTypeBase(), k.type(r[0], r[1], r[2], r[3], r[4]));
      EXPECT_EQ(fp.GetSize(), r[0]);
    }
    // 20 bonds aren't repaired, but there is no such type.
    ZQFingerPrint fp;
    EXPECT_EQ(k.make(fp, "CCO"_mol, 64, 0, k.largest, 1, 1), k.largest == 10);
    EXPECT_EQ(reports.Take(), k.largest == 10 ? Texts{} : Texts{"Assertion"});
  }
}

TEST(Hashed, RefusesWhatItCannotFingerprint) {
  ZQMol invalid;
  invalid.SetValid(false);
  for (const Kind& kind : kinds) {
    CapturedReports reports;
    ZQFingerPrint fp;
    ASSERT_TRUE(kind.makeDefault(fp, "CCO"_mol));
    const auto before = BitsOf(fp);
    EXPECT_FALSE(kind.makeDefault(fp, invalid));
    EXPECT_FALSE(fp);
    EXPECT_EQ(BitsOf(fp), before);
    for (const char* empty : {"", "*", "[H][H]"}) {
      ASSERT_TRUE(kind.makeDefault(fp, ReadSmiles(empty))) << empty;
      EXPECT_EQ(fp.CountBits(), 0U);
      EXPECT_EQ(fp.GetFPTypeBase(), ZQGetFPType(kind.number));
    }
    EXPECT_EQ(reports.Take(), Texts{});
    for (const ZQFPTypeBase* type : {ZQGetFPType(ZQFPType::Lingo), ZQGetFPType(0U)}) {
      reports.Take();
      EXPECT_FALSE(kind.makeTyped(fp, "CCO"_mol, type));
      EXPECT_EQ(reports.Take(), Texts{kind.wrongType});
    }
    // With a type of an older version bits are made, but they don't get that type.
    EXPECT_FALSE(kind.makeTyped(fp, "CCO"_mol,
                                kind.number == ZQFPType::Path ? ZQGetPathFPType(0, 64, 0, 5, 1, 1)
                                : kind.number == ZQFPType::Circular
                                    ? ZQGetCircularFPType(0, 64, 0, 5, 1, 1)
                                    : ZQGetTreeFPType(0, 64, 0, 5, 1, 1)));
    EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  }
}

}  // namespace ZQKorvex
