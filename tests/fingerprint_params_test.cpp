#include "korvex/fingerprint_params.h"

#include <gtest/gtest.h>

#include "korvex/fptypes.h"
#include "korvex/fpversion.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {

namespace {

const std::string pathHead = "Path,ver=2.0.0,size=4096,bonds=0-5";

}  // namespace

TEST(TypeString, RoundTripsForEveryKind) {
  const struct {
    unsigned int kind;
    const char* text;
  } defaults[] = {
      {101, "MACCS166,ver=2.2.0"},
      {102,
       "Path,ver=2.0.0,size=4096,bonds=0-5,atype=AtmNum|Arom|Chiral|FCharge|HvyDeg|Hyb|EqHalo,"
       "btype=Order|Chiral"},
      {104,
       "Circular,ver=2.0.0,size=4096,radius=0-5,atype=AtmNum|Arom|Chiral|FCharge|HCount|EqHalo,"
       "btype=Order"},
      {9002, "UHTree,ver=2.0.0,bonds=0-4,atype=AtmNum|Arom|Chiral|FCharge|HvyDeg|Hyb,btype=Order"}};
  for (const auto& [kind, text] : defaults) EXPECT_EQ(ZQGetFPType(kind)->GetFPTypeString(), text);
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    const ZQFPTypeBase* type = ZQGetFPType(kind.number);
    const std::string text = type->GetFPTypeString();
    EXPECT_EQ(GetFPTypeFromTypeStringPrefix(text), kind.number);
    EXPECT_EQ(ZQGetFPType(text), type);
    EXPECT_TRUE(ZQIsValidFPTypeString(text));
  }
  std::mt19937 random(5);
  for (int i = 0; i < 200; ++i) {
    const unsigned int max = random() % 20;
    const ZQFPTypeBase* type = ZQGetPathFPType(16 + random() % 65520, random() % (max + 1), max,
                                               1 + random() % 2047, random() % 8);
    EXPECT_EQ(ZQGetFPType(type->GetFPTypeString()), type) << type->GetFPTypeString();
  }
  EXPECT_EQ(ZQGetPathFPType(64, 0, 1, 0, 8)->GetFPTypeString(),
            "Path,ver=2.0.0,size=64,bonds=0-1,atype=None,btype=invalid");
}

