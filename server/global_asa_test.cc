#include "global_asa.h"

#include <gtest/gtest.h>

namespace corvane::server {
namespace {

TEST(GlobalAsaTest, CodeKeepsItsPlaceAndObjectsAreDeclaredOnlyToRunOnTheServer) {
  const std::string text =
      "<!--METADATA TYPE=\"TypeLib\" FILE=\"x.tlb\"-->\r\n"
      "<OBJECT RUNAT=Server SCOPE=Application ID=appConn PROGID=\"ADODB.Connection\"></OBJECT>\n"
      "<object runat='server' id='rs' classid='clsid:00000535-0000-0010-8000-00AA006D2EA4'/>\n"
      "<object id=clientSide progid=x.y></object>\n"
      "<Script Language=\"VBScript\" RunAt=\"Server\">\n"
      "Sub Session_OnStart : x = \"<b>\" : End Sub\n"
      "</Script>\n"
      "<script language=jscript runat=server>var no;</script>\n"
      "<script runat=server>Sub Application_OnStart\nEnd Sub</script>";
  GlobalAsaText g = ParseGlobalAsa(text);
  ASSERT_EQ(g.code.size(), text.size());
  // Every character outside the VBScript blocks is a blank, line ends kept: lines and columns stay.
  size_t at = text.find("Sub Session_OnStart");
  EXPECT_EQ(g.code.substr(at, 42), text.substr(at, 42));
  EXPECT_EQ(g.code.find_first_not_of(" \r\n"), at);  // the first character of the code
  EXPECT_EQ(g.code.find("var no"), std::string::npos);
  EXPECT_NE(g.code.find("Sub Application_OnStart\nEnd Sub"), std::string::npos);
  EXPECT_EQ(std::count(g.code.begin(), g.code.end(), '\n'), std::count(text.begin(), text.end(), '\n'));

  ASSERT_EQ(g.objects.size(), 2u);
  EXPECT_EQ(g.objects[0].id, "appConn");
  EXPECT_EQ(g.objects[0].progID, "ADODB.Connection");
  EXPECT_EQ(g.objects[0].scope, DeclaredObject::Scope::Application);
  EXPECT_EQ(g.objects[1].id, "rs");
  EXPECT_EQ(g.objects[1].progID, "{00000535-0000-0010-8000-00AA006D2EA4}");
  EXPECT_EQ(g.objects[1].scope, DeclaredObject::Scope::Page);
}

}  // namespace
}  // namespace corvane::server
