// System.Collections.ArrayList as scripts see it. Item is the default member (list(0)). The CLSID is
// the platform's; the IID and the dispatch ids are ours, as .NET makes up a class interface's when it
// builds it.
#include "runtime/members.h"
#include "scripting/array_list.h"
#include "scripting/scripting.h"

namespace corvane::scripting {

const ClassInfo& ArrayList::Info() const { return ArrayListClass(); }

const ClassInfo& ArrayListClass() {
  static const ClassInfo info{
      .className = "ArrayList",
      .progID = "System.Collections.ArrayList",
      .clsid = "{6896b49d-7afb-34dc-934e-5add38eeee39}",
      .iid = "{e4bd552a-6231-4a6c-93b4-77e0fc76ceeb}",
      .members =
          {
              ReadWrite<ArrayList>(
                  "Item", 0, [](ArrayList& l, Args& a) { return l.Item(Arg(a, 0).ToLong()); },
                  [](ArrayList& l, Args& a, const Variant& v) {
                    if (a.size() < 2) throw Error::ArgumentNotOptional();
                    l.SetItem(a[0].ToLong(), v);
                  }),
              Method<ArrayList>("Add", 1, [](ArrayList& l, Args& a) { return l.Add(Arg(a, 0)); }),
              Reader<ArrayList>("Count", 2, [](ArrayList& l) { return l.Count(); }),
              Method<ArrayList>("Insert", 3,
                                [](ArrayList& l, Args& a) { l.Insert(Arg(a, 0).ToLong(), Arg(a, 1)); }),
              Method<ArrayList>("Remove", 4, [](ArrayList& l, Args& a) { l.Remove(Arg(a, 0)); }),
              Method<ArrayList>("RemoveAt", 5, [](ArrayList& l, Args& a) { l.RemoveAt(Arg(a, 0).ToLong()); }),
              Method<ArrayList>("Clear", 6, [](ArrayList& l, Args&) { l.Clear(); }),
              Method<ArrayList>("Contains", 7, [](ArrayList& l, Args& a) { return l.Contains(Arg(a, 0)); }),
              Method<ArrayList>("IndexOf", 8, [](ArrayList& l, Args& a) { return l.IndexOf(Arg(a, 0)); }),
              Method<ArrayList>("Sort", 9, [](ArrayList& l, Args&) { l.Sort(); }),
              Method<ArrayList>("Reverse", 10, [](ArrayList& l, Args&) { l.Reverse(); }),
              Method<ArrayList>("ToArray", 11, [](ArrayList& l, Args&) { return l.ToArray(); }),
          },
      .create = Create<ArrayList>,
  };
  return info;
}

}  // namespace corvane::scripting