TEST(TypeString, IsReadInAnyOrderAndReportedWhereItIsWrong) {
  const std::string bad = "ZQGetFPType() invalid fingerprint type string";
  const std::string oldType = "ZQGetFPType() fingerprint type with old version number";
  const std::string oldValid = "ZQIsValidFPTypeString() fingerprint type with old version number";
  const std::string types = "atype=AtmNum,btype=Order";
  const std::pair<std::string, std::string> refusals[] = {
      {"Path,ver=2.0.0", "Size cannot be initialized for `Path` type!"},
      {"Path," + types, "Missing fingerprint version!"},
      {"Path,ver=0.0.0,size=64,bonds=0-5," + types, "Missing fingerprint version!"},
      {"Pathway,ver=2.0.0", "Invalid string can not be tokenized for `Path` type!"},
      {"Pathway=1,ver=2.0.0", "'Pathway' is not a valid fingerprint type primitive!"},
      {"Tree,ver=2", "Invalid version for `Tree` type!"},
      {"Tree,radius=0-5", "'radius' is not a valid fingerprint type primitive!"},
      {"Circular,bonds=0-5", "'bonds' is not a valid fingerprint type primitive!"},
      {"Path,size=-4", "Invalid fingerprint size for `Path` type!"},
      {"Path,ver=2.0.0,size=0,bonds=0-5," + types, "Size cannot be initialized for `Path` type!"},
      {"Circular,radius=5", "Invalid fingerprint distance for `Circular` type!"},
      {"Path,bonds=0-5-9", "Invalid fingerprint distance for `Path` type!"},
      {"Path,bonds=x-5", "Invalid fingerprint minimum distance for `Path` type!"},
      {"Path,bonds=0-y", "Invalid fingerprint maximum distance for `Path` type!"},
      {"Path,ver=2.0.0,size=64," + types,
       "Min or max distance cannot be initialized for `Path` type!"},
      {pathHead + ",btype=Order", "Atom type cannot be initialized for `Path` type!"},
      {pathHead + ",atype=AtmNum", "Bond type cannot be initialized for `Path` type!"},
      {pathHead + ",atype=None,btype=None",
       "The atom and bond type cannot be both None for `Path` type!"},
      {pathHead + ",atype=Atom,btype=Order", ""},
      {pathHead + ",atype=AtmNum,btype=Order|", ""}};
  CapturedReports reports;
  for (const auto& [text, why] : refusals) {
    Texts says;
    if (!why.empty()) says.push_back(why);
    EXPECT_FALSE(ZQIsValidFPTypeString(text)) << text;
    EXPECT_EQ(reports.Take(), says) << text;
    says.push_back(bad);
    EXPECT_EQ(ZQGetFPType(text), nullptr) << text;
    EXPECT_EQ(reports.Take(), says) << text;
  }
  const auto path = [&](const std::string& change) {
    return "Path,ver=2.0.0,size=64,bonds=0-5," + types + "," + change;
  };
  const std::string moved =
      "Path,btype=DefaultPathBond,bonds=1-2,size=9,size=64,atype=DefaultPathAtom,ver=2.0.0";
  const std::string uhTree = "UHTree,ver=2.0.0,bonds=3-1,atype=Hyb,btype=None,numbits=";
  const std::string noVersion = "Version number cannot be initialized for `Lingo` type!";
  const std::string badTree = "Invalid version for `UHTree` type!";
  const std::string badVersion = "Invalid version for `MACCS166` type!";
  const std::string badToken = "Invalid `Lingo` type string!";
  const std::string missing = "Missing fingerprint version!";
  // The result and the reports of each reader for a string.
  const struct {
    std::string text;
    bool valid;       // well-formed
    bool usable;      // gives a type
    Texts validSays;  // of ZQIsValidFPTypeString
    Texts typeSays;   // of ZQGetFPType
  } readings[] = {{moved, true, true, {}, {}},
                  {path("ver=1.0.0"), true, false, {oldValid}, {oldType}},
                  {path("ver=14.254.14"), true, false, {oldValid}, {oldType}},
                  {path("size=70000"), true, false, {}, {"Assertion"}},
                  {path("bonds=5-0"), true, false, {}, {"Assertion"}},
                  {"MACCS166", true, false, {oldValid}, {oldType}},
                  {"Lingo,ver=2.0.0,extra=1", true, true, {}, {}},
                  {"Lingo,extra=1", false, false, {noVersion}, {noVersion}},
                  {"MACCS166,ver=x", false, false, {badVersion}, {badVersion}},
                  {"Lingo,extra", false, false, {badToken}, {badToken}},
                  {"Lingo2=1,ver=2.0.0", false, false, {}, {}},
                  {"path,ver=2.0.0", false, false, {}, {}},
                  {"", false, false, {}, {}},
                  {uhTree + "0", true, true, {}, {}},
                  {uhTree + "7", true, true, {"Assertion"}, {"Assertion"}},
                  {"UHPath", false, false, {missing}, {missing, bad}},
                  {"UHTree,ver=x,numbits=9", false, false, {badTree}, {badTree, bad}}};
  for (const auto& r : readings) {
    EXPECT_EQ(ZQIsValidFPTypeString(r.text), r.valid) << r.text;
    EXPECT_EQ(reports.Take(), r.validSays) << r.text;
    EXPECT_EQ(ZQGetFPType(r.text) != nullptr, r.usable) << r.text;
    EXPECT_EQ(reports.Take(), r.typeSays) << r.text;
  }
  // An old version is an error for the kinds without parameters, a warning for the others.
  ZQGetFPType(std::string("MACCS166"));
  EXPECT_EQ(reports.Count(ZQErrorLevel::Error), 1U);
  reports.Take();
  ZQGetFPType(path("ver=1.0.0"));
  EXPECT_EQ(reports.Count(ZQErrorLevel::Warning), 1U);
}

