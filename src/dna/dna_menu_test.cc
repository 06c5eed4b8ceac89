// The command bar, its script, the style sheet link and the title.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {
namespace {

const std::string kH = " onmouseover=\"this.className='a2';\" onmouseout=\"this.className='';\" ";

const std::string kScript =
    "</tr nowrap></table></div>\r\n"
    "</td nowrap></tr></table>\r\n"
    "<script language='javascript'>\r\n"
    "var updateFlag,deleteFlag,debugFlag;\r\n"
    "function printPage(){ var arr_ctrlDiv=document.all('ctrlDiv');  "
    "for(i=0;i<arr_ctrlDiv.length;i++)arr_ctrlDiv(i).style.display='none'; npage.style.display='';"
    "if(confirm('打印本页?'))window.print(); for(i=0;i<arr_ctrlDiv.length;i++)arr_ctrlDiv(i).style.display='';"
    "npage.style.display='none'; }\r\n"
    " updateFlag=false;deleteFlag=false;\r\n"
    "function show_update(){\r\n"
    "   updateFlag=!updateFlag;\r\n"
    "   var arr_updateID=document.all('updateID'); \r\n"
    "   for (i=0;i<arr_updateID.length;i++){\r\n"
    "       if(updateFlag)arr_updateID(i).style.display='';\r\n"
    "       else  arr_updateID(i).style.display='none';\r\n"
    "   }\r\n"
    "   if(updateFlag&&deleteFlag)show_delete();\r\n"
    "}\r\n"
    "function show_debug(){\r\n"
    "   debugFlag=!debugFlag;\r\n"
    "   var arr_debugID=document.all('debugID'); \r\n"
    "   for (i=0;i<arr_debugID.length;i++){\r\n"
    "       if(debugFlag)arr_debugID(i).style.display='';\r\n"
    "       else  arr_debugID(i).style.display='none';\r\n"
    "   }\r\n"
    "}\r\n"
    "function show_delete()\r\n"
    "{\r\n"
    "   deleteFlag=!deleteFlag;\r\n"
    "   var arr_deleteID=document.all('deleteID');\r\n"
    "   for (i=0;i<arr_deleteID.length;i++){\r\n"
    "       if(deleteFlag)arr_deleteID(i).style.display='';\r\n"
    "       else arr_deleteID(i).style.display='none';\r\n"
    "   }\r\n"
    "   if(updateFlag&&deleteFlag)show_update();\r\n"
    "}</script>\r\n";

std::string Top(const std::string& title) {
  return "<table cellspading=0 cellspacing=4 width=100%><tr>\r\n"
         "<td width=100% class=title>" + title + "&nbsp;</td><td nowrap>\r\n"
         "<div id=ctrlDiv><table  class=menu><tr nowrap>\r\n";
}

const std::string kDebugCommand =
    " <td nowrap onclick=show_debug();title='显示隐藏调试信息'><a style='cursor:hand;'" + kH +
    " >调试信息</a></td>\r\n";

// The bar for `query`, written in one Write (plus the trace in debug mode).
std::vector<std::string> MenuWrites(const std::string& query, bool debug, const Variant& title = Variant()) {
  StaffDatabase db;
  host::Session session;
  DnaPage p(session, query);
  p.Open(db);
  if (!title.IsEmpty()) p.dna().SetTitle(title);
  if (debug) p.dna().DebugMode();
  size_t before = p.page().Writes().size();
  p.dna().DispMenu();
  std::vector<std::string> all = p.page().Writes();
  return {all.begin() + static_cast<long>(before), all.end()};
}

TEST(CommandBar, ListPagesHaveSevenCommands) {
  const std::string expected =
      Top("职工名单") +
      " <td nowrap><a href='/staff.asp?action=insert'" + kH + " >添加</a></td>\r\n"
      " <td nowrap onclick=show_update();title='请选择要修改的项'><a style='cursor:hand;' " + kH +
      " >修改</a></td>\r\n"
      " <td nowrap onclick=show_delete();title='请选择要删除的项'><a style='cursor:hand;'" + kH +
      " >删除</a></td>\r\n"
      " <td nowrap><a href='/staff.asp?action=search'title='进入组合查询'" + kH + " >查询</a></td>\r\n"
      " <td nowrap><a href='/staff.asp?action=setcol'title='设置页面选择格式'" + kH + " >设置</a></td>\r\n"
      " <td nowrap><a href='/staff.asp?action=list'title='列表显示'" + kH + " >列表</a></td>\r\n"
      " <td nowrap onclick=printPage();title='打印预览与打印' ><a style='cursor:hand;'" + kH +
      " >打印</a></td>\r\n" + kScript;
  for (const char* action : {"list", "listall", "update2", "search2", "setcol2"}) {
    SCOPED_TRACE(action);
    EXPECT_EQ(MenuWrites(std::string("action=") + action, false, Variant("职工名单")),
              std::vector<std::string>{expected});
  }
}

TEST(CommandBar, FormPagesGoBackAndDebugAddsTheTraceSwitch) {
  const std::string back =
      " <td nowrap><a href='/staff.asp?action=list'title='列表显示' " + kH + ">返回</a></td>\r\n";
  for (const char* action : {"insert", "update", "search", "setcol", "insert2", "delete"}) {
    SCOPED_TRACE(action);
    EXPECT_EQ(MenuWrites(std::string("action=") + action, false), std::vector<std::string>{Top("") + back + kScript});
  }
  EXPECT_EQ(MenuWrites("action=insert", true),
            (std::vector<std::string>{
                Top("") + back + kDebugCommand + kScript,
                "<span id=debugID style='display:none'>\r\n##调试信息:DispMenu OK!<br></span>"}));
  std::vector<std::string> list = MenuWrites("", true);
  EXPECT_NE(list[0].find(" >打印</a></td>\r\n" + kDebugCommand + "</tr nowrap>"), std::string::npos);
}

TEST(CommandBar, StyleSheetLinkIsTheSameForEveryType) {
  StaffDatabase db;
  host::Session session;
  DnaPage p(session, "");
  for (const Variant& type : {Variant(1), Variant("x"), Variant()}) p.dna().SetDispStyle(type);
  const std::string link = "<link rel=\"stylesheet\" href=\"../include/style.css\" type=\"text/css\">";
  EXPECT_EQ(p.page().Writes(), (std::vector<std::string>{link, link, link}));
}

}  // namespace
}  // namespace corvane::testing
