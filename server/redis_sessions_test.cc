// RedisSessions against a real redis-server (skipped when none is installed). Two RedisSessions on
// one Redis stand for two processes.
#include "redis_sessions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>

#include "hosts/redis_process.h"
#include "session_codec.h"

namespace corvane::server {
namespace {

using namespace std::chrono_literals;
using Outcome = SharedSessions::Outcome;

// The description of the Error that `f` raises ("" when none).
template <class F>
std::string ErrorOf(F f) {
  try {
    f();
  } catch (const Error& e) {
    return e.Description();
  }
  return "";
}

TEST(RedisAddressTest, UrlsNameAServerOrASocket) {
  struct Case {
    std::string url, host, socket;
    int port, db;
  };
  for (const Case& c :
       std::vector<Case>{{"redis://10.0.0.5:6380/2", "10.0.0.5", "", 6380, 2},
                         {"redis://cache", "cache", "", 6379, 0},
                         {"unix:///run/redis/redis.sock", "", "/run/redis/redis.sock", 6379, 0},
                         {"unix:///tmp/r.sock?db=3", "", "/tmp/r.sock", 6379, 3}}) {
    RedisAddress a = ParseRedisUrl(c.url);
    EXPECT_EQ(std::tie(a.host, a.socket, a.port, a.db), std::tie(c.host, c.socket, c.port, c.db)) << c.url;
  }
  for (std::string bad : {"http://cache", "redis://:6379", "redis://cache:99999", "redis://cache/x",
                          "unix://r.sock", "unix:///tmp/r.sock?db=x"})
    EXPECT_THROW(ParseRedisUrl(bad), std::invalid_argument) << bad;
}

class RedisSessionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!redis_.Available()) GTEST_SKIP() << "redis-server is not installed (bash scripts/deps.sh)";
  }
  std::unique_ptr<RedisSessions> Process(RedisSessionsOptions o = {}, const std::string& url = "") {
    return std::make_unique<RedisSessions>(ParseRedisUrl(url.empty() ? redis_.Url() : url), std::move(o),
                                           [this](const std::string& line) { log_.push_back(line); });
  }
  RedisClient Client() { return RedisClient(ParseRedisUrl(redis_.Url()), 1s, 1s); }
  // A stored session of `process` holding `values`.
  std::string Stored(RedisSessions& process, std::vector<std::pair<std::string, Variant>> values) {
    host::SessionObject s;
    s.Values().Assign(values);
    SharedSessions::Claim claim;
    EndedSessions ended;
    std::string id = NewSessionId();
    EXPECT_TRUE(process.Create(id, s, claim, ended));
    return id;
  }
  Outcome Claim(RedisSessions& process, const std::string& id, host::SessionObject& s,
                SharedSessions::Claim& claim) {
    std::chrono::milliseconds retry{0};
    EndedSessions ended;
    return process.TryClaim(id, s, claim, retry, ended, nullptr);
  }
  // The same, as the server claims: sent ahead, finished with the answer.
  Outcome ClaimAhead(RedisSessions& process, const std::string& id, host::SessionObject& s,
                     SharedSessions::Claim& claim) {
    std::promise<std::shared_ptr<SharedSessions::Asked>> answer;
    process.AskAhead(id, [&answer](std::shared_ptr<SharedSessions::Asked> a) { answer.set_value(a); });
    std::chrono::milliseconds retry{0};
    EndedSessions ended;
    return process.TryClaim(id, s, claim, retry, ended, answer.get_future().get());
  }

  testing::RedisProcess redis_;
  std::vector<std::string> log_;
};

TEST_F(RedisSessionsTest, CommandsSentWithoutWaitingKeepTheirOrderAndLearnOfAFailure) {
  RedisClient client = Client();
  std::vector<std::vector<int64_t>> seen(4);
  std::atomic<int> done{0};
  std::vector<std::thread> senders;
  for (auto& mine : seen)
    senders.emplace_back([&client, &mine, &done] {
      for (int i = 0; i < 200; ++i)
        client.Send({{"INCR", "n"}, {"GET", "n"}},
                    [&mine, &done](std::vector<RedisReply> r, const std::string&) {
                      mine.push_back(r.at(0).integer);  // one thread hands out every reply
                      EXPECT_EQ(r.at(1).text, std::to_string(r.at(0).integer));
                      ++done;
                    });
    });
  for (auto& t : senders) t.join();
  while (done < 800) std::this_thread::sleep_for(1ms);
  for (const auto& mine : seen) EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
  EXPECT_EQ(client.Command({"GET", "n"}).text, "800");

  redis_.Stop();
  std::promise<std::string> failed;
  client.Send({{"GET", "n"}}, [&failed](std::vector<RedisReply> r, const std::string& error) {
    failed.set_value(r.empty() ? error : "replies");
  });
  EXPECT_NE(failed.get_future().get().find("redis 127.0.0.1:"), std::string::npos);
}

