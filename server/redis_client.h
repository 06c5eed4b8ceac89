// A small Redis client for the shared sessions (redis_sessions.h), over hiredis's blocking API. This
// is the one file of the program that includes hiredis.
//
// Any thread may send a command: each takes a connection from a small pool (opening one when none is
// idle) and gives it back after the reply. A connection that failed (refused, reset, timed out) is
// closed, so a server that went away and came back is used again by the next command without a
// restart. Connecting and every reply have short deadlines: a Redis that hangs costs a request its
// timeout, never a thread for good.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace corvane::server {

struct RedisAddress {
  std::string host;
  int port = 6379;
  std::string socket;  // a Unix socket's path: Redis on this machine, reached without TCP
  int db = 0;
};

// Parses "redis://HOST:PORT[/DB]" (the port may be left out: 6379) or "unix:///PATH[?db=DB]".
// Raises std::invalid_argument saying what is wrong.
RedisAddress ParseRedisUrl(std::string_view url);

struct RedisReply {
  enum class Kind { kNil, kInteger, kText, kStatus, kError, kArray };
  Kind kind = Kind::kNil;
  int64_t integer = 0;
  std::string text;  // kText, kStatus and kError
  std::vector<RedisReply> elements;
};

// The server could not be reached, did not answer in time, or answered with an error. The message
// names the server and the cause.
class RedisError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A Lua script, sent by its SHA-1 digest (EVALSHA) and as text only when the server does not know
// it yet (after a restart).
struct RedisScript {
  explicit RedisScript(std::string source);
  std::string source, sha1;
};

class RedisClient {
 public:
  RedisClient(RedisAddress address, std::chrono::milliseconds connectTimeout,
              std::chrono::milliseconds replyTimeout);
  ~RedisClient();
  RedisClient(const RedisClient&) = delete;
  RedisClient& operator=(const RedisClient&) = delete;

  // One command; an error reply raises RedisError too.
  RedisReply Command(const std::vector<std::string>& args);
  RedisReply Script(const RedisScript& script, const std::vector<std::string>& keys,
                    const std::vector<std::string>& args);
  // Several commands in one round trip; their replies in order (error replies among them).
  std::vector<RedisReply> Pipeline(const std::vector<std::vector<std::string>>& commands);
  // Sends commands without waiting for their replies. They wait in a connection's buffer for at
  // most kFlushDelay, so that the next command on that connection carries them in its own write
  // (one wake-up of the server instead of two). Each reply is read before the connection's next
  // command and handed to `onReply` then (on whichever thread sends that command; never, when the
  // connection breaks first). Commands of one connection run in the order they were posted, so a
  // later command on it never overtakes them on the server.
  void Post(const std::vector<std::vector<std::string>>& commands,
            const std::function<void(const RedisReply&)>& onReply);
  // "redis 127.0.0.1:6379/0", for messages.
  std::string Name() const;

 private:
  struct Connection;
  std::pair<std::unique_ptr<Connection>, bool> Take();  // the connection, and whether it was idle
  void Give(std::unique_ptr<Connection> c);
  RedisReply Send(const std::vector<std::string>& args, bool errorRaises);
  void FlushLater();  // the flusher thread

  static constexpr std::chrono::milliseconds kFlushDelay{1};

  RedisAddress address_;
  std::chrono::milliseconds connectTimeout_, replyTimeout_;
  std::mutex mu_;
  std::vector<std::unique_ptr<Connection>> idle_;
  std::condition_variable wake_;
  std::optional<std::chrono::steady_clock::time_point> flushAt_;  // posted commands wait until then
  bool stopping_ = false;
  std::thread flusher_;
};

}  // namespace corvane::server
