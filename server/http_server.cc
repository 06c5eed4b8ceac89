#include "http_server.h"

#include <atomic>
#include <cctype>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "batched_lines.h"
#include "corvane/text.h"
#include "cross_site.h"
#include "error_page.h"
#include "http_listener.h"
#include "http_workers.h"
#include "page_runner.h"
#include "redis_sessions.h"
#include "script_host.h"
#include "session_store.h"
#include "static_files.h"

namespace corvane::server {

std::string CookieValue(std::string_view header, std::string_view name) {
  size_t pos = 0;
  while (pos < header.size()) {
    size_t end = header.find(';', pos);
    std::string_view part =
        header.substr(pos, end == std::string_view::npos ? std::string_view::npos : end - pos);
    pos = end == std::string_view::npos ? header.size() : end + 1;
    while (!part.empty() && part.front() == ' ') part.remove_prefix(1);
    size_t eq = part.find('=');
    if (eq != std::string_view::npos && part.substr(0, eq) == name) {
      std::string_view value = part.substr(eq + 1);
      while (!value.empty() && value.back() == ' ') value.remove_suffix(1);
      return std::string(value);
    }
  }
  return "";
}

namespace {

constexpr std::string_view kHealthPath = "/-/health";

// The request's headers as the host's server variables: HTTP_USER_AGENT, HTTP_COOKIE, ...
host::NameValues ServerVariablesOf(const HttpRequest& req) {
  host::NameValues vars = {
      {"REMOTE_ADDR", req.remoteAddr},  {"REMOTE_HOST", req.remoteAddr},
      {"LOCAL_ADDR", req.localAddr},    {"SERVER_PORT", std::to_string(req.localPort)},
      {"SERVER_PROTOCOL", req.version}, {"HTTPS", req.secure ? "on" : "off"},
  };
  for (const auto& [name, value] : req.headers) {
    std::string key = "HTTP_";
    for (char c : name)
      key += c == '-' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    vars.emplace_back(std::move(key), value);
  }
  if (std::string host = req.Header("Host"); !host.empty()) vars.emplace_back("SERVER_NAME", std::move(host));
  return vars;
}

// Whether a request path names a script page: it ends in ".asp", in any case.
bool IsScriptPagePath(std::string_view path) {
  return path.size() > 4 && EqualsNoCase(path.substr(path.size() - 4), ".asp");
}

// An error line on stderr, whole even when several threads write at once.
void LogError(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  std::fflush(stderr);
}

// Whether a session holds anything worth keeping it for: values, objects of session scope, or a
// sign-in (a new id asked for).
bool IsUsed(host::SessionObject& s) {
  return s.Values().Count() > 0 || s.StaticObjects().Count() > 0 || s.NewIDRequested();
}

// The page that answers when the sessions' store cannot be reached: nothing runs, and it says why.
HttpReply SessionsUnavailable(const HttpRequest& req, const std::string& cause) {
  LogError(EscapeForLog("corvane-server: 503 " + req.method + " " + req.path + ": " + cause));
  HttpReply reply = StatusPage(503, "会话暂时不可用 (the sessions cannot be reached)", cause);
  reply.Set("Cache-Control", "private, no-cache");
  reply.Set("Retry-After", "2");
  return reply;
}

// With --sessions, the sessions and the Application live in Redis.
std::shared_ptr<RedisSessions> SharedSessionsFor(const ServerOptions& o,
                                                 const std::shared_ptr<host::Application>& application) {
  if (o.sessions.empty()) return nullptr;
  auto shared = std::make_shared<RedisSessions>(
      ParseRedisUrl(o.sessions),
      RedisSessionsOptions{.lifetime = std::chrono::minutes(o.sessionLifetimeMinutes),
                           .maxSessions = o.maxSessions},
      LogError);
  shared->ShareApplication(application);
  return shared;
}

}  // namespace

struct HttpServer::Impl {
  ServerOptions options;
  PageRegistry pages;
  PageGuard guard;
  host::PageHost pageHost;
  std::vector<std::string> secrets;
  StaticFiles files;
  ScriptHost scripts;
  // The access log's lines on stdout; before the listener, whose connections log until they close.
  std::unique_ptr<BatchedLines> accessLog;
  // The listener, the sessions and the workers are declared in the order they can be taken down:
  // the workers first (the pages they run use the sessions and answer through the listener's
  // connections), then the sessions (whose waiting jobs hold connections), then the listener.
  HttpListener listener;
  std::shared_ptr<RedisSessions> shared;  // with --sessions
  SessionStore sessions;
  std::unique_ptr<WorkerPool> workers;
  std::atomic<bool> stopRequested{false};
  // Ends idle sessions now and then, so that Session_OnEnd runs soon after their time is up.
  std::jthread sweeper;

