#pragma once

/// Tests of code with versions for several processors: each version that runs here is forced in
/// turn.

#include <gtest/gtest.h>

#include "korvex/processor_local.h"

class EveryVariant : public ::testing::TestWithParam<std::string> {
 public:
  static std::string NameOf(const ::testing::TestParamInfo<std::string>& processor) {
    std::string name = processor.param;
    std::erase(name, '-');
    return name;
  }

 protected:
  EveryVariant() { EXPECT_TRUE(ZQKorvex::ZQForceProcessor(GetParam().c_str())); }
  ~EveryVariant() override { ZQKorvex::ZQForceProcessor(nullptr); }
};

INSTANTIATE_TEST_SUITE_P(Variants, EveryVariant,
                         ::testing::ValuesIn(ZQKorvex::ZQGetProcessorNames()),
                         EveryVariant::NameOf);
