#include "page_rights.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <set>
#include <unordered_map>
#include <vector>

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

// The menu entries that lead to pages: each entry's id and the page path of its link.
using MenuLinkList = std::vector<std::pair<int32_t, std::string>>;

MenuLinkList ReadMenuLinks(const std::shared_ptr<ado::Connection>& conn) {
  MenuLinkList links;
  ado::Recordset rs;
  rs.Open("select menuID,menuURL from menu where menuURL is not null and menuURL<>''", conn);
  for (; !rs.Eof(); rs.MoveNext())
    links.emplace_back(rs.Field(0).ToLong(), PagePathOf(rs.Field(1).ToString()));
  rs.Close();
  return links;
}

struct MenuLinks {
  std::set<int32_t> toPage, toRightsPage;
};

MenuLinks LinksTo(const MenuLinkList& all, const std::string& page) {
  MenuLinks links;
  for (const auto& [id, path] : all) {
    if (path == page) links.toPage.insert(id);
    if (path == kRightsPage) links.toRightsPage.insert(id);
  }
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

// Something read from the database, with the change count it was read under and when.
template <class T>
struct Kept {
  std::shared_ptr<const T> value;
  uint64_t changes = 0;
  std::chrono::steady_clock::time_point at;
};

constexpr std::chrono::seconds kKeptAtMost{1};
constexpr size_t kMostPeopleKept = 10000;  // then they are all read again

}  // namespace

struct PageRights::Cache {
  std::mutex mu;
  Kept<MenuLinkList> links;
  std::unordered_map<int32_t, Kept<std::set<int32_t>>> rights;
};

PageRights::PageRights(std::string connStr, Clock clock)
    : connStr_(std::move(connStr)), clock_(std::move(clock)), cache_(std::make_shared<Cache>()) {}

server::GuardVerdict PageRights::operator()(const server::GuardRequest& request) const {
  const std::string page = LCase(request.sitePath);
  for (std::string_view open : kPublicPages)
    if (page == open) return {};
  const int32_t person = SignedInPerson(request.session);
  if (person == 0) return {.status = 302, .location = std::string(kSignInPage)};

  const bool systemAccount = request.session.Get("personName").ToString() == "sysop";
  // Taken before anything is read: a write that ends while the reading goes on moves the count past
  // it, and what was read is not used again.
  const uint64_t changes = ado::ChangeCount();
  const auto now = clock_();
  auto current = [&](const auto& kept) {
    return kept.value && kept.changes == changes && now - kept.at < kKeptAtMost;
  };
  std::shared_ptr<const MenuLinkList> links;
  std::shared_ptr<const std::set<int32_t>> rights;
  {
    std::lock_guard lock(cache_->mu);
    if (current(cache_->links)) links = cache_->links.value;
    if (auto it = cache_->rights.find(person);
        !systemAccount && it != cache_->rights.end() && current(it->second))
      rights = it->second.value;
  }
  if (!links || (!systemAccount && !rights)) {
    const bool readLinks = !links, readRights = !systemAccount && !rights;
    try {
      auto conn = std::make_shared<ado::Connection>();
      conn->Open(connStr_);
      if (readLinks) links = std::make_shared<const MenuLinkList>(ReadMenuLinks(conn));
      if (readRights) rights = std::make_shared<const std::set<int32_t>>(RightsOf(conn, person));
      conn->Close();
    } catch (const Error& e) {
      // The rights cannot be read (the database is down or refuses): nothing opens, and the page says
      // why. The data layer's messages never hold the password.
      return {.status = 503,
              .message = "暂时无法读取权限 (the rights could not be read): " + e.Description(),
              .logLine = "503 " + std::string(request.method) + " " + std::string(request.sitePath) + ": " +
                         e.Description()};
    }
    std::lock_guard lock(cache_->mu);
    if (readLinks) cache_->links = {links, changes, now};
    if (readRights) {
      if (cache_->rights.size() >= kMostPeopleKept) cache_->rights.clear();
      cache_->rights[person] = {rights, changes, now};
    }
  }

  static const std::set<int32_t> kNone;
  const std::set<int32_t>& held = rights ? *rights : kNone;
  const MenuLinks leading = LinksTo(*links, page);
  const bool administrator = systemAccount || HoldsAny(held, leading.toRightsPage);
  bool allowed;
  if (!leading.toPage.empty()) {
    allowed = systemAccount || HoldsAny(held, leading.toPage);
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
