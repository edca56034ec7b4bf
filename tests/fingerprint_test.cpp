#include "korvex/fingerprint.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "korvex/fpkinds.h"
#include "korvex/fptypes.h"
#include "korvex/fpversion.h"
#include "korvex/path.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {

namespace {

// A type of a foreign kind, or with an id that no factory makes.
class OddType final : public ZQFPTypeBase {
 public:
  OddType(unsigned int kind, std::uint64_t id) : ZQFPTypeBase(8192, id), kind_(kind) {}
  unsigned int GetFPType() const override { return kind_; }
  std::string GetFPTypeString() const override { return "odd"; }

 private:
  unsigned int kind_;
};

}  // namespace

TEST(FingerPrintType, IsOneObjectForAllThreads) {
  constexpr unsigned int distinct = 50;
  const auto type = [](unsigned int i) { return ZQGetTreeFPType(64 + i, 0, 3, 1 + i, 1); };
  std::vector<std::vector<const ZQFPTypeBase*>> found(4);
  OnThreads(4, [&](unsigned int t) {
    for (unsigned int i = 0; i < distinct; ++i) found[t].push_back(type(i));
  });
  for (const auto& mine : found) EXPECT_EQ(mine, found[0]);
  EXPECT_EQ(std::set(found[0].begin(), found[0].end()).size(), distinct);
  EXPECT_EQ(ZQGetFPType(101, true), ZQGetFPType(101, false));
}

TEST(FingerPrintType, PacksItsParameters) {
  const ZQFPTypeBase* largest = ZQGetCircularFPType(65535, 255, 255, 8191, 255);
  EXPECT_EQ(largest->GetID(), 0x0FFFF01FFFFFFFFFU);
  const ZQFPTypeBase* path = ZQGetPathFPType(4096, 0, 5, 191, 3);
  EXPECT_EQ(path->GetID(), 4096ULL << 44 | 191ULL << 24 | 3ULL << 16 | 5);
  EXPECT_EQ(path->GetVersion(), 8192);
  EXPECT_EQ(ZQGetUnhashedPathFPType(8192, 255, 0, 1, 2)->GetID(), 1ULL << 24 | 2 << 16 | 255 << 8);
}

TEST(FingerPrintType, LimitsAreAssertions) {
  const struct {
    const char* what;
    const ZQFPTypeBase* (*make)();
    std::size_t assertions;  // 0: legal
  } cases[] = {
      {"least", [] { return ZQGetPathFPType(16, 0, 0, 0, 0); }, 0},
      {"most", [] { return ZQGetTreeFPType(65535, 19, 19, 8191, 255); }, 0},
      {"few bits", [] { return ZQGetPathFPType(15, 0, 5, 1, 1); }, 1},
      {"many bits", [] { return ZQGetCircularFPType(65536, 0, 5, 1, 1); }, 1},
      {"atype", [] { return ZQGetTreeFPType(64, 0, 5, 8192, 1); }, 1},
      {"btype", [] { return ZQGetTreeFPType(64, 0, 5, 1, 256); }, 1},
      {"order", [] { return ZQGetPathFPType(64, 5, 4, 1, 1); }, 1},
      {"max bonds", [] { return ZQGetPathFPType(64, 0, 20, 1, 1); }, 1},
      {"both bonds", [] { return ZQGetPathFPType(64, 20, 20, 1, 1); }, 2},
      {"max radius", [] { return ZQGetCircularFPType(64, 0, 256, 1, 1); }, 1},
      {"unhashed order", [] { return ZQGetUnhashedTreeFPType(8192, 19, 2, 1, 1); }, 0},
      {"unhashed path", [] { return ZQGetUnhashedPathFPType(8192, 0, 256, 1, 1); }, 1},
      {"unhashed circular", [] { return ZQGetUnhashedCircularFPType(8192, 0, 10, 1, 1); }, 1},
      {"unhashed tree", [] { return ZQGetUnhashedTreeFPType(8192, 0, 20, 1, 1); }, 1},
      {"old path", [] { return ZQGetPathFPType(0, 64, 0, 5, 1, 1); }, 0},
      {"old Lingo", [] { return ZQGetLingoFPType(0); }, 0},
      {"old unhashed", [] { return ZQGetUnhashedPathFPType(0, 0, 5, 1, 1); }, 1},
      {"foreign version", [] { return ZQGetPathFPType(4096, 64, 0, 5, 1, 1); }, 1},
      {"foreign MACCS version", [] { return ZQGetMACCS166FPType(8192); }, 1}};
  CapturedReports reports;
  for (const auto& c : cases) {
    EXPECT_EQ(c.make() != nullptr, c.assertions == 0) << c.what;
    EXPECT_EQ(reports.Take(), Texts(c.assertions, "Assertion")) << c.what;
  }
  EXPECT_NE(ZQGetPathFPType(0, 64, 0, 5, 1, 1), ZQGetPathFPType(64, 0, 5, 1, 1));
  EXPECT_EQ(ZQGetFPType(0U), nullptr);
  EXPECT_EQ(ZQGetFPType(106U), nullptr);
  EXPECT_EQ(reports.Take(), Texts(2, "ZQGetFPType() unknown fingerprint type"));
}