  Impl(ServerOptions o, PageRegistry p, host::PageHost h, std::vector<std::string> s)
      : options(std::move(o)),
        pages(std::move(p)),
        pageHost(std::move(h)),
        secrets(std::move(s)),
        files(options.site),
        scripts(SiteHost(pageHost, files), options.codePage, LogError),
        accessLog(options.accessLog ? std::make_unique<BatchedLines>(stdout) : nullptr),
        listener(ListenerOptionsOf(options, accessLog.get()),
                 [this](std::shared_ptr<HttpRequest> req, Responder respond) {
                   Handle(std::move(req), std::move(respond));
                 }),
        shared(SharedSessionsFor(options, pageHost.application)),
        sessions(
            SessionLimits{.idleTimeout = std::chrono::minutes(options.sessionTimeoutMinutes),
                          .lifetime = std::chrono::minutes(options.sessionLifetimeMinutes),
                          .maxSessions = options.maxSessions},
            nullptr, [this](const std::shared_ptr<host::SessionObject>& ended) { scripts.EndSession(ended); },
            [this](std::function<void()> job) { workers->Post(std::move(job)); }, shared),
        workers(std::make_unique<WorkerPool>(options.threads)) {
    pageHost.siteFolder = files.Root().string();
    pageHost.runPage = scripts.Runner();
    sweeper = std::jthread([this](std::stop_token stop) {
      std::mutex mu;
      std::condition_variable_any wake;
      std::unique_lock lock(mu);
      while (!wake.wait_for(lock, stop, std::chrono::seconds(5), [] { return false; }) &&
             !stop.stop_requested())
        workers->Post([this] { sessions.Sweep(); });  // Session_OnEnd runs scripts: on a worker
    });
  }

  ~Impl() {
    sweeper = {};
    sessions.StopRetries();
    workers.reset();
  }

  static ListenerOptions ListenerOptionsOf(const ServerOptions& o, BatchedLines* accessLog) {
    ListenerOptions l{.bind = o.bind,
                      .port = o.port,
                      .ioThreads = o.ioThreads,
                      .maxBodyBytes = o.maxBodyBytes,
                      .maxHeaderBytes = o.maxHeaderBytes,
                      .headerTimeout = std::chrono::milliseconds(o.headerTimeoutMs),
                      .keepAliveTimeout = std::chrono::milliseconds(o.keepAliveTimeoutMs),
                      .maxConnectionsPerClient = o.maxConnectionsPerClient,
                      .tlsCert = o.tlsCert,
                      .tlsKey = o.tlsKey};
    // Every reply, pages, files and errors alike: no guessing of content types, no framing by other
    // sites, no full addresses sent to other sites.
    l.defaultHeaders = {{"X-Content-Type-Options", "nosniff"},
                        {"Content-Security-Policy", "frame-ancestors 'self'"},
                        {"Referrer-Policy", "same-origin"}};
    if (accessLog)
      l.log = [accessLog, json = o.logJson](const AccessRecord& r) {
        accessLog->Add(json ? JsonLogLine(r) : CombinedLogLine(r));
      };
    return l;
  }

  // The page host of the script pages: the server's, with the site folder.
  static host::PageHost SiteHost(host::PageHost h, const StaticFiles& files) {
    h.siteFolder = files.Root().string();
    return h;
  }

  // On an I/O thread: the health check, refusals and static files are answered here; pages (and
  // folders, which may have a default page) go to their session's queue and run on a worker.
  void Handle(std::shared_ptr<HttpRequest> req, Responder respond) {
    if (req->path == kHealthPath) {
      HttpReply ok;
      ok.SetContent("ok", "text/plain; charset=utf-8");
      ok.Set("Cache-Control", "no-store");
      return respond(std::move(ok));
    }
    if (IsCrossSiteWrite(*req)) return respond(CrossSiteRefusal(*req));
    if (pages.Find(req->path) || IsScriptPagePath(req->path) || req->path.back() == '/') {
      if (req->method != "GET" && req->method != "HEAD" && req->method != "POST") {
        HttpReply refused = StatusPage(405);
        refused.Set("Allow", "GET, HEAD, POST");
        return respond(std::move(refused));
      }
      sessions.Submit(CookieValue(req->Header("Cookie"), kSessionCookie),
                      [this, req, respond](SessionStore::Lease& lease) {
                        HttpReply reply;
                        try {
                          reply = lease.Unavailable().empty()
                                      ? ServeWithSession(*req, lease)
                                      : SessionsUnavailable(*req, lease.Unavailable());
                        } catch (const SessionStoreError& e) {
                          reply = SessionsUnavailable(*req, e.what());
                        } catch (const std::exception& e) {
                          LogError(std::string("corvane-server: internal error: ") + e.what());
                          reply = StatusPage(500, "服务器内部错误 (internal server error)");
                        }
                        respond(std::move(reply));
                      });
      return;
    }
    respond(StaticReply(*req));
  }

