// A dynamic array as the table browser keeps its per-field lists: based at 0, possibly never sized.
// Reading an element or the upper bound of an array that was never sized, or an index outside it,
// raises 9 (subscript out of range), which several of the browser's documented failures rely on.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "corvane/error.h"

namespace corvane::dna {

template <class T>
class VbArray {
 public:
  // The array becomes `items` (Split's result: an empty vector is a sized array with no element).
  void Assign(std::vector<T> items) { items_ = std::move(items); }
  // Indices 0 to `upper`, every element reset (ReDim without Preserve).
  void ReDim(int32_t upper) { items_ = std::vector<T>(static_cast<size_t>(upper < -1 ? 0 : upper + 1)); }
  bool IsSized() const { return items_.has_value(); }

  // The last index; -1 for a sized array with no element.
  int32_t UBound() const {
    if (!items_) throw Error::SubscriptOutOfRange();
    return static_cast<int32_t>(items_->size()) - 1;
  }
  T& operator[](int32_t i) { return At(*this, i); }
  const T& operator[](int32_t i) const { return At(*this, i); }

 private:
  template <class Self>
  static auto& At(Self& self, int32_t i) {
    if (!self.items_ || i < 0 || static_cast<size_t>(i) >= self.items_->size())
      throw Error::SubscriptOutOfRange();
    return (*self.items_)[static_cast<size_t>(i)];
  }
  std::optional<std::vector<T>> items_;
};

}  // namespace corvane::dna
