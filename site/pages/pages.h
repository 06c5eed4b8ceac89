// The site's pages, registered by area.
#pragma once

#include "page_kit.h"
#include "page_registry.h"

namespace corvane::site {

void RegisterSignInPages(server::PageRegistry& pages);      // /, /login.asp, /logout.asp, /main.asp
void RegisterTablePages(server::PageRegistry& pages);       // /notice.asp, /contact.asp, /staff.asp
void RegisterCalendarPages(server::PageRegistry& pages);    // /scheduler/*.asp
void RegisterPermissionPages(server::PageRegistry& pages);  // /permission/*.asp
void RegisterUploadPage(server::PageRegistry& pages);       // /upload.asp

}  // namespace corvane::site
