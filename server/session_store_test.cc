#include "session_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace corvane::server {
namespace {

using namespace std::chrono_literals;
using Lease = SessionStore::Lease;

TEST(SessionIdTest, IdsAreRandomLowerCaseHexOf128Bits) {
  std::set<std::string> ids;
  for (int i = 0; i < 100; ++i) ids.insert(NewSessionId());
  EXPECT_EQ(ids.size(), 100u);
  for (const std::string& id : ids) EXPECT_THAT(id, ::testing::MatchesRegex("[0-9a-f]{32}"));
}

// A new session that a request stored; its id.
std::string Stored(SessionStore& store) {
  std::string id;
  store.Submit("", [&](Lease& l) {
    store.Keep(l);
    id = l.Id();
  });
  return id;
}

// Whether `id` finds a stored session (jobs run at once in these tests unless a starter is given).
bool Finds(SessionStore& store, const std::string& id) {
  bool found = false;
  store.Submit(id, [&](Lease& l) { found = !l.IsProvisional(); });
  return found;
}

struct Clocked {
  std::chrono::steady_clock::time_point now{};
  std::vector<std::string> ended;
  SessionStore Store(SessionLimits limits = {}) {
    return SessionStore(
        limits, [this] { return now; },
        [this](const std::shared_ptr<host::SessionObject>& s) { ended.push_back(s->SessionID()); });
  }
};

TEST(SessionStoreTest, ARequestWithoutASessionGetsOneStoredOnlyWhenKept) {
  SessionStore store({});
  std::string passing;
  store.Submit("", [&](Lease& l) {
    EXPECT_TRUE(l.IsProvisional());
    EXPECT_FALSE(l.IsNew());  // no cookie for a session nobody keeps
    l.Session().Set("x", Variant(1));
    passing = l.Id();
  });
  EXPECT_EQ(store.Size(), 0u);
  EXPECT_FALSE(Finds(store, passing));
  std::string kept;
  store.Submit("", [&](Lease& l) {
    l.Session().Set("personID", Variant(3));
    store.Keep(l);
    EXPECT_TRUE(l.IsNew());
    kept = l.Id();
  });
  EXPECT_EQ(store.Size(), 1u);
  store.Submit(kept, [&](Lease& l) {
    EXPECT_FALSE(l.IsNew());
    EXPECT_EQ(l.Session().Get("PERSONID").ToLong(), 3);
  });
  // A well-formed id the store never gave out, or one of another form, finds nothing.
  EXPECT_FALSE(Finds(store, "0123456789abcdef0123456789abcdef"));
  EXPECT_FALSE(Finds(store, kept + "x"));
}

TEST(SessionStoreTest, RenewalMovesTheSessionToANewIdAndTheOldOneFindsNothing) {
  SessionStore store({});
  std::string before = Stored(store), after;
  store.Submit(before, [&](Lease& l) {
    l.Session().Set("personID", Variant(3));
    l.Session().ptr()->RequestNewID();  // as the sign-in page does
    store.Renew(l);
    EXPECT_TRUE(l.IsNew());  // the response sends the new cookie
    EXPECT_FALSE(l.Session().ptr()->NewIDRequested());
    EXPECT_EQ(l.Session().ptr()->SessionID(), l.Id());
    after = l.Id();
  });
  EXPECT_TRUE(Finds(store, after));
  EXPECT_FALSE(Finds(store, before));
  // Signing in without a session before stores the provisional one under a new id.
  store.Submit("", [&](Lease& l) { store.Renew(l); });
  EXPECT_EQ(store.Size(), 2u);
}

TEST(SessionStoreTest, SessionsEndWhenIdleWhenTheirLifetimeIsOverOrWhenAbandoned) {
  Clocked c;
  SessionStore store = c.Store({.idleTimeout = 20min, .lifetime = 60min});
  std::string busy = Stored(store), idle = Stored(store), shortLived = Stored(store),
              abandoned = Stored(store);
  store.Submit(shortLived, [](Lease& l) { l.Session().ptr()->SetTimeoutMinutes(5); });  // Session.Timeout = 5
  store.Submit(abandoned, [&](Lease& l) { store.End(l); });
  c.now += 6min;
  store.Sweep();
  for (int i = 0; i < 6; ++i, c.now += 15min) Finds(store, busy);  // a request starts its idle time again
  store.Sweep();
  EXPECT_EQ(c.ended, (std::vector<std::string>{abandoned, shortLived, idle, busy}));
  EXPECT_EQ(store.Size(), 0u);
}

TEST(SessionStoreTest, ASessionARequestHoldsOrWaitsForNeverExpires) {
  Clocked c;
  SessionStore store = c.Store({.idleTimeout = 20min});
  std::string id = Stored(store);
  store.Submit(id, [&](Lease&) {
    c.now += 30min;
    store.Sweep();
    EXPECT_EQ(store.Size(), 1u);
  });
  c.now += 21min;
  store.Sweep();
  EXPECT_EQ(store.Size(), 0u);
}

TEST(SessionStoreTest, AFullStoreEndsTheSessionIdleLongestAndPassesOverBusyOnes) {
  Clocked c;
  SessionStore store = c.Store({.maxSessions = 2});
  std::string a = Stored(store);
  c.now += 1min;
  std::string b = Stored(store);
  c.now += 1min;
  Finds(store, a);  // a is now the more recent
  c.now += 1min;
  std::string third = Stored(store);
  EXPECT_EQ(c.ended, std::vector<std::string>{b});
  store.Submit(a, [&](Lease&) {  // a is held: the next to go is `third`, although a is older
    c.now += 1min;
    Stored(store);
  });
  EXPECT_EQ(c.ended, (std::vector<std::string>{b, third}));
  EXPECT_TRUE(Finds(store, a));
  EXPECT_EQ(store.Size(), 2u);
}

TEST(SessionStoreTest, JobsOfOneSessionWaitInOrderWithoutAThreadWhileOthersStart) {
  std::vector<std::function<void()>> started;  // the jobs handed to the "workers", not yet run
  SessionStore store({}, nullptr, nullptr,
                     [&](std::function<void()> job) { started.push_back(std::move(job)); });
  std::string id;
  store.Submit("", [&](Lease& l) {
    store.Keep(l);
    id = l.Id();
  });
  started.at(0)();
  std::vector<std::string> order;
  for (const char* name : {"first", "second", "third"})
    store.Submit(id, [&order, name](Lease&) { order.push_back(name); });
  store.Submit("", [&](Lease&) { order.push_back("other"); });
  ASSERT_EQ(started.size(), 3u);  // the session's first job and the other session's
  started[2]();
  started[1]();  // the first ends, and only then the second is handed over
  ASSERT_EQ(started.size(), 4u);
  started[3]();
  ASSERT_EQ(started.size(), 5u);
  started[4]();
  EXPECT_EQ(order, (std::vector<std::string>{"other", "first", "second", "third"}));
}

TEST(SessionStoreTest, RequestsWaitingForAnAbandonedSessionGetNewOnes) {
  std::vector<std::function<void()>> started;
  SessionStore store({}, nullptr, nullptr,
                     [&](std::function<void()> job) { started.push_back(std::move(job)); });
  std::string id, seen;
  store.Submit("", [&](Lease& l) {
    store.Keep(l);
    id = l.Id();
  });
  started.at(0)();
  store.Submit(id, [&](Lease& l) { store.End(l); });
  store.Submit(id, [&](Lease& l) { seen = l.IsProvisional() ? "new" : "old"; });
  started.at(1)();
  ASSERT_EQ(started.size(), 3u);
  started[2]();
  EXPECT_EQ(seen, "new");
}

}  // namespace
}  // namespace corvane::server
