// The sign-in throttle on a clock the test moves: the schedule of waits, accounts and addresses
// counted apart, what a good sign-in clears, forgetting, and the bound on its keys.
#include "scripting/sign_in_throttle.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "corvane/registry.h"
#include "corvane/variant.h"

namespace corvane::scripting {
namespace {

using namespace std::chrono_literals;

struct ThrottleTest : ::testing::Test {
  SignInThrottleTable::Clock::time_point now{};
  SignInThrottleTable table{[this] { return now; }};

  void Fail(int times, const std::string& login = "xutao", const char* address = "10.0.0.1") {
    for (int i = 0; i < times; ++i) table.Failed(login, address);
  }
};

TEST_F(ThrottleTest, WaitsGrowFromTheFifthFailureUpToFiveMinutes) {
  // clang-format off
  const struct { int failures; int32_t delay; } cases[] = {
      {1, 0}, {4, 0}, {5, 1}, {6, 2}, {7, 4}, {8, 8}, {13, 256}, {14, 300}, {40, 300},
  };
  // clang-format on
  for (int done = 0; const auto& c : cases) {
    Fail(c.failures - done);
    done = c.failures;
    EXPECT_EQ(table.Delay("xutao", "10.0.0.1"), c.delay) << c.failures << " failures";
  }
}

TEST_F(ThrottleTest, TheWaitRunsDownInWholeSecondsRoundedUp) {
  Fail(7);  // 4 seconds
  // clang-format off
  const struct { std::chrono::milliseconds after; int32_t delay; } cases[] = {
      {0ms, 4}, {1ms, 4}, {1000ms, 3}, {3999ms, 1}, {4000ms, 0},
  };
  // clang-format on
  const auto start = now;
  for (const auto& c : cases) {
    now = start + c.after;
    EXPECT_EQ(table.Delay("xutao", "10.0.0.1"), c.delay) << c.after.count() << " ms";
  }
  Fail(1);  // the next failure starts a longer wait from its own time
  EXPECT_EQ(table.Delay("xutao", "10.0.0.1"), 8);
}

TEST_F(ThrottleTest, AccountsAndAddressesAreCountedApartAndASuccessClearsTheAccount) {
  for (const char* login : {"a", "b", "c", "d", "e"}) Fail(1, login, "10.0.0.9");
  EXPECT_EQ(table.Delay("somebodyelse", "10.0.0.9"), 1);  // any name, known or not
  EXPECT_EQ(table.Delay("a", "10.0.0.10"), 0);
  for (const char* address : {"10.1.0.1", "10.1.0.2", "10.1.0.3", "10.1.0.4", "10.1.0.5"})
    Fail(1, "LiNa", address);
  EXPECT_EQ(table.Delay("LINA", "192.168.1.1"), 1);  // any address, whatever the case typed
  EXPECT_EQ(table.Delay("lina2", "192.168.1.1"), 0);
  table.Succeeded("lina", "10.1.0.5");
  EXPECT_EQ(table.Delay("lina", "192.168.1.1"), 0);
  table.Succeeded("a", "10.0.0.9");
  EXPECT_EQ(table.Delay("a", "10.0.0.9"), 1);  // the address still waits
}

TEST_F(ThrottleTest, CountsAreForgottenAfterFifteenIdleMinutes) {
  Fail(5, "early"), Fail(5, "late");
  now += 14min + 59s;
  Fail(1, "late", "10.0.0.2");  // still counted: the sixth failure
  EXPECT_EQ(table.Delay("late", "10.0.0.4"), 2);
  now += 1s;
  Fail(1, "early", "10.0.0.3");  // forgotten: the first failure again
  EXPECT_EQ(table.Delay("early", "10.0.0.4"), 0);
}

TEST_F(ThrottleTest, KeysAreBoundedAndTheOldestGoFirst) {
  Fail(5, "victim", "10.0.0.1");
  for (int i = 0; i < 12000; ++i, now += 1ms) Fail(1, "name" + std::to_string(i), "10.6.6.6");
  EXPECT_EQ(table.Keys(), SignInThrottleTable::kMaxKeys + 2);  // 5,000 names, both addresses
  EXPECT_EQ(table.Delay("x", "10.6.6.6"), 300);
  Fail(1, "victim", "10.0.0.2");     // the oldest name went: it counts from one again
  Fail(4, "name11999", "10.0.0.2");  // the newest stayed: five failures now
  EXPECT_EQ(table.Delay("victim", "10.0.0.3"), 0);
  EXPECT_EQ(table.Delay("name11999", "10.0.0.3"), 1);
  now += 16min;
  Fail(1, "new", "10.0.0.3");  // the forgotten go as failures come in
  EXPECT_EQ(table.Keys(), 2u);
}

TEST(SignInThrottle, PagesShareOneProcessWideTable) {
  Object first = CreateObject("corvane.SignInThrottle");
  Object second = CreateObject("{045F266F-5C44-4CBE-8498-379BA350B776}");
  const Variant login("ThrottleTestName"), address("203.0.113.77");
  for (int i = 0; i < 9; ++i) first.Invoke("Failed", {login, address});
  EXPECT_GE(second.Invoke("Delay", {Variant("throttletestname"), Variant("203.0.113.78")}).ToLong(), 15);
  second.Invoke("Succeeded", {login, address});
  EXPECT_EQ(first.Invoke("Delay", {login, Variant("203.0.113.78")}).ToLong(), 0);
  EXPECT_GE(first.Invoke("Delay", {Variant::Null(), address}).ToLong(), 15);
}

}  // namespace
}  // namespace corvane::scripting
