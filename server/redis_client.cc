#include "redis_client.h"

#include <hiredis/hiredis.h>
#include <openssl/evp.h>

#include <cerrno>
#include <charconv>
#include <deque>
#include <functional>
#include <utility>

namespace corvane::server {

namespace {

timeval TimevalOf(std::chrono::milliseconds ms) {
  return timeval{.tv_sec = static_cast<time_t>(ms.count() / 1000),
                 .tv_usec = static_cast<suseconds_t>(ms.count() % 1000 * 1000)};
}

int PortOf(std::string_view text, int max, std::string_view what) {
  int n = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size() || n < 0 || n > max)
    throw std::invalid_argument(std::string(what) + " '" + std::string(text) +
                                "' is not a number from 0 to " + std::to_string(max));
  return n;
}

RedisReply ReplyOf(const redisReply& r) {
  RedisReply out;
  switch (r.type) {
    case REDIS_REPLY_STRING:
    case REDIS_REPLY_STATUS:
    case REDIS_REPLY_ERROR:
      out.kind = r.type == REDIS_REPLY_STRING   ? RedisReply::Kind::kText
                 : r.type == REDIS_REPLY_STATUS ? RedisReply::Kind::kStatus
                                                : RedisReply::Kind::kError;
      out.text.assign(r.str, r.len);
      break;
    case REDIS_REPLY_INTEGER:
      out.kind = RedisReply::Kind::kInteger;
      out.integer = r.integer;
      break;
    case REDIS_REPLY_ARRAY:
      out.kind = RedisReply::Kind::kArray;
      out.elements.reserve(r.elements);
      for (size_t i = 0; i < r.elements; ++i) out.elements.push_back(ReplyOf(*r.element[i]));
      break;
    default: break;  // nil
  }
  return out;
}

// Adds a command to the context's output buffer; false when it cannot (out of memory).
bool Append(redisContext* context, const std::vector<std::string>& args) {
  std::vector<const char*> argv;
  std::vector<size_t> lengths;
  argv.reserve(args.size());
  lengths.reserve(args.size());
  for (const std::string& a : args) {
    argv.push_back(a.data());
    lengths.push_back(a.size());
  }
  return redisAppendCommandArgv(context, static_cast<int>(args.size()), argv.data(), lengths.data()) ==
         REDIS_OK;
}

}  // namespace

RedisAddress ParseRedisUrl(std::string_view url) {
  constexpr std::string_view scheme = "redis://", unixScheme = "unix://";
  RedisAddress a;
  if (url.substr(0, unixScheme.size()) == unixScheme) {
    std::string_view path = url.substr(unixScheme.size());
    if (size_t query = path.find("?db="); query != std::string_view::npos) {
      a.db = PortOf(path.substr(query + 4), 1 << 20, "the database number");
      path = path.substr(0, query);
    }
    if (path.empty() || path[0] != '/')
      throw std::invalid_argument("expected unix:///PATH/TO/SOCKET[?db=DB], got '" + std::string(url) + "'");
    a.socket = path;
    return a;
  }
  if (url.substr(0, scheme.size()) != scheme)
    throw std::invalid_argument("expected redis://HOST:PORT[/DB] or unix:///PATH[?db=DB], got '" +
                                std::string(url) + "'");
  std::string_view rest = url.substr(scheme.size());
  if (size_t slash = rest.find('/'); slash != std::string_view::npos) {
    a.db = PortOf(rest.substr(slash + 1), 1 << 20, "the database number");
    rest = rest.substr(0, slash);
  }
  if (size_t colon = rest.rfind(':'); colon != std::string_view::npos) {
    a.port = PortOf(rest.substr(colon + 1), 65535, "the port");
    rest = rest.substr(0, colon);
  }
  if (rest.empty()) throw std::invalid_argument("no host in '" + std::string(url) + "'");
  a.host = rest;
  return a;
}

