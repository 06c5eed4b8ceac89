// Calls: procedures of the page, members of Me, array elements and default members, late-bound
// members of objects, built-ins and New.
#include <functional>

#include "corvane/error.h"
#include "corvane/text.h"
#include "script/nodes.h"
#include "script/run_core.h"
#include "script/run_inline.h"
#include "script/script_object.h"
#include "script/vbs_errors.h"
#if __has_include("script/regexp.h")
#include "script/regexp.h"
#define CORVANE_HAS_REGEXP 1
#endif

namespace corvane::script {

namespace {

constexpr size_t kMaxRank = 60;

// An argument list borrowed from the run for one call.
struct ArgsLease {
  RunCore& run;
  Args* args;
  explicit ArgsLease(RunCore& r) : run(r), args(r.TakeArgs()) {}
  ~ArgsLease() { run.GiveArgs(args); }
};

void EvalArgs(Frame& f, const ExprList& exprs, Args& out) {
  for (const ExprPtr& e : exprs) out.push_back(e->Eval(f));
}

// After a call on an object: arguments that were variables take the values the call left in the
// argument list (by-reference parameters), as a scripting host passes them.
void WriteBack(Frame& f, const ExprList& exprs, Args& args) {
  const size_t n = std::min(exprs.size(), args.size());
  for (size_t i = 0; i < n; ++i) {
    if (Variant* v = exprs[i]->Ref(f)) {
      *v = std::move(args[i]);
    } else if (const IndexExpr* e = exprs[i]->AsIndex(); e && e->IsArrayElement(f)) {
      e->StoreElement(f, std::move(args[i]));
    }
  }
}

}  // namespace

Variant InvokeObject(Frame& f, const Object& o, std::string_view name, InvokeKind kind, Args& args,
                     std::atomic<const MemberInfo*>* hostCache,
                     std::atomic<const ClassMember*>* scriptCache) {
  Dispatch* d = o.get();
  if (!d) throw Error::ObjectNotSet();
  if (ScriptObject* so = ScriptObject::From(d)) {
    const ClassMember* m = scriptCache ? scriptCache->load(std::memory_order_relaxed) : nullptr;
    if (!m || m->owner != &so->cls()) {
      m = name.empty() ? so->cls().defaultMember : so->cls().Find(LCase(name));
      if (!m) throw Error::NoSuchMember(std::string(name));
      if (scriptCache) scriptCache->store(m, std::memory_order_relaxed);
    }
    return f.run->InvokeMember(*so, *m, kind, args, f.me == so);
  }
  const ClassInfo& info = d->Info();
  const MemberInfo* m = hostCache ? hostCache->load(std::memory_order_relaxed) : nullptr;
  const MemberInfo* begin = info.members.data();
  const MemberInfo* end = begin + info.members.size();
  if (!m || std::less<const MemberInfo*>()(m, begin) || !std::less<const MemberInfo*>()(m, end)) {
    m = name.empty() ? info.Member(0) : info.Member(name);
    if (!m) throw Error::NoSuchMember(std::string(name));
    if (hostCache) hostCache->store(m, std::memory_order_relaxed);
  }
  if (!m->call || !m->Answers(kind)) throw Error::NoSuchMember(std::string(name));
  return m->call(*d, kind, args);
}

// ---- Procedures ------------------------------------------------------------------------------------

namespace {

std::vector<OperandSource> SourcesOf(const ExprList& args) {
  std::vector<OperandSource> sources;
  for (const ExprPtr& a : args) sources.emplace_back(a.get());
  return sources;
}

}  // namespace

CallExpr::CallExpr(Pos p, const ProcDef* proc, ExprList args, bool onMe)
    : Expr(p), proc_(proc), args_(std::move(args)), sources_(SourcesOf(args_)), onMe_(onMe) {
  planned_ = args_.size() == proc_->params.size();
  for (size_t i = 0; planned_ && i < args_.size(); ++i) {
    bool ref = false;
    if (proc_->byRef[i]) {
      switch (sources_[i].kind()) {
        case OperandSource::kLocal:
        case OperandSource::kParam:
        case OperandSource::kGlobal: ref = true; break;
        case OperandSource::kLiteral:
        case OperandSource::kValue: break;
        case OperandSource::kOther: planned_ = false; break;
      }
    }
    bindings_.push_back({ref, dynamic_cast<const BinaryExpr*>(args_[i].get())});
  }
}

Variant CallExpr::Eval(Frame& f) const {
  Variant out;
  EvalInto(f, out);
  return out;
}

void CallExpr::EvalInto(Frame& f, Variant& out) const {
  ScriptObject* me = onMe_ ? f.me : nullptr;
  if (!planned_) {
    f.run->CallInto(*proc_, me, f, args_, nullptr, sources_.data(), out);
    return;
  }
  RunCore& run = *f.run;
  run.EnterCall();
  FramePush push(run, proc_->slotCount, args_.size());
  for (size_t i = 0; i < args_.size(); ++i) {
    const Binding& b = bindings_[i];
    if (b.byRef) {
      push.refs[i] = sources_[i].Ref(f);
    } else {
      if (!b.arith || !b.arith->FastInto(f, push.slots[i])) args_[i]->EvalInto(f, push.slots[i]);
      push.refs[i] = &push.slots[i];
    }
  }
  run.RunBody(*proc_, me, push, out);
}

MeMemberExpr::MeMemberExpr(Pos p, const ClassMember* m, ExprList args)
    : Expr(p), m_(m), args_(std::move(args)), sources_(SourcesOf(args_)) {}

Variant MeMemberExpr::Eval(Frame& f) const {
  if (m_->method) return f.run->Call(*m_->method, f.me, f, args_, nullptr, sources_.data());
  if (m_->get) return f.run->Call(*m_->get, f.me, f, args_, nullptr, sources_.data());
  throw LanguageError(kWrongArgumentCount);
}

void MeMemberExpr::Assign(Frame& f, Variant value, bool isSet) const {
  const ProcDef* p = nullptr;
  if (isSet) {
    p = m_->set;
    value = SetValue(std::move(value));
  } else if (m_->let) {
    p = m_->let;
    value = LetValue(std::move(value));
  } else if (m_->set && value.IsObject()) {
    p = m_->set;
  }
  if (!p) throw LanguageError(kWrongArgumentCount);
  f.run->Call(*p, f.me, f, args_, &value, sources_.data());
}

// ---- Index / default member ------------------------------------------------------------------------

IndexExpr::IndexExpr(Pos p, ExprPtr base, ExprList args, std::string name)
    : Expr(p), base_(std::move(base)), args_(std::move(args)), name_(std::move(name)) {}

size_t IndexExpr::Indices(Frame& f, int32_t* out) const {
  if (args_.size() > kMaxRank) throw Error::SubscriptOutOfRange();
  for (size_t i = 0; i < args_.size(); ++i) {
    Operand v(*args_[i], f);
    out[i] = v->ToLong();
  }
  return args_.size();
}

Variant IndexExpr::Eval(Frame& f) const { return Call(f, false); }

void IndexExpr::Exec(Frame& f) const { Call(f, true); }

Variant IndexExpr::Call(Frame& f, bool asStatement) const {
  Variant scratch;
  const Variant* base = base_->Peek(f);
  if (!base) {
    scratch = base_->Eval(f);
    base = &scratch;
  }
  if (const VariantArray* a = base->ArrayPtr()) {
    if (args_.empty()) return *base;
    int32_t idx[kMaxRank];
    size_t n = Indices(f, idx);
    return a->At(idx, n);
  }
  if (base->IsObject()) {
    Object o = base->ToObject();
    ArgsLease lease(*f.run);
    EvalArgs(f, args_, *lease.args);
    Variant result = InvokeObject(f, o, "", asStatement ? InvokeKind::Method : InvokeKind::PropertyGet,
                                  *lease.args, nullptr, nullptr);
    WriteBack(f, args_, *lease.args);
    return result;
  }
  if (!name_.empty()) {
    if (const ProcDef* p = f.run->FindDynamicProc(LCase(name_))) return f.run->Call(*p, nullptr, f, args_);
  }
  if (asStatement && args_.empty() && !base->IsEmpty()) return {};
  if (asStatement) throw Error(kNotDefined, std::string(ErrorDescription(kNotDefined)), name_);
  throw Error(13, "Type mismatch", name_);
}

void IndexExpr::Assign(Frame& f, Variant value, bool isSet) const {
  Variant* base = base_->Ref(f);
  if (base) {
    if (VariantArray* a = base->MutableArray()) {
      int32_t idx[kMaxRank];
      size_t n = Indices(f, idx);
      Variant v = isSet ? SetValue(std::move(value)) : LetValue(std::move(value));
      a->At(idx, n) = std::move(v);
      return;
    }
  }
  Variant scratch;
  const Variant* current = base;
  if (!current) {
    scratch = base_->Eval(f);
    current = &scratch;
  }
  if (!current->IsObject()) throw Error::TypeMismatch();
  Object o = current->ToObject();
  ArgsLease lease(*f.run);
  EvalArgs(f, args_, *lease.args);
  lease.args->push_back(isSet ? SetValue(std::move(value)) : LetValue(std::move(value)));
  InvokeObject(f, o, "", isSet ? InvokeKind::PropertyPutRef : InvokeKind::PropertyPut, *lease.args, nullptr,
               nullptr);
}

bool IndexExpr::IsArrayElement(Frame& f) const {
  if (args_.empty()) return false;
  const Variant* base = base_->Peek(f);
  return base && base->ArrayPtr();
}

void IndexExpr::StoreElement(Frame& f, Variant value) const {
  Variant* base = base_->Ref(f);
  if (!base) return;
  VariantArray* a = base->MutableArray();
  if (!a) return;
  int32_t idx[kMaxRank];
  size_t n = Indices(f, idx);
  a->At(idx, n) = std::move(value);
}

// ---- Members of objects ----------------------------------------------------------------------------

MemberExpr::MemberExpr(Pos p, ExprPtr object, std::string name, ExprList args, bool parens)
    : Expr(p), object_(std::move(object)), name_(std::move(name)), args_(std::move(args)), parens_(parens) {}

Variant MemberExpr::Invoke(Frame& f, InvokeKind kind, const Variant* value) const {
  Variant ov = object_->Eval(f);
  if (!ov.IsObject()) throw Error(424, "Object required", name_);
  Object o = ov.ToObject();
  ArgsLease lease(*f.run);
  EvalArgs(f, args_, *lease.args);
  if (value) lease.args->push_back(*value);
  Variant result = InvokeObject(f, o, name_, kind, *lease.args, &hostCache_, &scriptCache_);
  WriteBack(f, args_, *lease.args);
  return result;
}

Variant MemberExpr::Eval(Frame& f) const { return Invoke(f, InvokeKind::PropertyGet, nullptr); }

void MemberExpr::Exec(Frame& f) const { Invoke(f, InvokeKind::Method, nullptr); }

void MemberExpr::Assign(Frame& f, Variant value, bool isSet) const {
  Variant v = isSet ? SetValue(std::move(value)) : LetValue(std::move(value));
  Invoke(f, isSet ? InvokeKind::PropertyPutRef : InvokeKind::PropertyPut, &v);
}

// ---- Built-ins -------------------------------------------------------------------------------------

BuiltinExpr::BuiltinExpr(Pos p, const Builtin* b, ExprList args, bool objectsAsValues)
    : Expr(p), b_(b), args_(std::move(args)), objectsAsValues_(objectsAsValues) {}

Variant BuiltinExpr::Eval(Frame& f) const {
  const size_t n = args_.size();
  if (n < static_cast<size_t>(b_->minArgs) || (b_->maxArgs >= 0 && n > static_cast<size_t>(b_->maxArgs)))
    throw Error(kWrongArgumentCount, std::string(ErrorDescription(kWrongArgumentCount)),
                std::string(b_->name));
  ArgsLease lease(*f.run);
  Args& args = *lease.args;
  for (const ExprPtr& e : args_) {
    args.push_back(e->Eval(f));
    Variant& v = args.back();
    if (objectsAsValues_ && v.IsObject() && !v.ToObject().IsNothing()) {
      try {
        v = DefaultValue(v);
      } catch (const Error& error) {
        if (error.Number() != 438) throw;
      }
    }
  }
  return b_->call(*f.run, args);
}

// ---- New -------------------------------------------------------------------------------------------

Variant NewExpr::Eval(Frame& f) const {
  const ClassDef* c = cls_ ? cls_ : f.run->FindDynamicClass(LCase(name_));
  if (c) return Variant(f.run->NewInstance(*c));
#ifdef CORVANE_HAS_REGEXP
  if (EqualsNoCase(name_, "regexp")) return Variant(NewRegExp());
#endif
  throw Error(kClassNotDefined, std::string(ErrorDescription(kClassNotDefined)), name_);
}

}  // namespace corvane::script
