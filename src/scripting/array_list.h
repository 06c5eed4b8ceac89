// System.Collections.ArrayList: a growing list of values, as the .NET class behaves when pages
// create it by name.
//
// Contains, IndexOf and Remove find a value of the same kind and value (.NET's Equals: the Integer 1
// and the Long 1 differ, texts compare binary). Sort orders numbers by value, whatever their
// subtype, dates by date and texts as the invariant culture does for ASCII (letters before their
// case: "a" < "A" < "b"), other characters by code; Empty sorts first. Values of different kinds
// (a text and a number) cannot be sorted together and raise .NET's InvalidOperationException.
#pragma once

#include <cstdint>
#include <vector>

#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane::scripting {

class ArrayList final : public Dispatch {
 public:
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override { return items_; }

  int32_t Add(const Variant& v);  // the new element's index
  int32_t Count() const { return static_cast<int32_t>(items_.size()); }
  // An index outside 0..Count-1 (0..Count for Insert) raises .NET's ArgumentOutOfRangeException.
  const Variant& Item(int32_t index) const;
  void SetItem(int32_t index, const Variant& v);
  void Insert(int32_t index, const Variant& v);
  void Remove(const Variant& v);  // the first equal element; nothing when there is none
  void RemoveAt(int32_t index);
  void Clear() { items_.clear(); }
  bool Contains(const Variant& v) const { return IndexOf(v) >= 0; }
  int32_t IndexOf(const Variant& v) const;  // -1 when absent
  void Sort();
  void Reverse();
  Variant ToArray() const;

 private:
  void CheckIndex(int32_t index, size_t size) const;
  std::vector<Variant> items_;
};

}  // namespace corvane::scripting
