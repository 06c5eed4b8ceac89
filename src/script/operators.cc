// The operators: each first tries the pairs a page meets in its loops (Integer, Long, Double, two
// texts), which need neither allocation nor a conversion, then falls back to the general rules.
//
// The general rules read each operand as a Num: its value with the kind that decides the result's
// type. Boolean counts as Integer, a text as Double (13 when it does not read as a number), Empty as
// the smallest kind, so Empty + x keeps x's type and Empty + Empty is Integer 0. The result takes the
// larger of the two kinds, in the platform's order:
//
//   + and -   Byte < Integer < Long < Single < Double < Currency      (Date + x is a Date)
//   *         Byte < Integer < Long < Single < Currency < Double      (a Date counts as Double)
//
// with one exception in both: Single beside Long gives Double. A whole-number result that overflows
// its kind moves up (Byte -> Integer -> Long -> Double), a Single result to Double; Currency and
// Double results that overflow raise 6.
#include "script/operators.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "corvane/error.h"
#include "corvane/text.h"
#include "runtime/number_text.h"

namespace corvane::script {
namespace {

Error DivisionByZero() { return Error(11, "Division by zero"); }

enum class Kind : uint8_t { Empty, Byte, Integer, Long, Single, Double, Currency, Date };

struct Num {
  Kind kind;
  int64_t i = 0;   // Empty, Byte, Integer, Long: the value; Currency: the value times 10000
  double d = 0.0;  // Single, Double, Date
};

Num ToNum(const Variant& v) {
  switch (v.Type()) {
    case vtEmpty: return {Kind::Empty};
    case vtBoolean: return {Kind::Integer, v.ToBool() ? -1 : 0};
    case vtByte: return {Kind::Byte, v.ToByte()};
    case vtInteger: return {Kind::Integer, v.ToInteger()};
    case vtLong: return {Kind::Long, v.ToLong()};
    case vtSingle: return {Kind::Single, 0, v.ToSingle()};
    case vtDouble: return {Kind::Double, 0, v.ToDouble()};
    case vtCurrency: return {Kind::Currency, v.ToCurrency()};
    case vtDate: return {Kind::Date, 0, v.ToDate()};
    case vtString: return {Kind::Double, 0, v.ToDouble()};
    case vtNull: throw Error::InvalidUseOfNull();
    default: throw Error::TypeMismatch();
  }
}

bool IsWhole(Kind k) { return k <= Kind::Long; }

double AsDouble(const Num& n) {
  if (IsWhole(n.kind)) return static_cast<double>(n.i);
  if (n.kind == Kind::Currency) return static_cast<double>(n.i) / 10000.0;
  return n.d;
}

// The value times 10000, rounded as CCur rounds; 6 when it does not fit.
int64_t AsCurrency(const Num& n) {
  if (n.kind == Kind::Currency) return n.i;
  if (IsWhole(n.kind)) return n.i * 10000;  // at most 2^31 * 10^4: fits
  return Variant(n.d).ToCurrency();
}

// A whole number in the smallest kind at or above `kind` that holds it.
Variant FitWhole(int64_t r, Kind kind) {
  if (kind <= Kind::Byte && r >= 0 && r <= 255) return Variant::FromByte(static_cast<uint8_t>(r));
  if (kind <= Kind::Integer && r >= INT16_MIN && r <= INT16_MAX) return Variant(static_cast<int16_t>(r));
  if (r >= INT32_MIN && r <= INT32_MAX) return Variant(static_cast<int32_t>(r));
  return Variant(static_cast<double>(r));
}

Variant CheckedDouble(double r) {
  if (!std::isfinite(r)) throw Error::Overflow();
  return Variant(r);
}

Variant CheckedCurrency(__int128 scaled) {
  if (scaled < INT64_MIN || scaled > INT64_MAX) throw Error::Overflow();
  return Variant::FromCurrency(static_cast<int64_t>(scaled));
}

enum class Op : uint8_t { Add, Subtract, Multiply };

Kind ResultKind(Op op, Kind a, Kind b) {
  if (a == Kind::Empty && b == Kind::Empty) return Kind::Integer;
  if (op == Op::Multiply) {
    // A Date is a plain number here, and Double outranks Currency.
    if (a == Kind::Date) a = Kind::Double;
    if (b == Kind::Date) b = Kind::Double;
    if (a == Kind::Currency || b == Kind::Currency)
      return a == Kind::Double || b == Kind::Double ? Kind::Double : Kind::Currency;
  } else if (a == Kind::Date || b == Kind::Date) {
    if (op == Op::Subtract && a == Kind::Date && b == Kind::Date) return Kind::Double;
    return Kind::Date;
  }
  if ((a == Kind::Single && b == Kind::Long) || (a == Kind::Long && b == Kind::Single)) return Kind::Double;
  return a > b ? a : b;
}

Variant Arithmetic(Op op, const Variant& va, const Variant& vb) {
  if (va.IsNull() || vb.IsNull()) return Variant::Null();
  const Num a = ToNum(va), b = ToNum(vb);
  const Kind kind = ResultKind(op, a.kind, b.kind);
  switch (kind) {
    case Kind::Empty:
    case Kind::Byte:
    case Kind::Integer:
    case Kind::Long: {
      const int64_t r = op == Op::Add ? a.i + b.i : op == Op::Subtract ? a.i - b.i : a.i * b.i;
      return FitWhole(r, kind);
    }
    case Kind::Single: {
      const float x = static_cast<float>(AsDouble(a)), y = static_cast<float>(AsDouble(b));
      const float r = op == Op::Add ? x + y : op == Op::Subtract ? x - y : x * y;
      if (std::isfinite(r)) return Variant(r);
      const double wide = op == Op::Add ? double{x} + y : op == Op::Subtract ? double{x} - y : double{x} * y;
      return CheckedDouble(wide);
    }
    case Kind::Currency: {
      if (op == Op::Multiply) {
        // Two scaled values: divide the extra 10000 back out, rounding half to even.
        const __int128 product = static_cast<__int128>(AsCurrency(a)) * AsCurrency(b);
        __int128 q = product / 10000, rem = product % 10000;
        if (rem < 0) rem = -rem;
        if (rem > 5000 || (rem == 5000 && (q & 1))) q += product < 0 ? -1 : 1;
        return CheckedCurrency(q);
      }
      const __int128 x = AsCurrency(a), y = AsCurrency(b);
      return CheckedCurrency(op == Op::Add ? x + y : x - y);
    }
    case Kind::Double: {
      const double x = AsDouble(a), y = AsDouble(b);
      return CheckedDouble(op == Op::Add ? x + y : op == Op::Subtract ? x - y : x * y);
    }
    case Kind::Date: {
      const double x = AsDouble(a), y = AsDouble(b);
      const double r = op == Op::Add ? x + y : x - y;
      if (!std::isfinite(r)) throw Error::Overflow();
      return Variant::FromDate(r);
    }
  }
  throw Error::TypeMismatch();
}

// The fast paths: Integer and Long pairs in 64-bit arithmetic, Double pairs directly.
bool BothWhole(VarType ta, VarType tb) {
  return (ta == vtInteger || ta == vtLong) && (tb == vtInteger || tb == vtLong);
}

int64_t Whole(const Variant& v, VarType t) { return t == vtInteger ? v.ToInteger() : v.ToLong(); }

Kind WholeKind(VarType ta, VarType tb) { return ta == vtLong || tb == vtLong ? Kind::Long : Kind::Integer; }

// An operand of \ and Mod: rounded to a whole number, half to even. Byte and Integer stay as they
// are; everything else becomes a Long (6 when out of its range).
Num ToWholeOperand(const Variant& v) {
  Num n = ToNum(v);
  if (n.kind == Kind::Empty) return {Kind::Integer, 0};
  if (IsWhole(n.kind)) return n;
  const double r = std::nearbyint(AsDouble(n));
  if (!(r >= INT32_MIN && r <= INT32_MAX)) throw Error::Overflow();
  return {Kind::Long, static_cast<int64_t>(r)};
}

Variant WholeDivision(const Variant& va, const Variant& vb, bool modulo) {
  if (va.IsNull() || vb.IsNull()) return Variant::Null();
  const Num a = ToWholeOperand(va), b = ToWholeOperand(vb);
  if (b.i == 0) throw DivisionByZero();
  const Kind kind = a.kind > b.kind ? a.kind : b.kind;
  const int64_t r = modulo ? a.i % b.i : a.i / b.i;  // truncating, the remainder takes a's sign
  if (kind == Kind::Long && r > INT32_MAX) throw Error::Overflow();
  return FitWhole(r, kind);
}

// Logical operands: Booleans stay Booleans, numbers become whole numbers (Byte, Integer or Long).
enum class Bits : uint8_t { Boolean, Byte, Integer, Long };

struct Logical {
  Bits kind;
  int32_t v;  // a Boolean is -1 or 0
};

Logical ToLogical(const Variant& v) {
  switch (v.Type()) {
    case vtEmpty: return {Bits::Integer, 0};
    case vtBoolean: return {Bits::Boolean, v.ToBool() ? -1 : 0};
    case vtByte: return {Bits::Byte, v.ToByte()};
    case vtInteger: return {Bits::Integer, v.ToInteger()};
    case vtLong: return {Bits::Long, v.ToLong()};
    case vtString: {
      const std::string& s = *v.StringPtr();
      if (ParseNumberText(s)) return {Bits::Long, v.ToLong()};
      return {Bits::Boolean, v.ToBool() ? -1 : 0};  // "True" / "False", else 13
    }
    case vtSingle:
    case vtDouble:
    case vtCurrency:
    case vtDate: return {Bits::Long, v.ToLong()};
    case vtNull: throw Error::InvalidUseOfNull();
    default: throw Error::TypeMismatch();
  }
}

Bits LogicalKind(Bits a, Bits b) {
  if (a == b) return a;
  if (a == Bits::Long || b == Bits::Long) return Bits::Long;
  return Bits::Integer;  // Boolean or Byte beside another kind
}

Variant MakeLogical(Bits kind, int32_t v) {
  switch (kind) {
    case Bits::Boolean: return Variant(v != 0);
    case Bits::Byte: return Variant::FromByte(static_cast<uint8_t>(v & 0xFF));
    case Bits::Integer: return Variant(static_cast<int16_t>(v));
    case Bits::Long: return Variant(v);
  }
  return Variant(v);
}

int32_t AllOnes(Bits kind) { return kind == Bits::Byte ? 0xFF : -1; }

enum class LogicOp : uint8_t { And, Or, Xor, Eqv, Imp };

int32_t ApplyBits(LogicOp op, int32_t a, int32_t b) {
  switch (op) {
    case LogicOp::And: return a & b;
    case LogicOp::Or: return a | b;
    case LogicOp::Xor: return a ^ b;
    case LogicOp::Eqv: return ~(a ^ b);
    case LogicOp::Imp: return ~a | b;
  }
  return 0;
}

// The three-valued cases: the operator's answer when the known side alone decides it (False And
// Null is False, True Or Null is True, False Imp Null and Null Imp True are True), else Null.
Variant LogicWithNull(LogicOp op, const Variant& va, const Variant& vb) {
  if (va.IsNull() && vb.IsNull()) return Variant::Null();
  const bool nullFirst = va.IsNull();
  const Logical known = ToLogical(nullFirst ? vb : va);
  switch (op) {
    case LogicOp::And:
      if (known.v == 0) return MakeLogical(known.kind, 0);
      break;
    case LogicOp::Or:
      if (known.v == AllOnes(known.kind)) return MakeLogical(known.kind, known.v);
      break;
    case LogicOp::Imp:
      if (nullFirst && known.v == AllOnes(known.kind)) return MakeLogical(known.kind, known.v);
      if (!nullFirst && known.v == 0) return MakeLogical(known.kind, AllOnes(known.kind));
      break;
    default: break;
  }
  return Variant::Null();
}

Variant Logic(LogicOp op, const Variant& va, const Variant& vb) {
  if (va.IsNull() || vb.IsNull()) return LogicWithNull(op, va, vb);
  const Logical a = ToLogical(va), b = ToLogical(vb);
  const Bits kind = LogicalKind(a.kind, b.kind);
  int32_t r = ApplyBits(op, a.v, b.v);
  if (kind == Bits::Byte) r &= 0xFF;
  return MakeLogical(kind, r);
}

}  // namespace

Variant Add(const Variant& a, const Variant& b) {
  const VarType ta = a.Type(), tb = b.Type();
  if (BothWhole(ta, tb)) return FitWhole(Whole(a, ta) + Whole(b, tb), WholeKind(ta, tb));
  if (ta == vtDouble && tb == vtDouble) return CheckedDouble(a.ToDouble() + b.ToDouble());
  if (ta == vtString) {
    if (tb == vtString) return Variant(*a.StringPtr() + *b.StringPtr());
    if (tb == vtEmpty) return a;
  }
  if (tb == vtString && ta == vtEmpty) return b;
  return Arithmetic(Op::Add, a, b);
}

Variant Subtract(const Variant& a, const Variant& b) {
  const VarType ta = a.Type(), tb = b.Type();
  if (BothWhole(ta, tb)) return FitWhole(Whole(a, ta) - Whole(b, tb), WholeKind(ta, tb));
  if (ta == vtDouble && tb == vtDouble) return CheckedDouble(a.ToDouble() - b.ToDouble());
  return Arithmetic(Op::Subtract, a, b);
}

Variant Multiply(const Variant& a, const Variant& b) {
  const VarType ta = a.Type(), tb = b.Type();
  if (BothWhole(ta, tb)) return FitWhole(Whole(a, ta) * Whole(b, tb), WholeKind(ta, tb));
  if (ta == vtDouble && tb == vtDouble) return CheckedDouble(a.ToDouble() * b.ToDouble());
  return Arithmetic(Op::Multiply, a, b);
}

Variant Divide(const Variant& a, const Variant& b) {
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  const VarType ta = a.Type(), tb = b.Type();
  const double x = BothWhole(ta, tb) ? static_cast<double>(Whole(a, ta)) : AsDouble(ToNum(a));
  const double y = BothWhole(ta, tb) ? static_cast<double>(Whole(b, tb)) : AsDouble(ToNum(b));
  if (y == 0) {
    if (x == 0) throw Error::Overflow();  // 0 / 0 is an overflow on the platform, not a division by zero
    throw DivisionByZero();
  }
  return CheckedDouble(x / y);
}

Variant IntDivide(const Variant& a, const Variant& b) {
  const VarType ta = a.Type(), tb = b.Type();
  if (BothWhole(ta, tb)) {
    const int64_t y = Whole(b, tb);
    if (y == 0) throw DivisionByZero();
    const int64_t r = Whole(a, ta) / y;
    if (r > INT32_MAX) throw Error::Overflow();
    return FitWhole(r, WholeKind(ta, tb));
  }
  return WholeDivision(a, b, false);
}

Variant Modulo(const Variant& a, const Variant& b) {
  const VarType ta = a.Type(), tb = b.Type();
  if (BothWhole(ta, tb)) {
    const int64_t y = Whole(b, tb);
    if (y == 0) throw DivisionByZero();
    return FitWhole(Whole(a, ta) % y, WholeKind(ta, tb));
  }
  return WholeDivision(a, b, true);
}

Variant Power(const Variant& a, const Variant& b) {
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  const double x = AsDouble(ToNum(a)), y = AsDouble(ToNum(b));
  if (x == 0 && y < 0) throw Error::InvalidCall();
  if (x < 0 && y != std::trunc(y)) throw Error::InvalidCall();
  return CheckedDouble(std::pow(x, y));
}

Variant Negate(const Variant& a) {
  switch (a.Type()) {
    case vtNull: return Variant::Null();
    case vtEmpty: return Variant(int16_t{0});
    case vtSingle: return Variant(-a.ToSingle());
    case vtDouble: return Variant(-a.ToDouble());
    case vtDate: return Variant::FromDate(-a.ToDate());
    case vtCurrency: {
      const int64_t c = a.ToCurrency();
      if (c == INT64_MIN) throw Error::Overflow();
      return Variant::FromCurrency(-c);
    }
    default: break;
  }
  const Num n = ToNum(a);  // Boolean, Byte, Integer, Long, text
  if (IsWhole(n.kind)) return FitWhole(-n.i, n.kind == Kind::Byte ? Kind::Integer : n.kind);
  return CheckedDouble(-AsDouble(n));
}

Variant Concatenate(const Variant& a, const Variant& b) {
  const std::string* sa = a.StringPtr();
  const std::string* sb = b.StringPtr();
  if (sa && sb) return Variant(*sa + *sb);
  if (a.IsNull() && b.IsNull()) return Variant::Null();
  std::string out = sa ? *sa : a.Text();
  out += sb ? *sb : b.Text();
  return Variant(std::move(out));
}

Variant Not(const Variant& a) {
  switch (a.Type()) {
    case vtNull: return Variant::Null();
    case vtBoolean: return Variant(!a.ToBool());
    case vtInteger: return Variant(static_cast<int16_t>(~a.ToInteger()));
    case vtLong: return Variant(~a.ToLong());
    default: break;
  }
  const Logical l = ToLogical(a);
  return MakeLogical(l.kind, l.kind == Bits::Byte ? ~l.v & 0xFF : ~l.v);
}

Variant And(const Variant& a, const Variant& b) {
  if (a.Type() == vtBoolean && b.Type() == vtBoolean) return Variant(a.ToBool() && b.ToBool());
  return Logic(LogicOp::And, a, b);
}

Variant Or(const Variant& a, const Variant& b) {
  if (a.Type() == vtBoolean && b.Type() == vtBoolean) return Variant(a.ToBool() || b.ToBool());
  return Logic(LogicOp::Or, a, b);
}

Variant Xor(const Variant& a, const Variant& b) { return Logic(LogicOp::Xor, a, b); }
Variant Eqv(const Variant& a, const Variant& b) { return Logic(LogicOp::Eqv, a, b); }
Variant Imp(const Variant& a, const Variant& b) { return Logic(LogicOp::Imp, a, b); }

Variant Compare(const Variant& a, const Variant& b, Comparison op) {
  int c;
  const VarType ta = a.Type(), tb = b.Type();
  if (BothWhole(ta, tb)) {
    const int64_t x = Whole(a, ta), y = Whole(b, tb);
    c = x < y ? -1 : (x > y ? 1 : 0);
  } else {
    const std::optional<int> r = corvane::Compare(a, b);
    if (!r) return Variant::Null();
    c = *r;
  }
  switch (op) {
    case Comparison::Equal: return Variant(c == 0);
    case Comparison::NotEqual: return Variant(c != 0);
    case Comparison::Less: return Variant(c < 0);
    case Comparison::LessEqual: return Variant(c <= 0);
    case Comparison::Greater: return Variant(c > 0);
    case Comparison::GreaterEqual: return Variant(c >= 0);
  }
  return Variant(false);
}

bool IsTrue(const Variant& condition) {
  if (condition.IsNull()) return false;
  return condition.ToBool();
}

}  // namespace corvane::script