TEST(TypeString, ParsersTakeThePrefixAnywhereAndLeaveOnesForWhatIsMissing) {
  CapturedReports reports;
  unsigned short version = 1;
  unsigned int numbits = 1, min = 1, max = 1, atype = 1, btype = 1;
  EXPECT_TRUE(ZQGetPathFPTypeParams(
      "size=4096,Path,ver=2.0.0,bonds=0-5,atype=DefaultPathAtom,btype=DefaultPathBond", version,
      numbits, min, max, atype, btype));
  EXPECT_EQ((std::vector<unsigned int>{version, numbits, min, max, atype, btype}),
            (std::vector<unsigned int>{8192, 4096, 0, 5, 191, 3}));
  EXPECT_EQ(reports.Take(), Texts{});
  EXPECT_FALSE(
      ZQGetTreeFPTypeParams("size=64,ver=2.0.0", version, numbits, min, max, atype, btype));
  EXPECT_EQ(reports.Take(), Texts{"Missing fingerprint type!"});
  EXPECT_EQ((std::vector<unsigned int>{version, numbits, min, max, atype, btype}),
            (std::vector<unsigned int>{8192, 64, ~0U, ~0U, ~0U, ~0U}));
  EXPECT_FALSE(ZQGetLingoFPTypeParams(",", version));
  EXPECT_EQ(reports.Take(), Texts{"Invalid fingerprint type string!"});
}

// For any text: no assertion, and the same type as for a caller's own string if that one asserts
// nothing.
TEST(TypeString, TextFromOutsideIsHeldToTheLimitsWithoutAssertions) {
  const std::pair<const char*, const char*> faults[] = {
      {"Path,ver=2.0.0,size=0008,bonds=0-5,atype=Arom,btype=Order",
       "size 8 is outside 16 to 65535"},
      {"Tree,ver=2.0.0,size=64,bonds=0-20,atype=Arom,btype=Order",
       "maximum bonds 20 is outside 0 to 19"},
      {"Tree,ver=2.0.0,size=64,bonds=6-5,atype=Arom,btype=Order",
       "minimum bonds 6 is outside 0 to 5"},
      {"UHCircular,ver=2.0.0,radius=10-5,atype=Arom,btype=Order",
       "minimum radius 10 is outside 0 to 9"},
      {"UHPath,ver=2.0.0,bonds=6-5,atype=Arom,btype=Order,numbits=1",
       "numbits 1 is outside 0 to 0"},
      {"UHPath,ver=2.0.0,bonds=6-5,atype=Arom,btype=Order", ""},
      {"Circular,ver=2.0.0,size=64,radius=0-255,atype=Arom,btype=Order", ""}};
  CapturedReports reports;
  for (const auto& [text, fault] : faults) {
    std::string why = "what was before";
    EXPECT_EQ(ZQReadFPType(text, &why) != nullptr, *fault == '\0') << text;
    EXPECT_EQ(why, fault);
    EXPECT_EQ(reports.Take(), Texts{}) << text;
  }
  std::string why;
  EXPECT_TRUE(ZQCanMakeFP(ZQGetFPType(ZQFPType::UnhashedTree), &why));
  EXPECT_FALSE(ZQCanMakeFP(ZQReadFPType(faults[6].first), &why));
  EXPECT_EQ(why, "maximum radius 255 is above 10, the largest that fingerprints are made of");
  const std::uint64_t id = ZQFPPathType::GetIDFromParams(64, 0, 5, 1, 1);
  const ZQFPPathType own(8192, id);
  const ZQFPMACCS166Type keys(8224, 5);
  for (const ZQFPTypeBase* type : std::initializer_list<const ZQFPTypeBase*>{
           nullptr, &own, &keys, ZQGetPathFPType(0, 64, 0, 5, 1, 1),
           ZQGetPathFPType(64, 0, 5, 0, 0), pathTypeFactory.GetFPType(8192, id | 1ULL << 42)}) {
    EXPECT_FALSE(ZQCanMakeFP(type, &why));
    EXPECT_FALSE(why.empty());
  }
  EXPECT_EQ(reports.Take(), Texts{});

  std::mt19937 random(11);
  const std::string pieces[] = {"Path",      "UHTree",    "Lingo",      "ver=2.0.0",  "ver=x",
                                "size=64",   "size=9",    "bonds=0-5",  "bonds=9-30", "radius=1-2",
                                "numbits=0", "numbits=3", "atype=None", "atype=Hyb",  "btype=Order",
                                "",          "="};
  int usable = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string text =
        ZQGetFPType(ZQGetFPKinds()[random() % ZQGetFPKinds().size()].number)->GetFPTypeString();
    for (unsigned int n = random() % 3; n != 0; --n) {
      if (random() % 2 != 0) {
        text.append(",").append(pieces[random() % std::size(pieces)]);
      } else {
        text[random() % text.size()] = "0123456789,=-x"[random() % 14];
      }
    }
    const ZQFPTypeBase* read = ZQReadFPType(text);
    EXPECT_EQ(reports.Count(ZQErrorLevel::Fatal), 0U) << text;
    reports.Take();
    const ZQFPTypeBase* made = ZQGetFPType(text);
    EXPECT_EQ(read, reports.Count(ZQErrorLevel::Fatal) == 0 ? made : nullptr) << text;
    reports.Take();
    usable += read != nullptr;
  }
  EXPECT_GT(usable, 1000);
  EXPECT_LT(usable, 19000);
}

