// The host of the site's script pages: finds and compiles them (script_cache.h), runs them with the
// page's host objects, and runs the application's events from global.asa.
//
// global.asa is read when the first page comes and read again when it changes (looked at no more
// than once per check interval; a change starts the application again: Application_OnStart runs
// again before the next page, and the application's declared objects are made anew). A declared
// <object runat=server> is created when a page that names it first runs: an application's once, a
// session's once per session, a page's for each page (through Server.CreateObject, so it gets
// OnStartPage and OnEndPage).
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/host.h"
#include "corvane/script.h"
#include "global_asa.h"
#include "script_cache.h"

namespace corvane::server {

class ScriptHost {
 public:
  // `pageHost` gives the application, the class factory and the site folder; `log` takes the lines
  // of errors no page shows (Session_OnEnd's).
  ScriptHost(host::PageHost pageHost, int codePage, std::function<void(const std::string&)> log,
             std::chrono::milliseconds checkEvery = std::chrono::seconds(1));

  // The script page at a site path; nullptr when there is none. Raises script::ScriptError when it
  // does not compile.
  std::shared_ptr<const CachedPage> Find(std::string_view sitePath) { return cache_.Get(sitePath); }

  // Before a page: reads global.asa when it is new or changed and runs Application_OnStart when it
  // has not run since. Raises script::ScriptError for global.asa's errors (then again for every page
  // until global.asa changes or OnStart succeeds).
  void StartApplication();
  // Session_OnStart of a new session, in its first page (with that page's objects).
  void StartSession(host::Page& page);
  // Session_OnEnd of a session that timed out or was abandoned; its errors go to the log.
  void EndSession(const std::shared_ptr<host::SessionObject>& session);

  // The code page a page runs in: its CODEPAGE directive, else its session's, else the server's.
  int CodePageFor(const CachedPage& page, const host::SessionObject& session) const;
  // Runs a compiled page in the page of `context`: its host objects, the declared objects it
  // names, the class factory, Response.Write and Server.ScriptTimeout. Raises script::ScriptError;
  // PageEnd passes through.
  void Run(const CachedPage& page, host::ScriptingContext& context);
  // Server.Execute and Server.Transfer: runs the page at a site path in the page of `context`.
  host::PageRunner Runner();

 private:
  struct Global {
    std::shared_ptr<const script::CompiledPage> code;  // nullptr: no global.asa, or no code in it
    std::vector<DeclaredObject> objects;
    std::optional<script::ScriptError> error;  // global.asa does not compile
    FileStamp stamp;
    bool started = false;  // Application_OnStart has run
  };

  std::shared_ptr<Global> CurrentGlobal();
  host::PageHost EventHost() const;  // the page host of global.asa's events
  void ReadGlobal();                 // the caller holds globalMu_
  script::RunContext ContextFor(host::ScriptingContext& context, const CachedPage* page, const Global& global,
                                int sees);
  // Runs `event` of global.asa, when it has one, with these objects.
  void RunEvent(const Global& global, std::string_view event, host::ScriptingContext& context, int sees);

  host::PageHost pageHost_;
  int codePage_;
  std::function<void(const std::string&)> log_;
  std::chrono::milliseconds checkEvery_;
  ScriptCache cache_;
  std::mutex globalMu_;  // held while global.asa is read and Application_OnStart runs
  std::shared_ptr<Global> global_;
  std::chrono::steady_clock::time_point globalChecked_;
  std::mutex objectsMu_;  // held while an application object is created
};

}  // namespace corvane::server
