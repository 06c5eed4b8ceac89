// Session and Application: their values, the session's settings and the application's lock.
#include "corvane/codepage.h"
#include "corvane/error.h"
#include "corvane/host.h"

namespace corvane::host {

namespace {

std::vector<Variant> KeysOf(const Contents& c) {
  std::vector<Variant> keys;
  for (std::string& k : c.Keys()) keys.emplace_back(std::move(k));
  return keys;
}

}  // namespace

std::vector<Variant> SessionObject::Elements() { return KeysOf(values_); }

std::string SessionObject::SessionID() const {
  std::lock_guard lock(mu_);
  return id_;
}

void SessionObject::AssignID(std::string id) {
  std::lock_guard lock(mu_);
  id_ = std::move(id);
  newIDRequested_ = false;
}

void SessionObject::RequestNewID() {
  std::lock_guard lock(mu_);
  newIDRequested_ = true;
}

bool SessionObject::NewIDRequested() const {
  std::lock_guard lock(mu_);
  return newIDRequested_;
}

void SessionObject::Abandon() {
  std::lock_guard lock(mu_);
  abandoned_ = true;
}

bool SessionObject::Abandoned() const {
  std::lock_guard lock(mu_);
  return abandoned_;
}

int SessionObject::TimeoutMinutes() const {
  std::lock_guard lock(mu_);
  return timeoutMinutes_;
}

void SessionObject::SetTimeoutMinutes(int minutes) {
  if (minutes < 1) throw Error::InvalidCall();
  std::lock_guard lock(mu_);
  timeoutMinutes_ = minutes;
}

int SessionObject::CodePage() const {
  std::lock_guard lock(mu_);
  return codePage_;
}

void SessionObject::SetCodePage(int codePage) {
  if (!IsSupportedCodePage(codePage)) throw Error::InvalidCall();
  std::shared_ptr<host::Response> response;
  {
    std::lock_guard lock(mu_);
    codePage_ = codePage;
    response = response_.lock();
  }
  if (response) response->SetCodePage(codePage);
}

int32_t SessionObject::LCID() const {
  std::lock_guard lock(mu_);
  return lcid_;
}

void SessionObject::SetLCID(int32_t lcid) {
  std::lock_guard lock(mu_);
  lcid_ = lcid;
}

void SessionObject::AttachResponse(std::weak_ptr<host::Response> response) {
  std::lock_guard lock(mu_);
  response_ = std::move(response);
}

std::vector<Variant> Application::Elements() { return KeysOf(values_); }

void Application::ShareLock(std::function<void()> acquire, std::function<void()> release) {
  std::lock_guard lock(lockMu_);
  acquireShared_ = std::move(acquire);
  releaseShared_ = std::move(release);
}

void Application::Lock() {
  std::unique_lock lock(lockMu_);
  const auto me = std::this_thread::get_id();
  if (depth_ > 0 && owner_ == me) {
    ++depth_;
    return;
  }
  lockFree_.wait(lock, [this] { return depth_ == 0; });
  owner_ = me;
  depth_ = 1;
  if (!acquireShared_) return;
  // The other processes' lock is waited for holding this process's: its other pages wait here, not
  // on the shared store.
  lock.unlock();
  try {
    acquireShared_();
  } catch (...) {
    lock.lock();
    depth_ = 0;
    owner_ = {};
    lockFree_.notify_all();
    throw;
  }
}

void Application::Free(std::unique_lock<std::mutex>& lock) {
  if (releaseShared_) {
    // The shared lock goes first, while this thread still owns the process's lock.
    lock.unlock();
    releaseShared_();
    lock.lock();
  }
  depth_ = 0;
  owner_ = {};
  lockFree_.notify_all();
}

void Application::Unlock() {
  std::unique_lock lock(lockMu_);
  if (depth_ == 0 || owner_ != std::this_thread::get_id()) return;
  if (depth_ == 1)
    Free(lock);
  else
    --depth_;
}

void Application::UnlockAll() {
  std::unique_lock lock(lockMu_);
  if (depth_ == 0 || owner_ != std::this_thread::get_id()) return;
  Free(lock);
}

}  // namespace corvane::host
