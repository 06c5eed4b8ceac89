// Variant: the dynamically typed value that every page, host object and component passes around.
//
// The kinds a Variant can hold, with their VarType code, their text form (CStr, ToString) and their
// number form (CDbl, ToDouble):
//
//   kind        code   text form                          number form
//   Empty          0   ""                                 0
//   Null           1   raises 94 (invalid use of Null)    raises 94
//   Integer        2   decimal, "-5"                      the value (16-bit signed)
//   Long           3   decimal                            the value (32-bit signed)
//   Single         4   up to 7 significant digits         the value
//   Double         5   up to 15 significant digits        the value
//   Currency       6   up to 4 decimals, "1.5"            the value (64-bit, scaled by 10000)
//   Date           7   the locale's date text (dates.h)   the serial day number
//   String         8   itself (UTF-8)                     parsed; raises 13 when not numeric
//   Object         9   raises 13                          raises 13
//   Boolean       11   "True" / "False"                   -1 / 0
//   Byte          17   decimal                            the value (0..255)
//   array       8204   raises 13                          raises 13   (VariantArray: any rank)
//   byte array  8209   raises 13 (ToBytes gives bytes)    raises 13
//
// Text is UTF-8 internally; lengths and positions of the text functions count UTF-16 code units.
// Concatenation (Text(), Concat) treats Null and Empty as "". Comparison (Compare, Equals) follows the
// original rules: two numbers compare as numbers, two texts as binary texts, a number is always less
// than a text, Empty is 0 beside a number and "" beside a text, Null makes every comparison false.
#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "corvane/object.h"

namespace corvane {

enum VarType : int {
  vtEmpty = 0,
  vtNull = 1,
  vtInteger = 2,
  vtLong = 3,
  vtSingle = 4,
  vtDouble = 5,
  vtCurrency = 6,
  vtDate = 7,
  vtString = 8,
  vtObject = 9,
  vtError = 10,  // a missing optional argument
  vtBoolean = 11,
  vtVariant = 12,
  vtByte = 17,
  vtArray = 8192,         // flag: an array of the type it is combined with
  vtVariantArray = 8204,  // array of Variants (8192 | 12)
  vtByteArray = 8209,     // array of bytes (8192 | 17)
};

using Bytes = std::vector<uint8_t>;
class VariantArray;

class Variant {
 public:
  Variant() = default;  // Empty
  Variant(bool b) : v_(b) {}
  Variant(int16_t i) : v_(i) {}
  Variant(int32_t i) : v_(i) {}
  // Wider integers become Long when they fit, Double otherwise.
  template <std::integral T>
  requires(!std::same_as<T, bool> && !std::same_as<T, int16_t> && !std::same_as<T, int32_t> &&
           !std::same_as<T, char>) Variant(T i) {
    if (static_cast<long double>(i) >= INT32_MIN && static_cast<long double>(i) <= INT32_MAX)
      v_ = static_cast<int32_t>(i);
    else
      v_ = static_cast<double>(i);
  }
  Variant(float f) : v_(f) {}
  Variant(double d) : v_(d) {}
  Variant(const char* s) : v_(std::string(s)) {}
  Variant(std::string s) : v_(std::move(s)) {}
  Variant(std::string_view s) : v_(std::string(s)) {}
  Variant(Object o) : v_(std::move(o)) {}

  static Variant Null() {
    Variant v;
    v.v_ = NullTag{};
    return v;
  }
  static Variant Missing() {
    Variant v;
    v.v_ = MissingTag{};
    return v;
  }
  // A Date from its parts (no range check beyond what DateSerial does) or from a serial day number.
  static Variant Date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
  static Variant FromDate(double serial) {
    Variant v;
    v.v_ = DateTag{serial};
    return v;
  }
  static Variant FromBytes(Bytes b) {
    Variant v;
    v.v_ = std::make_shared<const Bytes>(std::move(b));
    return v;
  }
  static Variant FromByte(uint8_t b) {
    Variant v;
    v.v_ = b;
    return v;
  }
  // A Currency from its value times 10000 (1.5 is 15000).
  static Variant FromCurrency(int64_t scaled) {
    Variant v;
    v.v_ = CurrencyTag{scaled};
    return v;
  }
  static Variant FromArray(VariantArray a);
  static Variant FromArray(std::shared_ptr<VariantArray> a);

