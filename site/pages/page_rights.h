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
#pragma once

#include <string>

#include "page_guard.h"

namespace corvane::site {

class PageRights {
 public:
  explicit PageRights(std::string connStr) : connStr_(std::move(connStr)) {}
  server::GuardVerdict operator()(const server::GuardRequest& request) const;

 private:
  std::string connStr_;
};

}  // namespace corvane::site
