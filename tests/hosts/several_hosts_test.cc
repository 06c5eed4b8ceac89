// Several hosts with real parts: redis-server and nginx on loopback, two corvane-server processes
// behind nginx (round-robin, no stickiness) on one shared SQLite database, their sessions in Redis.
// A signed-in person walks the site, adds a contact and a plan while one process is killed and
// started again; two requests of one session sent to both processes at once run one after the
// other; Redis stopped gives a clear error page, and once it is back the site works again.
// Skipped when redis-server or nginx is not installed.
#include <gtest/gtest.h>
#include <httplib.h>

#include <fstream>
#include <future>
#include <map>
#include <regex>

#include "corvane/codepage.h"
#include "corvane/host.h"
#include "hosts/redis_process.h"
#include "process_test_support.h"
#include "site_database.h"

namespace corvane::testing {
namespace {
using corvane::testing::Value;

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Params = std::vector<std::pair<std::string, std::string>>;

struct Reply {
  int status = 0;
  std::string text, location, cookie;
};

Reply Send(int port, const std::string& method, std::string path, const Params& params,
           const std::string& cookie) {
  std::string form;
  for (const auto& [name, value] : params)
    form += (form.empty() ? "" : "&") + name + "=" + host::UrlEncode(value, kCodePageGbk);
  if (method == "GET" && !form.empty()) path += (path.find('?') == std::string::npos ? "?" : "&") + form;
  httplib::Client c("127.0.0.1", port);
  c.set_read_timeout(20, 0);
  httplib::Headers headers;
  if (!cookie.empty()) headers.emplace("Cookie", cookie);
  httplib::Result res = method == "GET" ? c.Get(path, headers)
                                        : c.Post(path, headers, form, "application/x-www-form-urlencoded");
  Reply r;
  if (!res) return r;
  r.status = res->status;
  r.location = res->get_header_value("Location");
  std::string set = res->get_header_value("Set-Cookie");
  r.cookie = set.substr(0, set.find(';'));
  const bool utf8 = res->get_header_value("Content-Type").find("utf-8") != std::string::npos;
  r.text = utf8 ? res->body : DecodeCodePage(res->body);
  return r;
}

// The test's own page: counts its session's visits, slowly, so that two at once would overlap.
constexpr const char* kSlowPage = R"(<%
Dim n, t
n = Session("visits") + 1
t = Timer
Do While Timer - t < 0.4 And Timer >= t
Loop
Session("visits") = n
Response.Write "visits=" & n
%>)";

class SeveralHostsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!redis_.Available() || FindProgram("nginx").empty()) return;
    dir_ = ScratchPath("hosts");
    fs::create_directories(dir_ / "nginx-tmp");
    fs::copy(CORVANE_SITE_WWW, dir_ / "www", fs::copy_options::recursive);
    std::ofstream(dir_ / "www" / "slow.asp") << kSlowPage;
    for (int& port : ports_) port = FreePort();
    servers_[0] = Server(0);  // the first seeds the shared database, then the second uses it
    servers_[1] = Server(1);
    nginxPort_ = FreePort();
    StartNginx();
  }
  static void TearDownTestSuite() {
    Reap(nginx_);
    for (auto& s : servers_) s.reset();
  }
  void SetUp() override {
    if (!redis_.Available()) GTEST_SKIP() << "redis-server is not installed (bash scripts/deps.sh)";
    if (FindProgram("nginx").empty()) GTEST_SKIP() << "nginx is not installed (bash scripts/deps.sh)";
    ASSERT_NE(servers_[0]->Port(), 0) << "the first corvane-server did not start";
    ASSERT_NE(servers_[1]->Port(), 0) << "the second corvane-server did not start";
    ASSERT_TRUE(Listening(nginxPort_)) << "nginx did not start: see " << (dir_ / "nginx-error.log");
  }

  static std::unique_ptr<ServerProcess> Server(int i) {
    return std::make_unique<ServerProcess>(
        "host" + std::to_string(i),
        std::vector<std::string>{"--port", std::to_string(ports_[i]), "--db", Database().string(), "--site",
                                 (dir_ / "www").string(), "--sessions", redis_.Url()});
  }
  static fs::path Database() { return dir_ / "site.db"; }

  static void StartNginx() {
    std::ofstream conf(dir_ / "nginx.conf");
    // Run as root, nginx's workers take the unprivileged user nobody (their temporary files are
    // under the scratch folder).
    if (geteuid() == 0) conf << "user nobody nogroup;\n";
    conf << "worker_processes 1;\ndaemon off;\npid " << (dir_ / "nginx.pid").string() << ";\nerror_log "
         << (dir_ / "nginx-error.log").string() << ";\nevents { worker_connections 256; }\nhttp {\n"
         << "  log_format hosts '$upstream_addr $status $request_uri';\n"
         << "  access_log " << (dir_ / "nginx-access.log").string() << " hosts;\n";
    for (const char* temp : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
      conf << "  " << temp << "_temp_path " << (dir_ / "nginx-tmp" / temp).string() << ";\n";
    conf << "  upstream corvane {\n    server 127.0.0.1:" << ports_[0] << " max_fails=0;\n"
         << "    server 127.0.0.1:" << ports_[1] << " max_fails=0;\n  }\n"
         << "  server {\n    listen 127.0.0.1:" << nginxPort_ << ";\n"
         << "    location / {\n      proxy_pass http://corvane;\n      proxy_set_header Host "
            "$host:$server_port;\n"
         << "      proxy_set_header X-Forwarded-For $remote_addr;\n    }\n  }\n}\n";
    conf.close();
    fs::permissions(dir_, fs::perms::others_exec | fs::perms::others_read, fs::perm_options::add);
    nginx_ = Spawn({FindProgram("nginx"), "-c", (dir_ / "nginx.conf").string(), "-p", dir_.string()},
                   dir_ / "nginx-error.log");
    for (int i = 0; i < 100 && !Listening(nginxPort_); ++i) std::this_thread::sleep_for(50ms);
  }

  // Through nginx.
  static Reply Get(const std::string& path, const std::string& cookie, const Params& params = {}) {
    return Send(nginxPort_, "GET", path, params, cookie);
  }
  static Reply Post(const std::string& path, const std::string& cookie, const Params& params) {
    return Send(nginxPort_, "POST", path, params, cookie);
  }
  static std::string SignIn(const std::string& login) {
    Reply r = Post("/login.asp", "", {{"loginName", login}, {"password", "123456"}});
    EXPECT_EQ(r.status, 302);
    EXPECT_EQ(r.location, "/main.asp");
    return r.cookie;
  }
  // How many requests each upstream answered, by nginx's log.
  static std::map<std::string, int> Upstreams() {
    std::ifstream log(dir_ / "nginx-access.log");
    std::map<std::string, int> count;
    for (std::string line; std::getline(log, line);) ++count[line.substr(0, line.find(' '))];
    return count;
  }

  static inline RedisProcess redis_;
  static inline fs::path dir_;
  static inline int ports_[2] = {0, 0};
  static inline int nginxPort_ = 0;
  static inline std::unique_ptr<ServerProcess> servers_[2];
  static inline pid_t nginx_ = -1;
};

