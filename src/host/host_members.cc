// The host objects as scripts see them: their members, dispatch ids and the calls behind them. Host
// objects are not creatable: they have no ProgID and no factory. Session and Application answer
// their default member (id 0) under the names Item and Contents alike.
#include "corvane/host.h"
#include "runtime/members.h"

namespace corvane::host {

const ClassInfo& Request::Info() const {
  static const ClassInfo info{
      .className = "Request",
      .members =
          {
              // Without a name, Form is the raw body and QueryString the raw query string.
              Method<Request>("Form", 1,
                              [](Request& r, Args& a) {
                                return a.empty() ? Variant(r.Body()) : r.Form(Arg(a, 0).Text());
                              }),
              Method<Request>("QueryString", 2,
                              [](Request& r, Args& a) {
                                return a.empty() ? Variant(r.QueryString()) : r.QueryString(Arg(a, 0).Text());
                              }),
              Method<Request>("ServerVariables", 3,
                              [](Request& r, Args& a) { return r.ServerVariables(Arg(a, 0).Text()); }),
              Reader<Request>("TotalBytes", 4, [](Request& r) { return r.TotalBytes(); }),
              Method<Request>("BinaryRead", 5,
                              [](Request& r, Args& a) {
                                Variant& count = RefArg(a, 0);
                                int32_t n = count.ToLong();
                                Variant data = r.BinaryRead(n);
                                count = Variant(n);
                                return data;
                              }),
          },
  };
  return info;
}

const ClassInfo& Response::Info() const {
  static const ClassInfo info{
      .className = "Response",
      .members =
          {
              Method<Response>("Write", 1, [](Response& r, Args& a) { r.Write(Arg(a, 0)); }),
              Method<Response>("BinaryWrite", 2,
                               [](Response& r, Args& a) { r.BinaryWrite(Arg(a, 0).ToBytes()); }),
              Method<Response>("Redirect", 3, [](Response& r, Args& a) { r.Redirect(Arg(a, 0).ToString()); }),
              Method<Response>(
                  "AddHeader", 4,
                  [](Response& r, Args& a) { r.AddHeader(Arg(a, 0).ToString(), Arg(a, 1).ToString()); }),
              ReadWrite<Response>(
                  "ContentType", 5, [](Response& r, Args&) { return r.ContentType(); },
                  [](Response& r, Args&, const Variant& v) { r.SetContentType(v.ToString()); }),
          },
  };
  return info;
}

namespace {

// Session(key) and Application(key): read, or written with the value after the key.
template <class T>
MemberInfo Item(std::string_view name) {
  return ReadWrite<T>(
      name, 0, [](T& o, Args& a) { return o.Get(Arg(a, 0).ToString()); },
      [](T& o, Args& a, const Variant& v) { o.Set(Arg(a, 0).ToString(), v); });
}

}  // namespace

const ClassInfo& SessionObject::Info() const {
  static const ClassInfo info{
      .className = "Session",
      .members =
          {
              Item<SessionObject>("Item"),
              Item<SessionObject>("Contents"),
              Method<SessionObject>("Remove", 1,
                                    [](SessionObject& s, Args& a) { s.Remove(Arg(a, 0).ToString()); }),
              Method<SessionObject>("Abandon", 2, [](SessionObject& s, Args&) { s.Clear(); }),
              Reader<SessionObject>("SessionID", 3, [](SessionObject& s) { return s.SessionID(); }),
          },
  };
  return info;
}

const ClassInfo& Application::Info() const {
  static const ClassInfo info{
      .className = "Application",
      .members = {Item<Application>("Item"), Item<Application>("Contents")},
  };
  return info;
}

const ClassInfo& Server::Info() const {
  static const ClassInfo info{
      .className = "Server",
      .members =
          {
              Method<Server>("CreateObject", 1,
                             [](Server& s, Args& a) { return s.CreateObject(Arg(a, 0).ToString()); }),
              Method<Server>("URLEncode", 2,
                             [](Server& s, Args& a) { return s.URLEncode(Arg(a, 0).Text()); }),
              Method<Server>("HTMLEncode", 3,
                             [](Server& s, Args& a) { return s.HTMLEncode(Arg(a, 0).Text()); }),
          },
  };
  return info;
}

const ClassInfo& ScriptingContext::Info() const {
  static const ClassInfo info{
      .className = "ScriptingContext",
      .members =
          {
              Reader<ScriptingContext>("Request", 1, [](ScriptingContext& c) { return Object(c.Request()); }),
              Reader<ScriptingContext>("Response", 2,
                                       [](ScriptingContext& c) { return Object(c.Response()); }),
              Reader<ScriptingContext>("Session", 3, [](ScriptingContext& c) { return Object(c.Session()); }),
              Reader<ScriptingContext>("Server", 4, [](ScriptingContext& c) { return Object(c.Server()); }),
              Reader<ScriptingContext>("Application", 5,
                                       [](ScriptingContext& c) { return Object(c.Application()); }),
          },
  };
  return info;
}

}  // namespace corvane::host
