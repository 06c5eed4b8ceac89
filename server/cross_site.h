// Requests that would write, and requests that another site's page made the browser send: a write
// that another site started (a form posted to us, a link or image that deletes) is refused whatever
// the session cookie says.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace corvane::server {

// A request that changes something: any method but GET and HEAD, or a GET whose "action" or "ac"
// query value names a write (delete, insert2, update2, setcol2, del, rename, add, ...).
bool IsWriteRequest(std::string_view method, std::string_view query);

// Whether the browser says the request comes from another site: Sec-Fetch-Site other than
// "same-origin" and "none"; else an Origin, or else a Referer, whose host (with port) is not the
// request's Host. A request without any of these headers (not from a browser page) is not.
// `header` answers a request header's value ("" when absent).
bool IsCrossSite(const std::function<std::string(std::string_view)>& header);

}  // namespace corvane::server
