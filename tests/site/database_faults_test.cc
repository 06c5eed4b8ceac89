// The demo site on PostgreSQL when the database server fails it: the real corvane-server with --db on
// a cluster of the test's own (initdb under the scratch folder, so that stopping it cannot disturb
// the other tests that share the servers of scripts/db-servers.sh), signed in as an administrator.
// A wrong password, an unreachable server, the server stopped between two requests and a statement
// the server rejects each give a clear error naming the cause, never the password, in bounded time;
// once the server is back the next request succeeds without restarting corvane-server; stacked
// statements stay refused.
//
// Runs when CORVANE_TEST_PG is set (scripts/test.sh starts the servers): it names the ODBC driver,
// and CORVANE_TEST_DB_DIR the folder whose owner runs PostgreSQL when the tests run as root.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <pwd.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ado/connection_string.h"
#include "corvane/codepage.h"
#include "process_test_support.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using corvane::testing::FreePort;
using corvane::testing::ReadAll;
using corvane::testing::ServerProcess;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kPassword = "c0rv;fault-9e2b7d";  // a ";" in it: braces in the string

// A PostgreSQL cluster of its own: a role "corvane" with kPassword over TCP, the superuser over the
// socket only; stopped and removed with the object.
class Cluster {
 public:
  explicit Cluster(const fs::path& dir) : dir_(dir), port_(FreePort()) {
    bin_ = PostgresBin();
    if (bin_.empty()) return;
    if (::getuid() == 0) {
      // PostgreSQL refuses root: the cluster runs as the user that runs the shared test servers.
      const char* shared = std::getenv("CORVANE_TEST_DB_DIR");
      struct stat st {};
      const passwd* owner =
          shared && ::stat(shared, &st) == 0 ? ::getpwuid(st.st_uid) : ::getpwnam("corvane-test");
      if (!owner || owner->pw_uid == 0) return;
      as_ = std::string("runuser -u ") + owner->pw_name + " -- ";
      fs::create_directories(dir_);
      if (::chown(dir_.c_str(), owner->pw_uid, owner->pw_gid) != 0) return;
    }
    fs::create_directories(dir_);
    ok_ = Run(bin_ + "/initdb -D " + Data() +
              " -U postgres --encoding=UTF8 --no-locale --auth-local=trust --auth-host=scram-sha-256") &&
          Start() &&
          Run(bin_ + "/psql -h " + dir_.string() + " -p " + std::to_string(port_) +
              " -U postgres -d postgres -v ON_ERROR_STOP=1 -q -c \"create role corvane login password '" +
              kPassword + "'\" -c 'create database corvane_site owner corvane'");
  }
  ~Cluster() {
    if (!bin_.empty()) Stop();
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }
  Cluster(const Cluster&) = delete;
  Cluster& operator=(const Cluster&) = delete;

  bool Ok() const { return ok_; }
  const std::string& Bin() const { return bin_; }
  int Port() const { return port_; }
  bool Start() {
    return Run(bin_ + "/pg_ctl -D " + Data() + " -l " + (dir_ / "server.log").string() + " -w -o \"-p " +
               std::to_string(port_) + " -k " + dir_.string() +
               " -c listen_addresses=127.0.0.1 -c fsync=off\" start");
  }
  bool Stop() { return Run(bin_ + "/pg_ctl -D " + Data() + " -m fast -w stop"); }

 private:
  std::string Data() const { return (dir_ / "data").string(); }
  bool Run(const std::string& command) const {
    const std::string line = as_ + command + " >>" + (dir_ / "commands.log").string() + " 2>&1";
    return std::system(line.c_str()) == 0;
  }
  // The newest installed server's programs ("" when there is none).
  static std::string PostgresBin() {
    std::string best;
    std::error_code ec;
    for (const auto& e : fs::directory_iterator("/usr/lib/postgresql", ec))
      if (fs::exists(e.path() / "bin" / "pg_ctl") &&
          (best.empty() ||
           std::stoi(e.path().filename()) > std::stoi(fs::path(best).parent_path().filename())))
        best = (e.path() / "bin").string();
    return best;
  }

  fs::path dir_;
  int port_;
  std::string bin_, as_;
  bool ok_ = false;
};

struct Reply {
  int status = 0;
  std::string text;  // as UTF-8
  double seconds = 0;
};

