#include <gtest/gtest.h>

#include <memory>

#include "corvane/ado.h"
#include "corvane/dates.h"
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
}

}  // namespace
}  // namespace corvane::site
