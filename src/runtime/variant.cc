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

// A Currency's text: its value with up to four decimals and no trailing zeros.
std::string CurrencyText(int64_t scaled) {
  bool negative = scaled < 0;
  uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(scaled) : static_cast<uint64_t>(scaled);
  std::string text = (negative ? "-" : "") + std::to_string(magnitude / 10000);
  if (uint64_t fraction = magnitude % 10000) {
    std::string digits = std::to_string(10000 + fraction).substr(1);
    digits.erase(digits.find_last_not_of('0') + 1);
    text += "." + digits;
  }
  return text;
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
                        [](uint8_t b) -> std::optional<double> { return b; },
                        [](const CurrencyTag& c) -> std::optional<double> { return c.scaled / 10000.0; },
                        [](const auto&) -> std::optional<double> { return std::nullopt; },
                    },
                    v_);
}

Variant Variant::Date(int year, int month, int day, int hour, int minute, int second) {
  return FromDate(DateTimeSerial(year, month, day, hour, minute, second));
}

VarType Variant::Type() const {
  static constexpr VarType kTypes[] = {vtEmpty,     vtNull,   vtError,  vtBoolean,  vtInteger,
                                       vtLong,      vtSingle, vtDouble, vtDate,     vtString,
                                       vtByteArray, vtObject, vtByte,   vtCurrency, vtVariantArray};
  static_assert(std::size(kTypes) == std::variant_size_v<Storage>);
  return kTypes[v_.index()];
}

bool Variant::IsNumber() const {
  return std::holds_alternative<bool>(v_) || std::holds_alternative<int16_t>(v_) ||
         std::holds_alternative<int32_t>(v_) || std::holds_alternative<float>(v_) ||
         std::holds_alternative<double>(v_) || std::holds_alternative<uint8_t>(v_) ||
         std::holds_alternative<CurrencyTag>(v_);
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
                        [this](const Object&) -> std::string { return DefaultValue().ToString(); },
                        [](uint8_t b) { return std::to_string(b); },
                        [](const CurrencyTag& c) { return CurrencyText(c.scaled); },
                        [](const SharedArray&) -> std::string { throw Error::TypeMismatch(); },
                    },
                    v_);
}

std::string Variant::Text() const {
  if (IsNull() || IsEmpty()) return "";
  if (IsObject()) return DefaultValue().Text();
  return ToString();
}

Variant Variant::DefaultValue() const {
  const Object* o = std::get_if<Object>(&v_);
  if (!o) return *this;
  const MemberInfo* member = o->IsNothing() ? nullptr : o->get()->Info().Member(int32_t{0});
  if (!member || !member->Answers(InvokeKind::PropertyGet)) throw Error::TypeMismatch();
  Args none;
  Variant value = o->Invoke(0, none, InvokeKind::PropertyGet);
  if (value.IsObject()) throw Error::TypeMismatch();  // a default that is itself an object
  return value;
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
  if (IsObject()) return DefaultValue().ToDouble();
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
  if (IsObject()) return DefaultValue().ToDate();
  if (const std::string* s = StringPtr()) {
    if (auto d = ParseDateText(*s)) return *d;
    throw Error::TypeMismatch();
  }
  if (auto d = NumberOf()) return *d;
  throw Error::TypeMismatch();
}

bool Variant::ToBool() const {
  if (auto* b = std::get_if<bool>(&v_)) return *b;
  if (IsObject()) return DefaultValue().ToBool();
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

uint8_t Variant::ToByte() const {
  if (auto* b = std::get_if<uint8_t>(&v_)) return *b;
  int16_t i = RoundToInt<int16_t>(ToDouble());
  if (i < 0 || i > 255) throw Error::Overflow();
  return static_cast<uint8_t>(i);
}

int64_t Variant::ToCurrency() const {
  if (auto* c = std::get_if<CurrencyTag>(&v_)) return c->scaled;
  double scaled = ToDouble() * 10000.0;
  if (std::isnan(scaled) || std::fabs(scaled) >= 9.2233720368547758e18) throw Error::Overflow();
  // Below 10^15 the value is read to the 15 significant digits a Double holds before rounding, so
  // that a decimal half stays a half: "0.00015" is 1.4999999999999998 ten-thousandths in binary, and
  // rounds to 2 as 1.5 does.
  if (std::fabs(scaled) < 1e15) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.15g", scaled);
    scaled = std::strtod(digits, nullptr);
  }
  return static_cast<int64_t>(std::nearbyint(scaled));
}

