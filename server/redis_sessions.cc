#include "redis_sessions.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>

#include "corvane/codepage.h"
#include "corvane/text.h"
#include "session_codec.h"

namespace corvane::server {

namespace {

// KEYS: session, lock, sessions. ARGV: token, record, ttl ms, id, now ms. 0: the lock was lost.
constexpr const char* kSave = R"(
if redis.call('GET', KEYS[2]) ~= ARGV[1] then return 0 end
redis.call('SET', KEYS[1], ARGV[2], 'PX', ARGV[3])
redis.call('ZADD', KEYS[3], tonumber(ARGV[5]) + tonumber(ARGV[3]), ARGV[4])
redis.call('DEL', KEYS[2])
return 1)";

// KEYS: session, sessions. ARGV: record, ttl ms, id, now ms, most sessions, prefix.
// {0}: the id is taken; {1, {id, record, ...}}: stored, with the sessions that made room (the ones
// that expire soonest and that no request holds).
constexpr const char* kCreate = R"(
local now, most = tonumber(ARGV[4]), tonumber(ARGV[5])
redis.call('ZREMRANGEBYSCORE', KEYS[2], '-inf', now)
local ended = {}
local n = redis.call('ZCARD', KEYS[2])
if n >= most then
  for _, other in ipairs(redis.call('ZRANGE', KEYS[2], 0, n - most + 16)) do
    if n < most then break end
    if redis.call('EXISTS', ARGV[6] .. 'lock:' .. other) == 0 then
      local record = redis.call('GET', ARGV[6] .. 's:' .. other)
      redis.call('DEL', ARGV[6] .. 's:' .. other)
      redis.call('ZREM', KEYS[2], other)
      n = n - 1
      if record then ended[#ended + 1] = other; ended[#ended + 1] = record end
    end
  end
end
if not redis.call('SET', KEYS[1], ARGV[1], 'NX', 'PX', ARGV[2]) then return {0} end
redis.call('ZADD', KEYS[2], now + tonumber(ARGV[2]), ARGV[3])
return {1, ended})";

// KEYS: old session, old lock, new session, sessions. ARGV: token, record, ttl ms, old id, new id,
// now ms. -1: the lock was lost; 0: the new id is taken; 1: moved.
constexpr const char* kMove = R"(
if redis.call('GET', KEYS[2]) ~= ARGV[1] then return -1 end
if redis.call('EXISTS', KEYS[3]) == 1 then return 0 end
redis.call('DEL', KEYS[1], KEYS[2])
redis.call('ZREM', KEYS[4], ARGV[4])
redis.call('SET', KEYS[3], ARGV[2], 'PX', ARGV[3])
redis.call('ZADD', KEYS[4], tonumber(ARGV[6]) + tonumber(ARGV[3]), ARGV[5])
return 1)";

// KEYS: session, lock, sessions. ARGV: token, id.
constexpr const char* kDrop = R"(
if redis.call('GET', KEYS[2]) ~= ARGV[1] then return 0 end
redis.call('DEL', KEYS[1], KEYS[2])
redis.call('ZREM', KEYS[3], ARGV[2])
return 1)";

// KEYS: lock. ARGV: token. Only the holder's token lets go.
constexpr const char* kUnlock = R"(
if redis.call('GET', KEYS[1]) == ARGV[1] then return redis.call('DEL', KEYS[1]) end
return 0)";

// KEYS: app lock, app hash. ARGV: token, lock ms. {0, pttl}: held by another; {1, app}: held.
constexpr const char* kLockApplication = R"(
if not redis.call('SET', KEYS[1], ARGV[1], 'NX', 'PX', ARGV[2]) and redis.call('GET', KEYS[1]) ~= ARGV[1] then
  return {0, redis.call('PTTL', KEYS[1])}
end
return {1, redis.call('HGETALL', KEYS[2])})";

// A session's values refuse objects at once, naming the key: they could not be written back.
// `what` is "Session" or "Application", `kept` says where it is kept.
void RequireStorable(std::string_view what, std::string_view key, const Variant& value,
                     std::string_view kept) {
  if (!IsStorable(value))
    throw host::HostError(std::string(what) + "(\"" + std::string(key) + "\") cannot hold an object: " +
                          std::string(kept) + " kept in Redis, shared by several servers (--sessions)");
}

