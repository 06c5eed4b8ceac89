#include "corvane/variant.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "corvane/dates.h"
#include "corvane/error.h"
#include "corvane/text.h"
#include "runtime/number_text.h"

namespace corvane {

namespace {

template <class... Fs>
struct Overloaded : Fs... {
  using Fs::operator()...;
};
template <class... Fs>
Overloaded(Fs...) -> Overloaded<Fs...>;

// Rounds half to even and checks the range, as CInt and CLng do.
template <class T>
T RoundToInt(double d) {
  if (std::isnan(d)) throw Error::Overflow();
  double r = std::nearbyint(d);  // the default rounding mode rounds half to even
  if (r < static_cast<double>(std::numeric_limits<T>::min()) ||
      r > static_cast<double>(std::numeric_limits<T>::max()))
    throw Error::Overflow();
  return static_cast<T>(r);
}

}  // namespace

std::optional<double> Variant::NumberOf() const {
  return std::visit(Overloaded{
                        [](const EmptyTag&) -> std::optional<double> { return 0.0; },
                        [](bool b) -> std::optional<double> { return b ? -1.0 : 0.0; },
                        [](int16_t i) -> std::optional<double> { return i; },
                        [](int32_t i) -> std::optional<double> { return i; },
                        [](float f) -> std::optional<double> { return f; },
                        [](double d) -> std::optional<double> { return d; },
                        [](const DateTag& d) -> std::optional<double> { return d.serial; },
                        [](const auto&) -> std::optional<double> { return std::nullopt; },
                    },
                    v_);
}

Variant Variant::Date(int year, int month, int day, int hour, int minute, int second) {
  return FromDate(DateTimeSerial(year, month, day, hour, minute, second));
}

VarType Variant::Type() const {
  static constexpr VarType kTypes[] = {vtEmpty,  vtNull,   vtError, vtBoolean, vtInteger,   vtLong,
                                       vtSingle, vtDouble, vtDate,  vtString,  vtByteArray, vtObject};
  static_assert(std::size(kTypes) == std::variant_size_v<Storage>);
  return kTypes[v_.index()];
}

bool Variant::IsNumber() const {
  return std::holds_alternative<bool>(v_) || std::holds_alternative<int16_t>(v_) ||
         std::holds_alternative<int32_t>(v_) || std::holds_alternative<float>(v_) ||
         std::holds_alternative<double>(v_);
}

std::string Variant::ToString() const {
  return std::visit(Overloaded{
                        [](const EmptyTag&) -> std::string { return ""; },
                        [](const NullTag&) -> std::string { throw Error::InvalidUseOfNull(); },
                        [](const MissingTag&) -> std::string { throw Error::TypeMismatch(); },
                        [](bool b) -> std::string { return b ? "True" : "False"; },
                        [](int16_t i) { return std::to_string(i); },
                        [](int32_t i) { return std::to_string(i); },
                        [](float f) { return FormatNumber(f, 7); },
                        [](double d) { return FormatNumber(d, 15); },
                        [](const DateTag& d) { return DateText(d.serial); },
                        [](const std::string& s) { return s; },
                        [](const ByteArray&) -> std::string { throw Error::TypeMismatch(); },
                        [](const Object&) -> std::string { throw Error::TypeMismatch(); },
                    },
                    v_);
}

std::string Variant::Text() const {
  if (IsNull() || IsEmpty()) return "";
  return ToString();
}

int16_t Variant::ToInteger() const {
  if (auto* i = std::get_if<int16_t>(&v_)) return *i;
  return RoundToInt<int16_t>(ToDouble());
}

int32_t Variant::ToLong() const {
  if (auto* i = std::get_if<int32_t>(&v_)) return *i;
  return RoundToInt<int32_t>(ToDouble());
}

float Variant::ToSingle() const {
  double d = ToDouble();
  if (std::isfinite(d) && std::fabs(d) > std::numeric_limits<float>::max()) throw Error::Overflow();
  return static_cast<float>(d);
}

double Variant::ToDouble() const {
  if (IsNull()) throw Error::InvalidUseOfNull();
  if (const std::string* s = StringPtr()) {
    if (auto d = ParseNumberText(*s)) return *d;
    throw Error::TypeMismatch();
  }
  if (auto d = NumberOf()) return *d;
  throw Error::TypeMismatch();
}

double Variant::ToDate() const {
  if (auto* d = std::get_if<DateTag>(&v_)) return d->serial;
  if (IsNull()) throw Error::InvalidUseOfNull();
  if (const std::string* s = StringPtr()) {
    if (auto d = ParseDateText(*s)) return *d;
    throw Error::TypeMismatch();
  }
  if (auto d = NumberOf()) return *d;
  throw Error::TypeMismatch();
}

bool Variant::ToBool() const {
  if (auto* b = std::get_if<bool>(&v_)) return *b;
  if (const std::string* s = StringPtr()) {
    std::string t = Trim(*s);
    if (EqualsNoCase(t, "true")) return true;
    if (EqualsNoCase(t, "false")) return false;
  }
  return ToDouble() != 0.0;
}

const Bytes& Variant::ToBytes() const {
  if (auto* b = std::get_if<ByteArray>(&v_)) return **b;
  throw Error::TypeMismatch();
}

Object Variant::ToObject() const {
  if (auto* o = std::get_if<Object>(&v_)) return *o;
  throw Error::ObjectRequired();
}

std::optional<int> Compare(const Variant& a, const Variant& b) {
  if (a.IsNull() || b.IsNull()) return std::nullopt;
  const std::string* sa = a.StringPtr();
  const std::string* sb = b.StringPtr();
  auto sign = [](auto x, auto y) { return x < y ? -1 : (x > y ? 1 : 0); };
  if (sa && sb) return sign(sa->compare(*sb), 0);
  // Empty beside a text counts as "".
  if (sa && b.IsEmpty()) return sa->empty() ? 0 : 1;
  if (sb && a.IsEmpty()) return sb->empty() ? 0 : -1;
  auto na = a.NumberOf();
  auto nb = b.NumberOf();
  if (na && nb) return sign(*na, *nb);
  if (na && sb) return -1;  // a number is less than any text
  if (sa && nb) return 1;
  throw Error::TypeMismatch();
}

bool Equals(const Variant& a, const Variant& b) {
  auto c = Compare(a, b);
  return c && *c == 0;
}

bool EqualsLiteral(const Variant& v, double literal) { return !v.IsNull() && v.ToDouble() == literal; }

bool EqualsLiteral(const Variant& v, std::string_view literal) {
  if (v.IsNull()) return false;
  if (const std::string* s = v.StringPtr()) return *s == literal;
  return v.Text() == literal;
}

std::string Concat(std::initializer_list<Variant> parts) {
  std::string out;
  for (const Variant& p : parts) {
    if (const std::string* s = p.StringPtr())
      out += *s;
    else
      out += p.Text();
  }
  return out;
}

std::string DebugString(const Variant& v) {
  switch (v.Type()) {
    case vtEmpty: return "Empty";
    case vtNull: return "Null";
    case vtError: return "Missing";
    case vtObject: return v.ToObject().IsNothing() ? "Object:Nothing" : "Object";
    case vtByteArray: return "Bytes[" + std::to_string(v.ToBytes().size()) + "]";
    default: return std::to_string(static_cast<int>(v.Type())) + ":" + v.ToString();
  }
}

void PrintTo(const Variant& v, std::ostream* os) { *os << DebugString(v); }

}  // namespace corvane
