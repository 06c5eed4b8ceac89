// The demo office's tables. Column names are those the components' SQL names; dates are DATETIME
// columns (on SQLite they hold the locale's date text, "2026-11-02" or "2026-11-02 18:00:00").
// The statements are the components' dialect, which the data layer adapts to each database.
#include "schema.h"

#include <algorithm>
#include <cctype>

namespace corvane::site {

// An INTEGER PRIMARY KEY is given the next number when an insert leaves it out (DNA's inserts do); on a
// database server the data layer makes it an identity or auto-increment column.
const std::vector<std::string_view>& SchemaStatements() {
  static const std::vector<std::string_view> statements = {
      "create table systems(systemID INTEGER PRIMARY KEY, systemName VARCHAR(50))",
      "create table dept(deptID INTEGER PRIMARY KEY, deptName VARCHAR(50))",
      "create table personDuty(dutyID INTEGER PRIMARY KEY, dutyName VARCHAR(50))",
      // personGroupID 7 marks accounts that are never offered as group members (the system account).
      // A password is kept as its Argon2id hash (97 characters, corvane.Password).
      "create table person(personID INTEGER PRIMARY KEY, personName VARCHAR(50), loginName VARCHAR(50),"
      " password VARCHAR(128), dutyID INT, systemID INT, personGroupID INT, deptID INT,"
      " phone VARCHAR(30), email VARCHAR(60))",
      "create table planAddrType(planAddrTypeID INTEGER PRIMARY KEY, planAddrTypeName VARCHAR(50))",
      "create table planAddr(planAddrID INTEGER PRIMARY KEY, planAddrName VARCHAR(50), planAddrTypeID INT)",
      "create table planType(planTypeID INTEGER PRIMARY KEY, planTypeName VARCHAR(50))",
      "create table planFlag(planFlagID INTEGER PRIMARY KEY, planFlagName VARCHAR(20))",
      "create table personPlan(planID INTEGER PRIMARY KEY, personID INT, planStartTime DATETIME,"
      " planEndTime DATETIME, planAddrTypeID INT, planAddrID INT, planAddrDetail VARCHAR(100),"
      " planTypeID INT, planContent VARCHAR(200), planAddition VARCHAR(200), planFlagID INT)",
      "create table AccessGroup(accessGroupID INTEGER PRIMARY KEY, accessGroupName VARCHAR(50), systemID "
      "INT)",
      "create table accessMenu(accessGroupID INT, accessMenuType INT, accessMenuID INT)",
      "create table accessPerson(accessGroupID INT, accessPersonID INT)",
      "create table menu(menuID INTEGER PRIMARY KEY, menuName VARCHAR(50), menuFatherID INT,"
      " menuOrder INT, systemID INT, menuURL VARCHAR(200))",
      "create table noticeType(noticeTypeID INTEGER PRIMARY KEY, noticeTypeName VARCHAR(50))",
      "create table notice(noticeID INTEGER PRIMARY KEY, title VARCHAR(100), noticeTypeID INT, deptID INT,"
      " publishDate DATETIME, author VARCHAR(50), content VARCHAR(500))",
      "create table city(cityID INTEGER PRIMARY KEY, cityName VARCHAR(50))",
      "create table contact(contactID INTEGER PRIMARY KEY, contactName VARCHAR(50), company VARCHAR(100),"
      " cityID INT, phone VARCHAR(30), email VARCHAR(60), createDate DATETIME)",
      "create table upload(uploadID INTEGER PRIMARY KEY, fileName VARCHAR(200), fileSize INT,"
      " personID INT, uploadTime DATETIME, remark VARCHAR(200))",
  };
  return statements;
}

// The look-ups of every page: a person's plans by time, and the rights guard's join from a person to
// the menu entries of the person's access groups (without these two, SQLite builds a temporary index
// for that join on every page).
const std::vector<std::string_view>& IndexStatements() {
  static const std::vector<std::string_view> statements = {
      "create index if not exists personPlan_person on personPlan(personID, planStartTime)",
      "create index if not exists accessPerson_person on accessPerson(accessPersonID)",
      "create index if not exists accessMenu_group on accessMenu(accessGroupID)",
  };
  return statements;
}

std::vector<std::string> AfterSeedStatements(SqlProduct product) {
  std::vector<std::string> out;
  if (product != SqlProduct::PostgreSQL) return out;
  // The seed gives its keys explicitly; an identity's sequence must then start past the highest.
  for (std::string_view sql : SchemaStatements()) {
    size_t key = sql.find(" INTEGER PRIMARY KEY");
    if (key == std::string_view::npos) continue;
    size_t open = sql.find('(');
    std::string table(sql.substr(13, open - 13));  // after "create table "
    std::string column(sql.substr(open + 1, key - open - 1));
    // The sequence's column name is taken as written, and PostgreSQL keeps unquoted names in lower case.
    std::string folded = column;
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    out.push_back("select setval(pg_get_serial_sequence('" + table + "','" + folded +
                  "'),coalesce((select max(" + column + ") from " + table + "),1))");
  }
  return out;
}

}  // namespace corvane::site
