// Web sessions: one host::Session per browser, found by an unguessable id in a cookie.
//
// A session lives until it has been idle for its timeout (the store's, unless a page set
// Session.Timeout) or until a page abandons it. The requests of one session are served one at a
// time, as the original host did: Acquire() hands out a lease that holds the session's own mutex for
// the whole page, so a second request of the same session waits for the first to finish, while other
// sessions run in parallel on other threads. A session that ends is handed to the store's `onEnd`
// (the site's Session_OnEnd), outside the store's lock.
#pragma once

#include <chrono>
#include <functional>
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

class SessionStore {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  using EndHandler = std::function<void(const std::shared_ptr<host::SessionObject>&)>;
  // `idleTimeout` is given to every new session (whole minutes, at least one).
  explicit SessionStore(std::chrono::seconds idleTimeout, Clock clock = nullptr, EndHandler onEnd = nullptr);

 private:
  struct Entry {
    std::shared_ptr<host::SessionObject> session;
    std::mutex requestMutex;  // held while a page of this session runs
    std::chrono::steady_clock::time_point lastUsed;
    int users = 0;  // leases held or waited for; guarded by the store's mutex
  };

 public:
  // One request's hold on its session. Moving it moves the hold; the destructor marks the session
  // used and lets the next request of the session in.
  class Lease {
   public:
    Lease(Lease&&) noexcept = default;
    Lease& operator=(Lease&&) = delete;
    ~Lease();
    host::Session Session() const { return host::Session(entry_->session); }
    const std::string& Id() const { return id_; }
    bool IsNew() const { return isNew_; }  // a new session: the response must set the cookie

   private:
    friend class SessionStore;
    Lease(SessionStore* store, std::shared_ptr<Entry> entry, std::string id, bool isNew);
    SessionStore* store_;
    std::shared_ptr<Entry> entry_;
    std::unique_lock<std::mutex> lock_;
    std::string id_;
    bool isNew_;
  };

  // The live session of `id` (the cookie's value, possibly empty or stale) or a new one; waits until
  // no other request of that session runs.
  Lease Acquire(std::string_view id);
  // Moves the lease's session to a new id (the old one finds nothing any more) and marks the lease
  // new, so the response sets the cookie again.
  void Renew(Lease& lease);
  // Ends the lease's session now (Session.Abandon): its id finds nothing any more, and onEnd gets it.
  void End(Lease& lease);
  // Drops the sessions idle longer than their timeout that no request holds, handing each to
  // onEnd. Acquire calls it now and then by itself.
  void Sweep();
  size_t Size() const;

 private:
  void Release(const std::shared_ptr<Entry>& entry);
  std::string UnusedId() const;  // a new id no session has; the caller holds mu_
  bool Expired(const Entry& e, std::chrono::steady_clock::time_point now) const;
  // Removes the expired sessions from the map; the caller holds mu_ and hands them to onEnd after.
  std::vector<std::shared_ptr<host::SessionObject>> TakeExpired(std::chrono::steady_clock::time_point now);
  void Ended(const std::vector<std::shared_ptr<host::SessionObject>>& sessions) const;

  int timeoutMinutes_;
  Clock clock_;
  EndHandler onEnd_;
  mutable std::mutex mu_;
  std::unordered_map<std::string, std::shared_ptr<Entry>> sessions_;
  std::chrono::steady_clock::time_point lastSweep_;
};

}  // namespace corvane::server
