#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "corvane/ado.h"
#include "corvane/dates.h"
#include "corvane/registry.h"
#include "site.h"
#include "test_support.h"

namespace corvane::site {
namespace {

int32_t Count(const std::string& connStr, const std::string& sql) {
  ado::Recordset rs;
  rs.Open(sql, Variant(connStr), 3);
  int32_t n = rs.Field(0).ToLong();
  rs.Close();
  return n;
}

// The password column by login name; Null as "<null>".
std::map<std::string, std::string> Passwords(const std::string& connStr) {
  std::map<std::string, std::string> out;
  ado::Recordset rs;
  for (rs.Open("select loginName,password from person", Variant(connStr), 3); !rs.Eof(); rs.MoveNext())
    out[rs.Field(0).ToString()] = rs.Field(1).IsNull() ? "<null>" : rs.Field(1).ToString();
  rs.Close();
  return out;
}

bool Verifies(const std::string& hash, const char* password) {
  return CreateObject("corvane.Password").Invoke("Verify", {Variant(hash), Variant(password)}).ToBool();
}

TEST(SeedTest, AFreshDatabaseIsSeededOnceWithTheOfficesData) {
  corvane::testing::ScratchDatabase db;
  ASSERT_TRUE(PrepareDatabase(db.connectionString));
  EXPECT_FALSE(PrepareDatabase(db.connectionString));  // a second start keeps the data

  const std::string& c = db.connectionString;
  EXPECT_EQ(Count(c, "select count(*) from systems"), 2);
  EXPECT_EQ(Count(c, "select count(*) from person where personGroupID<>7"), 30);
  EXPECT_GE(Count(c, "select count(*) from contact"), 500);
  EXPECT_EQ(Count(c,
                  "select count(*) from person p left join personDuty d on p.dutyID=d.dutyID "
                  "where d.dutyID is null"),
            0);

  // Plans lie within a month around today, and every plan's location exists.
  std::string today = DateText(DateOnly(Now()));
  std::string from = DateText(AddDays(DateOnly(Now()), -21)), to = DateText(AddDays(DateOnly(Now()), 23));
  int32_t plans = Count(c, "select count(*) from personPlan");
  EXPECT_GT(plans, 300);
  EXPECT_EQ(Count(c, "select count(*) from personPlan where planStartTime>='" + from +
                         "' and planEndTime<='" + to + "'"),
            plans);
  EXPECT_EQ(Count(c,
                  "select count(*) from personPlan p left join planAddr a on p.planAddrID=a.planAddrID "
                  "where a.planAddrID is null"),
            0);
  // Someone has a public plan over today, as the scheduler's text comparison of dates sees it.
  EXPECT_GT(Count(c, "select count(*) from personPlan where planFlagID=1 and planStartTime<='" + today +
                         "' and planEndTime>='" + today + "'"),
            0);

  // Three menu levels; every right names a menu of the group's own system.
  EXPECT_GT(Count(c,
                  "select count(*) from menu m3, menu m2, menu m1 where m3.menuFatherID=m2.menuID and "
                  "m2.menuFatherID=m1.menuID and m1.menuFatherID is null"),
            0);
  EXPECT_EQ(
      Count(c,
            "select count(*) from accessMenu r, AccessGroup g, menu m where r.accessGroupID=g.accessGroupID "
            "and r.accessMenuID=m.menuID and m.systemID<>g.systemID"),
      0);
  // One group per person: the rights of several groups would run together in the session.
  EXPECT_EQ(Count(c,
                  "select count(*) from (select accessPersonID from accessPerson group by accessPersonID "
                  "having count(*)>1)"),
            0);

  // Passwords are kept as hashes, each with its own salt; the accounts keep their documented ones.
  EXPECT_EQ(Count(c, "select count(distinct password) from person where password like '$argon2id$%'"), 31);
  std::map<std::string, std::string> passwords = Passwords(c);
  EXPECT_TRUE(Verifies(passwords["sysop"], "sysop"));
  EXPECT_TRUE(Verifies(passwords["xutao"], "123456"));
  EXPECT_FALSE(Verifies(passwords["zhangwei"], "sysop"));
}

TEST(SeedTest, AnEarlierDatabaseGainsTheIndexesOfTheTablesItHas) {
  corvane::testing::ScratchDatabase db;
  db.Run({"create table person(personID INTEGER PRIMARY KEY, loginName VARCHAR(50), password VARCHAR(50))",
          "create table accessPerson(accessGroupID INT, accessPersonID INT)"});
  EXPECT_FALSE(PrepareDatabase(db.connectionString));
  EXPECT_EQ(Count(db.connectionString, "select count(*) from sqlite_master where type='index'"), 1);
  EXPECT_FALSE(PrepareDatabase(db.connectionString));  // made once
}

TEST(SeedTest, PlainTextPasswordsOfAnEarlierDatabaseBecomeHashesAtStart) {
  corvane::testing::ScratchDatabase db;
  const std::string hashed =
      "$argon2id$v=19$m=4096,t=3,p=1$MgpkOlZ6XNsS3SmFJBzV7g$nb0l5UifAqJcauB77OhXMOubuSMFLBTRrgugffXOCn4";
  db.Run({"create table person(personID INTEGER PRIMARY KEY, loginName VARCHAR(50), password VARCHAR(50))",
          "insert into person values(1,'sysop','sysop')", "insert into person values(2,'lina','密码 1')",
          "insert into person values(3,'xutao','" + hashed + "')",
          "insert into person values(4,'nobody',NULL)", "insert into person values(5,'blank','')"});
  EXPECT_FALSE(PrepareDatabase(db.connectionString));  // not seeded: the data stays

  std::map<std::string, std::string> passwords = Passwords(db.connectionString);
  // clang-format off
  const struct { const char* login; const char* password; } cases[] = {
      {"sysop", "sysop"}, {"lina", "密码 1"}, {"xutao", "sysop"}, {"blank", ""},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_TRUE(Verifies(passwords[c.login], c.password)) << c.login;
  EXPECT_EQ(passwords["xutao"], hashed);  // a hash is kept as it is
  EXPECT_EQ(passwords["nobody"], "<null>");

  PrepareDatabase(db.connectionString);  // a second start hashes nothing again
  EXPECT_EQ(Passwords(db.connectionString), passwords);
}

}  // namespace
}  // namespace corvane::site
