#include "scripting/sign_in_throttle.h"

#include <algorithm>

#include "corvane/text.h"

namespace corvane::scripting {

namespace {

using Clock = SignInThrottleTable::Clock;

// Keys are cut to this many bytes, so that a long made-up name costs no more memory than a short one.
constexpr size_t kMaxKeyBytes = 128;

std::string LoginKey(std::string_view login) { return LCase(login.substr(0, kMaxKeyBytes)); }
std::string AddressKey(std::string_view address) { return std::string(address.substr(0, kMaxKeyBytes)); }

// The wait after `failures` failures: none below kFreeFailures, then 1 s, doubling with each further
// failure up to kMaxDelay.
Clock::duration DelayAfter(int failures) {
  int doublings = failures - SignInThrottleTable::kFreeFailures;
  if (doublings < 0) return Clock::duration::zero();
  if (doublings >= 16) return SignInThrottleTable::kMaxDelay;
  return std::min<Clock::duration>(std::chrono::seconds(int64_t{1} << doublings),
                                   SignInThrottleTable::kMaxDelay);
}

}  // namespace

Clock::duration SignInThrottleTable::Counts::Wait(const std::string& key, Clock::time_point now) {
  auto found = index_.find(key);
  if (found == index_.end()) return Clock::duration::zero();
  const Entry& e = *found->second;
  if (now - e.last >= kForgetAfter) {
    order_.erase(found->second);
    index_.erase(found);
    return Clock::duration::zero();
  }
  return std::max(e.last + DelayAfter(e.failures) - now, Clock::duration::zero());
}

void SignInThrottleTable::Counts::Fail(std::string key, Clock::time_point now) {
  // The oldest entries come first: drop those forgotten by now.
  while (!order_.empty() && now - order_.front().last >= kForgetAfter) {
    index_.erase(order_.front().key);
    order_.pop_front();
  }
  auto found = index_.find(key);
  if (found == index_.end()) {
    order_.push_back({key, 0, now});
    found = index_.emplace(std::move(key), std::prev(order_.end())).first;
  } else {
    order_.splice(order_.end(), order_, found->second);
  }
  Entry& e = *found->second;
  e.failures = std::min(e.failures + 1, 1000);
  e.last = now;
  if (order_.size() > kMaxKeys) {
    index_.erase(order_.front().key);
    order_.pop_front();
  }
}

void SignInThrottleTable::Counts::Clear(const std::string& key) {
  auto found = index_.find(key);
  if (found == index_.end()) return;
  order_.erase(found->second);
  index_.erase(found);
}

SignInThrottleTable::SignInThrottleTable(std::function<Clock::time_point()> now) : now_(std::move(now)) {}

int32_t SignInThrottleTable::Delay(std::string_view login, std::string_view address) {
  std::lock_guard lock(mutex_);
  Clock::time_point now = now_();
  Clock::duration wait =
      std::max(logins_.Wait(LoginKey(login), now), addresses_.Wait(AddressKey(address), now));
  // Whole seconds, rounded up: 0 only when the attempt may go ahead now.
  return static_cast<int32_t>(std::chrono::ceil<std::chrono::seconds>(wait).count());
}

void SignInThrottleTable::Failed(std::string_view login, std::string_view address) {
  std::lock_guard lock(mutex_);
  Clock::time_point now = now_();
  logins_.Fail(LoginKey(login), now);
  addresses_.Fail(AddressKey(address), now);
}

void SignInThrottleTable::Succeeded(std::string_view login, std::string_view) {
  std::lock_guard lock(mutex_);
  logins_.Clear(LoginKey(login));
}

size_t SignInThrottleTable::Keys() const {
  std::lock_guard lock(mutex_);
  return logins_.Size() + addresses_.Size();
}

SignInThrottleTable& SignInThrottleTable::Process() {
  static SignInThrottleTable table;
  return table;
}

}  // namespace corvane::scripting
