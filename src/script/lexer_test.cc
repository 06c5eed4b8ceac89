// Splitting text into tokens: numbers, strings, dates, words, and page text around code.
#include "script/lexer.h"

#include <gtest/gtest.h>

#include "script/date_literal.h"

namespace corvane::script {
namespace {

// The tokens of `text` as one line: kind letters and values.
std::string Describe(std::string_view text, bool page = false) {
  std::string out;
  for (const Token& t : Tokenize(text, page)) {
    if (!out.empty()) out += ' ';
    switch (t.kind) {
      case Tok::End: out += "$"; break;
      case Tok::Newline: out += "NL"; break;
      case Tok::Colon: out += ":"; break;
      case Tok::Html: out += "H(" + t.text + ")"; break;
      case Tok::Output: out += "OUT"; break;
      case Tok::Directive: out += "@(" + t.text + ")"; break;
      case Tok::Identifier: out += "I(" + t.text + ")"; break;
      case Tok::Keyword: out += "K(" + t.text + ")"; break;
      case Tok::Integer: out += "i" + std::to_string(static_cast<int>(t.number)); break;
      case Tok::Long: out += "l" + std::to_string(static_cast<long>(t.number)); break;
      case Tok::Double: out += "d" + std::to_string(t.number).substr(0, 5); break;
      case Tok::String: out += "S(" + t.text + ")"; break;
      case Tok::Date: out += "D" + std::to_string(static_cast<int>(t.number)); break;
      default: out += "op"; break;
    }
  }
  return out;
}

struct Case {
  const char* text;
  const char* tokens;
};

class Code : public ::testing::TestWithParam<Case> {};

TEST_P(Code, SplitsIntoTokens) { EXPECT_EQ(Describe(GetParam().text), GetParam().tokens) << GetParam().text; }

// clang-format off
INSTANTIATE_TEST_SUITE_P(Lexer, Code, ::testing::Values(
    Case{"x = 32767 + 32768", "I(x) op i32767 op l32768 NL $"},
    Case{"2147483648 1.5 1e3 .25", "d21474 d1.500 d1000. d0.250 NL $"},
    Case{"&HFFFF &H10000 &O777 &10", "i-1 l65536 i511 i8 NL $"},
    Case{"\"a \"\"b\"\"\" & \"\"", "S(a \"b\") op S() NL $"},
    Case{"#2000-01-02#", "D36527 NL $"},
    Case{"If x Then Else", "K(If) I(x) K(Then) K(Else) NL $"},
    Case{"obj.End obj.[my name]", "I(obj) op I(End) I(obj) op I(my name) NL $"},
    Case{"a _\n  b", "I(a) I(b) NL $"},
    Case{"a ' note\nb", "I(a) NL I(b) NL $"},
    Case{"rem note\nremark", "NL I(remark) NL $"},
    Case{"a: b", "I(a) : I(b) NL $"},
    Case{"a <> b <= c >= d", "I(a) op I(b) op I(c) op I(d) NL $"}));
// clang-format on

class Page : public ::testing::TestWithParam<Case> {};

TEST_P(Page, SeparatesTextFromCode) {
  EXPECT_EQ(Describe(GetParam().text, true), GetParam().tokens) << GetParam().text;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Lexer, Page, ::testing::Values(
    Case{"a<% x %>b", "H(a) I(x) NL H(b) NL $"},
    Case{"<%= 1 %>", "OUT i1 NL NL $"},
    Case{"<%@ LANGUAGE=VBScript %>t", "@( LANGUAGE=VBScript ) H(t) NL $"},
    Case{"<% ' comment %>t", "NL H(t) NL $"},
    Case{"<% s = \"%>\" %>", "I(s) op S(%>) NL NL $"},
    Case{"<script runat=server>x</SCRIPT>y", "I(x) NL H(y) NL $"},
    Case{"<script>x</script>", "H(<script>x</script>) NL $"},
    Case{"50% <b>", "H(50% <b>) NL $"}));
// clang-format on

TEST(Lexer, RefusesBadText) {
  // clang-format off
  const std::pair<const char*, int32_t> cases[] = {
      {"x = \"open", 1033}, {"x = ~", 1032}, {"x = &H", 1002}, {"x = &HFFFFFFFFF", 1031},
      {"x = #13/45/2000#", 1002}, {"x = [open", 1007}, {"a _ b", 1032},
  };
  // clang-format on
  for (auto [text, number] : cases) {
    try {
      Tokenize(text, false);
      ADD_FAILURE() << text;
    } catch (const LexError& e) {
      EXPECT_EQ(e.number, number) << text;
    }
  }
}

TEST(DateLiterals, ReadTheForms) {
  // clang-format off
  const std::pair<const char*, double> cases[] = {
      {"2026-11-23", 46349}, {"2026/1/2", 46024}, {"11/23/2026", 46349}, {"1/2/99", 36162},
      {"10:30", 0.4375}, {"12:00 AM", 0}, {"1:00 pm", 13 / 24.0}, {"2026-11-23 06:00:00", 46349.25},
  };
  // clang-format on
  for (auto [text, serial] : cases) {
    std::optional<double> d = ParseDateLiteral(text);
    ASSERT_TRUE(d) << text;
    EXPECT_NEAR(*d, serial, 1e-9) << text;
  }
  for (const char* bad : {"", "2026-02-30", "13:00 PM", "24:00", "1/2", "x"})
    EXPECT_FALSE(ParseDateLiteral(bad)) << bad;
}

}  // namespace
}  // namespace corvane::script
