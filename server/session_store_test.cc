#include "session_store.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

namespace corvane::server {
namespace {

using namespace std::chrono_literals;

TEST(SessionIdTest, IdsAreRandomHexOf128Bits) {
  std::set<std::string> ids;
  for (int i = 0; i < 200; ++i) {
    std::string id = NewSessionId();
    EXPECT_TRUE(IsWellFormedSessionId(id)) << id;
    ids.insert(id);
  }
  EXPECT_EQ(ids.size(), 200u);
  EXPECT_FALSE(IsWellFormedSessionId(""));
  EXPECT_FALSE(IsWellFormedSessionId("0123456789ABCDEF0123456789abcdef"));  // upper case
  EXPECT_FALSE(IsWellFormedSessionId("0123456789abcdef0123456789abcde"));   // short
}

struct FakeClock {
  std::chrono::steady_clock::time_point now{};
  SessionStore::Clock Fn() {
    return [this] { return now; };
  }
};

TEST(SessionStoreTest, ACookieFindsItsSessionAndUnknownOnesStartNewSessions) {
  FakeClock clock;
  SessionStore store(20min, clock.Fn());
  std::string id;
  {
    auto lease = store.Acquire("");
    EXPECT_TRUE(lease.IsNew());
    lease.Session().Set("personID", Variant(3));
    id = lease.Id();
  }
  {
    auto lease = store.Acquire(id);
    EXPECT_FALSE(lease.IsNew());
    EXPECT_EQ(lease.Session().Get("PERSONID").ToLong(), 3);
    EXPECT_EQ(lease.Session().ptr()->SessionID(), id);
  }
  {
    // A well-formed id that the store never gave out is not adopted: a new id is issued.
    auto lease = store.Acquire("0123456789abcdef0123456789abcdef");
    EXPECT_TRUE(lease.IsNew());
    EXPECT_NE(lease.Id(), "0123456789abcdef0123456789abcdef");
    EXPECT_TRUE(lease.Session().Get("personID").IsEmpty());
  }
  EXPECT_EQ(store.Size(), 2u);
}

TEST(SessionStoreTest, ARenewedSessionKeepsItsValuesUnderANewIdOnly) {
  SessionStore store(20min);
  std::string before, after;
  {
    auto lease = store.Acquire("");
    before = lease.Id();
  }
  {
    auto lease = store.Acquire(before);
    lease.Session().Set("personID", Variant(7));
    lease.Session().ptr()->RequestNewID();
    store.Renew(lease);
    after = lease.Id();
    EXPECT_TRUE(lease.IsNew());  // the response must send the new cookie
    EXPECT_EQ(lease.Session().ptr()->SessionID(), after);
    EXPECT_FALSE(lease.Session().ptr()->NewIDRequested());
  }
  EXPECT_NE(after, before);
  EXPECT_TRUE(IsWellFormedSessionId(after));
  EXPECT_EQ(store.Acquire(after).Session().Get("personID").ToLong(), 7);
  auto old = store.Acquire(before);
  EXPECT_TRUE(old.IsNew());
  EXPECT_TRUE(old.Session().Get("personID").IsEmpty());
}

TEST(SessionStoreTest, IdleSessionsExpireAfterTheTimeoutButUseKeepsThemAlive) {
  FakeClock clock;
  SessionStore store(20min, clock.Fn());
  std::string kept, idle;
  { kept = store.Acquire("").Id(); }
  { idle = store.Acquire("").Id(); }
  clock.now += 15min;
  { store.Acquire(kept); }
  clock.now += 15min;  // idle: 30 minutes; kept: 15
  {
    auto lease = store.Acquire(kept);
    EXPECT_FALSE(lease.IsNew());
  }
  {
    auto lease = store.Acquire(idle);
    EXPECT_TRUE(lease.IsNew());
  }
  clock.now += 21min;
  store.Sweep();
  EXPECT_EQ(store.Size(), 0u);
}

TEST(SessionStoreTest, ASessionInUseIsNotSweptAway) {
  FakeClock clock;
  SessionStore store(1min, clock.Fn());
  auto lease = store.Acquire("");
  clock.now += 10min;
  store.Sweep();
  EXPECT_EQ(store.Size(), 1u);
}

TEST(SessionStoreTest, RequestsOfOneSessionRunOneAtATime) {
  SessionStore store(20min);
  std::string id = store.Acquire("").Id();
  std::atomic<int> inside{0}, most{0};
  auto work = [&](std::string cookie) {
    auto lease = store.Acquire(cookie);
    int n = ++inside;
    int m = most.load();
    while (n > m && !most.compare_exchange_weak(m, n)) {
    }
    std::this_thread::sleep_for(20ms);
    --inside;
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work, id);
  for (auto& t : threads) t.join();
  EXPECT_EQ(most.load(), 1);

  // Leases of different sessions are held at the same time without waiting for one another.
  std::vector<SessionStore::Lease> leases;
  for (int i = 0; i < 3; ++i) leases.push_back(store.Acquire(""));
  EXPECT_EQ(store.Size(), 4u);
}

}  // namespace
}  // namespace corvane::server
