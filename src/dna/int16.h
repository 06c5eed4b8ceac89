// 16-bit signed arithmetic as the browser's Integer members do it: a result outside -32768..32767
// raises 6 (overflow) instead of wrapping. The list's row numbers rely on it: with 20 rows a page,
// page 1639 overflows in "rows a page × page".
#pragma once

#include <cstdint>

#include "corvane/error.h"

namespace corvane::dna {

inline int16_t CheckedInt16(int32_t v) {
  if (v < INT16_MIN || v > INT16_MAX) throw Error::Overflow();
  return static_cast<int16_t>(v);
}
inline int16_t Add16(int16_t a, int16_t b) { return CheckedInt16(int32_t{a} + b); }
inline int16_t Sub16(int16_t a, int16_t b) { return CheckedInt16(int32_t{a} - b); }
inline int16_t Mul16(int16_t a, int16_t b) { return CheckedInt16(int32_t{a} * b); }

}  // namespace corvane::dna