// corvane-server started with a connection string it may fail on: waits until it serves or has
// ended, at most `limit`; kills it when it still runs at the end.
struct Launch {
  Launch(const fs::path& dir, const std::string& connection, std::chrono::seconds limit) {
    fs::create_directories(dir);
    log = dir / "output.txt";
    const Clock::time_point start = Clock::now();
    pid = corvane::testing::Spawn({CORVANE_SERVER_BINARY, "--port", "0", "--db", connection, "--drives",
                                   (dir / "drives").string(), "--no-access-log"},
                                  log);
    while (Clock::now() - start < limit) {
      if (waitpid(pid, &status, WNOHANG) == pid) {
        pid = -1;
        break;
      }
      if (ReadAll(log).find("serving ") != std::string::npos) break;
      std::this_thread::sleep_for(50ms);
    }
    seconds = std::chrono::duration<double>(Clock::now() - start).count();
  }
  ~Launch() {
    corvane::testing::Reap(pid, SIGKILL);
    std::error_code ec;
    fs::remove_all(log.parent_path(), ec);
  }
  bool Ended() const { return pid == -1; }
  std::string Output() const { return ReadAll(log); }

  fs::path log;
  pid_t pid = -1;
  int status = 0;
  double seconds = 0;
};

class DatabaseFaultsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    const char* shared = std::getenv("CORVANE_TEST_PG");
    if (!shared || !*shared) return;
    driver_ =
        corvane::ado::detail::ConnectionString::Parse(shared).Get("driver").value_or("PostgreSQL Unicode");
    cluster_ = std::make_unique<Cluster>(corvane::testing::ScratchPath("pg-faults"));
    if (!cluster_->Ok()) return;
    server_ = std::make_unique<ServerProcess>("database-faults",
                                              std::vector<std::string>{"--db", Connection(kPassword)});
    if (server_->Port() == 0) return;
    httplib::Result r = Client().Post("/login.asp", "loginName=zhangwei&password=123456",
                                      "application/x-www-form-urlencoded");
    if (r && r->status == 302)
      cookie_ = r->get_header_value("Set-Cookie").substr(0, r->get_header_value("Set-Cookie").find(';'));
  }
  static void TearDownTestSuite() {
    server_.reset();
    cluster_.reset();
  }
  void SetUp() override {
    if (!std::getenv("CORVANE_TEST_PG") || !*std::getenv("CORVANE_TEST_PG"))
      GTEST_SKIP() << "CORVANE_TEST_PG is not set: start the servers with scripts/db-servers.sh "
                      "(scripts/test.sh does)";
    ASSERT_TRUE(cluster_->Ok()) << "the test's PostgreSQL cluster did not start";
    ASSERT_NE(server_->Port(), 0) << "corvane-server did not start on PostgreSQL:\n"
                                  << ReadAll(server_->Log());
    ASSERT_NE(cookie_, "") << "zhangwei could not sign in";
  }

  static std::string Connection(const std::string& password, int port = 0) {
    return "Driver={" + driver_ +
           "};Server=127.0.0.1;Port=" + std::to_string(port ? port : cluster_->Port()) +
           ";Database=corvane_site;Uid=corvane;Pwd={" + password + "}";
  }
  static httplib::Client Client() {
    httplib::Client c("127.0.0.1", server_->Port());
    c.set_read_timeout(30, 0);
    return c;
  }
  static Reply Get(const std::string& path) {
    const Clock::time_point start = Clock::now();
    httplib::Result r = Client().Get(path, {{"Cookie", cookie_}});
    Reply reply;
    reply.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (!r) return reply;
    reply.status = r->status;
    const bool utf8 = r->get_header_value("Content-Type").find("utf-8") != std::string::npos;
    reply.text = utf8 ? r->body : corvane::DecodeCodePage(r->body);
    return reply;
  }
  // A statement on the site's database through the test cluster's own shell.
  static void Psql(const std::string& sql) {
    ASSERT_EQ(
        std::system(("PGPASSWORD='" + std::string(kPassword) + "' " + cluster_->Bin() +
                     "/psql -h 127.0.0.1 -p " + std::to_string(cluster_->Port()) +
                     " -U corvane -d corvane_site -v ON_ERROR_STOP=1 -q -c \"" + sql + "\" >/dev/null 2>&1")
                        .c_str()),
        0)
        << sql;
  }

  static inline std::string driver_, cookie_;
  static inline std::unique_ptr<Cluster> cluster_;
  static inline std::unique_ptr<ServerProcess> server_;
};

