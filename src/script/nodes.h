// The node types of the compiled tree. Names are resolved when the tree is built: a node knows
// whether it reads a local slot, a global, a field of Me, calls a procedure, a built-in or a member
// of an object, so running it involves no lookup by name (object members are cached per call site).
#pragma once

#include <atomic>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "script/builtins.h"
#include "script/fast_number.h"
#include "script/operators.h"
#include "script/tree.h"

namespace corvane::script {

using ExprList = std::vector<ExprPtr>;
class IndexExpr;

// ---- Values and variables -------------------------------------------------------------------------

class LiteralExpr : public Expr {
 public:
  LiteralExpr(Pos p, Variant v, bool isLiteral = true) : Expr(p), value_(std::move(v)), literal_(isLiteral) {}
  Variant Eval(Frame&) const override { return value_; }
  void EvalInto(Frame&, Variant& out) const override { CopyValue(out, value_); }
  const Variant* Peek(Frame&) const override { return &value_; }
  const Variant* Literal() const override { return literal_ ? &value_ : nullptr; }
  const Variant* value() const { return &value_; }

 private:
  Variant value_;
  bool literal_;
};

// A variable in the procedure's frame.
class LocalExpr : public Expr {
 public:
  bool MayReference() const override { return true; }
  LocalExpr(Pos p, int slot) : Expr(p), slot_(slot) {}
  Variant Eval(Frame& f) const override { return f.slots[slot_]; }
  void EvalInto(Frame& f, Variant& out) const override { CopyValue(out, f.slots[slot_]); }
  const Variant* Peek(Frame& f) const override { return &f.slots[slot_]; }
  Variant* Ref(Frame& f) const override { return &f.slots[slot_]; }
  void Assign(Frame& f, Variant value, bool isSet) const override;
  int slot() const { return slot_; }

 private:
  int slot_;
};

// A parameter, wherever it lives (the caller's variable when ByRef).
class ParamExpr : public Expr {
 public:
  bool MayReference() const override { return true; }
  ParamExpr(Pos p, int slot) : Expr(p), slot_(slot) {}
  Variant Eval(Frame& f) const override { return *f.refs[slot_]; }
  void EvalInto(Frame& f, Variant& out) const override { CopyValue(out, *f.refs[slot_]); }
  const Variant* Peek(Frame& f) const override { return f.refs[slot_]; }
  Variant* Ref(Frame& f) const override { return f.refs[slot_]; }
  void Assign(Frame& f, Variant value, bool isSet) const override;
  int slot() const { return slot_; }

 private:
  int slot_;
};

// A global variable. `checked`: not declared under Option Explicit, so it raises 500 unless the
// run defines it (a named object such as Response).
class GlobalExpr : public Expr {
 public:
  bool MayReference() const override { return true; }
  // `fixed`: one of the page's own globals (not one added while running), read through the frame.
  GlobalExpr(Pos p, int index, bool checked, std::string name, bool fixed)
      : Expr(p), index_(index), checked_(checked), fixed_(fixed), name_(std::move(name)) {}
  Variant Eval(Frame& f) const override { return *Peek(f); }
  void EvalInto(Frame& f, Variant& out) const override { CopyValue(out, *Peek(f)); }
  const Variant* Peek(Frame& f) const override;
  Variant* Ref(Frame& f) const override;
  void Assign(Frame& f, Variant value, bool isSet) const override;
  int index() const { return index_; }
  const std::string& name() const { return name_; }
  bool direct() const { return fixed_ && !checked_; }

 private:
  int index_;
  bool checked_;
  bool fixed_;
  std::string name_;
};

// A field of the instance the procedure runs for.
class FieldExpr : public Expr {
 public:
  bool MayReference() const override { return true; }
  FieldExpr(Pos p, int index) : Expr(p), index_(index) {}
  Variant Eval(Frame& f) const override { return *Peek(f); }
  const Variant* Peek(Frame& f) const override;
  Variant* Ref(Frame& f) const override;
  void Assign(Frame& f, Variant value, bool isSet) const override;

 private:
  int index_;
};

// A name Option Explicit refuses: 500 when the code reaches it.
class UndefinedExpr : public Expr {
 public:
  bool MayReference() const override { return true; }
  UndefinedExpr(Pos p, std::string name) : Expr(p), name_(std::move(name)) {}
  Variant Eval(Frame&) const override;
  Variant* Ref(Frame& f) const override;
  void Assign(Frame& f, Variant value, bool isSet) const override;

