// The demo site's rule for its pages, asked by the host before every page runs:
// - the sign-in and sign-out pages are open to everyone; every other page needs a signed-in person
//   (the session's "personID"), else the browser goes to the sign-in page;
// - a page that entries of the `menu` table link to (menuURL) opens only for a person whose access
//   groups hold one of those entries; the system account ("personName" = "sysop") holds them all;
// - a page no menu links to opens for every signed-in person, unless it is administrative (under
//   /permission/): those need an administrator, a person who holds an entry that links to the access
//   groups page, or the system account.
// Refusals answer 403 and are logged. A page learns whether its person is an administrator from
// Request.ServerVariables("CORVANE_ADMIN"): "1" or "".
//
// The menu links and each person's rights are read once and kept while they are surely current:
// until this process runs any statement that writes (ado::ChangeCount), and for a second at most,
// as another process (another server on the same database) may write them too. A right taken away
// through this server holds from the next page; through another one, within that second.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "page_guard.h"

namespace corvane::site {

class PageRights {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  explicit PageRights(std::string connStr, Clock clock = std::chrono::steady_clock::now);
  server::GuardVerdict operator()(const server::GuardRequest& request) const;

 private:
  struct Cache;
  std::string connStr_;
  Clock clock_;
  std::shared_ptr<Cache> cache_;  // shared by the copies of this guard
};

}  // namespace corvane::site
