#include "corvane/text.h"

#include <gtest/gtest.h>

#include "corvane/error.h"
#include "test_support.h"

namespace corvane {
namespace {

// "😀" is U+1F600: four UTF-8 bytes, two UTF-16 units.
const std::string kSmile = "\xF0\x9F\x98\x80";
const std::string kFffd = "\xEF\xBF\xBD";

using corvane::testing::ErrorNumber;

TEST(TextLen, CountsUtf16Units) {
  struct Case {
    std::string s;
    int32_t len;
  } cases[] = {
      {"", 0},
      {"abc", 3},
      {"中文测试", 4},
      {"a" + kSmile + "b", 4},
      {"\xE4\xB8", 2},           // a cut-off sequence: two stray bytes
      {"\xC0\xAF", 2},           // overlong form of "/"
      {"\xED\xA0\x80", 3},       // an encoded surrogate is not a character
      {std::string(37, 'x') + "é" + std::string(20, 'y'), 58},  // the ASCII fast path around a letter
  };
  for (const auto& c : cases) EXPECT_EQ(Len(c.s), c.len) << c.s;
}

TEST(TextSlices, MidLeftRightCountUnits) {
  EXPECT_EQ(Mid("中文测试", 2, 2), "文测");
  EXPECT_EQ(Mid("中文测试", 3), "测试");
  EXPECT_EQ(Mid("中文测试", 5), "");
  EXPECT_EQ(Mid("abc", 2, 100), "bc");
  EXPECT_EQ(Mid("abc", 1, 0), "");
  EXPECT_EQ(Left("中文abc", 3), "中文a");
  EXPECT_EQ(Left("ab", 5), "ab");
  EXPECT_EQ(Right("abc中文", 3), "c中文");
  EXPECT_EQ(Right("abc", 0), "");
  EXPECT_EQ(Right("abc", 9), "abc");
  EXPECT_EQ(Mid("x" + kSmile + "y", 2, 2), kSmile);
  EXPECT_EQ(Mid("a\xFF" "b", 2, 1), "\xFF");  // a stray byte is kept, not replaced
}

TEST(TextSlices, CuttingASurrogatePairGivesReplacementChar) {
  const std::string s = "a" + kSmile + "b";  // units: a, high, low, b
  EXPECT_EQ(Mid(s, 2, 1), kFffd);
  EXPECT_EQ(Mid(s, 3), kFffd + "b");
  EXPECT_EQ(Mid(s, 3, 0), "");
  EXPECT_EQ(Left(s, 2), "a" + kFffd);
  EXPECT_EQ(Right(s, 2), kFffd + "b");
}

TEST(TextSlices, BadArgumentsRaiseInvalidCall) {
  EXPECT_EQ(ErrorNumber([] { Mid("abc", 0); }), 5);
  EXPECT_EQ(ErrorNumber([] { Mid("abc", 1, -2); }), 5);
  EXPECT_EQ(ErrorNumber([] { Left("abc", -1); }), 5);
  EXPECT_EQ(ErrorNumber([] { Right("abc", -1); }), 5);
}

TEST(TextInStr, PositionsInUnits) {
  struct Case {
    int32_t start;
    std::string s, find;
    int32_t pos;
  } cases[] = {
      {1, "abcabc", "c", 3},
      {4, "abcabc", "c", 6},
      {7, "abcabc", "c", 0},
      {1, "abc", "C", 0},  // binary comparison
      {1, "中文测试", "测", 3},
      {2, kSmile + "x", "x", 3},  // a start on the low half still finds what follows
      {1, kSmile + "中", "中", 3},
      {1, "abc", "", 1},
      {3, "abc", "", 3},
      {4, "abc", "", 0},
      {1, "", "", 0},
      {1, "ab", "abc", 0},
  };
  for (const auto& c : cases) EXPECT_EQ(InStr(c.start, c.s, c.find), c.pos) << c.s << " / " << c.find;
  EXPECT_EQ(InStr("select a from t", "from"), 10);
  EXPECT_EQ(ErrorNumber([] { InStr(0, "abc", "a"); }), 5);
}

TEST(TextInStr, ByteMatchesInsideACharacterDoNotCount) {
  // "中" is E4 B8 AD; its trailing bytes alone are stray bytes that occur only as themselves.
  EXPECT_EQ(InStr("中", "\xB8\xAD"), 0);
  EXPECT_EQ(InStr("中\xB8\xAD", "\xB8\xAD"), 2);
  EXPECT_EQ(InStr("中", "\xE4\xB8"), 0);  // a cut-off head is two stray bytes, not the start of 中
  EXPECT_EQ(InStr("\xE4\xB8" "x", "\xE4\xB8"), 1);
  EXPECT_EQ(Replace("中\xB8", "\xB8", "!"), "中!");
  EXPECT_EQ(Split("中\xB8" "a", "\xB8").size(), 2u);
}

TEST(TextInStr, TextCompareIgnoresAsciiCase) {
  EXPECT_EQ(InStrText("Select A FROM t", "from"), 10);
  EXPECT_EQ(InStrText("ABCabc", "c"), 3);
  EXPECT_EQ(InStrText(4, "ABCabc", "C"), 6);
  EXPECT_EQ(InStrText("中文From", "FROM"), 3);
}

TEST(TextTrim, BlanksOnly) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(LTrim("  a b  "), "a b  ");
  EXPECT_EQ(RTrim("  a b  "), "  a b");
  EXPECT_EQ(Trim("\ta\r\n"), "\ta\r\n");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(LTrim(""), "");
  EXPECT_EQ(Trim("\xE3\x80\x80x"), "\xE3\x80\x80x");  // the ideographic space stays
}

TEST(TextCase, AsciiLettersOnly) {
  EXPECT_EQ(LCase("AbC中É"), "abc中É");
  EXPECT_EQ(UCase("aBc中é"), "ABC中é");
  EXPECT_TRUE(EqualsNoCase("strOrder", "STRORDER"));
  EXPECT_TRUE(EqualsNoCase("", ""));
  EXPECT_FALSE(EqualsNoCase("abc", "abd"));
  EXPECT_FALSE(EqualsNoCase("abc", "ab"));
  EXPECT_FALSE(EqualsNoCase("@", "`"));  // differ by 0x20 but are not letters
}

TEST(TextReplace, EveryOccurrenceLeftToRight) {
  EXPECT_EQ(Replace("order by a, order by b", "order by ", ""), "a, b");
  EXPECT_EQ(Replace("aaa", "aa", "b"), "ba");  // not overlapping
  EXPECT_EQ(Replace("a'b'c", "'", "`"), "a`b`c");
  EXPECT_EQ(Replace("abc", "", "x"), "abc");
  EXPECT_EQ(Replace("abc", "B", "x"), "abc");
  EXPECT_EQ(Replace("一||二||", "||", "<br>"), "一<br>二<br>");
  EXPECT_EQ(Replace("ab", "ab", ""), "");
  EXPECT_EQ(Replace("x", "x", "xx"), "xx");  // the replacement is not searched again
}

TEST(TextSplitJoin, Elements) {
  using V = std::vector<std::string>;
  EXPECT_EQ(Split("", ","), V{});
  EXPECT_EQ(Split("a", ","), V{"a"});
  EXPECT_EQ(Split("a,,b,", ","), (V{"a", "", "b", ""}));
  EXPECT_EQ(Split(",", ","), (V{"", ""}));
  EXPECT_EQ(Split("a b", ""), V{"a b"});
  EXPECT_EQ(Split("日,一,二", ","), (V{"日", "一", "二"}));
  EXPECT_EQ(Split("a; name=b; name=", "; name="), (V{"a", "b", ""}));
  EXPECT_EQ(Join(V{"a", "", "b"}, ","), "a,,b");
  EXPECT_EQ(Join(V{}, ","), "");
  EXPECT_EQ(Join(Split("x*y*z", "*"), "*"), "x*y*z");
}

TEST(TextUtf16, RoundTripsAndReplacesWhatHasNoUtf16Form) {
  const std::string s = "a中" + kSmile;
  EXPECT_EQ(ToUtf16(s), (std::u16string{u'a', u'中', 0xD83D, 0xDE00}));
  EXPECT_EQ(FromUtf16(ToUtf16(s)), s);
  EXPECT_EQ(ToUtf16("\xFF"), std::u16string(1, 0xFFFD));
  EXPECT_EQ(ToUtf16("\xE4\xB8").size(), 2u);  // as many units as Len counts
  EXPECT_EQ(FromUtf16(std::u16string{0xD83D, u'x'}), kFffd + "x");
  EXPECT_EQ(FromUtf16(std::u16string{0xDE00}), kFffd);
}

}  // namespace
}  // namespace corvane
