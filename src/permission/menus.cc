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
bool IsSuperuser(const Variant& personName) { return Equals(personName, Variant("sysop")); }

}  // namespace

// Each level-1 entry of `level1Sql` followed at once by its level-2 children, each followed by its
// level-3 children. `childQuery(fatherID)` gives the SQL of the children of one entry.
template <class ChildQuery>
std::string Permission::MenuTree(const std::string& level1Sql, const ChildQuery& childQuery) const {
  std::string out;
  auto level1 = Query(level1Sql);
  while (!level1->Eof()) {
    AppendOption(out, *level1, 1);
    auto level2 = Query(childQuery(level1->Field("menuID").Text()));
    while (!level2->Eof()) {
      AppendOption(out, *level2, 2);
      auto level3 = Query(childQuery(level2->Field("menuID").Text()));
      while (!level3->Eof()) {
        AppendOption(out, *level3, 3);
        level3->MoveNext();
      }
      level3->Close();
      level2->MoveNext();
    }
    level2->Close();
    level1->MoveNext();
  }
  level1->Close();
  return out;
}

Variant Permission::DispMenuItem() {
  const std::string level1 = "select * from menu where menuFatherID is null and systemID=" +
                             SessionText("systemID") + " order by menuOrder ";
  auto children = [&](const std::string& fatherID) {
    return "select * from menu where menuFatherID=" + fatherID + " and systemID=" + SessionText("systemID") +
           " order by menuOrder";
  };
  return Variant(MenuTree(level1, children));
}

Variant Permission::DispAccessMenuItem(int16_t& groupID) {
  const std::string held =
      "select * from menu ,AccessMenu where Menu.MenuID=AccessMenu.AccessMenuID and AccessMenu.AccessGroupID=" +
      std::to_string(groupID);
  const std::string level1 =
      held + " and Menu.menuFatherID is null and menu.systemID=" + SessionText("systemID") + " order by menuOrder ";
  // Children are looked up only under emitted entries, so an entry whose father the group does not
  // hold never shows.
  auto children = [&](const std::string& fatherID) {
    return held + " and Menu.menuFatherID=" + fatherID + " and systemID=" + SessionText("systemID") +
           " order by menuOrder";
  };
  return Variant(MenuTree(level1, children));
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
    sql = "select * from Menu where  menufatherID=" + menuFatherID.Text() + " and  systemID=" +
          SessionText("systemID") + " order by menuOrder";
  } else {
    sql = "select * from Menu where  menufatherID=" + menuFatherID.Text() + " and  menuid in (" +
          SessionText("personAccess") + ") and  systemID=" + SessionText("systemID") + " order by menuOrder";
  }
  return Variant(Object(Query(sql)));
}

}  // namespace corvane
