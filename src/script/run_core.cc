#include "script/run_core.h"

#include <pthread.h>

#include <new>

#include "corvane/error.h"
#include "corvane/text.h"
#include "script/nodes.h"
#include "script/run_inline.h"
#include "script/script_object.h"
#include "script/stmts.h"

namespace corvane::script {

namespace {

constexpr int kTicksBetweenClockChecks = 4096;

}  // namespace

// The lowest address the calling thread's stack may reach before a call is refused (28), leaving
// room for the C++ code a call runs.
const char* RunCore::ThreadStackLimit() {
  thread_local const char* limit = [] {
    const char* here = static_cast<const char*>(__builtin_frame_address(0));
    size_t fallback = 1u << 20;
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) != 0) return here - fallback;
    void* low = nullptr;
    size_t size = 0;
    int rc = pthread_attr_getstack(&attr, &low, &size);
    pthread_attr_destroy(&attr);
    if (rc != 0 || !low || size < (256u << 10)) return here - fallback;
    size_t margin = std::max<size_t>(size / 8, 256u << 10);
    return static_cast<const char*>(low) + margin;
  }();
  return limit;
}

RunCore::RunCore(std::shared_ptr<const Program> program, RunContext context)
    : program_(std::move(program)), context_(std::move(context)), err_(std::make_shared<ErrObject>()) {
  fixedCount_ = static_cast<int>(program_->globals.size());
  fixed_ = std::make_unique<Variant[]>(fixedCount_);
  defined_.assign(fixedCount_, 0);
  for (int i = 0; i < fixedCount_; ++i) defined_[i] = program_->globals[i].declared;
  for (auto& [name, value] : context_.objects) {
    const std::string lower = Lower(name);
    if (lower == "response" && value.IsObject()) {
      response_ = value.ToObject();
      if (response_) responseWrite_ = response_.get()->Info().Member("Write");
    }
    auto it = program_->globalIndex.find(lower);
    if (it != program_->globalIndex.end()) {
      fixed_[it->second] = value;
      defined_[it->second] = 1;
    } else {
      namedObjects_[lower] = value;
    }
  }
  if (program_->directives.codePage) codePage = program_->directives.codePage;
  if (program_->directives.lcid) lcid = program_->directives.lcid;
  link_ = std::make_shared<RunLink>();
  link_->run = this;
  started_ = std::chrono::steady_clock::now();
}

RunCore::~RunCore() { Finish(); }

void RunCore::RunMain() {
  started_ = std::chrono::steady_clock::now();
  for (const ArrayDecl& d : program_->arrays) MakeFixedArray(Global(d.slot), d.bounds);
  Frame f{this, fixed_.get(), nullptr, nullptr, nullptr, nullptr};
  program_->body.Exec(f);
  RunTerminations();
}

void RunCore::Finish() {
  if (!link_) return;
  try {
    for (int i = 0; i < fixedCount_; ++i) fixed_[i] = Variant();
    for (Variant& v : extra_) v = Variant();
    namedObjects_.clear();
    RunTerminations();
  } catch (...) {
  }
  std::vector<ScriptObject*> left;
  {
    std::lock_guard lock(link_->mutex);
    link_->run = nullptr;
    left.swap(pending_);
    pendingCount_ = 0;
  }
  for (ScriptObject* o : left) delete o;
  link_.reset();
}

// ---- Calls -----------------------------------------------------------------------------------------

Variant RunCore::Call(const ProcDef& p, ScriptObject* me, Frame& caller, const std::vector<ExprPtr>& args,
                      Variant* extra, const OperandSource* sources) {
  Variant result;
  CallInto(p, me, caller, args, extra, sources, result);
  return result;
}

void RunCore::CallInto(const ProcDef& p, ScriptObject* me, Frame& caller, const std::vector<ExprPtr>& args,
                       Variant* extra, const OperandSource* sources, Variant& out) {
  const size_t count = args.size() + (extra ? 1 : 0);
  if (count != p.params.size()) throw LanguageError(kWrongArgumentCount);
  EnterCall();
  FramePush push(*this, p.slotCount, p.params.size());
  Variant* slots = push.slots;
  Variant** argRefs = push.refs;
  // Array elements passed ByRef: copied in, and back after the call.
  struct Copy {
    size_t param;
    const IndexExpr* element;
  };
  Copy copies[8];
  size_t copyCount = 0;
  for (size_t i = 0; i < args.size(); ++i) {
    const Expr& a = *args[i];
    if (p.byRef[i]) {
      if (Variant* v = sources ? sources[i].Ref(caller) : a.Ref(caller)) {
        argRefs[i] = v;
        continue;
      }
      const IndexExpr* e = sources ? sources[i].AsIndex() : a.AsIndex();
      if (e && copyCount < 8 && e->IsArrayElement(caller)) copies[copyCount++] = {i, e};
    }
    a.EvalInto(caller, slots[i]);
    argRefs[i] = &slots[i];
  }
  if (extra) {
    slots[count - 1] = std::move(*extra);
    argRefs[count - 1] = &slots[count - 1];
  }
  if (copyCount == 0) {
    RunBody(p, me, push, out);
    return;
  }
  Variant result;
  RunBody(p, me, push, result);
  for (size_t k = 0; k < copyCount; ++k)
    copies[k].element->StoreElement(caller, std::move(slots[copies[k].param]));
  MoveValue(out, result);
}

