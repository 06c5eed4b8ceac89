// The corvane-server program itself: it creates and seeds its database, serves the site on a free
// port, and stops cleanly on SIGTERM.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <regex>
#include <string>
#include <thread>

#include "corvane/codepage.h"
#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// The first group of `pattern` (or the whole match) in what the server has written to `log`; "" when
// the server has not written it within 10 seconds.
std::string AwaitOutput(const fs::path& log, const std::string& pattern) {
  for (int i = 0; i < 100; ++i, std::this_thread::sleep_for(100ms)) {
    std::ifstream in(log);
    std::string out((std::istreambuf_iterator<char>(in)), {});
    if (std::smatch m; std::regex_search(out, m, std::regex(pattern))) return m[m.size() - 1];
  }
  return "";
}

TEST(ServerProcessTest, SeedsServesSignsInAndStopsOnSigterm) {
  fs::path dir = corvane::testing::ScratchPath("server"), log = dir / "output.txt";
  fs::create_directories(dir);
  std::string db = dir / "site.db", drives = dir / "drives";
  pid_t pid = fork();
  if (pid == 0) {  // the server, with stdout and stderr in the log
    dup2(open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1), dup2(1, 2);
    execl(CORVANE_SERVER_BINARY, CORVANE_SERVER_BINARY, "--port", "0", "--db", db.c_str(), "--drives",
          drives.c_str(), "--no-access-log", nullptr);
    _exit(127);
  }
  struct Guard {  // kills the server when a check fails before it has stopped
    pid_t pid;
    ~Guard() {
      if (waitpid(pid, nullptr, WNOHANG) == 0) kill(pid, SIGKILL), waitpid(pid, nullptr, 0);
    }
  } guard{pid};
  EXPECT_NE(AwaitOutput(log, "created and seeded the demo database"), "");
  std::string port = AwaitOutput(log, "serving .* on http://127\\.0\\.0\\.1:(\\d+)/");
  ASSERT_NE(port, "");

  httplib::Client c("127.0.0.1", std::stoi(port));
  auto login = c.Get("/login.asp");
  ASSERT_TRUE(login);
  EXPECT_EQ(login->get_header_value("Content-Type"), "text/html; charset=gbk");
  EXPECT_NE(corvane::DecodeCodePage(login->body).find("用户名"), std::string::npos);
  EXPECT_EQ(c.Get("/IMAGES/edit.gif")->get_header_value("Content-Type"), "image/gif");
  // Signing in with a seeded account moves the session to a new id: the id held before opens nothing,
  // and the site sends its holder back to the sign-in page. A Set-Cookie value serves as the Cookie
  // header as it stands (its attributes read as cookies of other names).
  std::string before = login->get_header_value("Set-Cookie");
  ASSERT_NE(before, "");
  auto signIn = c.Post("/login.asp", {{"Cookie", before}}, "loginName=zhangwei&password=123456",
                       "application/x-www-form-urlencoded");
  EXPECT_EQ(signIn->get_header_value("Location"), "/main.asp");
  std::string after = signIn->get_header_value("Set-Cookie");
  EXPECT_EQ(c.Get("/main.asp", {{"Cookie", after}})->status, 200);
  EXPECT_EQ(c.Get("/main.asp", {{"Cookie", before}})->status, 302);
  // A calendar page in debug mode: the scheduler's close traces after it let go of the response,
  // which raises in OnEndPage. The page is served as written and the error goes to the log.
  auto month = c.Get("/scheduler/personMonth.asp?debug=1", {{"Cookie", after}});
  EXPECT_EQ(month->status, 200);
  EXPECT_NE(month->body.find("debugID"), std::string::npos);
  EXPECT_NE(AwaitOutput(log, "/scheduler/personMonth\\.asp: scheduler\\.OnEndPage raised error 91"), "");

  ASSERT_EQ(kill(pid, SIGTERM), 0);
  int status = -1;  // stays so while the server runs
  for (int i = 0; i < 200 && waitpid(pid, &status, WNOHANG) == 0; ++i) std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "still running, killed or failed: " << status;
}

}  // namespace
