// DNA end to end on every backend: the list and form pages the SQLite tests hold in golden files come
// out byte for byte the same from PostgreSQL and MariaDB, and insert, update, delete and search
// change the server's rows as they change SQLite's.
#include <gtest/gtest.h>

#include "ado/data_layer_fixture.h"
#include "dna/dna_test_support.h"

namespace corvane::testing {

class DnaOnEveryBackend : public ado::testing::DataLayerTest {
 protected:
  void Seed() override {
    Run({"create table staff(id integer primary key, name varchar(20), dept int, pay int, hired datetime)",
         "insert staff(id,name,dept,pay,hired) values(1,'张三',1,3000,'2026-01-05'),(2,'李四',2,3500,"
         "'2026-02-10'),(3,'王五',1,2800,'2026-03-15'),(4,'赵六',2,4100,'2026-04-20'),(5,'钱七',1,3900,"
         "'2026-05-25')",
         "create table dept(deptName varchar(20), deptID int)",
         "insert dept(deptName,deptID) values('办公室',1),('财务科',2)"});
    // Rows seeded with their keys leave PostgreSQL's identity behind them.
    if (GetParam().name == "PostgreSQL") Run({"select setval(pg_get_serial_sequence('staff', 'id'), 5)"});
    db.connectionString = cs;
  }
  host::Session Fresh(std::initializer_list<std::pair<const char*, const char*>> values = {}) {
    host::Session s;
    s.Set("strURL", Variant("/staff.asp"));
    s.Set("sc_curdate", Variant("2026-11-02"));
    for (const auto& [key, value] : values) s.Set(key, Variant(value));
    return s;
  }
  std::string Value(const std::string& sql) const {
    ado::Recordset rs;
    rs.Open(sql, Variant(cs));
    return rs.Eof() ? "<none>" : rs.Field(0).Text();
  }
  ScratchDatabase db;  // its connection string is the backend's
};

TEST_P(DnaOnEveryBackend, ListAndFormPagesAsOnSqlite) {
  const std::string form = "select id,hired,name,dept,hired,pay from staff ";
  // clang-format off
  const std::tuple<const char*, host::Session, const char*, std::string> cases[] = {
      {"list_first_of_three.html", Fresh({{"strOrder", "name DESC "}, {"strOrder2", "dept"}}), "page=1&pageSize=2", kStaffSQL},
      {"list_last_page.html", Fresh({{"strOrder", "dept"}, {"strOrder2", "name DESC "}}), "page=3&pageSize=2", kStaffSQL},
      {"form_update.html", Fresh(), "action=update&id=3", form + "where pay>0"},
      {"form_search.html", Fresh(), "action=search&name=%E5%BC%A0&dept=2", form + "where pay>0"},
  };
  // clang-format on
  for (const auto& [golden, session, query, sql] : cases) {
    DnaPage p(session, query);
    p.Open(db, sql, sql.starts_with(kStaffSQL) ? "编号,姓名,部门" : "编号,入职,姓名,部门,入职,工资");
    p.dna.SetCodeSQL(Variant(Replace(p.dna.strItemCodeSQL, "dept", "select deptName,deptID from dept")));
    if (std::string(golden).starts_with("list")) {
      p.dna.DispList();
    } else {
      Variant action(p.dna.strAction);
      p.dna.DispForm(action);
    }
    EXPECT_EQ(p.End(), Golden(std::string("src/dna/golden/") + golden)) << golden;
  }
}

TEST_P(DnaOnEveryBackend, InsertUpdateDeleteAndSearch) {
  host::Session session = Fresh();
  const std::string sql = "select id,name,dept,pay,hired from staff";
  auto post = [&](const std::string& body, const std::string& query = "") {
    auto p = std::make_unique<DnaPage>(session, query, body);
    p->Open(db, sql);
    return p;
  };
  auto insert = post("action=insert2&id=99&name=%E5%AD%99%E5%85%AB&dept=2&pay=+&hired=2026-06-01");
  EXPECT_NO_THROW(insert->dna.Insert()) << "insert";
  EXPECT_EQ(insert->End(), "插入成功");
  EXPECT_EQ(Value("select name from staff where id=6 and pay is null and hired='2026-06-01'"), "孙八");

  auto update = post("name=%E6%96%B0%E5%90%8D&pay=5000&dept=", "action=update2&id=3");
  EXPECT_NO_THROW(update->dna.Update()) << "update";
  update->End();
  EXPECT_EQ(Value("select name from staff where pay=5000"), "新名");

  auto remove = post("", "action=delete&id=1");
  remove->dna.nItemKeyValue = Variant(1);
  EXPECT_EQ(remove->dna.Delete(), Variant(true));
  remove->End();
  EXPECT_EQ(Value("select count(*) from staff"), "5");

  auto search = post("action=search2&id=4&name=+%E9%92%B1+&dept=1&pay=");
  EXPECT_NO_THROW(search->dna.search()) << "search";
  search->End();
  EXPECT_EQ(session.Get("strSearch"), Variant("name like '%钱%' and dept=1 "));
  DnaPage list(session, "page=1");
  list.Open(db);
  EXPECT_NO_THROW(list.dna.DispList()) << "list";
  std::string page = list.End();
  EXPECT_THAT(page, ::testing::HasSubstr("钱七"));
  EXPECT_THAT(page, ::testing::Not(::testing::HasSubstr("赵六")));
}

CORVANE_ON_EVERY_BACKEND(DnaOnEveryBackend);

}  // namespace corvane::testing
