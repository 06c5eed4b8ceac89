#include "http_server.h"

#include <httplib.h>

#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "corvane/text.h"
#include "page_runner.h"
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
  std::fprintf(stdout, "%s - - [%s] \"%s %s %s\" %d %zu\n", req.remote_addr.c_str(), when, req.method.c_str(),
               req.target.c_str(), req.version.c_str(), res.status, res.body.size());
  std::fflush(stdout);
}

}  // namespace

struct HttpServer::Impl {
  ServerOptions options;
  PageRegistry pages;
  host::PageHost pageHost;
  std::vector<std::string> secrets;
  SessionStore sessions;
  StaticFiles files;
  httplib::Server http;
  int port = -1;
  std::atomic<bool> runEntered{false}, stopRequested{false};

  Impl(ServerOptions o, PageRegistry p, host::PageHost h, std::vector<std::string> s)
      : options(std::move(o)),
        pages(std::move(p)),
        pageHost(std::move(h)),
        secrets(std::move(s)),
        sessions(std::chrono::minutes(options.sessionTimeoutMinutes)),
        files(options.site) {
    const int threads = options.threads;
    http.new_task_queue = [threads] { return new httplib::ThreadPool(static_cast<size_t>(threads)); };
    http.set_payload_max_length(options.maxBodyBytes);
    // A reply goes out as two writes (head, then body); without TCP_NODELAY the second waits for the
    // client's delayed ACK, some 40 ms per request on a kept-alive connection.
    http.set_tcp_nodelay(true);
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
      std::string text = std::to_string(res.status) + (res.status == 404   ? " Not Found"
                                                       : res.status == 413 ? " Payload Too Large"
                                                                           : "");
      res.set_content("<html><body><h2>" + text + "</h2></body></html>", "text/html; charset=utf-8");
    });
    if (options.accessLog) http.set_logger(LogLine);
  }

  void Serve(const httplib::Request& req, httplib::Response& res, std::string body) {
    if (const PageFunction* page = pages.Find(req.path)) {
      ServePage(*page, req, res, std::move(body));
      return;
    }
    if (req.method != "GET" && req.method != "HEAD") {
      // Static files are only read; a missing one is missing whatever the method.
      res.status = files.Resolve(req.path) ? 405 : 404;
      if (res.status == 405) res.set_header("Allow", "GET, HEAD");
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

  void ServePage(const PageFunction& page, const httplib::Request& req, httplib::Response& res,
                 std::string body) {
    SessionStore::Lease lease = sessions.Acquire(CookieValue(req.get_header_value("Cookie"), kSessionCookie));
    host::PageRequest request{.url = req.path,
                              .queryString = QueryOf(req),
                              .contentType = ContentTypeOf(req),
                              .body = std::move(body),
                              .method = req.method,
                              .codePage = options.codePage,
                              .serverVariables = ServerVariablesOf(req)};
    PageReply reply = RunPage(page, std::move(request), lease.Session(), pageHost, secrets);
    for (const host::EndPageError& e : reply.endPageErrors) LogError(EndPageErrorLine(req.path, e));
    if (lease.Session().ptr()->NewIDRequested()) sessions.Renew(lease);
    if (lease.IsNew())
      res.set_header("Set-Cookie",
                     std::string(kSessionCookie) + "=" + lease.Id() + "; Path=/; HttpOnly; SameSite=Lax");
    res.set_header("Cache-Control", "private, no-cache");
    for (auto& [name, value] : reply.headers) res.set_header(name, value);
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

size_t HttpServer::SessionCount() const { return impl_->sessions.Size(); }

}  // namespace corvane::server
