// Sessions and Application values in Redis, so that several corvane-server processes (behind a load
// balancer, without sticky sessions) serve one site: any of them serves any request of a session,
// and a session outlives the restart of any one of them.
//
// Keys (every name starts with the prefix, "corvane:"):
//   s:<id>      a session: its record (session_codec.h), expiring after its idle timeout; every
//               page that holds the session writes it back and the expiry starts again
//   lock:<id>   the session's lock: the token of the request holding it, with an expiry
//               (`lockExpiry`, past Server.ScriptTimeout) so a process that died holding it holds
//               it no longer than that
//   sessions    sorted set of the stored ids, scored by when each expires (the cap and Count); a
//               score may lag its session's expiry by up to a minute, so that most pages need not
//               write it
//   app         hash of the Application's values: lower-case key -> (key, value)
//   app:lock    Application.Lock's lock across the processes
// A page claims its session in one round trip of plain commands (its lock, its record and the
// Application's values), sent ahead before the page takes a worker, and writes it back in another,
// sent without waiting, that lets go of the lock last. Both go out on the Redis client's sender,
// together with those of the other pages of the moment. Every other step that must be whole is one Lua
// script: moving a session to a new id, creating one (ending the sessions that must make room under the cap),
// removing it, and writing one back when its page ran so long that the lock may have expired.
//
// The Application: its values as the process set them before the first page (the connection
// string) are the process's own; over them come the values in Redis, read at the start of every
// page (in the same round trip as its session) and again when a page takes Application.Lock. A
// page's Set, Remove and RemoveAll are written to Redis at once (a write that cannot be made fails
// the page). Application.Lock holds `app:lock` until the page's last Unlock or its end.
//
// Objects cannot be stored: a page that puts one in its session or the Application gets an error
// naming the key, at once. A session's objects declared in global.asa are made anew for each page.
//
// Session_OnEnd runs where the session's values are at hand: for Session.Abandon, for a session
// found past its lifetime, and for the sessions the cap ends. A session that goes idle past its
// timeout expires in Redis without it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "corvane/host.h"
#include "redis_client.h"
#include "session_store.h"

namespace corvane::server {

struct RedisSessionsOptions {
  std::string prefix = "corvane:";
  // How long a lock lives at most: past Server.ScriptTimeout's default (90 s), so a page that runs
  // its time out still holds its session to the end.
  std::chrono::milliseconds lockExpiry{120000};
  std::chrono::seconds lifetime{12 * 3600};
  size_t maxSessions = 100000;
  std::chrono::milliseconds connectTimeout{1000};
  std::chrono::milliseconds replyTimeout{2000};
  // Unix time in milliseconds (a test may set another).
  std::function<int64_t()> now;
};

class RedisSessions : public SharedSessions {
 public:
  // `log` takes the lines no page shows (records that cannot be read, locks let go too late).
  RedisSessions(RedisAddress address, RedisSessionsOptions options,
                std::function<void(const std::string&)> log);
  // Lets go of the Application it shares.
  ~RedisSessions() override;

  // Shares `application` through Redis from now on: its present values stay the process's own,
  // later writes go to Redis, and Application.Lock takes the lock of every process.
  void ShareApplication(std::shared_ptr<host::Application> application);

  void AskAhead(const std::string& id, std::function<void(std::shared_ptr<Asked>)> then) override;
  Outcome TryClaim(const std::string& id, host::SessionObject& session, Claim& claim,
                   std::chrono::milliseconds& retryIn, EndedSessions& ended,
                   std::shared_ptr<Asked> asked) override;
  bool Create(const std::string& id, host::SessionObject& session, Claim& claim,
              EndedSessions& ended) override;
  bool Move(const std::string& id, Claim& claim, const std::string& newId,
            host::SessionObject& session) override;
  void Save(const std::string& id, Claim& claim, host::SessionObject& session) override;
  void Drop(const std::string& id, Claim& claim) override;
  void Unlock(const std::string& id, Claim& claim) noexcept override;
  size_t Count() override;
  std::chrono::milliseconds LockExpiry() const override { return options_.lockExpiry; }

 private:
  class ApplicationStore;
  struct Scripts;
  struct ClaimAsked;
  static std::shared_ptr<ClaimAsked> NewClaim();
  // The claim's round trip: take the lock with `token`, read the record, the session's place in
  // the list of sessions and the Application.
  std::vector<std::vector<std::string>> ClaimCommands(const std::string& id, const std::string& token) const;
  std::string Key(std::string_view kind, std::string_view id = "") const;
  int64_t Now() const;
  std::string Record(host::SessionObject& session, const Claim& claim) const;
  int64_t TtlOf(const host::SessionObject& session) const;  // the idle timeout, ms
  // Application values from an HGETALL reply, over the process's own.
  void LoadApplication(const RedisReply& hash);
  void LockApplication();
  void UnlockApplication() noexcept;

  RedisClient redis_;
  RedisSessionsOptions options_;
  std::function<void(const std::string&)> log_;
  std::unique_ptr<Scripts> scripts_;
  std::shared_ptr<host::Application> application_;
  std::vector<std::pair<std::string, Variant>> ownValues_;  // the Application's values before sharing
  std::string appLockToken_;                                // held by the page that holds Application.Lock
};

}  // namespace corvane::server
