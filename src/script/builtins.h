// The language's built-in functions and named constants.
//
// Each function is a plain C++ function of its arguments (already evaluated, by value); those that
// need the running page (Rnd and Randomize keep the run's random sequence) get it through
// BuiltinContext. The functions that reach into the interpreter itself (Eval, Execute,
// ExecuteGlobal, GetRef, CreateObject, IsObject on names...) are the interpreter's, not listed here.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "corvane/variant.h"

namespace corvane::script {

// The state of one run that built-ins may use.
class BuiltinContext {
 public:
  virtual ~BuiltinContext() = default;
  // The run's random number generator state (Rnd, Randomize), as the platform's 24-bit generator.
  uint32_t randomSeed = 0x50000;
  float lastRandom = 0;
  // The run's locale id (Session.LCID / Response.LCID); 0 is the server's.
  int32_t lcid = 0;
  // The page's ANSI code page (Session.CodePage / the page directive), for Asc, Chr and String.
  int codePage = 936;
};

using BuiltinCall = Variant (*)(BuiltinContext& context, Args& args);

struct Builtin {
  std::string_view name;  // as written in the language's documentation: "InStrRev"
  int8_t minArgs;
  int8_t maxArgs;  // -1: any number (Array)
  BuiltinCall call;
};

// The built-in function of that name (case-insensitive), or nullptr.
const Builtin* FindBuiltin(std::string_view name);
// TypeName's answer: the kind's name ("Integer", "Variant()"), an object's class name, "Nothing".
std::string TypeNameOf(const Variant& v);
// The value of a named constant (vbCrLf, vbTextCompare, vbSunday, ...; case-insensitive), or nullptr.
const Variant* FindConstant(std::string_view name);

}  // namespace corvane::script