class SessionValuesStore : public host::ContentsStore {
 public:
  void Set(std::string_view key, const Variant& value) override {
    RequireStorable("Session", key, value, "the sessions are");
  }
  void Remove(std::string_view) override {}
  void Clear() override {}
};

// How far the list of sessions may lag behind a session's expiry (ms).
constexpr int64_t kListedSlack = 60000;

const RedisReply& At(const RedisReply& r, size_t i) {
  if (r.kind != RedisReply::Kind::kArray || i >= r.elements.size())
    throw RedisError("redis: a script answered in an unexpected shape");
  return r.elements[i];
}

std::string ShortId(const std::string& id) { return id.substr(0, 8) + "..."; }

// A lock's token. It is only compared, so it need not be secret, only unlike every other token of
// every process: random bits drawn once, and a count (no system call per page).
std::string LockToken() {
  static const std::string drawn = NewSessionId() + "-";
  static std::atomic<uint64_t> count{0};
  return drawn + std::to_string(count.fetch_add(1, std::memory_order_relaxed));
}

// A session as its record has it.
void Fill(host::SessionObject& s, const SessionRecord& record) {
  s.SetTimeoutMinutes(record.timeoutMinutes);
  if (record.codePage != 0 && IsSupportedCodePage(record.codePage)) s.SetCodePage(record.codePage);
  s.SetLCID(record.lcid);
  s.Values().Assign(record.values);
}

// A session that ends, for its Session_OnEnd.
std::shared_ptr<host::SessionObject> Ending(const std::string& id, const SessionRecord& record) {
  auto s = std::make_shared<host::SessionObject>();
  s->AssignID(id);
  Fill(*s, record);
  return s;
}

}  // namespace

struct RedisSessions::Scripts {
  RedisScript create{kCreate}, move{kMove}, drop{kDrop}, unlock{kUnlock}, lockApplication{kLockApplication};
  std::shared_ptr<SessionValuesStore> sessionValues = std::make_shared<SessionValuesStore>();
};

// Application.Contents' writes, through to the hash.
class RedisSessions::ApplicationStore : public host::ContentsStore {
 public:
  explicit ApplicationStore(RedisSessions& owner) : owner_(owner) {}
  void Set(std::string_view key, const Variant& value) override {
    RequireStorable("Application", key, value, "the Application is");
    Write(key, {"HSET", owner_.Key("app"), LCase(key), EncodeNamedValue(key, value)});
  }
  void Remove(std::string_view key) override { Write(key, {"HDEL", owner_.Key("app"), LCase(key)}); }
  void Clear() override { Write("", {"DEL", owner_.Key("app")}); }

 private:
  void Write(std::string_view key, const std::vector<std::string>& command) {
    try {
      owner_.redis_.Command(command);
    } catch (const RedisError& e) {
      throw host::HostError("Application" + (key.empty() ? std::string() : "(\"" + std::string(key) + "\")") +
                            " cannot be written: " + e.what());
    } catch (const CodecError& e) {
      throw host::HostError("Application(\"" + std::string(key) + "\") cannot be written: " + e.what());
    }
  }
  RedisSessions& owner_;
};

RedisSessions::RedisSessions(RedisAddress address, RedisSessionsOptions options,
                             std::function<void(const std::string&)> log)
    : redis_(std::move(address), options.connectTimeout, options.replyTimeout),
      options_(std::move(options)),
      log_(std::move(log)),
      scripts_(std::make_unique<Scripts>()) {
  if (!options_.now)
    options_.now = [] {
      return std::chrono::duration_cast<std::chrono::milliseconds>(
                 std::chrono::system_clock::now().time_since_epoch())
          .count();
    };
}

RedisSessions::~RedisSessions() {
  if (application_) {
    application_->Values().SetStore(nullptr);
    application_->ShareLock(nullptr, nullptr);
  }
}

std::string RedisSessions::Key(std::string_view kind, std::string_view id) const {
  return options_.prefix + std::string(kind) + std::string(id);
}