 private:
  std::string name_;
};

class MeExpr : public Expr {
 public:
  using Expr::Expr;
  Variant Eval(Frame& f) const override;
};

class ErrExpr : public Expr {
 public:
  using Expr::Expr;
  Variant Eval(Frame& f) const override;
};

// A missing argument: f(1, , 3).
class MissingExpr : public Expr {
 public:
  using Expr::Expr;
  Variant Eval(Frame&) const override { return Variant::Missing(); }
};

// (x): a value, so a variable in parentheses passes by value.
class ParenExpr : public Expr {
 public:
  ParenExpr(Pos p, ExprPtr inner) : Expr(p), inner_(std::move(inner)) { depth = inner_->depth + 1; }
  Variant Eval(Frame& f) const override { return inner_->Eval(f); }
  const Variant* Literal() const override { return inner_->Literal(); }

 private:
  ExprPtr inner_;
};

// Where an operand is read from: a local slot, a parameter or one of the page's globals directly, a
// literal's value; a computed value has no storage to read; anything else asks its node.
class OperandSource {
 public:
  explicit OperandSource(const Expr* e);
  const Variant* Peek(Frame& f) const {
    switch (kind_) {
      case kLocal: return &f.slots[index_];
      case kParam: return f.refs[index_];
      case kGlobal: return &f.globals[index_];
      case kLiteral: return literal_;
      case kValue: return nullptr;
      default: return e_->Peek(f);
    }
  }
  Variant* Ref(Frame& f) const {
    switch (kind_) {
      case kLocal: return &f.slots[index_];
      case kParam: return f.refs[index_];
      case kGlobal: return &f.globals[index_];
      case kLiteral:
      case kValue: return nullptr;
      default: return e_->Ref(f);
    }
  }
  const IndexExpr* AsIndex() const { return kind_ == kOther ? e_->AsIndex() : nullptr; }
  // The number a literal source holds (read once, when the tree is built).
  Num LiteralNum() const { return literalNum_; }
  const Expr& expr() const { return *e_; }

  enum Kind : uint8_t { kOther, kLocal, kParam, kGlobal, kLiteral, kValue };
  static constexpr int kKinds = 6;
  Kind kind() const { return kind_; }
  // Peek for a source known to be of kind K.
  template <Kind K>
  const Variant* PeekAs(Frame& f) const {
    if constexpr (K == kLocal) return &f.slots[index_];
    if constexpr (K == kParam) return f.refs[index_];
    if constexpr (K == kGlobal) return &f.globals[index_];
    if constexpr (K == kLiteral) return literal_;
    if constexpr (K == kValue) return nullptr;
    if constexpr (K == kOther) return e_->Peek(f);
  }

 private:
  Kind kind_ = kOther;
  int index_ = 0;
  const Variant* literal_ = nullptr;
  Num literalNum_{NumKind::Other, 0, 0};
  const Expr* e_;
};

// ---- Operators -----------------------------------------------------------------------------------

enum class Op : uint8_t { Add, Sub, Mul, Div, IntDiv, Mod, Pow, And, Or, Xor, Eqv, Imp };

// + - * / \ Mod on two numbers read from Integer, Long or Double operands, the result into `out`;
// false (and `out` untouched) when the result needs the general operator. `out` may be an operand.
[[gnu::always_inline]] inline bool ArithmeticOf(Op op, Num x, Num y, Variant& out) {
  if (IsIntegral(x.kind) && IsIntegral(y.kind)) {
    const bool bothInteger = x.kind == NumKind::Integer && y.kind == NumKind::Integer;
    const int64_t l = x.i, r = y.i;
    switch (op) {
      case Op::Add: return IntegerResult(l + r, bothInteger, out);
      case Op::Sub: return IntegerResult(l - r, bothInteger, out);
      case Op::Mul: return IntegerResult(l * r, bothInteger, out);
      case Op::Div:
        if (r == 0) return false;
        SetDouble(out, static_cast<double>(l) / static_cast<double>(r));
        return true;
      case Op::IntDiv:
        if (r == 0 || (r == -1 && l <= INT16_MIN)) return false;
        return IntegerResult(l / r, bothInteger, out);
      case Op::Mod:
        if (r == 0 || (r == -1 && l <= INT16_MIN)) return false;
        return IntegerResult(l % r, bothInteger, out);
      default: return false;
    }
  }
  const double l = AsDouble(x), r = AsDouble(y);
  double result;
  switch (op) {
    case Op::Add: result = l + r; break;
    case Op::Sub: result = l - r; break;
    case Op::Mul: result = l * r; break;
    case Op::Div:
      if (r == 0) return false;
      result = l / r;
      break;
    default: return false;
  }
  if (!std::isfinite(result)) return false;
  SetDouble(out, result);
  return true;
}
// The same on Variants: false also when an operand is not an Integer, Long or Double.
[[gnu::always_inline]] inline bool FastArithmetic(Op op, const Variant& a, const Variant& b, Variant& out) {
  Num x = ReadNum(a);
  if (!IsArithmetic(x.kind)) return false;
  Num y = ReadNum(b);
  if (!IsArithmetic(y.kind)) return false;
  return ArithmeticOf(op, x, y, out);
}

class BinaryExpr : public Expr {
 public:
  BinaryExpr(Pos p, Op op, ExprPtr l, ExprPtr r);
  Variant Eval(Frame& f) const override;
  void EvalInto(Frame& f, Variant& out) const override;
  // The fast path alone: both operands read in place and numbers (false: use EvalInto).
  bool FastInto(Frame& f, Variant& out) const { return fast_ && fast_(*this, f, out); }
  const OperandSource& left() const { return ls_; }
  const OperandSource& right() const { return rs_; }
  using FastPath = bool (*)(const BinaryExpr&, Frame&, Variant&);

