#include "error_page.h"

#include <gtest/gtest.h>

#include "corvane/error.h"

namespace corvane::server {
namespace {

TEST(ErrorPageTest, CodesAreShownAsTheHostShowedThem) {
  EXPECT_EQ(ErrorCode(13), "800a000d");
  EXPECT_EQ(ErrorCode(9), "800a0009");
  EXPECT_EQ(ErrorCode(Error::kDatabaseError), "80040e14");
}

TEST(ErrorPageTest, NamesNumberDescriptionAndPageEscaped) {
  std::string html = ErrorPageHtml(13, "Type mismatch: <b>'x'</b>", "/notice.asp");
  EXPECT_NE(html.find("800a000d"), std::string::npos);
  EXPECT_NE(html.find("(13)"), std::string::npos);
  EXPECT_NE(html.find("Type mismatch: &lt;b&gt;&#39;x&#39;&lt;/b&gt;"), std::string::npos);
  EXPECT_NE(html.find("/notice.asp"), std::string::npos);
  EXPECT_EQ(html.find("<b>"), std::string::npos);
}

TEST(ErrorPageTest, SecretsNeverReachThePage) {
  std::string html = ErrorPageHtml(Error::kDatabaseError,
                                   "unable to open Provider=SQLite;Data Source=/srv/office.db (/srv/office.db)",
                                   "/a.asp", {"Provider=SQLite;Data Source=/srv/office.db", "/srv/office.db"});
  EXPECT_EQ(html.find("office.db"), std::string::npos);
  EXPECT_NE(html.find("unable to open"), std::string::npos);
}

}  // namespace
}  // namespace corvane::server
