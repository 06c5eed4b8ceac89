// The platform's text functions over UTF-8 strings.
//
// Positions and lengths count UTF-16 code units, as the original platform did: a Chinese character is
// 1, a character outside the Basic Multilingual Plane is 2. Positions start at 1. Comparisons are
// binary (case-sensitive) unless a function says otherwise. Invalid UTF-8 bytes count as one unit each.
// Where Mid, Left or Right cut a character above U+FFFF in half, the half kept is given as U+FFFD.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

int32_t Len(std::string_view s);
// Mid(s, start[, length]): start below 1 or a negative length raises 5; a start past the end gives "".
std::string Mid(std::string_view s, int32_t start, int32_t length = -1);
std::string Left(std::string_view s, int32_t length);   // negative raises 5
std::string Right(std::string_view s, int32_t length);  // negative raises 5
// InStr(start, s, find): position of `find` in `s` at or after `start`, 0 when absent; a start below 1
// raises 5; an empty `find` gives `start` (or 0 when start is past the end).
int32_t InStr(int32_t start, std::string_view s, std::string_view find);
int32_t InStr(std::string_view s, std::string_view find);
// Case-insensitive (ASCII letters) variant, as InStr(..., vbTextCompare).
int32_t InStrText(std::string_view s, std::string_view find);
int32_t InStrText(int32_t start, std::string_view s, std::string_view find);
std::string Trim(std::string_view s);  // blanks (U+0020) only
std::string LTrim(std::string_view s);
std::string RTrim(std::string_view s);
std::string LCase(std::string_view s);  // ASCII letters
std::string UCase(std::string_view s);
// Replaces every occurrence, left to right, not overlapping; binary. An empty `find` leaves s as it is.
std::string Replace(std::string_view s, std::string_view find, std::string_view with);
// Split("") gives no element at all; an empty delimiter gives the whole string as one element.
std::vector<std::string> Split(std::string_view s, std::string_view delimiter);
std::string Join(const std::vector<std::string>& parts, std::string_view delimiter);

// Case-insensitive equality of ASCII letters (names, ProgIDs, session keys).
bool EqualsNoCase(std::string_view a, std::string_view b);

// UTF-8 <-> UTF-16 code units.
std::u16string ToUtf16(std::string_view s);
std::string FromUtf16(std::u16string_view s);

}  // namespace corvane
