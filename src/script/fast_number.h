// Numbers read out of, and written into, Variants on the interpreter's fast paths (Integer, Long,
// Double and Boolean operands); anything else takes the general operators of operators.h, which
// give the same results.
#pragma once

#include <cstdint>
#include <new>
#include <type_traits>

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

// Whether `v` holds nothing to release: Empty or a number of the fast paths. Such a Variant is
// overwritten by constructing the new value over it, which skips the variant's general reset (a
// jump through a table of destructors for a value that has none).
[[gnu::always_inline]] inline bool HoldsPlainValue(const Variant& v) {
  return v.IsEmpty() || ReadNum(v).kind != NumKind::Other;
}

[[gnu::always_inline]] inline void Clear(Variant& v) {
  if (v.IsEmpty()) return;
  if (ReadNum(v).kind != NumKind::Other) {
    new (&v) Variant();
  } else {
    v = Variant();
  }
}
template <class T>
[[gnu::always_inline]] inline const T* NumberPtr(const Variant& v) {
  if constexpr (std::is_same_v<T, int16_t>) return v.IntegerPtr();
  if constexpr (std::is_same_v<T, int32_t>) return v.LongPtr();
  if constexpr (std::is_same_v<T, double>) return v.DoublePtr();
  if constexpr (std::is_same_v<T, bool>) return v.BooleanPtr();
}
template <class T>
[[gnu::always_inline]] inline void StoreNumber(Variant& v, T x) {
  if (const T* same = NumberPtr<T>(v)) {
    *const_cast<T*>(same) = x;  // the Variant's own number, overwritten
  } else if (HoldsPlainValue(v)) {
    new (&v) Variant(x);
  } else {
    v.SetNumber(x);
  }
}
[[gnu::always_inline]] inline void SetInteger(Variant& v, int16_t x) { StoreNumber(v, x); }
[[gnu::always_inline]] inline void SetLong(Variant& v, int32_t x) { StoreNumber(v, x); }
[[gnu::always_inline]] inline void SetDouble(Variant& v, double x) { StoreNumber(v, x); }
[[gnu::always_inline]] inline void SetBoolean(Variant& v, bool x) { StoreNumber(v, x); }

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

// Room for an intermediate value, reused by the node that owns it. A number or Empty left in it
// at the end is dropped without the variant's general reset.
class Scratch {
 public:
  Scratch() { new (buf_) Variant(); }
  ~Scratch() {
    if (!HoldsPlainValue(*get())) get()->~Variant();
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  Variant& Make() {
    Clear(*get());
    return *get();
  }
  Variant* get() { return std::launder(reinterpret_cast<Variant*>(buf_)); }

 private:
  alignas(Variant) unsigned char buf_[sizeof(Variant)];
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
