#include "session_store.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

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

SessionStore::SessionStore(std::chrono::seconds idleTimeout, Clock clock, EndHandler onEnd)
    : timeoutMinutes_(std::max<int>(1, static_cast<int>((idleTimeout.count() + 59) / 60))),
      clock_(clock ? std::move(clock) : [] { return std::chrono::steady_clock::now(); }),
      onEnd_(std::move(onEnd)) {
  lastSweep_ = clock_();
}

bool SessionStore::Expired(const Entry& e, std::chrono::steady_clock::time_point now) const {
  return e.users == 0 && now - e.lastUsed > std::chrono::minutes(e.session->TimeoutMinutes());
}

std::vector<std::shared_ptr<host::SessionObject>> SessionStore::TakeExpired(
    std::chrono::steady_clock::time_point now) {
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  lastSweep_ = now;
  for (auto it = sessions_.begin(); it != sessions_.end();) {
    if (Expired(*it->second, now)) {
      ended.push_back(it->second->session);
      it = sessions_.erase(it);
    } else {
      ++it;
    }
  }
  return ended;
}

void SessionStore::Ended(const std::vector<std::shared_ptr<host::SessionObject>>& sessions) const {
  if (onEnd_)
    for (const auto& s : sessions) onEnd_(s);
}

SessionStore::Lease SessionStore::Acquire(std::string_view id) {
  std::shared_ptr<Entry> entry;
  std::string key;
  bool isNew = false;
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  {
    std::lock_guard lock(mu_);
    auto now = clock_();
    if (now - lastSweep_ > std::chrono::seconds(60)) ended = TakeExpired(now);
    if (IsWellFormedSessionId(id)) {
      auto it = sessions_.find(std::string(id));
      if (it != sessions_.end()) {
        if (Expired(*it->second, now)) {
          ended.push_back(it->second->session);
          sessions_.erase(it);
        } else {
          entry = it->second;
          key = it->first;
        }
      }
    }
    if (!entry) {
      key = UnusedId();
      entry = std::make_shared<Entry>();
      entry->session = std::make_shared<host::SessionObject>();
      entry->session->AssignID(key);
      entry->session->SetTimeoutMinutes(timeoutMinutes_);
      entry->lastUsed = now;
      sessions_.emplace(key, entry);
      isNew = true;
    }
    ++entry->users;
  }
  Ended(ended);
  return Lease(this, std::move(entry), std::move(key), isNew);
}

SessionStore::Lease::Lease(SessionStore* store, std::shared_ptr<Entry> entry, std::string id, bool isNew)
    : store_(store),
      entry_(std::move(entry)),
      lock_(entry_->requestMutex),
      id_(std::move(id)),
      isNew_(isNew) {}

SessionStore::Lease::~Lease() {
  if (!entry_) return;  // moved from
  lock_.unlock();
  store_->Release(entry_);
}

std::string SessionStore::UnusedId() const {
  std::string id;
  do id = NewSessionId();
  while (sessions_.count(id));
  return id;
}

void SessionStore::Renew(Lease& lease) {
  std::lock_guard lock(mu_);
  sessions_.erase(lease.id_);
  std::string key = UnusedId();
  sessions_.emplace(key, lease.entry_);
  lease.entry_->session->AssignID(key);
  lease.id_ = std::move(key);
  lease.isNew_ = true;
}

void SessionStore::Release(const std::shared_ptr<Entry>& entry) {
  std::lock_guard lock(mu_);
  entry->lastUsed = clock_();
  --entry->users;
}

void SessionStore::End(Lease& lease) {
  {
    std::lock_guard lock(mu_);
    auto it = sessions_.find(lease.id_);
    if (it == sessions_.end() || it->second != lease.entry_) return;
    sessions_.erase(it);
  }
  Ended({lease.entry_->session});
}

void SessionStore::Sweep() {
  std::vector<std::shared_ptr<host::SessionObject>> ended;
  {
    std::lock_guard lock(mu_);
    ended = TakeExpired(clock_());
  }
  Ended(ended);
}

size_t SessionStore::Size() const {
  std::lock_guard lock(mu_);
  return sessions_.size();
}

}  // namespace corvane::server
