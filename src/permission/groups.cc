// Access groups: the group table, adding and deleting a group, saving a group's menu rights and
// members, the member check boxes, and the collection of the signed-in person's menu ids.
//
// The SQL texts are written as the deployment's pages and database expect them, blanks included
// (the data layer adapts SQL Server's forms such as an insert without INTO for SQLite by itself).
#include <limits>
#include <string>
#include <vector>

#include "corvane/error.h"
#include "corvane/text.h"
#include "permission/permission.h"

namespace corvane {

namespace {

// The gap between the links of a group row: one ideographic space.
constexpr std::string_view kGap = "\u3000";

}  // namespace

Variant Permission::DispGroup() {
  auto rs = Query("select * from AccessGroup where systemID=" + SessionText("systemID"));
  std::string out;
  int16_t counter = 1;
  while (!rs->Eof()) {
    const std::string id = rs->Field("accessGroupID").Text();
    out += "<tr><td align=center>";
    out += std::to_string(counter);
    out += "</td> <td>";
    out += rs->Field("accessGroupName").Text();
    out += "</td><td align=center><a href=\"permission.asp?ac=del&id=";
    out += id;
    out += "\">删除</a>";
    out += kGap;
    out += "<a href=\"permission.asp?ac=edit&id=";
    out += id;
    out += "\">修改</a>";
    out += kGap;
    out += "<a href=\"permissionset.asp?id=";
    out += id;
    out += "\">设置权限</a>";
    out += kGap;
    out += "<a href=\"permissionMan.asp?id=";
    out += id;
    out += "\">设置人员</a></td></tr>";
    rs->MoveNext();
    // The row number is a 16-bit integer, as on the original page.
    if (counter == std::numeric_limits<int16_t>::max()) throw Error::Overflow();
    ++counter;
  }
  return Variant(std::move(out));
}

Variant Permission::AddGroup(Variant& name) {
  Execute("insert  AccessGroup(accessGroupName,systemID) values('" + name.Text() + "'," +
          SessionText("systemID") + ")");
  return {};
}

Variant Permission::delGroup(Variant& groupID) {
  // The group's rows in accessMenu and accessPerson are left as they are.
  Execute("delete from   AccessGroup where accessGroupID=" + groupID.Text() +
          " and systemid=" + SessionText("systemID"));
  return {};
}

Variant Permission::SavePermission(Variant& permissionGroupID, Variant& permitSetStr) {
  if (EqualsLiteral(permissionGroupID, "")) return Variant("权限修改失败");
  // The old rights go first, then one insert per element, empty elements too. There is no
  // transaction: a failing insert raises and leaves the rows inserted before it.
  const std::string group = permissionGroupID.Text();
  Execute(" delete from accessMenu where accessgroupid=" + group);
  for (const std::string& menuID : Split(permitSetStr.ToString(), "*"))
    Execute(" INSERT INTO accessmenu(accessgroupid, accessmenutype, accessmenuid) VALUES ( " + group + ",1," +
            menuID + ")");
  return Variant("权限修改成功");
}

Variant Permission::SavePerson(Variant& permissionGroupID, Variant& permitSetStr) {
  if (EqualsLiteral(permissionGroupID, "")) return Variant("人员修改失败");
  const std::string group = permissionGroupID.Text();
  Execute(" delete from accessPerson where accessgroupid=" + group);
  for (const std::string& personID : Split(permitSetStr.ToString(), ","))
    Execute(" INSERT INTO accessperson(accessGroupID, accessPersonID) VALUES ( " + group + "," + personID +
            ")");
  return Variant("人员修改成功");
}

Variant Permission::DispPerson(Variant& groupID) {
  // The members as ",3,5,9," (a lone "," for none), so that an id is matched between commas.
  auto members = Query("select * from accessperson where accessGroupID=" + groupID.Text());
  std::string memberList;
  while (!members->Eof()) {
    memberList += ",";
    memberList += Trim(members->Field("accessPersonID").Text());
    members->MoveNext();
  }
  memberList += ",";
  members->Close();

  auto persons = Query("select * from person where systemID=" + SessionText("systemID") +
                       " and personGroupID<>7 order by DutyID ");
  std::string out;
  while (!persons->Eof()) {
    const std::string personID = persons->Field("personID").Text();
    const bool member = InStr(memberList, "," + Trim(personID) + ",") > 0;
    std::string entry = member ? "<span class=checked>" : "<span>";
    entry += persons->Field("personName").Text();
    // Meant to pad two-character names, but it measures the opening tag too, so it never pads.
    if (Len(entry) == 2) entry += "\u3000";
    out += entry;
    out += "</span>";
    out += "<input id=ci type='checkbox' name='checkbox' value='" + personID + "' ";
    if (member) out += " checked ";
    out += ">";
    persons->MoveNext();
  }
  persons->Close();
  return Variant(std::move(out));
}

void Permission::GetPersonAccess() {
  auto groups = Query(" select * from accessPerson where accessPersonID=" + SessionText("personID"));
  std::string access;
  while (!groups->Eof()) {
    auto rights =
        Query(" Select * from accessMenu where accessGroupID=" + groups->Field("accessGroupID").Text());
    // Ids of one group are joined with ","; nothing separates one group's ids from the next.
    while (!rights->Eof()) {
      access += Trim(rights->Field("accessMenuID").Text());
      rights->MoveNext();
      if (!rights->Eof()) access += ",";
    }
    rights->Close();
    groups->MoveNext();
  }
  groups->Close();
  SessionValues().Set("personAccess", Variant(std::move(access)));
}

}  // namespace corvane
