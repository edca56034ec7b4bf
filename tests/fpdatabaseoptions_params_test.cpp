#include "korvex/fpdatabaseoptions_params.h"

#include <gtest/gtest.h>

#include "korvex/fingerprint_params.h"
#include "korvex/version.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {
namespace {

class ParamsTest : public testing::Test {
 protected:
  // The type resulting from these words on the command line, or null.
  const ZQFPTypeBase* TypeOf(const std::vector<std::string>& words) {
    ZQInterface itf;
    EXPECT_TRUE(ZQConfigureFingerPrint(itf, ZQGetFPType(ZQFPType::Path)));
    return ZQParseCommandLine(itf, words) ? ZQSetupFingerPrint(itf) : nullptr;
  }

  CapturedReports reports;
};

TEST_F(ParamsTest, DefaultsGiveTheTypeBack) {
  for (const char* text : {"Path,ver=2.0.0,size=512,bonds=1-7,atype=None,btype=Order|InRing",
                           "Circular,ver=2.0.0,size=1024,radius=0-3,atype=AtmNum,btype=None",
                           "Tree,ver=2.0.0,size=32,bonds=0-4,atype=AtmNum|EqHBDon,btype=Order",
                           "Path,ver=2.0.0,size=4096,bonds=0-15,atype=AtmNum,btype=Order"}) {
    ZQInterface itf;
    const ZQFPTypeBase* type = ZQGetFPType(text);
    ASSERT_TRUE(ZQConfigureFingerPrint(itf, type)) << text;
    EXPECT_EQ(ZQSetupFingerPrint(itf), type) << text;
  }
}

TEST_F(ParamsTest, WordsMakeATypeOrAMessage) {
  EXPECT_EQ(
      TypeOf({"-numbits", "1024", "-mind", "2", "-maxd", "3", "-a", "Arom|AtmNum", "-b", "None"}),
      ZQGetPathFPType(1024, 2, 3, 3, 0));
  EXPECT_EQ(TypeOf({"-fptype", "Tree", "-atomtype", "DefaultTreeAtom", "-bondtype", "Order"}),
            ZQGetTreeFPType(4096, 0, 5, 63, 1));
  EXPECT_EQ(reports.Take(), Texts{});
  const struct {
    std::vector<std::string> words;
    const char* message;
  } cases[] = {
      {{"-mindistance", "6", "-maxdistance", "5"},
       "ZQSetupFingerPrint Invalid min distance (6) > max distance (5)"},
      {{"-atomtype", "None", "-bondtype", "None"},
       "ZQSetupFingerPrint Invalid fingerprint atom or bond typing"},
      {{"-numbits", "63"}, "-numbits: 63 is outside the legal range, 64 to 65535"},
      {{"-maxdistance", "11"}, "-maxdistance: 11 is outside the legal range, 0 to 10"},
  };
  for (const auto& [words, message] : cases) {
    EXPECT_EQ(TypeOf(words), nullptr);
    EXPECT_EQ(reports.Take(), Texts{message});
  }
}

TEST_F(ParamsTest, RefusesTypesThatItCannotConfigure) {
  ZQInterface itf;
  EXPECT_FALSE(ZQConfigureFingerPrint(itf, nullptr));
  EXPECT_FALSE(ZQConfigureFingerPrint(itf, ZQGetFPType(ZQFPType::Lingo)));
  EXPECT_TRUE(itf.GetInterfaces().empty());
  EXPECT_TRUE(ZQConfigureFingerPrint(itf, ZQGetFPType(ZQFPType::Path)));
  EXPECT_FALSE(ZQConfigureFingerPrint(itf, ZQGetFPType(ZQFPType::Path)));
  ZQInterface bare;
  EXPECT_TRUE(ZQConfigureFingerPrintType(bare, ZQFPType::MACCS166, "-kind", ""));
  EXPECT_EQ(ZQSetupFingerPrint(bare), nullptr);
  const std::string caller = "ZQConfigureFingerPrint() ";
  EXPECT_EQ(reports.Take(),
            (Texts{caller + "invalid fingerprint type pointer!",
                   caller + "invalid fingerprint type (only path, circular or tree is allowed)",
                   caller + "problem configuring fingerprint interface!",
                   "ZQInterface::Get, requesting value of non-existent parameter -fptype",
                   "ZQSetupFingerPrint Invalid fingerprint type"}));
}

TEST_F(ParamsTest, SearchOptionsAreCopiedWhereTheyWereSet) {
  ZQFPDatabaseOptions options(25, ZQSimMeasure::Dice);
  ZQInterface itf;
  ASSERT_TRUE(ZQConfigureFPDatabaseOptions(itf, options));
  EXPECT_EQ(itf.Get<int>("-limit"), 25);
  EXPECT_EQ(itf.Get<std::string>("-simfunc"), "Dice");
  EXPECT_FALSE(itf.FindParameter("-cutoff")->HasDefault());
  ASSERT_TRUE(ZQParseCommandLine(itf, {"-c", "0.5", "-descending", "false", "-s", "Manhattan"}));
  ZQSetupFPDatabaseOptions(options, itf);
  EXPECT_EQ(options.GetLimit(), 25U);
  EXPECT_EQ(options.GetSimFunc(), ZQSimMeasure::Manhattan);
  EXPECT_TRUE(options.HasCutoff());
  EXPECT_EQ(options.GetCutoff(), 0.5F);
  EXPECT_FALSE(options.GetDescendingOrder());

  ZQInterface withCutoff;
  ASSERT_TRUE(ZQConfigureFPDatabaseOptions(withCutoff, options));
  EXPECT_EQ(withCutoff.Get<float>("-cutoff"), 0.5F);
}

TEST_F(ParamsTest, AMaskSelects) {
  const char* names[] = {"-limit", "-simfunc", "-cutoff"};
  for (unsigned int mask = 0; mask < 8; ++mask) {
    ZQInterface itf;
    ASSERT_TRUE(ZQConfigureFPDatabaseOptions(itf, mask));
    for (unsigned int bit = 0; bit < 3; ++bit) {
      EXPECT_EQ(itf.FindParameter(names[bit]) != nullptr, (mask >> bit & 1) != 0) << mask;
    }
    EXPECT_EQ(itf.FindParameter("-descending"), nullptr);
  }
}

TEST_F(ParamsTest, MemoryTypeByName) {
  ZQInterface itf;
  ASSERT_TRUE(ZQConfigureFPDatabaseMemoryType(itf, 1, "-mem", "-m"));
  EXPECT_EQ(ZQGetFPDatabaseMemoryType(itf, "-mem"), 1U);
  ASSERT_TRUE(ZQParseCommandLine(itf, {"-m", "CUDA"}));
  EXPECT_EQ(ZQGetFPDatabaseMemoryType(itf, "-mem"), 3U);
  EXPECT_EQ(ZQGetFPDatabaseMemoryType(itf, "-other"), 0U);
}

TEST_F(ParamsTest, DetailsListTheNamespaceAndLinkTheMethod) {
  ZQInterface itf;
  ASSERT_TRUE(ZQConfigureFingerPrint(itf, ZQGetFPType(ZQFPType::Path)));
  ASSERT_TRUE(ZQConfigureFPDatabaseOptions(itf, ZQFPDatabaseOptions()));
  const std::string& atoms = itf.FindParameter("-atomtype")->GetDetails();
  for (const char* part : {"Primitive expressions :", "EqHalo - halogen atoms are equal\n",
                           "AtmNum\n", "\tCombined expressions :"}) {
    EXPECT_NE(atoms.find(part), std::string::npos) << part;
  }
  EXPECT_EQ(itf.FindParameter("-fptype")->GetDetails().find("Combined"), std::string::npos);
  EXPECT_EQ(itf.FindParameter("-limit")->GetDetails(),
            "\n\tIf set to zero, then all of the similarity scores are returned\n\tAPI : " +
                ZQGetKorvexMethodHyperlink("ZQFPDatabaseOptions", "SetLimit") + " method");
}

TEST(Version, LinksItsPages) {
  EXPECT_EQ(ZQGetKorvexMethodHyperlink("ZQFPDatabase", "Clear"),
            ":ref:`ZQFPDatabase::Clear <toolkits/python/korvextk/ZQKorvexClasses/"
            "ZQFPDatabase.html#ZQKorvex::ZQFPDatabase::Clear>`");
}

}  // namespace
}  // namespace ZQKorvex
