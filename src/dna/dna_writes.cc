// The writes of a posted form: insert, update and delete statements joined from the request's values,
// and the search condition that the list applies. The key field never takes part in a write; integer
// fields (ADO type 3) are joined unquoted, everything else between single quotes, nothing escaped.
#include <string>

#include "corvane/ado.h"
#include "corvane/host.h"
#include "corvane/text.h"
#include "dna/dna.h"

namespace corvane {

namespace {

ado::Connection& Conn(const std::shared_ptr<ado::Connection>& objConn) {
  if (!objConn) throw Error::ObjectNotSet();
  return *objConn;
}

bool IsIntegerType(const Variant& type) { return EqualsLiteral(type, ado::adInteger); }

// Drops the last character, as Left(s, Len(s) - 1) does.
std::string DropLast(const std::string& s, int32_t count = 1) { return Left(s, Len(s) - count); }

}  // namespace

bool DNA::IsKeyField(int32_t i) const { return aEnglish[i] == strItemKeyName; }

bool DNA::IsGiven(const Variant& v) { return !Trim(v.Text()).empty(); }

// " where key = value", or the object's filter and the key; the key value is never quoted.
std::string DNA::KeyCondition() const {
  const std::string key = strItemKeyName + " = " + nItemKeyValue.Text();
  return strWhere.empty() ? " where " + key : " " + strWhere + " and " + key;
}

Variant DNA::Insert() {
  ReadFieldTypes();
  std::string cols, vals;
  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) {
    if (IsKeyField(i) || !IsGiven(aValue[i])) continue;
    cols += aEnglish[i] + ",";
    const bool quoted = !IsIntegerType(aFieldType[i]);
    if (quoted) vals += "'";
    vals += aValue[i].Text();
    vals += quoted ? "'," : ",";
  }
  if (cols.empty()) {
    Out().Write("输入为空");
    return {};
  }
  if (bSystemID) {
    cols += "systemID,";
    vals += std::to_string(nSystemID) + ",";
  }
  const std::string sql =
      " insert " + strTable + "(" + DropLast(cols) + ")" + " values(" + DropLast(vals) + ")";
  Conn(objConn).Execute(sql, -1);
  Out().Write("插入成功");
  return {};
}

Variant DNA::Update() {
  ReadFieldTypes();
  std::string sql = " update " + strTable + " set ";
  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) {
    if (IsKeyField(i) || !IsGiven(aValue[i])) continue;
    sql += IsIntegerType(aFieldType[i]) ? aEnglish[i] + "=" + aValue[i].Text() + ","
                                        : aEnglish[i] + "='" + aValue[i].Text() + "',";
  }
  // With no value given this drops the blank after "set" and the database rejects the statement.
  sql = DropLast(sql) + KeyCondition();
  if (bDebug) WriteTrace(sql);
  Conn(objConn).Execute(sql, -1);
  return {};
}

Variant DNA::Delete() {
  const std::string sql = " delete " + strTable + " " + KeyCondition();
  Conn(objConn).Execute(sql, -1);
  return Variant(true);
}

void DNA::search() {
  ReadFieldTypes();
  std::string s;
  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) {
    if (IsKeyField(i) || !IsGiven(aValue[i])) continue;
    if (IsIntegerType(aFieldType[i]))
      s += aEnglish[i] + "=" + aValue[i].Text() + " and ";
    else
      s += aEnglish[i] + " like '%" + Trim(aValue[i].Text()) + "%' and ";
  }
  // The final "and " goes; the blank before it stays.
  if (Len(s) >= 5) s = DropLast(s, 4);
  Session().Set("strSearch", Variant(s));
}

}  // namespace corvane