Variant Variant::FromArray(VariantArray a) { return FromArray(std::make_shared<VariantArray>(std::move(a))); }

Variant Variant::FromArray(std::shared_ptr<VariantArray> a) {
  Variant v;
  v.v_ = std::move(a);
  return v;
}

VariantArray* Variant::MutableArray() {
  auto* a = std::get_if<SharedArray>(&v_);
  if (!a) return nullptr;
  if (a->use_count() > 1) *a = std::make_shared<VariantArray>(**a);
  return a->get();
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
    case vtVariantArray: {
      std::string out = "Array(";
      for (const Variant& e : v.ArrayPtr()->Elements()) out += (out.size() > 6 ? ", " : "") + DebugString(e);
      return out + ")";
    }
    default: return std::to_string(static_cast<int>(v.Type())) + ":" + v.ToString();
  }
}

void PrintTo(const Variant& v, std::ostream* os) { *os << DebugString(v); }

VariantArray::VariantArray(std::vector<Bound> bounds) { Redim(std::move(bounds), false); }

VariantArray VariantArray::Of(std::vector<Variant> values) {
  VariantArray a;
  a.bounds_ = {Bound{0, static_cast<int32_t>(values.size())}};
  a.data_ = std::move(values);
  return a;
}

int32_t VariantArray::LBound(int dim) const {
  if (dim < 1 || static_cast<size_t>(dim) > bounds_.size()) throw Error::SubscriptOutOfRange();
  return bounds_[dim - 1].lower;
}

int32_t VariantArray::UBound(int dim) const {
  if (dim < 1 || static_cast<size_t>(dim) > bounds_.size()) throw Error::SubscriptOutOfRange();
  return bounds_[dim - 1].lower + bounds_[dim - 1].count - 1;
}

size_t VariantArray::Offset(const int32_t* indices, size_t n) const {
  if (n != bounds_.size()) throw Error::SubscriptOutOfRange();
  size_t offset = 0, stride = 1;
  for (size_t d = 0; d < n; ++d) {
    int64_t i = static_cast<int64_t>(indices[d]) - bounds_[d].lower;
    if (i < 0 || i >= bounds_[d].count) throw Error::SubscriptOutOfRange();
    offset += static_cast<size_t>(i) * stride;
    stride *= static_cast<size_t>(bounds_[d].count);
  }
  return offset;
}

const Variant& VariantArray::At(const int32_t* indices, size_t n) const { return data_[Offset(indices, n)]; }
Variant& VariantArray::At(const int32_t* indices, size_t n) { return data_[Offset(indices, n)]; }

void VariantArray::Redim(std::vector<Bound> bounds, bool preserve) {
  size_t size = 1;
  for (const Bound& b : bounds) {
    if (b.count < 0) throw Error::SubscriptOutOfRange();
    size *= static_cast<size_t>(b.count);
    if (size > (size_t{1} << 28)) throw Error(7, "Out of memory");
  }
  if (preserve && !bounds_.empty()) {
    bool sameShape = bounds.size() == bounds_.size();
    for (size_t d = 0; sameShape && d + 1 < bounds.size(); ++d)
      sameShape = bounds[d].lower == bounds_[d].lower && bounds[d].count == bounds_[d].count;
    if (!sameShape) throw Error::SubscriptOutOfRange();
    data_.resize(size);  // the first index runs fastest: the kept elements are a prefix
  } else {
    data_.assign(size, Variant());
  }
  bounds_ = std::move(bounds);
}

}  // namespace corvane
