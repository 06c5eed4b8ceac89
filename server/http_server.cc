#include "http_server.h"

#include <httplib.h>

#include <atomic>
#include <cctype>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "corvane/text.h"
#include "cross_site.h"
#include "error_page.h"
#include "page_runner.h"
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

constexpr std::string_view kRawPrefix = "corvane-raw/";

bool StartsNoCase(std::string_view s, std::string_view prefix) {
  return s.size() >= prefix.size() && EqualsNoCase(s.substr(0, prefix.size()), prefix);
}

std::string ContentTypeOf(const httplib::Request& req) {
  std::string type = req.get_header_value("Content-Type");
  if (type.rfind(kRawPrefix, 0) == 0) type.erase(0, kRawPrefix.size());
  return type;
}

std::string QueryOf(const httplib::Request& req) {
  size_t q = req.target.find('?');
  return q == std::string::npos ? "" : req.target.substr(q + 1);
}

// The request's headers as the host's server variables: HTTP_USER_AGENT, HTTP_COOKIE, ...
std::vector<std::pair<std::string, std::string>> ServerVariablesOf(const httplib::Request& req) {
  std::vector<std::pair<std::string, std::string>> vars = {
      {"REMOTE_ADDR", req.remote_addr}, {"REMOTE_HOST", req.remote_addr},
      {"LOCAL_ADDR", req.local_addr},   {"SERVER_PORT", std::to_string(req.local_port)},
      {"SERVER_PROTOCOL", req.version},
  };
  for (const auto& [name, value] : req.headers) {
    std::string key = "HTTP_";
    for (char c : name)
      key += c == '-' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    vars.emplace_back(std::move(key), value);
  }
  if (req.has_header("Host")) vars.emplace_back("SERVER_NAME", req.get_header_value("Host"));
  return vars;
}

// Whether a request path names a script page: it ends in ".asp", in any case.
bool IsScriptPagePath(std::string_view path) {
  return path.size() > 4 && EqualsNoCase(path.substr(path.size() - 4), ".asp");
}

// A short page of the host's own: a status, what it means, and a message when there is one.
void SetStatusPage(httplib::Response& res, int status, std::string_view title,
                   std::string_view message = "") {
  res.status = status;
  std::string body =
      "<html><body><h2>" + std::to_string(status) + (title.empty() ? "" : " ") + std::string(title) + "</h2>";
  if (!message.empty()) body += "<p>" + host::HtmlEncode(message) + "</p>";
  res.set_content(body + "</body></html>", "text/html; charset=utf-8");
}

// An error line on stderr, whole even when several threads write at once.
void LogError(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  std::fflush(stderr);
}