 private:
  Op op_;
  ExprPtr l_, r_;
  OperandSource ls_, rs_;
  FastPath fast_ = nullptr;  // made for the operator and where its operands are read from
};

class NegateExpr : public Expr {
 public:
  NegateExpr(Pos p, ExprPtr e) : Expr(p), e_(std::move(e)) { depth = e_->depth + 1; }
  Variant Eval(Frame& f) const override;

 private:
  ExprPtr e_;
};

class NotExpr : public Expr {
 public:
  NotExpr(Pos p, ExprPtr e) : Expr(p), e_(std::move(e)) { depth = e_->depth + 1; }
  Variant Eval(Frame& f) const override;

 private:
  ExprPtr e_;
};

// a & b & c ...: one node for the whole chain.
class ConcatExpr : public Expr {
 public:
  ConcatExpr(Pos p, ExprList parts);
  Variant Eval(Frame& f) const override;
  const ExprList& parts() const { return parts_; }
  ExprList TakeParts() { return std::move(parts_); }

 private:
  ExprList parts_;
};

class CompareExpr : public Expr {
 public:
  CompareExpr(Pos p, Comparison op, ExprPtr l, ExprPtr r);
  Variant Eval(Frame& f) const override;
  bool Test(Frame& f) const override { return test_(*this, f); }
  // Test for operands of any kind.
  bool TestAny(Frame& f) const;
  const OperandSource& left() const { return ls_; }
  const OperandSource& right() const { return rs_; }
  using TestPath = bool (*)(const CompareExpr&, Frame&);

 private:
  Comparison op_;
  ExprPtr l_, r_;
  OperandSource ls_, rs_;
  TestPath test_;  // made for the comparison and where its operands are read from
};

class IsExpr : public Expr {
 public:
  IsExpr(Pos p, ExprPtr l, ExprPtr r);
  Variant Eval(Frame& f) const override;

 private:
  ExprPtr l_, r_;
};

// ---- Calls ---------------------------------------------------------------------------------------

// New ClassName.
class NewExpr : public Expr {
 public:
  NewExpr(Pos p, const ClassDef* cls, std::string name) : Expr(p), cls_(cls), name_(std::move(name)) {}
  Variant Eval(Frame& f) const override;

 private:
  const ClassDef* cls_;  // nullptr: looked up when run (a class ExecuteGlobal defines)
  std::string name_;
};

// A call of a procedure of the page (or of a class's own member, for Me). How each argument binds
// is settled when the tree is built: a variable passed ByRef is the caller's own storage, anything
// else a value in the callee's slot. Only ByRef arguments that are neither (array elements,
// fields, names checked at run time) and a wrong argument count take RunCore::CallInto.
class CallExpr : public Expr {
 public:
  CallExpr(Pos p, const ProcDef* proc, ExprList args, bool onMe);
  Variant Eval(Frame& f) const override;
  void EvalInto(Frame& f, Variant& out) const override;

 private:
  const ProcDef* proc_;
  ExprList args_;
  std::vector<OperandSource> sources_;
  struct Binding {
    bool byRef;               // the caller's variable itself
    const BinaryExpr* arith;  // an operator, tried on its fast path first
  };
  std::vector<Binding> bindings_;  // per argument
  bool onMe_;
  bool planned_;  // the count matches and every argument binds as bindings_ say
};

// A member of Me used without "Me.": a property read or write, or a method call.
class MeMemberExpr : public Expr {
 public:
  MeMemberExpr(Pos p, const ClassMember* m, ExprList args);
  Variant Eval(Frame& f) const override;
  void Assign(Frame& f, Variant value, bool isSet) const override;

 private:
  const ClassMember* m_;
  ExprList args_;
  std::vector<OperandSource> sources_;
};

// name(args) where name is a variable: an element of the array it holds, or the default member of
// the object it holds. A name that holds neither may be a procedure ExecuteGlobal defined.
class IndexExpr : public Expr {
 public:
  bool MayReference() const override { return true; }
  IndexExpr(Pos p, ExprPtr base, ExprList args, std::string name);
  Variant Eval(Frame& f) const override;
  void Assign(Frame& f, Variant value, bool isSet) const override;
  void Exec(Frame& f) const override;
  const IndexExpr* AsIndex() const override { return this; }
  // Whether it names an element of an array variable now; StoreElement then writes the element
  // as it is (a ByRef argument's value copied back after the call).
  bool IsArrayElement(Frame& f) const;
  void StoreElement(Frame& f, Variant value) const;

