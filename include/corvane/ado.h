// Data access: Connection and Recordset, as the platform's ADO objects behave for the components.
//
// Connection strings are ADO-style "key=value;" lists:
//   "Provider=SQLite;Data Source=path/to/file.db"   the embedded default (WAL mode, busy timeout)
// A bare path ending in .db / .sqlite is taken as a SQLite file too.
//
// The components write SQL Server's dialect; before a statement reaches SQLite the dialect adapter
// rewrites exactly these forms: "select top N ..." (-> "... limit N"), "insert T(...)" (-> "insert
// into"), "delete T where" (-> "delete from"), and "alias=expr" items of a select list (-> "expr as
// alias"). Everything else passes unchanged. One call runs one statement: text after a ";" that is not
// blank raises an error and nothing of it runs. A statement the database rejects raises
// Error::Database with the driver's message and changes nothing.
//
// Field types are the ADO type codes, taken from the declared column types:
//   INT, INTEGER, BIGINT*, MEDIUMINT -> 3 adInteger (Long values; BIGINT beyond 32 bits -> Double)
//   SMALLINT, TINYINT -> 2 adSmallInt (Integer values)     BIT, BOOL* -> 11 adBoolean
//   REAL, FLOAT, DOUBLE -> 5 adDouble                      DECIMAL, NUMERIC, MONEY -> 131 adNumeric
//   DATETIME, DATE, TIMESTAMP, SMALLDATETIME -> 135 adDBTimeStamp (Date values)
//   CHAR, NCHAR -> 130 adWChar; TEXT, NTEXT, CLOB -> 203 adLongVarWChar
//   BLOB, IMAGE, VARBINARY -> 205 adLongVarBinary (byte arrays)
//   VARCHAR, NVARCHAR, anything else -> 202 adVarWChar
// A column without a declared type (an expression) takes the type of the value it holds in the
// current row: 3 and a Long for integers that fit, 5 and a Double for other numbers, 205 for bytes,
// 202 and text otherwise (also at EOF). A DATETIME text that is not a date stays text.
// A NULL value is a Null Variant whatever the type.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane::ado {

namespace detail {
class ConnectionImpl;
class RecordsetImpl;
struct Access;  // the data layer's own way in (drivers, late binding)
}  // namespace detail

class Field;

enum TypeCode : int {
  adEmpty = 0,
  adSmallInt = 2,
  adInteger = 3,
  adDouble = 5,
  adBoolean = 11,
  adBigInt = 20,
  adNumeric = 131,
  adWChar = 130,
  adDBTimeStamp = 135,
  adVarWChar = 202,
  adLongVarWChar = 203,
  adLongVarBinary = 205,
};
enum CursorType : int {
  adOpenUnspecified = -1,
  adOpenForwardOnly = 0,
  adOpenKeyset = 1,
  adOpenDynamic = 2,
  adOpenStatic = 3
};

class Connection : public Dispatch {
 public:
  Connection();
  ~Connection() override;
  const ClassInfo& Info() const override;

  // Opens the connection; a pooled handle for the same string is reused. Raises on a bad string or an
  // unreachable database. Opening an open connection raises 3705.
  void Open(const std::string& connectionString, const std::string& userID = "",
            const std::string& password = "", int options = -1);
  // Closes and returns the handle to the pool. Closing a closed connection raises 3704. A recordset
  // still open on the connection keeps the handle (and stays readable) until it closes itself.
  void Close();
  bool IsOpen() const;
  const std::string& ConnectionString() const;
  // Runs one statement that returns no rows; answers the number of rows it changed (0 for a
  // statement that changes none). On a closed connection raises 3709.
  int32_t Execute(std::string_view sql, int options = -1);

  // A property of the closed connection: the string Open uses when it is given none.
  void SetConnectionString(std::string connectionString);

 private:
  friend struct detail::Access;
  std::shared_ptr<detail::ConnectionImpl> impl_;
  std::string connectionString_;
};

