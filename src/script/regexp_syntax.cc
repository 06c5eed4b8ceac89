// The language's pattern syntax rewritten for PCRE2.
//
// Pages write patterns as the platform's engine reads them: JavaScript's syntax, with the lenient
// readings that engine gives to what JavaScript leaves undefined. PCRE2 reads most of it alike; the
// translator walks the pattern once and rewrites only where the two differ:
// - Escapes. PCRE2 gives meanings to letters that are plain letters here ("\A", "\Z", "\h", "\e",
//   "\Q", "\k", "\p", ...) and refuses unknown ones; here any escaped letter without a meaning is
//   that letter. "\v" is the vertical tab (in PCRE2 a class of characters), "\uXXXX" and "\xHH" are
//   code points, "\c" before a non-letter is a backslash and a "c".
// - Numbers after "\". "\n" and "\nm" refer back to a group when the pattern has that many groups;
//   otherwise they are octal escapes (up to three digits, the first 0-3 when three), and "\8", "\9"
//   stand for the digits themselves. Inside a class they are always octal. A reference is written
//   "\g{n}" so that a digit after it stays a digit.
// - Braces. "{" that does not open a well-formed "{n}", "{n,}" or "{n,m}" is a literal brace.
// - Classes. "[" inside a class is a literal (PCRE2 would read "[:alpha:]"); "-" beside a class
//   escape ("[\d-z]") is a literal hyphen. "[]" matches nothing and "[^]" anything (compiled with
//   PCRE2_ALLOW_EMPTY_CLASS).
// - What the language refuses and PCRE2 accepts is refused here with 5017: a quantifier with nothing
//   to repeat (at the start, after "(", "|", "^", "$", "\b" or another quantifier, which also rules
//   out PCRE2's possessive "a*+" and verbs "(*...)"), and groups other than "(?:", "(?=" and "(?!"
//   (no lookbehind, named groups or inline options).
#include <cstdint>
#include <string>
#include <string_view>

#include "corvane/error.h"
#include "runtime/hex_digit.h"
#include "runtime/utf8.h"
#include "script/regexp_engine.h"

