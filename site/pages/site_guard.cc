#include "page_rights.h"
#include "site.h"
#include "upload_names.h"

namespace corvane::site {

server::PageGuard SiteGuard(const std::string& connStr) {
  // The rights first, so that a stranger is sent to sign in; then what the request carries.
  return [rights = PageRights(connStr)](const server::GuardRequest& request) {
    server::GuardVerdict verdict = rights(request);
    if (verdict.status != 0) return verdict;
    server::GuardVerdict names = CheckUploadNames(request);
    return names.status != 0 ? names : verdict;
  };
}

}  // namespace corvane::site
