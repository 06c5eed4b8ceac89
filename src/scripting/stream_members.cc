// ADODB.Stream as scripts see it. Its CLSID and IID are the platform's; the dispatch ids are ours.
#include "runtime/members.h"
#include "scripting/scripting.h"
#include "scripting/stream.h"

namespace corvane::scripting {

namespace {

// Open([Source], [Mode], ...): only a stream of its own, in memory; a Source (a URL or a record)
// is refused.
void Open(Stream& s, const Args& a) {
  if (const Variant& source = OptionalArg(a, 0); !source.IsMissing() && !source.Text().empty())
    throw Error::ArgumentsOutOfRange();
  s.Open();
  s.mode = OptionalLong(a, 1, s.mode);
}

void CopyTo(Stream& s, const Args& a) {
  std::shared_ptr<Stream> to = Arg(a, 0).ToObject().As<Stream>();
  if (!to) throw Error::ArgumentsOutOfRange();
  s.CopyTo(*to, OptionalLong(a, 1, -1));
}

}  // namespace

const ClassInfo& Stream::Info() const { return StreamClass(); }

const ClassInfo& StreamClass() {
  using S = Stream;
  static const ClassInfo info{
      .className = "Stream",
      .progID = "ADODB.Stream",
      .clsid = "{00000566-0000-0010-8000-00aa006d2ea4}",
      .iid = "{00000565-0000-0010-8000-00aa006d2ea4}",
      .members =
          {
              Reader<S>("Size", 1, [](S& s) { return s.Size(); }),
              Reader<S>("EOS", 2, [](S& s) { return s.EOS(); }),
              ReadWrite<S>(
                  "Position", 3, [](S& s, Args&) { return s.Position(); },
                  [](S& s, Args&, const Variant& v) { s.SetPosition(v.ToLong()); }),
              ReadWrite<S>(
                  "Type", 4, [](S& s, Args&) { return s.Type(); },
                  [](S& s, Args&, const Variant& v) { s.SetType(v.ToLong()); }),
              ReadWrite<S>(
                  "LineSeparator", 5, [](S& s, Args&) { return s.LineSeparator(); },
                  [](S& s, Args&, const Variant& v) { s.SetLineSeparator(v.ToLong()); }),
              Reader<S>("State", 6, [](S& s) { return s.IsOpen() ? 1 : 0; }),
              Property<&S::mode>("Mode", 7),
              ReadWrite<S>(
                  "Charset", 8, [](S& s, Args&) { return s.CharsetName(); },
                  [](S& s, Args&, const Variant& v) { s.SetCharset(v.Text()); }),
              Method<S>("Read", 9, [](S& s, Args& a) { return s.Read(OptionalLong(a, 0, -1)); }),
              Method<S>("Open", 10, [](S& s, Args& a) { Open(s, a); }),
              Method<S>("Close", 11, [](S& s, Args&) { s.Close(); }),
              Method<S>("SkipLine", 12, [](S& s, Args&) { s.SkipLine(); }),
              Method<S>("Write", 13, [](S& s, Args& a) { s.Write(Arg(a, 0)); }),
              Method<S>("SetEOS", 14, [](S& s, Args&) { s.SetEOS(); }),
              Method<S>("CopyTo", 15, [](S& s, Args& a) { CopyTo(s, a); }),
              Method<S>("Flush", 16, [](S&, Args&) {}),
              Method<S>("SaveToFile", 17,
                        [](S& s, Args& a) { s.SaveToFile(Arg(a, 0).Text(), OptionalLong(a, 1, 1)); }),
              Method<S>("LoadFromFile", 18, [](S& s, Args& a) { s.LoadFromFile(Arg(a, 0).Text()); }),
              Method<S>("ReadText", 19, [](S& s, Args& a) { return s.ReadText(OptionalLong(a, 0, -1)); }),
              Method<S>("WriteText", 20,
                        [](S& s, Args& a) { s.WriteText(Arg(a, 0).Text(), OptionalLong(a, 1, 0)); }),
              Method<S>("Cancel", 21, [](S&, Args&) {}),
          },
      .create = Create<Stream>,
  };
  return info;
}

}  // namespace corvane::scripting
