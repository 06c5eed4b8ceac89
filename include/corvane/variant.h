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
//   Date           7   the locale's date text (dates.h)   the serial day number
//   String         8   itself (UTF-8)                     parsed; raises 13 when not numeric
//   Object         9   raises 13                          raises 13
//   Boolean       11   "True" / "False"                   -1 / 0
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
  vtDate = 7,
  vtString = 8,
  vtObject = 9,
  vtError = 10,  // a missing optional argument
  vtBoolean = 11,
  vtByteArray = 8209,  // array of bytes (8192 | 17)
};

using Bytes = std::vector<uint8_t>;

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

  VarType Type() const;
  bool IsEmpty() const { return std::holds_alternative<EmptyTag>(v_); }
  bool IsNull() const { return std::holds_alternative<NullTag>(v_); }
  bool IsMissing() const { return std::holds_alternative<MissingTag>(v_); }
  bool IsObject() const { return std::holds_alternative<Object>(v_); }
  bool IsString() const { return std::holds_alternative<std::string>(v_); }
  bool IsDate() const { return std::holds_alternative<DateTag>(v_); }
  bool IsBytes() const { return std::holds_alternative<ByteArray>(v_); }
  // Integer, Long, Single, Double, Boolean (and Empty does not count).
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

  // The text used by concatenation: Null and Empty give "", everything else its CStr.
  std::string Text() const;
  // Direct access without conversion; nullptr when the Variant holds another kind.
  const std::string* StringPtr() const { return std::get_if<std::string>(&v_); }

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
  using ByteArray = std::shared_ptr<const Bytes>;  // shared, never modified in place
  using Storage = std::variant<EmptyTag, NullTag, MissingTag, bool, int16_t, int32_t, float, double, DateTag,
                               std::string, ByteArray, Object>;

  // The value of a number-like kind (Empty is 0, a Date its serial); nullopt for the others.
  std::optional<double> NumberOf() const;

  Storage v_;
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
