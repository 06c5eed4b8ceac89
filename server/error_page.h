// The page a visitor sees when a page raises an error: the error's number, its description and the
// page, and nothing else (no stack, no connection string), as the original host's script error page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::server {

// The error number as the host showed it: 8 hex digits ("800a000d" for 13, "80040e14" for a
// database error).
std::string ErrorCode(int32_t number);

// The HTML (UTF-8; the host converts it to the code page) of the error page. Every text in `secrets` (the
// connection string, the database file) is blanked out of the description before it is shown.
std::string ErrorPageHtml(int32_t number, std::string_view description, std::string_view page,
                          const std::vector<std::string>& secrets = {});

}  // namespace corvane::server
