// Operators: fast paths for Integer, Long, Double and Boolean operands, the language's operators
// (operators.h) for everything else, and the comparison rules of literals.
#include <array>
#include <cmath>
#include <utility>

#include "corvane/error.h"
#include "script/fast_number.h"
#include "script/nodes.h"
#include "script/run_core.h"

namespace corvane::script {

namespace {

bool FastLogic(Op op, const Variant& a, const Variant& b, Variant& out) {
  if (ReadNum(a).kind != NumKind::Boolean || ReadNum(b).kind != NumKind::Boolean) return false;
  const bool l = a.ToBool(), r = b.ToBool();
  switch (op) {
    case Op::And: SetBoolean(out, l && r); return true;
    case Op::Or: SetBoolean(out, l || r); return true;
    case Op::Xor: SetBoolean(out, l != r); return true;
    case Op::Eqv: SetBoolean(out, l == r); return true;
    case Op::Imp: SetBoolean(out, !l || r); return true;
    default: return false;
  }
}

Variant General(Op op, const Variant& a, const Variant& b) {
  switch (op) {
    case Op::Add: return Add(a, b);
    case Op::Sub: return Subtract(a, b);
    case Op::Mul: return Multiply(a, b);
    case Op::Div: return Divide(a, b);
    case Op::IntDiv: return IntDivide(a, b);
    case Op::Mod: return Modulo(a, b);
    case Op::Pow: return Power(a, b);
    case Op::And: return And(a, b);
    case Op::Or: return Or(a, b);
    case Op::Xor: return Xor(a, b);
    case Op::Eqv: return Eqv(a, b);
    case Op::Imp: return Imp(a, b);
  }
  return {};
}

bool Holds(Comparison op, int c) {
  switch (op) {
    case Comparison::Equal: return c == 0;
    case Comparison::NotEqual: return c != 0;
    case Comparison::Less: return c < 0;
    case Comparison::LessEqual: return c <= 0;
    case Comparison::Greater: return c > 0;
    case Comparison::GreaterEqual: return c >= 0;
  }
  return false;
}

enum LiteralKind : uint8_t { kNotLiteral, kNumberLiteral, kTextLiteral };

LiteralKind KindOf(const Expr& e) {
  const Variant* v = e.Literal();
  if (!v) return kNotLiteral;
  if (v->IsString()) return kTextLiteral;
  if (v->IsNumber() || v->IsDate()) return kNumberLiteral;
  return kNotLiteral;
}

// The comparison rules of literals: beside a number literal, text reads as a number (13 when it is
// not one); beside a text literal, a number compares as its text.
void ApplyLiteralRules(const Variant*& a, LiteralKind lk, const Variant*& b, LiteralKind rk,
                       Variant& scratch) {
  if (lk == kNumberLiteral && b->IsString()) {
    scratch = Variant(b->ToDouble());
    b = &scratch;
  } else if (rk == kNumberLiteral && a->IsString()) {
    scratch = Variant(a->ToDouble());
    a = &scratch;
  } else if (lk == kTextLiteral && (b->IsNumber() || b->IsDate())) {
    scratch = Variant(b->Text());
    b = &scratch;
  } else if (rk == kTextLiteral && (a->IsNumber() || a->IsDate())) {
    scratch = Variant(a->Text());
    a = &scratch;
  }
}

}  // namespace

OperandSource::OperandSource(const Expr* e) : e_(e) {
  if (auto* local = dynamic_cast<const LocalExpr*>(e)) {
    kind_ = kLocal;
    index_ = local->slot();
  } else if (auto* param = dynamic_cast<const ParamExpr*>(e)) {
    kind_ = kParam;
    index_ = param->slot();
  } else if (auto* global = dynamic_cast<const GlobalExpr*>(e); global && global->direct()) {
    kind_ = kGlobal;
    index_ = global->index();
  } else if (auto* literal = dynamic_cast<const LiteralExpr*>(e)) {
    kind_ = kLiteral;
    literal_ = literal->value();
    literalNum_ = ReadNum(*literal_);
  } else if (!e->MayReference()) {
    kind_ = kValue;
  }
}

namespace {

// The fast path of one operator for operands read from known kinds of source.
// The number an operand of a known kind of source holds (a literal's was read beforehand).
template <OperandSource::Kind K>
[[gnu::always_inline]] inline bool ReadOperand(const OperandSource& s, Frame& f, Num& n) {
  if constexpr (K == OperandSource::kLiteral) {
    n = s.LiteralNum();
    return true;
  } else {
    const Variant* v = s.PeekAs<K>(f);
    if (!v) return false;
    n = ReadNum(*v);
    return true;
  }
}

template <Op op, OperandSource::Kind L, OperandSource::Kind R>
bool FastBinary(const BinaryExpr& e, Frame& f, Variant& out) {
  if constexpr (L == OperandSource::kLiteral || R == OperandSource::kLiteral) {
    Num x, y;
    return ReadOperand<L>(e.left(), f, x) && IsArithmetic(x.kind) && ReadOperand<R>(e.right(), f, y) &&
           IsArithmetic(y.kind) && ArithmeticOf(op, x, y, out);
  } else {
    const Variant* a = e.left().PeekAs<L>(f);
    if (!a) return false;
    const Variant* b = e.right().PeekAs<R>(f);
    return b && FastArithmetic(op, *a, *b, out);
  }
}

template <Op op, size_t... I>
constexpr std::array<BinaryExpr::FastPath, sizeof...(I)> FastPaths(std::index_sequence<I...>) {
  constexpr int n = OperandSource::kKinds;
  return {
      &FastBinary<op, static_cast<OperandSource::Kind>(I / n), static_cast<OperandSource::Kind>(I % n)>...};
}

constexpr auto kSquare = std::make_index_sequence<OperandSource::kKinds * OperandSource::kKinds>();
constexpr std::array<BinaryExpr::FastPath, OperandSource::kKinds * OperandSource::kKinds> kFastPaths[] = {
    FastPaths<Op::Add>(kSquare), FastPaths<Op::Sub>(kSquare),    FastPaths<Op::Mul>(kSquare),
    FastPaths<Op::Div>(kSquare), FastPaths<Op::IntDiv>(kSquare), FastPaths<Op::Mod>(kSquare)};

}  // namespace

BinaryExpr::BinaryExpr(Pos p, Op op, ExprPtr l, ExprPtr r)
    : Expr(p), op_(op), l_(std::move(l)), r_(std::move(r)), ls_(l_.get()), rs_(r_.get()) {
  // A computed operand has no storage to read in place: such nodes go straight to EvalInto.
  if (op_ <= Op::Mod && ls_.kind() != OperandSource::kValue && rs_.kind() != OperandSource::kValue)
    fast_ = kFastPaths[static_cast<int>(op_)][ls_.kind() * OperandSource::kKinds + rs_.kind()];
}

Variant BinaryExpr::Eval(Frame& f) const {
  Variant out;
  EvalInto(f, out);
  return out;
}

void BinaryExpr::EvalInto(Frame& f, Variant& out) const {
  // Two variables or literals holding numbers: no copies at all.
  if (FastInto(f, out)) return;
  Operand a(ls_, f);
  Operand b(rs_, f);
  if (op_ <= Op::Mod) {
    if (FastArithmetic(op_, *a, *b, out)) return;
  } else if (op_ >= Op::And) {
    if (FastLogic(op_, *a, *b, out)) return;
  }
  out = General(op_, *a, *b);
}

Variant NegateExpr::Eval(Frame& f) const {
  Operand a(*e_, f);
  Num n = ReadNum(*a);
  if (n.kind == NumKind::Integer && n.i != INT16_MIN) return Variant(static_cast<int16_t>(-n.i));
  if (n.kind == NumKind::Long && n.i != INT32_MIN) return Variant(static_cast<int32_t>(-n.i));
  if (n.kind == NumKind::Double) return Variant(-n.d);
  return Negate(*a);
}

Variant NotExpr::Eval(Frame& f) const {
  Operand a(*e_, f);
  Num n = ReadNum(*a);
  if (n.kind == NumKind::Boolean) return Variant(n.i == 0);
  return Not(*a);
}

ConcatExpr::ConcatExpr(Pos p, ExprList parts) : Expr(p), parts_(std::move(parts)) {}

Variant ConcatExpr::Eval(Frame& f) const {
  // Null & Null is Null; otherwise Null and Empty join as "".
  Operand first(*parts_[0], f);
  Variant acc = *first;
  for (size_t i = 1; i < parts_.size(); ++i) {
    Operand next(*parts_[i], f);
    if (acc.IsString() && !next->IsNull()) {
      const_cast<std::string*>(acc.StringPtr())->append(next->IsString() ? *next->StringPtr() : next->Text());
    } else {
      acc = Concatenate(acc, *next);
    }
  }
  return acc;
}

namespace {

// Whether `v` holds an Integer or a Long, and its value.
[[gnu::always_inline]] inline bool ReadIntegral(const Variant& v, int32_t& out) {
  if (const int16_t* i = v.IntegerPtr()) {
    out = *i;
    return true;
  }
  if (const int32_t* l = v.LongPtr()) {
    out = *l;
    return true;
  }
  return false;
}

template <Comparison op>
constexpr bool HoldsFor(int32_t x, int32_t y) {
  if constexpr (op == Comparison::Equal) return x == y;
  if constexpr (op == Comparison::NotEqual) return x != y;
  if constexpr (op == Comparison::Less) return x < y;
  if constexpr (op == Comparison::LessEqual) return x <= y;
  if constexpr (op == Comparison::Greater) return x > y;
  if constexpr (op == Comparison::GreaterEqual) return x >= y;
}

// The test of one comparison for operands read in place (variables and literals): two integers
// compare at once, anything else by the general rules.
template <OperandSource::Kind K>
[[gnu::always_inline]] inline bool ReadIntegralOperand(const OperandSource& s, Frame& f, int32_t& out) {
  if constexpr (K == OperandSource::kLiteral) {
    const Num n = s.LiteralNum();
    out = n.i;
    return IsIntegral(n.kind);
  } else {
    return ReadIntegral(*s.PeekAs<K>(f), out);
  }
}

template <Comparison op, OperandSource::Kind L, OperandSource::Kind R>
bool FastTest(const CompareExpr& e, Frame& f) {
  int32_t x, y;
  if (ReadIntegralOperand<L>(e.left(), f, x) && ReadIntegralOperand<R>(e.right(), f, y))
    return HoldsFor<op>(x, y);
  return e.TestAny(f);
}

bool AnyTest(const CompareExpr& e, Frame& f) { return e.TestAny(f); }

// Operands read in place: locals, parameters, the page's globals and literals.
constexpr int kInPlaceKinds = 4;
constexpr OperandSource::Kind kInPlace[kInPlaceKinds] = {OperandSource::kLocal, OperandSource::kParam,
                                                         OperandSource::kGlobal, OperandSource::kLiteral};

template <Comparison op, size_t... I>
constexpr std::array<CompareExpr::TestPath, sizeof...(I)> TestPaths(std::index_sequence<I...>) {
  return {&FastTest<op, kInPlace[I / kInPlaceKinds], kInPlace[I % kInPlaceKinds]>...};
}

constexpr auto kInPlaceSquare = std::make_index_sequence<kInPlaceKinds * kInPlaceKinds>();
constexpr std::array<CompareExpr::TestPath, kInPlaceKinds * kInPlaceKinds> kTestPaths[] = {
    TestPaths<Comparison::Equal>(kInPlaceSquare),   TestPaths<Comparison::NotEqual>(kInPlaceSquare),
    TestPaths<Comparison::Less>(kInPlaceSquare),    TestPaths<Comparison::LessEqual>(kInPlaceSquare),
    TestPaths<Comparison::Greater>(kInPlaceSquare), TestPaths<Comparison::GreaterEqual>(kInPlaceSquare)};

int InPlaceIndex(OperandSource::Kind k) {
  for (int i = 0; i < kInPlaceKinds; ++i)
    if (kInPlace[i] == k) return i;
  return -1;
}

}  // namespace

CompareExpr::CompareExpr(Pos p, Comparison op, ExprPtr l, ExprPtr r)
    : Expr(p), op_(op), l_(std::move(l)), r_(std::move(r)), ls_(l_.get()), rs_(r_.get()), test_(&AnyTest) {
  const int li = InPlaceIndex(ls_.kind()), ri = InPlaceIndex(rs_.kind());
  if (li >= 0 && ri >= 0) test_ = kTestPaths[static_cast<int>(op_)][li * kInPlaceKinds + ri];
}

Variant CompareOperands(const Variant& a, const Expr& l, const Variant& b, const Expr& r, Comparison op) {
  Num x = ReadNum(a);
  if (IsArithmetic(x.kind)) {
    Num y = ReadNum(b);
    if (IsIntegral(x.kind) && IsIntegral(y.kind)) return Variant(Holds(op, (x.i > y.i) - (x.i < y.i)));
    if (IsArithmetic(y.kind)) {
      double dl = AsDouble(x), dr = AsDouble(y);
      return Variant(Holds(op, (dl > dr) - (dl < dr)));
    }
  }
  const Variant* pa = &a;
  const Variant* pb = &b;
  Variant scratch;
  ApplyLiteralRules(pa, KindOf(l), pb, KindOf(r), scratch);
  return Compare(*pa, *pb, op);
}

Variant CompareExpr::Eval(Frame& f) const {
  Operand a(ls_, f);
  Operand b(rs_, f);
  return CompareOperands(*a, *l_, *b, *r_, op_);
}

bool Expr::Test(Frame& f) const {
  Operand c(*this, f);
  Num n = ReadNum(*c);
  if (n.kind != NumKind::Other) return n.kind == NumKind::Double ? n.d != 0 : n.i != 0;
  return IsTrue(*c);
}

bool CompareExpr::TestAny(Frame& f) const {
  // Two integers read in place.
  if (const Variant* pa = ls_.Peek(f)) {
    if (const Variant* pb = rs_.Peek(f)) {
      const Num x = ReadNum(*pa), y = ReadNum(*pb);
      if (IsIntegral(x.kind) && IsIntegral(y.kind)) return Holds(op_, (x.i > y.i) - (x.i < y.i));
    }
  }
  Operand a(ls_, f);
  Operand b(rs_, f);
  Num x = ReadNum(*a);
  if (IsIntegral(x.kind)) {
    Num y = ReadNum(*b);
    if (IsIntegral(y.kind)) return Holds(op_, (x.i > y.i) - (x.i < y.i));
  }
  Variant result = CompareOperands(*a, *l_, *b, *r_, op_);
  return !result.IsNull() && result.ToBool();
}

IsExpr::IsExpr(Pos p, ExprPtr l, ExprPtr r) : Expr(p), l_(std::move(l)), r_(std::move(r)) {}

Variant IsExpr::Eval(Frame& f) const {
  Variant a = l_->Eval(f);
  Variant b = r_->Eval(f);
  return Variant(a.ToObject() == b.ToObject());
}

}  // namespace corvane::script
