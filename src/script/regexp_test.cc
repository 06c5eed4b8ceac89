// RegExp through late binding, as pages use it: the platform's pattern syntax where PCRE2 reads it
// otherwise, positions in UTF-16 units, the walk over empty matches, the replacement's "$" forms and
// the errors a pattern raises.
#include "script/regexp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "corvane/text.h"
#include "corvane/variant.h"
#include "runtime/members.h"
#include "runtime/runtime_test_support.h"

namespace corvane::script {
namespace {

using testing::ErrorNumber;
using testing::Outcome;

const std::string kSmile = "\xF0\x9F\x98\x80";  // U+1F600: two UTF-16 units

// flags: "g" Global, "i" IgnoreCase, "m" MultiLine.
Object Make(const std::string& pattern, const std::string& flags = "g") {
  Object re = NewRegExp();
  re.Put("Pattern", Variant(pattern));
  re.Put("Global", Variant(flags.find('g') != std::string::npos));
  re.Put("IgnoreCase", Variant(flags.find('i') != std::string::npos));
  re.Put("MultiLine", Variant(flags.find('m') != std::string::npos));
  return re;
}

// Execute's matches as "FirstIndex+Length:Value(sub|sub)", joined by spaces; "<e>" is an Empty group.
std::string Matches(const std::string& pattern, const std::string& text, const std::string& flags = "g") {
  return Outcome([&] {
    Object matches = Make(pattern, flags).Invoke("Execute", {Variant(text)}).ToObject();
    std::string out;
    for (const Variant& m : matches.get()->Elements()) {
      const Object match = m.ToObject();
      out += (out.empty() ? "" : " ") + match.Get("FirstIndex").ToString() + "+" +
             match.Get("Length").ToString() + ":" + match.Invoke("Value").ToString();
      const Object subs = match.Get("SubMatches").ToObject();
      std::string groups;
      for (const Variant& s : subs.get()->Elements())
        groups += (groups.empty() ? "" : "|") + (s.IsEmpty() ? "<e>" : s.Text());
      if (subs.Get("Count").ToLong() > 0) out += "(" + groups + ")";
    }
    return out;
  });
}

TEST(RegExp, ReadsThePlatformsSyntax) {
  // clang-format off
  const struct { std::string pattern, text, flags, want; } cases[] = {
      {"a$", "a\n", "g", ""},               {"a$", "a\nb", "gm", "0+1:a"},       {"^b", "a\nb", "gm", "2+1:b"},
      {".", "\r\n", "g", "0+1:\r"},         {"\\A\\Z\\q\\e", "AZqe", "g", "0+4:AZqe"},
      {"\\v\\x41\\x4", "\vAx4", "g", "0+4:\vAx4"},                   {"\\u4e2d\\u", "中u", "g", "0+2:中u"},
      {"\\uD83D\\uDE00", "a" + kSmile, "g", "1+2:" + kSmile},       {"\\cJ\\c1", "\n\\c1", "g", "0+4:\n\\c1"},
      {"(a)\\1", "aa", "g", "0+2:aa(a)"},   {"\\1", "\x01", "g", "0+1:\x01"}, {"(a)\\12", "aa2", "g", "0+3:aa2(a)"},
      {"\\101\\8", "A8", "g", "0+2:A8"},    {"\\1(a)", "a", "g", "0+1:a(a)"},
      {"[\\d-z]+", "1-z", "g", "0+3:1-z"},  {"[[:alpha:]]+", "x:]]", "g", "1+3::]]"},      {"a[]", "a", "g", ""},
      {"a[^]b", "a\nb", "g", "0+3:a\nb"},   {"[\\b]", "\b", "g", "0+1:\b"},  {"a{", "a{", "g", "0+2:a{"},
      {"x{1,", "x{1,", "g", "0+4:x{1,"},    {"a{2}", "aaa", "g", "0+2:aa"},  {"a}]", "a}]", "g", "0+3:a}]"},
      {"ÉCOLE", "école", "gi", "0+5:école"}, {"a+?", "aa", "g", "0+1:a 1+1:a"},
      // A pattern used again with other options is not the one compiled before.
      {"ÉCOLE", "école", "g", ""},           {"a$", "a\nb", "g", ""},
      {"(?:a|(b))(?=c)", "bc ac", "g", "0+1:b(b) 3+1:a(<e>)"},     {"a", "中" + kSmile + "a\xFF" "a", "g", "3+1:a 5+1:a"},
      {"x*", "abc", "g", "0+0: 1+0: 2+0: 3+0:"},                    {"a*", "baaac", "g", "0+0: 1+3:aaa 4+0: 5+0:"},
      {"x*", kSmile, "g", "0+0: 2+0:"},     {"o", "foo", "", "1+1:o"},
      // What the language refuses, whatever PCRE2 would make of it.
      {"a**", "", "g", "#5017"},  {"*a", "", "g", "#5017"},  {"(?<n>a)", "", "g", "#5017"}, {"(?<=a)b", "", "g", "#5017"},
      {"a\\", "", "g", "#5017"},  {"[a", "", "g", "#5017"},  {"(a", "", "g", "#5017"},      {"a)", "", "g", "#5017"},
      {"(?i)a", "", "g", "#5017"}, {"a*+", "", "g", "#5017"}, {"(*UTF)a", "", "g", "#5017"}, {"^*", "", "g", "#5017"},
      {"\\b+", "", "g", "#5017"}, {"a{3,2}", "", "g", "#5017"}, {"[z-a]", "", "g", "#5017"},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(Matches(c.pattern, c.text, c.flags), c.want) << c.pattern;
}

TEST(RegExp, ClassesEscapesAndLineEnds) {
  const std::string nul(1, '\0');
  // clang-format off
  const struct { std::string pattern, text, flags, want; } cases[] = {
      {"[\\B\\-]+", "B-", "g", "0+2:B-"},      {"[a-\\d]+", "a-1", "g", "0+3:a-1"},  {"[\\cJ]", "\n", "g", "0+1:\n"},
      {"\\0", nul, "g", "0+1:" + nul},          {"(a)[\\1\\101]+", "a\x01" "A", "g", "0+3:a\x01" "A(a)"},
      {"\\s", "\v", "g", "0+1:\v"},            {"\\w+", "ab中c", "g", "0+2:ab 3+1:c"}, {".", "\n", "g", ""},
      {"a$", "a\r\nb", "gm", ""},               {"a\\r$", "a\r\nb", "gm", "0+2:a\r"},  {"^", "a\nb", "gm", "0+0: 2+0:"},
      {"a{2}?", "aaa", "g", "0+2:aa"},          {"a??b", "ab", "g", "0+2:ab"},          {"(?:)|b", "b", "g", "0+0: 1+0:"},
      {"\\u00e9", "É", "gi", "0+1:É"},          {"\\k<a>\\p{L}", "k<a>p{L}", "g", "0+8:k<a>p{L}"},
      {"\\Q.\\E\\h", "QxEh", "g", "0+4:QxEh"}, {"", "ab", "g", "0+0: 1+0: 2+0:"},
      {"x*", "\xFF\xFE", "g", "0+0: 1+0: 2+0:"},
      {"a???", "", "g", "#5017"},               {"a{2}{3}", "", "g", "#5017"},          {"(?P<n>a)", "", "g", "#5017"},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(Matches(c.pattern, c.text, c.flags), c.want) << c.pattern;
}

TEST(RegExp, ReplaceExpandsDollarForms) {
  // clang-format off
  const struct { std::string pattern, text, with, flags, want; } cases[] = {
      {"(\\w+) (\\w+)", "ab cd", "$2-$1", "g", "cd-ab"},  {"b", "abc", "[$`|$&|$']", "g", "a[a|b|c]c"},
      {"b", "abc", "$$$0$3$", "g", "a$$0$3$c"},            {"(b)", "abc", "$12$01", "g", "ab2bc"},
      {"(x)?b", "abc", "[$1]", "g", "a[]c"},               {"x*", "abc", "-", "g", "-a-b-c-"},
      {"a*", "baaac", "-", "g", "-b--c-"},                 {"o", "foo", "0", "", "f0o"},
      {"中", "中文中", "zh", "g", "zh文zh"},              {"a", "aa", "", "", "a"},
  };
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(Make(c.pattern, c.flags).Invoke("Replace", {Variant(c.text), Variant(c.with)}), Variant(c.want))
        << c.pattern << " " << c.with;
}

// Patterns as classic pages write them: validating input, stripping markup, reformatting dates,
// counting Chinese characters.
TEST(RegExp, PatternsPagesCommonlyUse) {
  const std::string email = "^\\w+([-+.]\\w+)*@\\w+([-.]\\w+)*\\.\\w+([-.]\\w+)*$";
  // clang-format off
  const struct { std::string pattern, flags, text, with, want; } cases[] = {
      {email, "", "li.na@corp.example.cn", "ok", "ok"},        {email, "", "li na@corp", "ok", "li na@corp"},
      {"<[^>]+>", "g", "<p class=\"x\">通知</p><br/>", "", "通知"},
      {"(\\d{4})-(\\d{1,2})-(\\d{1,2})", "g", "2026-1-9 至 2026-12-31", "$2/$3/$1", "1/9/2026 至 12/31/2026"},
      {"\\s+", "g", " a \t\r\n b ", " ", " a b "},              {"^\\s+|\\s+$", "g", "  x y  ", "", "x y"},
      {"[\\u4e00-\\u9fa5]", "g", "ab中文c字", "", "abc"},        {"^[a-zA-Z]\\w{5,17}$", "", "a12345", "ok", "ok"},
      {"^[a-zA-Z]\\w{5,17}$", "", "1abcdef", "ok", "1abcdef"}, {"(['\"])", "g", "it's \"x\"", "\\$1", "it\\'s \\\"x\\\""},
      {"select|insert|delete", "gi", "SELECT 1; Delete", "", " 1; "},
  };
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(Make(c.pattern, c.flags).Invoke("Replace", {Variant(c.text), Variant(c.with)}), Variant(c.want))
        << c.pattern << " on " << c.text;
}

// Positions are counted once along the text, not from its start for every match.
TEST(RegExp, ManyMatchesInALongTextStayLinear) {
  std::string text;
  for (int i = 0; i < 50000; ++i) text += "中x";
  const auto start = std::chrono::steady_clock::now();
  Object matches = Make("x").Invoke("Execute", {Variant(text)}).ToObject();
  EXPECT_EQ(matches.Get("Count"), Variant(50000));
  Args last{Variant(49999)};
  EXPECT_EQ(matches.Get("Item", last).ToObject().Get("FirstIndex"), Variant(99999));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

// A function reference as GetRef makes one: its default member is the call.
class Upper final : public Dispatch {
 public:
  const ClassInfo& Info() const override {
    static const ClassInfo info{.className = "Upper",
                                .members = {Method<Upper>("Call", 0, [](Upper&, Args& a) {
                                  return UCase(a[0].Text()) + a[1].Text() + "@" + a[2].ToString() + "/" +
                                         std::to_string(a.size());
                                })}};
    return info;
  }
};

TEST(RegExp, ReplaceCallsAFunctionReference) {
  Object re = Make("(.)b");
  EXPECT_EQ(re.Invoke("Replace", {Variant("中ab ab"), Variant(Object(std::make_shared<Upper>()))}),
            Variant("中ABa@1/4 ABa@4/4"));
}

TEST(RegExp, CollectionsPropertiesAndTheCompiledPatternsLife) {
  Object re = Make("a(b)?", "");
  Object matches = re.Invoke("Execute", {Variant("xa ab")}).ToObject();
  EXPECT_EQ(matches.Get("Count"), Variant(1));
  Args first{Variant(0)};
  Object match = matches.Get("Item", first).ToObject();
  EXPECT_EQ(match.Get("SubMatches").ToObject().Get("Count"), Variant(1));
  Args none;
  EXPECT_EQ(match.Invoke(int32_t{0}, none), Variant("a"));  // Value is the default member
  EXPECT_EQ(re.Invoke("Replace", {Variant("ab"), Variant::Null()}), Variant(""));
  for (int bad : {-1, 1}) {
    Args index{Variant(bad)};
    EXPECT_EQ(ErrorNumber([&] { matches.Get("Item", index); }), 5);
    EXPECT_EQ(ErrorNumber([&] { match.Get("SubMatches").ToObject().Get("Item", index); }), 5);
  }
  EXPECT_EQ(re.Get("Global"), Variant(false));
  // A new pattern or option is compiled afresh; a bad one raises only when used.
  EXPECT_EQ(re.Invoke("Test", {Variant("AB")}), Variant(false));
  re.Put("IgnoreCase", Variant(true));
  EXPECT_EQ(re.Invoke("Test", {Variant("AB")}), Variant(true));
  re.Put("Pattern", Variant("^b"));
  EXPECT_EQ(re.Invoke("Test", {Variant("a\nb")}), Variant(false));
  re.Put("MultiLine", Variant(true));
  EXPECT_EQ(re.Invoke("Test", {Variant("a\nb")}), Variant(true));
  re.Put("Pattern", Variant("(("));
  EXPECT_EQ(re.Get("Pattern"), Variant("(("));
  EXPECT_EQ(ErrorNumber([&] { re.Invoke("Test", {Variant("a")}); }), 5017);
  EXPECT_EQ(RegExpClass().create().get()->Info().className, "IRegExp2");
}

TEST(RegExp, APatternThatBacktracksWithoutEndIsStopped) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Matches("(a+)+$", std::string(40, 'a') + "b"), "#28");
  EXPECT_EQ(Matches("(a|aa)+$", std::string(60, 'a') + "b"), "#28");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
}  // namespace corvane::script