  VarType Type() const;
  bool IsEmpty() const { return std::holds_alternative<EmptyTag>(v_); }
  bool IsNull() const { return std::holds_alternative<NullTag>(v_); }
  bool IsMissing() const { return std::holds_alternative<MissingTag>(v_); }
  bool IsObject() const { return std::holds_alternative<Object>(v_); }
  bool IsString() const { return std::holds_alternative<std::string>(v_); }
  bool IsDate() const { return std::holds_alternative<DateTag>(v_); }
  bool IsBytes() const { return std::holds_alternative<ByteArray>(v_); }
  // An array of Variants (not a byte array).
  bool IsArray() const { return std::holds_alternative<SharedArray>(v_); }
  // Integer, Long, Single, Double, Currency, Byte, Boolean (and Empty does not count).
  bool IsNumber() const;

  // Conversions with the platform's rules (CStr, CInt, CLng, CSng, CDbl, CDate, CBool). They raise
  // 94 on Null, 13 on a value that has no such form, 6 when the number does not fit.
  std::string ToString() const;
  int16_t ToInteger() const;  // rounds half to even
  int32_t ToLong() const;     // rounds half to even
  float ToSingle() const;
  double ToDouble() const;
  double ToDate() const;  // serial day number; text is parsed as the locale's date text
  bool ToBool() const;
  const Bytes& ToBytes() const;  // 13 unless a byte array
  Object ToObject() const;       // 424 unless an Object (Empty raises 424 too)
  uint8_t ToByte() const;        // rounds half to even; 6 outside 0..255
  int64_t ToCurrency() const;    // the value times 10000, rounded half to even; 6 when it does not fit

  // An Object's default value, as a scripting host reads an object where a value is wanted: the
  // member of dispatch id 0 read without arguments (rs("name") gives the Field, whose default is its
  // Value). Raises 13 for Nothing or an object without a default member. Other kinds give themselves.
  // The conversions above and Text() read objects this way.
  Variant DefaultValue() const;

  // The text used by concatenation: Null and Empty give "", everything else its CStr.
  std::string Text() const;
  // Direct access without conversion; nullptr when the Variant holds another kind.
  const std::string* StringPtr() const { return std::get_if<std::string>(&v_); }
  // The numbers as stored, for hot paths (the script engine's arithmetic) that cannot afford a
  // conversion call; nullptr when the Variant holds another kind.
  const int16_t* IntegerPtr() const { return std::get_if<int16_t>(&v_); }
  const int32_t* LongPtr() const { return std::get_if<int32_t>(&v_); }
  const double* DoublePtr() const { return std::get_if<double>(&v_); }
  const bool* BooleanPtr() const { return std::get_if<bool>(&v_); }
  // Stores a number in place: no conversion, and no allocation whatever the Variant held.
  template <class T>
  requires(std::same_as<T, int16_t> || std::same_as<T, int32_t> || std::same_as<T, double> ||
           std::same_as<T, bool>) void SetNumber(T x) {
    if (T* p = std::get_if<T>(&v_))
      *p = x;
    else
      v_.template emplace<T>(x);
  }
  // The array, or nullptr when the Variant is not an array of Variants.
  const VariantArray* ArrayPtr() const {
    auto* a = std::get_if<SharedArray>(&v_);
    return a ? a->get() : nullptr;
  }
  // The array for writing. Copies of a Variant share their array until one of them writes: this
  // makes the array this Variant's own first, so arrays behave as values (assignment copies).
  // nullptr when the Variant is not an array.
  VariantArray* MutableArray();

  // Identity comparison of the stored kind and value (for tests and containers), not the platform's
  // comparison: Variant(1) != Variant(int16_t(1)). Use corvane::Equals for the platform's rule.
  bool operator==(const Variant& o) const { return v_ == o.v_; }

