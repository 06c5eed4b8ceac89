// The state of one run of a compiled page: global variables, the value stack the procedures' frames
// live on, the Err object, the output, the time limit, and what code compiled while running
// (Execute, ExecuteGlobal, Eval) added.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "corvane/script.h"
#include "script/builtins.h"
#include "script/fast_number.h"
#include "script/program.h"
#include "script/tree.h"
#include "script/vbs_errors.h"

namespace corvane::script {

class ErrObject;
struct FramePush;
class OperandSource;
class RunCore;

// What outlives a run: instances of its classes may be kept elsewhere (in Session), so they reach
// the run through this link, which the run clears when it ends.
struct RunLink {
  std::mutex mutex;
  RunCore* run = nullptr;
};

inline void ResetSlot(Variant& v) { Clear(v); }
inline void ResetSlot(Variant*& p) { p = nullptr; }

// Fixed-size blocks of slots that never move, so that a ByRef parameter may point into a caller's
// frame. Slots are Empty when pushed and emptied when popped. A push is a pointer bump within the
// current block; a frame that does not fit opens the next block (kept for later pushes).
template <class T>
class SlotStack {
 public:
  struct Mark {
    T* top;
    T* end;
  };
  Mark Save() const { return {top_, end_}; }
  T* Push(size_t n) {
    // The room left, in bytes (a count of elements would cost a division).
    const size_t room = reinterpret_cast<uintptr_t>(end_) - reinterpret_cast<uintptr_t>(top_);
    if (room < n * sizeof(T)) [[unlikely]]
      NextBlock(n);
    T* p = top_;
    top_ += n;
    return p;
  }
  void Restore(Mark m, T* pushed, size_t n) {
    for (size_t i = 0; i < n; ++i) ResetSlot(pushed[i]);
    top_ = m.top;
    end_ = m.end;
  }

 private:
  // Most pages need a few dozen slots: the first block is small (it is built and torn down with every
  // run) and each further one twice the one before.
  static constexpr size_t kFirstBlock = 256;
  struct Chunk {
    std::unique_ptr<T[]> data;
    size_t size;
  };
  void NextBlock(size_t n) {
    // The block after the current one (the first when none is in use) that holds n slots.
    size_t next = 0;
    for (size_t b = 0; b < blocks_.size(); ++b)
      if (blocks_[b].data.get() + blocks_[b].size == end_) next = b + 1;
    while (next < blocks_.size() && blocks_[next].size < n) ++next;
    if (next >= blocks_.size()) {
      size_t size = std::max(blocks_.empty() ? kFirstBlock : 2 * blocks_.back().size, n);
      blocks_.push_back({std::make_unique<T[]>(size), size});
      next = blocks_.size() - 1;
    }
    top_ = blocks_[next].data.get();
    end_ = top_ + blocks_[next].size;
  }
  std::vector<Chunk> blocks_;
  T* top_ = nullptr;
  T* end_ = nullptr;
};

class RunCore : public BuiltinContext {
 public:
  RunCore(std::shared_ptr<const Program> program, RunContext context);
  ~RunCore() override;

  const Program& program() const { return *program_; }
  const std::shared_ptr<const Program>& programPtr() const { return program_; }
  const RunContext& context() const { return context_; }

  // Runs the page's own code.
  void RunMain();
  // Empties the globals (their instances terminate) and ends the link to the run's instances.
  void Finish();

  // Global variables: the page's first, then those that code compiled while running added.
  Variant& Global(int index) { return index < fixedCount_ ? fixed_[index] : extra_[index - fixedCount_]; }
  bool IsDefined(int index) const { return index < static_cast<int>(defined_.size()) && defined_[index]; }

  // Calls a procedure with argument expressions evaluated in the caller's frame (ByRef where the
  // argument is a variable), or with values (the caller's Args, ByRef to its elements).
  // `extra`: the value a Property Let or Set assigns, after the arguments.
  // `sources`, when given, say where each argument is read from (one per argument).
  Variant Call(const ProcDef& p, ScriptObject* me, Frame& caller, const std::vector<ExprPtr>& args,
               Variant* extra = nullptr, const OperandSource* sources = nullptr);
  // The same, the result stored into `out`.
  void CallInto(const ProcDef& p, ScriptObject* me, Frame& caller, const std::vector<ExprPtr>& args,
                Variant* extra, const OperandSource* sources, Variant& out);
  Variant CallWithValues(const ProcDef& p, ScriptObject* me, Args& args);
  // Runs a procedure whose frame `push` holds, its arguments bound; the result stored into `out`.
  // Callers check the argument count and call EnterCall before binding the arguments. Defined in
  // run_inline.h.
  inline void RunBody(const ProcDef& p, ScriptObject* me, FramePush& push, Variant& out);
  // A member of a script instance called late-bound (obj.name, or from outside the interpreter):
  // fields are read and written, methods called, properties read through Get and written through
  // Let or Set. Private members answer only calls from the instance's own code.
  Variant InvokeMember(ScriptObject& o, const ClassMember& m, InvokeKind kind, Args& args, bool allowPrivate);
  // A new instance of a script class (Class_Initialize runs).
  Object NewInstance(const ClassDef& c);

