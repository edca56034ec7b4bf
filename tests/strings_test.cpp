#include "contract/bostrel/strings.h"

#include <gtest/gtest.h>

#include "contract/bostrel/base.h"
#include "contract/bostrel/iter.h"
#include "contract/bostrel/nspace.h"
#include "tests/mol_helpers.h"

namespace Bostrel {
namespace {

TEST(Strings, Tokenize) {
  EXPECT_EQ(ZQStringTokenize("a,b,c", ','), (Texts{"a", "b", "c"}));
  EXPECT_EQ(ZQStringTokenize(",a,,b,", ','), (Texts{"a", "b"}));
  EXPECT_EQ(ZQStringTokenize("", ','), Texts{});
}

TEST(Strings, NumbersAreReadWholeOrNotAtAll) {
  unsigned int number = 9;
  for (const char* bad : {"", " 1", "1 ", "-1", "+1", "1.0", "0x10", "4294967296", "1e3"}) {
    EXPECT_FALSE(ZQStringToNumber(bad, number)) << bad;
  }
  EXPECT_EQ(number, 9U);
  EXPECT_TRUE(ZQStringToNumber("4294967295", number));
  EXPECT_EQ(number, 4294967295U);
  std::uint64_t large = 0;
  EXPECT_TRUE(ZQStringToNumber("18446744073709551615", large));
  EXPECT_FALSE(ZQStringToNumber("18446744073709551616", large));
  EXPECT_EQ(large, UINT64_MAX);
  int integer = 0;
  EXPECT_TRUE(ZQStringToNumber("-12", integer));
  EXPECT_EQ(integer, -12);
  float real = 0;
  EXPECT_TRUE(ZQStringToNumber("0.25", real));
  EXPECT_EQ(real, 0.25F);
}

TEST(Strings, FileExtension) {
  EXPECT_EQ(ZQFileExtension("a.b/c.fpbin"), "fpbin");
  EXPECT_EQ(ZQFileExtension("a.b/c", "none"), "none");
  EXPECT_EQ(ZQFileExtension("c.smi.gz"), "gz");
  EXPECT_EQ(ZQFileExtension("c.", "none"), "");
}

TEST(Namespace, CombinesInAnyOrderAndWritesInTableOrder) {
  const ZQNamespaceInterface flags("Flags", ZQNamespaceMode::Combining,
                                   {{"A", 1, ""}, {"B", 4, ""}, {"C", 2, ""}});
  EXPECT_EQ(flags.GetValue("C|A", 0), 3U);
  EXPECT_EQ(flags.GetName(7, "invalid"), "A|B|C");
  for (const char* bad : {"", "|", "A|", "|A", "A||B", "a", "A|D", "A |B"}) {
    EXPECT_FALSE(flags.IsValid(bad)) << bad;
    EXPECT_EQ(flags.GetValue(bad, 99), 99U) << bad;
  }
  for (const unsigned int bad : {0U, 8U, 9U}) EXPECT_EQ(flags.GetName(bad, "invalid"), "invalid");
  const ZQNamespaceInterface single("Single", ZQNamespaceMode::Single,
                                    {{"A", 1, ""}, {"B", 2, ""}});
  EXPECT_FALSE(single.IsValid("A|B"));
  EXPECT_EQ(single.GetName(3, "invalid"), "invalid");
  EXPECT_EQ(single.GetName(2, "invalid"), "B");
}

TEST(Base, GenericDataByTagAndType) {
  CapturedReports reports;
  ZQBase base;
  base.AddData(ZQGetTag("note"), std::string("first"));
  base.AddData(ZQGetTag("note"), std::string("second"));
  base.SetData(58, 2);
  const ZQBase copy(base);
  base.SetData(ZQGetTag("note"), std::string("only"));
  int number = 0;
  std::string text;
  EXPECT_TRUE(copy.GetData(58, number) && number == 2);
  EXPECT_TRUE(copy.GetData(ZQGetTag("note"), text) && text == "first");
  EXPECT_TRUE(base.GetData(ZQGetTag("note"), text) && text == "only");
  int data = 0;
  for (auto it = copy.GetDataIter(); it; ++it) ++data;
  EXPECT_EQ(data, 3);
  EXPECT_FALSE(copy.GetData(59, number));
  EXPECT_TRUE(reports.Take().empty());
  EXPECT_FALSE(copy.GetData(58, text));
  EXPECT_EQ(reports.Take().size(), 1U);
  EXPECT_TRUE(base.DeleteData(58));
  EXPECT_FALSE(base.DeleteData(58));
}

TEST(Iter, OwnsCopiesAndStepsSafely) {
  ZQIter<const int> it(new ZQVectorIter<const int>(std::vector<int>{1, 2, 3}));
  ++it;
  ZQIter<const int> copy(it);
  ++it;
  EXPECT_EQ(*it, 3);
  EXPECT_EQ(*copy, 2);
  ++it;
  EXPECT_FALSE(it);
  it.ToLast();
  EXPECT_EQ(*it, 3);
  copy.ToFirst();
  --copy;
  EXPECT_FALSE(copy);
  ZQIter<const int> none;
  ++none;
  EXPECT_FALSE(none);
}

TEST(Iter, JoinsIteratorsWhereverTheyStand) {
  const auto of = [](std::vector<int> values) {
    return ZQIter<const int>(new ZQVectorIter<const int>(std::move(values)));
  };
  ZQIter<const int> advanced = of({3, 4});
  advanced += 5;
  for (const auto& parts : std::vector<std::vector<ZQIter<const int>>>{
           {of({1, 2, 3, 4})},
           {of({1, 2}), advanced},
           {{}, of({}), of({1}), of({}), {}, of({2, 3, 4}), of({}), {}}}) {
    ZQConcatIter<const int> joined(parts);
    for (const int value : {1, 2, 3, 4}) {
      ASSERT_TRUE(joined);
      EXPECT_EQ(*joined, value);
      joined.Push();
      ++joined;
      ++joined;
    }
    EXPECT_FALSE(joined);
    joined += 2;
    EXPECT_FALSE(--joined);
    EXPECT_FALSE(joined -= 1);
    EXPECT_EQ(*--joined, 4);
    EXPECT_EQ(*(joined -= 3), 1);
    EXPECT_FALSE(joined -= 7);
    EXPECT_EQ(*(joined += 9), 3);
    const std::unique_ptr<ZQConcatIter<const int>> copy(joined.Copy());
    joined.ToLast();
    EXPECT_EQ(*joined, 4);
    joined.ToFirst();
    EXPECT_EQ(*joined, 1);
    EXPECT_EQ(**copy, 3);
  }
  ZQConcatIter<const int> none(of({}), {});
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(i == 0 ? none : --none);
  EXPECT_FALSE(none += 9);
}

}  // namespace
}  // namespace Bostrel
