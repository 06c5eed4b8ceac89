// The number functions: Abs Atn Cos Exp Fix Hex Int Log Oct Rnd Round Sgn Sin Sqr Tan RGB Randomize.
//
// Abs, Fix, Int and Round keep their argument's type (Integer stays Integer, Currency stays Currency,
// a text becomes Double) and give Null for Null; the others work in Double and raise 94 on Null.
//
// Rnd is the platform's generator, so a seeded page draws the same numbers as on the original: a
// 24-bit linear congruential sequence x' = (x * 0x43FD43FD + 0xC39EC3) mod 2^24, each number being
// x' / 2^24 as a Single. Rnd(0) repeats the last number; Rnd(negative) restarts the sequence from a
// seed made of the argument's Single bits; Randomize mixes the upper half of a Double's bits into the
// seed's middle 16 bits (no argument: the Timer).
#include <cmath>
#include <cstdio>
#include <cstring>

#include "corvane/dates.h"
#include "corvane/error.h"
#include "script/builtins_support.h"

namespace corvane::script::builtins {
namespace {

// The argument as a number with its type: Boolean and Empty count as Integer, a text as Double.
// Returns false for Null.
bool Numeric(const Variant& v, VarType& type, double& value) {
  if (v.IsNull()) return false;
  type = v.Type();
  if (type == vtString) type = vtDouble;
  if (type == vtBoolean || type == vtEmpty) type = vtInteger;
  value = v.ToDouble();  // 13 for what is not a number
  return true;
}

// A value of `type` from a whole or rounded number; a whole type that overflows moves up as the
// arithmetic operators do (Integer -> Long -> Double).
Variant OfType(VarType type, double r) {
  switch (type) {
    case vtByte:
      if (r >= 0 && r <= 255) return Variant::FromByte(static_cast<uint8_t>(r));
      [[fallthrough]];
    case vtInteger:
      if (r >= INT16_MIN && r <= INT16_MAX) return Variant(static_cast<int16_t>(r));
      [[fallthrough]];
    case vtLong:
      if (r >= INT32_MIN && r <= INT32_MAX) return Variant(static_cast<int32_t>(r));
      return Variant(r);
    case vtSingle: return Variant(static_cast<float>(r));
    case vtCurrency: return Variant::FromCurrency(static_cast<int64_t>(std::llround(r * 10000.0)));
    case vtDate: return Variant::FromDate(r);
    default: return Variant(r);
  }
}

Variant Abs(BuiltinContext&, Args& a) {
  VarType type;
  double v;
  if (!Numeric(a[0], type, v)) return Variant::Null();
  if (type == vtCurrency) {
    const int64_t c = a[0].ToCurrency();
    if (c == INT64_MIN) throw Error::Overflow();
    return Variant::FromCurrency(c < 0 ? -c : c);
  }
  return OfType(type == vtDate ? vtDouble : type, std::fabs(v));
}

template <double (*F)(double)>
Variant Whole(BuiltinContext&, Args& a) {
  VarType type;
  double v;
  if (!Numeric(a[0], type, v)) return Variant::Null();
  return OfType(type, F(v));
}

double Sign(double v) { return v > 0 ? 1 : (v < 0 ? -1 : 0); }

Variant Sgn(BuiltinContext&, Args& a) { return Variant(static_cast<int16_t>(Sign(a[0].ToDouble()))); }

template <double (*F)(double)>
Variant Real(BuiltinContext&, Args& a) {
  const double r = F(a[0].ToDouble());
  if (std::isnan(r)) throw Error::InvalidCall();
  if (std::isinf(r)) throw Error::Overflow();
  return Variant(r);
}

double Log(double v) {
  if (v <= 0) throw Error::InvalidCall();
  return std::log(v);
}

double Sqr(double v) {
  if (v < 0) throw Error::InvalidCall();
  return std::sqrt(v);
}

double Atn(double v) { return std::atan(v); }
double Cos(double v) { return std::cos(v); }
double Exp(double v) { return std::exp(v); }
double Sin(double v) { return std::sin(v); }
double Tan(double v) { return std::tan(v); }
double Floor(double v) { return std::floor(v); }
double Trunc(double v) { return std::trunc(v); }

// Rounds to `digits` decimals, half to even. The scaled value is first read to 15 significant
// digits, the precision a Double shows, so 2.675 (stored as 2.67499999...) counts as a half.
double RoundHalfEven(double v, int digits) {
  const double scale = std::pow(10.0, digits);
  double scaled = v * scale;
  if (!std::isfinite(scaled)) return v;
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.15g", scaled);
  scaled = std::strtod(buf, nullptr);
  const double r = std::nearbyint(scaled);
  return digits == 0 ? r : r / scale;
}

Variant Round(BuiltinContext&, Args& a) {
  const int32_t digits = LongArg(a, 1, 0);
  if (digits < 0) throw Error::InvalidCall();
  VarType type;
  double v;
  if (!Numeric(a[0], type, v)) return Variant::Null();
  if (type == vtInteger || type == vtLong || type == vtByte) return OfType(type, v);
  return OfType(type, RoundHalfEven(v, std::min(digits, 22)));
}

// Hex and Oct: a whole number in base 16 or 8; negative numbers as their 16-bit pattern when the
// argument is an Integer (or Byte, Boolean), else as 32 bits. Other types round to Long first.
std::string InBase(const Variant& v, unsigned base) {
  const VarType type = v.Type();
  uint32_t bits;
  if (type == vtInteger || type == vtByte || type == vtBoolean || type == vtEmpty)
    bits = static_cast<uint16_t>(v.ToInteger());
  else
    bits = static_cast<uint32_t>(v.ToLong());
  char buf[16];
  std::snprintf(buf, sizeof buf, base == 16 ? "%X" : "%o", bits);
  return buf;
}

Variant Hex(BuiltinContext&, Args& a) {
  if (a[0].IsNull()) return Variant::Null();
  return Variant(InBase(a[0], 16));
}

Variant Oct(BuiltinContext&, Args& a) {
  if (a[0].IsNull()) return Variant::Null();
  return Variant(InBase(a[0], 8));
}

constexpr uint32_t kRandomMask = 0xFFFFFF;

Variant Rnd(BuiltinContext& c, Args& a) {
  const float n = Given(a, 0) ? a[0].ToSingle() : 1.0f;
  if (n == 0) return Variant(c.lastRandom);
  if (n < 0) {
    uint32_t bits;
    std::memcpy(&bits, &n, sizeof bits);
    c.randomSeed = (bits + (bits >> 24)) & kRandomMask;
  }
  c.randomSeed = (c.randomSeed * 0x43FD43FDu + 0xC39EC3u) & kRandomMask;
  c.lastRandom = static_cast<float>(c.randomSeed) / 16777216.0f;
  return Variant(c.lastRandom);
}

Variant Randomize(BuiltinContext& c, Args& a) {
  const double n = Given(a, 0) ? a[0].ToDouble() : static_cast<double>(corvane::Timer());
  uint64_t bits;
  std::memcpy(&bits, &n, sizeof bits);
  const auto high = static_cast<uint32_t>(bits >> 32);
  const uint32_t mixed = ((high & 0xFFFF) ^ (high >> 16)) << 8;
  c.randomSeed = ((c.randomSeed & 0xFF0000FFu) | mixed) & kRandomMask;
  return Variant();
}

// RGB(red, green, blue): each part rounded, above 255 taken as 255, negative raising 5.
Variant RGB(BuiltinContext&, Args& a) {
  int32_t color = 0;
  for (int i = 2; i >= 0; --i) {
    const int32_t part = a[static_cast<size_t>(i)].ToLong();
    if (part < 0) throw Error::InvalidCall();
    color = color * 256 + std::min(part, 255);
  }
  return Variant(color);
}

constexpr Builtin kBuiltins[] = {
    {"Abs", 1, 1, Abs},          {"Atn", 1, 1, Real<Atn>},
    {"Cos", 1, 1, Real<Cos>},    {"Exp", 1, 1, Real<Exp>},
    {"Fix", 1, 1, Whole<Trunc>}, {"Hex", 1, 1, Hex},
    {"Int", 1, 1, Whole<Floor>}, {"Log", 1, 1, Real<Log>},
    {"Oct", 1, 1, Oct},          {"Randomize", 0, 1, Randomize},
    {"RGB", 3, 3, RGB},          {"Rnd", 0, 1, Rnd},
    {"Round", 1, 2, Round},      {"Sgn", 1, 1, Sgn},
    {"Sin", 1, 1, Real<Sin>},    {"Sqr", 1, 1, Real<Sqr>},
    {"Tan", 1, 1, Real<Tan>},
};

}  // namespace

std::span<const Builtin> MathBuiltins() { return kBuiltins; }

}  // namespace corvane::script::builtins
