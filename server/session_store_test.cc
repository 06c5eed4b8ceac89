#include "session_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace corvane::server {
namespace {

using namespace std::chrono_literals;

TEST(SessionIdTest, IdsAreRandomLowerCaseHexOf128Bits) {
  std::set<std::string> ids;
  for (int i = 0; i < 100; ++i) ids.insert(NewSessionId());
  EXPECT_EQ(ids.size(), 100u);
  for (const std::string& id : ids) EXPECT_THAT(id, ::testing::MatchesRegex("[0-9a-f]{32}"));
}

TEST(SessionStoreTest, RenewalMovesTheSessionToANewIdAndTheOldOneFindsNothing) {
  SessionStore store(20min);
  std::string before = store.Acquire("").Id(), after;
  {
    auto lease = store.Acquire(before);
    lease.Session().Set("personID", Variant(3));
    lease.Session().ptr()->RequestNewID();  // as the sign-in page does
    store.Renew(lease);
    EXPECT_TRUE(lease.IsNew());  // the response sends the new cookie
    EXPECT_FALSE(lease.Session().ptr()->NewIDRequested());
    EXPECT_EQ(lease.Session().ptr()->SessionID(), lease.Id());
    after = lease.Id();
  }
  EXPECT_EQ(store.Acquire(after).Session().Get("PERSONID").ToLong(), 3);
  EXPECT_TRUE(store.Acquire(before).IsNew());  // the id from before opens a new, empty session
}

TEST(SessionStoreTest, IdleSessionsExpireUnlessInUse) {
  std::chrono::steady_clock::time_point now{};
  SessionStore store(20min, [&now] { return now; });
  std::string kept = store.Acquire("").Id(), idle = store.Acquire("").Id();
  now += 15min;
  store.Acquire(kept);  // a request of the session starts its idle time again
  now += 15min;         // idle for 30 minutes, kept for 15
  EXPECT_FALSE(store.Acquire(kept).IsNew());
  EXPECT_TRUE(store.Acquire(idle).IsNew());
  auto held = store.Acquire(kept);
  now += 21min;
  store.Sweep();
  EXPECT_EQ(store.Size(), 1u);  // only the session that a request holds is left
}

TEST(SessionStoreTest, SessionsEndOnTheirOwnTimeoutOrWhenAbandonedAndEachIsHandedOver) {
  std::chrono::steady_clock::time_point now{};
  std::vector<std::string> ended;
  SessionStore store(
      20min, [&now] { return now; },
      [&ended](const std::shared_ptr<host::SessionObject>& s) { ended.push_back(s->SessionID()); });
  std::string shortLived, normal = store.Acquire("").Id(), abandoned;
  {
    auto lease = store.Acquire("");
    shortLived = lease.Id();
    EXPECT_EQ(lease.Session().ptr()->TimeoutMinutes(), 20);
    lease.Session().ptr()->SetTimeoutMinutes(5);  // as Session.Timeout = 5 does
  }
  {
    auto lease = store.Acquire("");
    abandoned = lease.Id();
    store.End(lease);
  }
  now += 6min;
  store.Sweep();
  now += 15min;
  store.Sweep();
  EXPECT_EQ(ended, (std::vector<std::string>{abandoned, shortLived, normal}));
}

}  // namespace
}  // namespace corvane::server