 private:
  Variant Call(Frame& f, bool asStatement) const;
  // The indices, evaluated; more than kMaxRank raises 9.
  size_t Indices(Frame& f, int32_t* out) const;
  ExprPtr base_;
  ExprList args_;
  std::string name_;
};

// obj.name, obj.name(args): late-bound, with the member found once per call site and class.
class MemberExpr : public Expr {
 public:
  MemberExpr(Pos p, ExprPtr object, std::string name, ExprList args, bool parens);
  Variant Eval(Frame& f) const override;
  void Assign(Frame& f, Variant value, bool isSet) const override;
  void Exec(Frame& f) const override;

 private:
  Variant Invoke(Frame& f, InvokeKind kind, const Variant* value) const;
  ExprPtr object_;
  std::string name_;
  ExprList args_;
  bool parens_;
  mutable std::atomic<const MemberInfo*> hostCache_{nullptr};
  mutable std::atomic<const ClassMember*> scriptCache_{nullptr};
};

// A built-in function of the runtime's table.
class BuiltinExpr : public Expr {
 public:
  BuiltinExpr(Pos p, const Builtin* b, ExprList args, bool objectsAsValues);
  Variant Eval(Frame& f) const override;

 private:
  const Builtin* b_;
  ExprList args_;
  bool objectsAsValues_;
};

// The built-ins that reach into the interpreter.
enum class Intrinsic : uint8_t {
  Eval,
  Execute,
  ExecuteGlobal,
  GetRef,
  CreateObject,
  GetObject,
  IsObject,
  IsArray,
  IsEmpty,
  TypeName,
  VarType,
  ScriptEngine,
  ScriptEngineMajorVersion,
  ScriptEngineMinorVersion,
  ScriptEngineBuildVersion,
};
bool FindIntrinsic(std::string_view name, Intrinsic* which, int* minArgs, int* maxArgs);

class IntrinsicExpr : public Expr {
 public:
  IntrinsicExpr(Pos p, Intrinsic which, ExprList args);
  Variant Eval(Frame& f) const override;

 private:
  Intrinsic which_;
  ExprList args_;
  int minArgs_ = 0, maxArgs_ = 0;
};

// ---- Helpers shared by the nodes -----------------------------------------------------------------

// The value of an object where a plain value is needed: its default member (dispid 0) read, until
// the value is not an object. Nothing raises 91; an object without a default member raises 438.
Variant DefaultValue(const Variant& v);
// `v` itself, or its default value kept in `scratch` when it is an object.
inline const Variant& ValueOf(const Variant& v, Variant& scratch) {
  if (!v.IsObject()) return v;
  scratch = DefaultValue(v);
  return scratch;
}
// Reads an operand without copying a variable.
struct Operand {
  Scratch scratch;
  const Variant* p;
  Operand(const Expr& e, Frame& f) {
    p = e.Peek(f);
    if (!p) {
      Variant& s = scratch.Make();
      e.EvalInto(f, s);
      p = &s;
    }
    if (p->IsObject()) Resolve();
  }
  Operand(const OperandSource& src, Frame& f) {
    p = src.Peek(f);
    if (!p) {
      Variant& s = scratch.Make();
      src.expr().EvalInto(f, s);
      p = &s;
    }
    if (p->IsObject()) Resolve();
  }
  void Resolve() {
    Variant v = DefaultValue(*p);
    Variant& s = scratch.Make();
    s = std::move(v);
    p = &s;
  }
  const Variant& operator*() const { return *p; }
  const Variant* operator->() const { return p; }
};
// Calls a member of an object (its default member when `name` is empty): script instances directly,
// others through their class's table.
// `cache` remembers the member per call site.
Variant InvokeObject(Frame& f, const Object& o, std::string_view name, InvokeKind kind, Args& args,
                     std::atomic<const MemberInfo*>* hostCache, std::atomic<const ClassMember*>* scriptCache);
// a <op> b by the comparison rules, where `l` and `r` are the expressions the values came from (a
// literal on one side makes the other side convert to its kind).
Variant CompareOperands(const Variant& a, const Expr& l, const Variant& b, const Expr& r, Comparison op);
// How If, While and Do read a condition.
inline bool Truth(const Expr& condition, Frame& f) { return condition.Test(f); }
// Let semantics: an object assigned without Set gives its default value; Set needs an object.
Variant LetValue(Variant v);
Variant SetValue(Variant v);

}  // namespace corvane::script
