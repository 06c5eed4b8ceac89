// What a value is: IsArray IsDate IsEmpty IsNull IsNumeric IsObject TypeName VarType.
#include "runtime/number_text.h"
#include "script/builtins_support.h"

namespace corvane::script {

// An object gives its class name ("Nothing" for no object).
std::string TypeNameOf(const Variant& v) {
  if (v.IsObject()) {
    const Object o = v.ToObject();
    if (o.IsNothing()) return "Nothing";
    std::string_view name = o.get()->Info().className;
    return name.empty() ? "Object" : std::string(name);
  }
  switch (v.Type()) {
    case vtEmpty: return "Empty";
    case vtNull: return "Null";
    case vtInteger: return "Integer";
    case vtLong: return "Long";
    case vtSingle: return "Single";
    case vtDouble: return "Double";
    case vtCurrency: return "Currency";
    case vtDate: return "Date";
    case vtString: return "String";
    case vtBoolean: return "Boolean";
    case vtByte: return "Byte";
    case vtError: return "Error";
    case vtVariantArray: return "Variant()";
    case vtByteArray: return "Byte()";
    default: return "Unknown";
  }
}

namespace builtins {
namespace {

Variant IsArray(BuiltinContext&, Args& a) { return Variant(a[0].IsArray() || a[0].IsBytes()); }
Variant IsEmpty(BuiltinContext&, Args& a) { return Variant(a[0].IsEmpty()); }
Variant IsNull(BuiltinContext&, Args& a) { return Variant(a[0].IsNull()); }
Variant IsObject(BuiltinContext&, Args& a) { return Variant(a[0].IsObject()); }

// Only a Date, or a text that reads as one: a number is not a date here, though CDate takes it.
Variant IsDate(BuiltinContext&, Args& a) {
  return Variant(a[0].IsDate() || (a[0].IsString() && ReadDate(a[0]).has_value()));
}

// Numbers, Booleans and Empty are numeric, and a text that CDbl reads; a Date is not.
Variant IsNumeric(BuiltinContext&, Args& a) {
  const Variant& v = a[0];
  if (const std::string* s = v.StringPtr()) return Variant(ParseNumberText(*s).has_value());
  return Variant(v.IsNumber() || v.IsEmpty());
}

Variant TypeName(BuiltinContext&, Args& a) { return Variant(TypeNameOf(a[0])); }

Variant VarType(BuiltinContext&, Args& a) { return Variant(static_cast<int16_t>(a[0].Type())); }

constexpr Builtin kBuiltins[] = {
    {"IsArray", 1, 1, IsArray},   {"IsDate", 1, 1, IsDate},       {"IsEmpty", 1, 1, IsEmpty},
    {"IsNull", 1, 1, IsNull},     {"IsNumeric", 1, 1, IsNumeric}, {"IsObject", 1, 1, IsObject},
    {"TypeName", 1, 1, TypeName}, {"VarType", 1, 1, VarType},
};

}  // namespace

std::span<const Builtin> InspectionBuiltins() { return kBuiltins; }

}  // namespace builtins
}  // namespace corvane::script
