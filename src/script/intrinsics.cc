// The built-ins that reach into the interpreter: Eval, Execute, ExecuteGlobal, GetRef,
// CreateObject, and the ones that look at objects as they are (IsObject, TypeName, VarType, ...).
#include "corvane/error.h"
#include "corvane/text.h"
#include "script/builtins.h"
#include "script/nodes.h"
#include "script/run_core.h"
#include "script/vbs_errors.h"

namespace corvane::script {

namespace {

struct IntrinsicName {
  std::string_view name;  // lower case
  Intrinsic which;
  int minArgs, maxArgs;
};

constexpr IntrinsicName kIntrinsics[] = {
    {"eval", Intrinsic::Eval, 1, 1},
    {"execute", Intrinsic::Execute, 1, 1},
    {"executeglobal", Intrinsic::ExecuteGlobal, 1, 1},
    {"getref", Intrinsic::GetRef, 1, 1},
    {"createobject", Intrinsic::CreateObject, 1, 2},
    {"getobject", Intrinsic::GetObject, 0, 2},
    {"isobject", Intrinsic::IsObject, 1, 1},
    {"isarray", Intrinsic::IsArray, 1, 1},
    {"isempty", Intrinsic::IsEmpty, 1, 1},
    {"typename", Intrinsic::TypeName, 1, 1},
    {"vartype", Intrinsic::VarType, 1, 1},
    {"scriptengine", Intrinsic::ScriptEngine, 0, 0},
    {"scriptenginemajorversion", Intrinsic::ScriptEngineMajorVersion, 0, 0},
    {"scriptengineminorversion", Intrinsic::ScriptEngineMinorVersion, 0, 0},
    {"scriptenginebuildversion", Intrinsic::ScriptEngineBuildVersion, 0, 0},
};

int VarTypeOf(const Variant& v) {
  if (!v.IsObject()) return v.Type();
  if (v.ToObject().IsNothing()) return vtObject;
  try {
    return DefaultValue(v).Type();
  } catch (const Error&) {
    return vtObject;
  }
}

}  // namespace

bool FindIntrinsic(std::string_view name, Intrinsic* which, int* minArgs, int* maxArgs) {
  for (const IntrinsicName& i : kIntrinsics) {
    if (EqualsNoCase(i.name, name)) {
      *which = i.which;
      *minArgs = i.minArgs;
      *maxArgs = i.maxArgs;
      return true;
    }
  }
  return false;
}

IntrinsicExpr::IntrinsicExpr(Pos p, Intrinsic which, ExprList args)
    : Expr(p), which_(which), args_(std::move(args)) {
  for (const IntrinsicName& i : kIntrinsics) {
    if (i.which == which_) {
      minArgs_ = i.minArgs;
      maxArgs_ = i.maxArgs;
    }
  }
}

Variant IntrinsicExpr::Eval(Frame& f) const {
  const int n = static_cast<int>(args_.size());
  if (n < minArgs_ || n > maxArgs_) throw LanguageError(kWrongArgumentCount);
  RunCore& run = *f.run;
  auto arg = [&](int i) { return args_[i]->Eval(f); };
  auto text = [&](int i) { return LetValue(arg(i)).ToString(); };
  switch (which_) {
    case Intrinsic::Eval: return run.EvalText(f, text(0), pos);
    case Intrinsic::Execute: run.ExecuteText(f, text(0), pos, false); return {};
    case Intrinsic::ExecuteGlobal: run.ExecuteText(f, text(0), pos, true); return {};
    case Intrinsic::GetRef: return Variant(run.ProcedureRef(text(0)));
    case Intrinsic::CreateObject: {
      std::string progID = text(0);
      Object o;
      if (run.context().createObject) o = run.context().createObject(progID);
      if (o.IsNothing()) throw Error::CannotCreateObject(progID);
      return Variant(o);
    }
    case Intrinsic::GetObject: throw Error::CannotCreateObject(n ? text(n - 1) : "");
    case Intrinsic::IsObject: return Variant(arg(0).IsObject());
    case Intrinsic::IsArray: {
      Variant v = arg(0);
      return Variant(v.IsArray() || v.IsBytes());
    }
    case Intrinsic::IsEmpty: return Variant(arg(0).IsEmpty());
    case Intrinsic::TypeName: return Variant(TypeNameOf(arg(0)));
    case Intrinsic::VarType: return Variant(static_cast<int16_t>(VarTypeOf(arg(0))));
    case Intrinsic::ScriptEngine: return Variant("VBScript");
    case Intrinsic::ScriptEngineMajorVersion: return Variant(int32_t{5});
    case Intrinsic::ScriptEngineMinorVersion: return Variant(int32_t{8});
    case Intrinsic::ScriptEngineBuildVersion: return Variant(int32_t{16384});
  }
  return {};
}

}  // namespace corvane::script
