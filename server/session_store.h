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
//
// With SharedSessions (several processes serving one site: redis_sessions.h) the sessions live in
// the shared store and this store keeps only the queues of the sessions its requests hold or wait
// for. When a job starts, its session is claimed from the shared store: its lock (so that the pages
// of a session run one at a time across the processes as well) and its values, into a new
// SessionObject. The claim is sent ahead, and the job takes a worker once it is answered. A session
// another process holds is tried again after a short delay, the job holding no worker meanwhile,
// for as long as that lock may live; then the job runs with the failure in Lease::Unavailable().
// Keep, Renew and End write to the shared store at once, and Commit writes a held session back and
// lets go of its lock; a job that ends without Commit lets go without writing. When the shared
// store cannot be reached, the job runs with its cause in Unavailable() (the page is not run: the
// host answers 503).
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <stdexcept>
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

// The shared store cannot be reached or refused; the message names it and the cause.
class SessionStoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using EndedSessions = std::vector<std::shared_ptr<host::SessionObject>>;

// Sessions kept outside the process, where every process serving the site finds them. Every call
// may raise SessionStoreError but Unlock.
class SharedSessions {
 public:
  virtual ~SharedSessions() = default;
  // What a request holds of its session in the shared store.
  struct Claim {
    std::string token;    // of the session's lock; "" when none is held
    int64_t started = 0;  // the session's start, Unix seconds
    // Until when the lock is surely still this request's, by this process's clock: its expiry
    // cannot have passed yet, so nobody else can have taken it.
    std::chrono::steady_clock::time_point sureUntil;
    // When the shared store's list of sessions has it expire (Unix ms; 0: not listed, or unknown).
    int64_t listedUntil = 0;
  };
  enum class Outcome { kMissing, kBusy, kHeld };
  // What the shared store answered to a claim sent ahead (AskAhead), for TryClaim to finish.
  class Asked {
   public:
    virtual ~Asked() = default;
  };
  // Sends the claim of `id`'s session ahead, before the job that needs it takes a worker, so that
  // no worker waits for the shared store. `then` gets the answer, on a thread of the shared store's
  // (it must only hand work on). By default nothing is sent ahead: `then` gets nothing, at once.
  virtual void AskAhead(const std::string& id, std::function<void(std::shared_ptr<Asked>)> then) {
    (void)id;
    then(nullptr);
  }
  // One try for the session of `id` ("" for a request without one, which only loads what every
  // page shares), finishing what AskAhead sent (`asked`; null: asks now). kHeld: the lock is held
  // (`claim`) and `session` has the values and settings. kBusy: another request holds it; try
  // again in `retryIn`. kMissing: there is no such session; one found past its lifetime is removed
  // and added to `ended`.
  virtual Outcome TryClaim(const std::string& id, host::SessionObject& session, Claim& claim,
                           std::chrono::milliseconds& retryIn, EndedSessions& ended,
                           std::shared_ptr<Asked> asked) = 0;
  // Stores a new session under `id` (holding no lock for it); false when the id is taken. Sessions
  // that had to make room are added to `ended`.
  virtual bool Create(const std::string& id, host::SessionObject& session, Claim& claim,
                      EndedSessions& ended) = 0;
  // Moves a held session to `newId`, writing its values, and lets go of the lock; the old id finds
  // nothing any more. False when `newId` is taken (nothing changed).
  virtual bool Move(const std::string& id, Claim& claim, const std::string& newId,
                    host::SessionObject& session) = 0;
  // Writes a held session's values (its idle time starts again) and lets go of the lock.
  virtual void Save(const std::string& id, Claim& claim, host::SessionObject& session) = 0;
  // Removes a held session and lets go of the lock.
  virtual void Drop(const std::string& id, Claim& claim) = 0;
  // Lets go of a held session's lock without writing.
  virtual void Unlock(const std::string& id, Claim& claim) noexcept = 0;
  // Sessions stored.
  virtual size_t Count() = 0;
  // How long a lock lives at most: a request waits no longer than this for a busy session.
  virtual std::chrono::milliseconds LockExpiry() const = 0;
};

class DelayedJobs;

class SessionStore {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  using EndHandler = std::function<void(const std::shared_ptr<host::SessionObject>&)>;
  using Starter = std::function<void(std::function<void()>)>;
  SessionStore(SessionLimits limits, Clock clock = nullptr, EndHandler onEnd = nullptr,
               Starter start = nullptr, std::shared_ptr<SharedSessions> shared = nullptr);
  ~SessionStore();
  // Drops the jobs waiting to try a busy shared session again and waits for the claims sent ahead
  // to be answered (their jobs are started); later jobs claim on their worker. Call before the
  // starter goes.
  void StopRetries();

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
    // Why the session could not be had from the shared store ("" when it could): the page must
    // not run.
    const std::string& Unavailable() const { return unavailable_; }

   private:
    friend class SessionStore;
    Lease(std::shared_ptr<Entry> entry, std::string id) : entry_(std::move(entry)), id_(std::move(id)) {}
    std::shared_ptr<Entry> entry_;
    std::string id_;
    bool isNew_ = false;
    std::string unavailable_;
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
  // The page is done with its session: a shared one is written back and its lock let go (nothing
  // for a session kept in the process). Raises SessionStoreError.
  void Commit(Lease& lease);
  // Drops the sessions past their idle time or lifetime that no request holds or waits for, handing
  // each to onEnd. Submit calls it now and then by itself.
  void Sweep();
  // Stored sessions.
  size_t Size() const;

 private:
  void Start(std::shared_ptr<Entry> entry, Job job);
  void Release(const std::shared_ptr<Entry>& entry);
  // Runs `job` with `lease`; when it returns or throws, the session's next job may start.
  void RunHolding(const std::shared_ptr<Entry>& entry, Lease& lease, const Job& job);
  // The shared store's side.
  void SubmitShared(std::string_view id, Job job);
  void StartShared(std::shared_ptr<Entry> entry, Job job, std::chrono::steady_clock::time_point deadline);
  void RunShared(std::shared_ptr<Entry> entry, Job job, std::chrono::steady_clock::time_point deadline,
                 std::shared_ptr<SharedSessions::Asked> asked);
  void ReleaseShared(const std::shared_ptr<Entry>& entry);
  void CreateShared(Lease& lease, EndedSessions& ended);
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
  std::shared_ptr<SharedSessions> shared_;
  std::unique_ptr<DelayedJobs> retries_;  // with shared_ only
  size_t asking_ = 0;                     // claims sent ahead and not answered yet
  bool stopping_ = false;                 // StopRetries was called: claims are no longer sent ahead
  std::condition_variable answered_;      // an answer came
};

}  // namespace corvane::server
