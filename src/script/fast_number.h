// Numbers read out of, and written into, Variants on the interpreter's fast paths (Integer, Long,
// Double and Boolean operands); anything else takes the general operators of operators.h, which
// give the same results.
#pragma once

#include <cstdint>

#include "corvane/variant.h"

namespace corvane::script {

enum class NumKind : uint8_t { Other, Integer, Long, Double, Boolean };

struct Num {
  NumKind kind;
  int32_t i;
  double d;
};

[[gnu::always_inline]] inline Num ReadNum(const Variant& v) {
  if (const int32_t* l = v.LongPtr()) return {NumKind::Long, *l, 0};
  if (const double* d = v.DoublePtr()) return {NumKind::Double, 0, *d};
  if (const int16_t* i = v.IntegerPtr()) return {NumKind::Integer, *i, 0};
  if (const bool* b = v.BooleanPtr()) return {NumKind::Boolean, *b ? -1 : 0, 0};
  return {NumKind::Other, 0, 0};
}

[[gnu::always_inline]] inline void Clear(Variant& v) {
  if (!v.IsEmpty()) v = Variant();
}
[[gnu::always_inline]] inline void SetInteger(Variant& v, int16_t x) { v.SetNumber(x); }
[[gnu::always_inline]] inline void SetLong(Variant& v, int32_t x) { v.SetNumber(x); }
[[gnu::always_inline]] inline void SetDouble(Variant& v, double x) { v.SetNumber(x); }
[[gnu::always_inline]] inline void SetBoolean(Variant& v, bool x) { v.SetNumber(x); }

inline bool IsIntegral(NumKind k) { return k == NumKind::Integer || k == NumKind::Long; }
inline bool IsArithmetic(NumKind k) { return IsIntegral(k) || k == NumKind::Double; }
inline double AsDouble(const Num& n) { return n.kind == NumKind::Double ? n.d : n.i; }

// dst = src when src is a number, stored without the Variant's general copy; false otherwise.
[[gnu::always_inline]] inline bool CopyNumber(Variant& dst, const Variant& src) {
  Num n = ReadNum(src);
  switch (n.kind) {
    case NumKind::Integer: SetInteger(dst, static_cast<int16_t>(n.i)); return true;
    case NumKind::Long: SetLong(dst, n.i); return true;
    case NumKind::Double: SetDouble(dst, n.d); return true;
    case NumKind::Boolean: SetBoolean(dst, n.i != 0); return true;
    default: return false;
  }
}

// dst = src (a copy).
inline void CopyValue(Variant& dst, const Variant& src) {
  if (!CopyNumber(dst, src)) dst = src;
}

// dst = std::move(src), src left as it may be.
inline void MoveValue(Variant& dst, Variant& src) {
  if (!CopyNumber(dst, src)) dst = std::move(src);
}

// Room for an intermediate value, reused by the node that owns it.
class Scratch {
 public:
  Variant& Make() {
    Clear(v_);
    return v_;
  }
  Variant* get() { return &v_; }

 private:
  Variant v_;
};

// An integer result as the platform types it: Integer when both operands were Integers and it
// fits, else Long when it fits; false when it needs a Double (the general operator decides).
[[gnu::always_inline]] inline bool IntegerResult(int64_t r, bool bothInteger, Variant& out) {
  if (bothInteger && r >= INT16_MIN && r <= INT16_MAX) {
    SetInteger(out, static_cast<int16_t>(r));
    return true;
  }
  if (r >= INT32_MIN && r <= INT32_MAX) {
    SetLong(out, static_cast<int32_t>(r));
    return true;
  }
  return false;
}

}  // namespace corvane::script