Flow Block::Exec(Frame& f) const { return ExecInline(f); }

void RunCore::MakeArrays(const ProcDef& p, Variant* slots) {
  for (const ArrayDecl& d : p.arrays) MakeFixedArray(slots[d.slot], d.bounds);
}

Variant RunCore::CallWithValues(const ProcDef& p, ScriptObject* me, Args& args) {
  if (args.size() != p.params.size()) throw LanguageError(kWrongArgumentCount);
  EnterCall();
  FramePush push(*this, p.slotCount, p.params.size());
  for (size_t i = 0; i < args.size(); ++i) {
    if (p.byRef[i]) {
      push.refs[i] = &args[i];
    } else {
      push.slots[i] = args[i];
      push.refs[i] = &push.slots[i];
    }
  }
  Variant result;
  RunBody(p, me, push, result);
  return result;
}

namespace {

// The element of an array, or the default member of an object, that `args` (all but the last
// `skip`) index.
Variant* ElementOf(Variant& container, const Args& args, size_t skip) {
  VariantArray* a = container.MutableArray();
  if (!a) return nullptr;
  std::vector<int32_t> idx;
  for (size_t i = 0; i + skip < args.size(); ++i) idx.push_back(LetValue(args[i]).ToLong());
  return &a->At(idx.data(), idx.size());
}

}  // namespace

Variant RunCore::InvokeMember(ScriptObject& o, const ClassMember& m, InvokeKind kind, Args& args,
                              bool allowPrivate) {
  if (!m.isPublic && !allowPrivate) throw Error::NoSuchMember(m.name);
  const bool write = kind == InvokeKind::PropertyPut || kind == InvokeKind::PropertyPutRef;
  if (m.field >= 0) {
    Variant& field = o.Field(m.field);
    if (write) {
      if (args.empty()) throw LanguageError(kWrongArgumentCount);
      Variant value = kind == InvokeKind::PropertyPutRef ? SetValue(args.back()) : LetValue(args.back());
      if (args.size() == 1) {
        field = std::move(value);
        return {};
      }
      if (Variant* e = ElementOf(field, args, 1)) {
        *e = std::move(value);
        return {};
      }
      if (field.IsObject()) {
        Object target = field.ToObject();
        args.back() = std::move(value);
        return target.Invoke(0, args, kind);
      }
      throw LanguageError(kWrongArgumentCount);
    }
    if (args.empty()) return field;
    if (field.ArrayPtr()) return *ElementOf(field, args, 0);
    if (field.IsObject()) {
      Object target = field.ToObject();
      return target.Invoke(0, args, InvokeKind::PropertyGet);
    }
    throw Error::TypeMismatch();
  }
  if (m.method) {
    if (write) throw LanguageError(kWrongArgumentCount);
    return CallWithValues(*m.method, &o, args);
  }
  if (write) {
    const ProcDef* p = nullptr;
    if (kind == InvokeKind::PropertyPutRef) {
      p = m.set;
    } else if (m.let) {
      p = m.let;
      if (!args.empty()) args.back() = LetValue(args.back());
    } else if (!args.empty() && args.back().IsObject()) {
      p = m.set;
    }
    if (!p) throw LanguageError(kWrongArgumentCount);
    return CallWithValues(*p, &o, args);
  }
  if (!m.get) throw LanguageError(kWrongArgumentCount);
  return CallWithValues(*m.get, &o, args);
}

Object RunCore::NewInstance(const ClassDef& c) {
  auto* raw = new ScriptObject(c, UnitOf(c), link_);
  std::shared_ptr<ScriptObject> instance(raw, ReleaseScriptObject);
  if (c.initialize) {
    try {
      Args none;
      CallWithValues(*c.initialize, raw, none);
    } catch (...) {
      raw->terminated = true;
      throw;
    }
  }
  return Object(instance);
}

std::shared_ptr<const Unit> RunCore::UnitOf(const ClassDef& c) const {
  for (const auto& owned : program_->classes)
    if (owned.get() == &c)
      return std::shared_ptr<const Unit>(program_, static_cast<const Unit*>(program_.get()));
  for (const auto& unit : dynamicUnits_)
    for (const auto& owned : unit->classes)
      if (owned.get() == &c) return unit;
  return std::shared_ptr<const Unit>(program_, static_cast<const Unit*>(program_.get()));
}

// ---- Time, errors, output -------------------------------------------------------------------------

