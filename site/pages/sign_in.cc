// Sign-in, sign-out and the start page with the menu tree and the staff bar.
#include <cctype>
#include <memory>
#include <random>

#include "corvane/ado.h"
#include "corvane/dates.h"
#include "corvane/error.h"
#include "pages.h"

namespace corvane::site {

namespace {

void LoginForm(PageContext& p, std::string_view message, std::string_view login) {
  WriteHead(p, "登录 - corvane 办公系统");
  p.Response.Write(
      "<div class=login><h1>corvane 办公系统</h1>\r\n"
      "<form method=post action='/login.asp'>\r\n"
      "<p><label>用户名 <input type=text name=loginName value='" +
      Html(login) +
      "' autofocus></label></p>\r\n"
      "<p><label>密　码 <input type=password name=password></label></p>\r\n"
      "<p><input type=submit value='登录'></p>\r\n");
  if (!message.empty()) p.Response.Write("<p class=message>" + Html(message) + "</p>\r\n");
  p.Response.Write(
      "</form><p class=hint>演示账号：zhangwei / 123456（管理员组），sysop / sysop（全部菜单），"
      "lina / 123456（领导组），xutao / 123456（员工组）</p></div>");
  WriteFoot(p);
}

// The person with this login and password, opened on a new recordset; nullptr when there is none.
std::shared_ptr<ado::Recordset> FindPerson(PageContext& p, const std::string& login,
                                           const std::string& password) {
  // Login names are letters and digits only, so they can go into the SQL as they are.
  for (char c : login)
    if (!std::isalnum(static_cast<unsigned char>(c))) return nullptr;
  if (login.empty()) return nullptr;
  auto rs = std::make_shared<ado::Recordset>();
  rs->Open("select personID,personName,systemID,password from person where loginName='" + login + "'",
           Variant(ConnStr(p)), 1);
  if (rs->Eof() || rs->Field("password").Text() != password) return nullptr;
  return rs;
}

void Login(PageContext& p) {
  if (p.Request.ServerVariables("REQUEST_METHOD").Text() != "POST") {
    LoginForm(p, "", "");
    return;
  }
  std::string login = p.Request.Form("loginName").Text();
  auto rs = FindPerson(p, login, p.Request.Form("password").Text());
  if (!rs) {
    LoginForm(p, "用户名或密码不对。", login);
    return;
  }
  p.Session.Clear();
  p.Session.RequestNewID();
  p.Session.Set("personID", Variant(rs->Field("personID").ToLong()));
  p.Session.Set("systemID", Variant(rs->Field("systemID").ToLong()));
  p.Session.Set("personName", rs->Field("personName"));
  std::random_device random;
  p.Session.Set("rnd", Variant(static_cast<int32_t>(random() % 90000 + 10000)));
  p.Session.Set("sc_curdate", Variant(DateText(DateOnly(Now()))));
  rs->Close();

  Object permission = p.Server.CreateObject("corvane.Permission");
  Call(permission, "openDB", {Variant(ConnStr(p))});
  Call(permission, "GetPersonAccess");
  p.Response.Redirect("/main.asp");
}

void Logout(PageContext& p) {
  p.Session.Clear();
  p.Response.Redirect("/login.asp");
}

void Home(PageContext& p) { p.Response.Redirect(PersonID(p) ? "/main.asp" : "/login.asp"); }

// One level of the menu tree: the recordset's entries, each with its children below it.
std::string MenuLevel(const Object& permission, ado::Recordset& rs, int level) {
  std::string s = "<ul class=menu" + std::to_string(level) + ">\r\n";
  for (; !rs.Eof(); rs.MoveNext()) {
    std::string url = rs.Field("menuURL").Text();
    std::string name = Html(rs.Field("menuName").Text());
    s += "<li>";
    s += url.empty() ? "<span>" + name + "</span>" : "<a href='" + url + "' target=main>" + name + "</a>";
    if (level < 3) {
      Variant children = Call(permission, "GetMenu23", {rs.Field("menuID")});
      auto child = children.ToObject().As<ado::Recordset>();
      if (child && !child->Eof()) s += MenuLevel(permission, *child, level + 1);
      if (child) child->Close();
    }
    s += "</li>\r\n";
  }
  return s + "</ul>\r\n";
}

void Main(PageContext& p) {
  if (!RequireSignIn(p)) return;
  WriteHead(p, "corvane 办公系统", "<script src='/include/outlookbar.js'></script>\r\n", "class=frame");
  p.Response.Write("<div class=top><b>corvane 办公系统</b><span>" + Html(p.Session.Get("personName").Text()) +
                   "，您好　" + DateText(DateOnly(Now())) +
                   "　<a href='/logout.asp'>退出</a></span></div>\r\n<div class=side><div class=tree>");

  // The menus the person may see: everything for the system account, the rights of the person's
  // groups for everyone else (nothing at all without any right).
  Object permission = p.Server.CreateObject("corvane.Permission");
  Call(permission, "openDB", {Variant(ConnStr(p))});
  if (p.Session.Get("personName").Text() == "sysop" || !p.Session.Get("personAccess").Text().empty()) {
    Object rsObject = p.Server.CreateObject("ADODB.Recordset");
    Call(permission, "GetMenu1", {Variant(rsObject)});
    auto rs = rsObject.As<ado::Recordset>();
    p.Response.Write(MenuLevel(permission, *rs, 1));
    rs->Close();
  } else {
    p.Response.Write("<p>没有可用的菜单。</p>");
  }

  // The staff bar: everyone of the person's system but the system account, each opening that
  // person's month calendar.
  Object scheduler = p.Server.CreateObject("corvane.scheduler");
  Call(scheduler, "Init", {Variant(ConnStr(p))});
  p.Response.Write("</div><div id=staffbar></div>\r\n<script>\r\nvar t=outlookbar.addtitle('员工日程');\r\n");
  p.Response.Write(Call(scheduler, "GetMenu", {Variant("person.personGroupID<>7")}));
  p.Response.Write(
      "outlookbar.show('staffbar');\r\n</script></div>\r\n"
      "<iframe name=main class=main src='/scheduler/personWeek.asp'></iframe>");
  WriteFoot(p);
}

}  // namespace

void RegisterSignInPages(server::PageRegistry& pages) {
  pages.Add("/", Home);
  pages.Add("/default.asp", Home);
  pages.Add("/login.asp", Login);
  pages.Add("/logout.asp", Logout);
  pages.Add("/main.asp", Main);
}

}  // namespace corvane::site
