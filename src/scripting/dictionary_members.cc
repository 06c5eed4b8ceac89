// Scripting.Dictionary as scripts see it. Item is the default member (d("key")); Key is written only
// (d.Key("old") = "new").
#include "runtime/members.h"
#include "scripting/dictionary.h"
#include "scripting/scripting.h"

namespace corvane::scripting {

namespace {

// A keyed write: the key, then the value.
void RequireKeyAndValue(const Args& args) {
  if (args.size() < 2) throw Error::ArgumentNotOptional();
}

}  // namespace

const ClassInfo& Dictionary::Info() const { return DictionaryClass(); }

const ClassInfo& DictionaryClass() {
  static const ClassInfo info{
      .className = "Dictionary",
      .progID = "Scripting.Dictionary",
      .clsid = "{ee09b103-97e0-11cf-978f-00a02463e06f}",
      .iid = "{42c642c1-97e1-11cf-978f-00a02463e06f}",
      .members =
          {
              ReadWrite<Dictionary>(
                  "Item", 0, [](Dictionary& d, Args& a) { return d.Item(Arg(a, 0)); },
                  [](Dictionary& d, Args& a, const Variant& v) {
                    RequireKeyAndValue(a);
                    d.SetItem(a[0], v);
                  }),
              Method<Dictionary>("Add", 1, [](Dictionary& d, Args& a) { d.Add(Arg(a, 0), Arg(a, 1)); }),
              Reader<Dictionary>("Count", 2, [](Dictionary& d) { return d.Count(); }),
              Method<Dictionary>("Exists", 3, [](Dictionary& d, Args& a) { return d.Exists(Arg(a, 0)); }),
              Method<Dictionary>("Items", 4, [](Dictionary& d, Args&) { return d.Items(); }),
              Custom<Dictionary>("Key", 5, MemberInfo::kWrite,
                                 [](Dictionary& d, InvokeKind, Args& a) {
                                   RequireKeyAndValue(a);
                                   d.Rename(a[0], a.back());
                                   return Variant();
                                 }),
              Method<Dictionary>("Remove", 6, [](Dictionary& d, Args& a) { d.Remove(Arg(a, 0)); }),
              Method<Dictionary>("RemoveAll", 7, [](Dictionary& d, Args&) { d.RemoveAll(); }),
              ReadWrite<Dictionary>(
                  "CompareMode", 8, [](Dictionary& d, Args&) { return d.CompareMode(); },
                  [](Dictionary& d, Args&, const Variant& v) { d.SetCompareMode(v.ToLong()); }),
              Method<Dictionary>("Keys", 9, [](Dictionary& d, Args&) { return d.Keys(); }),
          },
      .create = Create<Dictionary>,
  };
  return info;
}

}  // namespace corvane::scripting
