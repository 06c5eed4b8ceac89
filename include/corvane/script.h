// Script pages: VBScript server pages (.asp) compiled once and run by many requests.
//
// A page's text is compiled with its includes into one tree (CompilePage); the tree is immutable and
// may run on many threads at once. A run (ScriptRun) binds it to one request: the named objects the
// page sees (Request, Response, Session, Server, Application and the site's declared objects), the
// class factory behind CreateObject, and where the page's text goes. Values are runtime Variants and
// calls on objects are late-bound through Object, so a value behaves in a page as it does in C++.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "corvane/error.h"
#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane::script {

// Where in a page's files something is: the site path of the file ("/inc/menu.inc"), 1-based line
// and column (0 when unknown).
struct SourcePosition {
  std::string file;
  int line = 0;
  int column = 0;
};

// An error a page raised and did not trap, or a syntax error found while compiling it: the
// platform's number and description, where it happened and the text of that source line.
class ScriptError : public Error {
 public:
  ScriptError(const Error& error, SourcePosition where, std::string sourceLine, bool compileError)
      : Error(error), where_(std::move(where)), sourceLine_(std::move(sourceLine)), compile_(compileError) {}
  const SourcePosition& Where() const { return where_; }
  const std::string& SourceLine() const { return sourceLine_; }
  bool IsCompileError() const { return compile_; }

 private:
  SourcePosition where_;
  std::string sourceLine_;
  bool compile_;
};

// One file of a page as the loader found it: its site path as resolved (the case it has on disk)
// and its text (UTF-8).
struct PageFile {
  std::string path;
  std::string text;
};
// Finds a file by site path ("/a/b.asp"), case-blind as the site's file system is; nullopt when
// there is none. The compiler resolves include paths to site paths itself: file="x" relative to the
// including file's folder, virtual="/x" from the site root.
using FileLoader = std::function<std::optional<PageFile>(std::string_view sitePath)>;

// The page's <%@ ... %> directive.
struct PageDirectives {
  std::string language = "VBSCRIPT";
  int codePage = 0;  // 0: the server's
  int lcid = 0;      // 0: the server's
  bool enableSessionState = true;
};

// A compiled page or script: immutable, shared by the runs of it.
class CompiledPage {
 public:
  virtual ~CompiledPage() = default;
  virtual const PageDirectives& Directives() const = 0;
  // The site paths of the files it was compiled from (the page first, then its includes), for a
  // cache that recompiles when one of them changes.
  virtual const std::vector<std::string>& Files() const = 0;
};

// Compiles the page at `sitePath` and its includes. Raises ScriptError for a syntax error, a missing
// include or an include cycle (naming the file and line of the include directive).
std::shared_ptr<const CompiledPage> CompilePage(std::string_view sitePath, const FileLoader& load);
// Compiles plain script code (no <% %>): the code of global.asa's <script runat=server> blocks, or
// code handed over by a host program. `file` names it in error reports; `firstLine` is the line of
// the file the code starts on.
std::shared_ptr<const CompiledPage> CompileScript(std::string_view code, std::string_view file,
                                                  int firstLine = 1);

// What one run of a compiled page sees.
struct RunContext {
  // Names the page sees as objects: "Request", "Response", ... and declared <object> tags.
  std::vector<std::pair<std::string, Variant>> objects;
  // The class factory behind CreateObject(...) (Server.CreateObject is the Server object's own).
  std::function<Object(std::string_view progID)> createObject;
  // Where the page's literal text and <%= %> go (UTF-8). When unset, they go to
  // objects["Response"].Write.
  std::function<void(std::string_view text)> write;
  // Seconds the page may run before it is stopped with an error (Server.ScriptTimeout). Asked now
  // and then while the page runs, so a page may change it; unset: no limit.
  std::function<int()> timeoutSeconds;
};

// One run of a compiled page: its global variables, procedures and classes live as long as the run.
class ScriptRun {
 public:
  ScriptRun(std::shared_ptr<const CompiledPage> page, RunContext context);
  ~ScriptRun();
  ScriptRun(const ScriptRun&) = delete;
  ScriptRun& operator=(const ScriptRun&) = delete;

  // Runs the page's code from the top. Raises ScriptError for an untrapped error; PageEnd
  // (Response.End) passes through.
  void Run();
  // Whether the page defines a Sub or Function of that name (global.asa's Session_OnStart, ...).
  bool HasProcedure(std::string_view name) const;
  // Calls a Sub or Function of the page after Run(); raises ScriptError as Run does.
  Variant Call(std::string_view name, Args args = {});

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace corvane::script