namespace corvane::script::regexp {

void ThrowSyntaxError() { throw Error(5017, "Syntax error in regular expression"); }

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsOctal(char c) { return c >= '0' && c <= '7'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsAsciiAlnum(char c) { return IsDigit(c) || IsLetter(c); }
bool IsClassEscape(char c) { return c == 'd' || c == 'D' || c == 'w' || c == 'W' || c == 's' || c == 'S'; }

// The number of capturing groups: "(" not followed by "?", outside classes and escapes.
size_t CountGroups(std::string_view p) {
  size_t n = 0;
  bool inClass = false;
  for (size_t i = 0; i < p.size(); ++i) {
    const char c = p[i];
    if (c == '\\') {
      ++i;
    } else if (inClass) {
      inClass = c != ']';
    } else if (c == '[') {
      size_t j = i + 1;
      if (j < p.size() && p[j] == '^') ++j;
      inClass = !(j < p.size() && p[j] == ']');  // "[]" and "[^]" close at once
      i = inClass ? j - 1 : j;
    } else if (c == '(' && (i + 1 >= p.size() || p[i + 1] != '?')) {
      ++n;
    }
  }
  return n;
}

class Translator {
 public:
  explicit Translator(std::string_view pattern) : p_(pattern), groups_(CountGroups(pattern)) {}

  std::string Run() {
    out_.reserve(p_.size() + 16);
    while (i_ < p_.size()) {
      if (inClass_) {
        ClassItem();
        continue;
      }
      const char c = p_[i_];
      switch (c) {
        case '\\': Escape(); break;
        case '(': OpenGroup(); break;
        case '[': OpenClass(); break;
        case '{': Brace(); break;
        case '*':
        case '+':
        case '?':
          ++i_;
          Quantifier(std::string_view(&c, 1));
          break;
        case ')': Literal(")", Last::Atom); break;
        case '|':
        case '^':
        case '$': Literal(std::string_view(&c, 1), Last::None); break;
        case '}': Literal("\\}", Last::Atom); break;
        case ']': Literal("\\]", Last::Atom); break;
        default: CopyChar(); last_ = Last::Atom;
      }
    }
    if (inClass_) ThrowSyntaxError();
    return std::move(out_);
  }

 private:
  // What the token before allows next: a quantifier only after an atom, a "?" (lazy) once after a
  // quantifier.
  enum class Last { None, Atom, Quantifier, Lazy };

  void Literal(std::string_view text, Last last) {
    out_ += text;
    ++i_;
    last_ = last;
  }

  void CopyChar() {
    const size_t n = utf8::DecodeAt(p_, i_).bytes;
    out_.append(p_.substr(i_, n));
    i_ += n;
  }

  void EmitCode(uint32_t code) {
    static const char kHex[] = "0123456789abcdef";
    std::string digits;
    do {
      digits.insert(digits.begin(), kHex[code & 0xF]);
      code >>= 4;
    } while (code);
    out_ += "\\x{" + digits + "}";
  }

  // "\" and `e` kept as they are: PCRE2 reads them alike.
  void KeepEscape(char e) {
    out_ += '\\';
    out_ += e;
    ++i_;
  }

  void Quantifier(std::string_view q) {
    if (q == "?" && last_ == Last::Quantifier) {
      out_ += '?';
      last_ = Last::Lazy;
      return;
    }
    if (last_ != Last::Atom) ThrowSyntaxError();
    out_ += q;
    last_ = Last::Quantifier;
  }

  // "{n}", "{n,}", "{n,m}" quantify; any other "{" is a literal brace.
  void Brace() {
    size_t j = i_ + 1;
    auto digits = [&] {
      const size_t from = j;
      while (j < p_.size() && IsDigit(p_[j])) ++j;
      return j > from;
    };
    bool quantifier = digits();
    if (quantifier && j < p_.size() && p_[j] == ',') {
      ++j;
      digits();
    }
    quantifier = quantifier && j < p_.size() && p_[j] == '}';
    if (!quantifier) {
      Literal("\\{", Last::Atom);
      return;
    }
    const std::string_view q = p_.substr(i_, j + 1 - i_);
    i_ = j + 1;
    Quantifier(q);
  }

  void OpenGroup() {
    if (i_ + 1 < p_.size() && p_[i_ + 1] == '?') {
      const char kind = i_ + 2 < p_.size() ? p_[i_ + 2] : '\0';
      if (kind != ':' && kind != '=' && kind != '!') ThrowSyntaxError();
      out_.append(p_.substr(i_, 3));
      i_ += 3;
    } else {
      out_ += '(';
      ++i_;
    }
    last_ = Last::None;
  }

  void OpenClass() {
    out_ += '[';
    ++i_;
    if (i_ < p_.size() && p_[i_] == '^') {
      out_ += '^';
      ++i_;
    }
    inClass_ = true;
    afterClassEscape_ = false;
  }

  void ClassItem() {
    const char c = p_[i_];
    const bool escapeWas = afterClassEscape_;
    afterClassEscape_ = false;
    if (c == ']') {
      Literal("]", Last::Atom);
      inClass_ = false;
    } else if (c == '\\') {
      ClassEscape();
    } else if (c == '[') {
      Literal("\\[", last_);
    } else if (c == '-') {
      const bool beforeEscape = i_ + 2 < p_.size() && p_[i_ + 1] == '\\' && IsClassEscape(p_[i_ + 2]);
      Literal(escapeWas || beforeEscape ? "\\-" : "-", last_);
    } else {
      CopyChar();
    }
  }

  // The escapes both contexts read alike; false when `e` is not one of them.
  bool CommonEscape(char e) {
    switch (e) {
      case 'f':
      case 'n':
      case 'r':
      case 't': KeepEscape(e); return true;
      case 'v': Literal("\\x{b}", last_); return true;  // vertical tab
      case 'c':
        if (i_ + 1 < p_.size() && IsLetter(p_[i_ + 1])) {
          out_ += "\\c";
          out_ += p_[i_ + 1];
          i_ += 2;
        } else {
          out_ += "\\\\";  // a backslash; the "c" follows as itself
        }
        return true;
      case 'x':
        if (i_ + 2 < p_.size() && HexDigitValue(p_[i_ + 1]) >= 0 && HexDigitValue(p_[i_ + 2]) >= 0) {
          EmitCode(HexDigitValue(p_[i_ + 1]) * 16 + HexDigitValue(p_[i_ + 2]));
          i_ += 3;
        } else {
          Literal("x", last_);
        }
        return true;
      case 'u': UnicodeEscape(); return true;
      default: return false;
    }
  }

  // The four hex digits after the "u" at `at`; -1 when there are not four.
  int32_t Hex4(size_t at) const {
    if (at + 4 >= p_.size()) return -1;
    int32_t v = 0;
    for (size_t k = 1; k <= 4; ++k) {
      const int h = HexDigitValue(p_[at + k]);
      if (h < 0) return -1;
      v = v * 16 + h;
    }
    return v;
  }

  // "\uXXXX": a code point; a high and a low surrogate written one after the other are one
  // character. A lone surrogate cannot occur in UTF-8 text and stands for U+FFFD, which is what
  // such a half becomes in the text.
  void UnicodeEscape() {
    int32_t code = Hex4(i_);
    if (code < 0) {
      Literal("u", last_);
      return;
    }
    i_ += 5;
    if (code >= 0xD800 && code <= 0xDBFF && i_ + 1 < p_.size() && p_[i_] == '\\' && p_[i_ + 1] == 'u') {
      const int32_t low = Hex4(i_ + 1);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        i_ += 6;
      }
    }
    if (code >= 0xD800 && code <= 0xDFFF) code = 0xFFFD;
    EmitCode(static_cast<uint32_t>(code));
  }

  // An escaped character that has no meaning of its own is itself.
  void IdentityEscape() {
    const char e = p_[i_];
    if (static_cast<unsigned char>(e) >= 0x80) {
      CopyChar();
      return;
    }
    if (!IsAsciiAlnum(e)) out_ += '\\';
    out_ += e;
    ++i_;
  }

  // An octal escape at i_: up to three octal digits (the first 0-3 when three); "8" and "9" are
  // themselves.
  void Octal() {
    if (!IsOctal(p_[i_])) {
      out_ += p_[i_++];
      return;
    }
    const size_t most = p_[i_] <= '3' ? 3 : 2;
    uint32_t value = 0;
    for (size_t n = 0; n < most && i_ < p_.size() && IsOctal(p_[i_]); ++n)
      value = value * 8 + (p_[i_++] - '0');
    EmitCode(value);
  }

  void BackReference(size_t n) { out_ += "\\g{" + std::to_string(n) + "}"; }

  void Number() {
    const char d1 = p_[i_];
    if (d1 != '0') {
      const bool two = i_ + 1 < p_.size() && IsDigit(p_[i_ + 1]);
      const size_t nm = two ? static_cast<size_t>((d1 - '0') * 10 + (p_[i_ + 1] - '0')) : 0;
      if (two && nm <= groups_) {
        BackReference(nm);
        i_ += 2;
        return;
      }
      if (static_cast<size_t>(d1 - '0') <= groups_) {
        BackReference(d1 - '0');
        ++i_;
        return;
      }
    }
    Octal();
  }

  // Outside a class "\b" and "\B" are assertions: nothing to repeat.
  void Escape() {
    if (++i_ >= p_.size()) ThrowSyntaxError();
    const char e = p_[i_];
    last_ = e == 'b' || e == 'B' ? Last::None : Last::Atom;
    if (IsClassEscape(e) || e == 'b' || e == 'B')
      KeepEscape(e);
    else if (IsDigit(e))
      Number();
    else if (!CommonEscape(e))
      IdentityEscape();
  }

  // Inside a class "\b" is the backspace and numbers are octal.
  void ClassEscape() {
    if (++i_ >= p_.size()) ThrowSyntaxError();
    const char e = p_[i_];
    afterClassEscape_ = IsClassEscape(e);
    if (IsClassEscape(e))
      KeepEscape(e);
    else if (e == 'b')
      Literal("\\x{8}", last_);  // backspace
    else if (IsDigit(e))
      Octal();
    else if (!CommonEscape(e))
      IdentityEscape();
  }

  std::string_view p_;
  size_t groups_;
  size_t i_ = 0;
  std::string out_;
  Last last_ = Last::None;
  bool inClass_ = false;
  bool afterClassEscape_ = false;
};

}  // namespace

std::string TranslatePattern(std::string_view pattern) { return Translator(pattern).Run(); }

}  // namespace corvane::script::regexp