class Recordset : public Dispatch {
 public:
  Recordset();
  ~Recordset() override;
  const ClassInfo& Info() const override;

  // Opens on a select statement. `activeConnection` is an open Connection (an Object Variant) or a
  // connection string (a pooled connection is opened for the recordset's life). Cursor types 1 and
  // 3 (and -1, 0, 2) are accepted and all read the same way; others raise 3001. Opening an open
  // recordset raises 3705; a closed connection or no connection raises 3709; a statement the
  // database rejects raises Error::Database and leaves the recordset closed. Open reads the first row
  // only: rows are read one by one as the recordset moves. A statement that returns no rows (an
  // insert) is run and the recordset stays closed.
  void Open(std::string_view source, const Variant& activeConnection, int cursorType = -1, int lockType = -1,
            int options = -1);
  void Open(std::string_view source, const std::shared_ptr<Connection>& connection, int cursorType = -1,
            int lockType = -1, int options = -1);
  void Close();  // raises 3704 when not open
  bool IsOpen() const;
  // The statement the recordset is open on, as the caller gave it (before the dialect adapter saw it);
  // "" when closed.
  const std::string& Source() const;

  // "EOF" is a macro of <cstdio>, hence the spelling; late-bound callers use "EOF".
  bool Eof() const;
  bool Bof() const;  // true only for an empty result: the recordset never moves before its first row
  void MoveNext();   // raises 3021 at EOF
  void MoveFirst();  // runs the query again

  // The current row's field, by name (case-insensitive) or by 0-based index. At EOF raises 3021; an
  // unknown name or index raises 3265.
  Variant Field(std::string_view name) const;
  Variant Field(int index) const;
  int FieldType(std::string_view name) const;
  int FieldType(int index) const;
  std::string FieldName(int index) const;
  int FieldCount() const;

  // Paging: PageSize defaults to 10 (below 1 raises 3001). Setting AbsolutePage (1-based; below 1
  // raises 3001) runs the query again from the first row of that page, so the rows of earlier pages
  // are never read; past the last row the recordset is at EOF. AbsolutePage answers the page of the
  // current row, -3 (adPosEOF) at EOF. RecordCount and PageCount (0 when empty) come from one count
  // of the query, taken when first asked for and kept.
  void SetPageSize(int32_t n);
  int32_t PageSize() const;
  void SetAbsolutePage(int32_t page);
  int32_t AbsolutePage() const;
  int32_t PageCount() const;
  int32_t RecordCount() const;

  // The Field object of Fields(name or index) of the current row; at EOF one whose Value raises 3021.
  std::shared_ptr<ado::Field> FieldObject(const Variant& nameOrIndex) const;

 private:
  friend struct detail::Access;
  std::unique_ptr<detail::RecordsetImpl> impl_;
};

// The late-bound Field object that Recordset.Fields(x) returns: Value, Type, Name.
class Field : public Dispatch {
 public:
  Field(std::string name, int type, Variant value)
      : name_(std::move(name)), type_(type), value_(std::move(value)) {}
  // A field read while the recordset has no current record (at EOF): Name and Type answer, Value
  // raises 3021.
  static std::shared_ptr<Field> WithoutRecord(std::string name, int type);
  const ClassInfo& Info() const override;

  const std::string& Name() const { return name_; }
  int Type() const { return type_; }
  Variant Value() const;  // raises 3021 for a field without a record

 private:
  std::string name_;
  int type_;
  Variant value_;
  bool hasRecord_ = true;
};

const ClassInfo& ConnectionClass();
const ClassInfo& RecordsetClass();
const ClassInfo& FieldClass();

// How many statements other than queries this process has run to their end, on any connection. It
// moves after each one, so what was read before it moved may be stale; a cache of database
// contents keeps the value it read them under and reads again once it differs.
uint64_t ChangeCount();

}  // namespace corvane::ado
