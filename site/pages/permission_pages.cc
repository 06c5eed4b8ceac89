// The access-group pages: the group list (permission.asp, with ac=add, del, edit, rename), a group's
// menu rights (permissionset.asp) and a group's members (permissionMan.asp).
#include <memory>

#include "corvane/ado.h"
#include "pages.h"

namespace corvane::site {

namespace {

bool IsId(const std::string& s) {
  if (s.empty() || s.size() > 6) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

Object OpenPermission(PageContext& p) {
  Object permission = p.Server.CreateObject("corvane.Permission");
  Call(permission, "openDB", {Variant(ConnStr(p))});
  return permission;
}

// The group's name when it belongs to the signed-in person's system, else "".
std::string GroupName(PageContext& p, const std::string& id) {
  if (!IsId(id)) return "";
  ado::Recordset rs;
  rs.Open("select accessGroupName from AccessGroup where accessGroupID=" + id +
              " and systemID=" + p.Session.Get("systemID").Text(),
          Variant(ConnStr(p)), 1);
  std::string name = rs.Eof() ? "" : rs.Field("accessGroupName").Text();
  rs.Close();
  return name;
}

void Groups(PageContext& p) {
  if (!RequireSignIn(p)) return;
  Object permission = OpenPermission(p);
  const std::string ac = Param(p, "ac"), id = Param(p, "id");
  std::string message, editForm;
  if (ac == "add") {
    std::string name = Param(p, "name");
    if (name.empty() || name.find('\'') != std::string::npos) {
      message = "组名不能为空，也不能含单引号。";
    } else {
      Call(permission, "AddGroup", {Variant(name)});
      message = "已添加权限组：" + name;
    }
  } else if (ac == "del" && IsId(id)) {
    Call(permission, "delGroup", {Variant(std::stol(id))});
    message = "已删除。";
  } else if (ac == "rename" && !GroupName(p, id).empty()) {
    std::string name = Param(p, "name");
    if (name.empty() || name.find('\'') != std::string::npos) {
      message = "组名不能为空，也不能含单引号。";
    } else {
      ado::Connection conn;
      conn.Open(ConnStr(p));
      conn.Execute("update AccessGroup set accessGroupName='" + name + "' where accessGroupID=" + id);
      conn.Close();
      message = "已改名为：" + name;
    }
  } else if (ac == "edit") {
    std::string name = GroupName(p, id);
    if (!name.empty())
      editForm =
          "<form method=post action='permission.asp'><input type=hidden name=ac value=rename>"
          "<input type=hidden name=id value='" +
          id + "'>新组名 <input type=text name=name value='" + Html(name) +
          "'> <input type=submit value='改名'></form>\r\n";
  }

  WriteHead(p, "权限管理", "<link rel=\"stylesheet\" href=\"/include/style.css\" type=\"text/css\">\r\n");
  p.Response.Write("<h2 class=title>权限组</h2>\r\n");
  if (!message.empty()) p.Response.Write("<p class=message>" + Html(message) + "</p>\r\n");
  p.Response.Write(editForm);
  p.Response.Write(
      "<table class=tbl cellSpacing=0 id=groups><tr><th>序号</th><th>权限组</th><th>操作</th></tr>\r\n");
  p.Response.Write(Call(permission, "DispGroup"));
  p.Response.Write(
      "</table>\r\n<form method=post action='permission.asp' class=add><input type=hidden name=ac value=add>"
      "新权限组 <input type=text name=name> <input type=submit value='添加'></form>\r\n");
  WriteFoot(p);
}

// Menu rights: all menus of the system on the left, the group's on the right; the form sends the
// right-hand menu ids joined by "*".
void Rights(PageContext& p) {
  if (!RequireSignIn(p)) return;
  const std::string id = Param(p, "id");
  const std::string name = GroupName(p, id);
  if (name.empty()) {
    p.Response.Redirect("permission.asp");
    return;
  }
  Object permission = OpenPermission(p);
  std::string message;
  if (p.Request.ServerVariables("REQUEST_METHOD").Text() == "POST")
    message = Call(permission, "SavePermission", {Variant(std::stol(id)), Variant(Param(p, "permitSetStr"))})
                  .Text();

  WriteHead(p, "设置权限",
            "<link rel=\"stylesheet\" href=\"/include/style.css\" type=\"text/css\">\r\n"
            "<script src=\"/include/permission.js\"></script>\r\n");
  p.Response.Write("<h2 class=title>设置权限：" + Html(name) + "</h2>\r\n");
  if (!message.empty()) p.Response.Write("<p class=message>" + Html(message) + "</p>\r\n");
  Args group{Variant(static_cast<int16_t>(std::stoi(id)))};
  p.Response.Write(
      "<form method=post action='permissionset.asp?id=" + id +
      "' onsubmit='return collectRights(this)'>\r\n"
      "<input type=hidden name=permitSetStr>\r\n<table "
      "class=rights><tr><th>全部菜单</th><th></th><th>本组权限</th></tr>\r\n"
      "<tr><td><select id=allMenus multiple size=20>" +
      Call(permission, "DispMenuItem").Text() +
      "</select></td>\r\n<td class=moves><input type=button id=addRight value='添加 &gt;&gt;' "
      "onclick='addRights()'><br><br>"
      "<input type=button id=removeRight value='&lt;&lt; 移除' onclick='removeRights()'></td>\r\n"
      "<td><select id=groupMenus multiple size=20>" +
      permission.Invoke("DispAccessMenuItem", group).Text() +
      "</select></td></tr></table>\r\n<p><input type=submit id=saveRights value='保存权限'> "
      "<a href='permission.asp'>返回权限组</a></p></form>\r\n");
  WriteFoot(p);
}

// Members: a check box per person of the system; the form sends the checked ids joined by ",".
void Members(PageContext& p) {
  if (!RequireSignIn(p)) return;
  const std::string id = Param(p, "id");
  const std::string name = GroupName(p, id);
  if (name.empty()) {
    p.Response.Redirect("permission.asp");
    return;
  }
  Object permission = OpenPermission(p);
  std::string message;
  if (p.Request.ServerVariables("REQUEST_METHOD").Text() == "POST") {
    // The check boxes arrive joined by ", "; the component wants the ids joined by "," alone.
    std::string ids;
    for (char c : p.Request.Form("checkbox").Text())
      if (c != ' ') ids += c;
    message = Call(permission, "SavePerson", {Variant(std::stol(id)), Variant(ids)}).Text();
  }
  WriteHead(p, "设置人员", "<link rel=\"stylesheet\" href=\"/include/style.css\" type=\"text/css\">\r\n");
  p.Response.Write("<h2 class=title>设置人员：" + Html(name) + "</h2>\r\n");
  if (!message.empty()) p.Response.Write("<p class=message>" + Html(message) + "</p>\r\n");
  p.Response.Write("<form method=post action='permissionMan.asp?id=" + id + "'><div class=members>" +
                   Call(permission, "DispPerson", {Variant(std::stol(id))}).Text() +
                   "</div>\r\n<p><input type=submit value='保存人员'> <a "
                   "href='permission.asp'>返回权限组</a></p></form>\r\n");
  WriteFoot(p);
}

}  // namespace

void RegisterPermissionPages(server::PageRegistry& pages) {
  pages.Add("/permission/permission.asp", Groups);
  pages.Add("/permission/permissionset.asp", Rights);
  pages.Add("/permission/permissionMan.asp", Members);
}

}  // namespace corvane::site
