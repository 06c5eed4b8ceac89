// The public face of the engine (corvane/script.h): compiling pages and running them.
#include <new>

#include "corvane/script.h"
#include "corvane/text.h"
#include "script/compile.h"
#include "script/run_core.h"
#include "script/vbs_errors.h"

namespace corvane::script {

std::shared_ptr<const CompiledPage> CompilePage(std::string_view sitePath, const FileLoader& load) {
  return CompileProgram(ExpandPage(sitePath, load), true);
}

std::shared_ptr<const CompiledPage> CompileScript(std::string_view code, std::string_view file,
                                                  int firstLine) {
  return CompileProgram(PlainSource(code, file, firstLine), false);
}

struct ScriptRun::State {
  std::unique_ptr<RunCore> core;

  // Runs `f`, turning an untrapped error into a ScriptError at the statement that raised it.
  template <class F>
  auto Guard(F&& f) -> decltype(f()) {
    try {
      return f();
    } catch (const ScriptError&) {
      throw;
    } catch (const Error& e) {
      throw Located(e);
    } catch (const std::bad_alloc&) {
      throw Located(LanguageError(7));
    } catch (const std::exception& e) {
      throw Located(Error(51, std::string("Internal error: ") + e.what()));
    }
  }

  ScriptError Located(const Error& e) const {
    Pos pos = core->current ? core->current->pos : Pos{};
    return MakeScriptError(e, pos, core->program().sources, false);
  }
};

ScriptRun::ScriptRun(std::shared_ptr<const CompiledPage> page, RunContext context)
    : state_(std::make_unique<State>()) {
  auto program = std::dynamic_pointer_cast<const Program>(page);
  if (!program) throw Error::InvalidCall();
  state_->core = std::make_unique<RunCore>(std::move(program), std::move(context));
}

ScriptRun::~ScriptRun() = default;

void ScriptRun::Run() {
  state_->Guard([&] { state_->core->RunMain(); });
}

bool ScriptRun::HasProcedure(std::string_view name) const {
  const std::string lower = Lower(name);
  return state_->core->program().procIndex.count(lower) || state_->core->FindDynamicProc(lower);
}

Variant ScriptRun::Call(std::string_view name, Args args) {
  const std::string lower = Lower(name);
  RunCore& core = *state_->core;
  const ProcDef* p = nullptr;
  if (auto it = core.program().procIndex.find(lower); it != core.program().procIndex.end()) p = it->second;
  if (!p) p = core.FindDynamicProc(lower);
  if (!p)
    throw ScriptError(Error(kNotDefined, std::string(ErrorDescription(kNotDefined)), std::string(name)), {},
                      "", false);
  return state_->Guard([&] {
    core.current = nullptr;
    Variant result = core.CallWithValues(*p, nullptr, args);
    core.RunTerminations();
    return result;
  });
}

}  // namespace corvane::script
