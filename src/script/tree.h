// The compiled tree: expressions and statements with their names resolved to slots, the procedures
// and classes of a piece of code. Built once by the parser, never changed afterwards, and shared by
// every run of it (all run state lives in RunCore and in the Frames of the running procedures).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "corvane/object.h"
#include "corvane/variant.h"
#include "script/token.h"

namespace corvane::script {

class RunCore;
class ScriptObject;
struct ProcDef;
struct ClassDef;

// The state of one running procedure (or of the page's own code).
struct Frame {
  RunCore* run;
  Variant* globals;         // the page's globals (those added while running are the run's)
  Variant* slots;           // locals, the parameters first
  Variant** refs;           // where each parameter lives: the caller's variable when ByRef
  ScriptObject* me;         // the instance a class's procedure runs for
  const ProcDef* proc;      // nullptr for the page's own code
  bool resumeNext = false;  // On Error Resume Next is in force
};

// How a statement ends: normally, or leaving its loop or procedure (Exit For/Do/Sub/...).
enum class Flow : uint8_t { Normal, ExitFor, ExitDo, ExitProc };

class Expr {
 public:
  explicit Expr(Pos p) : pos(p) {}
  virtual ~Expr() = default;
  // The value as the code reads it; objects stay objects (the caller takes a default value where
  // it needs one).
  virtual Variant Eval(Frame& f) const = 0;
  // A variable's own storage, to read it without a copy; nullptr for a computed value.
  virtual const Variant* Peek(Frame&) const { return nullptr; }
  // A variable's storage for writing (ByRef arguments, For counters); nullptr when the expression
  // is not a plain variable.
  virtual Variant* Ref(Frame&) const { return nullptr; }
  // `target = value` (Let) or `Set target = value`. Raises 501 where nothing can be assigned.
  virtual void Assign(Frame& f, Variant value, bool isSet) const;
  // Eval into `out` (the target of an assignment), in place where it can.
  virtual void EvalInto(Frame& f, Variant& out) const { out = Eval(f); }
  // As a condition (If, While): the value's truth, which comparisons give without a Variant.
  virtual bool Test(Frame& f) const;
  // As a statement of its own (`Proc a, b`, `obj.Method`): evaluated, the result dropped.
  virtual void Exec(Frame& f) const { Eval(f); }
  // The value of a literal or named constant written in the code (they compare by the literal's
  // rules); nullptr otherwise.
  virtual const Variant* Literal() const { return nullptr; }
  // An element of an array variable, a(i) (passed ByRef by copy and copied back after the call).
  virtual const class IndexExpr* AsIndex() const { return nullptr; }
  // Whether Peek, Ref or AsIndex can give anything: variables and indexing (not computed values).
  virtual bool MayReference() const { return false; }

  Pos pos;
  int depth = 1;  // height of the tree it heads
};
using ExprPtr = std::unique_ptr<Expr>;

// Statements that blocks and loops run without a virtual call (run_inline.h).
enum class StmtKind : uint8_t { Other, Assign };

class Stmt {
 public:
  explicit Stmt(Pos p, StmtKind k = StmtKind::Other) : pos(p), kind(k) {}
  virtual ~Stmt() = default;
  virtual Flow Exec(Frame& f) const = 0;
  Pos pos;
  const StmtKind kind;
};
using StmtPtr = std::unique_ptr<Stmt>;

// Statements run in order. An error in one of them, under On Error Resume Next, is recorded in Err
// and the next statement runs.
class Block {
 public:
  Flow Exec(Frame& f) const;
  // The same, inlined where procedures' bodies and If's branches run (defined in run_inline.h).
  inline Flow ExecInline(Frame& f) const;
  std::vector<StmtPtr> stmts;
};

// A fixed-size array a Dim declares (Dim a(3, 4)): made when its scope starts.
struct ArrayDecl {
  int slot;
  std::vector<VariantArray::Bound> bounds;
};

enum class ProcKind : uint8_t { Sub, Function, PropertyGet, PropertyLet, PropertySet };

struct ProcDef {
  std::string name;
  ProcKind kind = ProcKind::Sub;
  const ClassDef* cls = nullptr;  // the class it belongs to, if any
  bool isPublic = true;
  Pos pos;
  std::vector<std::string> params;
  std::vector<bool> byRef;
  int slotCount = 0;    // parameters, locals, hidden slots (With) and the result
  int returnSlot = -1;  // Functions and Property Get
  std::vector<ArrayDecl> arrays;
  Block body;
  // Lower-case names of locals to their slots, and local constants (for Eval and Execute).
  std::unordered_map<std::string, int> locals;
  std::unordered_map<std::string, Variant> consts;
  // Names assigned in the body without a declaration (true: by ReDim, which declares them): they
  // are the procedure's own variables unless a global has the name.
  std::unordered_map<std::string, bool> assigned;

  bool ReturnsValue() const { return returnSlot >= 0; }
};

// A member of a script class: a field, a Sub or Function, or the accessors of a property.
struct ClassMember {
  std::string name;
  bool isPublic = true;
  int field = -1;
  const ProcDef* method = nullptr;
  const ProcDef* get = nullptr;
  const ProcDef* let = nullptr;
  const ProcDef* set = nullptr;
  const ClassDef* owner = nullptr;
  int index = 0;
};

struct FieldDecl {
  std::string name;
  bool isPublic = true;
  bool isArray = false;  // Dim a() or Dim a(3)
  std::vector<VariantArray::Bound> bounds;
};

struct ClassDef {
  std::string name;
  Pos pos;
  std::vector<FieldDecl> fields;
  std::vector<std::unique_ptr<ProcDef>> procs;
  std::vector<std::unique_ptr<ClassMember>> members;
  std::unordered_map<std::string, ClassMember*> byName;  // lower-case
  const ClassMember* defaultMember = nullptr;
  const ProcDef* initialize = nullptr;
  const ProcDef* terminate = nullptr;
  ClassInfo info;  // how code outside the interpreter calls an instance

  const ClassMember* Find(std::string_view lowerName) const {
    auto it = byName.find(std::string(lowerName));
    return it == byName.end() ? nullptr : it->second;
  }
};

// A compiled piece of code: a page, or code handed to Execute, ExecuteGlobal or Eval.
struct Unit {
  virtual ~Unit() = default;
  std::vector<std::unique_ptr<ProcDef>> procs;
  std::vector<std::unique_ptr<ClassDef>> classes;
  Block body;
  ExprPtr expr;                   // Eval's expression
  std::vector<ArrayDecl> arrays;  // global Dim a(3): slots are global indices
};

std::string Lower(std::string_view s);

}  // namespace corvane::script
