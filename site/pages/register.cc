#include "pages.h"
#include "site.h"

namespace corvane::site {

void RegisterPages(server::PageRegistry& pages) {
  RegisterSignInPages(pages);
  RegisterTablePages(pages);
  RegisterCalendarPages(pages);
  RegisterPermissionPages(pages);
  RegisterUploadPage(pages);
}

}  // namespace corvane::site
