#include "ado/odbc/odbc_values.h"

#include <cstdlib>
#include <string>

#include "ado/field_types.h"
#include "corvane/ado.h"
#include "corvane/dates.h"

namespace corvane::ado::detail {

int TypeCodeOfSqlType(SQLSMALLINT sqlType) {
  switch (sqlType) {
    case SQL_SMALLINT:
    case SQL_TINYINT: return adSmallInt;
    case SQL_INTEGER: return adInteger;
    case SQL_BIGINT: return adBigInt;
    case SQL_DECIMAL:
    case SQL_NUMERIC: return adNumeric;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE: return adDouble;
    case SQL_BIT: return adBoolean;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIME:
    case SQL_TYPE_TIMESTAMP:
    case SQL_DATETIME:
    case SQL_TIMESTAMP: return adDBTimeStamp;
    case SQL_CHAR:
    case SQL_WCHAR: return adWChar;
    case SQL_LONGVARCHAR:
    case SQL_WLONGVARCHAR: return adLongVarWChar;
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY: return adLongVarBinary;
    default: return adVarWChar;
  }
}

namespace {

// A fixed-size value: false when it is NULL.
template <class T>
bool ReadFixed(const OdbcHandle& stmt, SQLUSMALLINT column, SQLSMALLINT cType, T& out,
               const std::string& secret) {
  SQLLEN indicator = 0;
  Check(SQLGetData(stmt.get(), column, cType, &out, sizeof(out), &indicator), stmt,
        "A value could not be read.", secret);
  return indicator != SQL_NULL_DATA;
}

// A value of any length, in pieces: text as UTF-16 code units, bytes as they are. Nullopt for NULL.
template <class Unit>
std::optional<std::basic_string<Unit>> ReadLong(const OdbcHandle& stmt, SQLUSMALLINT column,
                                                SQLSMALLINT cType, const std::string& secret) {
  constexpr size_t kUnits = 2048;
  const size_t terminator = cType == SQL_C_BINARY ? 0 : 1;
  std::basic_string<Unit> out;
  Unit buffer[kUnits];
  while (true) {
    SQLLEN indicator = 0;
    SQLRETURN rc = SQLGetData(stmt.get(), column, cType, buffer, sizeof(buffer), &indicator);
    if (rc == SQL_NO_DATA) break;
    Check(rc, stmt, "A value could not be read.", secret);
    if (indicator == SQL_NULL_DATA) return std::nullopt;
    size_t bytes = (indicator == SQL_NO_TOTAL ||
                    static_cast<size_t>(indicator) > sizeof(buffer) - terminator * sizeof(Unit))
                       ? sizeof(buffer) - terminator * sizeof(Unit)
                       : static_cast<size_t>(indicator);
    out.append(buffer, bytes / sizeof(Unit));
    if (rc == SQL_SUCCESS) break;
  }
  return out;
}

}  // namespace

Variant ReadColumn(const OdbcHandle& stmt, SQLUSMALLINT column, SQLSMALLINT sqlType, int typeCode,
                   const std::string& secret) {
  switch (typeCode) {
    case adSmallInt:
    case adInteger:
    case adBigInt: {
      SQLBIGINT v = 0;
      if (!ReadFixed(stmt, column, SQL_C_SBIGINT, v, secret)) return Variant::Null();
      return FieldValue(typeCode == adBigInt ? adInteger : typeCode, static_cast<int64_t>(v));
    }
    case adDouble: {
      double v = 0;
      if (!ReadFixed(stmt, column, SQL_C_DOUBLE, v, secret)) return Variant::Null();
      return Variant(v);
    }
    case adBoolean: {
      unsigned char v = 0;
      if (!ReadFixed(stmt, column, SQL_C_BIT, v, secret)) return Variant::Null();
      return Variant(v != 0);
    }
    case adDBTimeStamp: {
      if (sqlType == SQL_TYPE_TIME) {  // a time of day: the date part stays 1899-12-30
        SQL_TIME_STRUCT t{};
        if (!ReadFixed(stmt, column, SQL_C_TYPE_TIME, t, secret)) return Variant::Null();
        return Variant::FromDate(TimeSerial(t.hour, t.minute, t.second));
      }
      SQL_TIMESTAMP_STRUCT t{};
      if (!ReadFixed(stmt, column, SQL_C_TYPE_TIMESTAMP, t, secret)) return Variant::Null();
      return Variant::FromDate(DateTimeSerial(t.year, t.month, t.day, t.hour, t.minute, t.second));
    }
    case adNumeric: {
      std::optional<std::string> text = ReadLong<char>(stmt, column, SQL_C_CHAR, secret);
      if (!text) return Variant::Null();
      return Variant(std::strtod(text->c_str(), nullptr));
    }
    case adLongVarBinary: {
      std::optional<std::basic_string<char>> bytes = ReadLong<char>(stmt, column, SQL_C_BINARY, secret);
      if (!bytes) return Variant::Null();
      return Variant::FromBytes(Bytes(bytes->begin(), bytes->end()));
    }
    default: {
      std::optional<std::u16string> text = ReadLong<char16_t>(stmt, column, SQL_C_WCHAR, secret);
      if (!text) return Variant::Null();
      return Variant(Narrow(reinterpret_cast<const SQLWCHAR*>(text->data()), text->size()));
    }
  }
}

}  // namespace corvane::ado::detail