  bool IsCrossSiteWrite(const HttpRequest& req) const {
    return IsWriteRequest(req.method, req.query) &&
           IsCrossSite([&](std::string_view name) { return req.Header(name); });
  }

  HttpReply CrossSiteRefusal(const HttpRequest& req) const {
    LogError(EscapeForLog("corvane-server: 403 " + req.method + " " + req.path + " from " + req.remoteAddr +
                          ": a write started by another site"));
    HttpReply reply = StatusPage(403, "跨站请求被拒绝 (cross-site request refused)",
                                 "A page of another site asked for this change; it was not made.");
    reply.Set("Cache-Control", "private, no-cache");
    return reply;
  }

  HttpReply StaticReply(const HttpRequest& req) const {
    if (req.method != "GET" && req.method != "HEAD") {
      // Static files are only read; a missing one is missing whatever the method.
      bool found = files.Resolve(req.path) && !IsScriptSource(req.path.substr(req.path.rfind('/') + 1));
      HttpReply reply = StatusPage(found ? 405 : 404);
      if (found) reply.Set("Allow", "GET, HEAD");
      return reply;
    }
    auto file = files.Get(req.path, req.Header("If-None-Match"), req.Header("If-Modified-Since"),
                          req.Header("Range"));
    if (!file) return StatusPage(404);
    HttpReply reply;
    reply.status = file->status;
    reply.headers = std::move(file->headers);
    if (file->status == 200 || file->status == 206)
      reply.SetContent(std::move(file->body), file->contentType);
    return reply;
  }

  // On a worker, holding the request's session.
  HttpReply ServeWithSession(HttpRequest& req, SessionStore::Lease& lease) {
    if (const PageFunction* page = pages.Find(req.path)) return ServePage(*page, req, lease);
    if (IsScriptPagePath(req.path)) return ServeScript(req.path, req, lease);
    if (scripts.Find(req.path + "default.asp")) return ServeScript(req.path + "default.asp", req, lease);
    return StaticReply(req);
  }

  host::PageRequest RequestOf(std::string url, HttpRequest& req, int codePage) {
    return host::PageRequest{.url = std::move(url),
                             .queryString = req.query,
                             .contentType = req.Header("Content-Type"),
                             // The body is not needed after the page: moved, never copied (an upload
                             // may be large).
                             .body = std::move(req.body),
                             .method = req.method,
                             .codePage = codePage,
                             .serverVariables = ServerVariablesOf(req)};
  }

  HttpReply ServePage(const PageFunction& page, HttpRequest& req, SessionStore::Lease& lease) {
    bool newSession = lease.IsProvisional();
    host::PageRequest request = RequestOf(req.path, req, options.codePage);
    HttpReply refused;
    if (!Guard(req.path, req, refused, lease, request)) return refused;
    PageReply reply =
        RunPage(page, std::move(request), lease.Session(), pageHost, secrets, [&](host::Page& p) {
          scripts.StartApplication();
          if (newSession) scripts.StartSession(p);
        });
    return Send(req, lease, std::move(reply));
  }

