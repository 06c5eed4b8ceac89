#include "page_rights.h"

#include <algorithm>
#include <memory>
#include <set>

#include "corvane/ado.h"
#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::site {

namespace {

constexpr std::string_view kSignInPage = "/login.asp";
constexpr std::string_view kPublicPages[] = {"/login.asp", "/logout.asp"};
constexpr std::string_view kAdministrativeFolder = "/permission/";
// Whoever may open this page administers the site's groups and rights.
constexpr std::string_view kRightsPage = "/permission/permission.asp";

// A menu link as a page path: no query or fragment, lower case (site paths are case-blind).
std::string PagePathOf(std::string_view url) {
  url = url.substr(0, url.find_first_of("?#"));
  return LCase(Trim(url));
}

// The signed-in person's id; 0 when nobody is signed in.
int32_t SignedInPerson(const host::SessionObject& session) {
  Variant id = session.Get("personID");
  if (id.IsEmpty() || id.IsNull()) return 0;
  try {
    return id.ToLong();
  } catch (const Error&) {
    return 0;
  }
}

struct MenuLinks {
  std::set<int32_t> toPage, toRightsPage;
};

MenuLinks LinksTo(const std::shared_ptr<ado::Connection>& conn, const std::string& page) {
  MenuLinks links;
  ado::Recordset rs;
  rs.Open("select menuID,menuURL from menu where menuURL is not null and menuURL<>''", conn);
  for (; !rs.Eof(); rs.MoveNext()) {
    std::string url = PagePathOf(rs.Field(1).ToString());
    if (url == page) links.toPage.insert(rs.Field(0).ToLong());
    if (url == kRightsPage) links.toRightsPage.insert(rs.Field(0).ToLong());
  }
  rs.Close();
  return links;
}

// The menu entries the person's access groups hold.
std::set<int32_t> RightsOf(const std::shared_ptr<ado::Connection>& conn, int32_t person) {
  std::set<int32_t> rights;
  ado::Recordset rs;
  rs.Open(
      "select a.accessMenuID from accessMenu a, accessPerson p where a.accessGroupID=p.accessGroupID and "
      "p.accessPersonID=" +
          std::to_string(person),
      conn);
  for (; !rs.Eof(); rs.MoveNext())
    if (!rs.Field(0).IsNull()) rights.insert(rs.Field(0).ToLong());
  rs.Close();
  return rights;
}

bool HoldsAny(const std::set<int32_t>& rights, const std::set<int32_t>& entries) {
  return std::any_of(entries.begin(), entries.end(), [&](int32_t e) { return rights.count(e) != 0; });
}

}  // namespace

server::GuardVerdict PageRights::operator()(const server::GuardRequest& request) const {
  const std::string page = LCase(request.sitePath);
  for (std::string_view open : kPublicPages)
    if (page == open) return {};
  const int32_t person = SignedInPerson(request.session);
  if (person == 0) return {.status = 302, .location = std::string(kSignInPage)};

  const bool systemAccount = request.session.Get("personName").ToString() == "sysop";
  MenuLinks links;
  std::set<int32_t> rights;
  try {
    auto conn = std::make_shared<ado::Connection>();
    conn->Open(connStr_);
    links = LinksTo(conn, page);
    if (!systemAccount) rights = RightsOf(conn, person);
    conn->Close();
  } catch (const Error& e) {
    // The rights cannot be read (the database is down or refuses): nothing opens, and the page says
    // why. The data layer's messages never hold the password.
    return {.status = 503,
            .message = "暂时无法读取权限 (the rights could not be read): " + e.Description(),
            .logLine = "503 " + std::string(request.method) + " " + std::string(request.sitePath) + ": " +
                       e.Description()};
  }

  const bool administrator = systemAccount || HoldsAny(rights, links.toRightsPage);
  bool allowed;
  if (!links.toPage.empty()) {
    allowed = systemAccount || HoldsAny(rights, links.toPage);
  } else {
    allowed = page.rfind(kAdministrativeFolder, 0) != 0 || administrator;
  }
  if (!allowed) {
    return {.status = 403,
            .message = "您没有打开此页的权限。(You have no right to open this page.)",
            .logLine = "403 " + std::string(request.method) + " " + std::string(request.sitePath) + " from " +
                       std::string(request.remoteAddr) + ": person " + std::to_string(person) +
                       " holds no menu entry that leads to it"};
  }
  return {.serverVariables = {{"CORVANE_ADMIN", administrator ? "1" : ""}}};
}

}  // namespace corvane::site
