#include "upload/byte_string.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "test_support.h"

namespace corvane::upload {
namespace {

TEST(ByteFunctions, PositionsCountFromOneAndClipAtTheEnd) {
  const std::string s = "ab\r\nab";
  EXPECT_EQ(InStrB(2, s, "ab"), 5);
  EXPECT_EQ(InStrB(4, s, ""), 4);  // an empty needle is found where the search starts, unless beyond the end
  EXPECT_EQ(InStrB(7, s, ""), 0);
  EXPECT_EQ(MidB(s, 5, 15), "ab");
  EXPECT_EQ(MidB(s, 8, 1), "");
  EXPECT_EQ(LeftB(s, 40), s);
  for (auto bad : {+[] { InStrB(0, "a", "a"); }, +[] { MidB("a", 0, 1); }, +[] { MidB("a", 1, -1); },
                   +[] { LeftB("a", -1); }})
    EXPECT_EQ(corvane::testing::ErrorNumber(bad), 5);
}

// The block searches must agree with plain ones for every needle, start and place of the match,
// at the block edges and the haystack's last bytes too.
TEST(ByteFunctions, BlockSearchesAgreeWithPlainOnes) {
  std::mt19937 rng(7);
  // A small alphabet makes near misses common.
  auto random = [&](size_t n) {
    std::string s(n, ' ');
    for (char& c : s) c = "ab;-\r\n"[rng() % 6];
    return s;
  };
  for (size_t n : {0u, 1u, 15u, 16u, 17u, 31u, 32u, 33u, 63u, 64u, 65u, 100u, 200u}) {
    for (int round = 0; round < 40; ++round) {
      const std::string hay = random(n);
      std::string needle = random(1 + rng() % 9);
      if (n >= needle.size() && rng() % 2)
        needle = hay.substr(rng() % (n - needle.size() + 1), needle.size());
      for (size_t from = 0; from <= n + 1; ++from)
        ASSERT_EQ(FindBytes(hay, needle, from), hay.find(needle, from))
            << hay << "|" << needle << "|" << from;
      // One pass counts "a;" and lists every place of the needle, overlapping ones too.
      std::vector<size_t> all;
      for (size_t at = hay.find(needle); at != std::string::npos; at = hay.find(needle, at + 1))
        all.push_back(at);
      const MarkScan scan = ScanMarks(hay, "a;", needle, 1000);
      EXPECT_EQ(scan.counted, CountBytes(hay, "a;"));
      ASSERT_EQ(scan.listed, all) << hay << "|" << needle;
    }
  }
  // Past the cap the list is given up.
  EXPECT_FALSE(ScanMarks(std::string(40, '-') + std::string(60, 'x'), "a;", "--", 10).listComplete);
}

}  // namespace
}  // namespace corvane::upload
