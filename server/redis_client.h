// A small Redis client for the shared sessions (redis_sessions.h), over hiredis's blocking API. This
// is the one file of the program that includes hiredis.
//
// Any thread may send a command: each takes a connection from a small pool (opening one when none is
// idle) and gives it back after the reply. A connection that failed (refused, reset, timed out) is
// closed, so a server that went away and came back is used again by the next command without a
// restart. Connecting and every reply have short deadlines: a Redis that hangs costs a request its
// timeout, never a thread for good. Commands sent without waiting (Send) go out on a thread and a
// connection of their own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
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
  // What a Send's commands got: their replies in order, or why there are none (`error`, naming the
  // server, when the connection failed).
  using RepliesHandler = std::function<void(std::vector<RedisReply> replies, const std::string& error)>;
  // Sends commands without waiting for their replies. A thread of the client's own writes out, in
  // one write on its own connection, everything sent since its last write, and reads the replies:
  // the pages of a busy server share Redis's wake-ups instead of taking one each, and no thread
  // waits for Redis but that one. Commands reach the server in the order they were sent.
  // `onReplies` is called on that thread: it must be quick and must not throw.
  void Send(std::vector<std::vector<std::string>> commands, RepliesHandler onReplies);
  // "redis 127.0.0.1:6379/0", for messages.
  std::string Name() const;

 private:
  struct Connection;
  struct Sent {
    std::vector<std::vector<std::string>> commands;
    RepliesHandler onReplies;
  };
  std::unique_ptr<Connection> Open();
  std::unique_ptr<Connection> TakeIdle();  // null when none is idle
  void Give(std::unique_ptr<Connection> c);
  // Writes `commands` on `c` (opening it when null) and reads their replies. A connection that
  // fails is closed (`c` is null after); one that had been used before is replaced and the commands
  // written once more, as the server may have closed it meanwhile. Raises RedisError.
  std::vector<RedisReply> Exchange(std::unique_ptr<Connection>& c,
                                   const std::vector<const std::vector<std::string>*>& commands);
  RedisReply One(const std::vector<std::string>& args, bool errorRaises);
  void SendLoop();  // the sender thread

  RedisAddress address_;
  std::chrono::milliseconds connectTimeout_, replyTimeout_;
  std::mutex mu_;
  std::vector<std::unique_ptr<Connection>> idle_;
  std::condition_variable wake_;
  std::vector<Sent> queued_;  // for the sender thread's next write
  bool stopping_ = false;
  std::thread sender_;
};

}  // namespace corvane::server
