// The array functions: Array LBound UBound Filter.
#include "corvane/error.h"
#include "corvane/text.h"
#include "script/builtins_support.h"

namespace corvane::script::builtins {
namespace {

Variant ArrayBuiltin(BuiltinContext&, Args& a) {
  std::vector<Variant> values;
  values.reserve(a.size());
  for (Variant& v : a) values.push_back(v.IsMissing() ? Variant() : v);
  return Variant::FromArray(VariantArray::Of(std::move(values)));
}

// LBound / UBound(array[, dimension]): a byte array counts as one dimension from 0.
template <bool upper>
Variant Bound(BuiltinContext&, Args& a) {
  const int32_t dim = LongArg(a, 1, 1);
  if (const VariantArray* array = a[0].ArrayPtr())
    return Variant(upper ? array->UBound(dim) : array->LBound(dim));
  if (a[0].IsBytes()) {
    if (dim != 1) throw Error::SubscriptOutOfRange();
    return Variant(upper ? static_cast<int32_t>(a[0].ToBytes().size()) - 1 : int32_t{0});
  }
  throw Error::TypeMismatch();
}

// Filter(strings, value[, include[, compare]]): the elements that hold `value` (or, with include
// False, those that do not), as a new array from 0.
Variant Filter(BuiltinContext&, Args& a) {
  const VariantArray* list = a[0].ArrayPtr();
  if (!list || list->Rank() != 1) throw Error::TypeMismatch();
  const std::string value = TextArg(a, 1);
  const bool include = !Given(a, 2) || a[2].ToBool();
  const bool text = TextCompareArg(a, 3);
  std::vector<Variant> kept;
  for (const Variant& e : list->Elements()) {
    std::string s = e.ToString();
    const bool found = value.empty() || (text ? InStrText(s, value) : InStr(s, value)) > 0;
    if (found == include) kept.emplace_back(std::move(s));
  }
  return Variant::FromArray(VariantArray::Of(std::move(kept)));
}

constexpr Builtin kBuiltins[] = {
    {"Array", 0, -1, ArrayBuiltin},
    {"Filter", 2, 4, Filter},
    {"LBound", 1, 2, Bound<false>},
    {"UBound", 1, 2, Bound<true>},
};

}  // namespace

std::span<const Builtin> ArrayBuiltins() { return kBuiltins; }

}  // namespace corvane::script::builtins