// A start that cannot reach the database ends within seconds, saying why, and never shows the password.
TEST_F(DatabaseFaultsTest, AStartThatCannotConnectSaysWhyWithoutThePassword) {
  const std::string wrong = "wr0ng;" + std::to_string(::getpid());
  struct Case {
    const char* what;
    std::string connection;
    std::vector<std::string> cause;  // all in the output
  };
  // clang-format off
  const Case cases[] = {
    {"wrong password", Connection(wrong), {"08001", "password authentication failed"}},
    {"nothing listens", Connection(kPassword, FreePort()), {"08001", "Connection refused"}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Launch launch(corvane::testing::ScratchPath("db-start"), c.connection, 20s);
    std::string shown = launch.Output();
    if (!launch.Ended()) {  // it serves: the pages must say it instead
      const int port = std::stoi(corvane::testing::AwaitOutput(launch.log, "http://127\\.0\\.0\\.1:(\\d+)/"));
      httplib::Client client("127.0.0.1", port);
      httplib::Result r = client.Get("/login.asp");
      ASSERT_TRUE(r);
      EXPECT_EQ(r->status, 500);
      shown += corvane::DecodeCodePage(r->body);
    } else {
      EXPECT_NE(launch.status, 0);
    }
    EXPECT_LT(launch.seconds, 15) << "no answer in bounded time";
    for (const std::string& cause : c.cause) EXPECT_THAT(shown, HasSubstr(cause));
    EXPECT_THAT(shown, AllOf(Not(HasSubstr(wrong)), Not(HasSubstr(kPassword))));
  }
}

TEST_F(DatabaseFaultsTest, ServerStoppedBetweenRequestsThenBackWithoutRestart) {
  ASSERT_EQ(Get("/notice.asp").status, 200);
  ASSERT_TRUE(cluster_->Stop());
  Reply down = Get("/notice.asp");
  EXPECT_THAT(down.status, AnyOf(500, 503));
  EXPECT_LT(down.seconds, 15) << "no answer in bounded time";
  EXPECT_THAT(down.text, AnyOf(HasSubstr("08001"), HasSubstr("08006"), HasSubstr("57P01")))
      << "the error page does not name the cause:\n"
      << down.text;
  EXPECT_THAT(down.text, Not(HasSubstr(kPassword)));
  ASSERT_TRUE(cluster_->Start());
  Reply back = Get("/notice.asp");
  EXPECT_EQ(back.status, 200);
  EXPECT_THAT(back.text, HasSubstr("共60项"));
  // Restarted with no request in between: the pool still holds the handles that died with the
  // server, and must drop them rather than fail the first request.
  ASSERT_TRUE(cluster_->Stop());
  ASSERT_TRUE(cluster_->Start());
  EXPECT_EQ(Get("/notice.asp").status, 200) << "a dead pooled handle was reused";
  EXPECT_THAT(ReadAll(server_->Log()), Not(HasSubstr(kPassword)));
}

TEST_F(DatabaseFaultsTest, AStatementTheServerRejectsShowsItsMessage) {
  Psql("alter table notice rename column author to author_gone");
  Reply rejected = Get("/notice.asp");
  Psql("alter table notice rename column author_gone to author");
  EXPECT_EQ(rejected.status, 500);
  EXPECT_THAT(rejected.text, HasSubstr("SQLSTATE 42703: ERROR: column &quot;author&quot; does not exist"));
  EXPECT_EQ(Get("/notice.asp").status, 200);
}

TEST_F(DatabaseFaultsTest, StackedStatementsStayRefused) {
  // The order is a column name or nothing; a searched text stays one quoted value.
  EXPECT_EQ(Get("/notice.asp?order=noticeID%3Bdrop%20table%20dept").status, 400);
  Reply search = Get("/notice.asp?action=search2&title=x%27%3Bdrop%20table%20dept%3B--");
  EXPECT_EQ(search.status, 200);
  EXPECT_THAT(search.text, HasSubstr("无记录"));
  Psql("select 1 from dept limit 1");
}

}  // namespace
