// ADODB.Connection, ADODB.Recordset and ADODB.Field as scripts see them: their members, dispatch ids
// and the calls behind them. Each class's default member has id 0: Connection's ConnectionString,
// Recordset's Fields (rs("name")) and Field's Value.
#include <memory>

#include "ado/access.h"
#include "corvane/ado.h"
#include "corvane/error.h"
#include "runtime/members.h"

namespace corvane::ado {

namespace {

constexpr int32_t kClosed = 0, kOpen = 1;  // ObjectStateEnum

// An optional text argument (user name, password): "" when left out.
std::string OptionalText(const Args& args, size_t i) {
  const Variant& v = OptionalArg(args, i);
  return v.IsMissing() ? std::string() : v.Text();
}

// Execute(CommandText, [RecordsAffected], [Options]): a statement that returns rows gives an open
// Recordset on it; any other statement is run and gives a closed one, with the number of rows it
// changed in RecordsAffected (-1 for a query).
Variant Execute(Connection& connection, Args& args) {
  std::string text = Arg(args, 0).Text();
  if (!connection.IsOpen()) throw Error::ConnectionUnusable();
  auto recordset = std::make_shared<Recordset>();
  int64_t affected = detail::Access::Of(*recordset).Open(detail::Access::Of(connection).session, text);
  if (args.size() > 1 && !args[1].IsMissing()) args[1] = Variant(affected);
  return Variant(Object(recordset));
}

}  // namespace

const ClassInfo& ConnectionClass() {
  static const ClassInfo info{
      .className = "Connection",
      .progID = "ADODB.Connection",
      .clsid = "{00000514-0000-0010-8000-00aa006d2ea4}",
      .iid = "{00000550-0000-0010-8000-00aa006d2ea4}",
      .members =
          {
              ReadWrite<Connection>(
                  "ConnectionString", 0, [](Connection& c, Args&) { return c.ConnectionString(); },
                  [](Connection& c, Args&, const Variant& v) { c.SetConnectionString(v.Text()); }),
              Method<Connection>("Open", 1,
                                 [](Connection& c, Args& a) {
                                   const Variant& cs = OptionalArg(a, 0);
                                   c.Open(cs.IsMissing() ? c.ConnectionString() : cs.Text(),
                                          OptionalText(a, 1), OptionalText(a, 2), OptionalLong(a, 3, -1));
                                 }),
              Method<Connection>("Close", 2, [](Connection& c, Args&) { c.Close(); }),
              Method<Connection>("Execute", 3, [](Connection& c, Args& a) { return Execute(c, a); }),
              Reader<Connection>("State", 4, [](Connection& c) { return c.IsOpen() ? kOpen : kClosed; }),
          },
      .create = Create<Connection>,
  };
  return info;
}

const ClassInfo& RecordsetClass() {
  static const ClassInfo info{
      .className = "Recordset",
      .progID = "ADODB.Recordset",
      .clsid = "{00000535-0000-0010-8000-00aa006d2ea4}",
      .iid = "{00000556-0000-0010-8000-00aa006d2ea4}",
      .members =
          {
              ReadWrite<Recordset>(
                  "Fields", 0, [](Recordset& r, Args& a) { return Object(r.FieldObject(Arg(a, 0))); },
                  [](Recordset&, Args&, const Variant&) { throw Error::RecordsetReadOnly(); }),
              Method<Recordset>("Open", 1,
                                [](Recordset& r, Args& a) {
                                  r.Open(Arg(a, 0).Text(), OptionalArg(a, 1), OptionalLong(a, 2, -1),
                                         OptionalLong(a, 3, -1), OptionalLong(a, 4, -1));
                                }),
              Method<Recordset>("Close", 2, [](Recordset& r, Args&) { r.Close(); }),
              Reader<Recordset>("EOF", 3, [](Recordset& r) { return r.Eof(); }),
              Reader<Recordset>("BOF", 4, [](Recordset& r) { return r.Bof(); }),
              Method<Recordset>("MoveNext", 5, [](Recordset& r, Args&) { r.MoveNext(); }),
              Method<Recordset>("MoveFirst", 6, [](Recordset& r, Args&) { r.MoveFirst(); }),
              ReadWrite<Recordset>(
                  "PageSize", 7, [](Recordset& r, Args&) { return r.PageSize(); },
                  [](Recordset& r, Args&, const Variant& v) { r.SetPageSize(v.ToLong()); }),
              ReadWrite<Recordset>(
                  "AbsolutePage", 8, [](Recordset& r, Args&) { return r.AbsolutePage(); },
                  [](Recordset& r, Args&, const Variant& v) { r.SetAbsolutePage(v.ToLong()); }),
              Reader<Recordset>("PageCount", 9, [](Recordset& r) { return r.PageCount(); }),
              Reader<Recordset>("RecordCount", 10, [](Recordset& r) { return r.RecordCount(); }),
              Reader<Recordset>("State", 11, [](Recordset& r) { return r.IsOpen() ? kOpen : kClosed; }),
              Reader<Recordset>("Source", 12, [](Recordset& r) { return r.Source(); }),
          },
      .create = Create<Recordset>,
  };
  return info;
}

const ClassInfo& FieldClass() {
  static const ClassInfo info{
      .className = "Field",
      .iid = "{00000569-0000-0010-8000-00aa006d2ea4}",
      .members =
          {
              ReadWrite<Field>(
                  "Value", 0, [](Field& f, Args&) { return f.Value(); },
                  [](Field&, Args&, const Variant&) { throw Error::RecordsetReadOnly(); }),
              Reader<Field>("Type", 1, [](Field& f) { return f.Type(); }),
              Reader<Field>("Name", 2, [](Field& f) { return f.Name(); }),
          },
  };
  return info;
}

const ClassInfo& Connection::Info() const { return ConnectionClass(); }
const ClassInfo& Recordset::Info() const { return RecordsetClass(); }
const ClassInfo& Field::Info() const { return FieldClass(); }

}  // namespace corvane::ado
