// The corvane-server program itself: it creates and seeds its database, serves the site on a free
// port, and stops cleanly on SIGTERM.
#include <gtest/gtest.h>
#include <httplib.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <regex>
#include <string>
#include <thread>

#include "corvane/codepage.h"
#include "test_support.h"

namespace {

struct Child {
  pid_t pid = -1;
  int out = -1;  // the child's stdout and stderr
};

Child Spawn(const std::vector<std::string>& args) {
  int fds[2];
  if (pipe(fds) != 0) return {};
  pid_t pid = fork();
  if (pid == 0) {
    dup2(fds[1], 1);
    dup2(fds[1], 2);
    close(fds[0]);
    close(fds[1]);
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(fds[1]);
  return {pid, fds[0]};
}

// Reads the child's output until `pattern` matches it, for 10 seconds at most; the match, or an
// empty one.
std::smatch ReadUntil(int fd, const std::regex& pattern) {
  static std::string out;  // what the child wrote so far; matches are searched in all of it
  char buf[512];
  std::smatch m;
  for (int waited = 0; !std::regex_search(out, m, pattern) && waited < 100; ++waited) {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, 100) <= 0) continue;
    ssize_t n = read(fd, buf, sizeof buf);
    if (n <= 0) break;
    out.append(buf, static_cast<size_t>(n));
  }
  return m;
}

// The port the child says it serves on, or 0.
int WaitForPort(int fd) {
  std::smatch m = ReadUntil(fd, std::regex("on http://127\\.0\\.0\\.1:(\\d+)/"));
  return m.empty() ? 0 : std::stoi(m[1]);
}

// "name=value" of the response's Set-Cookie, ready for a Cookie header; "" without one.
std::string CookieOf(const httplib::Response& r) {
  std::string set = r.get_header_value("Set-Cookie");
  return set.substr(0, set.find(';'));
}

TEST(ServerProcessTest, SeedsServesAndStopsOnSigterm) {
  auto dir = corvane::testing::ScratchPath("server");
  std::filesystem::create_directories(dir);
  Child child = Spawn({CORVANE_SERVER_BINARY, "--port", "0", "--db", (dir / "site.db").string(),
                       "--drives", (dir / "drives").string(), "--no-access-log"});
  ASSERT_GT(child.pid, 0);
  int port = WaitForPort(child.out);
  ASSERT_GT(port, 0);

  httplib::Client c("127.0.0.1", port);
  auto login = c.Get("/login.asp");
  ASSERT_TRUE(login);
  EXPECT_EQ(login->status, 200);
  EXPECT_EQ(login->get_header_value("Content-Type"), "text/html; charset=gbk");
  EXPECT_NE(corvane::DecodeCodePage(login->body).find("用户名"), std::string::npos);
  std::string before = CookieOf(*login);
  ASSERT_FALSE(before.empty());
  auto signIn = c.Post("/login.asp", {{"Cookie", before}}, "loginName=zhangwei&password=123456",
                       "application/x-www-form-urlencoded");
  ASSERT_TRUE(signIn);
  EXPECT_EQ(signIn->status, 302);
  EXPECT_EQ(signIn->get_header_value("Location"), "/main.asp");
  // Signing in moves the session to a new id: the id the browser held before opens nothing.
  std::string after = CookieOf(*signIn);
  ASSERT_FALSE(after.empty());
  EXPECT_NE(after, before);
  EXPECT_EQ(c.Get("/main.asp", {{"Cookie", after}})->status, 200);
  EXPECT_EQ(c.Get("/main.asp", {{"Cookie", before}})->status, 302);  // back to the sign-in page
  EXPECT_EQ(c.Get("/main.asp")->status, 302);
  EXPECT_EQ(c.Get("/Include/Style.css")->status, 200);
  // A calendar page in debug mode: the scheduler's close traces after it let go of the response,
  // which raises in OnEndPage. The page is served as written and the error goes to the log.
  auto month = c.Get("/scheduler/personMonth.asp?debug=1", {{"Cookie", after}});
  ASSERT_TRUE(month);
  EXPECT_EQ(month->status, 200);
  EXPECT_NE(month->body.find("debugID"), std::string::npos);
  EXPECT_FALSE(ReadUntil(child.out, std::regex("/scheduler/personMonth\\.asp: scheduler\\.OnEndPage raised error 91")).empty());
  EXPECT_EQ(c.Get("/IMAGES/edit.gif")->get_header_value("Content-Type"), "image/gif");

  ASSERT_EQ(kill(child.pid, SIGTERM), 0);
  int status = 0;
  for (int i = 0; i < 200 && waitpid(child.pid, &status, WNOHANG) == 0; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  ASSERT_TRUE(WIFEXITED(status)) << "still running or killed";
  EXPECT_EQ(WEXITSTATUS(status), 0);
  close(child.out);
}

}  // namespace
