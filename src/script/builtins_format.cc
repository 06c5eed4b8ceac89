// FormatNumber, FormatCurrency and FormatPercent, with a Chinese (zh-CN) server's settings as the
// defaults: two decimals, a leading zero, "," grouping by three, a minus sign rather than
// parentheses, and the currency written "¥1,234.50", negative "¥-1,234.50".
//
// The arguments after the number are NumDigitsAfterDecimal (-1: the default) and three tristates,
// IncludeLeadingDigit, UseParensForNegativeNumbers and GroupDigits: vbTrue (-1), vbFalse (0) or
// vbUseDefault (-2). Halves round away from zero, reading the number to the 15 significant digits
// a Double shows (1.005 formats as "1.01"), as the platform's formatting does.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "corvane/error.h"
#include "script/builtins_support.h"

namespace corvane::script::builtins {
namespace {

constexpr int kDefaultDigits = 2;
constexpr std::string_view kCurrencySymbol = "¥";

struct NumberStyle {
  int digits = kDefaultDigits;
  bool leadingDigit = true;
  bool parens = false;
  bool group = true;
};

bool TristateArg(const Args& args, size_t i, bool fallback) {
  const int32_t v = LongArg(args, i, -2);
  return v == -2 ? fallback : v != 0;
}

NumberStyle StyleArgs(const Args& args) {
  NumberStyle style;
  const int32_t digits = LongArg(args, 1, -1);
  if (digits < -1 || digits > 255) throw Error::InvalidCall();
  if (digits != -1) style.digits = digits;
  style.leadingDigit = TristateArg(args, 2, style.leadingDigit);
  style.parens = TristateArg(args, 3, style.parens);
  style.group = TristateArg(args, 4, style.group);
  return style;
}

// |value| rounded to `digits` decimals, half away from zero: its digits with the point. The rounding
// is done on the decimal digits themselves, so the digits shown are the ones the number reads as.
std::string Magnitude(double value, int digits) {
  if (!std::isfinite(value)) throw Error::Overflow();  // "1E999" reads as infinity
  char buf[48];
  std::snprintf(buf, sizeof buf, "%.14e", std::fabs(value));  // d.dddddddddddddde+XX
  const std::string mantissa = std::string(1, buf[0]) + std::string(buf + 2, 14);
  const int before = std::atoi(std::strchr(buf, 'e') + 1) + 1;  // mantissa digits before the point
  std::string whole, fraction;
  if (before <= 0) {
    whole = "0";
    fraction = std::string(static_cast<size_t>(-before), '0') + mantissa;
  } else if (before >= static_cast<int>(mantissa.size())) {
    whole = mantissa + std::string(static_cast<size_t>(before) - mantissa.size(), '0');
  } else {
    whole = mantissa.substr(0, static_cast<size_t>(before));
    fraction = mantissa.substr(static_cast<size_t>(before));
  }
  const auto kept = static_cast<size_t>(digits);
  bool up = fraction.size() > kept && fraction[kept] >= '5';
  fraction.resize(kept, '0');
  std::string number = whole + fraction;
  for (size_t i = number.size(); up && i-- > 0;) {
    up = number[i] == '9';
    number[i] = up ? '0' : static_cast<char>(number[i] + 1);
  }
  if (up) number.insert(0, "1");
  const size_t point = number.size() - kept;
  const size_t lead = std::min(number.find_first_not_of('0'), point - 1);  // keep one digit
  std::string out = number.substr(lead, point - lead);
  if (kept > 0) out += "." + number.substr(point);
  return out;
}

// The number's text without its sign; `negative` tells whether it shows as a negative number.
std::string Body(double value, const NumberStyle& style, bool& negative) {
  std::string s = Magnitude(value, style.digits);
  negative = value < 0 && s.find_first_not_of("0.") != std::string::npos;
  const size_t point = std::min(s.find('.'), s.size());
  if (style.group)
    for (size_t at = point; at > 3; at -= 3) s.insert(at - 3, ",");
  if (!style.leadingDigit && s.size() > 1 && s[0] == '0' && s[1] == '.') s.erase(0, 1);
  return s;
}

double NumberArg(const Args& args) {
  if (args[0].IsNull()) throw Error::InvalidUseOfNull();
  return args[0].ToDouble();
}

Variant FormatNumber(BuiltinContext&, Args& a) {
  const double value = NumberArg(a);
  const NumberStyle style = StyleArgs(a);
  bool negative;
  const std::string body = Body(value, style, negative);
  if (!negative) return Variant(body);
  return Variant(style.parens ? "(" + body + ")" : "-" + body);
}

Variant FormatCurrency(BuiltinContext&, Args& a) {
  const double value = NumberArg(a);
  const NumberStyle style = StyleArgs(a);
  bool negative;
  const std::string number = Body(value, style, negative);
  const std::string symbol(kCurrencySymbol);
  if (!negative) return Variant(symbol + number);
  return Variant(style.parens ? "(" + symbol + number + ")" : symbol + "-" + number);
}

Variant FormatPercent(BuiltinContext&, Args& a) {
  const double value = NumberArg(a) * 100;
  const NumberStyle style = StyleArgs(a);
  bool negative;
  const std::string body = Body(value, style, negative) + "%";
  if (!negative) return Variant(body);
  return Variant(style.parens ? "(" + body + ")" : "-" + body);
}

constexpr Builtin kBuiltins[] = {
    {"FormatCurrency", 1, 5, FormatCurrency},
    {"FormatNumber", 1, 5, FormatNumber},
    {"FormatPercent", 1, 5, FormatPercent},
};

}  // namespace

std::span<const Builtin> FormatBuiltins() { return kBuiltins; }

}  // namespace corvane::script::builtins
