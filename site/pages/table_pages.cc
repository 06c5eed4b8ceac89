// The office's table pages: notices, contacts and staff.
#include "pages.h"
#include "table_page.h"

namespace corvane::site {

namespace {

// A table with code look-ups needs a filter: the record form scans the filter's fixed fields, and a
// table without any has none to scan (the form then fails with "subscript out of range"). "where 1=1"
// fixes no field.

void Notice(PageContext& p) {
  if (!RequireSignIn(p)) return;
  TablePage(p, {.title = "通知公告",
                .sql = "select noticeID,title,noticeTypeID,deptID,publishDate,author from notice "
                       "where 1=1 order by publishDate DESC,noticeID",
                .captions = "编号,标题,类别,发布部门,发布日期,发布人",
                .codeSql = "noticeID;title;select noticeTypeName,noticeTypeID from noticeType;"
                           "select deptName,deptID from dept;publishDate;author"});
}

void Contact(PageContext& p) {
  if (!RequireSignIn(p)) return;
  TablePage(
      p, {.title = "通讯录",
          .sql = "select contactID,contactName,company,cityID,phone,email,createDate from contact "
                 "where 1=1 order by contactID,contactName",
          .captions = "编号,姓名,单位,城市,电话,电子邮件,登记日期",
          .codeSql = "contactID;contactName;company;select cityName,cityID from city;phone;email;createDate",
          .defaultItems = "contactID,contactName,company,cityID,phone,createDate"});
}

void Staff(PageContext& p) {
  if (!RequireSignIn(p)) return;
  // The staff of the signed-in person's system; the filter fixes the system in forms and writes.
  std::string system = p.Session.Get("systemID").Text();
  TablePage(
      p, {.title = "人员管理",
          .sql = "select personID,personName,loginName,dutyID,deptID,phone,email,systemID from person "
                 "where systemID=" +
                 system + " order by dutyID,personID",
          .captions = "编号,姓名,登录名,职务,部门,电话,电子邮件,系统",
          .codeSql = "personID;personName;loginName;select dutyName,dutyID from personDuty;"
                     "select deptName,deptID from dept;phone;email;select systemName,systemID from systems"});
}

}  // namespace

void RegisterTablePages(server::PageRegistry& pages) {
  pages.Add("/notice.asp", Notice);
  pages.Add("/contact.asp", Contact);
  pages.Add("/staff.asp", Staff);
}

}  // namespace corvane::site
