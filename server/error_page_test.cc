#include "error_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "corvane/script.h"

namespace corvane::server {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(ErrorPageTest, AScriptErrorShowsItsPlaceEscapedAndWithoutSecrets) {
  script::ScriptError e(Error(1002, "Syntax error"), {"/inc/<a>.inc", 3, 5},
                        "x = = \"Data Source=/s.db\" <i>", true);
  ErrorReport r = ReportOf(e, "/p.asp");
  EXPECT_EQ(r.line, 3);
  EXPECT_TRUE(r.compileError);
  std::string html = ErrorPageHtml(r, {"Data Source=/s.db"});
  EXPECT_THAT(html, HasSubstr("'800a03ea'</code> (1002)"));
  EXPECT_THAT(html, HasSubstr("<p class=place>/inc/&lt;a&gt;.inc, line 3, column 5</p>"));
  EXPECT_THAT(html, HasSubstr("<pre class=source>x = = &quot;…&quot; &lt;i&gt;\r\n----^</pre>"));
  EXPECT_THAT(html, Not(HasSubstr("s.db")));
  // The log's line says the same on one line: control bytes escaped, no secret.
  r.description = "bad\r\nline\x01";
  EXPECT_EQ(
      ErrorLogLine(r, {"Data Source=/s.db"}),
      "corvane-server: /p.asp: error 800a03ea (1002) bad\\r\\nline\\x01 at /inc/<a>.inc, line 3, column 5: "
      "x = = \"…\" <i>");
  // Another error names only the page.
  EXPECT_EQ(ErrorLogLine(ReportOf(Error::TypeMismatch(), "/q.asp")),
            "corvane-server: /q.asp: error 800a000d (13) Type mismatch");
}

}  // namespace
}  // namespace corvane::server