TEST_F(RedisSessionsTest, ASessionIsHeldByOneRequestAtATimeAcrossProcesses) {
  // b reaches Redis by its socket, and claims ahead as the server does
  auto a = Process(), b = Process({}, redis_.SocketUrl());
  std::string id = Stored(*a, {{"personID", Variant(int32_t{7})}});
  host::SessionObject inA, inB;
  SharedSessions::Claim claimA, claimB;
  ASSERT_EQ(Claim(*a, id, inA, claimA), Outcome::kHeld);
  EXPECT_EQ(inA.Get("personid"), Variant(int32_t{7}));
  EXPECT_EQ(ClaimAhead(*b, id, inB, claimB), Outcome::kBusy);
  inA.Set("page", Variant("list"));
  inA.SetTimeoutMinutes(3);
  a->Save(id, claimA, inA);
  EXPECT_TRUE(claimA.token.empty());
  // The write was sent without waiting; b waits for it at most a moment.
  Outcome outcome = Outcome::kBusy;
  for (int i = 0; i < 100 && outcome == Outcome::kBusy; ++i, std::this_thread::sleep_for(1ms))
    outcome = ClaimAhead(*b, id, inB, claimB);
  ASSERT_EQ(outcome, Outcome::kHeld);
  EXPECT_EQ(inB.Get("page"), Variant("list"));
  EXPECT_EQ(inB.TimeoutMinutes(), 3);
  // The idle timeout is the key's expiry, set again by every write; the list of sessions follows it
  // when it moves by a minute or more.
  int64_t ttl = Client().Command({"PTTL", "corvane:s:" + id}).integer;
  EXPECT_GT(ttl, 170000);
  EXPECT_LE(ttl, 180000);
  const double listed = std::stod(Client().Command({"ZSCORE", "corvane:sessions", id}).text);
  const auto unixMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
  EXPECT_NEAR(listed, static_cast<double>(unixMs + ttl), 60000);
  b->Unlock(id, claimB);
  EXPECT_EQ(Claim(*a, id, inA, claimA), Outcome::kHeld);
}

TEST_F(RedisSessionsTest, ALockOfADeadProcessLastsNoLongerThanItsExpiry) {
  auto dead = Process({.lockExpiry = 300ms}), alive = Process({.lockExpiry = 300ms});
  std::string id = Stored(*alive, {{"k", Variant(1)}});
  host::SessionObject s;
  SharedSessions::Claim held, other;
  ASSERT_EQ(Claim(*dead, id, s, held), Outcome::kHeld);
  dead.reset();  // never lets go
  std::chrono::milliseconds retry{0};
  EndedSessions ended;
  EXPECT_EQ(alive->TryClaim(id, s, other, retry, ended, nullptr), Outcome::kBusy);
  EXPECT_LE(retry, 300ms);
  std::this_thread::sleep_for(retry + 50ms);
  EXPECT_EQ(Claim(*alive, id, s, other), Outcome::kHeld);
  // The late holder's write is refused: it no longer holds the lock (logged once its reply is read;
  // a client that goes writes out and reads what was sent first).
  alive->Save(id, held, s);
  alive.reset();
  EXPECT_EQ(log_.size(), 1u);
}

TEST_F(RedisSessionsTest, AMovedSessionIsFoundOnlyUnderItsNewId) {
  auto a = Process();
  std::string id = Stored(*a, {{"k", Variant("v")}});
  host::SessionObject s;
  SharedSessions::Claim claim;
  ASSERT_EQ(Claim(*a, id, s, claim), Outcome::kHeld);
  std::string newId = NewSessionId();
  ASSERT_TRUE(a->Move(id, claim, newId, s));
  EXPECT_EQ(Claim(*a, id, s, claim), Outcome::kMissing);
  host::SessionObject moved;
  ASSERT_EQ(Claim(*a, newId, moved, claim), Outcome::kHeld);
  EXPECT_EQ(moved.Get("k"), Variant("v"));
  a->Drop(newId, claim);
  EXPECT_EQ(Claim(*a, newId, moved, claim), Outcome::kMissing);
}

