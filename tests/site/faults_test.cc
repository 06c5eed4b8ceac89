// Faults around the running corvane-server, each against the real program: the database locked by
// another writer, deleted or spoiled under it, the disk full while an upload is stored, clients that
// stop mid-upload, send their headers a byte a second, send a megabyte of headers or a body over
// --max-body, and SIGTERM under load. In every case the server answers with a clear status or error
// page, leaves nothing half written, keeps serving the others and gives its memory back.
//
// The requests go over plain sockets (raw_http_client.h).
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "process_test_support.h"
#include "raw_http_client.h"
#include "site_database.h"

namespace {
using corvane::testing::Value;

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using corvane::testing::ParseReply;
using corvane::testing::ProcessSetup;
using corvane::testing::RawConnection;
using corvane::testing::Reply;
using corvane::testing::ServerProcess;
using ::testing::AnyOf;
using ::testing::HasSubstr;

std::string CookieLine(const std::string& cookie) {
  return cookie.empty() ? "" : "Cookie: " + cookie + "\r\n";
}

std::string Get(const std::string& path, const std::string& cookie = "") {
  return "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" + CookieLine(cookie) +
         "\r\n";
}

std::string Post(const std::string& path, const std::string& body, const std::string& cookie = "",
                 const std::string& type = "application/x-www-form-urlencoded") {
  return "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" + CookieLine(cookie) +
         "Content-Type: " + type + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// One request on a connection of its own, and its reply (status 0 when none came within `limit`).
Reply Exchange(int port, const std::string& request, std::chrono::milliseconds limit = 30s) {
  RawConnection c(port);
  if (!c.Connected() || !c.Send(request)) return {};
  return c.Read(limit);
}

// A signed-in session's cookie ("CORVANESESSIONID=..."), "" when the sign-in was refused.
std::string SignIn(int port, const std::string& login) {
  const Reply r = Exchange(port, Post("/login.asp", "loginName=" + login + "&password=123456"));
  const std::string cookie = r.Header("Set-Cookie");
  return r.status == 302 ? cookie.substr(0, cookie.find(';')) : "";
}

const char kStatic[] = "/images/edit.gif";
const char kListPage[] = "/contact.asp?action=list&page=3";

// A notice added through the table page, titled `title`.
std::string AddNotice(const std::string& title) { return "action=insert2&noticeTypeID=1&title=" + title; }

// A multipart body of the upload page: the file `name` of `bytes` bytes, its name and a remark.
const char kBoundary[] = "----corvaneFaultsBoundary42";
std::string UploadBody(const std::string& name, size_t bytes) {
  const std::string b = std::string("--") + kBoundary + "\r\n";
  return b + "Content-Disposition: form-data; name=\"file1\"; filename=\"" + name +
         "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + std::string(bytes, 'u') + "\r\n" + b +
         "Content-Disposition: form-data; name=\"remark\"\r\n\r\nfaults\r\n" + b +
         "Content-Disposition: form-data; name=\"file1Name\"\r\n\r\n" + name + "\r\n--" + kBoundary +
         "--\r\n";
}
std::string UploadHead(const std::string& cookie, size_t length) {
  return "POST /upload.asp HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" + CookieLine(cookie) +
         "Content-Type: multipart/form-data; boundary=" + kBoundary +
         "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}
// Where the upload page stores the files of zhangwei (person 2).
fs::path UploadFolder(const ServerProcess& s) { return s.Drives() / "d" / "up" / "2"; }

// ---- the database

// Every row of the tables that the pages here write, in one text: equal texts, equal data.
std::string Dump(const fs::path& database) {
  std::string out;
  for (const char* table : {"notice", "person", "upload", "personPlan"})
    for (const std::string& row :
         corvane::testing::Rows(database, std::string("select * from ") + table + " order by rowid"))
      out += std::string(table) + "|" + row + "\n";
  return out;
}

// A second writer on the server's database: holds the write lock from construction to Release().
class WriteLock {
 public:
  explicit WriteLock(const fs::path& database) {
    sqlite3_open_v2(database.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr);
    held_ = sqlite3_exec(db_, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) == SQLITE_OK;
  }
  ~WriteLock() { Release(); }
  bool Held() const { return held_; }
  void Release() {
    if (held_) sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
    held_ = false;
    sqlite3_close(db_);
    db_ = nullptr;
  }

 private:
  sqlite3* db_ = nullptr;
  bool held_ = false;
};

// A seeded demo database, made once for the whole program by a server that is then stopped; the tests'
// servers start on copies of it instead of seeding anew ("" when the seeding server failed).
const fs::path& SeededDatabase() {
  static const fs::path seeded = [] {
    ServerProcess seeder("faults-seed");
    if (seeder.Port() == 0 || seeder.Stop() != 0) return fs::path();
    sqlite3* db = nullptr;  // fold the write-ahead log into the file, so that the file alone is whole
    sqlite3_open_v2(seeder.Database().c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_exec(db, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    const fs::path copy = corvane::testing::ScratchPath("seeded.db");
    fs::copy_file(seeder.Database(), copy);
    return copy;
  }();
  return seeded;
}

// The static file and a page of another signed-in session answer, each within two seconds.
void ExpectOthersServed(int port, const std::string& cookie) {
  const auto start = Clock::now();
  EXPECT_EQ(Exchange(port, Get(kStatic), 2s).status, 200) << "static file";
  EXPECT_EQ(Exchange(port, Get(kListPage, cookie), 2s).status, 200) << "list page";
  EXPECT_LT(Clock::now() - start, 4s);
}

// ---- the database under faults

TEST(DatabaseFaultTest, AWriterHoldingTheLockPastTheBusyTimeoutGetsAnErrorPageAndOthersGoOn) {
  ServerProcess s("locked", {}, {.database = SeededDatabase()});
  ASSERT_NE(s.Port(), 0) << "corvane-server did not start";
  // Two sessions of one person: the pages of one session run one at a time, the other's need not wait.
  const std::string admin = SignIn(s.Port(), "zhangwei"), other = SignIn(s.Port(), "zhangwei");
  ASSERT_NE(admin, "");
  ASSERT_NE(other, "");
  const std::string before = Dump(s.Database());

  WriteLock lock(s.Database());
  ASSERT_TRUE(lock.Held());
  auto write = std::async(std::launch::async, [&] {
    return Exchange(s.Port(), Post("/notice.asp", AddNotice("locked"), admin), 30s);
  });
  std::this_thread::sleep_for(300ms);
  ExpectOthersServed(s.Port(), other);
  EXPECT_EQ(write.wait_for(0s), std::future_status::timeout) << "the write did not wait for the lock";

  const Reply r = write.get();  // while the lock is still held
  EXPECT_EQ(r.status, 500);
  EXPECT_THAT(r.text(), HasSubstr("database is locked"));
  EXPECT_THAT(r.text(), HasSubstr("80040e14"));
  lock.Release();
  EXPECT_EQ(Dump(s.Database()), before);

  // Once the lock is gone the same write goes through: the server's connection was not left inside
  // a transaction of its own.
  EXPECT_EQ(Exchange(s.Port(), Post("/notice.asp", AddNotice("after"), admin)).status, 200);
  EXPECT_EQ(Value(s.Database(), "select count(*) from notice where title in ('locked', 'after')"), "1");
}

struct BrokenDatabase {
  const char* name;
  void (*breakIt)(const fs::path& database);
  const char* shows;  // what the write's error page says
};
void PrintTo(const BrokenDatabase& b, std::ostream* os) { *os << b.name; }

// A write once the database is gone (removed with its log) or spoiled (its bytes overwritten; as the
// tests may run as root, a file without read permission would still be read): an error page, and
// the server goes on serving what needs no database.
class BrokenDatabaseTest : public ::testing::TestWithParam<BrokenDatabase> {};

TEST_P(BrokenDatabaseTest, AWriteGetsAnErrorPageAndTheServerKeepsServing) {
  ServerProcess s(std::string("broken-") + GetParam().name, {}, {.database = SeededDatabase()});
  ASSERT_NE(s.Port(), 0) << "corvane-server did not start";
  const std::string admin = SignIn(s.Port(), "zhangwei");
  ASSERT_NE(admin, "");
  ASSERT_EQ(Exchange(s.Port(), Get(kListPage, admin)).status, 200);

  GetParam().breakIt(s.Database());
  const Reply r = Exchange(s.Port(), Post("/notice.asp", AddNotice("broken"), admin));
  // 503 when the rights guard is the first to find the database broken, 500 when the page is.
  EXPECT_THAT(r.status, AnyOf(500, 503));
  EXPECT_THAT(r.text(), HasSubstr(GetParam().shows));
  EXPECT_TRUE(s.Running());
  EXPECT_EQ(Exchange(s.Port(), Get(kStatic), 2s).status, 200);
  EXPECT_EQ(Exchange(s.Port(), Get("/login.asp"), 2s).status, 200);
  EXPECT_NE(Value(s.Database(), "select count(*) from notice where title = 'broken'"), "1");
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Faults, BrokenDatabaseTest, ::testing::Values(
    BrokenDatabase{"deleted", [](const fs::path& db) {
      for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(db.string() + suffix);
    }, "no such table"},
    BrokenDatabase{"spoiled", [](const fs::path& db) {
      std::fstream f(db, std::ios::in | std::ios::out | std::ios::binary);
      const std::string junk(fs::file_size(db), '\x5a');
      f.write(junk.data(), static_cast<std::streamsize>(junk.size()));
    }, "80040e14"}),
    [](const auto& test) { return std::string(test.param.name); });
// clang-format on

// ---- a full disk while an upload is stored

TEST(DiskFullTest, AnUploadPastTheFileSizeLimitIsRefusedWithNothingLeftAndTheServerGoesOn) {
  constexpr size_t kLimit = 8u << 20;
  ServerProcess s("disk-full", {}, {.fileSizeLimit = kLimit, .database = SeededDatabase()});
  ASSERT_NE(s.Port(), 0) << "corvane-server did not start";
  const std::string admin = SignIn(s.Port(), "zhangwei");
  ASSERT_NE(admin, "");

  const std::string body = UploadBody("big.bin", kLimit + (4u << 20));
  const Reply r = Exchange(s.Port(), UploadHead(admin, body.size()) + body, 120s);
  ASSERT_TRUE(s.Running()) << "the server died storing the upload (SIGXFSZ not ignored?)";
  EXPECT_THAT(r.text(), HasSubstr("Disk full")) << r.status;
  EXPECT_FALSE(fs::exists(UploadFolder(s) / "big.bin")) << "a partial file was left";
  EXPECT_EQ(Value(s.Database(), "select count(*) from upload"), "0");

  // The next upload that fits is stored whole.
  const std::string small = UploadBody("small.txt", 1000);
  const Reply ok = Exchange(s.Port(), UploadHead(admin, small.size()) + small);
  EXPECT_EQ(ok.status, 200);
  EXPECT_THAT(ok.text(), HasSubstr("上传成功"));
  EXPECT_EQ(fs::exists(UploadFolder(s) / "small.txt") ? fs::file_size(UploadFolder(s) / "small.txt") : 0,
            1000u);
  EXPECT_EQ(Exchange(s.Port(), Get(kStatic)).status, 200);
}

// ---- clients that misbehave

// One server for the client faults, with a small --max-body; its memory is measured before and after
// each fault. Under AddressSanitizer, freed memory is held back in a quarantine (256 MB by default),
// which would hide whether the server let go of it: the server's quarantine is kept small.
class ClientFaultTest : public ::testing::Test {
 protected:
  static constexpr long kMaxBody = 4'000'000;
  static constexpr long kSlackKiB = 16 << 10;  // what "back near its level" allows

  static void SetUpTestSuite() {
    const char* asan = std::getenv("ASAN_OPTIONS");
    server_ = std::make_unique<ServerProcess>(
        "clients", std::vector<std::string>{"--max-body", std::to_string(kMaxBody)},
        ProcessSetup{.environment = {std::string("ASAN_OPTIONS=") + (asan ? asan : "") +
                                     (asan && *asan ? ":" : "") + "quarantine_size_mb=4"},
                     .database = SeededDatabase()});
    if (server_->Port() != 0) cookie_ = SignIn(server_->Port(), "zhangwei");
  }
  static void TearDownTestSuite() { server_.reset(); }

  void SetUp() override {
    ASSERT_NE(server_->Port(), 0) << "corvane-server did not start";
    ASSERT_TRUE(server_->Running()) << "corvane-server has died";
    ASSERT_NE(cookie_, "");
    // Warm: the pages compiled, the caches filled, before the level is taken.
    for (int i = 0; i < 3; ++i) ExpectOthersServed(Port(), cookie_);
    baseline_ = server_->RssKiB();
    server_->ResetPeak();
  }

  // The server still runs and serves, and its memory is back within kSlackKiB of the level taken
  // before the fault (waiting up to five seconds for it to let go).
  void ExpectRecovered() {
    ASSERT_TRUE(server_->Running()) << "corvane-server has died";
    ExpectOthersServed(Port(), cookie_);
    long rss = server_->RssKiB();
    for (int i = 0; i < 50 && rss > baseline_ + kSlackKiB; ++i, std::this_thread::sleep_for(100ms))
      rss = server_->RssKiB();
    EXPECT_LE(rss, baseline_ + kSlackKiB) << "RSS before the fault " << baseline_ << " KiB";
  }

  static int Port() { return server_->Port(); }

  static inline std::unique_ptr<ServerProcess> server_;
  static inline std::string cookie_;
  long baseline_ = 0;
};

TEST_F(ClientFaultTest, AClientGoneMidUploadHoldsNothingAndStoresNothing) {
  const std::string body = UploadBody("gone.bin", kMaxBody - 100'000);
  {
    RawConnection c(Port());
    ASSERT_TRUE(c.Send(UploadHead(cookie_, body.size())));
    ASSERT_TRUE(c.Send(std::string_view(body).substr(0, body.size() / 2)));
    std::this_thread::sleep_for(200ms);
  }
  ExpectRecovered();
  EXPECT_FALSE(fs::exists(UploadFolder(*server_) / "gone.bin"));
  EXPECT_EQ(Value(server_->Database(), "select count(*) from upload where fileName = 'gone.bin'"), "0");
}

TEST_F(ClientFaultTest, HeadersSentAByteASecondHoldNoWorkerAndTimeOut) {
  // More dribbling clients than the server has workers, each from an address of its own.
  constexpr int kClients = 72;
  std::vector<std::unique_ptr<RawConnection>> slow;
  for (int i = 0; i < kClients; ++i) {
    slow.push_back(std::make_unique<RawConnection>(Port(), "127.0.0." + std::to_string(10 + i)));
    ASSERT_TRUE(slow.back()->Connected());
    ASSERT_TRUE(slow.back()->Send("GET /images/edit.gif HTTP/1.1\r\nHost: 127.0.0.1\r\nX-Slow: "));
  }
  // A byte a second from each open one; until every one is closed by the server (at most 45 s).
  std::vector<bool> closed(kClients, false);
  int open = kClients;
  const auto start = Clock::now();
  for (int second = 0; open > 0 && Clock::now() - start < 45s; ++second) {
    for (int i = 0; i < kClients; ++i) {
      if (closed[i]) continue;
      if (!slow[i]->Send("a") || slow[i]->AwaitClose(0ms)) closed[i] = true, --open;
    }
    if (second == 3) {
      EXPECT_TRUE(server_->Running());
      const auto asked = Clock::now();
      EXPECT_EQ(Exchange(Port(), Get(kStatic), 2s).status, 200)
          << "a normal request waited for the slow ones";
      EXPECT_LT(Clock::now() - asked, 1s);
    }
    std::this_thread::sleep_for(1s);
  }
  EXPECT_EQ(open, 0) << "connections still open after 45 s of headers";
  for (int i = 0; i < kClients; ++i) {
    if (slow[i]->AwaitClose(0ms); slow[i]->Received().empty()) continue;
    EXPECT_EQ(ParseReply(slow[i]->Received(), true).status, 408) << slow[i]->Received().substr(0, 80);
  }
  ExpectRecovered();
}

TEST_F(ClientFaultTest, AMegabyteOfHeadersIsRefusedAndClosed) {
  RawConnection c(Port());
  ASSERT_TRUE(c.Connected());
  // Sent from a thread of its own: the reply comes while the headers are still being sent.
  std::thread sender([&c] {
    c.Send("GET /images/edit.gif HTTP/1.1\r\nHost: 127.0.0.1\r\n");
    for (int i = 0;
         i < 1024 && c.Send("X-Filler-" + std::to_string(i) + ": " + std::string(1000, 'h') + "\r\n"); ++i) {
    }
    c.Send("\r\n");
  });
  const Reply r = c.Read(20s);
  const bool closed = c.AwaitClose(10s);
  sender.join();
  EXPECT_THAT(r.status, AnyOf(431, 400));
  EXPECT_TRUE(closed);
  EXPECT_LE(server_->PeakRssKiB(), baseline_ + kSlackKiB) << "the headers were kept whole";
  ExpectRecovered();
}

struct Overrun {
  const char* name;
  bool chunked;
};
void PrintTo(const Overrun& o, std::ostream* os) { *os << o.name; }

class BodyOverMaxBodyTest : public ClientFaultTest, public ::testing::WithParamInterface<Overrun> {};

// A body over --max-body, sent by a client that has not signed in: 413 and closed, whatever its
// framing, counted as it arrives (the server never holds much more than --max-body of it).
TEST_P(BodyOverMaxBodyTest, IsRefusedWith413WhileItArrives) {
  constexpr size_t kSent = 64u << 20, kChunk = 64u << 10;
  RawConnection c(Port());
  ASSERT_TRUE(c.Connected());
  std::atomic<size_t> sent{0};
  std::thread sender([&] {
    const bool chunked = GetParam().chunked;
    std::string head =
        "POST /login.asp HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/x-www-form-urlencoded\r\n";
    head += chunked ? "Transfer-Encoding: chunked\r\n\r\n"
                    : "Content-Length: " + std::to_string(kSent) + "\r\n\r\n";
    if (!c.Send(head)) return;
    std::string piece = "loginName=" + std::string(kChunk - 10, 'z');
    if (chunked) {
      char size[16];
      std::snprintf(size, sizeof size, "%zx\r\n", piece.size());
      piece = size + piece + "\r\n";
    }
    while (sent < kSent && c.Send(piece)) sent += kChunk;
    if (chunked && sent >= kSent) c.Send("0\r\n\r\n");
  });
  const Reply r = c.Read(60s);
  const bool closed = c.AwaitClose(20s);
  sender.join();
  EXPECT_EQ(r.status, 413);
  EXPECT_TRUE(closed);
  EXPECT_LT(sent.load(), kSent) << "the server took the whole body";
  EXPECT_LE(server_->PeakRssKiB(), baseline_ + kMaxBody / 1024 + kSlackKiB)
      << "the body was held past --max-body";
  ExpectRecovered();
}

INSTANTIATE_TEST_SUITE_P(Faults, BodyOverMaxBodyTest,
                         ::testing::Values(Overrun{"plain", false}, Overrun{"chunked", true}),
                         [](const auto& test) { return std::string(test.param.name); });

// ---- SIGTERM under load

// What one request of the load got.
struct Outcome {
  Clock::time_point sent;
  bool connected = false;
  int status = 0;
  bool complete = false;
  bool anyByte = false;  // some of a reply came
};

TEST(SigtermTest, InFlightRequestsFinishNewOnesAreRefusedAndTheProcessExitsWithinFiveSeconds) {
  ServerProcess s("sigterm", {}, {.database = SeededDatabase()});
  ASSERT_NE(s.Port(), 0) << "corvane-server did not start";
  std::vector<std::string> cookies;
  for (int i = 0; i < 5; ++i) cookies.push_back(SignIn(s.Port(), "zhangwei"));
  ASSERT_THAT(cookies, ::testing::Not(::testing::Contains("")));

  // A write kept in flight across the SIGTERM: the test holds the database's lock until after it.
  WriteLock lock(s.Database());
  ASSERT_TRUE(lock.Held());
  auto write = std::async(std::launch::async, [&] {
    return Exchange(s.Port(), Post("/notice.asp", AddNotice("drained"), cookies[0]), 30s);
  });

  // 50 clients, a request at a time each, a new connection per request: the list page and the GIF.
  std::atomic<bool> stop{false};
  std::mutex mu;
  std::vector<Outcome> outcomes;
  std::vector<std::thread> clients;
  for (int t = 0; t < 50; ++t)
    clients.emplace_back([&, t] {
      for (int n = 0; !stop; ++n) {
        Outcome o{.sent = Clock::now()};
        RawConnection c(s.Port());
        o.connected = c.Connected();
        if (o.connected && c.Send(Get(n % 2 ? kStatic : kListPage, cookies[1 + t % 4]))) {
          const Reply r = c.Read(15s);
          o.status = r.status, o.complete = r.complete, o.anyByte = !c.Received().empty();
        }
        {
          std::lock_guard hold(mu);
          outcomes.push_back(o);
        }
        if (!o.connected) std::this_thread::sleep_for(20ms);
      }
    });
  std::this_thread::sleep_for(1500ms);

  const auto term = Clock::now();
  ASSERT_EQ(kill(s.Pid(), SIGTERM), 0);
  std::this_thread::sleep_for(300ms);
  EXPECT_TRUE(s.Running()) << "the server did not wait for the write in flight";
  {
    RawConnection late(s.Port());
    EXPECT_EQ(late.ConnectError(), ECONNREFUSED) << "a new connection was taken while stopping";
  }
  std::this_thread::sleep_for(700ms);
  lock.Release();

  const Reply w = write.get();
  EXPECT_EQ(w.status, 200);
  EXPECT_TRUE(w.complete);
  while (s.Running() && Clock::now() - term < 6s) std::this_thread::sleep_for(20ms);
  const auto exited = Clock::now() - term;
  stop = true;
  for (std::thread& t : clients) t.join();

  EXPECT_FALSE(s.Running());
  EXPECT_LT(exited, 5s);
  EXPECT_TRUE(WIFEXITED(s.ExitStatus()) && WEXITSTATUS(s.ExitStatus()) == 0) << s.ExitStatus();
  EXPECT_EQ(Value(s.Database(), "select count(*) from notice where title = 'drained'"), "1");

  // Every request sent well before the SIGTERM was answered whole; after it, a request was answered
  // whole or refused before any byte of a reply, never cut off.
  int early = 0, earlyFailed = 0, cutOff = 0, answered = 0;
  for (const Outcome& o : outcomes) {
    const bool whole = o.status == 200 && o.complete;
    if (o.sent < term - 500ms)
      ++early, earlyFailed += !whole;
    else if (o.anyByte)
      cutOff += !whole;
    answered += whole;
  }
  EXPECT_EQ(earlyFailed, 0) << "of " << early << " requests sent before the SIGTERM";
  EXPECT_EQ(cutOff, 0) << "replies cut off after the SIGTERM";
  EXPECT_GT(early, 50);
  EXPECT_GT(answered, 50);
}

}  // namespace
