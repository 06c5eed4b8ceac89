// The HTTP side of corvane-server: serves pages (C++ pages by the registry first, then the site
// folder's .asp script pages, script_host.h), static files (from the site folder; never the source of
// a script page, an include or global.asa), the health check /-/health, and writes the access log. A
// folder's path ("/d/") runs its default.asp.
//
// Connections run on one or two I/O threads (http_listener.h, http_connection.h: the limits of a
// request and of a client live there), which answer static files and the health check themselves.
// Pages run on the worker threads (`threads`), queued per session (session_store.h): the pages of
// one session run one at a time, a request waiting for its session holds no thread, and other
// sessions run in parallel. A request without a session runs with a provisional one, stored and given
// its cookie (HttpOnly, SameSite=Strict; Secure over HTTPS) only when the page puts something in it
// or signs in.
//
// Before any page runs, a write that another site started is refused (cross_site.h) and the site's
// rule for pages is asked (page_guard.h). Every reply carries nosniff, frame-ancestors 'self' and
// Referrer-Policy same-origin.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "corvane/host.h"
#include "options.h"
#include "page_guard.h"
#include "page_registry.h"

namespace corvane::server {

inline constexpr const char* kSessionCookie = "CORVANESESSIONID";

// The value of cookie `name` in a Cookie header ("a=1; b=2"), or "" when absent.
std::string CookieValue(std::string_view cookieHeader, std::string_view name);

class HttpServer {
 public:
  // `secrets` are texts (the connection string, the database file) that must never reach an error
  // page. `pageHost` gives every page its Application (shared by all pages, which keep their
  // settings in it; a new one when none is given) and the class factory of Server.CreateObject.
  HttpServer(ServerOptions options, PageRegistry pages, host::PageHost pageHost,
             std::vector<std::string> secrets = {});
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // The site's rule for its pages; set before Run().
  void SetPageGuard(PageGuard guard);

  // Binds the address and port of the options (port 0: a free one). Returns the port, or raises
  // std::runtime_error when the address cannot be bound.
  int Bind();
  // Serves until Stop(); requests being served are finished first (for up to 4 seconds).
  void Run();
  // Stops accepting and closes idle connections; Run() returns once the requests in flight are
  // answered. Safe to call from any thread, also before Run() has started serving.
  void Stop();

  // Sessions stored (provisional ones not counted).
  size_t SessionCount() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane::server
