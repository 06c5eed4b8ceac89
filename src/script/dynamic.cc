// Code compiled while a page runs: Eval, Execute, ExecuteGlobal; and GetRef.
#include "corvane/error.h"
#include "script/compile.h"
#include "script/lexer.h"
#include "script/nodes.h"
#include "script/run_core.h"
#include "script/script_object.h"
#include "script/stmts.h"
#include "script/vbs_errors.h"

namespace corvane::script {

// The page's names and those the run added, for code compiled while it runs. A name the page never
// used but the host provides (Response, ...) becomes a global of the run when the code uses it.
class RunNames : public Names {
 public:
  explicit RunNames(RunCore& r) : r_(r) {}
  int FindGlobal(const std::string& lower) const override {
    int g = r_.FindGlobal(lower);
    if (g < 0 && r_.namedObjects_.count(lower)) g = r_.AddGlobal(lower, false);
    return g;
  }
  bool IsDeclared(int global) const override { return r_.GlobalDeclared(global); }
  int AddGlobal(const std::string& name, bool declared) override { return r_.AddGlobal(name, declared); }
  void Declare(int global) override { r_.Declare(global); }
  const ProcDef* FindProc(const std::string& lower) const override {
    auto it = r_.program().procIndex.find(lower);
    return it != r_.program().procIndex.end() ? it->second : r_.FindDynamicProc(lower);
  }
  const ClassDef* FindClass(const std::string& lower) const override {
    auto it = r_.program().classIndex.find(lower);
    return it != r_.program().classIndex.end() ? it->second : r_.FindDynamicClass(lower);
  }
  const Variant* FindConst(const std::string& lower) const override {
    auto it = r_.program().consts.find(lower);
    return it != r_.program().consts.end() ? &it->second : r_.FindDynamicConst(lower);
  }
  bool OptionExplicit() const override { return r_.program().optionExplicit; }

 private:
  RunCore& r_;
};

namespace {

// Compiles `code` into `unit` as code of the frame `f` (or of the page, for ExecuteGlobal); errors
// are reported at `at`, the statement that asked.
Declarations CompileDynamic(RunCore& run, Frame& f, const std::string& code, Pos at, bool global,
                            bool expression, Unit& unit) {
  PositionMap positions(at);
  RunNames names(run);
  try {
    std::vector<Token> tokens = Tokenize(code, false);
    PlaceTokens(tokens, positions);
    ParseInput in;
    in.tokens = &tokens;
    in.positions = &positions;
    in.names = &names;
    in.unit = &unit;
    in.dynamic = true;
    if (!global) {
      in.scopeProc = f.proc;
      in.scopeClass = f.me ? &f.me->cls() : nullptr;
    }
    if (expression) {
      ParseExpressionOnly(in);
      return {};
    }
    return ParseStatements(in);
  } catch (const LexError& e) {
    throw MakeScriptError(LanguageError(e.number), at, run.program().sources, true);
  } catch (const CompileFailure& e) {
    throw MakeScriptError(LanguageError(e.number), at, run.program().sources, true);
  }
}

}  // namespace

Variant RunCore::EvalText(Frame& f, const std::string& code, Pos at) {
  auto unit = std::make_shared<Unit>();
  CompileDynamic(*this, f, code, at, false, true, *unit);
  return unit->expr->Eval(f);
}

void RunCore::ExecuteText(Frame& f, const std::string& code, Pos at, bool global) {
  auto unit = std::make_shared<Unit>();
  Declarations d = CompileDynamic(*this, f, code, at, global, false, *unit);
  for (auto& [name, proc] : d.procs) dynamicProcs_[name] = proc;
  for (auto& [name, cls] : d.classes) dynamicClasses_[name] = cls;
  for (auto& [name, value] : d.consts) dynamicConsts_[name] = value;
  dynamicUnits_.push_back(unit);
  for (const ArrayDecl& a : unit->arrays) MakeFixedArray(Global(a.slot), a.bounds);
  Frame g = global ? Frame{this, fixed_.get(), nullptr, nullptr, nullptr, nullptr} : f;
  g.resumeNext = false;
  const Stmt* saved = current;
  unit->body.Exec(g);
  current = saved;
}

Object RunCore::ProcedureRef(const std::string& name) {
  const std::string lower = Lower(name);
  if (auto it = program_->procIndex.find(lower); it != program_->procIndex.end()) {
    return Object(std::make_shared<ProcRefObject>(
        *it->second, std::shared_ptr<const Unit>(program_, static_cast<const Unit*>(program_.get())), link_));
  }
  if (const ProcDef* p = FindDynamicProc(lower)) {
    for (const auto& unit : dynamicUnits_)
      for (const auto& owned : unit->procs)
        if (owned.get() == p) return Object(std::make_shared<ProcRefObject>(*p, unit, link_));
  }
  throw Error::InvalidCall();
}

}  // namespace corvane::script
