// A small office system for the Permission tests: two systems, their access groups with rights and
// members, persons, and a menu tree of three levels with a fourth below.
//
//   system 1 menus (menuOrder sorts siblings; 4 is stored before 3 on purpose)
//     1 办公                groups: 1 管理员  rights 1,2        members 2
//       3 公文                      2 财务    rights 3,4        members 2, 3, 12
//         5 收文                    3 办公    rights 1,3,5,9,7  members 4, " 11 "
//           9 归档 (level 4)
//         6 发文              system 2:
//       4 日程                      4 外部    rights " 10 "     members 20
//     2 系统
//       7 用户              persons of system 1 by DutyID: 12 访客 (person group 7, never offered),
//         8 密码              3 李四, 2 张三, 11 王五, 4 钱七, 1 sysop
//   system 2: 10 其他       system 2: 20 赵六
//
// accessMenu.accessmenuid and accessPerson.accessPersonID are text columns, and two of their values
// carry blanks, as fixed-width columns of the deployment's database do.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "corvane/registry.h"
#include "corvane/ado.h"
#include "corvane/host.h"
#include "permission/permission.h"
#include "test_support.h"

namespace corvane::testing {

inline void CreateOfficeSystem(const ScratchDatabase& db) {
  db.Run({
      "create table AccessGroup (accessGroupID integer primary key, accessGroupName varchar(50), "
      "systemID int)",
      "create table accessMenu (accessgroupid int, accessmenutype int, accessmenuid varchar(10))",
      "create table accessPerson (accessGroupID int, accessPersonID varchar(10))",
      "create table person (personID integer primary key, personName varchar(20), systemID int, "
      "personGroupID int, DutyID int)",
      "create table menu (menuID integer primary key, menuName varchar(20), menuFatherID int, "
      "menuOrder int, systemID int)",
      "insert into AccessGroup values (1, '管理员', 1), (2, '财务', 1), (3, '办公', 1), (4, '外部', 2)",
      "insert into accessMenu values (1, 1, '1'), (1, 1, '2'), (2, 1, '3'), (2, 1, '4'), "
      "(3, 1, '1'), (3, 1, '3'), (3, 1, '5'), (3, 1, '9'), (3, 1, '7'), (4, 1, ' 10 ')",
      "insert into accessPerson values (1, '2'), (2, '2'), (2, '3'), (2, '12'), (3, '4'), (3, ' 11 '), "
      "(4, '20')",
      "insert into person values (1, 'sysop', 1, 1, 5), (2, '张三', 1, 2, 2), (3, '李四', 1, 2, 1), "
      "(4, '钱七', 1, 3, 4), (11, '王五', 1, 3, 3), (12, '访客', 1, 7, 0), (20, '赵六', 2, 2, 1)",
      "insert into menu values (1, '办公', null, 1, 1), (2, '系统', null, 2, 1), (4, '日程', 1, 2, 1), "
      "(3, '公文', 1, 1, 1), (6, '发文', 3, 2, 1), (5, '收文', 3, 1, 1), (9, '归档', 5, 1, 1), "
      "(7, '用户', 2, 1, 1), (8, '密码', 7, 1, 1), (10, '其他', null, 1, 2)",
  });
}

// The rows of a query as "a|b;c|d" (Null as "").
inline std::string Rows(const ScratchDatabase& db, std::string_view sql) {
  ado::Recordset rs;
  rs.Open(sql, Variant(db.connectionString), ado::adOpenKeyset);
  std::string out;
  while (!rs.Eof()) {
    if (!out.empty()) out += ";";
    for (int i = 0; i < rs.FieldCount(); ++i) {
      if (i > 0) out += "|";
      out += rs.Field(i).Text();
    }
    rs.MoveNext();
  }
  rs.Close();
  return out;
}

// One page of the office site with a Permission object created through Server.CreateObject and
// connected to the system's database. The session holds "systemID" 1 unless a test changes it.
struct PermissionPage {
  explicit PermissionPage(const ScratchDatabase& db, host::Session s = host::Session())
      : session(std::move(s)), page(host::PageRequest{.url = "/permission.asp"}, session, LibraryHost()) {
    if (session.Get("systemID").IsEmpty()) session.Set("systemID", Variant(1));
    obj = page.Server().CreateObject("corvane.Permission");
    permission = obj.As<Permission>();
    Variant conn(db.connectionString);
    permission->openDB(conn);
  }

  host::Session session;
  host::Page page;
  Object obj;
  std::shared_ptr<Permission> permission;
};

}  // namespace corvane::testing
