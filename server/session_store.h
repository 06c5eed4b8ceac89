// Web sessions: one host::Session per browser, found by an unguessable id in a cookie.
//
// A session lives until it has been idle for the timeout. The requests of one session are served one
// at a time, as the original host did: Acquire() hands out a lease that holds the session's own mutex
// for the whole page, so a second request of the same session waits for the first to finish, while
// other sessions run in parallel on other threads.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "corvane/host.h"

namespace corvane::server {

// 128 random bits from the kernel (getrandom), as 32 lower-case hex digits.
std::string NewSessionId();
// True when `id` has the form NewSessionId gives (so a cookie of any other form is ignored).
bool IsWellFormedSessionId(std::string_view id);

class SessionStore {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  explicit SessionStore(std::chrono::seconds idleTimeout, Clock clock = nullptr);

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
  // Drops the sessions idle longer than the timeout that no request holds. Acquire calls it now and
  // then by itself.
  void Sweep();
  size_t Size() const;

 private:
  void Release(const std::shared_ptr<Entry>& entry);
  std::string UnusedId() const;  // a new id no session has; the caller holds mu_
  bool Expired(const Entry& e, std::chrono::steady_clock::time_point now) const;

  std::chrono::seconds idleTimeout_;
  Clock clock_;
  mutable std::mutex mu_;
  std::unordered_map<std::string, std::shared_ptr<Entry>> sessions_;
  std::chrono::steady_clock::time_point lastSweep_;
};

}  // namespace corvane::server
