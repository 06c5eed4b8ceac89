#include "session_store.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

#include "delayed_jobs.h"

namespace corvane::server {

std::string NewSessionId() {
  unsigned char bytes[16];
  size_t got = 0;
  while (got < sizeof bytes) {
    ssize_t n = ::getrandom(bytes + got, sizeof bytes - got, 0);
    if (n < 0) {
      if (errno == EINTR) continue;
      throw std::runtime_error("getrandom failed");
    }
    got += static_cast<size_t>(n);
  }
  static const char* hex = "0123456789abcdef";
  std::string id;
  for (unsigned char b : bytes) {
    id += hex[b >> 4];
    id += hex[b & 15];
  }
  return id;
}

bool IsWellFormedSessionId(std::string_view id) {
  if (id.size() != 32) return false;
  for (char c : id)
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
  return true;
}

struct SessionStore::Entry {
  std::shared_ptr<host::SessionObject> session;
  std::string key;      // its id in sessions_ while stored
  bool stored = false;  // false: provisional, or ended
  bool ended = false;
  bool running = false;     // a job holds it
  std::deque<Job> waiting;  // the session's next jobs, in arrival order
  std::chrono::steady_clock::time_point started, lastUsed;
  std::list<Entry*>::iterator use;       // its place in byUse_ while stored
  SharedSessions::Claim claim;           // with a shared store: what the running job holds of it
  std::chrono::milliseconds backoff{0};  // with a shared store: the last wait for a busy session
};

host::Session SessionStore::Lease::Session() const { return host::Session(entry_->session); }
bool SessionStore::Lease::IsProvisional() const { return !entry_->stored; }

SessionStore::SessionStore(SessionLimits limits, Clock clock, EndHandler onEnd, Starter start,
                           std::shared_ptr<SharedSessions> shared)
    : limits_(limits),
      timeoutMinutes_(std::max<int>(1, static_cast<int>((limits.idleTimeout.count() + 59) / 60))),
      clock_(clock ? std::move(clock) : [] { return std::chrono::steady_clock::now(); }),
      onEnd_(std::move(onEnd)),
      start_(start ? std::move(start) : [](std::function<void()> job) { job(); }),
      shared_(std::move(shared)) {
  lastSweep_ = clock_();
  if (shared_) retries_ = std::make_unique<DelayedJobs>();
}

SessionStore::~SessionStore() { StopRetries(); }

void SessionStore::StopRetries() {
  if (!retries_) return;
  retries_->Stop();
  std::unique_lock lock(mu_);
  stopping_ = true;
  answered_.wait(lock, [this] { return asking_ == 0; });
}

bool SessionStore::Expired(const Entry& e, std::chrono::steady_clock::time_point now) const {
  return !e.running && e.waiting.empty() &&
         (now - e.lastUsed > std::chrono::minutes(e.session->TimeoutMinutes()) ||
          now - e.started > limits_.lifetime);
}

void SessionStore::Forget(Entry& e) {
  byUse_.erase(e.use);
  e.stored = false;
  e.ended = true;
  sessions_.erase(e.key);  // last: it may hold the entry's last reference
}

std::vector<std::shared_ptr<host::SessionObject>> SessionStore::TakeExpired(
    std::chrono::steady_clock::time_point now) {
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  lastSweep_ = now;
  std::vector<Entry*> expired;
  for (auto& [key, entry] : sessions_)
    if (Expired(*entry, now)) expired.push_back(entry.get());
  for (Entry* e : expired) {
    ended.push_back(e->session);
    Forget(*e);  // the lease-less entry goes with its map slot
  }
  return ended;
}

void SessionStore::Ended(const std::vector<std::shared_ptr<host::SessionObject>>& sessions) const {
  if (onEnd_)
    for (const auto& s : sessions) onEnd_(s);
}

void SessionStore::Submit(std::string_view id, Job job) {
  if (shared_) return SubmitShared(id, std::move(job));
  std::shared_ptr<Entry> entry;
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  {
    std::lock_guard lock(mu_);
    auto now = clock_();
    if (now - lastSweep_ > std::chrono::seconds(60)) ended = TakeExpired(now);
    if (IsWellFormedSessionId(id)) {
      if (auto it = sessions_.find(std::string(id)); it != sessions_.end()) {
        entry = it->second;
        if (Expired(*entry, now)) {
          ended.push_back(entry->session);
          Forget(*entry);
          entry = nullptr;
        } else if (entry->running) {
          entry->waiting.push_back(std::move(job));
          job = nullptr;
        }
      }
    }
    if (!entry) {
      entry = std::make_shared<Entry>();
      entry->session = std::make_shared<host::SessionObject>();
      entry->session->AssignID(UnusedId());
      entry->session->SetTimeoutMinutes(timeoutMinutes_);
      entry->started = entry->lastUsed = now;
    }
    if (job) entry->running = true;
  }
  Ended(ended);
  if (job) Start(std::move(entry), std::move(job));
}

void SessionStore::RunHolding(const std::shared_ptr<Entry>& entry, Lease& lease, const Job& job) {
  struct Releaser {
    SessionStore* store;
    const std::shared_ptr<Entry>& entry;
    ~Releaser() { store->Release(entry); }
  } releaser{this, entry};
  job(lease);
}

void SessionStore::Start(std::shared_ptr<Entry> entry, Job job) {
  if (shared_)
    return StartShared(std::move(entry), std::move(job),
                       std::chrono::steady_clock::now() + shared_->LockExpiry());
  start_([this, entry = std::move(entry), job = std::move(job)] {
    Lease lease(entry, entry->stored ? entry->key : entry->session->SessionID());
    RunHolding(entry, lease, job);
  });
}

void SessionStore::Release(const std::shared_ptr<Entry>& entry) {
  if (shared_) return ReleaseShared(entry);
  std::deque<Job> next;
  bool ended = false;
  {
    std::lock_guard lock(mu_);
    ended = entry->ended;
    entry->lastUsed = clock_();
    if (entry->stored) byUse_.splice(byUse_.end(), byUse_, entry->use);
    if (ended) {
      next.swap(entry->waiting);  // the session is gone: who waited for it starts afresh
      entry->running = false;
    } else if (!entry->waiting.empty()) {
      next.push_back(std::move(entry->waiting.front()));
      entry->waiting.pop_front();
    } else {
      entry->running = false;
    }
  }
  if (ended) {
    for (Job& job : next) Submit("", std::move(job));
  } else if (!next.empty()) {
    Start(entry, std::move(next.front()));
  }
}

std::string SessionStore::UnusedId() const {
  std::string id;
  do id = NewSessionId();
  while (sessions_.count(id));
  return id;
}

void SessionStore::Store(Lease& lease, std::vector<std::shared_ptr<host::SessionObject>>& ended) {
  Entry& e = *lease.entry_;
  // Full: the session idle longest makes room (one a request holds or waits for is passed over).
  while (sessions_.size() >= limits_.maxSessions) {
    auto oldest = std::find_if(byUse_.begin(), byUse_.end(),
                               [](const Entry* x) { return !x->running && x->waiting.empty(); });
    if (oldest == byUse_.end()) break;
    ended.push_back((*oldest)->session);
    Forget(**oldest);
  }
  if (sessions_.count(lease.id_)) {
    lease.id_ = UnusedId();
    e.session->AssignID(lease.id_);
  }
  e.key = lease.id_;
  e.stored = true;
  e.ended = false;
  sessions_.emplace(e.key, lease.entry_);
  e.use = byUse_.insert(byUse_.end(), &e);
  lease.isNew_ = true;
}

void SessionStore::Keep(Lease& lease) {
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  if (shared_) {
    if (!lease.entry_->stored) CreateShared(lease, ended);
    return Ended(ended);
  }
  {
    std::lock_guard lock(mu_);
    if (lease.entry_->stored) return;
    Store(lease, ended);
  }
  Ended(ended);
}

void SessionStore::Renew(Lease& lease) {
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  if (shared_) {
    Entry& e = *lease.entry_;
    if (!e.stored) {
      lease.id_ = NewSessionId();
      CreateShared(lease, ended);
      return Ended(ended);
    }
    std::string id;
    do id = NewSessionId();
    while (!shared_->Move(lease.id_, e.claim, id, *e.session));
    lease.id_ = id;
    e.session->AssignID(id);
    lease.isNew_ = true;
    return;
  }
  {
    std::lock_guard lock(mu_);
    Entry& e = *lease.entry_;
    if (e.stored) Forget(e);
    lease.id_ = UnusedId();
    e.session->AssignID(lease.id_);
    Store(lease, ended);
  }
  Ended(ended);
}

void SessionStore::End(Lease& lease) {
  if (shared_) {
    Entry& e = *lease.entry_;
    e.ended = true;
    if (!e.stored) return;
    shared_->Drop(lease.id_, e.claim);
    e.stored = false;
    return Ended({e.session});
  }
  {
    std::lock_guard lock(mu_);
    Entry& e = *lease.entry_;
    e.ended = true;
    if (!e.stored) return;  // provisional: it never was anyone's session
    Forget(e);
  }
  Ended({lease.entry_->session});
}

void SessionStore::Commit(Lease& lease) {
  Entry& e = *lease.entry_;
  if (shared_ && e.stored && !e.claim.token.empty()) shared_->Save(lease.id_, e.claim, *e.session);
}

void SessionStore::Sweep() {
  if (shared_) return;  // the shared store ends idle sessions itself
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  {
    std::lock_guard lock(mu_);
    ended = TakeExpired(clock_());
  }
  Ended(ended);
}

size_t SessionStore::Size() const {
  if (shared_) return shared_->Count();
  std::lock_guard lock(mu_);
  return sessions_.size();
}

// With a shared store: the queue per session stays here, the sessions live in the shared store.
// Only the sessions that a request holds or waits for have an entry, under the id their cookie
// named; each job claims its session anew, as another process may have had it in between.
void SessionStore::SubmitShared(std::string_view id, Job job) {
  std::shared_ptr<Entry> entry;
  {
    std::lock_guard lock(mu_);
    if (IsWellFormedSessionId(id)) {
      auto [it, added] = sessions_.try_emplace(std::string(id));
      if (!added) {
        it->second->waiting.push_back(std::move(job));
        return;
      }
      it->second = std::make_shared<Entry>();
      it->second->key = std::string(id);
      entry = it->second;
    } else {
      entry = std::make_shared<Entry>();
    }
    entry->running = true;
  }
  Start(std::move(entry), std::move(job));
}

// The claim goes ahead of the job; the job takes a worker once it is answered.
void SessionStore::StartShared(std::shared_ptr<Entry> entry, Job job,
                               std::chrono::steady_clock::time_point deadline) {
  bool ahead = false;
  {
    std::lock_guard lock(mu_);
    ahead = !stopping_;
    if (ahead) ++asking_;
  }
  if (!ahead)
    return start_([this, entry = std::move(entry), job = std::move(job), deadline]() mutable {
      RunShared(std::move(entry), std::move(job), deadline, nullptr);
    });
  const std::string id = entry->key;
  shared_->AskAhead(id, [this, entry = std::move(entry), job = std::move(job),
                         deadline](std::shared_ptr<SharedSessions::Asked> asked) mutable {
    start_(
        [this, entry = std::move(entry), job = std::move(job), deadline, asked = std::move(asked)]() mutable {
          RunShared(std::move(entry), std::move(job), deadline, std::move(asked));
        });
    std::lock_guard lock(mu_);
    --asking_;
    answered_.notify_all();
  });
}

void SessionStore::RunShared(std::shared_ptr<Entry> entry, Job job,
                             std::chrono::steady_clock::time_point deadline,
                             std::shared_ptr<SharedSessions::Asked> asked) {
  auto session = std::make_shared<host::SessionObject>();
  session->SetTimeoutMinutes(timeoutMinutes_);
  SharedSessions::Claim claim;
  std::chrono::milliseconds retryIn{0};
  EndedSessions ended;
  SharedSessions::Outcome outcome = SharedSessions::Outcome::kMissing;
  std::string unavailable;
  try {
    outcome = shared_->TryClaim(entry->key, *session, claim, retryIn, ended, std::move(asked));
  } catch (const SessionStoreError& e) {
    unavailable = e.what();
  }
  Ended(ended);
  if (outcome == SharedSessions::Outcome::kBusy) {
    // Waits double from 2 ms to 64 ms (pages take milliseconds; a long one is not polled hard),
    // and no wait outlasts the holder's lock.
    entry->backoff =
        std::clamp(entry->backoff * 2, std::chrono::milliseconds(2), std::chrono::milliseconds(64));
    retryIn = std::min(entry->backoff, retryIn + std::chrono::milliseconds(1));
    if (std::chrono::steady_clock::now() + retryIn < deadline) {
      retries_->After(retryIn, [this, entry, job, deadline] { StartShared(entry, job, deadline); });
      return;
    }
    unavailable = "the session is busy: another page of it has run too long";
  }
  entry->backoff = std::chrono::milliseconds(0);
  entry->session = std::move(session);
  entry->claim = std::move(claim);
  entry->stored = outcome == SharedSessions::Outcome::kHeld;
  entry->ended = false;
  entry->session->AssignID(entry->stored ? entry->key : NewSessionId());
  Lease lease(entry, entry->session->SessionID());
  lease.unavailable_ = std::move(unavailable);
  RunHolding(entry, lease, job);
}

void SessionStore::ReleaseShared(const std::shared_ptr<Entry>& entry) {
  // A job that ended without Commit (it failed, or the store could not be written) lets go.
  if (!entry->claim.token.empty()) shared_->Unlock(entry->key, entry->claim);
  Job next;
  {
    std::lock_guard lock(mu_);
    if (!entry->waiting.empty()) {
      next = std::move(entry->waiting.front());
      entry->waiting.pop_front();
    } else {
      entry->running = false;
      if (auto it = sessions_.find(entry->key); it != sessions_.end() && it->second == entry)
        sessions_.erase(it);
    }
  }
  if (next) Start(entry, std::move(next));
}

void SessionStore::CreateShared(Lease& lease, EndedSessions& ended) {
  Entry& e = *lease.entry_;
  while (!shared_->Create(lease.id_, *e.session, e.claim, ended)) lease.id_ = NewSessionId();
  e.session->AssignID(lease.id_);
  e.stored = true;
  lease.isNew_ = true;
}

}  // namespace corvane::server
