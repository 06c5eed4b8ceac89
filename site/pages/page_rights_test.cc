#include "page_rights.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>

#include "corvane/ado.h"
#include "site.h"
#include "test_support.h"

namespace corvane::site {
namespace {

class PageRightsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    db_ = new corvane::testing::ScratchDatabase();
    PrepareDatabase(db_->connectionString);
  }
  static void TearDownTestSuite() {
    delete db_;
    db_ = nullptr;
  }
  // The verdict for a GET of `path` by the person (0: nobody signed in), from `rights` or a new guard.
  static server::GuardVerdict Ask(int32_t person, const std::string& name, const std::string& path,
                                  const PageRights* rights = nullptr) {
    host::SessionObject session;
    if (person) {
      session.Set("personID", Variant(person));
      session.Set("personName", Variant(name));
    }
    return (rights ? *rights : PageRights(db_->connectionString))(
        {.method = "GET", .sitePath = path, .session = session, .remoteAddr = "127.0.0.1"});
  }
  static corvane::testing::ScratchDatabase* db_;
};
corvane::testing::ScratchDatabase* PageRightsTest::db_ = nullptr;

// Seeded people: 1 sysop (no group), 2 in the administrators' group, 3 a leader, 10 staff, 27 in the
// other system's group.
TEST_F(PageRightsTest, APageOpensOnlyForThoseWhoseGroupsHoldAMenuEntryLeadingToIt) {
  struct Case {
    int32_t person;
    const char* name;
    const char* path;
    int status;
    const char* admin;
  };
  // clang-format off
  const Case cases[] = {
      {0,  "",      "/login.asp",                   0,   nullptr},
      {0,  "",      "/logout.asp",                  0,   nullptr},
      {0,  "",      "/main.asp",                    302, nullptr},
      {0,  "",      "/permission/permission.asp",   302, nullptr},
      {10, "徐涛",  "/main.asp",                    0,   ""},   // no menu leads to it
      {10, "徐涛",  "/notice.asp",                  0,   ""},
      {10, "徐涛",  "/scheduler/manage.asp",        0,   ""},
      {10, "徐涛",  "/Scheduler/MANAGE.asp",        0,   ""},   // paths are case-blind
      {10, "徐涛",  "/staff.asp",                   403, nullptr},
      {10, "徐涛",  "/scheduler/leaderWeek.asp",    403, nullptr},
      {10, "徐涛",  "/permission/permission.asp",   403, nullptr},
      {10, "徐涛",  "/permission/permissionMan.asp", 403, nullptr},  // administrative, no menu
      {10, "sysop ", "/staff.asp",                  403, nullptr},  // only the exact name is the system account
      {3,  "lina",  "/scheduler/leaderWeek.asp",    0,   ""},
      {3,  "lina",  "/staff.asp",                   403, nullptr},
      {27, "x",     "/contact.asp",                 0,   ""},   // the other system's entry leads there too
      {27, "x",     "/scheduler/personWeek.asp",    403, nullptr},
      {2,  "张伟",  "/staff.asp",                   0,   "1"},
      {2,  "张伟",  "/permission/permissionset.asp", 0,  "1"},
      {1,  "sysop", "/permission/permissionMan.asp", 0,  "1"},
      {1,  "sysop", "/scheduler/leader2Month.asp",  0,   "1"},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.person) + " " + c.path);
    server::GuardVerdict v = Ask(c.person, c.name, c.path);
    EXPECT_EQ(v.status, c.status);
    if (c.status == 302) {
      EXPECT_EQ(v.location, "/login.asp");
    }
    if (c.status == 403) {
      EXPECT_NE(v.logLine.find(c.path), std::string::npos);
    }
    if (c.admin) {
      ASSERT_EQ(v.serverVariables.size(), 1u);
      EXPECT_EQ(v.serverVariables[0].first, "CORVANE_ADMIN");
      EXPECT_EQ(v.serverVariables[0].second, c.admin);
    }
  }
}

TEST_F(PageRightsTest, RightsWrittenHereHoldFromTheNextPageAndWrittenElsewhereWithinASecond) {
  auto now = std::chrono::steady_clock::now();
  const PageRights rights(db_->connectionString, [&] { return now; });  // one guard, as a server keeps it
  auto staff = [&] { return Ask(10, "徐涛", "/staff.asp", &rights).status; };
  EXPECT_EQ(staff(), 403);

  ado::Connection conn;
  conn.Open(db_->connectionString);
  conn.Execute("insert into accessMenu(accessGroupID,accessMenuType,accessMenuID) values(3,1,31)");
  EXPECT_EQ(staff(), 0);
  conn.Execute("delete from accessMenu where accessGroupID=3 and accessMenuID=31");
  EXPECT_EQ(staff(), 403);
  conn.Close();

  // Another process on the same database file writes without this one knowing.
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(db_->file.c_str(), &other), SQLITE_OK);
  auto run = [&](const char* sql) {
    ASSERT_EQ(sqlite3_exec(other, sql, nullptr, nullptr, nullptr), SQLITE_OK);
  };
  run("insert into accessMenu(accessGroupID,accessMenuType,accessMenuID) values(3,1,31)");
  EXPECT_EQ(staff(), 403);
  now += std::chrono::seconds(1);
  EXPECT_EQ(staff(), 0);
  run("delete from accessMenu where accessGroupID=3 and accessMenuID=31");
  now += std::chrono::seconds(1);
  EXPECT_EQ(staff(), 403);
  sqlite3_close(other);
}

TEST(PageRights, RightsThatCannotBeReadOpenNothingAndTheRefusalSaysWhy) {
  host::SessionObject session;
  session.Set("personID", Variant(int32_t{2}));
  session.Set("personName", Variant(std::string("张伟")));
  const std::string missing = corvane::testing::ScratchPath("none").string() + "/site.db";
  server::GuardVerdict v = PageRights("Provider=SQLite;Data Source=" + missing)(
      {.method = "GET", .sitePath = "/staff.asp", .session = session, .remoteAddr = "127.0.0.1"});
  EXPECT_EQ(v.status, 503);
  EXPECT_NE(v.message.find("the rights could not be read"), std::string::npos) << v.message;
  EXPECT_TRUE(v.serverVariables.empty());
}

}  // namespace
}  // namespace corvane::site
