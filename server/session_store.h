// Web sessions: one host::Session per browser, found by an unguessable id in a cookie.
//
// A request whose cookie names no live session runs with a provisional session: a session of its
// own that nobody else can reach, stored (and given its cookie) only when the request keeps it
// (Keep: the page put something in it) or renews it (Renew: sign-in). Requests that leave nothing
// behind cost nothing after they end.
//
// A stored session lives until it has been idle for its timeout (the store's, unless a page set
// Session.Timeout), until its lifetime is over (counted from its start, however busy it is), until a
// page abandons it, or until the store is full and it is the one idle longest. A session that ends
// is handed to the store's `onEnd` (the site's Session_OnEnd), outside the store's lock.
//
// The requests of one session are served one at a time, in arrival order, as the original host did:
// Submit() queues a request's job behind the one holding the session, and a waiting job holds no
// thread. A job holds the session's Lease while it runs; when it returns, the next job of the
// session is started. Jobs are started through the store's `start` (the worker pool; by default they
// run at once on the calling thread).
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "corvane/host.h"

namespace corvane::server {

// 128 random bits from the kernel (getrandom), as 32 lower-case hex digits.
std::string NewSessionId();
// True when `id` has the form NewSessionId gives (so a cookie of any other form is ignored).
bool IsWellFormedSessionId(std::string_view id);

struct SessionLimits {
  std::chrono::seconds idleTimeout{20 * 60};  // given to every new session (whole minutes, at least one)
  std::chrono::seconds lifetime{12 * 3600};
  size_t maxSessions = 100000;
};

class SessionStore {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  using EndHandler = std::function<void(const std::shared_ptr<host::SessionObject>&)>;
  using Starter = std::function<void(std::function<void()>)>;
  SessionStore(SessionLimits limits, Clock clock = nullptr, EndHandler onEnd = nullptr,
               Starter start = nullptr);
  ~SessionStore();

 private:
  struct Entry;

 public:
  // One request's hold on its session, for as long as its job runs.
  class Lease {
   public:
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    host::Session Session() const;
    const std::string& Id() const { return id_; }
    // The response must set the cookie: the session was stored or moved to a new id by this request.
    bool IsNew() const { return isNew_; }
    // Not stored (yet): the session ends with the request unless Keep or Renew store it.
    bool IsProvisional() const;

   private:
    friend class SessionStore;
    Lease(std::shared_ptr<Entry> entry, std::string id) : entry_(std::move(entry)), id_(std::move(id)) {}
    std::shared_ptr<Entry> entry_;
    std::string id_;
    bool isNew_ = false;
  };
  using Job = std::function<void(Lease&)>;

  // Runs `job` with the live session of `id` (the cookie's value, possibly empty or stale) once no
  // other job of that session runs, or at once with a provisional session.
  void Submit(std::string_view id, Job job);
  // Stores a provisional session under its id (its response then sets the cookie); nothing for a
  // stored one. When the store is full, the session idle longest ends first.
  void Keep(Lease& lease);
  // Moves the lease's session to a new id (the old one finds nothing any more), storing it if it was
  // provisional; the response sets the cookie again.
  void Renew(Lease& lease);
  // Ends the lease's session now (Session.Abandon): its id finds nothing any more, and a stored one
  // is handed to onEnd.
  void End(Lease& lease);
  // Drops the sessions past their idle time or lifetime that no request holds or waits for, handing
  // each to onEnd. Submit calls it now and then by itself.
  void Sweep();
  // Stored sessions.
  size_t Size() const;

 private:
  void Start(std::shared_ptr<Entry> entry, Job job);
  void Release(const std::shared_ptr<Entry>& entry);
  void Store(Lease& lease, std::vector<std::shared_ptr<host::SessionObject>>& ended);  // the caller holds mu_
  void Forget(Entry& e);         // removes a stored entry; the caller holds mu_
  std::string UnusedId() const;  // a new id no session has; the caller holds mu_
  bool Expired(const Entry& e, std::chrono::steady_clock::time_point now) const;
  std::vector<std::shared_ptr<host::SessionObject>> TakeExpired(std::chrono::steady_clock::time_point now);
  void Ended(const std::vector<std::shared_ptr<host::SessionObject>>& sessions) const;

  SessionLimits limits_;
  int timeoutMinutes_;
  Clock clock_;
  EndHandler onEnd_;
  Starter start_;
  mutable std::mutex mu_;
  std::unordered_map<std::string, std::shared_ptr<Entry>> sessions_;
  // Stored sessions by when they were last used, the oldest first (for the cap).
  std::list<Entry*> byUse_;
  std::chrono::steady_clock::time_point lastSweep_;
};

}  // namespace corvane::server
