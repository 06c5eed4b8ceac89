// The menu tree: option lists of all menus and of a group's menus for the group-rights page, and the
// signed-in person's menus, level by level, as open recordsets for the page's navigation menu.
//
// Levels: 1 = entries without a father, 2 = their children, 3 = the children of those. Nothing
// deeper is ever looked up. Siblings come in menuOrder.
#include <string>

#include "corvane/error.h"
#include "permission/permission.h"

namespace corvane {

namespace {

// Each marker closes the value attribute, then indents with ideographic spaces.
constexpr std::string_view kLevelMarker[] = {
    "\">●",
    "\">\u3000\u3000○",
    "\">\u3000\u3000\u3000◎",
};

void AppendOption(std::string& out, const ado::Recordset& row, int level) {
  out += "<option value=\"";
  out += row.Field("menuID").Text();
  out += kLevelMarker[level - 1];
  out += row.Field("menuName").Text();
  out += "</option>";
}

// The superuser sees every menu of the system; the name is compared exactly.
bool IsSuperuser(const Variant& personName) { return EqualsLiteral(personName, "sysop"); }

}  // namespace

// Appends the entries of `sql` at `level`, each followed at once by its children (levels 2 and 3).
// `childQuery(fatherID)` gives the SQL of the children of one entry.
template <class ChildQuery>
void Permission::AppendMenuLevel(std::string& out, const std::string& sql, int level,
                                 const ChildQuery& childQuery) const {
  auto rs = Query(sql);
  while (!rs->Eof()) {
    AppendOption(out, *rs, level);
    if (level < 3) AppendMenuLevel(out, childQuery(rs->Field("menuID").Text()), level + 1, childQuery);
    rs->MoveNext();
  }
  rs->Close();
}

Variant Permission::DispMenuItem() {
  const std::string level1 =
      "select * from menu where menuFatherID is null and systemID=" + SessionText("systemID") +
      " order by menuOrder ";
  auto children = [&](const std::string& fatherID) {
    return "select * from menu where menuFatherID=" + fatherID + " and systemID=" + SessionText("systemID") +
           " order by menuOrder";
  };
  std::string out;
  AppendMenuLevel(out, level1, 1, children);
  return Variant(std::move(out));
}

Variant Permission::DispAccessMenuItem(int16_t& groupID) {
  const std::string held =
      "select * from menu ,AccessMenu where Menu.MenuID=AccessMenu.AccessMenuID and "
      "AccessMenu.AccessGroupID=" +
      std::to_string(groupID);
  const std::string level1 = held +
                             " and Menu.menuFatherID is null and menu.systemID=" + SessionText("systemID") +
                             " order by menuOrder ";
  // Children are looked up only under emitted entries, so an entry whose father the group does not
  // hold never shows.
  auto children = [&](const std::string& fatherID) {
    return held + " and Menu.menuFatherID=" + fatherID + " and systemID=" + SessionText("systemID") +
           " order by menuOrder";
  };
  std::string out;
  AppendMenuLevel(out, level1, 1, children);
  return Variant(std::move(out));
}

Variant Permission::GetMenu1(Variant& RsM1) {
  // The parameter is a Recordset: another kind of object is refused before anything runs.
  Object target = RsM1.ToObject();
  auto recordset = target.As<ado::Recordset>();
  if (!target.IsNothing() && !recordset) throw Error::TypeMismatch();

  std::string sql;
  if (IsSuperuser(SessionValues().Get("personName"))) {
    sql = " Select * from Menu where  menuFatherID is null  and systemID  =" + SessionText("systemID") +
          " order by menuOrder ";
  } else {
    sql = " Select * from Menu where  menuFatherID is null and menuid in (" + SessionText("personAccess") +
          ") and systemID  =" + SessionText("systemID") + " order by menuOrder ";
  }
  if (!recordset) throw Error::ObjectNotSet();
  recordset->Open(sql, Connection(), ado::adOpenKeyset, -1, -1);
  return {};
}

Variant Permission::GetMenu23(const Variant& menuFatherID) {
  std::string sql;
  if (IsSuperuser(SessionValues().Get("personName"))) {
    sql = "select * from Menu where  menufatherID=" + menuFatherID.Text() +
          " and  systemID=" + SessionText("systemID") + " order by menuOrder";
  } else {
    sql = "select * from Menu where  menufatherID=" + menuFatherID.Text() + " and  menuid in (" +
          SessionText("personAccess") + ") and  systemID=" + SessionText("systemID") + " order by menuOrder";
  }
  return Variant(Object(Query(sql)));
}

}  // namespace corvane
