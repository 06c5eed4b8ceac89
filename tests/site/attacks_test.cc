// The demo site under attack: the real corvane-server on its seeded database, probed the way a staff
// member (xutao, access group 员工) probed it, and without signing in. Every probe must be refused with
// its status (302 to the sign-in page, 403 no right or another site's write, 400 a guarded input) and
// leave the database as it was; the ordinary work around each probe must still go through.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "corvane/codepage.h"
#include "process_test_support.h"
#include "site_database.h"

namespace {
using corvane::testing::Rows;

namespace fs = std::filesystem;
using ::testing::EndsWith;
using ::testing::HasSubstr;

using Params = std::vector<std::pair<std::string, std::string>>;

enum class As { kNobody, kStaff, kAdmin };

// A name and value sent as a request header.
struct Header {
  std::string name, value;
};

// One request and what it must get: `status`, a reply that contains `shows`.
struct Probe {
  As as;
  const char* method;
  const char* path;  // may carry a query of its own
  Params params;     // the query's (GET) or the form's (POST) values, encoded by the test
  int status;
  const char* shows = "";
  Header header = {};
};

struct Reply {
  int status = 0;
  std::string text;  // the body as UTF-8
  httplib::Headers headers;
  std::string Header(const char* name) const {
    auto it = headers.find(name);
    return it == headers.end() ? "" : it->second;
  }
};

// The start of a reply's text, for a failure's message.
std::string Excerpt(const std::string& text) {
  return text.substr(0, 400) + (text.size() > 400 ? "..." : "");
}

// Whether a page carries the components' debug trace (every statement and request value).
bool ShowsTrace(const std::string& text) { return text.find("<span id=debugID") != std::string::npos; }

// Form encoding in the site's code page (GBK): every byte but letters, digits and "-_.~" as %XX.
std::string Encode(const Params& params) {
  auto escape = [](const std::string& text) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : corvane::EncodeCodePage(text)) {
      if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~')
        out += static_cast<char>(c);
      else
        out += {'%', kHex[c >> 4], kHex[c & 15]};
    }
    return out;
  };
  std::string out;
  for (const auto& [name, value] : params)
    out += (out.empty() ? "" : "&") + escape(name) + "=" + escape(value);
  return out;
}

// Every row of the tables that the probes aim at, each after its table's name, sorted.
std::vector<std::string> Dump(const fs::path& database) {
  std::vector<std::string> out;
  for (std::string table : {"person", "AccessGroup", "accessPerson", "accessMenu", "personPlan", "notice"})
    for (const std::string& row : Rows(database, "select * from " + table)) out.push_back(table + ": " + row);
  std::sort(out.begin(), out.end());
  return out;
}

// The rows of one dump that the other lacks: "-" before a row gone, "+" before a row new or changed.
std::string Changes(const std::vector<std::string>& before, const std::vector<std::string>& after) {
  std::vector<std::string> gone, added;
  std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(gone));
  std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(added));
  std::string out;
  for (const std::string& row : gone) out += "- " + row + "\n";
  for (const std::string& row : added) out += "+ " + row + "\n";
  return out;
}

// A server and the requests sent to it; `from` is the client's own loopback address ("" any).
struct Site {
  std::unique_ptr<corvane::testing::ServerProcess> server;

  Reply Send(const std::string& method, std::string path, const Params& params, const std::string& cookie,
             const Header& header = {}, const std::string& from = "") const {
    httplib::Client c("127.0.0.1", server->Port());
    c.set_url_encode(false);
    if (!from.empty()) c.set_interface(from);
    httplib::Headers headers;
    if (!cookie.empty()) headers.emplace("Cookie", cookie);
    if (!header.name.empty()) headers.emplace(header.name, header.value);
    if (method == "GET" && !params.empty())
      path += (path.find('?') == std::string::npos ? "?" : "&") + Encode(params);
    httplib::Result res = method == "GET"
                              ? c.Get(path, headers)
                              : c.Post(path, headers, Encode(params), "application/x-www-form-urlencoded");
    Reply r;
    if (!res) return r;
    r.status = res->status;
    r.headers = res->headers;
    const bool utf8 = res->get_header_value("Content-Type").find("utf-8") != std::string::npos;
    r.text = utf8 ? res->body : corvane::DecodeCodePage(res->body);
    return r;
  }

