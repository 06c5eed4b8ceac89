// The text functions: Asc AscW Chr ChrW InStr InStrRev Join LCase Left Len LTrim Mid Replace Right
// RTrim Space Split StrComp String StrReverse Trim UCase Escape Unescape.
//
// Positions count UTF-16 code units and the plain forms are the runtime's own functions (text.h),
// so a page measures and cuts text as the components do. vbTextCompare folds ASCII letters only,
// as the runtime's InStrText does. Functions documented to pass Null through (Left, Len, Trim, ...)
// return Null for a Null text; the others raise 94.
#include <algorithm>

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "corvane/text.h"
#include "runtime/hex_digit.h"
#include "runtime/utf8.h"
#include "script/builtins_support.h"

namespace corvane::script::builtins {
namespace {

Error OutOfMemory() { return Error(7, "Out of memory"); }

// The first character of a text, as UTF-8 (one invalid byte counts as a character); 5 when empty.
std::string_view FirstChar(std::string_view s) {
  if (s.empty()) throw Error::InvalidCall();
  return s.substr(0, utf8::DecodeAt(s, 0).bytes);
}

// A character code of Chr and String: 0..65535, or -32768..-1 for the same codes above 32767.
uint32_t CharCode(int32_t code) {
  if (code < -32768 || code > 65535) throw Error::InvalidCall();
  return static_cast<uint32_t>(code) & 0xFFFF;
}

std::string AnsiChar(uint32_t code, int codePage) {
  if (code < 0x80) return std::string(1, static_cast<char>(code));
  return CharFromAnsiCode(code, codePage);
}

Variant Asc(BuiltinContext& c, Args& a) {
  const std::string s = TextArg(a, 0);
  return Variant(static_cast<int16_t>(AnsiCode(FirstChar(s), c.codePage)));
}

Variant AscW(BuiltinContext&, Args& a) {
  const std::string s = TextArg(a, 0);
  const std::u16string units = ToUtf16(FirstChar(s));
  return Variant(static_cast<int16_t>(units[0]));
}

Variant Chr(BuiltinContext& c, Args& a) { return Variant(AnsiChar(CharCode(LongArg(a, 0, 0)), c.codePage)); }

Variant ChrW(BuiltinContext&, Args& a) {
  return Variant(FromUtf16(std::u16string(1, static_cast<char16_t>(CharCode(LongArg(a, 0, 0))))));
}

// InStr([start, ]string1, string2[, compare])
Variant InStr(BuiltinContext&, Args& a) {
  const size_t given = GivenCount(a);
  const bool hasStart = given >= 3;
  const int32_t start = hasStart ? a[0].ToLong() : 1;
  const bool text = given >= 4 && TextCompareArg(a, 3);
  const Variant& s = a[hasStart ? 1 : 0];
  const Variant& find = a[hasStart ? 2 : 1];
  if (start < 1) throw Error::InvalidCall();
  if (s.IsNull() || find.IsNull()) return Variant::Null();
  return Variant(text ? InStrText(start, s.Text(), find.Text())
                      : corvane::InStr(start, s.Text(), find.Text()));
}

// InStrRev(string1, string2[, start[, compare]]): the last match that ends at or before `start`.
Variant InStrRev(BuiltinContext&, Args& a) {
  const int32_t start = LongArg(a, 2, -1);
  const bool text = TextCompareArg(a, 3);
  if (start == 0 || start < -1) throw Error::InvalidCall();
  if (a[0].IsNull() || a[1].IsNull()) return Variant::Null();
  const std::u16string s = ToUtf16(text ? FoldCase(a[0].Text()) : a[0].Text());
  const std::u16string find = ToUtf16(text ? FoldCase(a[1].Text()) : a[1].Text());
  const size_t end = start == -1 ? s.size() : static_cast<size_t>(start);
  if (end > s.size()) return Variant(int32_t{0});
  if (find.empty()) return Variant(static_cast<int32_t>(end));
  if (find.size() > end) return Variant(int32_t{0});
  const size_t at = s.rfind(find, end - find.size());
  return Variant(at == std::u16string::npos ? int32_t{0} : static_cast<int32_t>(at + 1));
}

Variant Join(BuiltinContext&, Args& a) {
  const VariantArray* list = a[0].ArrayPtr();
  if (!list) throw Error::TypeMismatch();
  if (list->Rank() != 1) throw Error::InvalidCall();
  const std::string delimiter = Given(a, 1) ? TextArg(a, 1) : " ";
  std::vector<std::string> parts;
  parts.reserve(list->Size());
  for (const Variant& e : list->Elements()) parts.push_back(e.Text());
  return Variant(corvane::Join(parts, delimiter));
}

// The functions that give Null for a Null text.
template <std::string (*F)(std::string_view)>
Variant OnText(BuiltinContext&, Args& a) {
  if (a[0].IsNull()) return Variant::Null();
  return Variant(F(a[0].Text()));
}

Variant Left(BuiltinContext&, Args& a) {
  const int32_t n = a[1].ToLong();
  if (a[0].IsNull()) return Variant::Null();
  return Variant(corvane::Left(a[0].Text(), n));
}

Variant Right(BuiltinContext&, Args& a) {
  const int32_t n = a[1].ToLong();
  if (a[0].IsNull()) return Variant::Null();
  return Variant(corvane::Right(a[0].Text(), n));
}

Variant Mid(BuiltinContext&, Args& a) {
  const int32_t start = a[1].ToLong();
  const int32_t length = LongArg(a, 2, -1);
  if (Given(a, 2) && length < 0) throw Error::InvalidCall();
  if (a[0].IsNull()) return Variant::Null();
  return Variant(corvane::Mid(a[0].Text(), start, length));
}

Variant Len(BuiltinContext&, Args& a) {
  if (a[0].IsNull()) return Variant::Null();
  if (const std::string* s = a[0].StringPtr()) return Variant(corvane::Len(*s));
  return Variant(corvane::Len(a[0].Text()));
}

// Replaces up to `count` matches (-1: all) of `find` in `s`, left to right.
std::string ReplaceMatches(const std::string& s, const std::string& find, const std::string& with,
                           int32_t count, bool text) {
  if (!text && count == -1) return corvane::Replace(s, find, with);
  const std::string hay = text ? FoldCase(s) : s;
  const std::string needle = text ? FoldCase(find) : find;
  std::string out;
  size_t done = 0;
  for (size_t at = hay.find(needle); at != std::string::npos && count != 0; at = hay.find(needle, done)) {
    out.append(s, done, at - done).append(with);
    done = at + needle.size();
    if (count > 0) --count;
  }
  return out.append(s, done, std::string::npos);
}

// Replace(expression, find, with[, start[, count[, compare]]]): the text from `start` on, with the
// replacements made (what comes before `start` is not part of the result).
Variant Replace(BuiltinContext&, Args& a) {
  const std::string s = TextArg(a, 0), find = TextArg(a, 1), with = TextArg(a, 2);
  const int32_t start = LongArg(a, 3, 1);
  const int32_t count = LongArg(a, 4, -1);
  const bool text = TextCompareArg(a, 5);
  if (start < 1 || count < -1) throw Error::InvalidCall();
  const std::string from = start > 1 ? corvane::Mid(s, start) : s;
  if (find.empty() || count == 0) return Variant(from);
  return Variant(ReplaceMatches(from, find, with, count, text));
}

Variant Space(BuiltinContext&, Args& a) {
  const int32_t n = a[0].ToLong();
  if (n < 0) throw Error::InvalidCall();
  if (n > (1 << 28)) throw OutOfMemory();
  return Variant(std::string(static_cast<size_t>(n), ' '));
}

// Split(expression[, delimiter[, count[, compare]]]): at most `count` parts (-1: all), the last
// holding the rest of the text; Split("") and a count of 0 give an empty array.
Variant Split(BuiltinContext&, Args& a) {
  const std::string s = TextArg(a, 0);
  const std::string delimiter = Given(a, 1) ? TextArg(a, 1) : " ";
  const int32_t count = LongArg(a, 2, -1);
  const bool text = TextCompareArg(a, 3);
  if (count < -1) throw Error::InvalidCall();
  std::vector<Variant> parts;
  if (count == -1 && !text) {
    for (std::string& p : corvane::Split(s, delimiter)) parts.emplace_back(std::move(p));
  } else if (count != 0 && !s.empty()) {
    const std::string hay = text ? FoldCase(s) : s;
    const std::string needle = text ? FoldCase(delimiter) : delimiter;
    size_t done = 0;
    for (size_t at = needle.empty() ? std::string::npos : hay.find(needle);
         at != std::string::npos && (count == -1 || static_cast<int32_t>(parts.size()) < count - 1);
         at = hay.find(needle, done)) {
      parts.emplace_back(s.substr(done, at - done));
      done = at + needle.size();
    }
    parts.emplace_back(s.substr(done));
  }
  return Variant::FromArray(VariantArray::Of(std::move(parts)));
}

Variant StrComp(BuiltinContext&, Args& a) {
  const bool text = TextCompareArg(a, 2);
  if (a[0].IsNull() || a[1].IsNull()) return Variant::Null();
  const int c =
      text ? FoldCase(a[0].Text()).compare(FoldCase(a[1].Text())) : a[0].Text().compare(a[1].Text());
  return Variant(static_cast<int16_t>(c < 0 ? -1 : (c > 0 ? 1 : 0)));
}

// String(number, character): `character` is a text (its first character) or a character code,
// taken modulo 256.
Variant String(BuiltinContext& c, Args& a) {
  const int32_t n = a[0].ToLong();
  if (n < 0) throw Error::InvalidCall();
  if (a[1].IsNull()) return Variant::Null();
  std::string ch;
  if (const std::string* s = a[1].StringPtr())
    ch = FirstChar(*s);
  else
    ch = AnsiChar(static_cast<uint32_t>((a[1].ToLong() % 256 + 256) % 256), c.codePage);
  if (static_cast<size_t>(n) * ch.size() > (size_t{1} << 28)) throw OutOfMemory();
  std::string out;
  out.reserve(static_cast<size_t>(n) * ch.size());
  for (int32_t i = 0; i < n; ++i) out += ch;
  return Variant(std::move(out));
}

// The characters in reverse order (a character above U+FFFF stays whole).
Variant StrReverse(BuiltinContext&, Args& a) {
  const std::string s = TextArg(a, 0);
  std::string out(s.size(), '\0');
  size_t end = s.size();
  for (size_t i = 0; i < s.size();) {
    const size_t n = utf8::DecodeAt(s, i).bytes;
    end -= n;
    std::copy_n(s.begin() + static_cast<ptrdiff_t>(i), n, out.begin() + static_cast<ptrdiff_t>(end));
    i += n;
  }
  return Variant(std::move(out));
}

// Escape: every UTF-16 unit but letters, digits and @*_+-./ as %XX (below 256) or %uXXXX.
std::string EscapeText(std::string_view s) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (char16_t u : ToUtf16(s)) {
    const bool plain =
        (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || (u >= '0' && u <= '9') ||
        (u < 0x80 && std::string_view("@*_+-./").find(static_cast<char>(u)) != std::string_view::npos);
    if (plain) {
      out += static_cast<char>(u);
    } else if (u < 0x100) {
      out += {'%', kHex[u >> 4], kHex[u & 15]};
    } else {
      out += {'%', 'u', kHex[u >> 12], kHex[(u >> 8) & 15], kHex[(u >> 4) & 15], kHex[u & 15]};
    }
  }
  return out;
}

// Unescape: %XX and %uXXXX back to their units; a "%" that starts neither stays as it is.
std::string UnescapeText(std::string_view s) {
  const std::u16string in = ToUtf16(s);
  std::u16string out;
  auto hexAt = [&](size_t at, size_t n) -> int {
    if (at + n > in.size()) return -1;
    int v = 0;
    for (size_t k = 0; k < n; ++k) {
      const int d = HexDigitValue(in[at + k]);
      if (d < 0) return -1;
      v = v * 16 + d;
    }
    return v;
  };
  for (size_t i = 0; i < in.size(); ++i) {
    if (in[i] == '%') {
      if (int v = in.size() > i + 1 && in[i + 1] == 'u' ? hexAt(i + 2, 4) : -1; v >= 0) {
        out += static_cast<char16_t>(v);
        i += 5;
        continue;
      }
      if (int v = hexAt(i + 1, 2); v >= 0) {
        out += static_cast<char16_t>(v);
        i += 2;
        continue;
      }
    }
    out += in[i];
  }
  return FromUtf16(out);
}

std::string Lower(std::string_view s) { return corvane::LCase(s); }
std::string Upper(std::string_view s) { return corvane::UCase(s); }
std::string TrimBoth(std::string_view s) { return corvane::Trim(s); }
std::string TrimLeft(std::string_view s) { return corvane::LTrim(s); }
std::string TrimRight(std::string_view s) { return corvane::RTrim(s); }

constexpr Builtin kBuiltins[] = {
    {"Asc", 1, 1, Asc},
    {"AscW", 1, 1, AscW},
    {"Chr", 1, 1, Chr},
    {"ChrW", 1, 1, ChrW},
    {"Escape", 1, 1, OnText<EscapeText>},
    {"InStr", 2, 4, InStr},
    {"InStrRev", 2, 4, InStrRev},
    {"Join", 1, 2, Join},
    {"LCase", 1, 1, OnText<Lower>},
    {"Left", 2, 2, Left},
    {"Len", 1, 1, Len},
    {"LTrim", 1, 1, OnText<TrimLeft>},
    {"Mid", 2, 3, Mid},
    {"Replace", 3, 6, Replace},
    {"Right", 2, 2, Right},
    {"RTrim", 1, 1, OnText<TrimRight>},
    {"Space", 1, 1, Space},
    {"Split", 1, 4, Split},
    {"StrComp", 2, 3, StrComp},
    {"String", 2, 2, String},
    {"StrReverse", 1, 1, StrReverse},
    {"Trim", 1, 1, OnText<TrimBoth>},
    {"UCase", 1, 1, OnText<Upper>},
    {"Unescape", 1, 1, OnText<UnescapeText>},
};

}  // namespace

std::span<const Builtin> TextBuiltins() { return kBuiltins; }

}  // namespace corvane::script::builtins