  // The script page at `sitePath` (the request's path, or a folder's default page).
  HttpReply ServeScript(const std::string& sitePath, HttpRequest& req, SessionStore::Lease& lease) {
    std::shared_ptr<const CachedPage> page;
    try {
      scripts.StartApplication();
      page = scripts.Find(sitePath);
    } catch (const Error& e) {  // the page or global.asa does not compile
      PageReply failed = ErrorReply(e, req.path, options.codePage, secrets);
      LogError(failed.errorLog);
      HttpReply reply;
      reply.status = failed.status;
      reply.Set("Cache-Control", "private, no-cache");
      reply.SetContent(std::move(failed.body), std::move(failed.contentType));
      return reply;
    }
    if (!page) return StatusPage(404);
    bool newSession = lease.IsProvisional();
    host::PageRequest request =
        RequestOf(page->sitePath, req, scripts.CodePageFor(*page, *lease.Session().ptr()));
    // The cached page's site path is the one its file has on disk, so its local path needs no look-up.
    request.serverVariables.emplace_back("PATH_TRANSLATED", files.Root().string() + page->sitePath);
    request.serverVariables.emplace_back("APPL_PHYSICAL_PATH", files.Root().string() + "/");
    HttpReply refused;
    if (!Guard(page->sitePath, req, refused, lease, request)) return refused;
    PageReply reply = RunInPage(
        std::move(request), lease.Session(), pageHost,
        [&](host::Page& p) {
          if (newSession) scripts.StartSession(p);
          scripts.Run(*page, *p.ContextObject());
        },
        secrets);
    return Send(req, lease, std::move(reply));
  }

  // The site's rule for the page at `sitePath`: true when the page may run (its server variables
  // then get the rule's); otherwise `refused` is the refusal, logged.
  bool Guard(const std::string& sitePath, const HttpRequest& req, HttpReply& refused,
             SessionStore::Lease& lease, host::PageRequest& request) {
    if (!guard) return true;
    host::NameValues& serverVariables = request.serverVariables;
    GuardVerdict v = guard({.method = req.method,
                            .sitePath = sitePath,
                            .session = *lease.Session().ptr(),
                            .remoteAddr = req.remoteAddr,
                            .contentType = request.contentType,
                            .body = request.body});
    if (!v.logLine.empty()) LogError(EscapeForLog("corvane-server: " + v.logLine));
    if (v.status == 0) {
      for (auto& nv : v.serverVariables) serverVariables.push_back(std::move(nv));
      return true;
    }
    if (v.status == 302) {
      refused.status = 302;
      refused.Set("Location", v.location);
    } else {
      refused = StatusPage(v.status, v.status == 403 ? "没有权限 (forbidden)" : "", v.message);
    }
    refused.Set("Cache-Control", "private, no-cache");
    return false;
  }

  // Logs what the page's run reported, keeps, ends or renews its session as the page left it, and
  // gives the reply with the session's cookie when the session is new.
  HttpReply Send(const HttpRequest& req, SessionStore::Lease& lease, PageReply reply) {
    for (const std::string& line : reply.logEntries)
      LogError(EscapeForLog("corvane-server: " + req.path + ": " + line));
    if (!reply.errorLog.empty()) LogError(reply.errorLog);
    for (const host::EndPageError& e : reply.endPageErrors) LogError(EndPageErrorLine(req.path, e));
    HttpReply out;
    std::shared_ptr<host::SessionObject> session = lease.Session().ptr();
    if (session->Abandoned()) {
      sessions.End(lease);
    } else {
      if (session->NewIDRequested())
        sessions.Renew(lease);
      else if (lease.IsProvisional() && IsUsed(*session))
        sessions.Keep(lease);
      sessions.Commit(lease);
      if (lease.IsNew())
        out.headers.emplace_back("Set-Cookie", std::string(kSessionCookie) + "=" + lease.Id() +
                                                   "; Path=/; HttpOnly; SameSite=Strict" +
                                                   (req.secure ? "; Secure" : ""));
    }
    bool cacheControl = false;
    for (auto& [name, value] : reply.headers) {
      cacheControl = cacheControl || EqualsNoCase(name, "Cache-Control");
      out.headers.emplace_back(std::move(name), std::move(value));
    }
    if (!cacheControl) out.headers.emplace_back("Cache-Control", "private, no-cache");
    out.status = reply.status;
    out.SetContent(std::move(reply.body), std::move(reply.contentType));
    return out;
  }
};

HttpServer::HttpServer(ServerOptions options, PageRegistry pages, host::PageHost pageHost,
                       std::vector<std::string> secrets) {
  if (!pageHost.application) pageHost.application = std::make_shared<host::Application>();
  impl_ =
      std::make_unique<Impl>(std::move(options), std::move(pages), std::move(pageHost), std::move(secrets));
}

HttpServer::~HttpServer() = default;

int HttpServer::Bind() { return impl_->listener.Bind(); }

void HttpServer::Run() { impl_->listener.Run(); }

void HttpServer::Stop() { impl_->listener.Stop(); }

void HttpServer::SetPageGuard(PageGuard guard) { impl_->guard = std::move(guard); }

size_t HttpServer::SessionCount() const { return impl_->sessions.Size(); }

}  // namespace corvane::server