  Reply SignIn(const std::string& login, const std::string& password, const std::string& from = "") const {
    return Send("POST", "/login.asp", {{"loginName", login}, {"password", password}}, "", {}, from);
  }

  // The session cookie of a good sign-in ("" when refused).
  std::string CookieOf(const std::string& login, const std::string& password) const {
    Reply r = SignIn(login, password);
    std::string cookie = r.Header("Set-Cookie");
    if (r.status != 302 || r.Header("Location") != "/main.asp") return "";
    return cookie.substr(0, cookie.find(';'));
  }
};

class AttackTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    site_.server = std::make_unique<corvane::testing::ServerProcess>("attacks");
    if (site_.server->Port() == 0) return;
    staff_ = site_.CookieOf("xutao", "123456");
    admin_ = site_.CookieOf("zhangwei", "123456");
  }
  static void TearDownTestSuite() { site_.server.reset(); }

  void SetUp() override {
    ASSERT_NE(site_.server->Port(), 0) << "corvane-server did not start";
    ASSERT_NE(staff_, "") << "xutao could not sign in";
    ASSERT_NE(admin_, "") << "zhangwei could not sign in";
  }

  static const std::string& CookieFor(As as) {
    static const std::string none;
    return as == As::kStaff ? staff_ : as == As::kAdmin ? admin_ : none;
  }
  static Reply Send(const Probe& p) {
    return site_.Send(p.method, p.path, p.params, CookieFor(p.as), p.header);
  }
  static std::vector<std::string> Dump() { return ::Dump(site_.server->Database()); }
  // The first value of a query ("" when there is no row).
  static std::string Query(const std::string& sql) {
    std::vector<std::string> rows = Rows(site_.server->Database(), sql);
    return rows.empty() ? "" : rows[0];
  }

  // Sends each probe: its status, its text, and the database unchanged.
  static void ExpectRefused(const std::vector<Probe>& probes) {
    for (const Probe& p : probes) {
      SCOPED_TRACE(std::string(p.method) + " " + p.path + " " + Encode(p.params) + " " + p.header.name);
      const std::vector<std::string> before = Dump();
      Reply r = Send(p);
      EXPECT_EQ(r.status, p.status);
      if (p.status == 302) {
        EXPECT_THAT(r.Header("Location"), EndsWith("/login.asp"));
      }
      EXPECT_NE(r.text.find(p.shows), std::string::npos) << "no \"" << p.shows << "\" in " << Excerpt(r.text);
      EXPECT_EQ(Changes(before, Dump()), "") << "a refused request changed the database";
    }
  }

  static inline Site site_;
  static inline std::string staff_, admin_;
};

// One of the staff member's (person 12) own plans; plans 1 and 7 are zhangwei's (person 2).
constexpr const char* kOwnPlan = "select min(planID) from personPlan where personID=12";
const std::string kBlindRead = "unicode(substr((select password from person where personID=2),1,1))=36";
constexpr const char* kNoRight = "没有权限";

