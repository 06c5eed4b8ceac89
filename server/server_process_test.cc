// The corvane-server program itself: it creates and seeds its database, serves the site on a free
// port, and stops cleanly on SIGTERM.
#include <gtest/gtest.h>
#include <httplib.h>

#include <string>

#include "corvane/codepage.h"
#include "process_test_support.h"

namespace {

TEST(ServerProcessTest, SeedsServesSignsInAndStopsOnSigterm) {
  corvane::testing::ServerProcess server("server");
  EXPECT_NE(server.AwaitOutput("created and seeded the demo database"), "");
  ASSERT_NE(server.Port(), 0);

  httplib::Client c("127.0.0.1", server.Port());
  auto login = c.Get("/login.asp");
  ASSERT_TRUE(login);
  EXPECT_EQ(login->get_header_value("Content-Type"), "text/html; charset=gbk");
  EXPECT_NE(corvane::DecodeCodePage(login->body).find("用户名"), std::string::npos);
  EXPECT_EQ(c.Get("/IMAGES/edit.gif")->get_header_value("Content-Type"), "image/gif");
  // A visitor who only looks gets no session. Signing in with a seeded account gives one; signing in
  // again moves it to a new id: the id held before opens nothing, and the site sends its holder back
  // to the sign-in page. A Set-Cookie value serves as the Cookie header as it stands (its attributes
  // read as cookies of other names).
  EXPECT_FALSE(login->has_header("Set-Cookie"));
  const char* form = "loginName=zhangwei&password=123456";
  std::string before =
      c.Post("/login.asp", form, "application/x-www-form-urlencoded")->get_header_value("Set-Cookie");
  ASSERT_NE(before, "");
  auto signIn = c.Post("/login.asp", {{"Cookie", before}}, form, "application/x-www-form-urlencoded");
  EXPECT_EQ(signIn->get_header_value("Location"), "/main.asp");
  std::string after = signIn->get_header_value("Set-Cookie");
  EXPECT_EQ(c.Get("/main.asp", {{"Cookie", after}})->status, 200);
  EXPECT_EQ(c.Get("/main.asp", {{"Cookie", before}})->status, 302);
  // A calendar page in debug mode: the scheduler's close traces after it let go of the response,
  // which raises in OnEndPage. The page is served as written and the error goes to the log.
  auto month = c.Get("/scheduler/personMonth.asp?debug=1", {{"Cookie", after}});
  EXPECT_EQ(month->status, 200);
  EXPECT_NE(month->body.find("debugID"), std::string::npos);
  EXPECT_NE(server.AwaitOutput("/scheduler/personMonth\\.asp: scheduler\\.OnEndPage raised error 91"), "");

  int status = server.Stop();  // -1 while the server runs
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "still running, killed or failed: " << status;
}

}  // namespace
