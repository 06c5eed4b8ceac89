// Session and Application as scripts reach them: Contents, the session's settings, Abandon, and the
// application's lock.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "corvane/host.h"
#include "test_support.h"

namespace corvane::host {
namespace {

using testing::ErrorNumber;

std::vector<std::string> Texts(const std::vector<Variant>& values) {
  std::vector<std::string> out;
  for (const Variant& v : values) out.push_back(v.ToString());
  return out;
}

// Session.Contents and Application.Contents answer alike.
TEST(Contents, CountKeyItemRemoveAndForEach) {
  Session session;
  auto application = std::make_shared<Application>();
  for (Object owner : {session.AsObject(), Object(application)}) {
    for (const char* key : {"b", "a", "c"}) {
      Args put{Variant(key), Variant(std::string(key) + "!")};
      owner.get()->InvokeMember(0, InvokeKind::PropertyPut, put);
    }
    Object contents = owner.Get("Contents").ToObject();
    EXPECT_EQ(contents.Get("Count").ToLong(), 3);
    EXPECT_EQ(contents.Invoke("Key", {Variant(int16_t{2})}).ToString(), "a");
    EXPECT_EQ(contents.Invoke("Item", {Variant(int16_t{3})}).ToString(), "c!");  // by position
    EXPECT_EQ(owner.Invoke("Contents", {Variant("B")}).ToString(), "b!");        // by name
    contents.Invoke("Remove", {Variant(int16_t{1})});
    EXPECT_EQ(Texts(contents.get()->Elements()), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(Texts(owner.get()->Elements()), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(ErrorNumber([&] { contents.Invoke("Key", {Variant(int16_t{3})}); }), 9);
    contents.Invoke("RemoveAll");
    EXPECT_EQ(contents.Get("Count").ToLong(), 0);
  }
}

TEST(SessionSettings, TimeoutCodePageAbandonAndNewID) {
  Session session;
  Page page(PageRequest{.url = "/s.asp"}, session);
  Object s = session.AsObject();
  EXPECT_EQ(s.Get("Timeout").ToLong(), 20);
  s.Put("Timeout", Variant(5));
  EXPECT_EQ(session.ptr()->TimeoutMinutes(), 5);
  EXPECT_EQ(ErrorNumber([&] { s.Put("Timeout", Variant(0)); }), 5);
  // The session's code page is the running page's too.
  s.Put("CodePage", Variant(65001));
  EXPECT_EQ(page.Response().CodePage(), 65001);
  EXPECT_EQ(ErrorNumber([&] { s.Put("CodePage", Variant(42)); }), 5);
  // Abandon keeps the values for the rest of the page; the host ends the session afterwards.
  session.Set("k", Variant(1));
  s.Invoke("Abandon");
  EXPECT_TRUE(session.ptr()->Abandoned());
  EXPECT_EQ(session.Get("k").ToLong(), 1);
  s.Invoke("RequestNewID");
  EXPECT_TRUE(session.ptr()->NewIDRequested());
}

TEST(ApplicationLock, OnePageAtATimeAndReleasedAtThePagesEnd) {
  auto application = std::make_shared<Application>();
  Session session;
  std::atomic<bool> otherHasIt{false};
  std::thread other;
  {
    Page page(PageRequest{.url = "/l.asp"}, session, {.application = application});
    Object app = page.ContextObject()->Application();
    app.Invoke("Lock");
    app.Invoke("Lock");  // nests
    app.Invoke("Unlock");
    other = std::thread([&] {
      application->Lock();
      otherHasIt = true;
      application->Unlock();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(otherHasIt);  // still held once
  }                            // the page ends holding it
  other.join();
  EXPECT_TRUE(otherHasIt);
}

}  // namespace
}  // namespace corvane::host
