// Permission: access groups of a system (their menu rights and member persons) and the three-level
// menu tree, filtered by the signed-in person's rights.
//
// A page creates corvane.Permission, which takes the host objects in OnStartPage; the page calls
// openDB(connection string) and then the methods below. Every method reads the current system from
// the session value "systemID" at each call and pastes it, and every other id, into the SQL as it
// stands. Display methods return their HTML as a String Variant for the page to write; nothing is
// escaped, and no method traps errors: a failed statement ends the method with the database's error.
//
// The rights of the signed-in person travel through the session: GetPersonAccess stores the person's
// menu ids as "personAccess", and GetMenu1/GetMenu23 paste that value into an "in (...)" list. The
// person named exactly "sysop" (case-sensitive) is the superuser and sees every menu of the system.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "corvane/object.h"
#include "corvane/variant.h"
#include "page_kit/page_kit.h"

namespace corvane {

class Permission : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  // --- Page attachment (permission.cc) ---
  // Takes Response, Request, Server, Application and Session from the ScriptingContext `sc`, in that
  // order, and clears the debug switch. Returns Empty.
  Variant OnStartPage(Variant& sc);
  // Releases the five host objects in the same order. The connection stays open until the object
  // goes away. Returns Empty.
  Variant OnEndPage();
  // Opens a new connection on the string form of `strConn` (an earlier connection is released, not
  // closed). Raises the database's error when the open fails.
  void openDB(Variant& strConn);
  // Writes the hidden trace span around the text of `strTmp`, whatever the debug switch says.
  void PrintDebug(Variant& strTmp);

  // The session object the methods read: the page's Session after OnStartPage, Nothing before it and
  // after OnEndPage. The page may replace it ("Set obj.Session = x"); anything but a Session object
  // or Nothing raises 13.
  Variant Session() const;
  void SetSession(const Variant& session);

  // --- Access groups and members (groups.cc) ---
  // The rows of the group table of the current system: number, name and the delete, edit, rights and
  // members links of each group. "" when the system has no groups.
  Variant DispGroup();
  // Inserts a group named `name` into the current system. Returns Empty.
  Variant AddGroup(Variant& name);
  // Deletes group `groupID` of the current system; its rights and members rows stay. Returns Empty.
  Variant delGroup(Variant& groupID);
  // Replaces the rights of a group with the menu ids of `permitSetStr`, joined with "*". Every element,
  // an empty one too, becomes one insert; there is no transaction, so a failing insert leaves the rows
  // inserted before it. An empty group id changes nothing and returns the failure text.
  Variant SavePermission(Variant& permissionGroupID, Variant& permitSetStr);
  // The same for the members of a group: person ids joined with ",".
  Variant SavePerson(Variant& permissionGroupID, Variant& permitSetStr);
  // The check boxes of the persons of the current system (person group 7 left out, sorted by duty),
  // members of `groupID` checked.
  Variant DispPerson(Variant& groupID);
  // Stores in the session value "personAccess" the menu ids of the groups of the session's
  // "personID": the ids of one group joined with ",", the groups run together with no separator.
  void GetPersonAccess();

  // --- Menu tree and per-person menus (menus.cc) ---
  // Option lines of every menu of the current system, depth first, levels 1 to 3.
  Variant DispMenuItem();
  // Option lines of the menus held by group `groupID`; an entry shows only under a held parent.
  Variant DispAccessMenuItem(int16_t& groupID);
  // Opens the caller's recordset (an Object Variant holding an ADODB.Recordset) on the person's
  // level-1 menus. Returns Empty.
  Variant GetMenu1(Variant& RsM1);
  // A new open recordset, as an Object Variant, of the person's menus under `menuFatherID`.
  Variant GetMenu23(const Variant& menuFatherID);

 private:
  // The connection that openDB opened; raises 91 before it.
  const std::shared_ptr<ado::Connection>& Connection() const;
  // The session object the methods read; raises 91 when there is none.
  host::SessionObject& SessionValues() const;
  // The text of a session value as concatenation pastes it (Null and Empty give "").
  std::string SessionText(std::string_view key) const;
  // Opens a keyset recordset on `sql` with the object's connection.
  std::shared_ptr<ado::Recordset> Query(const std::string& sql) const;
  // Runs one statement through the connection.
  void Execute(const std::string& sql) const;
  // The menu option lines of one level's rows and, under each, its children, for both menu lists.
  template <class ChildQuery>
  void AppendMenuLevel(std::string& out, const std::string& sql, int level,
                       const ChildQuery& childQuery) const;

  page_kit::PageObjects page_;
  std::shared_ptr<ado::Connection> objConn;
  bool bDebug = false;
};

const ClassInfo& PermissionClass();

}  // namespace corvane
