// The public facade, used the way code outside this repository uses it.
#include <corvane/corvane.h>
#include <gtest/gtest.h>

#include "test_support.h"

using namespace corvane;

TEST(Facade, ValuesObjectsAndPages) {
  Variant s("text"), n(42), d = Variant::Date(2026, 11, 22), nul = Variant::Null(), e;
  EXPECT_EQ(s.Type(), vtString);
  EXPECT_EQ(n.Type(), vtLong);
  EXPECT_EQ(d.Type(), vtDate);
  EXPECT_EQ(nul.Type(), vtNull);
  EXPECT_EQ(e.Type(), vtEmpty);
  EXPECT_EQ(s.ToString(), "text");
  EXPECT_EQ(n.ToLong(), 42);
  EXPECT_TRUE(Variant("1").ToBool());
  EXPECT_EQ(Variant::FromBytes({1}).ToBytes().size(), 1u);
  Variant o(CreateObject("ADODB.Recordset"));
  EXPECT_EQ(o.Type(), vtObject);
  EXPECT_FALSE(o.ToObject().IsNothing());

  corvane::testing::ScratchDatabase db;
  db.Run({"create table t(id int, name varchar(20))", "insert t(id,name) values(1,'a')"});
  Object conn = CreateObject("ADODB.Connection");
  conn.Invoke("Open", {Variant(db.connectionString)});
  Object rs = o.ToObject();
  std::vector<Variant> args{Variant("select top 1 id, name from t"), Variant(conn), Variant(1)};
  rs.Invoke("Open", args);
  EXPECT_FALSE(rs.Get("EOF").ToBool());
  Args field{Variant("NAME")};
  EXPECT_EQ(rs.Invoke("Fields", field).ToObject().Get("Value").ToString(), "a");

  host::Session session;
  host::Page page(host::PageRequest{.url = "/t.asp",
                                    .queryString = "action=list",
                                    .contentType = "application/x-www-form-urlencoded",
                                    .body = "a=1"},
                  session);
  EXPECT_EQ(page.Context().Type(), vtObject);
  page.Context().ToObject().Get("Response").ToObject().Invoke("Write", {Variant("x")});
  EXPECT_EQ(page.Writes(), std::vector<std::string>{"x"});
  EXPECT_EQ(page.Output(), "x");
  session.Set("personID", Variant(3));
  EXPECT_EQ(session.Get("PERSONID").ToLong(), 3);

  try {
    CreateObject("no.such");
    FAIL();
  } catch (const Error& err) {
    EXPECT_EQ(err.Number(), 429);
    EXPECT_FALSE(err.Description().empty());
  }
}