TEST_F(RedisSessionsTest, AnUnreadableRecordCountsAsNoSessionAndIsLogged) {
  auto a = Process();
  std::string id = NewSessionId();
  Client().Command({"SET", "corvane:s:" + id, "\x09later format"});
  host::SessionObject s;
  SharedSessions::Claim claim;
  EXPECT_EQ(Claim(*a, id, s, claim), Outcome::kMissing);
  EXPECT_TRUE(claim.token.empty());
  ASSERT_EQ(log_.size(), 1u);
  EXPECT_NE(log_[0].find("unknown format version 9"), std::string::npos) << log_[0];
  EXPECT_EQ(Client().Command({"EXISTS", "corvane:lock:" + id}).integer, 0);
}

TEST_F(RedisSessionsTest, TheCapAndTheLifetimeEndSessionsWithTheirValues) {
  int64_t now = 1'800'000'000'000;
  auto a = Process({.lifetime = 3600s, .maxSessions = 2, .now = [&now] { return now; }});
  std::string first = Stored(*a, {{"n", Variant(1)}});
  now += 1000;
  std::string second = Stored(*a, {{"n", Variant(2)}});
  host::SessionObject s;
  SharedSessions::Claim claim;
  EndedSessions ended;
  ASSERT_TRUE(a->Create(NewSessionId(), s, claim, ended));
  ASSERT_EQ(ended.size(), 1u);  // the one that expires soonest
  EXPECT_EQ(ended[0]->SessionID(), first);
  EXPECT_EQ(ended[0]->Get("n"), Variant(1));
  EXPECT_EQ(a->Count(), 2u);
  now += 3601 * 1000;
  std::chrono::milliseconds retry{0};
  ended.clear();
  EXPECT_EQ(a->TryClaim(second, s, claim, retry, ended, nullptr), Outcome::kMissing);
  ASSERT_EQ(ended.size(), 1u);
  EXPECT_EQ(ended[0]->Get("n"), Variant(2));
}

TEST_F(RedisSessionsTest, TheApplicationIsSharedAndItsLockHoldsAcrossProcesses) {
  auto a = Process(), b = Process();
  auto appA = std::make_shared<host::Application>(), appB = std::make_shared<host::Application>();
  appA->Set("ConnStr", Variant("own to a"));
  a->ShareApplication(appA);
  b->ShareApplication(appB);
  appA->Set("Visits", Variant(int32_t{1}));
  host::SessionObject s;
  SharedSessions::Claim claim;
  Claim(*b, "", s, claim);  // a page without a session loads the Application too
  EXPECT_EQ(appB->Get("visits"), Variant(int32_t{1}));
  EXPECT_TRUE(appB->Get("ConnStr").IsEmpty());
  Claim(*a, "", s, claim);
  EXPECT_EQ(appA->Get("ConnStr"), Variant("own to a"));

  // Objects are refused at once, naming the key, in the Application and in a session.
  EXPECT_NE(ErrorOf([&] { appA->Set("dict", host::Session().AsVariant()); }).find("Application(\"dict\")"),
            std::string::npos);
  EXPECT_NE(ErrorOf([&] { s.Set("Cart", host::Session().AsVariant()); }).find("Session(\"Cart\")"),
            std::string::npos);
  EXPECT_EQ(s.Values().Count(), 0u);

  // b's page waits for a's Unlock, then sees what a wrote under the lock.
  appA->Lock();
  std::atomic<bool> locked{false};
  std::thread other([&] {
    appB->Lock();
    locked = true;
    appB->Set("Visits", Variant(appB->Get("Visits").ToLong() + 1));
    appB->UnlockAll();
  });
  std::this_thread::sleep_for(100ms);
  EXPECT_FALSE(locked);
  appA->Set("Visits", Variant(int32_t{10}));
  appA->Unlock();
  other.join();
  Claim(*a, "", s, claim);
  EXPECT_EQ(appA->Get("Visits"), Variant(int32_t{11}));
}

}  // namespace
}  // namespace corvane::server
