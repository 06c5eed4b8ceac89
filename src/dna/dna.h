// DNA: a browser and editor for one database table, described by the page with one SQL text and a list
// of Chinese captions.
//
// One object serves one page. The page creates "corvane.DNA" (the host calls OnStartPage), optionally
// calls DebugMode, then OpenDNA (which takes the SQL apart, opens the connection and reads the request),
// optionally SetCodeSQL, SetDefaultItem, SetTitle, SetDispStyle and DispMenu, then by strAction one of
// the display or write methods, CloseDNA; the host calls OnEndPage, which stores the page URL in the
// session so that the next view can tell a return to the same page from a visit to another.
//
// What lasts between views lives in the session: "strOrder" and "strOrder2" (primary and secondary
// sort), "nPageSize", "strItemChose" (the shown columns), "strSearch" (the search condition), "strSQL"
// (the last list SQL) and "strURL".
//
// Nothing here traps errors: a failed host or database call ends the method with its corvane::Error,
// and the object keeps whatever it had set before. SQL and HTML are built by plain joining; the only
// guard is that every "'" of a request value arrives as "`".
//
// The files: dna_page.cc (page attachment, trace, connection), dna_open.cc (OpenDNA, SetCodeSQL),
// dna_request.cc (request and session state), dna_list.cc (the list view), dna_columns.cc (column
// choice), dna_code.cc (code look-ups), dna_form.cc (the record form), dna_writes.cc (insert, update,
// delete, search), dna_menu.cc (command bar), dna_members.cc (class identity and late-bound members).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "corvane/object.h"
#include "corvane/variant.h"
#include "dna/vb_array.h"
#include "page_kit/page_kit.h"

namespace corvane {

namespace ado {
class Connection;
class Recordset;
}  // namespace ado

class DNA : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  // Page attachment: keeps Response, Request, Server, Application and Session; clears bDebug,
  // strAction and bSystemID. OnEndPage stores Session("strURL") and releases the five. Both answer Empty.
  Variant OnStartPage(const Variant& sc);
  Variant OnEndPage();
  // Switches the trace on and traces that it did; before OnStartPage there is no response (error 91).
  void DebugMode();

  // Takes `strSQL` ("select f1,f2 from t [where a=1 and b=2] [order by f1,f2]") apart, trims the
  // caller's variable, keeps the captions `StrChinese`, opens `ConnStr` and reads the request.
  void OpenDNA(Variant& ConnStr, Variant& strSQL, Variant& StrChinese);
  void CloseDNA();
  // Replaces the code-lookup list: one entry per field, ";" separated, each the field's own name or
  // a "select name,code from codes [where ...]" text.
  void SetCodeSQL(const Variant& StrCodeSQL);

  // The list view: paging bar, header with sort links, rows, table end, in four writes.
  void DispList();
  // The column-choice and page-size form.
  void DispSetColumns();
  // Opens the caller's recordset on the list SQL (stored in Session("strSQL")).
  void GetList(Variant& callersRs);
  // Opens the caller's recordset on `strSQL`.
  void GetRs(const Variant& strSQL, Variant& callersRs);

  // The record form for "update", "insert", "insert2", "search" or any other action word.
  void DispForm(Variant& action);
  // The display name of code `nValue` by a code-lookup query; "" when not found or `nValue` is empty.
  Variant GetCodeName(const Variant& StrCodeSQL, const Variant& nValue);
  // The <option> elements of a code list, `selectedID` marked " selected ".
  Variant SelectForm(const Variant& StrCodeSQL, const Variant& selectedID);
  // The page's default column choice, applied when the page is reached from another page.
  void SetDefaultItem(const Variant& strDefault);

  // The writes of a posted form: Insert writes "插入成功" or "输入为空"; Delete answers True;
  // search stores the condition in Session("strSearch").
  Variant Insert();
  Variant Update();
  Variant Delete();
  void search();

  // The command bar.
  void SetTitle(const Variant& Title);
  void SetDispStyle(const Variant& nType);
  void DispMenu();

  // Public properties, read and written by the page.
  std::string strAction;
  int16_t nAccessLevel = 0;
  int16_t nPage = 0;
  int16_t nPageSize = 0;
  std::string strItemKeyName;
  Variant nItemKeyValue;
  std::string strItemEnglish;
  std::string strItemChinese;
  std::string strItemCodeSQL;

 private:
  // Page context and trace.
  void WriteTrace(std::string_view message);
  host::Response& Out();
  host::SessionObject& Session();
  Variant SessionValue(std::string_view key);
  std::string SessionText(std::string_view key);

  // GetCodeName for a query given as text.
  Variant CodeName(const std::string& query, const Variant& nValue);

  // Request state.
  void GetRequestValue();
  Variant GetParam(std::string_view name);

  // List pieces.
  std::string ListSQL();
  std::string GetPageBar();
  std::string GetListHeader();
  std::string GetListRows();
  std::string GetListEnd();

  // Form and writes.
  void ReadFieldTypes();
  bool IsKeyField(int32_t i) const;
  static bool IsGiven(const Variant& v);
  std::string KeyCondition() const;

  page_kit::PageObjects page_;
  bool bDebug = false;
  std::string strURL;
  std::shared_ptr<ado::Connection> objConn;
  std::string strConn;
  std::shared_ptr<ado::Recordset> objRs;

  std::string strTable;
  std::string strWhere;
  std::string strDefaultOrder;
  std::string strDefault;
  std::string strTitle;
  dna::VbArray<std::string> aEnglish;
  dna::VbArray<std::string> aChinese;
  dna::VbArray<std::string> aCodeSQL;
  dna::VbArray<Variant> aValue;
  dna::VbArray<Variant> aFieldType;
  dna::VbArray<Variant> aFixedName;
  dna::VbArray<Variant> aFixedValue;
  bool bSystemID = false;
  int16_t nSystemID = 0;
};

const ClassInfo& DNAClass();

}  // namespace corvane
