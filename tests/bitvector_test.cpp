#include "contract/bostrel/bitvector.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>

#include "tests/mol_helpers.h"

namespace Bostrel {
namespace {

TEST(BitVector, BehavesAsASetOfBits) {
  // Every operation against a set, across the border between inline and heap storage.
  std::mt19937 random(7);
  for (const unsigned int limit : {40U, 64U, 65U, 200U}) {
    ZQBitVector bits;
    std::set<unsigned int> model;
    unsigned int size = 64;
    for (int step = 0; step < 2000; ++step) {
      const unsigned int bit = random() % limit;
      switch (random() % 4) {
        case 0:
        case 1:
          bits.SetBitOn(bit);
          model.insert(bit);
          size = std::max(size, bit + 1);
          break;
        case 2:
          bits.SetBitOff(bit);
          model.erase(bit);
          break;
        default:
          if (step % 16 != 0) break;
          size = bit;
          bits.SetSize(bit);
          model.erase(model.lower_bound(bit), model.end());
      }
      ASSERT_EQ(bits.GetSize(), size);
      ASSERT_EQ(bits.CountBits(), model.size());
      for (unsigned int i = 0; i < limit + 3; ++i) ASSERT_EQ(bits.IsBitOn(i), model.count(i) == 1);
    }
    std::string hex;
    bits.ToHexString(hex);
    ZQBitVector read(1);
    ASSERT_TRUE(read.FromHexString(hex));
    bits.SetSize(read.GetSize());  // the text has whole bytes
    EXPECT_EQ(read, bits);
    const ZQBitVector copy(bits);
    ZQBitVector moved(std::move(bits));
    EXPECT_EQ(moved, copy);
    moved = ZQBitVector(300);
    EXPECT_EQ(moved.CountBits(), 0U);
  }
}

TEST(BitVector, HexTextStartsWithByteZero) {
  ZQBitVector bits(20);
  bits.SetBitOn(0);
  bits.SetBitOn(12);
  bits.SetBitOn(19);
  std::string hex;
  bits.ToHexString(hex);
  EXPECT_EQ(hex, "011008");
  for (const char* bad : {"0", "0g", "zz", "0 "}) EXPECT_FALSE(bits.FromHexString(bad)) << bad;
  EXPECT_EQ(bits.CountBits(), 3U);
}

TEST(BitVector, GrowthPastIntMaxIsRefused) {
  CapturedReports reports;
  ZQBitVector bits(100);
  bits.SetBitOn(static_cast<unsigned int>(INT_MAX));
  EXPECT_EQ(reports.Take(), Texts{"Max size for an ZQBitVector is INT_MAX"});
  EXPECT_EQ(bits.GetSize(), 100U);
  bits.SetBitOn(UINT_MAX);  // one more than this wraps to 0
  EXPECT_EQ(bits.GetSize(), 100U);
}

TEST(BitVector, CountsPadTheShorterVector) {
  ZQBitVector a(100);
  ZQBitVector b(300);
  for (const unsigned int bit : {1U, 64U, 99U}) a.SetBitOn(bit);
  for (const unsigned int bit : {64U, 98U, 200U, 299U}) b.SetBitOn(bit);
  std::vector<unsigned int> counts(4);  // only a, only b, both, neither
  ZQGetBitCounts(a, b, &counts[0], &counts[1], &counts[2], &counts[3]);
  EXPECT_EQ(counts, (std::vector<unsigned int>{2, 3, 1, 294}));
}

}  // namespace
}  // namespace Bostrel
