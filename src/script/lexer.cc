#include "script/lexer.h"

#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <optional>

#include "corvane/dates.h"
#include "corvane/text.h"
#include "runtime/hex_digit.h"
#include "script/date_literal.h"
#include "script/vbs_errors.h"

namespace corvane::script {

namespace {

constexpr size_t kMaxIdentifier = 255;

struct KeywordName {
  std::string_view name;
  Kw kw;
};

constexpr KeywordName kKeywords[] = {
    {"and", Kw::And},       {"byref", Kw::ByRef},   {"byval", Kw::ByVal},     {"call", Kw::Call},
    {"case", Kw::Case},     {"class", Kw::Class},   {"const", Kw::Const},     {"dim", Kw::Dim},
    {"do", Kw::Do},         {"each", Kw::Each},     {"else", Kw::Else},       {"elseif", Kw::ElseIf},
    {"empty", Kw::Empty},   {"end", Kw::End},       {"eqv", Kw::Eqv},         {"erase", Kw::Erase},
    {"exit", Kw::Exit},     {"false", Kw::False},   {"for", Kw::For},         {"function", Kw::Function},
    {"if", Kw::If},         {"imp", Kw::Imp},       {"in", Kw::In},           {"is", Kw::Is},
    {"loop", Kw::Loop},     {"me", Kw::Me},         {"mod", Kw::Mod},         {"new", Kw::New},
    {"next", Kw::Next},     {"not", Kw::Not},       {"nothing", Kw::Nothing}, {"null", Kw::Null},
    {"on", Kw::On},         {"option", Kw::Option}, {"or", Kw::Or},           {"private", Kw::Private},
    {"public", Kw::Public}, {"redim", Kw::ReDim},   {"select", Kw::Select},   {"set", Kw::Set},
    {"sub", Kw::Sub},       {"then", Kw::Then},     {"to", Kw::To},           {"true", Kw::True},
    {"until", Kw::Until},   {"wend", Kw::Wend},     {"while", Kw::While},     {"with", Kw::With},
    {"xor", Kw::Xor},
};

bool IsAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWordChar(char c) { return IsAlpha(c) || IsDigit(c) || c == '_'; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\f' || c == '\v'; }

bool MatchesNoCase(std::string_view s, size_t i, std::string_view word) {
  return s.size() - i >= word.size() && EqualsNoCase(s.substr(i, word.size()), word);
}

class Lexer {
 public:
  Lexer(std::string_view text, bool page) : s_(text), page_(page) {}

  std::vector<Token> Run() {
    out_.reserve(s_.size() / 6 + 16);
    if (page_) {
      HtmlMode();
    } else {
      CodeMode(Until::End);
    }
    Emit(Tok::Newline, s_.size());
    Emit(Tok::End, s_.size());
    return std::move(out_);
  }

 private:
  enum class Until { End, Percent, ScriptTag };

  Token& Emit(Tok kind, size_t offset) {
    Token& t = out_.emplace_back();
    t.kind = kind;
    t.offset = offset;
    t.spaceBefore = space_;
    space_ = false;
    return t;
  }

  // Page text up to the next block of code, then that block, and so on.
  void HtmlMode() {
    size_t textStart = pos_;
    while (pos_ < s_.size()) {
      const char* lt = static_cast<const char*>(std::memchr(s_.data() + pos_, '<', s_.size() - pos_));
      if (!lt) {
        pos_ = s_.size();
        break;
      }
      size_t at = lt - s_.data();
      if (s_.compare(at, 2, "<%") == 0) {
        EmitHtml(textStart, at);
        pos_ = at + 2;
        if (pos_ < s_.size() && s_[pos_] == '@') {
          Directive(at);
        } else {
          if (pos_ < s_.size() && s_[pos_] == '=') {
            Emit(Tok::Output, at);
            ++pos_;
          }
          CodeMode(Until::Percent);
        }
        textStart = pos_;
        continue;
      }
      if (size_t codeStart = ServerScriptTag(at)) {
        EmitHtml(textStart, at);
        pos_ = codeStart;
        CodeMode(Until::ScriptTag);
        textStart = pos_;
        continue;
      }
      pos_ = at + 1;
    }
    EmitHtml(textStart, pos_);
  }

  void EmitHtml(size_t from, size_t to) {
    if (to > from) Emit(Tok::Html, from).text = std::string(s_.substr(from, to - from));
  }

  void Directive(size_t at) {
    size_t end = s_.find("%>", pos_);
    if (end == std::string_view::npos) end = s_.size();
    Emit(Tok::Directive, at).text = std::string(s_.substr(pos_ + 1, end - pos_ - 1));
    pos_ = std::min(end + 2, s_.size());
  }

  // When s_[at] opens <script ... runat="server">: the offset after its '>'; else 0.
  size_t ServerScriptTag(size_t at) const {
    if (!MatchesNoCase(s_, at, "<script") || at + 7 >= s_.size() || IsWordChar(s_[at + 7])) return 0;
    size_t close = s_.find('>', at);
    if (close == std::string_view::npos) return 0;
    std::string tag = LCase(s_.substr(at, close - at));
    size_t runat = tag.find("runat");
    if (runat == std::string::npos) return 0;
    size_t p = runat + 5;
    while (p < tag.size() && (IsBlank(tag[p]) || tag[p] == '\n' || tag[p] == '\r' || tag[p] == '=' ||
                              tag[p] == '"' || tag[p] == '\''))
      ++p;
    if (tag.compare(p, 6, "server") != 0) return 0;
    return close + 1;
  }

  // Code up to the end of the text, "%>" or "</script>".
  void CodeMode(Until until) {
    afterDot_ = false;
    while (pos_ < s_.size()) {
      char c = s_[pos_];
      if (IsBlank(c)) {
        ++pos_;
        space_ = true;
        continue;
      }
      if (until == Until::Percent && c == '%' && pos_ + 1 < s_.size() && s_[pos_ + 1] == '>') {
        Emit(Tok::Newline, pos_);
        pos_ += 2;
        return;
      }
      if (until == Until::ScriptTag && c == '<' && MatchesNoCase(s_, pos_, "</script")) {
        Emit(Tok::Newline, pos_);
        size_t close = s_.find('>', pos_);
        pos_ = close == std::string_view::npos ? s_.size() : close + 1;
        return;
      }
      const size_t start = pos_;
      const bool wasAfterDot = afterDot_;
      afterDot_ = false;
      if (c == '\n' || c == '\r') {
        if (c == '\r' && pos_ + 1 < s_.size() && s_[pos_ + 1] == '\n') ++pos_;
        ++pos_;
        Emit(Tok::Newline, start);
        continue;
      }
      if (c == '\'') {
        Comment(until);
        continue;
      }
      if (IsAlpha(c)) {
        size_t end = pos_;
        while (end < s_.size() && IsWordChar(s_[end])) ++end;
        std::string_view word = s_.substr(pos_, end - pos_);
        if (word.size() > kMaxIdentifier) throw LexError{kIdentifierTooLong, start};
        Kw kw = wasAfterDot ? Kw::None : KeywordOf(word);
        if (kw == Kw::None && !wasAfterDot && EqualsNoCase(word, "rem") &&
            (end == s_.size() || !IsWordChar(s_[end]))) {
          Comment(until);
          continue;
        }
        pos_ = end;
        Token& t = Emit(kw == Kw::None ? Tok::Identifier : Tok::Keyword, start);
        t.kw = kw;
        t.text = std::string(word);
        continue;
      }
      if (IsDigit(c) || (c == '.' && pos_ + 1 < s_.size() && IsDigit(s_[pos_ + 1]) && !FollowsOperand())) {
        Number();
        continue;
      }
      switch (c) {
        case '"': String(); continue;
        case '[': Bracketed(); continue;
        case '#': DateLiteral(); continue;
        case '&':
          if (pos_ + 1 < s_.size() && (s_[pos_ + 1] == 'h' || s_[pos_ + 1] == 'H' || s_[pos_ + 1] == 'o' ||
                                       s_[pos_ + 1] == 'O' || IsDigit(s_[pos_ + 1]))) {
            RadixNumber();
            continue;
          }
          Single(Tok::Amp);
          continue;
        case '_':
          if (LineContinuation()) continue;
          throw LexError{kInvalidCharacter, start};
        case ':': Single(Tok::Colon); continue;
        case '(': Single(Tok::LParen); continue;
        case ')': Single(Tok::RParen); continue;
        case ',': Single(Tok::Comma); continue;
        case '.':
          Single(Tok::Dot);
          afterDot_ = true;
          continue;
        case '=': Single(Tok::Eq); continue;
        case '+': Single(Tok::Plus); continue;
        case '-': Single(Tok::Minus); continue;
        case '*': Single(Tok::Star); continue;
        case '/': Single(Tok::Slash); continue;
        case '\\': Single(Tok::Backslash); continue;
        case '^': Single(Tok::Caret); continue;
        case '<':
          if (pos_ + 1 < s_.size() && s_[pos_ + 1] == '>') {
            Double(Tok::Ne);
          } else if (pos_ + 1 < s_.size() && s_[pos_ + 1] == '=') {
            Double(Tok::Le);
          } else {
            Single(Tok::Lt);
          }
          continue;
        case '>':
          if (pos_ + 1 < s_.size() && s_[pos_ + 1] == '=') {
            Double(Tok::Ge);
          } else {
            Single(Tok::Gt);
          }
          continue;
        default: throw LexError{kInvalidCharacter, start};
      }
    }
  }

  void Single(Tok kind) {
    Emit(kind, pos_);
    ++pos_;
  }
  void Double(Tok kind) {
    Emit(kind, pos_);
    pos_ += 2;
  }

  // Whether the token before could end an operand, so that a '.' after it is a member access.
  bool FollowsOperand() const {
    if (out_.empty() || space_) return false;
    Tok k = out_.back().kind;
    return k == Tok::Identifier || k == Tok::RParen || (k == Tok::Keyword && out_.back().kw == Kw::Me);
  }

  // A comment runs to the line end (in a page, also to the "%>" that closes the block).
  void Comment(Until until) {
    while (pos_ < s_.size() && s_[pos_] != '\n' && s_[pos_] != '\r') {
      if (until == Until::Percent && s_[pos_] == '%' && pos_ + 1 < s_.size() && s_[pos_ + 1] == '>') return;
      ++pos_;
    }
  }

  // '_' at the end of a line joins the next line to it.
  bool LineContinuation() {
    size_t p = pos_ + 1;
    while (p < s_.size() && IsBlank(s_[p])) ++p;
    if (p < s_.size() && s_[p] == '\r') ++p;
    if (p >= s_.size() || s_[p] != '\n') return false;
    pos_ = p + 1;
    space_ = true;
    return true;
  }

  void Number() {
    const size_t start = pos_;
    size_t p = pos_;
    bool isDouble = false;
    while (p < s_.size() && IsDigit(s_[p])) ++p;
    if (p < s_.size() && s_[p] == '.') {
      isDouble = true;
      ++p;
      while (p < s_.size() && IsDigit(s_[p])) ++p;
    }
    if (p < s_.size() && (s_[p] == 'e' || s_[p] == 'E')) {
      size_t q = p + 1;
      if (q < s_.size() && (s_[q] == '+' || s_[q] == '-')) ++q;
      if (q < s_.size() && IsDigit(s_[q])) {
        isDouble = true;
        p = q;
        while (p < s_.size() && IsDigit(s_[p])) ++p;
      }
    }
    double value = std::strtod(std::string(s_.substr(start, p - start)).c_str(), nullptr);
    if (!std::isfinite(value)) throw LexError{kInvalidNumber, start};
    pos_ = p;
    Tok kind = Tok::Double;
    if (!isDouble && value <= 32767) {
      kind = Tok::Integer;
    } else if (!isDouble && value <= 2147483647.0) {
      kind = Tok::Long;
    }
    Emit(kind, start).number = value;
  }

  // &H1F, &O17 and &17 (octal): up to 16 bits an Integer, up to 32 a Long, both as two's complement.
  void RadixNumber() {
    const size_t start = pos_;
    size_t p = pos_ + 1;
    int radix = 8;
    if (s_[p] == 'h' || s_[p] == 'H') {
      radix = 16;
      ++p;
    } else if (s_[p] == 'o' || s_[p] == 'O') {
      ++p;
    }
    uint64_t value = 0;
    size_t digits = 0;
    while (p < s_.size()) {
      int d = HexDigitValue(s_[p]);
      if (d < 0 || d >= radix) break;
      value = value * radix + d;
      if (value > 0xFFFFFFFFull) throw LexError{kInvalidNumber, start};
      ++p;
      ++digits;
    }
    if (digits == 0) throw LexError{kSyntaxError, start};
    if (p < s_.size() && s_[p] == '&') ++p;  // a Long's type mark
    pos_ = p;
    if (value <= 0xFFFF) {
      Emit(Tok::Integer, start).number = static_cast<int16_t>(static_cast<uint16_t>(value));
    } else {
      Emit(Tok::Long, start).number = static_cast<int32_t>(static_cast<uint32_t>(value));
    }
  }

  void String() {
    const size_t start = pos_;
    std::string value;
    size_t p = pos_ + 1;
    for (;;) {
      size_t q = s_.find_first_of("\"\n\r", p);
      if (q == std::string_view::npos || s_[q] != '"') throw LexError{kUnterminatedString, start};
      value.append(s_, p, q - p);
      if (q + 1 < s_.size() && s_[q + 1] == '"') {
        value += '"';
        p = q + 2;
        continue;
      }
      p = q + 1;
      break;
    }
    pos_ = p;
    Emit(Tok::String, start).text = std::move(value);
  }

  void Bracketed() {
    const size_t start = pos_;
    size_t close = s_.find_first_of("]\n\r", pos_ + 1);
    if (close == std::string_view::npos || s_[close] != ']') throw LexError{kExpectedRBracket, start};
    if (close - pos_ - 1 > kMaxIdentifier) throw LexError{kIdentifierTooLong, start};
    Emit(Tok::Identifier, start).text = std::string(s_.substr(pos_ + 1, close - pos_ - 1));
    pos_ = close + 1;
    afterDot_ = false;
  }

  void DateLiteral() {
    const size_t start = pos_;
    size_t close = s_.find_first_of("#\n\r", pos_ + 1);
    if (close == std::string_view::npos || s_[close] != '#') throw LexError{kSyntaxError, start};
    std::optional<double> serial = ParseDateLiteral(s_.substr(pos_ + 1, close - pos_ - 1));
    if (!serial) throw LexError{kSyntaxError, start};
    Emit(Tok::Date, start).number = *serial;
    pos_ = close + 1;
  }

  std::string_view s_;
  bool page_;
  size_t pos_ = 0;
  bool space_ = false;
  bool afterDot_ = false;
  std::vector<Token> out_;
};

}  // namespace

Kw KeywordOf(std::string_view word) {
  if (word.size() < 2 || word.size() > 8) return Kw::None;
  char lower[8];
  for (size_t i = 0; i < word.size(); ++i) lower[i] = static_cast<char>(word[i] | 0x20);
  const std::string_view w(lower, word.size());
  // The table is in alphabetical order: only the words with the same first letter are compared.
  struct Range {
    uint8_t begin = 0, end = 0;
  };
  static const std::array<Range, 26> byLetter = [] {
    std::array<Range, 26> r{};
    for (size_t i = 0; i < std::size(kKeywords); ++i) {
      Range& x = r[kKeywords[i].name[0] - 'a'];
      if (x.begin == x.end) x.begin = static_cast<uint8_t>(i);
      x.end = static_cast<uint8_t>(i + 1);
    }
    return r;
  }();
  if (w[0] < 'a' || w[0] > 'z') return Kw::None;
  const Range& range = byLetter[w[0] - 'a'];
  for (size_t i = range.begin; i < range.end; ++i)
    if (kKeywords[i].name == w) return kKeywords[i].kw;
  return Kw::None;
}

std::vector<Token> Tokenize(std::string_view text, bool page) { return Lexer(text, page).Run(); }

}  // namespace corvane::script