  friend std::optional<int> Compare(const Variant& a, const Variant& b);

 private:
  struct EmptyTag {
    bool operator==(const EmptyTag&) const = default;
  };
  struct NullTag {
    bool operator==(const NullTag&) const = default;
  };
  struct MissingTag {
    bool operator==(const MissingTag&) const = default;
  };
  struct DateTag {
    double serial;
    bool operator==(const DateTag&) const = default;
  };
  struct CurrencyTag {
    int64_t scaled;
    bool operator==(const CurrencyTag&) const = default;
  };
  using ByteArray = std::shared_ptr<const Bytes>;     // shared, never modified in place
  using SharedArray = std::shared_ptr<VariantArray>;  // shared until written (MutableArray)
  using Storage = std::variant<EmptyTag, NullTag, MissingTag, bool, int16_t, int32_t, float, double, DateTag,
                               std::string, ByteArray, Object, uint8_t, CurrencyTag, SharedArray>;

  // The value of a number-like kind (Empty is 0, a Date its serial); nullopt for the others.
  std::optional<double> NumberOf() const;

  Storage v_;
};

// An array of Variants of one or more dimensions, as Dim a(2, 3), ReDim and Array() make them. The
// elements are kept with the first index running fastest, so ReDim Preserve (which may change only
// the last dimension) keeps them in place.
class VariantArray {
 public:
  struct Bound {
    int32_t lower = 0;
    int32_t count = 0;  // elements in the dimension; UBound is lower + count - 1
  };
  VariantArray() = default;  // no dimensions yet (Dim a())
  explicit VariantArray(std::vector<Bound> bounds);
  // A one-dimensional array from 0 of the given values (Array(...), Split).
  static VariantArray Of(std::vector<Variant> values);

  size_t Rank() const { return bounds_.size(); }
  const std::vector<Bound>& Bounds() const { return bounds_; }
  // LBound / UBound of dimension `dim` (1-based); 9 when there is no such dimension.
  int32_t LBound(int dim = 1) const;
  int32_t UBound(int dim = 1) const;
  size_t Size() const { return data_.size(); }
  // The element at the indices (one per dimension); 9 when the count or an index is out of range.
  const Variant& At(const int32_t* indices, size_t n) const;
  Variant& At(const int32_t* indices, size_t n);
  // Elements in storage order (For Each goes this way).
  const std::vector<Variant>& Elements() const { return data_; }
  std::vector<Variant>& Elements() { return data_; }
  // ReDim: new bounds; with `preserve` only the last dimension may change (9 otherwise) and the
  // elements that remain keep their values.
  void Redim(std::vector<Bound> bounds, bool preserve);
  // A fixed-size array (Dim a(3)) refuses ReDim and Erase frees nothing but its values.
  bool fixed = false;

 private:
  size_t Offset(const int32_t* indices, size_t n) const;
  std::vector<Bound> bounds_;
  std::vector<Variant> data_;
};

// The platform's comparison of two variants: nullopt when either is Null, else -1, 0 or 1.
std::optional<int> Compare(const Variant& a, const Variant& b);
// a = b under Compare; false when either is Null.
bool Equals(const Variant& a, const Variant& b);

// A value compared with a literal written in the code ("when nType equals 1", "if the action is
// \"update\""). Against a number the comparison is numeric: text that reads as a number is converted
// ("1" equals 1), other text raises 13, Empty counts as 0. Against a text it is a binary text
// comparison of the value's text form (Empty is ""). Null equals no literal.
bool EqualsLiteral(const Variant& v, double literal);
bool EqualsLiteral(const Variant& v, std::string_view literal);

// Concatenation (the "&" operator): Null and Empty join as "".
std::string Concat(std::initializer_list<Variant> parts);

// Gtest and friends print Variants as Type:Text.
std::string DebugString(const Variant& v);
void PrintTo(const Variant& v, std::ostream* os);

}  // namespace corvane
