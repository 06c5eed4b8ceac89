// Code look-ups. A code-lookup query reads "select name,code from codes [where ...]": field 0 of its
// result is the display name, field 1 the stored code. GetCodeName finds one name; SelectForm writes
// the whole list as <option> elements.
#include <string>
#include <unordered_map>
#include <vector>

#include "corvane/ado.h"
#include "corvane/text.h"
#include "dna/dna.h"
#include "dna/int16.h"
#include "dna/text_append.h"

namespace corvane {

namespace {

// The second column of the query's select list (not trimmed). The 7 is the length of "select ".
std::string CodeColumn(const std::string& query) {
  int16_t p = dna::CheckedInt16(InStrText(query, "from"));
  std::string list = p < 8 ? Trim(Right(query, Len(query) - 7)) : Trim(Mid(query, 7, p - 7));
  std::vector<std::string> columns = Split(list, ",");
  if (columns.size() < 2) throw Error::SubscriptOutOfRange();
  return columns[1];
}

// CodeColumn of a query, worked out once per thread: a list asks the same few look-up queries on
// every row. A query CodeColumn refuses is not kept, and raises its error every time.
const std::string& KeptCodeColumn(const std::string& query) {
  thread_local std::unordered_map<std::string, std::string> kept;
  if (auto it = kept.find(query); it != kept.end()) return it->second;
  std::string code = CodeColumn(query);
  if (kept.size() >= 256) kept.clear();
  return kept.emplace(query, std::move(code)).first->second;
}

}  // namespace

Variant DNA::GetCodeName(const Variant& StrCodeSQL, const Variant& nValue) {
  if (const std::string* query = StrCodeSQL.StringPtr()) return CodeName(*query, nValue);
  return CodeName(StrCodeSQL.ToString(), nValue);
}

Variant DNA::CodeName(const std::string& query, const Variant& nValue) {
  const std::string& code = KeptCodeColumn(query);
  const std::string_view joint = InStrText(query, "where") > 0 ? " and  " : " where ";
  std::string sql;
  dna::Append(sql, {query, joint, code, "="});
  dna::AppendText(sql, nValue);
  // An empty value leaves the statement ending in "=" (blanks aside): nothing to look up.
  const size_t end = sql.find_last_not_of(' ');
  if (end != std::string::npos && sql[end] == '=') return Variant("");
  ado::Recordset rs;
  rs.Open(sql, objConn, ado::adOpenStatic, -1, -1);
  Variant name = rs.Eof() ? Variant("") : rs.Field(0);
  rs.Close();
  return name;
}

Variant DNA::SelectForm(const Variant& StrCodeSQL, const Variant& selectedID) {
  const std::string query = StrCodeSQL.ToString();
  const std::string sql = query + " order by " + CodeColumn(query);
  auto rs = std::make_shared<ado::Recordset>();
  rs->Open(sql, objConn, ado::adOpenStatic, -1, -1);
  std::string out;
  while (!rs->Eof()) {
    Variant code = rs->Field(1);
    out += "<option value='" + code.Text() + "'";
    if (Equals(selectedID, code)) out += " selected ";
    out += ">";
    out += rs->Field(0).Text();
    out += "</option>";
    rs->MoveNext();
  }
  rs->Close();
  return Variant(std::move(out));
}

}  // namespace corvane
