// The listening side of corvane-server: accepts connections and runs every one of them on one or
// two I/O threads (http_connection.cc), so that an idle kept-alive connection costs no thread. A
// request read whole is handed to the RequestHandler; its reply is written when the handler answers.
//
// Limits: one client address holds at most `maxConnectionsPerClient` connections (one more gets 503
// and is closed); see http_connection.h for the limits of one connection.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "http_access_log.h"
#include "http_message.h"

namespace corvane::server {

struct ListenerOptions {
  std::string bind = "127.0.0.1";
  int port = 0;  // 0: a free one
  int ioThreads = 1;
  size_t maxBodyBytes = 32u * 1024 * 1024;
  size_t maxHeaderBytes = 64 * 1024;
  std::chrono::milliseconds headerTimeout{10000}, keepAliveTimeout{30000};
  int maxConnectionsPerClient = 64;
  // Requests still being answered when Stop() is called get this long; then every connection closes.
  std::chrono::milliseconds stopGrace{4000};
  // HTTPS when both are set (PEM files); Bind() raises when they cannot be loaded.
  std::string tlsCert, tlsKey;
  // Headers every reply carries, before its own.
  HeaderList defaultHeaders;
  // Called once per request answered (also refused ones), on an I/O thread; none: no log.
  std::function<void(const AccessRecord&)> log;
};

class HttpListener {
 public:
  HttpListener(ListenerOptions options, RequestHandler handler);
  ~HttpListener();
  HttpListener(const HttpListener&) = delete;
  HttpListener& operator=(const HttpListener&) = delete;

  // Binds and listens; returns the port. Raises std::runtime_error when it cannot.
  int Bind();
  // Serves on this thread (and ioThreads - 1 more) until Stop() and the requests in flight are done.
  void Run();
  // From any thread, also before Run(): stops accepting, closes idle connections, lets the requests
  // in flight finish (up to stopGrace), then Run() returns.
  void Stop();
  // Connections open now.
  size_t Connections() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane::server