void RunCore::CheckTime() {
  ticks_ = kTicksBetweenClockChecks;
  if (stopped_) throw LanguageError(kTimedOut);
  if (!context_.timeoutSeconds) return;
  int limit = context_.timeoutSeconds();
  if (limit <= 0) return;
  if (std::chrono::steady_clock::now() - started_ >= std::chrono::seconds(limit)) {
    stopped_ = true;
    throw LanguageError(kTimedOut);
  }
}

void RunCore::Trap(const Error& e) {
  err_->number = e.Number();
  err_->description = e.Description().empty() ? std::string(ErrorDescription(e.Number())) : e.Description();
  err_->source = e.Source().empty() ? "Microsoft VBScript runtime error" : e.Source();
}

void RunCore::TrapOrRethrow(const Frame& f) {
  try {
    throw;
  } catch (const Error& e) {
    if (!f.resumeNext || stopped_) throw;
    Trap(e);
  } catch (const std::bad_alloc&) {
    if (!f.resumeNext || stopped_) throw;
    Trap(LanguageError(7));
  }
}

void RunCore::ClearErr() { err_->Clear(); }

Object RunCore::ErrObjectHandle() const { return Object(err_); }

void RunCore::Write(std::string_view text) {
  if (context_.write) {
    context_.write(text);
  } else if (response_ && responseWrite_ && responseWrite_->call) {
    Args a{Variant(text)};
    responseWrite_->call(*response_.get(), InvokeKind::Method, a);
  }
}

void RunCore::WriteValue(const Variant& value) {
  if (context_.write) {
    if (const std::string* s = value.StringPtr()) {
      context_.write(*s);
    } else {
      context_.write(value.Text());
    }
  } else if (response_ && responseWrite_ && responseWrite_->call) {
    Args a{value};
    responseWrite_->call(*response_.get(), InvokeKind::Method, a);
  }
}

Args* RunCore::TakeArgs() {
  if (argsPool_.empty()) return new Args();
  Args* a = argsPool_.back().release();
  argsPool_.pop_back();
  return a;
}

void RunCore::GiveArgs(Args* args) {
  args->clear();
  argsPool_.emplace_back(args);
}

// ---- Terminations ---------------------------------------------------------------------------------

void RunCore::QueueTermination(ScriptObject* object) {
  pending_.push_back(object);
  pendingCount_.store(pending_.size(), std::memory_order_relaxed);
}

void RunCore::RunTerminations() {
  if (terminating_) return;
  terminating_ = true;
  for (;;) {
    std::vector<ScriptObject*> batch;
    {
      std::lock_guard lock(link_->mutex);
      batch.swap(pending_);
      pendingCount_.store(0, std::memory_order_relaxed);
    }
    if (batch.empty()) break;
    for (ScriptObject* o : batch) Terminate(o);
  }
  terminating_ = false;
}

void RunCore::Terminate(ScriptObject* object) {
  object->terminated = true;
  std::shared_ptr<ScriptObject> again(object, ReleaseScriptObject);
  const Stmt* saved = current;
  try {
    Args none;
    CallWithValues(*object->cls().terminate, object, none);
  } catch (...) {
    // Errors in Class_Terminate are not reported: the instance is going anyway.
  }
  current = saved;
}

// ---- Globals added while running ------------------------------------------------------------------

int RunCore::FindGlobal(const std::string& lower) const {
  auto it = program_->globalIndex.find(lower);
  if (it != program_->globalIndex.end()) return it->second;
  auto added = addedGlobalIndex_.find(lower);
  return added == addedGlobalIndex_.end() ? -1 : added->second;
}

int RunCore::AddGlobal(const std::string& name, bool declared) {
  const std::string lower = Lower(name);
  int index = fixedCount_ + static_cast<int>(extra_.size());
  extra_.emplace_back();
  addedGlobals_.push_back({name, declared});
  addedGlobalIndex_.emplace(lower, index);
  defined_.push_back(declared);
  if (auto it = namedObjects_.find(lower); it != namedObjects_.end()) {
    extra_.back() = it->second;
    defined_.back() = 1;
  }
  return index;
}

void RunCore::Declare(int index) {
  if (index >= fixedCount_) addedGlobals_[index - fixedCount_].declared = true;
  defined_[index] = 1;
}

bool RunCore::GlobalDeclared(int index) const {
  if (index < fixedCount_) return program_->globals[index].declared;
  return addedGlobals_[index - fixedCount_].declared;
}

const ProcDef* RunCore::FindDynamicProc(const std::string& lower) const {
  auto it = dynamicProcs_.find(lower);
  return it == dynamicProcs_.end() ? nullptr : it->second;
}

const ClassDef* RunCore::FindDynamicClass(const std::string& lower) const {
  auto it = dynamicClasses_.find(lower);
  return it == dynamicClasses_.end() ? nullptr : it->second;
}

const Variant* RunCore::FindDynamicConst(const std::string& lower) const {
  auto it = dynamicConsts_.find(lower);
  return it == dynamicConsts_.end() ? nullptr : &it->second;
}

}  // namespace corvane::script
