// Text functions over UTF-8 with positions in UTF-16 code units.
//
// Nothing is converted to UTF-16 to answer a question about positions: the functions walk the UTF-8
// bytes, skipping ASCII runs eight bytes at a time, and count units as they go (see utf8.h for the
// model of invalid bytes). Searching is a plain byte search; a byte match is always a character match
// when the needle is well-formed UTF-8, and otherwise it is checked against character boundaries.
//
// A position that falls between the two halves of a character above U+FFFF can only be expressed in
// UTF-8 by a stand-in: Mid, Left and Right give U+FFFD for the half they cut off.
#include "corvane/text.h"

#include <algorithm>
#include <cstring>

#include "corvane/error.h"
#include "runtime/utf8.h"

namespace corvane {
namespace {

constexpr std::string_view kReplacementChar = "\xEF\xBF\xBD";  // U+FFFD

// A unit position located in the bytes: the character at `byte` starts there, unless `lowHalf`, in
// which case the position is the second unit (low surrogate) of the four-byte character at `byte`.
struct Position {
  size_t byte;
  bool lowHalf;
};

// Moves from the character boundary `from` forward over `units` UTF-16 units (or to the end).
Position Advance(std::string_view s, size_t from, int64_t units) {
  size_t i = from;
  while (units > 0 && i < s.size()) {
    if (size_t run = utf8::AsciiRun(s, i)) {
      size_t take = static_cast<size_t>(std::min<int64_t>(static_cast<int64_t>(run), units));
      i += take;
      units -= static_cast<int64_t>(take);
      continue;
    }
    utf8::Char c = utf8::DecodeAt(s, i);
    if (c.Units() == 2 && units == 1) return {i, true};
    i += c.bytes;
    units -= c.Units();
  }
  return {i, false};
}

// UTF-16 units in s[from, to), both character boundaries.
int64_t CountUnits(std::string_view s, size_t from, size_t to) {
  int64_t n = 0;
  size_t i = from;
  while (i < to) {
    size_t run = std::min(utf8::AsciiRun(s, i), to - i);
    i += run;
    n += static_cast<int64_t>(run);
    if (i >= to) break;
    utf8::Char c = utf8::DecodeAt(s, i);
    i += c.bytes;
    n += c.Units();
  }
  return n;
}

bool IsWellFormed(std::string_view s) {
  for (size_t i = utf8::AsciiRun(s, 0); i < s.size(); i += utf8::AsciiRun(s, i)) {
    utf8::Char c = utf8::DecodeAt(s, i);
    if (!c.valid) return false;
    i += c.bytes;
  }
  return true;
}

// Whether a character of s starts at byte `pos` (or pos is the end). Only a continuation byte can be
// inside a character, and only inside a well-formed sequence whose lead byte is at most 3 bytes back.
bool IsBoundary(std::string_view s, size_t pos) {
  if (pos == 0 || pos >= s.size()) return true;
  if (!utf8::IsContinuation(static_cast<unsigned char>(s[pos]))) return true;
  for (size_t k = 1; k <= 3 && k <= pos; ++k) {
    if (utf8::IsContinuation(static_cast<unsigned char>(s[pos - k]))) continue;
    utf8::Char c = utf8::DecodeAt(s, pos - k);
    return !(c.valid && pos - k + c.bytes > pos);
  }
  return true;
}

constexpr char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// Byte offset of the first occurrence of `find` (non-empty) in s at or after `from`, ASCII letters
// compared case-blind; npos when there is none.
size_t FindNoCase(std::string_view s, std::string_view find, size_t from) {
  const char lower = LowerAscii(find[0]), upper = UpperAscii(find[0]);
  for (size_t i = from; i + find.size() <= s.size(); ++i) {
    if (s[i] != lower && s[i] != upper) continue;
    if (EqualsNoCase(s.substr(i + 1, find.size() - 1), find.substr(1))) return i;
  }
  return std::string_view::npos;
}

// Byte offset of the first occurrence of `find` (non-empty) in s at or after the boundary `from` that
// is a whole run of characters, or npos. `noCase` compares ASCII letters case-blind.
size_t FindChars(std::string_view s, std::string_view find, size_t from, bool findWellFormed,
                 bool noCase = false) {
  auto next = [&](size_t at) { return noCase ? FindNoCase(s, find, at) : s.find(find, at); };
  size_t at = next(from);
  if (findWellFormed) return at;
  while (at != std::string_view::npos && !(IsBoundary(s, at) && IsBoundary(s, at + find.size())))
    at = next(at + 1);
  return at;
}

void AsciiLower(std::string& s) {
  for (char& c : s) c = LowerAscii(c);
}

void AsciiUpper(std::string& s) {
  for (char& c : s) c = UpperAscii(c);
}

// The characters from unit position `start` (0-based) on, `length` units long (-1: to the end).
std::string Slice(std::string_view s, int64_t start, int64_t length) {
  Position a = Advance(s, 0, start);
  if (a.byte >= s.size() || length == 0) return {};
  std::string out;
  size_t from = a.byte;
  if (a.lowHalf) {
    out += kReplacementChar;
    from += 4;
    if (length > 0) --length;
  }
  if (length < 0) {
    out.append(s.substr(from));
    return out;
  }
  Position b = Advance(s, from, length);
  out.append(s.substr(from, b.byte - from));
  if (b.lowHalf) out += kReplacementChar;
  return out;
}

}  // namespace

int32_t Len(std::string_view s) { return static_cast<int32_t>(CountUnits(s, 0, s.size())); }

std::string Mid(std::string_view s, int32_t start, int32_t length) {
  if (start < 1 || length < -1) throw Error::InvalidCall();
  return Slice(s, start - 1, length);
}

std::string Left(std::string_view s, int32_t length) {
  if (length < 0) throw Error::InvalidCall();
  return Slice(s, 0, length);
}

std::string Right(std::string_view s, int32_t length) {
  if (length < 0) throw Error::InvalidCall();
  if (length == 0) return {};
  int64_t total = Len(s);
  if (length >= total) return std::string(s);
  return Slice(s, total - length, -1);
}

namespace {

int32_t InStrOf(int32_t start, std::string_view s, std::string_view find, bool noCase) {
  if (start < 1) throw Error::InvalidCall();
  Position p = Advance(s, 0, start - 1);
  if (p.byte >= s.size()) return 0;  // start is past the last character
  if (find.empty()) return start;
  size_t from = p.lowHalf ? p.byte + 4 : p.byte;
  size_t at = FindChars(s, find, from, IsWellFormed(find), noCase);
  if (at == std::string_view::npos) return 0;
  return static_cast<int32_t>(start + (p.lowHalf ? 1 : 0) + CountUnits(s, from, at));
}

}  // namespace

int32_t InStr(int32_t start, std::string_view s, std::string_view find) {
  return InStrOf(start, s, find, false);
}

int32_t InStr(std::string_view s, std::string_view find) { return InStr(1, s, find); }

// Folding ASCII letters keeps every byte offset, so the positions are those of the binary search.
int32_t InStrText(int32_t start, std::string_view s, std::string_view find) {
  return InStrOf(start, s, find, true);
}

int32_t InStrText(std::string_view s, std::string_view find) { return InStrText(1, s, find); }

std::string LTrim(std::string_view s) {
  size_t b = s.find_first_not_of(' ');
  return b == std::string_view::npos ? std::string() : std::string(s.substr(b));
}

std::string RTrim(std::string_view s) {
  size_t e = s.find_last_not_of(' ');
  return e == std::string_view::npos ? std::string() : std::string(s.substr(0, e + 1));
}

std::string Trim(std::string_view s) {
  size_t b = s.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  size_t e = s.find_last_not_of(' ');
  return std::string(s.substr(b, e - b + 1));
}

std::string LCase(std::string_view s) {
  std::string out(s);
  AsciiLower(out);
  return out;
}

std::string UCase(std::string_view s) {
  std::string out(s);
  AsciiUpper(out);
  return out;
}

std::string Replace(std::string_view s, std::string_view find, std::string_view with) {
  if (find.empty() || s.size() < find.size()) return std::string(s);
  const bool wellFormed = IsWellFormed(find);
  size_t at = FindChars(s, find, 0, wellFormed);
  if (at == std::string_view::npos) return std::string(s);
  std::string out;
  out.reserve(with.size() > find.size() ? s.size() + (with.size() - find.size()) * 4 : s.size());
  size_t done = 0;
  while (at != std::string_view::npos) {
    out.append(s.substr(done, at - done));
    out.append(with);
    done = at + find.size();
    at = FindChars(s, find, done, wellFormed);
  }
  out.append(s.substr(done));
  return out;
}

std::vector<std::string> Split(std::string_view s, std::string_view delimiter) {
  std::vector<std::string> parts;
  if (s.empty()) return parts;
  if (delimiter.empty()) {
    parts.emplace_back(s);
    return parts;
  }
  const bool wellFormed = IsWellFormed(delimiter);
  size_t done = 0;
  for (size_t at = FindChars(s, delimiter, 0, wellFormed); at != std::string_view::npos;
       at = FindChars(s, delimiter, done, wellFormed)) {
    parts.emplace_back(s.substr(done, at - done));
    done = at + delimiter.size();
  }
  parts.emplace_back(s.substr(done));
  return parts;
}

std::string Join(const std::vector<std::string>& parts, std::string_view delimiter) {
  if (parts.empty()) return {};
  size_t size = delimiter.size() * (parts.size() - 1);
  for (const auto& p : parts) size += p.size();
  std::string out;
  out.reserve(size);
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i) out.append(delimiter);
    out.append(parts[i]);
  }
  return out;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  if (a == b) return true;  // the usual case, at memcmp's speed
  for (size_t i = 0; i < a.size(); ++i)
    if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  return true;
}

std::u16string ToUtf16(std::string_view s) {
  std::u16string out;
  out.reserve(s.size());
  size_t i = 0;
  while (i < s.size()) {
    for (size_t run = utf8::AsciiRun(s, i); run; --run) out.push_back(static_cast<char16_t>(s[i++]));
    if (i >= s.size()) break;
    utf8::Char c = utf8::DecodeAt(s, i);
    i += c.bytes;
    if (c.code > 0xFFFF) {
      out.push_back(static_cast<char16_t>(0xD800 + ((c.code - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((c.code - 0x10000) & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(c.code));
    }
  }
  return out;
}

std::string FromUtf16(std::u16string_view s) {
  std::string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size(); ++i) {
    char32_t c = s[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (s[i + 1] - 0xDC00);
      ++i;
    }
    utf8::Append(out, c);  // a lone surrogate becomes U+FFFD
  }
  return out;
}

}  // namespace corvane