TEST_F(AttackTest, EveryPageButSignInNeedsASignedInPerson) {
  // clang-format off
  ExpectRefused({
    {As::kNobody, "GET",  "/main.asp", {}, 302},
    {As::kNobody, "GET",  "/notice.asp", {}, 302},
    {As::kNobody, "GET",  "/Staff.ASP", {}, 302},
    {As::kNobody, "GET",  "/upload.asp", {}, 302},
    {As::kNobody, "GET",  "/password.asp", {}, 302},
    {As::kNobody, "GET",  "/scheduler/manage.asp", {{"action", "delete"}, {"planID", "1"}}, 302},
    {As::kNobody, "GET",  "/permission/permission.asp", {{"ac", "del"}, {"id", "4"}}, 302},
    {As::kNobody, "POST", "/permission/permissionMan.asp?id=1", {{"checkbox", "12"}}, 302},
    {As::kNobody, "POST", "/staff.asp", {{"action", "update2"}, {"personID", "2"}, {"dutyID", "1,password=777777"}}, 302},
    {As::kNobody, "POST", "/notice.asp", {{"action", "insert2"}, {"title", "anonymous"}}, 302},
  });
  // clang-format on
  EXPECT_EQ(site_.Send("GET", "/login.asp", {}, "").status, 200);
}

TEST_F(AttackTest, StaffCannotOpenAdministrativeOrLeadersPages) {
  // clang-format off
  ExpectRefused({
    {As::kStaff, "GET",  "/permission/permission.asp", {}, 403, kNoRight},
    {As::kStaff, "GET",  "/permission/permissionset.asp?id=3", {}, 403, kNoRight},
    {As::kStaff, "GET",  "/permission/permissionMan.asp?id=1", {}, 403, kNoRight},
    {As::kStaff, "GET",  "/staff.asp", {}, 403, kNoRight},
    {As::kStaff, "GET",  "/scheduler/leaderWeek.asp", {}, 403, kNoRight},
    {As::kStaff, "GET",  "/scheduler/leader2Month.asp", {}, 403, kNoRight},
    // Into the administrators' group, more rights for the staff group, groups renamed and deleted.
    {As::kStaff, "POST", "/permission/permissionMan.asp?id=1", {{"checkbox", "1, 2, 12"}}, 403, kNoRight},
    {As::kStaff, "POST", "/permission/permissionset.asp?id=3", {{"permitSetStr", "1*11*3*31*32"}}, 403, kNoRight},
    {As::kStaff, "GET",  "/permission/permission.asp", {{"ac", "rename"}, {"id", "1"}, {"name", "x"}}, 403, kNoRight},
    {As::kStaff, "GET",  "/permission/permission.asp", {{"ac", "del"}, {"id", "4"}}, 403, kNoRight},
    {As::kStaff, "POST", "/permission/permission.asp", {{"ac", "add"}, {"name", "x"}}, 403, kNoRight},
    // Another person's password through the staff table.
    {As::kStaff, "POST", "/staff.asp", {{"action", "update2"}, {"personID", "2"}, {"dutyID", "1,password=777777"}}, 403, kNoRight},
    {As::kStaff, "GET",  "/staff.asp", {{"action", "delete"}, {"personID", "2"}}, 403, kNoRight},
  });
  // clang-format on
  EXPECT_NE(site_.server->AwaitOutput("403 POST /staff\\.asp from 127\\.0\\.0\\.1"), "") << "no log line";
}

TEST_F(AttackTest, APersonWritesOnlyTheirOwnPlans) {
  const std::string own = Query(kOwnPlan);
  ASSERT_NE(own, "");
  // clang-format off
  ExpectRefused({
    {As::kStaff, "POST", "/scheduler/manage.asp", {{"action", "update2"}, {"planID", "0 or planID=1"}, {"planContent", "x"}}, 400, "planID"},
    {As::kStaff, "GET",  "/scheduler/manage.asp", {{"action", "delete"}, {"planID", "0 or planID=7"}}, 400, "planID"},
    {As::kStaff, "POST", "/scheduler/manage.asp", {{"action", "update2"}, {"planID", "1"}, {"personID", "12"}, {"planContent", "x"}}, 403},
    {As::kStaff, "GET",  "/scheduler/manage.asp", {{"action", "delete"}, {"planID", "7"}}, 403},
    {As::kStaff, "POST", "/scheduler/manage.asp", {{"action", "insert2"}, {"personID", "2"}, {"planStartTime", "2026-01-05"},
                                                   {"planEndTime", "2026-01-05"}, {"planContent", "planted"}}, 403},
    // One's own plan handed to another person.
    {As::kStaff, "POST", "/scheduler/manage.asp", {{"action", "update2"}, {"planID", own}, {"personID", "2"}}, 403},
  });
  // clang-format on
  EXPECT_NE(site_.server->AwaitOutput("/scheduler/manage\\.asp: .*planID"), "") << "no log line";
}

