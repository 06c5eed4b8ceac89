// System.Collections.ArrayList over a vector of Variants.
#include "scripting/array_list.h"

#include <algorithm>

#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::scripting {

namespace {

// .NET's exceptions as a script host reports them: the exception's HRESULT and message.
Error IndexOutOfRange() {
  return Error(-2146233086,  // 0x80131502 ArgumentOutOfRangeException
               "Index was out of range. Must be non-negative and less than the size of the collection.");
}
Error CannotCompare() {
  return Error(-2146233079, "Failed to compare two elements in the array.");  // 0x80131509
}

bool IsNumeric(const Variant& v) {
  switch (v.Type()) {
    case vtInteger:
    case vtLong:
    case vtSingle:
    case vtDouble:
    case vtCurrency:
    case vtByte: return true;
    default: return false;
  }
}

// Texts in culture order for ASCII: letters compared without their case first, then a lower-case
// letter before its upper case at the first place they differ; other characters by UTF-16 code.
int CompareText(const std::string& a, const std::string& b) {
  const std::u16string x = ToUtf16(a), y = ToUtf16(b);
  auto fold = [](char16_t c) { return c >= 'A' && c <= 'Z' ? static_cast<char16_t>(c + 32) : c; };
  const size_t n = std::min(x.size(), y.size());
  for (size_t i = 0; i < n; ++i)
    if (fold(x[i]) != fold(y[i])) return fold(x[i]) < fold(y[i]) ? -1 : 1;
  if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
  for (size_t i = 0; i < n; ++i)
    if (x[i] != y[i]) return x[i] > y[i] ? -1 : 1;  // lower case (the higher code) first
  return 0;
}

int CompareNumbers(double a, double b) { return a < b ? -1 : a > b ? 1 : 0; }

// Comparer.Default over two elements.
int CompareElements(const Variant& a, const Variant& b) {
  if (a.IsEmpty() || b.IsEmpty()) return b.IsEmpty() - a.IsEmpty();
  if (IsNumeric(a) && IsNumeric(b)) return CompareNumbers(a.ToDouble(), b.ToDouble());
  if (a.Type() != b.Type()) throw CannotCompare();
  switch (a.Type()) {
    case vtString: return CompareText(*a.StringPtr(), *b.StringPtr());
    case vtDate: return CompareNumbers(a.ToDouble(), b.ToDouble());
    case vtBoolean: return CompareNumbers(a.ToBool(), b.ToBool());  // False before True
    default: throw CannotCompare();
  }
}

}  // namespace

void ArrayList::CheckIndex(int32_t index, size_t size) const {
  if (index < 0 || static_cast<size_t>(index) >= size) throw IndexOutOfRange();
}

int32_t ArrayList::Add(const Variant& v) {
  items_.push_back(v);
  return Count() - 1;
}

const Variant& ArrayList::Item(int32_t index) const {
  CheckIndex(index, items_.size());
  return items_[index];
}

void ArrayList::SetItem(int32_t index, const Variant& v) {
  CheckIndex(index, items_.size());
  items_[index] = v;
}

void ArrayList::Insert(int32_t index, const Variant& v) {
  CheckIndex(index, items_.size() + 1);
  items_.insert(items_.begin() + index, v);
}

void ArrayList::Remove(const Variant& v) {
  if (const int32_t i = IndexOf(v); i >= 0) items_.erase(items_.begin() + i);
}

void ArrayList::RemoveAt(int32_t index) {
  CheckIndex(index, items_.size());
  items_.erase(items_.begin() + index);
}

int32_t ArrayList::IndexOf(const Variant& v) const {
  auto it = std::find(items_.begin(), items_.end(), v);  // same kind and value
  return it == items_.end() ? -1 : static_cast<int32_t>(it - items_.begin());
}

// Sorts a copy, so that a comparison that fails leaves the list as it was.
void ArrayList::Sort() {
  std::vector<Variant> sorted = items_;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Variant& a, const Variant& b) { return CompareElements(a, b) < 0; });
  items_ = std::move(sorted);
}

void ArrayList::Reverse() { std::reverse(items_.begin(), items_.end()); }

Variant ArrayList::ToArray() const { return Variant::FromArray(VariantArray::Of(items_)); }

}  // namespace corvane::scripting
