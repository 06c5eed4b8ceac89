// The access log: one line per request, in the combined log format that log tools read, or as one
// JSON object per line. Every text that came from the client is escaped, so that no control byte
// or quote can forge a line or a field.
#pragma once

#include <chrono>
#include <ctime>
#include <string>
#include <string_view>

namespace corvane::server {

struct AccessRecord {
  std::string_view remoteAddr;               // always the peer, also for a request that could not be read
  std::string_view method, target, version;  // "" when the request line could not be read
  std::string_view referer, userAgent;
  int status = 0;
  size_t bytes = 0;  // of the reply's body
  std::time_t when = 0;
  std::chrono::microseconds took{0};  // from the request's first byte to the reply's last
};

// `remote - - [24/Nov/2026:01:02:03 +0000] "GET /a HTTP/1.1" 200 512 "referer" "agent" 0.001234`:
// the combined log format with the seconds the request took at the end; "-" for what is absent.
std::string CombinedLogLine(const AccessRecord& r);
// {"time":"2026-11-24T01:02:03+0000","remote":"127.0.0.1","method":"GET",...,"seconds":0.001234}
std::string JsonLogLine(const AccessRecord& r);

}  // namespace corvane::server
