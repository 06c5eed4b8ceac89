// DNA's class identity and late binding: ProgID, class and interface ids, the members with their
// dispatch ids, and the dispatch of a late-bound call to the C++ members.
//
// The public properties keep their published ids. The methods are numbered 0x60030000 + n in the order
// the class declares its procedures, private ones included (they take a number but are not callable
// late-bound): OnStartPage 0, OnEndPage 1, DebugMode 2, WriteTrace 3, OpenConnection 4,
// CloseConnection 5, OpenDNA 6, CloseDNA 7, SetCodeSQL 8, GetRequestValue 9, GetParam 10, DispList 11,
// GetPageBar 12, GetListHeader 13, GetListRows 14, GetListEnd 15, DispSetColumns 16, GetList 17,
// GetRs 18, DispForm 19, GetCodeName 20, SelectForm 21, SetDefaultItem 22, ReadFieldTypes 23,
// Insert 24, Update 25, Delete 26, search 27, SetTitle 28, SetDispStyle 29, DispMenu 30.
#include <memory>

#include "corvane/error.h"
#include "dna/dna.h"
#include "runtime/args.h"

namespace corvane {

namespace {

enum : int32_t {
  kOnStartPage = 0x60030000, kOnEndPage = 0x60030001, kDebugMode = 0x60030002,
  kOpenDNA = 0x60030006, kCloseDNA = 0x60030007, kSetCodeSQL = 0x60030008,
  kDispList = 0x6003000B, kDispSetColumns = 0x60030010, kGetList = 0x60030011, kGetRs = 0x60030012,
  kDispForm = 0x60030013, kGetCodeName = 0x60030014, kSelectForm = 0x60030015,
  kSetDefaultItem = 0x60030016, kInsert = 0x60030018, kUpdate = 0x60030019, kDelete = 0x6003001A,
  kSearch = 0x6003001B, kSetTitle = 0x6003001C, kSetDispStyle = 0x6003001D, kDispMenu = 0x6003001E,
  kStrAction = 0x40030006, kNAccessLevel = 0x40030007, kNPage = 0x40030008, kNPageSize = 0x40030009,
  kStrItemKeyName = 0x40030014, kNItemKeyValue = 0x40030015, kStrItemEnglish = 0x40030016,
  kStrItemChinese = 0x40030017, kStrItemCodeSQL = 0x40030018,
};

// The value of a property write: the last argument.
const Variant& NewValue(const Args& args) {
  if (args.empty()) throw Error::ArgumentNotOptional();
  return args.back();
}

Variant StringProperty(std::string& member, InvokeKind kind, const Args& args) {
  if (IsPropertyWrite(kind)) {
    member = NewValue(args).ToString();
    return {};
  }
  return Variant(member);
}

Variant IntegerProperty(int16_t& member, InvokeKind kind, const Args& args) {
  if (IsPropertyWrite(kind)) {
    member = NewValue(args).ToInteger();
    return {};
  }
  return Variant(member);
}

}  // namespace

const ClassInfo& DNAClass() {
  static const ClassInfo info{
      .className = "DNA",
      .progID = "corvane.DNA",
      .clsid = "{eab29593-9de1-41eb-b481-708f425344a5}",
      .iid = "{5d09a460-4161-495c-bd92-b65003c43635}",
      .members = {{"OnStartPage", kOnStartPage}, {"OnEndPage", kOnEndPage}, {"DebugMode", kDebugMode},
                  {"OpenDNA", kOpenDNA}, {"CloseDNA", kCloseDNA}, {"SetCodeSQL", kSetCodeSQL},
                  {"DispList", kDispList}, {"DispSetColumns", kDispSetColumns}, {"GetList", kGetList},
                  {"GetRs", kGetRs}, {"DispForm", kDispForm}, {"GetCodeName", kGetCodeName},
                  {"SelectForm", kSelectForm}, {"SetDefaultItem", kSetDefaultItem}, {"Insert", kInsert},
                  {"Update", kUpdate}, {"Delete", kDelete}, {"search", kSearch}, {"SetTitle", kSetTitle},
                  {"SetDispStyle", kSetDispStyle}, {"DispMenu", kDispMenu}, {"strAction", kStrAction},
                  {"nAccessLevel", kNAccessLevel}, {"nPage", kNPage}, {"nPageSize", kNPageSize},
                  {"strItemKeyName", kStrItemKeyName}, {"nItemKeyValue", kNItemKeyValue},
                  {"strItemEnglish", kStrItemEnglish}, {"strItemChinese", kStrItemChinese},
                  {"strItemCodeSQL", kStrItemCodeSQL}},
      .create = [] { return Object(std::make_shared<DNA>()); },
  };
  return info;
}

const ClassInfo& DNA::Info() const { return DNAClass(); }

Variant DNA::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kOnStartPage: return OnStartPage(Arg(args, 0));
    case kOnEndPage: return OnEndPage();
    case kDebugMode: DebugMode(); return {};
    case kOpenDNA: OpenDNA(RefArg(args, 0), RefArg(args, 1), RefArg(args, 2)); return {};
    case kCloseDNA: CloseDNA(); return {};
    case kSetCodeSQL: SetCodeSQL(Arg(args, 0)); return {};
    case kDispList: DispList(); return {};
    case kDispSetColumns: DispSetColumns(); return {};
    case kGetList: GetList(RefArg(args, 0)); return {};
    case kGetRs: GetRs(Arg(args, 0), RefArg(args, 1)); return {};
    case kDispForm: DispForm(RefArg(args, 0)); return {};
    case kGetCodeName: return GetCodeName(Arg(args, 0), Arg(args, 1));
    case kSelectForm: return SelectForm(Arg(args, 0), Arg(args, 1));
    case kSetDefaultItem: SetDefaultItem(Arg(args, 0)); return {};
    case kInsert: return Insert();
    case kUpdate: return Update();
    case kDelete: return Delete();
    case kSearch: search(); return {};
    case kSetTitle: SetTitle(Arg(args, 0)); return {};
    case kSetDispStyle: SetDispStyle(Arg(args, 0)); return {};
    case kDispMenu: DispMenu(); return {};
    case kStrAction: return StringProperty(strAction, kind, args);
    case kNAccessLevel: return IntegerProperty(nAccessLevel, kind, args);
    case kNPage: return IntegerProperty(nPage, kind, args);
    case kNPageSize: return IntegerProperty(nPageSize, kind, args);
    case kStrItemKeyName: return StringProperty(strItemKeyName, kind, args);
    case kNItemKeyValue:
      if (IsPropertyWrite(kind)) {
        nItemKeyValue = NewValue(args);
        return {};
      }
      return nItemKeyValue;
    case kStrItemEnglish: return StringProperty(strItemEnglish, kind, args);
    case kStrItemChinese: return StringProperty(strItemChinese, kind, args);
    case kStrItemCodeSQL: return StringProperty(strItemCodeSQL, kind, args);
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane
