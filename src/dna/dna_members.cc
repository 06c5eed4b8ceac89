// DNA as scripts see it: ProgID, class and interface ids, and the members with their dispatch ids.
//
// The public properties keep their published ids. The methods are numbered 0x60030000 + n in the order
// the class declares its procedures, private ones included (they take a number but are not callable
// late-bound): OnStartPage 0, OnEndPage 1, DebugMode 2, WriteTrace 3, OpenConnection 4,
// CloseConnection 5, OpenDNA 6, CloseDNA 7, SetCodeSQL 8, GetRequestValue 9, GetParam 10, DispList 11,
// GetPageBar 12, GetListHeader 13, GetListRows 14, GetListEnd 15, DispSetColumns 16, GetList 17,
// GetRs 18, DispForm 19, GetCodeName 20, SelectForm 21, SetDefaultItem 22, ReadFieldTypes 23,
// Insert 24, Update 25, Delete 26, search 27, SetTitle 28, SetDispStyle 29, DispMenu 30.
#include "dna/dna.h"
#include "runtime/members.h"

namespace corvane {

const ClassInfo& DNAClass() {
  static const ClassInfo info{
      .className = "DNA",
      .progID = "corvane.DNA",
      .clsid = "{eab29593-9de1-41eb-b481-708f425344a5}",
      .iid = "{5d09a460-4161-495c-bd92-b65003c43635}",
      .members =
          {
              Method<DNA>("OnStartPage", 0x60030000,
                          [](DNA& o, Args& a) { return o.OnStartPage(Arg(a, 0)); }),
              Method<DNA>("OnEndPage", 0x60030001, [](DNA& o, Args&) { return o.OnEndPage(); }),
              Method<DNA>("DebugMode", 0x60030002, [](DNA& o, Args&) { o.DebugMode(); }),
              Method<DNA>("OpenDNA", 0x60030006,
                          [](DNA& o, Args& a) { o.OpenDNA(RefArg(a, 0), RefArg(a, 1), RefArg(a, 2)); }),
              Method<DNA>("CloseDNA", 0x60030007, [](DNA& o, Args&) { o.CloseDNA(); }),
              Method<DNA>("SetCodeSQL", 0x60030008, [](DNA& o, Args& a) { o.SetCodeSQL(Arg(a, 0)); }),
              Method<DNA>("DispList", 0x6003000B, [](DNA& o, Args&) { o.DispList(); }),
              Method<DNA>("DispSetColumns", 0x60030010, [](DNA& o, Args&) { o.DispSetColumns(); }),
              Method<DNA>("GetList", 0x60030011, [](DNA& o, Args& a) { o.GetList(RefArg(a, 0)); }),
              Method<DNA>("GetRs", 0x60030012, [](DNA& o, Args& a) { o.GetRs(Arg(a, 0), RefArg(a, 1)); }),
              Method<DNA>("DispForm", 0x60030013, [](DNA& o, Args& a) { o.DispForm(RefArg(a, 0)); }),
              Method<DNA>("GetCodeName", 0x60030014,
                          [](DNA& o, Args& a) { return o.GetCodeName(Arg(a, 0), Arg(a, 1)); }),
              Method<DNA>("SelectForm", 0x60030015,
                          [](DNA& o, Args& a) { return o.SelectForm(Arg(a, 0), Arg(a, 1)); }),
              Method<DNA>("SetDefaultItem", 0x60030016, [](DNA& o, Args& a) { o.SetDefaultItem(Arg(a, 0)); }),
              Method<DNA>("Insert", 0x60030018, [](DNA& o, Args&) { return o.Insert(); }),
              Method<DNA>("Update", 0x60030019, [](DNA& o, Args&) { return o.Update(); }),
              Method<DNA>("Delete", 0x6003001A, [](DNA& o, Args&) { return o.Delete(); }),
              Method<DNA>("search", 0x6003001B, [](DNA& o, Args&) { o.search(); }),
              Method<DNA>("SetTitle", 0x6003001C, [](DNA& o, Args& a) { o.SetTitle(Arg(a, 0)); }),
              Method<DNA>("SetDispStyle", 0x6003001D, [](DNA& o, Args& a) { o.SetDispStyle(Arg(a, 0)); }),
              Method<DNA>("DispMenu", 0x6003001E, [](DNA& o, Args&) { o.DispMenu(); }),
              Property<&DNA::strAction>("strAction", 0x40030006),
              Property<&DNA::nAccessLevel>("nAccessLevel", 0x40030007),
              Property<&DNA::nPage>("nPage", 0x40030008),
              Property<&DNA::nPageSize>("nPageSize", 0x40030009),
              Property<&DNA::strItemKeyName>("strItemKeyName", 0x40030014),
              Property<&DNA::nItemKeyValue>("nItemKeyValue", 0x40030015),
              Property<&DNA::strItemEnglish>("strItemEnglish", 0x40030016),
              Property<&DNA::strItemChinese>("strItemChinese", 0x40030017),
              Property<&DNA::strItemCodeSQL>("strItemCodeSQL", 0x40030018),
          },
      .create = Create<DNA>,
  };
  return info;
}

const ClassInfo& DNA::Info() const { return DNAClass(); }

}  // namespace corvane