int64_t RedisSessions::Now() const { return options_.now(); }

int64_t RedisSessions::TtlOf(const host::SessionObject& session) const {
  return int64_t{session.TimeoutMinutes()} * 60000;
}

std::string RedisSessions::Record(host::SessionObject& session, const Claim& claim) const {
  SessionRecord record{.started = claim.started,
                       .timeoutMinutes = session.TimeoutMinutes(),
                       .codePage = session.CodePage(),
                       .lcid = session.LCID(),
                       .values = session.Values().Items()};
  try {
    return EncodeSession(record);
  } catch (const CodecError& e) {
    throw SessionStoreError(std::string("the session cannot be written: ") + e.what());
  }
}

void RedisSessions::ShareApplication(std::shared_ptr<host::Application> application) {
  application_ = std::move(application);
  ownValues_ = application_->Values().Items();
  application_->Values().SetStore(std::make_shared<ApplicationStore>(*this));
  application_->ShareLock([this] { LockApplication(); }, [this]() noexcept { UnlockApplication(); });
}

void RedisSessions::LoadApplication(const RedisReply& hash) {
  if (!application_) return;
  std::vector<std::pair<std::string, Variant>> items = ownValues_;
  for (size_t i = 1; i < hash.elements.size(); i += 2) {
    try {
      items.push_back(DecodeNamedValue(hash.elements[i].text));
    } catch (const CodecError& e) {
      log_("corvane-server: Application value " + hash.elements[i - 1].text + " in redis cannot be read (" +
           e.what() + "); left out");
    }
  }
  application_->Values().Assign(items);
}

// A claim's round trip, sent ahead.
struct RedisSessions::ClaimAsked : SharedSessions::Asked {
  std::string token;
  std::chrono::steady_clock::time_point at;  // when the lock was asked for
  std::vector<RedisReply> replies;
  std::string error;  // why there are no replies
};

std::vector<std::vector<std::string>> RedisSessions::ClaimCommands(const std::string& id,
                                                                   const std::string& token) const {
  return {{"SET", Key("lock:", id), token, "NX", "PX", std::to_string(options_.lockExpiry.count())},
          {"GET", Key("s:", id)},
          {"HGETALL", Key("app")},
          {"ZSCORE", Key("sessions"), id}};
}

// A claim about to be asked for: its token, and the time taken before the lock is asked for (the
// lock expires no sooner than lockExpiry after it).
std::shared_ptr<RedisSessions::ClaimAsked> RedisSessions::NewClaim() {
  auto claim = std::make_shared<ClaimAsked>();
  claim->token = LockToken();
  claim->at = std::chrono::steady_clock::now();
  return claim;
}

void RedisSessions::AskAhead(const std::string& id, std::function<void(std::shared_ptr<Asked>)> then) {
  if (id.empty()) return then(nullptr);  // a page without a session reads the Application on its worker
  auto asked = NewClaim();
  redis_.Send(ClaimCommands(id, asked->token),
              [asked, then = std::move(then)](std::vector<RedisReply> replies, const std::string& error) {
                asked->replies = std::move(replies);
                asked->error = error;
                then(asked);
              });
}

