// What the families of built-in functions share: reading their arguments, reading a date the way
// the page functions accept one, and the tables each family contributes to FindBuiltin.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "corvane/variant.h"
#include "script/builtins.h"

namespace corvane::script::builtins {

// Argument i when it was given: present and not a Missing optional argument.
inline bool Given(const Args& args, size_t i) { return i < args.size() && !args[i].IsMissing(); }
const Variant& Arg(const Args& args, size_t i);  // Empty when absent
// How many arguments were given, not counting Missing ones at the end.
size_t GivenCount(const Args& args);

// Argument i as a number of the kind the function takes (94 on Null, 13 when it is not a number, 6
// when it does not fit), or `fallback` when it was not given.
int32_t LongArg(const Args& args, size_t i, int32_t fallback);
double DoubleArg(const Args& args, size_t i);
std::string TextArg(const Args& args, size_t i);  // CStr: 94 on Null

// vbBinaryCompare (0) or vbTextCompare (1; vbDatabaseCompare, 2, counts as text); 5 otherwise.
bool TextCompareArg(const Args& args, size_t i);

// ASCII letters folded to lower case, as the runtime's text comparisons (InStrText) fold them:
// the byte offsets of the text stay those of the original.
std::string FoldCase(std::string_view s);

// A date as the page functions read one (CDate, IsDate, DateValue, Year, ...): a Date or a number
// as its serial; a text in the runtime's locale form ("yyyy-mm-dd[ hh:mm[:ss]]", also with "/"),
// the long date form "yyyy年m月d日", or a time of day alone ("h:mm[:ss]", with "AM"/"PM"
// allowed). nullopt when the value has no such reading (Null included).
std::optional<double> ReadDate(const Variant& v);
// ReadDate, raising 94 on Null and 13 when there is no reading.
double DateArg(const Args& args, size_t i);

// The platform's range of dates: the years 100 to 9999.
constexpr double kMinDate = -657434.0;
constexpr double kMaxDate = 2958465.999988426;
// A serial as a Date; 5 outside the platform's range.
Variant CheckedDate(double serial);

// The families' tables.
std::span<const Builtin> ConversionBuiltins();
std::span<const Builtin> InspectionBuiltins();
std::span<const Builtin> TextBuiltins();
std::span<const Builtin> MathBuiltins();
std::span<const Builtin> DateBuiltins();
std::span<const Builtin> ArrayBuiltins();
std::span<const Builtin> FormatBuiltins();

}  // namespace corvane::script::builtins