void LogLine(const httplib::Request& req, const httplib::Response& res) {
  static std::mutex mu;
  std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  char when[32];
  std::strftime(when, sizeof when, "%d/%b/%Y:%H:%M:%S %z", &tm);
  std::lock_guard lock(mu);
  // The request line is the client's: its control bytes must not forge log lines.
  std::fprintf(stdout, "%s - - [%s] \"%s %s %s\" %d %zu\n", req.remote_addr.c_str(), when,
               EscapeForLog(req.method).c_str(), EscapeForLog(req.target).c_str(),
               EscapeForLog(req.version).c_str(), res.status, res.body.size());
  std::fflush(stdout);
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
  SessionStore sessions;
  httplib::Server http;
  int port = -1;
  std::atomic<bool> runEntered{false}, stopRequested{false};
  // Ends idle sessions now and then, so that Session_OnEnd runs soon after their time is up.
  std::jthread sweeper;

  Impl(ServerOptions o, PageRegistry p, host::PageHost h, std::vector<std::string> s)
      : options(std::move(o)),
        pages(std::move(p)),
        pageHost(std::move(h)),
        secrets(std::move(s)),
        files(options.site),
        scripts(SiteHost(pageHost, files), options.codePage, LogError),
        sessions(std::chrono::minutes(options.sessionTimeoutMinutes), nullptr,
                 [this](const std::shared_ptr<host::SessionObject>& ended) { scripts.EndSession(ended); }) {
    pageHost.siteFolder = files.Root().string();
    pageHost.runPage = scripts.Runner();
    const int threads = options.threads;
    http.new_task_queue = [threads] { return new httplib::ThreadPool(static_cast<size_t>(threads)); };
    http.set_payload_max_length(options.maxBodyBytes);
    // A reply goes out as two writes (head, then body); without TCP_NODELAY the second waits for the
    // client's delayed ACK, some 40 ms per request on a kept-alive connection.
    http.set_tcp_nodelay(true);
    // Every reply, pages, files and errors alike: no guessing of content types, no framing by other
    // sites, no full addresses sent to other sites.
    http.set_default_headers({{"X-Content-Type-Options", "nosniff"},
                              {"Content-Security-Policy", "frame-ancestors 'self'"},
                              {"Referrer-Policy", "same-origin"}});
    // A worker keeps its connection while the client keeps it alive; the idle limit lets queued
    // connections in when there are more than workers. The request limit is high because every
    // reconnect goes through httplib's listen backlog of 5: under load, frequent reconnects overflow
    // it and a dropped SYN costs the client a one-second retry.
    http.set_keep_alive_max_count(1000);
    http.set_keep_alive_timeout(3);
    http.Get(".*", [this](const httplib::Request& req, httplib::Response& res) { Serve(req, res, ""); });
    http.Post(".*",
              [this](const httplib::Request& req, httplib::Response& res) { Serve(req, res, req.body); });
    // The upload component parses a multipart body itself, so it must arrive raw; httplib would parse
    // it into parts and drop the body. Its content type is hidden from httplib until the page runs.
    http.set_pre_routing_handler([](const httplib::Request& req, httplib::Response&) {
      auto& headers = const_cast<httplib::Headers&>(req.headers);  // httplib's request is not const
      for (auto& [name, value] : headers)
        if (EqualsNoCase(name, "Content-Type") && StartsNoCase(value, "multipart/"))
          value.insert(0, kRawPrefix);
      return httplib::Server::HandlerResponse::Unhandled;
    });
    http.set_exception_handler([](const httplib::Request&, httplib::Response& res, std::exception_ptr ep) {
      std::string what = "unknown";
      try {
        std::rethrow_exception(ep);
      } catch (const std::exception& e) {
        what = e.what();
      } catch (...) {
      }
      LogError("corvane-server: internal error: " + what);
      res.status = 500;
      res.set_content("<html><body><h2>500 服务器内部错误 (internal server error)</h2></body></html>",
                      "text/html; charset=utf-8");
    });
    http.set_error_handler([](const httplib::Request&, httplib::Response& res) {
      if (!res.body.empty()) return;
      SetStatusPage(res, res.status,
                    res.status == 404   ? "Not Found"
                    : res.status == 413 ? "Payload Too Large"
                                        : "");
    });
    if (options.accessLog) http.set_logger(LogLine);
    sweeper = std::jthread([this](std::stop_token stop) {
      std::mutex mu;
      std::condition_variable_any wake;
      std::unique_lock lock(mu);
      while (!wake.wait_for(lock, stop, std::chrono::seconds(5), [] { return false; }) &&
             !stop.stop_requested())
        sessions.Sweep();
    });
  }

  // The page host of the script pages: the server's, with the site folder.
  static host::PageHost SiteHost(host::PageHost h, const StaticFiles& files) {
    h.siteFolder = files.Root().string();
    return h;
  }

  void Serve(const httplib::Request& req, httplib::Response& res, std::string body) {
    if (IsWriteRequest(req.method, QueryOf(req)) &&
        IsCrossSite([&](std::string_view name) { return req.get_header_value(std::string(name).c_str()); })) {
      LogError(EscapeForLog("corvane-server: 403 " + req.method + " " + req.path + " from " +
                            req.remote_addr + ": a write started by another site"));
      res.set_header("Cache-Control", "private, no-cache");
      SetStatusPage(res, 403, "跨站请求被拒绝 (cross-site request refused)",
                    "A page of another site asked for this change; it was not made.");
      return;
    }
    if (const PageFunction* page = pages.Find(req.path)) {
      ServePage(*page, req, res, std::move(body));
      return;
    }
    if (IsScriptPagePath(req.path)) {
      ServeScript(req.path, req, res, std::move(body));
      return;
    }
    // A folder's default page.
    if (!req.path.empty() && req.path.back() == '/' && scripts.Find(req.path + "default.asp")) {
      ServeScript(req.path + "default.asp", req, res, std::move(body));
      return;
    }
    if (req.method != "GET" && req.method != "HEAD") {
      // Static files are only read; a missing one is missing whatever the method.
      bool found = files.Resolve(req.path) && !IsScriptSource(req.path.substr(req.path.rfind('/') + 1));
      res.status = found ? 405 : 404;
      if (found) res.set_header("Allow", "GET, HEAD");
      return;
    }
    auto reply =
        files.Get(req.path, req.get_header_value("If-None-Match"), req.get_header_value("If-Modified-Since"));
    if (!reply) {
      res.status = 404;
      return;
    }
    res.status = reply->status;
    for (auto& [name, value] : reply->headers) res.set_header(name, value);
    if (reply->status == 200) res.set_content(std::move(reply->body), reply->contentType);
  }

  host::PageRequest RequestOf(std::string url, const httplib::Request& req, std::string body, int codePage) {
    return host::PageRequest{.url = std::move(url),
                             .queryString = QueryOf(req),
                             .contentType = ContentTypeOf(req),
                             .body = std::move(body),
                             .method = req.method,
                             .codePage = codePage,
                             .serverVariables = ServerVariablesOf(req)};
  }

  void ServePage(const PageFunction& page, const httplib::Request& req, httplib::Response& res,
                 std::string body) {
    SessionStore::Lease lease = sessions.Acquire(CookieValue(req.get_header_value("Cookie"), kSessionCookie));
    bool newSession = lease.IsNew();
    host::PageRequest request = RequestOf(req.path, req, std::move(body), options.codePage);
    if (!Guard(req.path, req, res, lease, request.serverVariables)) return;
    PageReply reply =
        RunPage(page, std::move(request), lease.Session(), pageHost, secrets, [&](host::Page& p) {
          scripts.StartApplication();
          if (newSession) scripts.StartSession(p);
        });
    Send(req, res, lease, std::move(reply));
  }

  // The script page at `sitePath` (the request's path, or a folder's default page).
  void ServeScript(const std::string& sitePath, const httplib::Request& req, httplib::Response& res,
                   std::string body) {
    std::shared_ptr<const CachedPage> page;
    try {
      scripts.StartApplication();
      page = scripts.Find(sitePath);
    } catch (const Error& e) {  // the page or global.asa does not compile
      PageReply reply = ErrorReply(e, req.path, options.codePage, secrets);
      LogError(reply.errorLog);
      res.status = reply.status;
      res.set_header("Cache-Control", "private, no-cache");
      res.set_content(std::move(reply.body), reply.contentType);
      return;
    }
    if (!page) {
      res.status = 404;
      return;
    }
    SessionStore::Lease lease = sessions.Acquire(CookieValue(req.get_header_value("Cookie"), kSessionCookie));
    bool newSession = lease.IsNew();
    host::PageRequest request =
        RequestOf(page->sitePath, req, std::move(body), scripts.CodePageFor(*page, *lease.Session().ptr()));
    request.serverVariables.emplace_back("PATH_TRANSLATED",
                                         host::LocalPathIn(files.Root().string(), page->sitePath));
    request.serverVariables.emplace_back("APPL_PHYSICAL_PATH", files.Root().string() + "/");
    if (!Guard(page->sitePath, req, res, lease, request.serverVariables)) return;
    PageReply reply = RunInPage(
        std::move(request), lease.Session(), pageHost,
        [&](host::Page& p) {
          if (newSession) scripts.StartSession(p);
          scripts.Run(*page, *p.ContextObject());
        },
        secrets);
    Send(req, res, lease, std::move(reply));
  }

  // The site's rule for the page at `sitePath`: true when the page may run (its server variables
  // then get the rule's); otherwise the refusal is sent and logged.
  bool Guard(const std::string& sitePath, const httplib::Request& req, httplib::Response& res,
             SessionStore::Lease& lease, host::NameValues& serverVariables) {
    if (!guard) return true;
    GuardVerdict v = guard({.method = req.method,
                            .sitePath = sitePath,
                            .session = *lease.Session().ptr(),
                            .remoteAddr = req.remote_addr});
    if (!v.logLine.empty()) LogError(EscapeForLog("corvane-server: " + v.logLine));
    if (v.status == 0) {
      for (auto& nv : v.serverVariables) serverVariables.push_back(std::move(nv));
      return true;
    }
    res.set_header("Cache-Control", "private, no-cache");
    if (v.status == 302) {
      res.status = 302;
      res.set_header("Location", v.location);
    } else {
      SetStatusPage(res, v.status, v.status == 403 ? "没有权限 (forbidden)" : "", v.message);
    }
    return false;
  }

  // Logs what the page's run reported, ends or renews its session as the page asked, and sends the
  // reply with the session's cookie when the session is new.
  void Send(const httplib::Request& req, httplib::Response& res, SessionStore::Lease& lease,
            PageReply reply) {
    for (const std::string& line : reply.logEntries)
      LogError(EscapeForLog("corvane-server: " + req.path + ": " + line));
    if (!reply.errorLog.empty()) LogError(reply.errorLog);
    for (const host::EndPageError& e : reply.endPageErrors) LogError(EndPageErrorLine(req.path, e));
    std::shared_ptr<host::SessionObject> session = lease.Session().ptr();
    if (session->Abandoned()) {
      sessions.End(lease);
    } else {
      if (session->NewIDRequested()) sessions.Renew(lease);
      if (lease.IsNew())
        res.set_header("Set-Cookie", std::string(kSessionCookie) + "=" + lease.Id() +
                                         "; Path=/; HttpOnly; SameSite=Strict");
    }
    bool cacheControl = false;
    for (const auto& [name, value] : reply.headers) {
      cacheControl = cacheControl || EqualsNoCase(name, "Cache-Control");
      res.set_header(name, value);  // refuses a value with a line break
    }
    if (!cacheControl) res.set_header("Cache-Control", "private, no-cache");
    res.status = reply.status;
    res.set_content(std::move(reply.body), reply.contentType);
  }
};