TEST(TypeString, IsMadeAndParsedByTheTypeClass) {
  std::string text = "of ";
  ZQGetFPTypeStringFromID<ZQFPTreeType>(text, 8192, ZQFPTreeType::GetIDFromParams(64, 1, 3, 1, 1));
  EXPECT_EQ(text, "of Tree,ver=2.0.0,size=64,bonds=1-3,atype=AtmNum,btype=Order");
  text.clear();
  ZQGetFPTypeStringFromID<ZQFPLingoType>(text, 0);
  EXPECT_EQ(text, "Lingo,ver=0.0.0");
  unsigned short version = 1;
  unsigned int numbits = 1, min = 1, max = 1, atype = 1, btype = 1;
  EXPECT_TRUE(ZQGetFPTypeParamsFromString<ZQFPUnhashedPathType>(
      "UHPath,ver=2.0.0,numbits=7,bonds=9-2,atype=Hyb,btype=None", version, numbits, min, max,
      atype, btype));
  EXPECT_EQ((std::vector<unsigned int>{version, numbits, min, max, atype, btype}),
            (std::vector<unsigned int>{8192, 7, 9, 2, 32, 0}));
  EXPECT_TRUE(ZQGetFPTypeParamsFromString<ZQFPMACCS166Type>("MACCS166", version));
  EXPECT_EQ(version, 0);
  ZQFPCircularType::SetParamsFromID(ZQFPCircularType::GetIDFromParams(65535, 2, 255, 8191, 255),
                                    numbits, min, max, atype, btype);
  EXPECT_EQ((std::vector<unsigned int>{numbits, min, max, atype, btype}),
            (std::vector<unsigned int>{65535, 2, 255, 8191, 255}));
  ZQFPUnhashedCircularType::SetParamsFromID(ZQFPUnhashedCircularType::GetIDFromParams(9, 2, 1, 3),
                                            min, max, atype, btype);
  EXPECT_EQ((std::vector<unsigned int>{min, max, atype, btype}),
            (std::vector<unsigned int>{9, 2, 1, 3}));
  EXPECT_EQ(treeTypeFactory.GetFPType(8192, ZQFPTreeType::GetIDFromParams(64, 1, 3, 1, 1)),
            ZQGetTreeFPType(64, 1, 3, 1, 1));
  EXPECT_EQ(maccs166TypeFactory.GetFPType(8224), ZQGetFPType(ZQFPType::MACCS166));
  CapturedReports reports;
  EXPECT_EQ(ZQFPPathType::GetIDFromParams(15, 0, 5, 8192, 1), 0U);
  ZQFPPathType::SetParamsFromID(15ULL << 44 | 1ULL << 42, numbits, min, max, atype, btype);
  EXPECT_EQ(reports.Take(),
            (Texts{"Assertion", "Assertion", "Unrecognised data in ZQFPPathType!", "Assertion"}));
}

