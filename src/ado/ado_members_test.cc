#include <gtest/gtest.h>

#include "corvane/registry.h"
#include "corvane/ado.h"
#include "corvane/error.h"
#include "corvane/object.h"
#include "test_support.h"

namespace corvane::ado {
namespace {

using corvane::testing::ScratchDatabase;

class LateBoundAdo : public ::testing::Test {
 protected:
  void SetUp() override {
    db_.Run({"create table menu(menuID integer primary key, menuName nvarchar(20), opened datetime)",
             "insert into menu values(1,'首页','2026-11-02')", "insert into menu values(2,'日程',null)"});
  }
  ScratchDatabase db_;
};

TEST_F(LateBoundAdo, RecordsetOpenEofAndFieldsValue) {
  Object rs = CreateObject("ADODB.Recordset");
  rs.Invoke("Open", {Variant("select * from menu order by menuID"), Variant(db_.connectionString),
                     Variant(int32_t{1}), Variant(int32_t{-1}), Variant(int32_t{-1})});
  EXPECT_EQ(rs.Get("State"), Variant(int32_t{1}));
  EXPECT_EQ(rs.Get("EOF"), Variant(false));
  Args name{Variant("MENUNAME")};
  Object field = rs.Get("Fields", name).ToObject();
  EXPECT_EQ(field.Get("Value"), Variant("首页"));
  EXPECT_EQ(field.Get("Name"), Variant("menuName"));
  EXPECT_EQ(field.Get("Type"), Variant(int32_t{202}));
  Args byIndex{Variant(int16_t{2})};
  EXPECT_EQ(rs.Get("Fields", byIndex).ToObject().Get("Value"), Variant::Date(2026, 11, 2));
  // Fields is the default member (id 0): rs("menuID").
  Args byDefault{Variant("menuID")};
  EXPECT_EQ(rs.Invoke(0, byDefault, InvokeKind::PropertyGet).ToObject().Get("Value"), Variant(int32_t{1}));
  rs.Invoke("MoveNext");
  EXPECT_TRUE(rs.Get("Fields", name).ToObject().Get("Value") == Variant("日程"));
  rs.Invoke("MoveNext");
  EXPECT_EQ(rs.Get("EOF"), Variant(true));
  Object atEof = rs.Get("Fields", name).ToObject();
  EXPECT_EQ(atEof.Get("Type"), Variant(int32_t{202}));
  try {
    atEof.Get("Value");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 3021);
  }
  rs.Invoke("Close");
  EXPECT_EQ(rs.Get("State"), Variant(int32_t{0}));
}

TEST_F(LateBoundAdo, RecordsetOnAConnectionObjectWithPaging) {
  Object conn = CreateObject("{00000514-0000-0010-8000-00AA006D2EA4}");
  conn.Invoke("Open", {Variant(db_.connectionString), Variant(""), Variant(""), Variant(int32_t{-1})});
  Object rs = CreateObject("adodb.recordset");
  rs.Invoke("Open", {Variant("select menuID from menu"), Variant(conn), Variant(int32_t{3})});
  rs.Put("PageSize", Variant(int16_t{1}));
  EXPECT_EQ(rs.Get("PageCount"), Variant(int32_t{2}));
  EXPECT_EQ(rs.Get("RecordCount"), Variant(int32_t{2}));
  rs.Put("AbsolutePage", Variant(int32_t{2}));
  EXPECT_EQ(rs.Get("AbsolutePage"), Variant(int32_t{2}));
  Args first{Variant(int32_t{0})};
  EXPECT_EQ(rs.Get("Fields", first).ToObject().Get("Value"), Variant(int32_t{2}));
}

TEST_F(LateBoundAdo, ConnectionExecuteWritesRecordsAffected) {
  Object conn = CreateObject("ADODB.Connection");
  conn.Put("ConnectionString", Variant(db_.connectionString));
  conn.Invoke("Open");
  EXPECT_EQ(conn.Get("State"), Variant(int32_t{1}));
  Args args{Variant(" delete menu where menuID>0"), Variant(), Variant(int32_t{-1})};
  Object result = conn.Invoke("Execute", args).ToObject();
  EXPECT_EQ(args[1], Variant(int32_t{2}));
  EXPECT_EQ(result.Get("State"), Variant(int32_t{0}));  // no rows: a closed recordset

  conn.Invoke("Execute", {Variant("insert  menu(menuID,menuName) values(9,'x')")});
  Object rows = conn.Invoke("Execute", {Variant("select menuName from menu")}).ToObject();
  Args zero{Variant(int32_t{0})};
  EXPECT_EQ(rows.Get("Fields", zero).ToObject().Get("Value"), Variant("x"));
  conn.Invoke("Close");
  try {
    conn.Invoke("Execute", {Variant("select 1")});
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 3709);
  }
}

TEST_F(LateBoundAdo, ClassesAreRegisteredWithTheirIds) {
  const ClassInfo* rs = FindClass("{00000535-0000-0010-8000-00AA006D2EA4}");
  ASSERT_NE(rs, nullptr);
  EXPECT_EQ(rs->progID, "ADODB.Recordset");
  EXPECT_EQ(rs->DispIdOf("fields"), 0);
  for (const char* member : {"Open", "Close", "EOF", "BOF", "MoveNext", "MoveFirst", "PageSize",
                             "AbsolutePage", "PageCount", "RecordCount", "State"})
    EXPECT_GT(rs->DispIdOf(member), 0) << member;
  const ClassInfo* conn = FindClass("adodb.connection");
  ASSERT_NE(conn, nullptr);
  for (const char* member : {"Open", "Close", "Execute", "State", "ConnectionString"})
    EXPECT_GE(conn->DispIdOf(member), 0) << member;
}

}  // namespace
}  // namespace corvane::ado