  // Each loop turn and call: the time limit is checked every few thousand steps.
  void Tick() {
    if (--ticks_ <= 0) CheckTime();
  }
  // Before a procedure's frame is pushed: the time limit, and the room left on the thread's stack
  // (28 when it runs out).
  void EnterCall() {
    Tick();
    if (depth == 0) stackLimit_ = ThreadStackLimit();
    if (static_cast<const char*>(__builtin_frame_address(0)) < stackLimit_) [[unlikely]]
      throw LanguageError(kOutOfStackSpace);
  }
  // A stopped page: no On Error traps the error any more.
  bool Stopped() const { return stopped_; }
  // Records a trapped error in Err (On Error Resume Next).
  void Trap(const Error& e);
  // In a handler of a statement's exception: records it in Err when `f` runs under On Error Resume
  // Next and the error is one a page may trap (a script error, or out of memory as 7); rethrows it
  // otherwise.
  void TrapOrRethrow(const Frame& f);
  void ClearErr();
  Object ErrObjectHandle() const;

  // The statement running now (its position reports an untrapped error).
  const Stmt* current = nullptr;

  // Page output: literal text and <%= %>.
  void Write(std::string_view text);
  void WriteValue(const Variant& value);

  // Argument lists for calls on objects, reused so that a call allocates nothing once warm.
  Args* TakeArgs();
  void GiveArgs(Args* args);

  // Code compiled while running.
  const ProcDef* FindDynamicProc(const std::string& lower) const;
  const ClassDef* FindDynamicClass(const std::string& lower) const;
  // A global name known to this run (the page's or an added one); -1 when none.
  int FindGlobal(const std::string& lower) const;
  int AddGlobal(const std::string& name, bool declared);
  void Declare(int index);
  bool GlobalDeclared(int index) const;
  const Variant* FindDynamicConst(const std::string& lower) const;
  // Eval, Execute and ExecuteGlobal.
  Variant EvalText(Frame& f, const std::string& code, Pos at);
  void ExecuteText(Frame& f, const std::string& code, Pos at, bool global);
  // GetRef: an object whose default call runs the procedure.
  Object ProcedureRef(const std::string& name);

  // Instances whose last reference went while the run was busy: terminated at the next statement.
  bool HasPendingTerminations() const { return pendingCount_ != 0; }
  void RunTerminations();
  void QueueTermination(ScriptObject* object);  // with the link's mutex held
  const std::shared_ptr<RunLink>& link() const { return link_; }
  std::shared_ptr<const Unit> UnitOf(const ClassDef& c) const;

 private:
  friend struct CallGuard;
  void CheckTime();
  static const char* ThreadStackLimit();
  void MakeArrays(const ProcDef& p, Variant* slots);
  void Terminate(ScriptObject* object);

  std::shared_ptr<const Program> program_;
  RunContext context_;
  std::unique_ptr<Variant[]> fixed_;  // the page's globals
  int fixedCount_ = 0;
  std::deque<Variant> extra_;  // globals added while running
  std::vector<uint8_t> defined_;
  std::deque<GlobalName> addedGlobals_;
  std::unordered_map<std::string, int> addedGlobalIndex_;
  std::unordered_map<std::string, const ProcDef*> dynamicProcs_;
  std::unordered_map<std::string, const ClassDef*> dynamicClasses_;
  std::unordered_map<std::string, Variant> dynamicConsts_;
  std::vector<std::shared_ptr<const Unit>> dynamicUnits_;
  std::unordered_map<std::string, Variant> namedObjects_;  // lower-case; those the page does not name

 public:
  SlotStack<Variant> values;
  SlotStack<Variant*> refs;  // for procedures with many parameters (the others keep them on the C++ stack)
  int depth = 0;

 private:
  std::shared_ptr<ErrObject> err_;
  std::vector<std::unique_ptr<Args>> argsPool_;
  Object response_;  // where output goes when the context has no writer
  const MemberInfo* responseWrite_ = nullptr;
  int ticks_ = 4096;
  bool stopped_ = false;
  std::chrono::steady_clock::time_point started_;
  const char* stackLimit_ = nullptr;  // of the thread running the page
  std::shared_ptr<RunLink> link_;
  std::vector<ScriptObject*> pending_;
  std::atomic<size_t> pendingCount_{0};
  bool terminating_ = false;

  friend class ScriptObject;
  friend class Compiler;
  friend class RunNames;
};

// A procedure's frame on the run's value stack, popped however the call ends. The parameters'
// places (`refs`) are on the C++ stack for up to kLocalRefs parameters.
struct FramePush {
  static constexpr size_t kLocalRefs = 8;
  RunCore& run;
  SlotStack<Variant>::Mark valueMark;
  SlotStack<Variant*>::Mark refMark;
  size_t slotCount, paramCount;
  Variant* slots;
  Variant** refs;
  Variant* localRefs[kLocalRefs];
  FramePush(RunCore& r, size_t nSlots, size_t nParams)
      : run(r), valueMark(r.values.Save()), refMark{}, slotCount(nSlots), paramCount(nParams) {
    slots = r.values.Push(nSlots);
    if (nParams <= kLocalRefs) {
      refs = localRefs;
    } else {
      refMark = r.refs.Save();
      refs = r.refs.Push(nParams);
    }
    ++r.depth;
  }
  ~FramePush() {
    --run.depth;
    if (refs != localRefs) [[unlikely]]
      run.refs.Restore(refMark, refs, paramCount);
    run.values.Restore(valueMark, slots, slotCount);
  }
  FramePush(const FramePush&) = delete;
  FramePush& operator=(const FramePush&) = delete;
};

}  // namespace corvane::script
