// Running statements: control flow, arrays, output (blocks and assignments run in run_inline.h).
#include "script/stmts.h"

#include "corvane/error.h"
#include "script/fast_number.h"
#include "script/run_core.h"
#include "script/run_inline.h"
#include "script/vbs_errors.h"

namespace corvane::script {

Flow AssignStmt::Exec(Frame& f) const {
  Run(f);
  return Flow::Normal;
}

Flow AppendStmt::Exec(Frame& f) const {
  for (const ExprPtr& part : parts_) {
    Operand v(*part, f);
    Variant* t = target_->Ref(f);
    if (t->IsString() && !v->IsNull()) {
      auto* s = const_cast<std::string*>(t->StringPtr());  // the Variant's own text, appended in place
      if (const std::string* add = v->StringPtr()) {
        s->append(*add);
      } else {
        s->append(v->Text());
      }
    } else {
      *t = Concatenate(*t, *v);
    }
  }
  return Flow::Normal;
}

Flow IfStmt::Exec(Frame& f) const {
  for (size_t i = 0; i < conditions.size(); ++i) {
    bool take;
    try {
      take = Truth(*conditions[i], f);
    } catch (const Error& e) {
      // Under On Error Resume Next the platform goes on with the next statement: the first one of
      // the block the failed condition guards.
      if (!f.resumeNext || f.run->Stopped()) throw;
      f.run->Trap(e);
      take = true;
    }
    if (take) return blocks[i].ExecInline(f);
  }
  if (blocks.size() > conditions.size()) return blocks.back().ExecInline(f);
  return Flow::Normal;
}

Flow SelectStmt::Exec(Frame& f) const {
  Operand value(*test, f);
  for (size_t i = 0; i < cases.size(); ++i) {
    for (const ExprPtr& c : cases[i]) {
      Operand candidate(*c, f);
      Variant equal = CompareOperands(*value, *test, *candidate, *c, Comparison::Equal);
      if (!equal.IsNull() && equal.ToBool()) return blocks[i].Exec(f);
    }
  }
  if (blocks.size() > cases.size()) return blocks.back().Exec(f);
  return Flow::Normal;
}

Flow ForStmt::Exec(Frame& f) const {
  RunCore& run = *f.run;
  Variant start = LetValue(from->Eval(f));
  Variant end = LetValue(to->Eval(f));
  Variant increment = step ? LetValue(step->Eval(f)) : Variant(int16_t{1});
  // Numbers only; text converts as arithmetic does.
  if (start.IsString()) start = Variant(start.ToDouble());
  if (end.IsString()) end = Variant(end.ToDouble());
  if (increment.IsString()) increment = Variant(increment.ToDouble());
  if (start.IsNull() || end.IsNull() || increment.IsNull()) throw Error::InvalidUseOfNull();
  const Num e = ReadNum(end), s = ReadNum(increment);
  const bool up = IsIntegral(s.kind) ? s.i >= 0 : increment.ToDouble() >= 0;
  const double endValue = end.ToDouble();
  const Stmt* single = body.stmts.size() == 1 ? body.stmts[0].get() : nullptr;
  Variant* v = var->Ref(f);
  *v = start;
  Num c = ReadNum(*v);  // the counter, as the loop last wrote it
  for (;;) {
    bool done;
    if (IsIntegral(c.kind) && IsIntegral(e.kind)) {
      done = up ? c.i > e.i : c.i < e.i;
    } else {
      double d = LetValue(*v).ToDouble();
      done = up ? d > endValue : d < endValue;
    }
    if (done) break;
    run.Tick();
    Flow flow;
    if (single && !f.resumeNext) {
      // One statement and no error trapping: no need for the block's bookkeeping but this.
      run.current = single;
      flow = ExecStmt(*single, f);
      if (run.HasPendingTerminations()) run.RunTerminations();
    } else {
      flow = body.Exec(f);
    }
    if (flow == Flow::ExitFor) break;
    if (flow != Flow::Normal) return flow;
    // The body may have changed the counter: the next value is the counter's now plus the step.
    const Num now = ReadNum(*v);
    if (IsIntegral(now.kind) && IsIntegral(s.kind)) {
      const int64_t next = int64_t{now.i} + s.i;
      if (IntegerResult(next, now.kind == NumKind::Integer && s.kind == NumKind::Integer, *v)) {
        c = {now.kind == NumKind::Integer && s.kind == NumKind::Integer && next >= INT16_MIN &&
                     next <= INT16_MAX
                 ? NumKind::Integer
                 : NumKind::Long,
             static_cast<int32_t>(next), 0};
        continue;
      }
    }
    *v = Add(LetValue(*v), increment);
    c = ReadNum(*v);
  }
  return Flow::Normal;
}

Flow ForEachStmt::Exec(Frame& f) const {
  RunCore& run = *f.run;
  Variant items = collection->Eval(f);
  std::vector<Variant> elements;
  const std::vector<Variant>* list;
  if (const VariantArray* a = items.ArrayPtr()) {
    list = &a->Elements();  // `items` keeps this array as it was, whatever the body does
  } else if (items.IsObject()) {
    Object o = items.ToObject();
    if (o.IsNothing()) throw Error::ObjectNotSet();
    elements = o.get()->Elements();
    list = &elements;
  } else {
    throw Error::NotACollection();
  }
  Variant* v = var->Ref(f);
  for (const Variant& item : *list) {
    *v = item;
    run.Tick();
    Flow flow = body.Exec(f);
    if (flow == Flow::ExitFor) break;
    if (flow != Flow::Normal) return flow;
  }
  return Flow::Normal;
}

Flow DoStmt::Exec(Frame& f) const {
  RunCore& run = *f.run;
  for (;;) {
    if (testFirst && condition && Truth(*condition, f) == until) break;
    run.Tick();
    Flow flow = body.Exec(f);
    if (flow == Flow::ExitDo) break;
    if (flow != Flow::Normal) return flow;
    if (!testFirst && condition && Truth(*condition, f) == until) break;
  }
  return Flow::Normal;
}

Flow ExitStmt::Exec(Frame& f) const {
  if (flow_ == Flow::ExitProc) f.run->ClearErr();
  return flow_;
}

Flow OnErrorStmt::Exec(Frame& f) const {
  f.resumeNext = resumeNext_;
  f.run->ClearErr();
  return Flow::Normal;
}

void MakeFixedArray(Variant& target, const std::vector<VariantArray::Bound>& bounds) {
  VariantArray a(bounds);
  a.fixed = !bounds.empty();
  target = Variant::FromArray(std::move(a));
}

Flow ReDimStmt::Exec(Frame& f) const {
  std::vector<VariantArray::Bound> bounds;
  for (const ExprPtr& e : bounds_) {
    Operand ub(*e, f);
    int32_t n = ub->ToLong();
    if (n < -1) throw Error::SubscriptOutOfRange();
    bounds.push_back({0, n + 1});
  }
  Variant* v = var_->Ref(f);
  if (!v) throw LanguageError(kIllegalAssignment);
  if (VariantArray* a = v->MutableArray()) {
    if (a->fixed) throw LanguageError(kFixedArray);
    if (preserve_ && a->Rank() > 0) {
      a->Redim(std::move(bounds), true);
      return Flow::Normal;
    }
  }
  *v = Variant::FromArray(VariantArray(std::move(bounds)));
  return Flow::Normal;
}

Flow EraseStmt::Exec(Frame& f) const {
  Variant* v = var_->Ref(f);
  VariantArray* a = v ? v->MutableArray() : nullptr;
  if (!a) throw Error::TypeMismatch();
  if (a->fixed) {
    for (Variant& e : a->Elements()) e = Variant();
  } else {
    *v = Variant::FromArray(VariantArray());
  }
  return Flow::Normal;
}

Flow WithStmt::Exec(Frame& f) const {
  *holder->Ref(f) = object->Eval(f);
  Flow flow = body.Exec(f);
  *holder->Ref(f) = Variant();
  return flow;
}

Flow HtmlStmt::Exec(Frame& f) const {
  f.run->Write(text_);
  return Flow::Normal;
}

Flow OutputStmt::Exec(Frame& f) const {
  Variant v = e_->Eval(f);
  f.run->WriteValue(v.IsObject() ? DefaultValue(v) : v);
  return Flow::Normal;
}

}  // namespace corvane::script
