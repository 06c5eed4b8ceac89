// The text functions: lengths and positions in UTF-16 units, characters above U+FFFF, invalid bytes
// (each one unit of its own), and the calls that raise 5.
#include "corvane/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_support.h"

namespace corvane {

// "😀" is U+1F600: four UTF-8 bytes, two UTF-16 units; U+FFFD stands for either half of it.
const std::string kSmile = "\xF0\x9F\x98\x80", kFffd = "\xEF\xBF\xBD", kPair = "a" + kSmile + "b";

TEST(Text, LengthsAndPositionsCountUtf16Units) {
  // Stray bytes count one each: a cut-off sequence (E4 B8), overlong forms of "/" (C0 AF and E0 80
  // AF), an encoded surrogate (ED A0 80). A run of ASCII is counted eight bytes at a time, around "é"
  // too. InStr finds whole characters only: "中" is E4 B8 AD, so neither B8 AD nor E4 B8 occurs in it; a
  // start on the low half of a pair still finds what follows; InStrText ignores the case of ASCII letters.
  // clang-format off
  const struct { int32_t got, want; } cases[] = {
      {Len(""), 0}, {Len("abc"), 3}, {Len("中文测试"), 4}, {Len(kPair), 4}, {Len("\xE4\xB8"), 2},
      {Len("\xC0\xAF"), 2}, {Len("\xED\xA0\x80"), 3}, {Len("\xE0\x80\xAF"), 3},
      {Len(std::string(37, 'x') + "é" + std::string(20, 'y')), 58}, {InStr("abcabc", "c"), 3},
      {InStr(4, "abcabc", "c"), 6}, {InStr(7, "abcabc", "c"), 0}, {InStr("abc", "C"), 0},
      {InStr("中文测试", "测"), 3}, {InStr(kSmile + "中", "中"), 3}, {InStr(2, kSmile + "x", "x"), 3},
      {InStr("abc", ""), 1}, {InStr(3, "abc", ""), 3}, {InStr(4, "abc", ""), 0}, {InStr("", ""), 0},
      {InStr("ab", "abc"), 0}, {InStr("中", "\xB8\xAD"), 0}, {InStr("中", "\xE4\xB8"), 0},
      {InStr("中\xB8\xAD", "\xB8\xAD"), 2}, {InStr("\xE4\xB8" "x", "\xE4\xB8"), 1},
      {InStrText("Select A FROM t", "from"), 10}, {InStrText("ABCabc", "c"), 3},
      {InStrText(4, "ABCabc", "C"), 6}, {InStrText("中文From", "FROM"), 3},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(c.got, c.want) << "case " << &c - cases;
  using testing::ErrorNumber;
  for (int n : {ErrorNumber([] { Mid("abc", 0); }), ErrorNumber([] { Mid("abc", 1, -2); }),
                ErrorNumber([] { Left("abc", -1); }), ErrorNumber([] { Right("abc", -1); }),
                ErrorNumber([] { InStr(0, "abc", "a"); }), ErrorNumber([] { InStrText(0, "abc", "a"); })})
    EXPECT_EQ(n, 5);
}

TEST(Text, SlicesTrimCaseReplaceSplitJoinAndUtf16) {
  // Mid, Left and Right keep a stray byte as it is and give U+FFFD for the half of a pair they cut.
  // Trim strips blanks only (not the ideographic space); the case functions change ASCII letters only.
  // Replace does not overlap, nor search its replacement again.
  // clang-format off
  const struct { std::string got, want; } cases[] = {
      {Mid("中文测试", 2, 2), "文测"}, {Mid("中文测试", 3), "测试"}, {Mid("中文测试", 5), ""}, {Mid("abc", 1, 0), ""},
      {Mid("abc", 2, 100), "bc"}, {Mid("x" + kSmile + "y", 2, 2), kSmile}, {Mid("a\xFF" "b", 2, 1), "\xFF"},
      {Mid(kPair, 2, 1), kFffd}, {Mid(kPair, 3), kFffd + "b"}, {Mid(kPair, 3, 0), ""},
      {Left(kPair, 2), "a" + kFffd}, {Left("中文abc", 3), "中文a"}, {Left("ab", 5), "ab"},
      {Right("abc中文", 3), "c中文"}, {Right("abc", 0), ""}, {Right("abc", 9), "abc"},
      {Right(kPair, 2), kFffd + "b"}, {Trim("  a b  "), "a b"}, {LTrim("  a b  "), "a b  "},
      {RTrim("  a b  "), "  a b"}, {Trim("   "), ""}, {Trim("\ta\r\n"), "\ta\r\n"}, {LTrim(""), ""},
      {LTrim("\ta"), "\ta"}, {Trim("\xE3\x80\x80x"), "\xE3\x80\x80x"}, {LCase("@AbZ[中É"), "@abz[中É"},
      {UCase("`aBz{中é"), "`ABZ{中é"}, {Replace("order by a, order by b", "order by ", ""), "a, b"},
      {Replace("aaa", "aa", "b"), "ba"}, {Replace("x", "x", "xx"), "xx"}, {Replace("abc", "", "x"), "abc"},
      {Replace("abc", "B", "x"), "abc"}, {Replace("ab", "ab", ""), ""},
      {Replace("一||二||", "||", "<br>"), "一<br>二<br>"}, {Replace("中\xB8", "\xB8", "!"), "中!"},
      {Join({"a", "", "b"}, ", "), "a, , b"}, {Join({}, ","), ""},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(c.got, c.want) << "case " << &c - cases;
  using V = std::vector<std::string>;
  // clang-format off
  const struct { V got, want; } splits[] = {
      {Split("", ","), {}}, {Split("a", ","), {"a"}}, {Split("a,,b,", ","), {"a", "", "b", ""}},
      {Split(",", ","), {"", ""}}, {Split("a b", ""), {"a b"}}, {Split("日,一,二", ","), {"日", "一", "二"}},
      {Split("a; name=b; name=", "; name="), {"a", "b", ""}}, {Split("中\xB8" "a", "\xB8"), {"中", "a"}},
  };
  // clang-format on
  for (const auto& c : splits) EXPECT_EQ(c.got, c.want) << "case " << &c - splits;
  EXPECT_TRUE(EqualsNoCase("strOrder", "STRORDER") && EqualsNoCase("", ""));
  EXPECT_FALSE(EqualsNoCase("abc", "abd") || EqualsNoCase("abc", "ab") || EqualsNoCase("@", "`"));
  // UTF-16 both ways: stray bytes (as many units as Len counts) and lone halves become U+FFFD.
  const std::u16string utf16 = u"a中\U0001F600";
  EXPECT_EQ(ToUtf16("a中" + kSmile + "\xFF\xE4\xB8"), utf16 + u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(FromUtf16(utf16 + std::u16string{0xD83D, u'x', 0xDE00}), "a中" + kSmile + kFffd + "x" + kFffd);
}

}  // namespace corvane
