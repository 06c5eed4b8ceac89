#include "upload_names.h"

#include <gtest/gtest.h>

namespace corvane::site {
namespace {

struct Case {
  const char* contentType;
  const char* body;
  int status;
};

TEST(UploadNames, AMultipartBodyWithASlashInAnyQuotedFileNameIsRefused) {
  // clang-format off
  const Case cases[] = {
      {"multipart/form-data; boundary=b", "--b\r\nContent-Disposition: form-data; name=\"file1\"; filename=\"a.txt\"\r\n\r\nx", 0},
      {"multipart/form-data; boundary=b", "--b\r\nContent-Disposition: form-data; name=\"file1\"; filename=\"../3/a.txt\"\r\n\r\nx", 400},
      {"Multipart/Form-Data; boundary=b", "filename=\"c:\\x\\a.txt\"\r\n\r\nfilename=\"x/y\"", 400},  // contents too
      {"multipart/form-data; boundary=b", "filename=\"a.txt\"\r\n\r\n1/2 filename=\"b\"", 0},        // "/" outside names
      {"multipart/form-data; boundary=b", "filename=\"unclosed/", 400},
      {"application/x-www-form-urlencoded", "filename=\"../3/a.txt\"", 0},                       // not an upload
  };
  // clang-format on
  host::SessionObject session;
  for (const Case& c : cases) {
    server::GuardVerdict v = CheckUploadNames({.method = "POST",
                                               .sitePath = "/upload.asp",
                                               .session = session,
                                               .remoteAddr = "127.0.0.1",
                                               .contentType = c.contentType,
                                               .body = c.body});
    EXPECT_EQ(v.status, c.status) << c.body;
    if (c.status) {
      EXPECT_NE(v.logLine.find("/upload.asp"), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace corvane::site