TEST_F(AttackTest, SqlInRequestValuesIsRefused) {
  // clang-format off
  ExpectRefused({
    // Blind reads: a search on an integer field, a sort order that depends on a secret.
    {As::kStaff, "GET",  "/notice.asp", {{"action", "search2"}, {"noticeTypeID", "1 and " + kBlindRead}}, 400, "noticeTypeID"},
    {As::kStaff, "GET",  "/contact.asp", {{"action", "search2"}, {"cityID", "1 or 1=1"}}, 400, "cityID"},
    {As::kStaff, "GET",  "/notice.asp", {{"order", "(case when " + kBlindRead + " then noticeID else -noticeID end)"}}, 400, "order"},
    {As::kStaff, "GET",  "/notice.asp", {{"order", "title DESC,(select password from person)"}}, 400, "order"},
    {As::kStaff, "GET",  "/notice.asp", {{"choseItem", "title,(select password from person)"}}, 400, "choseItem"},
    {As::kStaff, "GET",  "/notice.asp", {{"page", "1 or 1=1"}}, 400, "page"},
    {As::kAdmin, "GET",  "/staff.asp", {{"action", "search2"}, {"dutyID", "1 and " + kBlindRead}}, 400, "dutyID"},
    // Writes past their row: every notice, another person's password, every group.
    {As::kStaff, "POST", "/notice.asp", {{"action", "update2"}, {"noticeID", "1 or 1=1"}, {"title", "x"}}, 400, "noticeID"},
    {As::kStaff, "GET",  "/notice.asp", {{"action", "delete"}, {"noticeID", "0 or 1=1"}}, 400, "noticeID"},
    {As::kAdmin, "POST", "/staff.asp", {{"action", "update2"}, {"personID", "2"}, {"dutyID", "1,password=777777"}}, 400, "dutyID"},
    {As::kAdmin, "GET",  "/permission/permission.asp", {{"ac", "del"}, {"id", "4 or 1=1"}}, 400, "id"},
    {As::kAdmin, "POST", "/permission/permissionMan.asp?id=3", {{"checkbox", "12) or (1=1"}}, 400, "checkbox"},
    {As::kAdmin, "POST", "/permission/permissionset.asp?id=3", {{"permitSetStr", "1*11) or (1=1"}}, 400, "permitSetStr"},
  });
  // clang-format on
}

TEST_F(AttackTest, ScriptInTextIsRefused) {
  // clang-format off
  ExpectRefused({
    {As::kStaff, "POST", "/notice.asp", {{"action", "insert2"}, {"title", "<img src=x onerror=alert(1)>"}, {"noticeTypeID", "1"}}, 400, "title"},
    {As::kStaff, "POST", "/notice.asp", {{"action", "update2"}, {"noticeID", "1"}, {"title", "<svg onload=alert(1)>"}}, 400, "title"},
    {As::kStaff, "POST", "/contact.asp", {{"action", "insert2"}, {"contactName", "</td><script>alert(1)</script>"}}, 400, "contactName"},
    {As::kStaff, "GET",  "/notice.asp", {{"debug", "1"}, {"title", "<script>alert(1)</script>"}}, 400, "title"},
    {As::kAdmin, "POST", "/permission/permission.asp", {{"ac", "add"}, {"name", "<svg onload=alert(1)>"}}, 400, "name"},
    {As::kAdmin, "POST", "/permission/permission.asp", {{"ac", "rename"}, {"id", "3"}, {"name", "<img src=x onerror=alert(1)>"}}, 400, "name"},
  });
  // clang-format on
}

