// The sign-in throttle: counts failed sign-ins per account and per client address, and makes the
// next attempt wait once there have been too many.
//
// An account is the login name as typed, lower-cased (ASCII), whether or not such an account
// exists, so the throttle tells nothing about which names are real. After 5 failures on a key the
// next attempt must wait 1 second, after 6 failures 2 seconds, then 4, 8, ... up to 5 minutes; every
// further failure starts the wait anew. A key that has had no failure for 15 minutes is forgotten.
// A good sign-in clears its account's count but not its address's: one guessed password does not
// buy an address more guesses at other accounts.
//
// Memory is bounded: accounts and addresses keep at most 5,000 keys each, the least recently failed
// dropped first, so a flood of made-up names cannot push out the addresses' counts.
//
// corvane.SignInThrottle is the class pages create by name; all its objects share one process-wide
// table (SignInThrottleTable::Process()). Delay(login, address) gives the seconds still to wait (0:
// the attempt may go ahead), Failed(login, address) and Succeeded(login, address) report the result.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "corvane/object.h"

namespace corvane::scripting {

class SignInThrottleTable {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr int kFreeFailures = 5;
  static constexpr std::chrono::seconds kMaxDelay{300};
  static constexpr std::chrono::seconds kForgetAfter{900};
  static constexpr size_t kMaxKeys = 5000;  // per kind: accounts, addresses

  // `now` reads the clock; tests hand in their own.
  explicit SignInThrottleTable(std::function<Clock::time_point()> now = &Clock::now);

  // Seconds until an attempt for this account from this address may go ahead, rounded up; 0 now.
  int32_t Delay(std::string_view login, std::string_view address);
  void Failed(std::string_view login, std::string_view address);
  void Succeeded(std::string_view login, std::string_view address);
  // How many keys of either kind it holds.
  size_t Keys() const;

  // The table every corvane.SignInThrottle object uses.
  static SignInThrottleTable& Process();

 private:
  // Failure counts by key, least recently failed first.
  class Counts {
   public:
    Clock::duration Wait(const std::string& key, Clock::time_point now);
    void Fail(std::string key, Clock::time_point now);
    void Clear(const std::string& key);
    size_t Size() const { return order_.size(); }

   private:
    struct Entry {
      std::string key;
      int failures;
      Clock::time_point last;
    };
    std::list<Entry> order_;
    std::unordered_map<std::string, std::list<Entry>::iterator> index_;
  };

  std::function<Clock::time_point()> now_;
  mutable std::mutex mutex_;
  Counts logins_, addresses_;
};

class SignInThrottle final : public Dispatch {
 public:
  const ClassInfo& Info() const override;
};

}  // namespace corvane::scripting
