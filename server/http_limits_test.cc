// The HTTP layer's limits and framing rules over raw sockets, against an in-process server with
// short timeouts: bodies counted whatever their framing, ambiguous framing refused, pipelined
// requests answered in order, one byte range, the head deadline, idle connections, the cap per
// client, sessions stored only when used, the health check and stopping with requests in flight.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>

#include "http_test_support.h"

namespace corvane::server {
namespace {

using namespace ::testing;
using namespace std::chrono_literals;
using corvane::server::testing::RawClient;
using corvane::server::testing::Statuses;
using corvane::server::testing::TestServer;

PageRegistry Pages() {
  PageRegistry pages;
  pages.Add("/echo.asp", [](PageContext& p) {
    p.Response.Write(p.Request.QueryString("q").Text() + ":" + std::to_string(p.Request.TotalBytes()));
  });
  pages.Add("/keep.asp", [](PageContext& p) { p.Session.Set("seen", Variant(1)); });
  pages.Add("/slow.asp", [](PageContext& p) {
    std::this_thread::sleep_for(400ms);
    p.Response.Write("done");
  });
  return pages;
}

ServerOptions Limits() {
  return ServerOptions{.threads = 2,
                       .maxBodyBytes = 1000,
                       .maxHeaderBytes = 4096,
                       .headerTimeoutMs = 300,
                       .keepAliveTimeoutMs = 300,
                       .maxConnectionsPerClient = 3,
                       .accessLog = false};
}

std::string Chunked(size_t total) {
  std::string out;
  for (size_t sent = 0; sent < total; sent += 100) out += "64\r\n" + std::string(100, 'x') + "\r\n";
  return out + "0\r\n\r\n";
}

TEST(HttpLimitsTest, FramingDecidesTheStatusAndAClosedConnection) {
  ServerOptions o = Limits();
  o.keepAliveTimeoutMs = 5000;  // a connection that stays open is seen open
  TestServer s(o, Pages());
  struct Case {
    const char* name;
    std::string request;
    int status;
    bool closes;
  };
  const std::string post = "POST /echo.asp HTTP/1.1\r\nHost: x\r\n";
  // clang-format off
  const Case cases[] = {
      {"chunked within the limit", post + "Transfer-Encoding: chunked\r\n\r\n" + Chunked(900), 200, false},
      {"chunked over the limit", post + "Transfer-Encoding: chunked\r\n\r\n" + Chunked(5000), 413, true},
      {"length over the limit", post + "Content-Length: 5000\r\n\r\n" + std::string(5000, 'x'), 413, true},
      {"length and chunked", post + "Content-Length: 4\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nabcd\r\n0\r\n\r\n", 400, true},
      {"chunked and length", post + "Transfer-Encoding: chunked\r\nContent-Length: 4\r\n\r\n4\r\nabcd\r\n0\r\n\r\n", 400, true},
      {"two equal lengths", post + "Content-Length: 4\r\nContent-Length: 4\r\n\r\nabcd", 400, true},
      {"an encoding not chunked", post + "Transfer-Encoding: gzip\r\n\r\nabcd", 400, true},
      {"a head over the limit", "GET /echo.asp HTTP/1.1\r\nX-Big: " + std::string(8192, 'b') + "\r\n\r\n", 431, true},
      {"a bad request line", "GET echo.asp HTTP/1.1\r\n\r\n", 400, true},
  };
  // clang-format on
  for (const Case& c : cases) {
    RawClient client(s.port);
    client.Send(c.request);
    bool closed = false;
    std::string reply = client.Read(800ms, &closed);
    EXPECT_THAT(Statuses(reply), ElementsAre(c.status)) << c.name << "\n" << reply.substr(0, 200);
    EXPECT_EQ(closed, c.closes) << c.name;
  }
}

TEST(HttpLimitsTest, AFormBodyFollowsTheBodyLimitNotAFixedOne) {
  ServerOptions o = Limits();
  o.maxBodyBytes = 20000;
  TestServer s(o, Pages());
  RawClient client(s.port);
  std::string form = "q=" + std::string(12000, 'a');
  client.Send(
      "POST /echo.asp HTTP/1.1\r\nContent-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
      std::to_string(form.size()) + "\r\n\r\n" + form);
  EXPECT_THAT(client.Read(500ms), AllOf(StartsWith("HTTP/1.1 200"), HasSubstr(":12002")));
}

TEST(HttpLimitsTest, PipelinedRequestsAreAnsweredInOrder) {
  TestServer s(Limits(), Pages());
  RawClient client(s.port);
  client.Send(
      "GET /slow.asp HTTP/1.1\r\n\r\nGET /echo.asp?q=2 HTTP/1.1\r\n\r\n"
      "POST /echo.asp?q=3 HTTP/1.1\r\nContent-Length: 3\r\n\r\nabcGET /echo.asp?q=4 HTTP/1.1\r\n\r\n");
  std::string replies = client.Read(800ms);
  EXPECT_THAT(Statuses(replies), ElementsAre(200, 200, 200, 200));
  EXPECT_THAT(replies, ContainsRegex("done(.|\r|\n)*2:0(.|\r|\n)*3:3(.|\r|\n)*4:0"));
}

TEST(HttpLimitsTest, StaticFilesHonourOneRangeAndPagesNone) {
  TestServer s(Limits(), Pages());
  std::ofstream(s.site / "ten.txt") << "0123456789";
  struct Case {
    const char* range;
    int status;
    std::string body, contentRange;
  };
  // clang-format off
  const Case cases[] = {
      {"bytes=2-4", 206, "234", "bytes 2-4/10"},
      {"bytes=7-", 206, "789", "bytes 7-9/10"},
      {"bytes=-3", 206, "789", "bytes 7-9/10"},
      {"bytes=8-20", 206, "89", "bytes 8-9/10"},
      {"bytes=0-1,3-4", 200, "0123456789", ""},  // several ranges: the whole file, once
      {"bytes=10-", 416, "", "bytes */10"},
      {"bytes=5-2", 200, "0123456789", ""},      // not a range
      {"lines=1-2", 200, "0123456789", ""},
  };
  // clang-format on
  for (const Case& c : cases) {
    RawClient client(s.port);
    client.Send(std::string("GET /ten.txt HTTP/1.1\r\nRange: ") + c.range + "\r\nConnection: close\r\n\r\n");
    std::string reply = client.Read();
    EXPECT_THAT(Statuses(reply), ElementsAre(c.status)) << c.range;
    EXPECT_THAT(reply, EndsWith("\r\n\r\n" + c.body)) << c.range;
    if (!c.contentRange.empty()) {
      EXPECT_THAT(reply, HasSubstr("Content-Range: " + c.contentRange + "\r\n"));
    }
  }
  RawClient page(s.port);
  page.Send("GET /echo.asp?q=p HTTP/1.1\r\nRange: bytes=0-0\r\nConnection: close\r\n\r\n");
  EXPECT_THAT(page.Read(), AllOf(StartsWith("HTTP/1.1 200"), EndsWith("\r\n\r\np:0")));
}

TEST(HttpLimitsTest, ASlowHeadAndAnIdleConnectionAreClosed) {
  TestServer s(Limits(), Pages());
  RawClient slow(s.port);
  auto start = std::chrono::steady_clock::now();
  slow.Send("GET /echo.asp HTTP/1.1\r\nX-Slow: ");
  for (int i = 0; i < 3; ++i, std::this_thread::sleep_for(150ms)) slow.Send("x");
  bool closed = false;
  EXPECT_EQ(slow.Read(1000ms, &closed), "");  // closed without a reply, whatever keeps trickling in
  EXPECT_TRUE(closed);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 1500ms);
  RawClient idle(s.port);
  idle.Send("GET /echo.asp HTTP/1.1\r\n\r\n");
  EXPECT_THAT(idle.Read(1000ms, &closed), StartsWith("HTTP/1.1 200"));
  EXPECT_TRUE(closed);  // the kept-alive connection closed after its idle time
}

TEST(HttpLimitsTest, OneClientAddressHoldsAtMostItsCapOfConnections) {
  TestServer s(Limits(), Pages());
  std::vector<std::unique_ptr<RawClient>> held;
  for (int i = 0; i < 3; ++i) held.push_back(std::make_unique<RawClient>(s.port));
  std::this_thread::sleep_for(50ms);
  RawClient over(s.port);
  over.Send("GET /echo.asp HTTP/1.1\r\n\r\n");
  bool closed = false;
  EXPECT_THAT(Statuses(over.Read(800ms, &closed)), ElementsAre(503));
  EXPECT_TRUE(closed);
  held.pop_back();  // one leaves: the next one is served
  std::this_thread::sleep_for(50ms);
  RawClient next(s.port);
  next.Send("GET /echo.asp HTTP/1.1\r\n\r\n");
  EXPECT_THAT(next.Read(200ms), StartsWith("HTTP/1.1 200"));
}

TEST(HttpLimitsTest, ASessionIsStoredOnlyWhenAPageUsesIt) {
  TestServer s(Limits(), Pages());
  RawClient client(s.port);
  for (int i = 0; i < 3; ++i) {
    client.Send("GET /echo.asp HTTP/1.1\r\n\r\n");
    EXPECT_THAT(client.Read(200ms), Not(HasSubstr("Set-Cookie")));
  }
  EXPECT_EQ(s.server->SessionCount(), 0u);
  client.Send("GET /keep.asp HTTP/1.1\r\n\r\n");
  EXPECT_THAT(client.Read(200ms),
              ContainsRegex("Set-Cookie: CORVANESESSIONID=[0-9a-f]{32}; Path=/; HttpOnly"));
  EXPECT_EQ(s.server->SessionCount(), 1u);
}

TEST(HttpLimitsTest, TheHealthCheckAnswersWithoutSessionOrGuard) {
  std::atomic<int> asked = 0;
  TestServer s(Limits(), Pages(), [&](const GuardRequest&) {
    ++asked;
    return GuardVerdict{.status = 403};
  });
  RawClient client(s.port);
  client.Send("GET /-/health HTTP/1.1\r\n\r\nGET /echo.asp HTTP/1.1\r\n\r\n");
  std::string replies = client.Read(300ms);
  EXPECT_THAT(Statuses(replies), ElementsAre(200, 403));
  EXPECT_THAT(replies, HasSubstr("\r\n\r\nok"));
  EXPECT_EQ(asked, 1);
}

}  // namespace
}  // namespace corvane::server