TEST_F(AttackTest, AnotherSitesWriteIsRefusedEvenForAnAdministrator) {
  const Header crossSite{"Sec-Fetch-Site", "cross-site"}, evilOrigin{"Origin", "http://evil.example"},
      evilReferer{"Referer", "http://evil.example/page.html"};
  // clang-format off
  ExpectRefused({
    {As::kAdmin, "POST", "/permission/permission.asp", {{"ac", "add"}, {"name", "evil"}}, 403, "", crossSite},
    {As::kAdmin, "POST", "/permission/permission.asp", {{"ac", "add"}, {"name", "evil"}}, 403, "", evilOrigin},
    {As::kAdmin, "POST", "/permission/permissionMan.asp?id=1", {{"checkbox", "1, 2, 12"}}, 403, "", evilReferer},
    {As::kAdmin, "GET",  "/permission/permission.asp", {{"ac", "del"}, {"id", "4"}}, 403, "", crossSite},
    {As::kAdmin, "GET",  "/permission/permission.asp", {{"ac", "del"}, {"id", "4"}}, 403, "", evilReferer},
    {As::kAdmin, "GET",  "/notice.asp", {{"action", "delete"}, {"noticeID", "5"}}, 403, "", crossSite},
    {As::kAdmin, "GET",  "/scheduler/manage.asp", {{"action", "delete"}, {"planID", "1"}}, 403, "", evilOrigin},
  });
  // clang-format on

  // The same writes from the site's own pages go through; a link from elsewhere that only reads too.
  const std::string self = "http://127.0.0.1:" + std::to_string(site_.server->Port());
  Reply added = site_.Send("POST", "/permission/permission.asp", {{"ac", "add"}, {"name", "samesite"}},
                           admin_, {"Origin", self});
  EXPECT_EQ(added.status, 200);
  const std::string id = Query("select accessGroupID from AccessGroup where accessGroupName='samesite'");
  ASSERT_NE(id, "");
  Reply deleted = site_.Send("GET", "/permission/permission.asp", {{"ac", "del"}, {"id", id}}, admin_,
                             {"Sec-Fetch-Site", "same-origin"});
  EXPECT_EQ(deleted.status, 200);
  EXPECT_EQ(Query("select count(*) from AccessGroup where accessGroupName='samesite'"), "0");
  EXPECT_EQ(site_.Send("GET", "/notice.asp", {}, admin_, crossSite).status, 200);
}

TEST_F(AttackTest, TheDebugTraceIsForAdministratorsOnly) {
  // clang-format off
  const char* pages[] = {"/notice.asp", "/contact.asp", "/scheduler/manage.asp", "/scheduler/personMonth.asp"};
  // clang-format on
  for (const char* page : pages) {
    SCOPED_TRACE(page);
    Reply staff = site_.Send("GET", page, {{"debug", "1"}}, staff_);
    EXPECT_EQ(staff.status, 200);
    EXPECT_FALSE(ShowsTrace(staff.text));
    EXPECT_FALSE(ShowsTrace(site_.Send("GET", page, {}, staff_).text));
    EXPECT_TRUE(ShowsTrace(site_.Send("GET", page, {{"debug", "1"}}, admin_).text));
    EXPECT_FALSE(ShowsTrace(site_.Send("GET", page, {{"debug", "0"}}, admin_).text));
  }
}

