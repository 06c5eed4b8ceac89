#include "redis_client.h"

#include <hiredis/hiredis.h>
#include <openssl/evp.h>

#include <cerrno>
#include <charconv>
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
  ~Connection() {
    if (context) redisFree(context);
  }
};

RedisClient::RedisClient(RedisAddress address, std::chrono::milliseconds connectTimeout,
                         std::chrono::milliseconds replyTimeout)
    : address_(std::move(address)),
      connectTimeout_(connectTimeout),
      replyTimeout_(replyTimeout),
      sender_([this] { SendLoop(); }) {}

RedisClient::~RedisClient() {
  {
    std::lock_guard lock(mu_);
    stopping_ = true;
  }
  wake_.notify_one();
  sender_.join();  // after it wrote out what was sent
}

std::string RedisClient::Name() const {
  return "redis " +
         (address_.socket.empty() ? address_.host + ":" + std::to_string(address_.port) : address_.socket) +
         "/" + std::to_string(address_.db);
}

std::unique_ptr<RedisClient::Connection> RedisClient::Open() {
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
  return c;
}

std::unique_ptr<RedisClient::Connection> RedisClient::TakeIdle() {
  std::lock_guard lock(mu_);
  if (idle_.empty()) return nullptr;
  auto c = std::move(idle_.back());
  idle_.pop_back();
  return c;
}

void RedisClient::Give(std::unique_ptr<Connection> c) {
  std::lock_guard lock(mu_);
  idle_.push_back(std::move(c));
}

std::vector<RedisReply> RedisClient::Exchange(std::unique_ptr<Connection>& c,
                                              const std::vector<const std::vector<std::string>*>& commands) {
  const bool reused = c != nullptr;
  for (int attempt = 0;; ++attempt) {
    if (!c) c = Open();
    for (const auto* args : commands)
      if (!Append(c->context, *args)) {
        std::string cause = c->context->errstr;
        c.reset();  // what was appended before it must not go out with the next commands
        throw RedisError(Name() + ": " + cause);
      }
    std::vector<RedisReply> replies;
    replies.reserve(commands.size());
    while (replies.size() < commands.size()) {
      void* r = nullptr;  // the first read writes the commands out first
      if (redisGetReply(c->context, &r) != REDIS_OK || !r) break;
      replies.push_back(ReplyOf(*static_cast<redisReply*>(r)));
      freeReplyObject(r);
    }
    if (replies.size() == commands.size()) return replies;
    // Broken or timed out: the connection goes. One that had lain idle is tried once more on a new
    // one, as the server may have closed it (a restart): the commands never reached a server that
    // could run them.
    std::string cause = c->context->err ? c->context->errstr : "no reply";
    const bool timedOut =
        c->context->err == REDIS_ERR_IO && (errno == EAGAIN || errno == EWOULDBLOCK ||
                                            cause.find("temporarily unavailable") != std::string::npos);
    c.reset();
    if (!(reused && !timedOut && attempt == 0))
      throw RedisError(Name() + ": " + (timedOut ? std::string("no reply in time") : cause));
  }
}

std::vector<RedisReply> RedisClient::Pipeline(const std::vector<std::vector<std::string>>& commands) {
  std::unique_ptr<Connection> c = TakeIdle();
  std::vector<const std::vector<std::string>*> each;
  for (const auto& args : commands) each.push_back(&args);
  try {
    std::vector<RedisReply> replies = Exchange(c, each);
    Give(std::move(c));
    return replies;
  } catch (const RedisError&) {
    std::lock_guard lock(mu_);
    idle_.clear();  // after a restart of the server they are all closed
    throw;
  }
}

RedisReply RedisClient::Command(const std::vector<std::string>& args) { return One(args, true); }

RedisReply RedisClient::One(const std::vector<std::string>& args, bool errorRaises) {
  RedisReply reply = std::move(Pipeline({args}).front());
  if (errorRaises && reply.kind == RedisReply::Kind::kError) throw RedisError(Name() + ": " + reply.text);
  return reply;
}

void RedisClient::Send(std::vector<std::vector<std::string>> commands, RepliesHandler onReplies) {
  {
    std::lock_guard lock(mu_);
    queued_.push_back({std::move(commands), std::move(onReplies)});
    if (queued_.size() > 1) return;  // the sender has been told already
  }
  wake_.notify_one();
}

// Writes out everything sent while it waited for the last replies, in one write, and hands out the
// replies. Under load, the commands of many pages go together.
void RedisClient::SendLoop() {
  std::unique_ptr<Connection> c;
  std::unique_lock lock(mu_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || !queued_.empty(); });
    if (queued_.empty()) return;  // stopping, and all was sent
    std::vector<Sent> batch;
    batch.swap(queued_);
    lock.unlock();
    std::vector<const std::vector<std::string>*> each;
    for (const Sent& s : batch)
      for (const auto& args : s.commands) each.push_back(&args);
    std::vector<RedisReply> replies;
    std::string error;
    try {
      replies = Exchange(c, each);
    } catch (const RedisError& e) {
      error = e.what();
    }
    auto next = replies.begin();
    for (Sent& s : batch) {
      std::vector<RedisReply> own;
      if (error.empty()) {
        own.assign(std::make_move_iterator(next), std::make_move_iterator(next + s.commands.size()));
        next += static_cast<std::ptrdiff_t>(s.commands.size());
      }
      s.onReplies(std::move(own), error);
    }
    batch.clear();  // what the handlers held goes before the thread waits again
    lock.lock();
  }
}

RedisReply RedisClient::Script(const RedisScript& script, const std::vector<std::string>& keys,
                               const std::vector<std::string>& args) {
  std::vector<std::string> command{"EVALSHA", script.sha1, std::to_string(keys.size())};
  command.insert(command.end(), keys.begin(), keys.end());
  command.insert(command.end(), args.begin(), args.end());
  RedisReply reply = One(command, false);
  if (reply.kind == RedisReply::Kind::kError && reply.text.rfind("NOSCRIPT", 0) == 0) {
    command[0] = "EVAL";
    command[1] = script.source;
    reply = One(command, false);
  }
  if (reply.kind == RedisReply::Kind::kError) throw RedisError(Name() + ": " + reply.text);
  return reply;
}

}  // namespace corvane::server