TEST_F(SeveralHostsTest, ASessionSurvivesEitherProcessAndNothingEnteredIsLost) {
  const std::string cookie = SignIn("zhangwei");
  ASSERT_FALSE(cookie.empty());
  const std::string person = Value(Database(), "select personID from person where loginName='zhangwei'");
  // The table pages, each through whichever process nginx picks: a lost session would send the
  // browser back to the sign-in page.
  auto walk = [&](const char* when) {
    SCOPED_TRACE(when);
    for (const char* page : {"/main.asp", "/contact.asp", "/notice.asp", "/staff.asp", "/contact.asp?page=2",
                             "/scheduler/personMonth.asp"}) {
      Reply r = Get(page, cookie);
      EXPECT_EQ(r.status, 200) << page << " went to " << r.location;
    }
  };
  walk("before the kill");
  Reply added = Post(
      "/contact.asp", cookie,
      {{"action", "insert2"}, {"contactName", "多主机联系人"}, {"cityID", "2"}, {"phone", "13900002222"}});
  EXPECT_EQ(added.status, 200);

  // One process dies without a word and comes back; the other serves meanwhile.
  kill(servers_[0]->Pid(), SIGKILL);
  walk("with one process dead");
  servers_[0].reset();
  servers_[0] = Server(0);
  ASSERT_NE(servers_[0]->Port(), 0);
  std::map<std::string, int> beforeRestart = Upstreams();
  walk("after the restart");
  Reply plan = Post("/scheduler/manage.asp", cookie,
                    {{"action", "insert2"},
                     {"personID", person},
                     {"planStartTime", "2026-03-02"},
                     {"planEndTime", "2026-03-02"},
                     {"planContent", "多主机计划"}});
  EXPECT_EQ(plan.status, 200);

  EXPECT_EQ(Value(Database(), "select phone from contact where contactName='多主机联系人'"), "13900002222");
  EXPECT_EQ(Value(Database(), "select personID from personPlan where planContent='多主机计划'"), person);
  // Both processes served, the restarted one too (it never saw the sign-in).
  std::map<std::string, int> served = Upstreams();
  const std::string first = "127.0.0.1:" + std::to_string(ports_[0]);
  EXPECT_GT(served[first], beforeRestart[first]);
  EXPECT_GT(served["127.0.0.1:" + std::to_string(ports_[1])], 0);
}

TEST_F(SeveralHostsTest, TwoRequestsOfOneSessionInTwoProcessesRunOneAfterTheOther) {
  const std::string cookie = SignIn("lina");
  ASSERT_FALSE(cookie.empty());
  // Straight to each process at once: had they overlapped, both would have read no visits and
  // written 1.
  auto visit = [&](int i) { return Send(ports_[i], "GET", "/slow.asp", {}, cookie).text; };
  auto a = std::async(std::launch::async, visit, 0);
  auto b = std::async(std::launch::async, visit, 1);
  std::multiset<std::string> seen{a.get(), b.get()};
  EXPECT_EQ(seen, (std::multiset<std::string>{"visits=1", "visits=2"}));
  EXPECT_EQ(Get("/slow.asp", cookie).text, "visits=3");
}

TEST_F(SeveralHostsTest, WithoutRedisPagesSayWhyAndWorkAgainOnceItIsBack) {
  const std::string cookie = SignIn("xutao");
  ASSERT_FALSE(cookie.empty());
  redis_.Stop();
  for (int i = 0; i < 2; ++i) {
    auto start = std::chrono::steady_clock::now();
    Reply r = Get("/main.asp", cookie);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_EQ(r.status, 503);
    EXPECT_NE(r.text.find("redis 127.0.0.1:" + std::to_string(redis_.Port())), std::string::npos) << r.text;
  }
  // What needs no session still works.
  EXPECT_EQ(Get("/-/health", "").status, 200);
  EXPECT_EQ(Get("/include/style.css", "").status, 200);

  ASSERT_TRUE(redis_.Start());  // an empty one: the sessions went with the old
  EXPECT_EQ(Get("/main.asp", cookie).status, 302);
  const std::string again = SignIn("xutao");
  EXPECT_EQ(Get("/main.asp", again).status, 200);
  EXPECT_EQ(Get("/main.asp", again).status, 200);
}

}  // namespace
}  // namespace corvane::testing
