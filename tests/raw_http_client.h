// For tests that talk to corvane-server over a plain socket, so that a test can stop, dribble, overrun
// or pipeline a request where a client library would not.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>

#include "corvane/codepage.h"

namespace corvane::testing {

struct Reply {
  int status = 0;         // 0: no status line came
  std::string head;       // status line and headers
  std::string body;       // unchunked when the reply came in chunks
  bool complete = false;  // the whole body arrived, as its framing says
  std::string text() const { return corvane::DecodeCodePage(body); }
  // A header's value ("" when missing); names are matched case-blind.
  std::string Header(std::string name) const {
    auto lower = [](std::string s) {
      for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      return s;
    };
    const std::string h = lower(head), key = "\r\n" + lower(name) + ":";
    size_t at = h.find(key);
    if (at == std::string::npos) return "";
    at += key.size();
    size_t end = h.find("\r\n", at);
    std::string value = head.substr(at, end - at);
    return value.substr(value.find_first_not_of(' ') == std::string::npos ? 0 : value.find_first_not_of(' '));
  }
};

// What has arrived so far read as a reply; `closed` when the server has closed the connection (a body
// without a length then ends there).
inline Reply ParseReply(const std::string& raw, bool closed) {
  Reply r;
  if (raw.rfind("HTTP/1.", 0) == 0 && raw.size() >= 12) r.status = std::atoi(raw.c_str() + 9);
  const size_t end = raw.find("\r\n\r\n");
  if (end == std::string::npos) return r;
  r.head = raw.substr(0, end);
  const std::string rest = raw.substr(end + 4);
  if (const std::string length = r.Header("Content-Length"); !length.empty()) {
    const size_t n = std::stoul(length);
    r.body = rest.substr(0, n);
    r.complete = rest.size() >= n;
  } else if (r.Header("Transfer-Encoding").find("chunked") != std::string::npos) {
    for (size_t at = 0;;) {
      const size_t line = rest.find("\r\n", at);
      if (line == std::string::npos) break;
      const size_t size = std::stoul(rest.substr(at, line - at), nullptr, 16);
      if (size == 0) {
        r.complete = true;
        break;
      }
      if (rest.size() < line + 2 + size + 2) break;
      r.body += rest.substr(line + 2, size);
      at = line + 2 + size + 2;
    }
  } else {
    r.body = rest;
    r.complete = closed;
  }
  return r;
}

// A TCP connection to the server on loopback, from the loopback address `from` when given (the server
// may cap the connections of one address).
class RawConnection {
 public:
  explicit RawConnection(int port, const std::string& from = "") {
    fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (!from.empty()) {
      sockaddr_in local{};
      local.sin_family = AF_INET;
      inet_pton(AF_INET, from.c_str(), &local.sin_addr);
      ::bind(fd_, reinterpret_cast<sockaddr*>(&local), sizeof local);
    }
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(port));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    error_ = ::connect(fd_, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0 ? 0 : errno;
    const timeval sendLimit{10, 0};  // a server that stops reading fails the send instead of hanging it
    setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &sendLimit, sizeof sendLimit);
  }
  ~RawConnection() { Close(); }
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  bool Connected() const { return fd_ >= 0 && error_ == 0; }
  int ConnectError() const { return error_; }
  void Close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }

  // Sends all of `data`; false when the server closed, reset or stopped reading the connection.
  bool Send(std::string_view data) {
    while (!data.empty()) {
      const ssize_t n = ::send(fd_, data.data(), data.size(), MSG_NOSIGNAL);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return false;
      data.remove_prefix(static_cast<size_t>(n));
    }
    return true;
  }

  // Reads until one whole reply has arrived, the server closes the connection, or `limit` passes.
  Reply Read(std::chrono::milliseconds limit = std::chrono::seconds(30)) {
    const auto until = std::chrono::steady_clock::now() + limit;
    while (!closed_) {
      if (Reply r = ParseReply(received_, false); r.complete) return r;
      if (!Receive(until)) break;
    }
    return ParseReply(received_, closed_);
  }

  // Whether the server closes the connection (an end or a reset) within `limit`, reading what it
  // sends meanwhile (Received()).
  bool AwaitClose(std::chrono::milliseconds limit) {
    const auto until = std::chrono::steady_clock::now() + limit;
    while (!closed_ && Receive(until)) {
    }
    return closed_;
  }
  const std::string& Received() const { return received_; }

 protected:
  // Waits for bytes until `until`: false when none came in time; an end or a reset sets closed_.
  bool Receive(std::chrono::steady_clock::time_point until) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    pollfd p{fd_, POLLIN, 0};
    if (left.count() < 0 || ::poll(&p, 1, static_cast<int>(left.count())) <= 0) return false;
    char buf[65536];
    const ssize_t n = ::recv(fd_, buf, sizeof buf, 0);
    if (n < 0 && errno == EINTR) return true;
    if (n <= 0) {
      closed_ = true;
      return false;
    }
    received_.append(buf, static_cast<size_t>(n));
    return true;
  }

  int fd_ = -1;
  int error_ = 0;
  bool closed_ = false;
  std::string received_;
};

}  // namespace corvane::testing
