// Variables, literals and the value rules of assignment.
#include "corvane/error.h"
#include "script/nodes.h"
#include "script/run_core.h"
#include "script/script_object.h"
#include "script/vbs_errors.h"

namespace corvane::script {

namespace {

Error Undefined(const std::string& name) {
  return Error(kVariableUndefined, "Variable is undefined: '" + name + "'");
}

}  // namespace

void Expr::Assign(Frame&, Variant, bool) const { throw LanguageError(kIllegalAssignment); }

Variant DefaultValue(const Variant& v) {
  Variant current = v;
  for (int hops = 0; current.IsObject(); ++hops) {
    Object o = current.ToObject();
    if (o.IsNothing()) throw Error::ObjectNotSet();
    if (hops == 8) throw Error::TypeMismatch();
    Args none;
    current = o.Invoke(0, none, InvokeKind::PropertyGet);
  }
  return current;
}

Variant LetValue(Variant v) {
  if (v.IsObject()) return DefaultValue(v);
  return v;
}

Variant SetValue(Variant v) {
  if (!v.IsObject()) throw Error::ObjectRequired();
  return v;
}

void LocalExpr::Assign(Frame& f, Variant value, bool isSet) const {
  f.slots[slot_] = isSet ? SetValue(std::move(value)) : LetValue(std::move(value));
}

void ParamExpr::Assign(Frame& f, Variant value, bool isSet) const {
  *f.refs[slot_] = isSet ? SetValue(std::move(value)) : LetValue(std::move(value));
}

const Variant* GlobalExpr::Peek(Frame& f) const {
  if (checked_ && !f.run->IsDefined(index_)) throw Undefined(name_);
  return fixed_ ? &f.globals[index_] : &f.run->Global(index_);
}

Variant* GlobalExpr::Ref(Frame& f) const {
  if (checked_ && !f.run->IsDefined(index_)) throw Undefined(name_);
  return fixed_ ? &f.globals[index_] : &f.run->Global(index_);
}

void GlobalExpr::Assign(Frame& f, Variant value, bool isSet) const {
  *Ref(f) = isSet ? SetValue(std::move(value)) : LetValue(std::move(value));
}

const Variant* FieldExpr::Peek(Frame& f) const { return &f.me->Field(index_); }

Variant* FieldExpr::Ref(Frame& f) const { return &f.me->Field(index_); }

void FieldExpr::Assign(Frame& f, Variant value, bool isSet) const {
  f.me->Field(index_) = isSet ? SetValue(std::move(value)) : LetValue(std::move(value));
}

Variant UndefinedExpr::Eval(Frame&) const { throw Undefined(name_); }
Variant* UndefinedExpr::Ref(Frame&) const { throw Undefined(name_); }
void UndefinedExpr::Assign(Frame&, Variant, bool) const { throw Undefined(name_); }

Variant MeExpr::Eval(Frame& f) const { return Variant(Object(f.me->shared_from_this())); }

Variant ErrExpr::Eval(Frame& f) const { return Variant(f.run->ErrObjectHandle()); }

}  // namespace corvane::script
