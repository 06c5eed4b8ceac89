#include "script_host.h"

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "error_page.h"
#include "page_runner.h"

namespace corvane::server {

namespace {

// Which of the page's objects a run of global.asa's code sees: Application_OnStart has no request
// and no session, Session_OnEnd no request.
enum Sees : int { kApplication = 0, kSession = 1, kRequest = 2, kAll = kSession | kRequest };

constexpr std::string_view kGlobalAsa = "/global.asa";

bool HasCode(std::string_view code) { return code.find_first_not_of(" \t\r\n") != std::string_view::npos; }

}  // namespace

ScriptHost::ScriptHost(host::PageHost pageHost, int codePage, std::function<void(const std::string&)> log,
                       std::chrono::milliseconds checkEvery)
    : pageHost_(std::move(pageHost)),
      codePage_(codePage),
      log_(std::move(log)),
      checkEvery_(checkEvery),
      cache_(pageHost_.siteFolder, codePage, checkEvery) {
  if (!pageHost_.application) pageHost_.application = std::make_shared<host::Application>();
  if (!pageHost_.createObject)
    pageHost_.createObject = [](std::string_view progID) -> Object {
      throw Error::CannotCreateObject(std::string(progID));
    };
  pageHost_.runPage = Runner();
}

host::PageHost ScriptHost::EventHost() const {
  host::PageHost h = pageHost_;
  h.runPage = nullptr;  // an event that runs while global.asa is being read may not run pages
  return h;
}

void ScriptHost::ReadGlobal() {
  auto global = std::make_shared<Global>();
  if (std::optional<ScriptCache::Loaded> loaded = cache_.Load(kGlobalAsa)) {
    global->stamp = std::move(loaded->stamp);
    GlobalAsaText text = ParseGlobalAsa(loaded->file.text);
    global->objects = std::move(text.objects);
    try {
      if (HasCode(text.code)) global->code = script::CompileScript(text.code, loaded->file.path, 1);
    } catch (const script::ScriptError& e) {
      global->error = e;
    }
  } else {
    // No global.asa: the folder's stamp changes when one is created.
    global->stamp = FileStamp::Of(pageHost_.siteFolder);
  }
  if (global_ && global_->started) {  // the application starts again
    host::Page page(host::PageRequest{.url = std::string(kGlobalAsa), .codePage = codePage_}, host::Session(),
                    EventHost());
    try {
      RunEvent(*global_, "Application_OnEnd", *page.ContextObject(), kApplication);
    } catch (const Error& e) {
      log_(ErrorLogLine(ReportOf(e, kGlobalAsa)));
    } catch (const PageEnd&) {
    }
    pageHost_.application->StaticObjects().Clear();
  }
  global_ = std::move(global);
}

void ScriptHost::StartApplication() {
  std::lock_guard lock(globalMu_);
  auto now = std::chrono::steady_clock::now();
  if (!global_ || now - globalChecked_ >= checkEvery_) {
    globalChecked_ = now;
    if (!global_ || global_->stamp.Changed()) ReadGlobal();
  }
  if (global_->error) throw *global_->error;
  if (global_->started) return;
  if (global_->code) {
    host::Page page(host::PageRequest{.url = std::string(kGlobalAsa), .codePage = codePage_}, host::Session(),
                    EventHost());
    RunEvent(*global_, "Application_OnStart", *page.ContextObject(), kApplication);
    for (const host::EndPageError& e : page.End()) log_(EndPageErrorLine(std::string(kGlobalAsa), e));
  }
  global_->started = true;
}

std::shared_ptr<ScriptHost::Global> ScriptHost::CurrentGlobal() {
  std::lock_guard lock(globalMu_);
  return global_;
}

void ScriptHost::StartSession(host::Page& page) {
  if (std::shared_ptr<Global> global = CurrentGlobal())
    RunEvent(*global, "Session_OnStart", *page.ContextObject(), kAll);
}

void ScriptHost::EndSession(const std::shared_ptr<host::SessionObject>& session) {
  std::shared_ptr<Global> global = CurrentGlobal();
  if (!global || !global->code) return;
  host::Page page(host::PageRequest{.url = std::string(kGlobalAsa), .codePage = codePage_},
                  host::Session(session), EventHost());
  try {
    RunEvent(*global, "Session_OnEnd", *page.ContextObject(), kSession);
  } catch (const Error& e) {
    log_(ErrorLogLine(ReportOf(e, kGlobalAsa)));
  } catch (const PageEnd&) {
  }
  for (const host::EndPageError& e : page.End()) log_(EndPageErrorLine(std::string(kGlobalAsa), e));
}

void ScriptHost::RunEvent(const Global& global, std::string_view event, host::ScriptingContext& context,
                          int sees) {
  if (!global.code) return;
  script::ScriptRun run(global.code, ContextFor(context, nullptr, global, sees));
  run.Run();
  if (run.HasProcedure(event)) run.Call(event);
}

int ScriptHost::CodePageFor(const CachedPage& page, const host::SessionObject& session) const {
  int directive = page.compiled->Directives().codePage;
  if (directive != 0 && IsSupportedCodePage(directive)) return directive;
  return session.CodePage() != 0 ? session.CodePage() : codePage_;
}

script::RunContext ScriptHost::ContextFor(host::ScriptingContext& c, const CachedPage* page,
                                          const Global& global, int sees) {
  script::RunContext rc;
  if (sees & kRequest) {
    rc.objects.emplace_back("Request", Variant(Object(c.Request())));
    rc.objects.emplace_back("Response", Variant(Object(c.Response())));
  }
  if (sees & kSession) rc.objects.emplace_back("Session", Variant(Object(c.Session())));
  rc.objects.emplace_back("Server", Variant(Object(c.Server())));
  rc.objects.emplace_back("Application", Variant(Object(c.Application())));
  for (const DeclaredObject& o : global.objects) {
    if (!page || !page->Names(o.id)) continue;
    Variant value;
    if (o.scope == DeclaredObject::Scope::Page) {
      value = Variant(c.Server()->CreateObject(o.progID));
    } else {
      std::unique_lock lock(objectsMu_, std::defer_lock);
      if (o.scope == DeclaredObject::Scope::Application) lock.lock();
      host::Contents& kept = o.scope == DeclaredObject::Scope::Application ? c.Application()->StaticObjects()
                                                                           : c.Session()->StaticObjects();
      value = kept.Get(o.id);
      if (value.IsEmpty()) {
        value = Variant(pageHost_.createObject(o.progID));
        kept.Set(o.id, value);
      }
    }
    rc.objects.emplace_back(o.id, std::move(value));
  }
  rc.createObject = pageHost_.createObject;
  host::Response* response = c.Response().get();
  rc.write = [response](std::string_view text) { response->Write(text); };
  host::Server* server = c.Server().get();
  rc.timeoutSeconds = [server] { return server->ScriptTimeout(); };
  return rc;
}

void ScriptHost::Run(const CachedPage& page, host::ScriptingContext& context) {
  static const Global kNoGlobal;
  std::shared_ptr<Global> global = CurrentGlobal();
  if (int lcid = page.compiled->Directives().lcid) context.Response()->lcid = lcid;
  script::ScriptRun run(page.compiled, ContextFor(context, &page, global ? *global : kNoGlobal, kAll));
  run.Run();
}

host::PageRunner ScriptHost::Runner() {
  return [this](std::string_view sitePath, host::ScriptingContext& context) {
    std::shared_ptr<const CachedPage> page = Find(sitePath);
    if (!page) throw host::HostError("Server.Execute: there is no page " + std::string(sitePath));
    Run(*page, context);
  };
}

}  // namespace corvane::server
