// ADODB.Connection, late-bound: Open, Close, Execute, State, ConnectionString.
#include <memory>

#include "ado/ado_dispatch.h"
#include "ado/ado_errors.h"
#include "ado/connection_impl.h"
#include "ado/recordset_impl.h"
#include "corvane/ado.h"

namespace corvane::ado {

using namespace detail;

const ClassInfo& ConnectionClass() {
  static const ClassInfo info{
      .className = "Connection",
      .progID = "ADODB.Connection",
      .clsid = "{00000514-0000-0010-8000-00aa006d2ea4}",
      .iid = "{00000550-0000-0010-8000-00aa006d2ea4}",
      .members = {{"ConnectionString", kConnectionConnectionString}, {"Open", kConnectionOpen},
                  {"Close", kConnectionClose}, {"Execute", kConnectionExecute},
                  {"State", kConnectionState}},
      .create = [] { return Object(std::make_shared<Connection>()); },
  };
  return info;
}

const ClassInfo& Connection::Info() const { return ConnectionClass(); }

namespace {

// Execute(CommandText, [RecordsAffected], [Options]): a statement that returns rows gives an open
// Recordset on it; any other statement is run and gives a closed one, with the number of rows it
// changed in RecordsAffected (-1 for a query).
Variant ExecuteLateBound(Connection& connection, Args& args) {
  std::string text = Arg(args, 0).Text();
  if (!connection.IsOpen()) throw ConnectionUnusable();
  std::shared_ptr<Session> session = connection.impl()->session;
  std::string adapted = session->Adapt(text);
  std::unique_ptr<Cursor> cursor = session->Prepare(adapted);
  auto recordset = std::make_shared<Recordset>();
  int64_t affected = -1;
  if (cursor->ColumnCount() > 0)
    recordset->impl()->Start(session, std::move(adapted), std::move(cursor));
  else
    affected = cursor->Run();
  if (args.size() > 1 && !args[1].IsMissing())
    args[1] = Variant(affected);
  return Variant(Object(recordset));
}

}  // namespace

Variant Connection::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kConnectionConnectionString:
      if (IsPropertyWrite(kind)) {
        if (IsOpen()) throw ObjectIsOpen();
        connectionString_ = Arg(args, 0).Text();
        return {};
      }
      return Variant(connectionString_);
    case kConnectionOpen: {
      const Variant& cs = OptionalArg(args, 0);
      std::string text = cs.IsMissing() ? connectionString_ : cs.Text();
      Open(text, OptionalText(args, 1), OptionalText(args, 2), OptionalLong(args, 3));
      return {};
    }
    case kConnectionClose: Close(); return {};
    case kConnectionExecute: return ExecuteLateBound(*this, args);
    case kConnectionState: return Variant(IsOpen() ? kStateOpen : kStateClosed);
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane::ado
