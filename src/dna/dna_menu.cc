// The command bar at the top of every browser page: the title, the commands for the current action,
// and the client script that shows the list's hidden edit and delete links, the trace, and prints.
#include <initializer_list>
#include <string>
#include <string_view>

#include "corvane/host.h"
#include "dna/dna.h"
#include "dna/text_append.h"
#include "page_kit/page_kit.h"

namespace corvane {

namespace {

using page_kit::kCrLf;

// The hover behaviour of every command, with its leading and trailing blank.
constexpr std::string_view kHover =
    " onmouseover=\"this.className='a2';\" onmouseout=\"this.className='';\" ";

// The actions whose page is a list (or follows a posted change, search or column setting).
bool IsListAction(const std::string& action) {
  return action == "list" || action == "listall" || action == "update2" || action == "search2" ||
         action == "setcol2";
}

const char* const kScript[] = {
    "<script language='javascript'>",
    "var updateFlag,deleteFlag,debugFlag;",
    "function printPage(){ var arr_ctrlDiv=document.all('ctrlDiv');  "
    "for(i=0;i<arr_ctrlDiv.length;i++)arr_ctrlDiv(i).style.display='none'; "
    "npage.style.display='';if(confirm('打印本页?'))window.print(); "
    "for(i=0;i<arr_ctrlDiv.length;i++)arr_ctrlDiv(i).style.display='';npage.style.display='none'; }",
    " updateFlag=false;deleteFlag=false;",
    "function show_update(){",
    "   updateFlag=!updateFlag;",
    "   var arr_updateID=document.all('updateID'); ",
    "   for (i=0;i<arr_updateID.length;i++){",
    "       if(updateFlag)arr_updateID(i).style.display='';",
    "       else  arr_updateID(i).style.display='none';",
    "   }",
    "   if(updateFlag&&deleteFlag)show_delete();",
    "}",
    "function show_debug(){",
    "   debugFlag=!debugFlag;",
    "   var arr_debugID=document.all('debugID'); ",
    "   for (i=0;i<arr_debugID.length;i++){",
    "       if(debugFlag)arr_debugID(i).style.display='';",
    "       else  arr_debugID(i).style.display='none';",
    "   }",
    "}",
    "function show_delete()",
    "{",
    "   deleteFlag=!deleteFlag;",
    "   var arr_deleteID=document.all('deleteID');",
    "   for (i=0;i<arr_deleteID.length;i++){",
    "       if(deleteFlag)arr_deleteID(i).style.display='';",
    "       else arr_deleteID(i).style.display='none';",
    "   }",
    "   if(updateFlag&&deleteFlag)show_update();",
    "}</script>",
};

}  // namespace

void DNA::SetTitle(const Variant& Title) { strTitle = Title.ToString(); }

void DNA::SetDispStyle(const Variant&) {
  Out().Write("<link rel=\"stylesheet\" href=\"../include/style.css\" type=\"text/css\">");
}

void DNA::DispMenu() {
  const std::string& u = strURL;
  std::string s;
  s.reserve(4096);
  auto line = [&s](std::initializer_list<std::string_view> pieces) {
    dna::Append(s, pieces);
    s += kCrLf;
  };
  // "cellspading" is what the site's pages have always carried.
  line({"<table cellspading=0 cellspacing=4 width=100%><tr>"});
  line({"<td width=100% class=title>", strTitle, "&nbsp;</td><td nowrap>"});
  line({"<div id=ctrlDiv><table  class=menu><tr nowrap>"});
  if (IsListAction(strAction)) {
    line({" <td nowrap><a href='", u, "?action=insert'", kHover, " >添加</a></td>"});
    line({" <td nowrap onclick=show_update();title='请选择要修改的项'><a style='cursor:hand;' ", kHover,
          " >修改</a></td>"});
    line({" <td nowrap onclick=show_delete();title='请选择要删除的项'><a style='cursor:hand;'", kHover,
          " >删除</a></td>"});
    line({" <td nowrap><a href='", u, "?action=search'title='进入组合查询'", kHover, " >查询</a></td>"});
    line({" <td nowrap><a href='", u, "?action=setcol'title='设置页面选择格式'", kHover, " >设置</a></td>"});
    line({" <td nowrap><a href='", u, "?action=list'title='列表显示'", kHover, " >列表</a></td>"});
    line({" <td nowrap onclick=printPage();title='打印预览与打印' ><a style='cursor:hand;'", kHover,
          " >打印</a></td>"});
  } else {
    line({" <td nowrap><a href='", u, "?action=list'title='列表显示' ", kHover, ">返回</a></td>"});
  }
  if (bDebug)
    line({" <td nowrap onclick=show_debug();title='显示隐藏调试信息'><a style='cursor:hand;'", kHover,
          " >调试信息</a></td>"});
  line({"</tr nowrap></table></div>"});
  line({"</td nowrap></tr></table>"});
  for (const char* script : kScript) line({script});
  Out().Write(s);
  if (bDebug) WriteTrace(kCrLf + "##调试信息:DispMenu OK!<br>");
}

}  // namespace corvane
