#include <gtest/gtest.h>

#include "corvane/corvane.h"

namespace corvane::host {
namespace {

TEST(RequestBody, BinaryReadViewReadsLikeBinaryRead) {
  Session session;
  Page page(PageRequest{.url = "/u.asp", .contentType = "multipart/form-data; boundary=x", .body = "0123456789"},
            session);
  Request& r = page.Request();
  int32_t n = 3;
  EXPECT_EQ(r.BinaryReadView(n), "012");
  n = 2;
  Variant copy = r.BinaryRead(n);
  EXPECT_EQ(std::string(copy.ToBytes().begin(), copy.ToBytes().end()), "34");
  n = 100;
  std::string_view rest = r.BinaryReadView(n);
  EXPECT_EQ(rest, "56789");
  EXPECT_EQ(n, 5);
  EXPECT_EQ(rest.data(), r.Body().data() + 5);  // a view, not a copy
  n = 4;
  EXPECT_EQ(r.BinaryReadView(n), "");
  EXPECT_EQ(n, 0);
  n = -1;
  EXPECT_THROW(r.BinaryReadView(n), Error);
}

}  // namespace
}  // namespace corvane::host