SharedSessions::Outcome RedisSessions::TryClaim(const std::string& id, host::SessionObject& session,
                                                Claim& claim, std::chrono::milliseconds& retryIn,
                                                EndedSessions& ended, std::shared_ptr<Asked> asked) {
  session.Values().SetStore(scripts_->sessionValues);
  try {
    if (id.empty()) {
      if (application_) LoadApplication(redis_.Command({"HGETALL", Key("app")}));
      return Outcome::kMissing;
    }
    // One round trip of plain commands (cheaper for Redis than a script): take the lock, read the
    // record, its place in the list of sessions and the Application. Only when the lock is not
    // taken does a second one ask who holds it and for how long: a command sent again after a
    // broken connection finds its own token, and a busy session says how long to wait.
    auto ahead = std::static_pointer_cast<ClaimAsked>(std::move(asked));
    if (!ahead) {
      ahead = NewClaim();
      ahead->replies = redis_.Pipeline(ClaimCommands(id, ahead->token));
    }
    if (!ahead->error.empty()) throw RedisError(ahead->error);
    const std::string& token = ahead->token;
    const std::string lock = Key("lock:", id);
    const std::vector<RedisReply>& r = ahead->replies;
    for (const RedisReply& each : r)
      if (each.kind == RedisReply::Kind::kError) throw RedisError(redis_.Name() + ": " + each.text);
    if (r[0].kind == RedisReply::Kind::kNil) {
      std::vector<RedisReply> holder = redis_.Pipeline({{"GET", lock}, {"PTTL", lock}});
      if (holder[0].text != token) {
        retryIn = std::chrono::milliseconds(std::max<int64_t>(0, holder[1].integer));
        return Outcome::kBusy;
      }
    }
    claim.token = token;
    claim.sureUntil = ahead->at + options_.lockExpiry * 9 / 10;  // a tenth left for clocks and a slow server
    claim.listedUntil = r[3].kind == RedisReply::Kind::kText
                            ? static_cast<int64_t>(std::strtod(r[3].text.c_str(), nullptr))
                            : 0;
    LoadApplication(r[2]);
    if (r[1].kind == RedisReply::Kind::kNil) {  // no such session: the lock taken for it goes
      Unlock(id, claim);
      return Outcome::kMissing;
    }
    SessionRecord record;
    try {
      record = DecodeSession(r[1].text);
    } catch (const CodecError& e) {
      // Written by a newer version, or damaged: this request starts a session of its own.
      log_("corvane-server: session " + ShortId(id) + " in redis cannot be read (" + e.what() +
           "); the request starts a new session");
      Unlock(id, claim);
      return Outcome::kMissing;
    }
    claim.started = record.started;
    if (Now() / 1000 - record.started > options_.lifetime.count()) {
      Drop(id, claim);
      ended.push_back(Ending(id, record));
      return Outcome::kMissing;
    }
    Fill(session, record);
    return Outcome::kHeld;
  } catch (const RedisError& e) {
    throw SessionStoreError(e.what());
  }
}

bool RedisSessions::Create(const std::string& id, host::SessionObject& session, Claim& claim,
                           EndedSessions& ended) {
  claim.started = Now() / 1000;
  try {
    RedisReply r =
        redis_.Script(scripts_->create, {Key("s:", id), Key("sessions")},
                      {Record(session, claim), std::to_string(TtlOf(session)), id, std::to_string(Now()),
                       std::to_string(options_.maxSessions), options_.prefix});
    if (At(r, 0).integer == 0) return false;
    const RedisReply& made = At(r, 1);
    for (size_t i = 1; i < made.elements.size(); i += 2) {
      try {
        ended.push_back(Ending(made.elements[i - 1].text, DecodeSession(made.elements[i].text)));
      } catch (const CodecError&) {
        // Its Session_OnEnd cannot run: its values cannot be read.
      }
    }
    return true;
  } catch (const RedisError& e) {
    throw SessionStoreError(e.what());
  }
}

bool RedisSessions::Move(const std::string& id, Claim& claim, const std::string& newId,
                         host::SessionObject& session) {
  try {
    RedisReply r =
        redis_.Script(scripts_->move, {Key("s:", id), Key("lock:", id), Key("s:", newId), Key("sessions")},
                      {claim.token, Record(session, claim), std::to_string(TtlOf(session)), id, newId,
                       std::to_string(Now())});
    if (r.integer == -1) {
      claim.token.clear();
      throw SessionStoreError("the session's lock expired while its page ran; it was not moved");
    }
    if (r.integer == 0) return false;
    claim.token.clear();
    return true;
  } catch (const RedisError& e) {
    throw SessionStoreError(e.what());
  }
}

