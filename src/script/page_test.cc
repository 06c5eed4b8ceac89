// Page syntax: blocks of code in page text, the @ directive, includes (relative, virtual, nested,
// missing, cyclic), server script blocks, and the positions errors report.
#include <gtest/gtest.h>

#include "script/page_source.h"
#include "script/script_test_support.h"
#include "test_support.h"

namespace corvane::script {
namespace {

using testing::RunSite;
using testing::Site;

TEST(Pages, InterleaveTextAndCode) {
  Site site{{"/page.asp", "<ul>\n<% For i = 1 To 2 %>  <li><%= i %></li>\n<% Next %></ul>"}};
  EXPECT_EQ(RunSite(site).out, "<ul>\n  <li>1</li>\n  <li>2</li>\n</ul>");
  site = {{"/page.asp", "<% If 1 = 2 Then %>yes<% Else %>no<% End If ' comment %>!"}};
  EXPECT_EQ(RunSite(site).out, "no!");
  site = {{"/page.asp", "<% Sub Row(x) %><tr><%= x %></tr><% End Sub\nRow 1: Row \"a\" %>"}};
  EXPECT_EQ(RunSite(site).out, "<tr>1</tr><tr>a</tr>");
}

TEST(Pages, WriteValuesAsText) {
  Site site{{"/page.asp",
             "<%= 1.5 %>|<%= True %>|<%= Null %>|<%= Empty %>|<%= #2026-11-23 08:05:00# %>|<%= 1E+20 %>|"
             "<%= CLng(-7) %>|<%= \"\xE4\xB8\xAD\" %>"}};
  EXPECT_EQ(RunSite(site).out, "1.5|True|||2026-11-23 08:05:00|1E+20|-7|\xE4\xB8\xAD");
}

TEST(Pages, ReadTheDirective) {
  auto page =
      CompilePage("/p.asp", testing::LoaderOf({{"/p.asp",
                                                "<%@ LANGUAGE=\"VBScript\" CODEPAGE=65001 LCID = 2052 "
                                                "EnableSessionState=False %>\nx"}}));
  EXPECT_EQ(page->Directives().language, "VBSCRIPT");
  EXPECT_EQ(page->Directives().codePage, 65001);
  EXPECT_EQ(page->Directives().lcid, 2052);
  EXPECT_FALSE(page->Directives().enableSessionState);
}

TEST(Pages, RunServerScriptBlocks) {
  Site site{{"/page.asp",
             "<script language=\"vbscript\" runat=\"server\">\nFunction Greet(n)\n Greet = \"hi \" & n\n"
             "End Function\n</script><script>client()</script><%= Greet(\"x\") %>"}};
  EXPECT_EQ(RunSite(site).out, "<script>client()</script>hi x");
}

const Site kSite{
    {"/app/page.asp",
     "<!--#include file=\"inc/top.inc\"-->[<%= Top() %>]<!-- #INCLUDE VIRTUAL=\"/lib/x.inc\" -->"},
    {"/app/inc/top.inc",
     "<% Function Top(): Top = \"top\" & Mid(\"x\", 1) : End Function %><!--#include "
     "file=\"../../lib/y.inc\"-->"},
    {"/lib/x.inc", "X"},
    {"/lib/y.inc", "Y"},
};

TEST(Includes, ExpandRelativeAndVirtualPaths) {
  EXPECT_EQ(RunSite(kSite, "/app/page.asp").out, "Y[topx]X");
  auto page = CompilePage("/APP/PAGE.ASP", testing::LoaderOf(kSite));
  EXPECT_EQ(page->Files(),
            (std::vector<std::string>{"/app/page.asp", "/app/inc/top.inc", "/lib/y.inc", "/lib/x.inc"}));
}

TEST(Includes, ResolvePaths) {
  // clang-format off
  const std::tuple<const char*, const char*, bool, const char*> cases[] = {
      {"/a/b.asp", "c.inc", false, "/a/c.inc"},
      {"/a/b.asp", "../c.inc", false, "/c.inc"},
      {"/a/b.asp", "..\\d\\c.inc", false, "/d/c.inc"},
      {"/a/b.asp", "/c.inc", true, "/c.inc"},
      {"/a/b.asp", "inc/c.inc", true, "/inc/c.inc"},
      {"/a/b.asp", "../../c.inc", false, ""},
  };
  // clang-format on
  for (auto [from, path, isVirtual, expected] : cases)
    EXPECT_EQ(ResolveIncludePath(from, path, isVirtual), expected) << from << " " << path;
}

TEST(Includes, ReportMissingFilesAndCyclesWhereTheyAreIncluded) {
  Site site{{"/page.asp", "a\n<!--#include file=\"gone.inc\"-->"}};
  testing::Outcome o = RunSite(site);
  EXPECT_TRUE(o.compile);
  EXPECT_EQ(o.file, "/page.asp");
  EXPECT_EQ(o.line, 2);
  EXPECT_EQ(o.description, "The include file 'gone.inc' was not found.");
  site = {{"/page.asp", "<!--#include file=\"a.inc\"-->"},
          {"/a.inc", "x\ny\n<!--#include file=\"b.inc\"-->"},
          {"/b.inc", "<!--#include virtual=\"/A.INC\"-->"}};
  o = RunSite(site);
  EXPECT_EQ(o.file, "/b.inc");
  EXPECT_EQ(o.line, 1);
  EXPECT_NE(o.description.find("includes itself"), std::string::npos);
}

TEST(Includes, ErrorsNameTheOriginalFileAndLine) {
  Site site{{"/page.asp", "<%\nx = 1\n%><!--#include file=\"f.inc\"-->\n<% y = 1 / 0 %>"},
            {"/f.inc", "<%\n' f\nSub F\n  z = 1 / 0\nEnd Sub\n%>"}};
  testing::Outcome o = RunSite(site);
  EXPECT_EQ(o.file, "/page.asp");
  EXPECT_EQ(o.line, 4);
  site["/page.asp"] = "<% x = 1 %>\n\n<!--#include file=\"f.inc\"-->\n<% F %>";
  o = RunSite(site);
  EXPECT_EQ(o.file, "/f.inc");
  EXPECT_EQ(o.line, 4);
  EXPECT_EQ(o.sourceLine, "  z = 1 / 0");
  site["/f.inc"] = "<%\n\nx = )\n%>";
  o = RunSite(site);
  EXPECT_EQ(o.file, "/f.inc");
  EXPECT_EQ(o.line, 3);
  EXPECT_EQ(o.number, 1023);
}

TEST(Scripts, CountLinesFromTheirFirstLine) {
  try {
    CompileScript("x = 1\ny = )", "/global.asa", 10);
    FAIL();
  } catch (const ScriptError& e) {
    EXPECT_EQ(e.Where().file, "/global.asa");
    EXPECT_EQ(e.Where().line, 11);
    EXPECT_EQ(e.SourceLine(), "y = )");
  }
}

TEST(Pages, CompileAPageOfManyIncludes) {
  // 2,000 lines: a page and four includes of 400 lines each (bench/ times it).
  Site site;
  std::string page;
  for (int f = 0; f < 4; ++f) {
    std::string inc = "<%\n";
    for (int i = 0; i < 398; ++i) {
      std::string name = "F" + std::to_string(f) + "_" + std::to_string(i);
      inc += "Function " + name + "(a, b): " + name + " = a & b & \"|\": End Function\n";
    }
    site["/inc" + std::to_string(f) + ".inc"] = inc + "%>";
    page += "<!--#include file=\"inc" + std::to_string(f) + ".inc\"-->\n";
  }
  for (int i = 0; i < 396; ++i)
    page += "<% If " + std::to_string(i) + " Mod 99 = 0 Then y = y & F3_397(" + std::to_string(i) +
            ", \"a\") %>\n";
  site["/page.asp"] = page + "<%= y %>";
  EXPECT_EQ(CompilePage("/page.asp", testing::LoaderOf(site))->Files().size(), 5u);
  EXPECT_EQ(RunSite(site).out, std::string(400, '\n') + "0a|99a|198a|297a|");
}

TEST(Pages, LongOutputMatchesItsGoldenFile) {
  // Pages have CR LF line ends, as the golden file's lines stand for.
  auto crlf = [](std::string s) {
    for (size_t i = s.find('\n'); i != std::string::npos; i = s.find('\n', i + 2)) s.insert(i, "\r");
    return s;
  };
  Site site{{"/page.asp", crlf("<%@ CODEPAGE=65001 %><html>\n<% Dim rows(2, 1)\nFor r = 0 To 2: For c = 0 To "
                               "1: rows(r, c) = r * 10 + c: "
                               "Next: Next %>\n<table>\n<% For r = 0 To 2 %>  <tr><% For c = 0 To 1 "
                               "%><td><%= rows(r, c) %></td><% Next "
                               "%></tr>\n<% Next %></table>\n<% Select Case UBound(rows)\nCase 2 %><p>three "
                               "rows</p><% End Select %>\n"
                               "</html>\n")}};
  EXPECT_EQ(RunSite(site).out, corvane::testing::Golden("src/script/golden/table.html"));
}

}  // namespace
}  // namespace corvane::script
