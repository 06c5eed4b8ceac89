#include "runtime/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace corvane {

std::optional<double> ParseNumberText(std::string_view text) {
  size_t b = 0, e = text.size();
  while (b < e && (text[b] == ' ' || text[b] == '\t')) ++b;
  while (e > b && (text[e - 1] == ' ' || text[e - 1] == '\t')) --e;
  std::string_view t = text.substr(b, e - b);
  if (t.empty()) return std::nullopt;

  if (t.size() > 2 && t[0] == '&' && (t[1] == 'H' || t[1] == 'h' || t[1] == 'O' || t[1] == 'o')) {
    int base = (t[1] == 'H' || t[1] == 'h') ? 16 : 8;
    std::string digits(t.substr(2));
    char* end = nullptr;
    unsigned long long v = std::strtoull(digits.c_str(), &end, base);
    if (end != digits.c_str() + digits.size() || v > 0xFFFFFFFFull) return std::nullopt;
    // Four hex digits or fewer are a 16-bit value, more are 32-bit; both are signed.
    if (v <= 0xFFFF && digits.size() <= 4) return static_cast<double>(static_cast<int16_t>(v));
    return static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(v)));
  }

  // sign, digits, optional point and digits, optional exponent; nothing else.
  size_t i = 0;
  if (t[i] == '+' || t[i] == '-') ++i;
  size_t intDigits = 0, fracDigits = 0;
  while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) ++i, ++intDigits;
  if (i < t.size() && t[i] == '.') {
    ++i;
    while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) ++i, ++fracDigits;
  }
  if (intDigits + fracDigits == 0) return std::nullopt;
  if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
    ++i;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    size_t expDigits = 0;
    while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) ++i, ++expDigits;
    if (expDigits == 0) return std::nullopt;
  }
  if (i != t.size()) return std::nullopt;
  std::string s(t);
  return std::strtod(s.c_str(), nullptr);
}

std::string FormatNumber(double value, int digits) {
  if (value == 0) return "0";
  // A whole number of at most 15 digits is written by %G as its digits: without printf, which is
  // slow with doubles (Int(Timer / 60) and loop counters come here on every page).
  if (digits >= 15 && std::fabs(value) < 1e15 && value == std::trunc(value)) {
    char digitsText[24];
    auto [end, ec] = std::to_chars(digitsText, digitsText + sizeof digitsText, static_cast<int64_t>(value));
    return std::string(digitsText, end);
  }
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*G", digits, value);
  std::string s(buf);
  // %G keeps no trailing zeros; the exponent is written with at least two digits, as wanted.
  return s;
}

}  // namespace corvane
