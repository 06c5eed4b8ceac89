// For the server's tests: an in-process HttpServer on a free loopback port for one scope, and a raw
// socket client for what an HTTP library would not send (bad framing, slow heads, pipelining).
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "http_server.h"
#include "raw_http_client.h"
#include "test_support.h"

namespace corvane::server::testing {

struct TestServer {
  explicit TestServer(ServerOptions o, PageRegistry pages = {}, PageGuard guard = nullptr) {
    std::filesystem::create_directories(site);
    o.port = 0;
    o.site = site.string();
    server = std::make_unique<HttpServer>(
        o, std::move(pages), host::PageHost{},
        std::vector<std::string>{"Provider=SQLite;Data Source=/secret/office.db", "/secret/office.db"});
    if (guard) server->SetPageGuard(std::move(guard));
    port = server->Bind();
    thread = std::jthread([this] { server->Run(); });
  }
  ~TestServer() { server->Stop(); }  // then the thread is joined
  std::filesystem::path site = corvane::testing::ScratchPath("www");
  std::unique_ptr<HttpServer> server;
  int port = 0;
  std::jthread thread;
};

// A raw connection read by time: what arrives until the server closes, or until `quiet` passes without
// a byte (`closed` tells which).
class RawClient : public corvane::testing::RawConnection {
 public:
  using RawConnection::RawConnection;
  std::string Read(std::chrono::milliseconds quiet = std::chrono::milliseconds(1500),
                   bool* closed = nullptr) {
    const size_t from = received_.size();
    while (Receive(std::chrono::steady_clock::now() + quiet)) {
    }
    if (closed) *closed = closed_;
    return received_.substr(from);
  }
};

// The status codes of the replies in `text`, in order.
inline std::vector<int> Statuses(const std::string& text) {
  std::vector<int> out;
  static const std::regex status("HTTP/1\\.[01] (\\d{3}) ");
  for (std::sregex_iterator it(text.begin(), text.end(), status), end; it != end; ++it)
    out.push_back(std::stoi((*it)[1]));
  return out;
}

}  // namespace corvane::server::testing