TEST(TypeParams, ViewTheKindsThatHaveThem) {
  const ZQFPTypeParams tree(ZQGetTreeFPType(512, 1, 3, 23, 1));
  EXPECT_TRUE(tree.IsValid());
  EXPECT_EQ((std::vector<unsigned int>{tree.GetFPType(), tree.GetVersion(), tree.GetNumBits(),
                                       tree.GetMinDistance(), tree.GetMaxDistance(),
                                       tree.GetAtomTypes(), tree.GetBondTypes()}),
            (std::vector<unsigned int>{105, 8192, 512, 1, 3, 23, 1}));
  EXPECT_EQ(ZQGetFingerPrintSize(ZQGetFPType(101U)), 166U);
  EXPECT_EQ(ZQGetFingerPrintSize(ZQGetFPType(103U)), 0U);
  EXPECT_EQ(ZQGetFingerPrintName(ZQGetFPType(104U)), "Circular");
  EXPECT_EQ(ZQGetFPTypeVersion("MACCS166,ver=1.2.3"), 4096 + 2 * 16 + 3);
  EXPECT_EQ(ZQGetFPTypeVersion(ZQGetFPType(9000U)->GetFPTypeString()), 0);
  EXPECT_EQ(ZQGetFPTypeVersion("nothing"), 0);
  const ZQFPTypeParams unhashed(ZQGetFPType(9001U));
  EXPECT_FALSE(unhashed.IsValid());
  EXPECT_EQ(unhashed.GetFPType(), 9001U);
  CapturedReports reports;
  EXPECT_EQ(ZQGetFingerPrintName(ZQGetFPType(9002U)), "UNKNOWN");
  EXPECT_EQ(ZQGetFingerPrintName(nullptr), "UNKNOWN");
  EXPECT_EQ(ZQGetFingerPrintSize(nullptr), 0U);
  EXPECT_EQ(reports.Take(), Texts(3, "Assertion"));
}

TEST(Version, PacksAndChecks) {
  for (const auto& [text, packed] :
       {std::pair("2.2.0", 8224), {"14.254.14", 61422}, {"0.0.0", 0}}) {
    EXPECT_TRUE(ZQIsValidFingerPrintVersion(text));
    EXPECT_EQ(ZQGetFingerPrintVersion(text), packed);
    EXPECT_EQ(ZQGetFingerPrintVersionString(static_cast<unsigned short>(packed)), text);
  }
  for (const char* text :
       {"", "2", "2.0", "2.0.0.0", "a.b.c", "15.0.0", "2.255.0", "2.0.15", "-2.0.0", "2.0.0 "}) {
    EXPECT_FALSE(ZQIsValidFingerPrintVersion(text)) << text;
  }
  CapturedReports reports;
  EXPECT_EQ(ZQGetFingerPrintVersion("16.0.0"), 0);
  EXPECT_EQ(reports.Take().size(), 2U);
  EXPECT_EQ(ZQGetFingerPrintVersion(std::string("x")), 0);
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  EXPECT_EQ(ZQGetFingerPrintVersion(3U), 0);
  EXPECT_EQ(reports.Take(), Texts{});
  EXPECT_EQ(ZQGetFingerPrintVersion(4U), 0);
  EXPECT_EQ(reports.Take(), Texts{"ZQGetFingerPrintVersion : unknown fingerprint type!"});
}

}  // namespace ZQKorvex