TEST_F(AttackTest, OrdinaryWorkPassesTheGuards) {
  // clang-format off
  const std::vector<Probe> served = {
    {As::kStaff, "GET", "/main.asp", {}, 200},
    {As::kStaff, "GET", "/scheduler/personWeek.asp", {}, 200},
    {As::kStaff, "GET", "/notice.asp", {{"action", "search2"}, {"noticeTypeID", "1"}}, 200},
    {As::kStaff, "GET", "/notice.asp", {{"action", "search2"}, {"title", "3 < 5"}}, 200},
    {As::kStaff, "GET", "/notice.asp", {{"order", "title"}}, 200},
    {As::kStaff, "GET", "/notice.asp", {{"order", "publishDate DESC"}, {"page", "2"}, {"pageSize", "10"}}, 200},
    {As::kStaff, "GET", "/contact.asp", {{"action", "search2"}, {"contactName", "建国"}, {"createDate", ""}}, 200},
    {As::kAdmin, "GET", "/staff.asp", {}, 200},
    {As::kAdmin, "GET", "/permission/permission.asp", {}, 200},
    {As::kAdmin, "GET", "/permission/permissionMan.asp?id=3", {}, 200},
    {As::kAdmin, "GET", "/scheduler/leaderWeek.asp", {}, 200},
  };
  // clang-format on
  for (const Probe& p : served) {
    SCOPED_TRACE(std::string(p.path) + " " + Encode(p.params));
    EXPECT_EQ(Send(p).status, p.status);
  }

  // The staff member edits and adds their own plans.
  const std::string own = Query(kOwnPlan);
  Reply edited = site_.Send(
      "POST", "/scheduler/manage.asp",
      {{"action", "update2"}, {"planID", own}, {"personID", "12"}, {"planContent", "moved"}}, staff_);
  EXPECT_EQ(edited.status, 200);
  EXPECT_EQ(Query("select personID,planContent from personPlan where planID=" + own), "12|moved");
  Reply added = site_.Send("POST", "/scheduler/manage.asp",
                           {{"action", "insert2"},
                            {"personID", "12"},
                            {"planStartTime", "2026-01-05"},
                            {"planEndTime", "2026-01-05"},
                            {"planContent", "mine"}},
                           staff_);
  EXPECT_EQ(added.status, 200);
  EXPECT_EQ(Query("select personID from personPlan where planContent='mine'"), "12");
}

// The host's own replies carry them too (server tests); here, the guards' refusals.
TEST_F(AttackTest, EveryReplyCarriesTheBrowserGuards) {
  const Probe replies[] = {{As::kNobody, "GET", "/main.asp", {}, 302},
                           {As::kStaff, "GET", "/staff.asp", {}, 403}};
  for (const Probe& p : replies) {
    SCOPED_TRACE(p.path);
    Reply r = Send(p);
    EXPECT_EQ(r.status, p.status);
    EXPECT_EQ(r.Header("X-Content-Type-Options"), "nosniff");
    EXPECT_THAT(r.Header("Content-Security-Policy"), HasSubstr("frame-ancestors 'self'"));
    EXPECT_EQ(r.Header("Referrer-Policy"), "same-origin");
  }
}

TEST_F(AttackTest, TheSessionCookieStaysOnThisSite) {
  Reply r = site_.SignIn("lina", "123456");
  EXPECT_EQ(r.status, 302);
  EXPECT_THAT(r.Header("Set-Cookie"), HasSubstr("SameSite=Strict"));
  EXPECT_THAT(r.Header("Set-Cookie"), HasSubstr("HttpOnly"));
}

TEST_F(AttackTest, PasswordsAreStoredAsArgon2idHashes) {
  EXPECT_EQ(Query("select count(*) from person where password not like '$argon2id$%' or password is null"),
            "0");
  EXPECT_NE(Query("select count(*) from person"), "0");
}

