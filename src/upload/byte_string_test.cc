#include "upload/byte_string.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "corvane/error.h"
#include "test_support.h"

namespace corvane::upload {
namespace {

using corvane::testing::ErrorNumber;

TEST(ByteFunctions, InStrBCountsFromOneAndFindsNothingPastTheEnd) {
  const std::string s = "ab\r\nab";
  EXPECT_EQ(InStrB(1, s, "\r\n"), 3);
  EXPECT_EQ(InStrB(2, s, "ab"), 5);
  EXPECT_EQ(InStrB(6, s, "b"), 6);
  EXPECT_EQ(InStrB(7, s, "b"), 0);     // beyond the end
  EXPECT_EQ(InStrB(100, s, ""), 0);
  EXPECT_EQ(InStrB(4, s, ""), 4);      // an empty needle is found where the search starts
  EXPECT_EQ(InStrB(1, "", "x"), 0);
  EXPECT_EQ(InStrB(1, s, "abc"), 0);
  EXPECT_EQ(ErrorNumber([&] { InStrB(0, s, "a"); }), 5);
  EXPECT_EQ(ErrorNumber([&] { InStrB(-3, s, "a"); }), 5);
}

TEST(ByteFunctions, MidBAndLeftBClipAtTheEndAndRefuseBadArguments) {
  const std::string s = "0123456789";
  EXPECT_EQ(MidB(s, 1, 3), "012");
  EXPECT_EQ(MidB(s, 9, 15), "89");
  EXPECT_EQ(MidB(s, 11, 1), "");
  EXPECT_EQ(MidB(s, 5, 0), "");
  EXPECT_EQ(LeftB(s, 4), "0123");
  EXPECT_EQ(LeftB(s, 40), s);
  EXPECT_EQ(LeftB("", 0), "");
  EXPECT_EQ(ErrorNumber([&] { MidB(s, 0, 1); }), 5);
  EXPECT_EQ(ErrorNumber([&] { MidB(s, 1, -1); }), 5);
  EXPECT_EQ(ErrorNumber([&] { LeftB(s, -1); }), 5);
}

// The block search must agree with a plain search for every needle length, every start and every
// place of the match, the block edges and the haystack's last bytes included.
TEST(ByteFunctions, FindBytesAgreesWithAPlainSearch) {
  std::mt19937 rng(7);
  for (size_t n : {0u, 1u, 15u, 16u, 17u, 31u, 32u, 33u, 63u, 64u, 65u, 200u}) {
    for (int round = 0; round < 40; ++round) {
      std::string hay(n, '\0');
      for (char& c : hay) c = "ab;-\r\n"[rng() % 6];  // a small alphabet makes near misses common
      size_t m = 1 + rng() % 9;
      std::string needle(m, '\0');
      for (char& c : needle) c = "ab;-\r\n"[rng() % 6];
      if (n >= m && rng() % 2) needle = hay.substr(rng() % (n - m + 1), m);
      for (size_t from = 0; from <= n + 1; ++from)
        ASSERT_EQ(FindBytes(hay, needle, from), std::string_view(hay).find(needle, from))
            << "n=" << n << " needle=" << needle << " from=" << from;
    }
  }
}

// The one-pass scan must count and list exactly what separate searches find, at block edges too.
TEST(ByteFunctions, ScanMarksAgreesWithSeparateSearches) {
  std::mt19937 rng(11);
  const std::string counted = "; n=";
  for (size_t n : {0u, 5u, 31u, 32u, 40u, 64u, 100u, 300u}) {
    for (int round = 0; round < 60; ++round) {
      std::string hay(n, '\0');
      for (char& c : hay) c = "; n=-x"[rng() % 6];
      std::string listed(1 + rng() % 6, '\0');
      for (char& c : listed) c = "-x;"[rng() % 3];
      MarkScan scan = ScanMarks(hay, counted, listed, 1000);
      EXPECT_EQ(scan.counted, CountBytes(hay, counted));
      std::vector<size_t> all;
      for (size_t at = hay.find(listed); at != std::string::npos; at = hay.find(listed, at + 1)) all.push_back(at);
      EXPECT_TRUE(scan.listComplete);
      ASSERT_EQ(scan.listed, all) << "n=" << n << " listed=" << listed;
    }
  }
  // Past the cap the list is given up; the count is still whole.
  MarkScan capped = ScanMarks(std::string(100, '-') + "; n=", counted, "--", 10);
  EXPECT_FALSE(capped.listComplete);
  EXPECT_TRUE(capped.listed.empty());
  EXPECT_EQ(capped.counted, 1u);
  EXPECT_TRUE(ScanMarks("a; n=b", counted, "", 10).listComplete);
}

TEST(ByteFunctions, CountBytesCountsWithoutOverlap) {
  EXPECT_EQ(CountBytes("aaaa", "aa"), 2u);
  EXPECT_EQ(CountBytes("; name=; name=x; name", "; name="), 2u);
  EXPECT_EQ(CountBytes("", "; name="), 0u);
  EXPECT_EQ(CountBytes("abc", ""), 0u);
}

}  // namespace
}  // namespace corvane::upload
