// The conversions: CBool CByte CCur CDate CDbl CInt CLng CSng CStr.
//
// Each is the runtime's Variant conversion, so a value converts in a page exactly as inside the
// components: whole numbers round half to even, Null raises 94, a text that is not a number 13, a
// number out of range 6. CDate reads texts as the page functions do (builtins_support.h).
#include "corvane/error.h"
#include "script/builtins_support.h"

namespace corvane::script::builtins {
namespace {

Variant CBool(BuiltinContext&, Args& a) { return Variant(a[0].ToBool()); }
Variant CByte(BuiltinContext&, Args& a) { return Variant::FromByte(a[0].ToByte()); }
Variant CCur(BuiltinContext&, Args& a) { return Variant::FromCurrency(a[0].ToCurrency()); }
Variant CDbl(BuiltinContext&, Args& a) { return Variant(a[0].ToDouble()); }
Variant CInt(BuiltinContext&, Args& a) { return Variant(a[0].ToInteger()); }
Variant CLng(BuiltinContext&, Args& a) { return Variant(a[0].ToLong()); }
Variant CSng(BuiltinContext&, Args& a) { return Variant(a[0].ToSingle()); }
Variant CStr(BuiltinContext&, Args& a) { return Variant(a[0].ToString()); }

Variant CDate(BuiltinContext&, Args& a) {
  const double serial = DateArg(a, 0);
  if (!(serial >= kMinDate && serial <= kMaxDate)) throw Error::Overflow();
  return Variant::FromDate(serial);
}

constexpr Builtin kBuiltins[] = {
    {"CBool", 1, 1, CBool}, {"CByte", 1, 1, CByte}, {"CCur", 1, 1, CCur},
    {"CDate", 1, 1, CDate}, {"CDbl", 1, 1, CDbl},   {"CInt", 1, 1, CInt},
    {"CLng", 1, 1, CLng},   {"CSng", 1, 1, CSng},   {"CStr", 1, 1, CStr},
};

}  // namespace

std::span<const Builtin> ConversionBuiltins() { return kBuiltins; }

}  // namespace corvane::script::builtins
