#include "contract/bostrel/interface.h"

#include <gtest/gtest.h>

#include "tests/mol_helpers.h"

namespace Bostrel {
namespace {

using Words = std::vector<std::string>;

const ZQNamespaceInterface colours("Colour", ZQNamespaceMode::Combining,
                                   {{"red", 1, "as a rose"}, {"green", 2, ""}});

// One parameter of each type, in a tree of two levels.
class InterfaceTest : public testing::Test {
 protected:
  InterfaceTest() {
    itf.AddParameter(ZQParameter("FILE", "", ZQParamType::String, "A file").SetPositional());
    itf.AddParameter(ZQParameter("-limit", "-l", ZQParamType::Int, "How many")
                         .SetLegalRange(0, 100)
                         .SetDefault(10));
    itf.AddParameter({"-help", "-h", ZQParamType::Switch, "This help"});
    ZQInterface* more = itf.AddInterface("more");
    more->AddParameter({"-cutoff", "", ZQParamType::Float, "From where"});
    more->AddParameter({"-down", "-d", ZQParamType::Bool, "Downwards"});
    more->AddParameter(ZQParameter("-colour", "-c", ZQParamType::String, "What colour")
                           .SetLegalNames(colours, {"none"})
                           .SetDefault("red|green"));
  }

  CapturedReports reports;
  ZQInterface itf{"paint", "Paints a file."};
};

TEST_F(InterfaceTest, ReadsACommandLine) {
  ASSERT_TRUE(ZQParseCommandLine(
      itf, {"--limit", "7", "x.smi", "-cutoff", "-0.25", "-d", "false", "-c", "green|red"}));
  EXPECT_EQ(itf.Get<std::string>("FILE"), "x.smi");
  EXPECT_EQ(itf.Get<int>("-limit"), 7);
  EXPECT_EQ(itf.Get<float>("-cutoff"), -0.25F);
  EXPECT_FALSE(itf.Get<bool>("-down"));
  EXPECT_EQ(itf.Get<std::string>("-colour"), "green|red");
  EXPECT_EQ(reports.Take(), Texts{});
}

TEST_F(InterfaceTest, TheNameOfABoolStandsForTrue) {
  for (const Words& words : {Words{"x.smi", "-down"}, {"-d", "x.smi"}, {"-d", "true", "x.smi"}}) {
    ZQInterface fresh;
    for (const char* name : {"FILE", "-down"}) fresh.AddParameter(*itf.FindParameter(name));
    EXPECT_TRUE(ZQParseCommandLine(fresh, words) && fresh.Get<bool>("-down"));
    EXPECT_EQ(fresh.Get<std::string>("FILE"), "x.smi");
  }
}

TEST_F(InterfaceTest, RefusesBadCommandLinesWithOneMessage) {
  const struct {
    Words words;
    const char* message;
  } cases[] = {
      {{}, "argument FILE is missing"},
      {{"a", "b"}, "'b' is one argument too many"},
      {{"a", "-limt", "3"}, "unknown option '-limt'; did you mean -limit?"},
      {{"a", "--xyzzyplugh"}, "unknown option '--xyzzyplugh'"},
      {{"a", "-limit"}, "option -limit needs a value"},
      {{"a", "-l", "3", "-limit", "4"}, "option -limit is given twice"},
      {{"a", "-limit", "3x"}, "-limit: '3x' is not a whole number"},
      {{"a", "-limit", "101"}, "-limit: 101 is outside the legal range, 0 to 100"},
      {{"a", "-limit", "-1"}, "-limit: -1 is outside the legal range, 0 to 100"},
      {{"a", "-cutoff", "nan"}, "-cutoff: 'nan' is not a number"},
      {{"a", "-down", "yes"}, "'yes' is one argument too many"},
      {{"a", "-colour", "red|gren"},
       "-colour: 'red|gren' is not one of red, green, joined by \"|\", or none; "
       "did you mean green?"},
      {{"a", "-colour", ""}, "-colour: '' is not one of red, green, joined by \"|\", or none"},
  };
  for (const auto& [words, message] : cases) {
    ZQInterface fresh("paint");
    fresh.AddParameter(ZQParameter("FILE", "", ZQParamType::String, "").SetPositional());
    ZQInterface* options = fresh.AddInterface("options");
    for (const char* name : {"-limit", "-cutoff", "-down", "-colour"}) {
      options->AddParameter(*itf.FindParameter(name));
    }
    EXPECT_FALSE(ZQParseCommandLine(fresh, words));
    EXPECT_EQ(reports.Take(), Texts{message});
  }
}

TEST_F(InterfaceTest, TwoDashesEndTheNamesAndASwitchTheLine) {
  EXPECT_TRUE(ZQParseCommandLine(itf, {"--", "-odd.smi"}));
  EXPECT_EQ(itf.Get<std::string>("FILE"), "-odd.smi");
  EXPECT_TRUE(ZQParseCommandLine(itf, {"-h", "-unknown"}));
  EXPECT_TRUE(itf.IsSet("-help"));
  EXPECT_EQ(itf.Get<int>("-l"), 10);
  EXPECT_FALSE(itf.IsSet("-limit"));
  EXPECT_EQ(reports.Take(), Texts{});
}

TEST_F(InterfaceTest, GetTellsWhyItHasNoValue) {
  EXPECT_EQ(itf.Get<int>("-size"), 0);
  EXPECT_EQ(itf.Get<float>("-cutoff"), 0.0F);
  EXPECT_EQ(itf.Get<std::string>("-limit"), "");
  EXPECT_TRUE(itf.FindParameter("-help")->SetValue({}));
  EXPECT_FALSE(itf.Get<bool>("-help"));
  EXPECT_EQ(reports.Take(),
            (Texts{"ZQInterface::Get, requesting value of non-existent parameter -size",
                   "ZQInterface::Get, requesting value of unset parameter -cutoff",
                   "ZQInterface::Get, requested parameter -limit is not of requested type",
                   "ZQInterface::Get, parameter -help is not set"}));
}

TEST_F(InterfaceTest, NamesAreUniqueInTheWholeTree) {
  EXPECT_EQ(itf.GetInterface("more")->AddParameter({"-x", "-l", ZQParamType::Int, ""}), nullptr);
  EXPECT_EQ(itf.AddParameter({"-c", "", ZQParamType::Int, ""}), nullptr);
  EXPECT_EQ(itf.AddInterface("more"), nullptr);
  EXPECT_FALSE(itf.FindParameter("-limit")->SetValue(3.0F));
  EXPECT_EQ(itf.Get<int>("-limit"), 10);
}

TEST_F(InterfaceTest, HelpIsReadableOn80Columns) {
  itf.AddParameter(ZQParameter("-secret", "", ZQParamType::Int, "").SetVisibility(1));
  itf.FindParameter("-colour")->AddDetail(
      "\n\tSee :ref:`Colour <pages/of/the/site/Colour.html#x>` namespace\n" +
      std::string(200, 'w'));
  const std::string brief = ZQGetHelp(itf);
  for (const char* part :
       {"usage: paint FILE [options]\n", "Paints a file.\n", "  -limit, -l N\n",
        "How many (0 to 100; default 10)\n", "\nmore:\n", "default red|green)"}) {
    EXPECT_NE(brief.find(part), std::string::npos) << part << " is missing in\n" << brief;
  }
  EXPECT_EQ(brief.find("namespace"), std::string::npos);
  EXPECT_EQ(brief.find("-secret"), std::string::npos);

  const std::string full = ZQGetHelp(itf, true, 1);
  EXPECT_NE(full.find("See Colour namespace\n"), std::string::npos) << full;
  EXPECT_NE(full.find("-secret"), std::string::npos);
  std::istringstream lines(full);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
}

}  // namespace
}  // namespace Bostrel
