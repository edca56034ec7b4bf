#include "contract/bostrel/throw.h"

#include <gtest/gtest.h>

#include "tests/mol_helpers.h"

namespace Bostrel {
namespace {

class ThrowTest : public testing::Test {
 protected:
  ThrowTest() {
    ZQThrow.SetSink([this](ZQErrorLevel level, const std::string& message) {
      reports.push_back(std::string(ZQGetErrorLevelName(level)) + ": " + message);
      return goOn;
    });
  }
  ~ThrowTest() override {
    ZQThrow.SetSink(nullptr);
    ZQThrow.SetLevel(ZQErrorLevel::Info);
  }

  bool goOn = true;
  std::vector<std::string> reports;
};

TEST_F(ThrowTest, FormatsAndFiltersByLevel) {
  ZQThrow.Debug("below the default threshold");
  ZQThrow.Warning("%s : %d of %s\n", "Caller()", 3, std::string(5000, 'x').c_str());
  ZQThrow.SetLevel(ZQErrorLevel::Error);
  ZQThrow.Warning("now below");
  ZQThrow.Error("kept");
  EXPECT_EQ(reports, (std::vector<std::string>{"Warning: Caller() : 3 of " + std::string(5000, 'x'),
                                               "Error: kept"}));
}

TEST_F(ThrowTest, AssertionReportsWhereAndGoesOn) {
  const int line = __LINE__ + 1;
  EXPECT_FALSE(ZQ_ASSERT(1 + 1 == 3));
  EXPECT_TRUE(ZQ_ASSERT(1 + 1 == 2));
  EXPECT_FALSE(ZQ_ASSERT_MSG(false, "told why"));
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_EQ(reports[0], "Fatal: Assertion failed at line " + std::to_string(line) +
                            " of tests/throw_test.cpp.");
  EXPECT_EQ(reports[1].find("Fatal: told why\nAssertion failed at line "), 0U);
}

TEST_F(ThrowTest, FatalEndsTheProgramUnlessTheSinkSaysOtherwise) {
  goOn = false;
  EXPECT_DEATH(ZQThrow.Fatal("broken"), "");
  ZQThrow.SetSink(nullptr);
  EXPECT_DEATH(ZQThrow.Fatal("broken %d", 7), "Fatal: broken 7");
}

TEST_F(ThrowTest, ManyThreadsReportOneAtATime) {
  constexpr int threads = 4;
  constexpr int each = 500;
  OnThreads(threads, [](unsigned int) {
    for (int i = 0; i < each; ++i) ZQThrow.Info("report %d", i);
  });
  EXPECT_EQ(reports.size(), static_cast<std::size_t>(threads * each));
}

}  // namespace
}  // namespace Bostrel
