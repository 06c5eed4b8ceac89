// ADODB.Connection, ADODB.Recordset and ADODB.Field as scripts reach them: late bound, by name or id.
#include "ado/data_layer_fixture.h"
#include "corvane/registry.h"

namespace corvane::ado::testing {

using LateBoundAdo = DataLayerTest;

static Variant ValueOf(Object rs, Variant which) {
  Args args{std::move(which)};
  return rs.Get("Fields", args).ToObject().Get("Value");
}

TEST_P(LateBoundAdo, ConnectionAndRecordsetMembers) {
  Object conn = CreateObject("{00000514-0000-0010-8000-00AA006D2EA4}");
  conn.Put("ConnectionString", Variant(cs));
  conn.Invoke("Open");  // on the ConnectionString
  EXPECT_EQ(conn.Get("State"), Variant(int32_t{1}));
  conn.Invoke("Execute", {Variant("create table menu(menuID int primary key, menuname varchar(20))")});
  Args change{Variant("insert menu(menuID,menuname) values(1,'首页'),(2,'日程')"), Variant(),
              Variant(int32_t{-1})};
  EXPECT_EQ(conn.Invoke("Execute", change).ToObject().Get("State"), Variant(int32_t{0}));  // no rows
  EXPECT_EQ(change[1], Variant(int32_t{2}));                                               // RecordsAffected
  Args query{Variant("select menuname from menu where menuID=2"), Variant()};
  EXPECT_EQ(ValueOf(conn.Invoke("Execute", query).ToObject(), Variant(int32_t{0})), Variant("日程"));
  EXPECT_EQ(query[1], Variant(int32_t{-1}));

  const std::string sql = "select top 5 * from menu order by menuID";
  Object rs = CreateObject("adodb.recordset");
  rs.Invoke("Open", {Variant(sql), Variant(conn), Variant(1), Variant(-1), Variant(-1)});
  EXPECT_EQ(rs.Get("Source"), Variant(sql));
  Args name{Variant("MENUNAME")};
  Object field = rs.Get("Fields", name).ToObject();
  EXPECT_EQ(field.Get("Value"), Variant("首页"));
  EXPECT_EQ(field.Get("Name"), Variant("menuname"));
  EXPECT_EQ(field.Get("Type"), Variant(int32_t{adVarWChar}));
  Args byDefault{Variant("menuID")};  // rs("menuID")
  EXPECT_EQ(rs.Invoke(0, byDefault, InvokeKind::PropertyGet).ToObject().Get("Value"), Variant(int32_t{1}));
  for (int row = 0; row < 2; ++row) rs.Invoke("MoveNext");
  EXPECT_EQ(rs.Get("EOF"), Variant(true));
  Object atEof = rs.Get("Fields", name).ToObject();
  EXPECT_EQ(ErrorNumber([&] { atEof.Get("Value"); }), 3021);

  conn.Invoke("Close");
  EXPECT_EQ(conn.Get("State"), Variant(int32_t{0}));
  EXPECT_EQ(ErrorNumber([&] { conn.Invoke("Execute", {Variant("select 1")}); }), 3709);
}

CORVANE_ON_EVERY_BACKEND(LateBoundAdo);

}  // namespace corvane::ado::testing
