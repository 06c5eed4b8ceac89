// The hot paths of running code, inlined where procedures are called and where a procedure's or a
// branch's statements run: a procedure's body, a block of statements, an assignment.
#pragma once

#include "script/run_core.h"
#include "script/stmts.h"

namespace corvane::script {

inline void RunCore::RunBody(const ProcDef& p, ScriptObject* me, FramePush& push, Variant& out) {
  if (!p.arrays.empty()) [[unlikely]]
    MakeArrays(p, push.slots);
  Frame f{this, fixed_.get(), push.slots, push.refs, me, &p};
  const Stmt* saved = current;
  p.body.ExecInline(f);
  current = saved;
  if (p.ReturnsValue()) {
    MoveValue(out, push.slots[p.returnSlot]);
  } else {
    Clear(out);
  }
}

inline void AssignStmt::Run(Frame& f) const {
  if (!set_) {
    // A plain variable: evaluated straight into it (a number in place).
    if (Variant* dst = dst_.Ref(f)) {
      if (arithmetic_) {
        if (!arithmetic_->FastInto(f, *dst)) arithmetic_->EvalInto(f, *dst);
        return;
      }
      if (const Variant* src = src_.Peek(f); src && !src->IsObject()) {
        if (src != dst) CopyValue(*dst, *src);
        return;
      }
      *dst = LetValue(value_->Eval(f));
      return;
    }
  }
  target_->Assign(f, value_->Eval(f), set_);
}

// A statement of a block: assignments, the most common statement, run without a virtual call.
inline Flow ExecStmt(const Stmt& st, Frame& f) {
  if (st.kind == StmtKind::Assign) {
    static_cast<const AssignStmt&>(st).Run(f);
    return Flow::Normal;
  }
  return st.Exec(f);
}

// Statements run in order. An error in one of them, under On Error Resume Next, is recorded in Err
// and the next statement runs.
inline Flow Block::ExecInline(Frame& f) const {
  RunCore& run = *f.run;
  for (const StmtPtr& st : stmts) {
    run.current = st.get();
    Flow flow;
    try {
      flow = ExecStmt(*st, f);
    } catch (...) {
      run.TrapOrRethrow(f);
      flow = Flow::Normal;
    }
    if (flow != Flow::Normal) return flow;
    if (run.HasPendingTerminations()) [[unlikely]]
      run.RunTerminations();
  }
  return Flow::Normal;
}

}  // namespace corvane::script