HttpServer::HttpServer(ServerOptions options, PageRegistry pages, host::PageHost pageHost,
                       std::vector<std::string> secrets) {
  if (!pageHost.application) pageHost.application = std::make_shared<host::Application>();
  impl_ =
      std::make_unique<Impl>(std::move(options), std::move(pages), std::move(pageHost), std::move(secrets));
}

HttpServer::~HttpServer() = default;

int HttpServer::Bind() {
  const ServerOptions& o = impl_->options;
  int port = o.port == 0 ? impl_->http.bind_to_any_port(o.bind)
                         : (impl_->http.bind_to_port(o.bind, o.port) ? o.port : -1);
  if (port <= 0) throw std::runtime_error("cannot listen on " + o.bind + ":" + std::to_string(o.port));
  impl_->port = port;
  return port;
}

void HttpServer::Run() {
  impl_->runEntered = true;
  if (impl_->stopRequested) return;
  impl_->http.listen_after_bind();
}

void HttpServer::Stop() {
  // httplib ignores a stop() that comes before its loop has started, so wait for the loop when Run()
  // has been entered; a Run() not yet entered sees the flag and returns at once.
  impl_->stopRequested = true;
  if (!impl_->runEntered) return;
  for (int i = 0; i < 400 && !impl_->http.is_running(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  impl_->http.stop();
}

void HttpServer::SetPageGuard(PageGuard guard) { impl_->guard = std::move(guard); }

size_t HttpServer::SessionCount() const { return impl_->sessions.Size(); }

}  // namespace corvane::server