void RedisSessions::Save(const std::string& id, Claim& claim, host::SessionObject& session) {
  // Sent without waiting: the page's reply need not wait for Redis's. The lock goes in the same
  // write, after the record, so whoever takes the session next reads these values. While the
  // lock is surely still this page's, plain commands do it (a script costs Redis several times
  // more); after that, only a script can tell whether it still is.
  const std::string record = Record(session, claim);
  const int64_t ttl = TtlOf(session), now = Now();
  const bool sure = std::chrono::steady_clock::now() < claim.sureUntil;
  std::vector<std::vector<std::string>> commands;
  if (sure) {
    commands = {{"SET", Key("s:", id), record, "PX", std::to_string(ttl)}};
    // The list of sessions (for the cap and Count) learns the new expiry when its own is a minute
    // or more off (behind, or ahead after Session.Timeout was shortened): most pages of a busy
    // session leave it alone.
    if (std::llabs(now + ttl - claim.listedUntil) >= kListedSlack)
      commands.push_back({"ZADD", Key("sessions"), std::to_string(now + ttl), id});
    commands.push_back({"DEL", Key("lock:", id)});
  } else {
    commands = {{"EVAL", kSave, "3", Key("s:", id), Key("lock:", id), Key("sessions"), claim.token, record,
                 std::to_string(ttl), id, std::to_string(now)}};
  }
  claim.token.clear();
  redis_.Send(
      std::move(commands), [log = log_, id, sure](std::vector<RedisReply> r, const std::string& error) {
        std::string failed = error;
        for (const RedisReply& each : r)
          if (failed.empty() && each.kind == RedisReply::Kind::kError) failed = each.text;
        if (!failed.empty())
          log("corvane-server: session " + ShortId(id) + ": its values could not be written: " + failed);
        else if (!sure && r[0].integer == 0)
          log("corvane-server: session " + ShortId(id) +
              ": its lock expired while its page ran; the page's session values were not written");
      });
}

void RedisSessions::Drop(const std::string& id, Claim& claim) {
  try {
    redis_.Script(scripts_->drop, {Key("s:", id), Key("lock:", id), Key("sessions")}, {claim.token, id});
    claim.token.clear();
  } catch (const RedisError& e) {
    throw SessionStoreError(e.what());
  }
}

void RedisSessions::Unlock(const std::string& id, Claim& claim) noexcept {
  std::string token = std::move(claim.token);
  claim.token.clear();
  try {
    redis_.Script(scripts_->unlock, {Key("lock:", id)}, {token});
  } catch (const std::exception& e) {
    // The lock lets go by itself when it expires.
    log_(std::string("corvane-server: a session lock could not be let go: ") + e.what());
  }
}

size_t RedisSessions::Count() {
  try {
    RedisReply r = redis_.Command({"ZCOUNT", Key("sessions"), std::to_string(Now()), "+inf"});
    return static_cast<size_t>(std::max<int64_t>(0, r.integer));
  } catch (const RedisError& e) {
    log_(std::string("corvane-server: sessions cannot be counted: ") + e.what());
    return 0;
  }
}

void RedisSessions::LockApplication() {
  std::string token = LockToken();
  const auto deadline = std::chrono::steady_clock::now() + options_.lockExpiry;
  std::chrono::milliseconds backoff{1};
  try {
    for (;;) {
      RedisReply r = redis_.Script(scripts_->lockApplication, {Key("app:lock"), Key("app")},
                                   {token, std::to_string(options_.lockExpiry.count())});
      if (At(r, 0).integer == 1) {
        appLockToken_ = token;
        LoadApplication(At(r, 1));
        return;
      }
      if (std::chrono::steady_clock::now() > deadline)
        throw host::HostError("Application.Lock: another server held the lock for too long");
      // This page's thread waits (a page's Lock is a call in its script), polling less and less often.
      backoff = std::min(backoff * 2, std::chrono::milliseconds(64));
      std::this_thread::sleep_for(
          std::min(backoff, std::chrono::milliseconds(std::max<int64_t>(0, At(r, 1).integer) + 1)));
    }
  } catch (const RedisError& e) {
    throw host::HostError(std::string("Application.Lock: ") + e.what());
  }
}

void RedisSessions::UnlockApplication() noexcept {
  std::string token = std::move(appLockToken_);
  appLockToken_.clear();
  try {
    redis_.Script(scripts_->unlock, {Key("app:lock")}, {token});
  } catch (const std::exception& e) {
    log_(std::string("corvane-server: Application.Lock could not be let go (it expires by itself): ") +
         e.what());
  }
}

}  // namespace corvane::server
