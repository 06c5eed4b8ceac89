#include "http_access_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvane::server {
namespace {

using namespace ::testing;

AccessRecord Forged() {
  return AccessRecord{.remoteAddr = "10.0.0.7",
                      .method = "GET",
                      .target = "/a.asp?x=1\r\n10.0.0.8 - - \"GET /admin\"",
                      .version = "HTTP/1.1",
                      .referer = "",
                      .userAgent = "curl/8 \x01\xe4",
                      .status = 200,
                      .bytes = 512,
                      .took = std::chrono::microseconds(1234)};
}

TEST(AccessLogTest, CombinedLinesEscapeWhatTheClientSent) {
  std::string line = CombinedLogLine(Forged());
  EXPECT_THAT(line, MatchesRegex(R"(10\.0\.0\.7 - - \[[^]]+\] "GET .*" 200 512 "-" ".*" 0\.001234)"));
  EXPECT_THAT(line, HasSubstr(R"("GET /a.asp?x=1\x0d\x0a10.0.0.8 - - \"GET /admin\" HTTP/1.1")"));
  EXPECT_THAT(line, HasSubstr("\"curl/8 \\x01\xe4\""));
  // A request that could not be read still names its peer.
  EXPECT_THAT(CombinedLogLine({.remoteAddr = "10.0.0.9", .status = 431}), StartsWith("10.0.0.9 - - ["));
  EXPECT_THAT(CombinedLogLine({.remoteAddr = "10.0.0.9", .status = 431}),
              HasSubstr("] \"-\" 431 0 \"-\" \"-\""));
}

TEST(AccessLogTest, JsonLinesStayValidJson) {
  std::string line = JsonLogLine(Forged());
  EXPECT_THAT(
      line,
      HasSubstr(
          R"("remote":"10.0.0.7","method":"GET","target":"/a.asp?x=1\u000d\u000a10.0.0.8 - - \"GET /admin\"")"));
  EXPECT_THAT(line, HasSubstr(R"("user_agent":"curl/8 \u0001\u00e4","seconds":0.001234})"));
  EXPECT_THAT(line, HasSubstr(R"("status":200,"bytes":512,"referer":"")"));
  EXPECT_EQ(line.find('\n'), std::string::npos);
}

}  // namespace
}  // namespace corvane::server