TEST(FingerPrint, ComparesByTypeSizeAndBits) {
  CapturedReports reports;
  ZQFingerPrint a;
  ZQFingerPrint b;
  EXPECT_FALSE(a);
  EXPECT_EQ(a.GetSize(), 64U);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != a);
  EXPECT_FALSE(ZQIsSameFPType(a, b));
  EXPECT_EQ(reports.Take(), (Texts{"ZQFingerPrint::operator== : uninitialized fingerprint type!",
                                   "ZQFingerPrint::operator== : uninitialized fingerprint type!",
                                   "ZQIsSameFPType() : uninitialized fingerprint type!"}));
  a.SetFPTypeBase(ZQGetFPType(102U));
  b.SetFPTypeBase(ZQGetFPType(102U));
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(ZQIsFPType(a, 102));
  b.SetBitOn(3);
  EXPECT_TRUE(a != b);
  a = b;
  EXPECT_TRUE(a == b);
  a.SetFPTypeBase(ZQGetFPType(105U));
  EXPECT_FALSE(a == b);
  EXPECT_FALSE(ZQIsSameFPType(a, b));
  EXPECT_EQ(reports.Take(), Texts{});
}

TEST(MakeFP, DispatchesOnTheKind) {
  CapturedReports reports;
  const ZQMol mol = "CC(=O)O"_mol;
  ZQFingerPrint expected;
  ASSERT_TRUE(ZQMakePathFP(expected, mol));
  ZQFingerPrint fp;
  EXPECT_TRUE(ZQMakeFP(fp, mol, ZQGetFPType(ZQFPType::Path)));
  EXPECT_TRUE(fp == expected);
  EXPECT_TRUE(ZQMakeFP(fp, mol, ZQFPType::Path, true));
  EXPECT_EQ(fp.GetFPTypeBase(), ZQGetPathFPType(4096, 0, 5, 151, 3));
  const OddType odd(77, 0);
  const ZQFPTypeBase* const none[] = {nullptr, &odd};
  for (const ZQFPTypeBase* type : none) EXPECT_FALSE(ZQMakeFP(fp, mol, type));
  EXPECT_EQ(reports.Take(), Texts{});
  EXPECT_FALSE(ZQMakeFP(fp, mol, 77U));
  EXPECT_EQ(reports.Take(), (Texts{"ZQGetFPType() unknown fingerprint type",
                                   "ZQMakeFP() unknown fingerprint type"}));
  // An id with a stray bit decodes, but differs from the type that the fingerprint then has.
  const OddType stray(102, expected.GetFPTypeBase()->GetID() | 1ULL << 42);
  EXPECT_FALSE(ZQMakeFP(fp, mol, &stray));
  EXPECT_TRUE(fp == expected);
  EXPECT_EQ(reports.Take(), (Texts{"Unrecognised data in ZQFPPathType!", "Assertion"}));
}

class Twin final : public ZQFPTypeBase {
 public:
  explicit Twin(const ZQFPTypeBase& type)
      : ZQFPTypeBase(type.GetVersion(), type.GetID()), number_(type.GetFPType()) {}
  unsigned int GetFPType() const override { return number_; }
  std::string GetFPTypeString() const override { return {}; }

 private:
  unsigned int number_;
};

TEST(MakeFP, GivesEachKindItsOwnTypeAndNoOther) {
  CapturedReports reports;
  const ZQMol mol = "CC(=O)O"_mol;
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    SCOPED_TRACE(kind.name);
    const ZQFPTypeBase* type = ZQGetFPType(kind.number);
    ASSERT_EQ(type->GetFPType(), kind.number);
    ZQFingerPrint fp;
    EXPECT_TRUE(ZQMakeFP(fp, mol, type));
    EXPECT_EQ(fp.GetFPTypeBase(), type);
    EXPECT_EQ(reports.Take(), Texts{});
    // Has the same parameters, but isn't the shared object.
    const Twin twin(*type);
    EXPECT_EQ(ZQMakeFP(fp, mol, &twin), !kind.HasParams());
    EXPECT_EQ(fp.GetFPTypeBase(), type);
    EXPECT_EQ(reports.Take(), Texts(kind.HasParams() ? 1 : 0, "Assertion"));
  }
}

TEST(FPTypeFactory, OwnsOneTypeForEachKey) {
  ZQFPTypeFactory<ZQFPPathType> own;
  const std::uint64_t id = ZQGetFPType(ZQFPType::Path)->GetID();
  const unsigned short version = ZQGetFingerPrintVersion(ZQFPType::Path);
  EXPECT_EQ(own.GetFPType(version, id), own.GetFPType(version, id));
  EXPECT_NE(own.GetFPType(version, id), own.GetFPType(0, id));
  EXPECT_EQ(pathTypeFactory.GetFPType(version, id), ZQGetFPType(ZQFPType::Path));
  EXPECT_NE(own.GetFPType(version, id), ZQGetFPType(ZQFPType::Path));
  EXPECT_FALSE(ZQCanMakeFP(own.GetFPType(version, id)));
  EXPECT_EQ(lingoTypeFactory.GetFPType(ZQGetFingerPrintVersion(ZQFPType::Lingo)),
            ZQGetFPType(ZQFPType::Lingo));
}

TEST(MakeFP, WorksOnManyThreadsAtOnce) {
  std::vector<ZQMol> mols(SampleSmiles().size());
  for (std::size_t i = 0; i < mols.size(); ++i) ZQSmilesToMol(mols[i], SampleSmiles()[i]);
  std::vector<std::vector<ZQFingerPrint>> made(4, std::vector<ZQFingerPrint>(mols.size()));
  OnThreads(4, [&](unsigned int t) {
    for (std::size_t i = 0; i < mols.size(); ++i) ZQMakeFP(made[t][i], mols[i], ZQFPType::Path);
  });
  for (const auto& mine : made) {
    for (std::size_t i = 0; i < mols.size(); ++i) EXPECT_TRUE(mine[i] == made[0][i]);
  }
}

}  // namespace ZQKorvex