RedisScript::RedisScript(std::string text) : source(std::move(text)) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  EVP_Digest(source.data(), source.size(), digest, &size, EVP_sha1(), nullptr);
  static const char* hex = "0123456789abcdef";
  for (unsigned int i = 0; i < size; ++i) {
    sha1 += hex[digest[i] >> 4];
    sha1 += hex[digest[i] & 15];
  }
}

struct RedisClient::Connection {
  redisContext* context = nullptr;
  // What to do with the replies of commands sent without waiting, in the order they were sent.
  std::deque<std::function<void(const RedisReply&)>> pending;
  bool unsent = false;  // commands wait in the output buffer
  ~Connection() {
    if (context) redisFree(context);
  }
  // Writes the output buffer out; false when the connection broke.
  bool Flush() {
    int done = 0;
    while (!done)
      if (redisBufferWrite(context, &done) != REDIS_OK) return false;
    unsent = false;
    return true;
  }
  // Sends what waits and reads the replies still owed; false when the connection broke.
  bool Settle() {
    unsent = false;  // the first read writes the output buffer out first
    while (!pending.empty()) {
      void* r = nullptr;
      if (redisGetReply(context, &r) != REDIS_OK || !r) return false;
      RedisReply reply = ReplyOf(*static_cast<redisReply*>(r));
      freeReplyObject(r);
      auto onReply = std::move(pending.front());
      pending.pop_front();
      if (onReply) onReply(reply);
    }
    return true;
  }
};

RedisClient::RedisClient(RedisAddress address, std::chrono::milliseconds connectTimeout,
                         std::chrono::milliseconds replyTimeout)
    : address_(std::move(address)),
      connectTimeout_(connectTimeout),
      replyTimeout_(replyTimeout),
      flusher_([this] { FlushLater(); }) {}

RedisClient::~RedisClient() {
  {
    std::lock_guard lock(mu_);
    stopping_ = true;
  }
  wake_.notify_one();
  flusher_.join();
  for (auto& c : idle_)
    if (c->unsent) c->Flush();
}

// Posted commands wait a moment in their connection's buffer: most often the connection's next
// command takes them along in its own write, and the server reads both at once. What no command
// took along by then is written here.
void RedisClient::FlushLater() {
  std::unique_lock lock(mu_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || flushAt_; });
    if (stopping_) return;
    if (wake_.wait_until(lock, *flushAt_, [this] { return stopping_; })) return;
    flushAt_.reset();
    std::vector<std::unique_ptr<Connection>> waiting;
    for (auto it = idle_.begin(); it != idle_.end();) {
      if ((*it)->unsent) {
        waiting.push_back(std::move(*it));
        it = idle_.erase(it);
      } else {
        ++it;
      }
    }
    if (waiting.empty()) continue;
    lock.unlock();
    std::erase_if(waiting, [](auto& c) { return !c->Flush(); });
    lock.lock();
    for (auto& c : waiting) idle_.push_back(std::move(c));
  }
}

std::string RedisClient::Name() const {
  return "redis " +
         (address_.socket.empty() ? address_.host + ":" + std::to_string(address_.port) : address_.socket) +
         "/" + std::to_string(address_.db);
}

std::pair<std::unique_ptr<RedisClient::Connection>, bool> RedisClient::Take() {
  {
    std::lock_guard lock(mu_);
    if (!idle_.empty()) {
      auto c = std::move(idle_.back());
      idle_.pop_back();
      return {std::move(c), true};
    }
  }
  auto c = std::make_unique<Connection>();
  c->context = address_.socket.empty()
                   ? redisConnectWithTimeout(address_.host.c_str(), address_.port, TimevalOf(connectTimeout_))
                   : redisConnectUnixWithTimeout(address_.socket.c_str(), TimevalOf(connectTimeout_));
  if (!c->context) throw RedisError(Name() + ": cannot make a connection");
  if (c->context->err) throw RedisError(Name() + ": cannot connect: " + c->context->errstr);
  redisSetTimeout(c->context, TimevalOf(replyTimeout_));
  if (address_.socket.empty()) redisEnableKeepAlive(c->context);
  if (address_.db != 0) {
    auto* r = static_cast<redisReply*>(redisCommand(c->context, "SELECT %d", address_.db));
    bool ok = r && r->type == REDIS_REPLY_STATUS;
    if (r) freeReplyObject(r);
    if (!ok) throw RedisError(Name() + ": the database cannot be selected");
  }
  return {std::move(c), false};
}

void RedisClient::Give(std::unique_ptr<Connection> c) {
  std::lock_guard lock(mu_);
  idle_.push_back(std::move(c));
}

RedisReply RedisClient::Command(const std::vector<std::string>& args) { return Send(args, true); }

std::vector<RedisReply> RedisClient::Pipeline(const std::vector<std::vector<std::string>>& commands) {
  for (int attempt = 0;; ++attempt) {
    auto [c, reused] = Take();
    for (const auto& args : commands) Append(c->context, args);
    // One write carries these and whatever was posted before them; the replies owed to the posted
    // ones come first.
    const bool settled = c->Settle();
    std::vector<RedisReply> replies;
    for (size_t i = 0; settled && i < commands.size(); ++i) {
      void* r = nullptr;
      if (redisGetReply(c->context, &r) != REDIS_OK || !r) break;
      replies.push_back(ReplyOf(*static_cast<redisReply*>(r)));
      freeReplyObject(r);
    }
    if (replies.size() == commands.size()) {
      Give(std::move(c));
      return replies;
    }
    // The connection is broken or timed out: it is dropped with the idle ones (after a restart of
    // the server they are all closed), and the next command opens another. A connection the server
    // closed while it lay idle is tried once more on a new one: the commands never reached a
    // server that could run them.
    std::string cause = c->context->err ? c->context->errstr : "no reply";
    const bool timedOut =
        c->context->err == REDIS_ERR_IO && (errno == EAGAIN || errno == EWOULDBLOCK ||
                                            cause.find("temporarily unavailable") != std::string::npos);
    {
      std::lock_guard lock(mu_);
      idle_.clear();
    }
    if (reused && !timedOut && attempt == 0) continue;
    throw RedisError(Name() + ": " + (timedOut ? std::string("no reply in time") : cause));
  }
}

RedisReply RedisClient::Send(const std::vector<std::string>& args, bool errorRaises) {
  RedisReply reply = std::move(Pipeline({args}).front());
  if (errorRaises && reply.kind == RedisReply::Kind::kError) throw RedisError(Name() + ": " + reply.text);
  return reply;
}

void RedisClient::Post(const std::vector<std::vector<std::string>>& commands,
                       const std::function<void(const RedisReply&)>& onReply) {
  auto [c, reused] = Take();
  for (const auto& args : commands)
    if (!Append(c->context, args)) throw RedisError(Name() + ": " + c->context->errstr);
  c->pending.insert(c->pending.end(), commands.size(), onReply);
  c->unsent = true;
  {
    std::lock_guard lock(mu_);
    idle_.push_back(std::move(c));
    if (flushAt_) return;
    flushAt_ = std::chrono::steady_clock::now() + kFlushDelay;
  }
  wake_.notify_one();
}

RedisReply RedisClient::Script(const RedisScript& script, const std::vector<std::string>& keys,
                               const std::vector<std::string>& args) {
  std::vector<std::string> command{"EVALSHA", script.sha1, std::to_string(keys.size())};
  command.insert(command.end(), keys.begin(), keys.end());
  command.insert(command.end(), args.begin(), args.end());
  RedisReply reply = Send(command, false);
  if (reply.kind == RedisReply::Kind::kError && reply.text.rfind("NOSCRIPT", 0) == 0) {
    command[0] = "EVAL";
    command[1] = script.source;
    reply = Send(command, false);
  }
  if (reply.kind == RedisReply::Kind::kError) throw RedisError(Name() + ": " + reply.text);
  return reply;
}

}  // namespace corvane::server
