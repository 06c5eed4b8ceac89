// One HTTP request and its reply as the server's dispatch sees them, free of the library that reads
// and writes them (http_connection.cc), so that the dispatch, the pages and the tests of replies
// build without the HTTP library's headers.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::server {

using HeaderList = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
  std::string method;   // "GET", "POST", ...
  std::string target;   // as sent: "/a.asp?x=1"
  std::string path;     // the target's path, percent-decoded: "/a.asp"
  std::string query;    // the target's query as sent, without "?"
  std::string version;  // "HTTP/1.1"
  HeaderList headers;   // as sent, in order
  std::string body;     // the whole body, whatever its framing
  std::string remoteAddr, localAddr;
  int localPort = 0;
  bool secure = false;  // came over TLS

  // The first header of that name, in any case; "" when absent.
  std::string Header(std::string_view name) const;
};

struct HttpReply {
  int status = 200;
  HeaderList headers;  // Content-Type among them; Set-Cookie may repeat
  std::string body;
  // The connection closes after this reply.
  bool close = false;

  // Sets header `name`, replacing one of the same name (any case).
  void Set(std::string_view name, std::string value);
  // The header's value, "" when absent.
  std::string Get(std::string_view name) const;
  void SetContent(std::string content, std::string contentType);
};

// Answers a request exactly once, from any thread.
using Responder = std::function<void(HttpReply)>;
// The server's side of a request. Called on an I/O thread: it answers cheap requests at once and
// hands the rest to workers, which call the responder when done.
using RequestHandler = std::function<void(std::shared_ptr<HttpRequest>, Responder)>;

// Splits a request target into its decoded path and its raw query. An absolute target
// ("http://host/a?b") gives its path. False for a target that is not a path ("*", "x", a "%" not
// followed by two hex digits).
bool SplitTarget(std::string_view target, std::string& path, std::string& query);

// A short page of the host's own: the status, what it means, and an escaped message when given.
HttpReply StatusPage(int status, std::string_view title = "", std::string_view message = "");
// The standard reason phrase of a status ("Not Found"); "" when unknown.
std::string_view ReasonOf(int status);

}  // namespace corvane::server
