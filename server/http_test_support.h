// For the server's tests: an in-process HttpServer on a free loopback port for one scope, and a raw
// socket client for what an HTTP library would not send (bad framing, slow heads, pipelining).
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "http_server.h"
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

class RawClient {
 public:
  explicit RawClient(int port) : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<uint16_t>(port));
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = ::connect(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
  }
  ~RawClient() { ::close(fd_); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  bool Connected() const { return connected_; }
  // False when the server has closed (or reset) the connection.
  bool Send(std::string_view bytes) {
    while (!bytes.empty()) {
      ssize_t n = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (n <= 0) return false;
      bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
  }
  // What arrives until the server closes, or until `quiet` passes without a byte (`closed` tells).
  std::string Read(std::chrono::milliseconds quiet = std::chrono::milliseconds(1500),
                   bool* closed = nullptr) {
    std::string out;
    if (closed) *closed = false;
    for (;;) {
      pollfd p{fd_, POLLIN, 0};
      if (::poll(&p, 1, static_cast<int>(quiet.count())) <= 0) return out;
      char buf[65536];
      ssize_t n = ::recv(fd_, buf, sizeof buf, 0);
      if (n <= 0) {
        if (closed) *closed = true;
        return out;
      }
      out.append(buf, static_cast<size_t>(n));
    }
  }

 private:
  int fd_;
  bool connected_ = false;
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