TEST_F(AttackTest, TwoPeoplesUploadsOfOneNameStayApart) {
  const std::string other = site_.CookieOf("sunli", "123456");  // person 13, the staff group too
  ASSERT_NE(other, "");
  httplib::Client c("127.0.0.1", site_.server->Port());
  for (const auto& [cookie, who] : {std::pair{staff_, "xutao"}, std::pair{other, "sunli"}}) {
    httplib::MultipartFormDataItems form = {{"file1", std::string("from ") + who, "report.txt", "text/plain"},
                                            {"file1Name", "report.txt", "", ""},
                                            {"remark", std::string(who) + "-remark", "", ""}};
    auto res = c.Post("/upload.asp", {{"Cookie", cookie}}, form);
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 200) << who;
  }
  std::vector<std::string> kept;
  for (const auto& entry : fs::recursive_directory_iterator(site_.server->Drives()))
    if (entry.path().filename() == "report.txt") {
      std::ifstream in(entry.path());
      kept.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
  std::sort(kept.begin(), kept.end());
  EXPECT_EQ(kept, (std::vector<std::string>{"from sunli", "from xutao"}));
  // Each sees their own upload in the list, not the other's.
  std::string list = site_.Send("GET", "/upload.asp", {}, staff_).text;
  EXPECT_NE(list.find("xutao-remark"), std::string::npos) << Excerpt(list);
  EXPECT_EQ(list.find("sunli-remark"), std::string::npos);
}

// The sign-in throttle, on a server of its own: its counts are the process's. Each test signs in from
// loopback addresses of its own (127.0.0.x), so that the counts per address stay apart.
class AttackThrottleTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    site_.server = std::make_unique<corvane::testing::ServerProcess>("throttle");
  }
  static void TearDownTestSuite() { site_.server.reset(); }
  void SetUp() override { ASSERT_NE(site_.server->Port(), 0) << "corvane-server did not start"; }

  // The sign-in page's message.
  static std::string Message(const Reply& r) {
    std::smatch m;
    return std::regex_search(r.text, m, std::regex("class=message>([^<]*)<")) ? m[1].str() : "";
  }

  static inline Site site_;
};

constexpr const char* kThrottled = "登录失败次数过多，请稍后再试。";

TEST_F(AttackThrottleTest, AnAccountIsHeldBackAfterFiveFailures) {
  for (int i = 0; i < 6; ++i) site_.SignIn("lina", "wrong" + std::to_string(i), "127.0.0.2");
  // The right password, even from another address, waits its turn.
  Reply r = site_.SignIn("lina", "123456", "127.0.0.3");
  EXPECT_EQ(r.status, 200);
  EXPECT_EQ(r.Header("Location"), "");
  EXPECT_EQ(Message(r), kThrottled);
  EXPECT_NE(site_.server->AwaitOutput("sign-in failed: lina from 127\\.0\\.0\\.2"), "");
}

TEST_F(AttackThrottleTest, AnUnknownAccountGetsTheSameAnswers) {
  Reply wrong = site_.SignIn("wangfang", "wrong", "127.0.0.4");
  Reply unknown = site_.SignIn("nosuchperson", "wrong", "127.0.0.5");
  EXPECT_NE(Message(wrong), "");
  EXPECT_EQ(Message(unknown), Message(wrong));
  for (int i = 0; i < 6; ++i) site_.SignIn("nosuchperson", "wrong", "127.0.0.5");
  EXPECT_EQ(Message(site_.SignIn("nosuchperson", "123456", "127.0.0.6")), kThrottled);
}

TEST_F(AttackThrottleTest, AnAddressIsHeldBackAfterFiveFailures) {
  for (int i = 0; i < 5; ++i) site_.SignIn("guess" + std::to_string(i), "123456", "127.0.0.7");
  Reply held = site_.SignIn("zhangwei", "123456", "127.0.0.7");
  EXPECT_EQ(held.status, 200);
  EXPECT_EQ(Message(held), kThrottled);
  Reply elsewhere = site_.SignIn("zhangwei", "123456", "127.0.0.8");
  EXPECT_EQ(elsewhere.status, 302);
  EXPECT_EQ(elsewhere.Header("Location"), "/main.asp");
}

}  // namespace
