// The host objects as scripts see them: their members, dispatch ids and the calls behind them. Host
// objects are not creatable: they have no ProgID and no factory. The default member (id 0) is the
// one `Request("x")`, `Session("k") = v` or `Request.Form("x")`'s collection reach without a name.
#include "collections.h"
#include "corvane/host.h"
#include "runtime/members.h"

namespace corvane::host {

namespace {

constexpr int kAny = MemberInfo::kRead | MemberInfo::kWrite;

// Request.Form and its kin are called with a name or position for a value, without one for the
// collection.
bool Unnamed(const Args& a) { return a.empty() || a[0].IsMissing(); }

// Session.Contents and Application.Contents: called with a key or position, the value (written with
// the value after it); without, the collection.
template <class T>
MemberInfo ContentsMember(int32_t dispid) {
  return Custom<T>("Contents", dispid, kAny, [](T& o, InvokeKind kind, Args& a) -> Variant {
    if (Unnamed(a)) return CollectionOf(o, o.Values());
    if (!IsPropertyWrite(kind)) return ContentsItem(o.Values(), a[0]);
    SetContentsItem(o.Values(), a[0], PropertyValue(a));
    return {};
  });
}

template <class T>
MemberInfo StaticObjectsMember(int32_t dispid) {
  return Reader<T>("StaticObjects", dispid, [](T& o) { return CollectionOf(o, o.StaticObjects()); });
}

// Session(key) and Application(key): read, or written with the value after the key.
template <class T>
MemberInfo Item() {
  return ReadWrite<T>(
      "Item", 0, [](T& o, Args& a) { return o.Get(Arg(a, 0).ToString()); },
      [](T& o, Args& a, const Variant& v) { o.Set(Arg(a, 0).ToString(), v); });
}

std::string RedirectPage(const std::string& url) {
  return "<head><title>Object moved</title></head>\r\n<body><h1>Object Moved</h1>This object may be found "
         "<a HREF=\"" +
         HtmlEncode(url) + "\">here</a>.</body>\r\n";
}

}  // namespace

const ClassInfo& Request::Info() const {
  static const ClassInfo info{
      .className = "Request",
      .members =
          {
              Method<Request>("Item", 0, [](Request& r, Args& a) { return r.Item(Arg(a, 0).Text()); }),
              // Without a name, Form and QueryString read as the raw body and query string.
              Method<Request>("Form", 1,
                              [](Request& r, Args& a) -> Variant {
                                if (Unnamed(a)) return CollectionOf(r, r.FormValues(), &r.Body());
                                return ItemOf(r.FormValues(), a[0]);
                              }),
              Method<Request>("QueryString", 2,
                              [](Request& r, Args& a) -> Variant {
                                if (Unnamed(a)) return CollectionOf(r, r.QueryValues(), &r.QueryString());
                                return ItemOf(r.QueryValues(), a[0]);
                              }),
              Method<Request>("ServerVariables", 3,
                              [](Request& r, Args& a) -> Variant {
                                if (Unnamed(a)) return CollectionOf(r, r.ServerVariableValues(), nullptr);
                                return ItemOf(r.ServerVariableValues(), a[0]);
                              }),
              Reader<Request>("TotalBytes", 4, [](Request& r) { return r.TotalBytes(); }),
              Method<Request>("BinaryRead", 5,
                              [](Request& r, Args& a) -> Variant {
                                Variant& count = RefArg(a, 0);
                                int32_t n = count.ToLong();
                                Variant data = r.BinaryRead(n);
                                count = Variant(n);
                                return data;
                              }),
              Method<Request>("Cookies", 6,
                              [](Request& r, Args& a) -> Variant {
                                if (Unnamed(a)) return CollectionOf(r, r.CookieValues(), nullptr);
                                return ItemOf(r.CookieValues(), a[0]);
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
              // A script's Redirect sends only the redirection and ends the page.
              Method<Response>("Redirect", 3,
                               [](Response& r, Args& a) {
                                 std::string url = Arg(a, 0).ToString();
                                 r.Clear();
                                 r.Write(RedirectPage(url));
                                 r.Redirect(std::move(url));
                                 r.End();
                               }),
              Method<Response>(
                  "AddHeader", 4,
                  [](Response& r, Args& a) { r.AddHeader(Arg(a, 0).ToString(), Arg(a, 1).ToString()); }),
              ReadWrite<Response>(
                  "ContentType", 5, [](Response& r, Args&) { return r.ContentType(); },
                  [](Response& r, Args&, const Variant& v) { r.SetContentType(v.ToString()); }),
              Method<Response>("End", 6, [](Response& r, Args&) { r.End(); }),
              Method<Response>("Clear", 7, [](Response& r, Args&) { r.Clear(); }),
              Method<Response>("Flush", 8, [](Response&, Args&) {}),
              ReadWrite<Response>(
                  "Buffer", 9, [](Response& r, Args&) { return r.buffer; },
                  [](Response& r, Args&, const Variant& v) { r.buffer = v.ToBool(); }),
              ReadWrite<Response>(
                  "Charset", 10, [](Response& r, Args&) { return r.Charset(); },
                  [](Response& r, Args&, const Variant& v) { r.SetCharset(v.ToString()); }),
              ReadWrite<Response>(
                  "Status", 11, [](Response& r, Args&) { return r.StatusLine(); },
                  [](Response& r, Args&, const Variant& v) { r.SetStatus(v.ToString()); }),
              ReadWrite<Response>(
                  "Expires", 12, [](Response& r, Args&) { return r.ExpiresMinutes().value_or(0); },
                  [](Response& r, Args&, const Variant& v) { r.SetExpires(v.ToLong()); }),
              ReadWrite<Response>(
                  "ExpiresAbsolute", 13,
                  [](Response& r, Args&) {
                    return r.ExpiresAt() ? Variant::FromDate(*r.ExpiresAt()) : Variant();
                  },
                  [](Response& r, Args&, const Variant& v) { r.SetExpiresAbsolute(v.ToDate()); }),
              // Response.Cookies("n") is the cookie; ("n") = v sets its value, ("n")("k") = v one key.
              Custom<Response>("Cookies", 14, kAny,
                               [](Response& r, InvokeKind kind, Args& a) -> Variant {
                                 auto cookie = r.Cookie(Arg(a, 0).ToString());
                                 if (!IsPropertyWrite(kind)) {
                                   if (a.size() > 1) return cookie->Key(Arg(a, 1).Text());
                                   return Object(cookie);
                                 }
                                 if (a.size() > 2)
                                   cookie->SetKey(Arg(a, 1).Text(), PropertyValue(a).Text());
                                 else
                                   cookie->SetValue(PropertyValue(a).Text());
                                 return {};
                               }),
              ReadWrite<Response>(
                  "CodePage", 15, [](Response& r, Args&) { return r.CodePage(); },
                  [](Response& r, Args&, const Variant& v) { r.SetCodePage(v.ToLong()); }),
              ReadWrite<Response>(
                  "LCID", 16, [](Response& r, Args&) { return r.lcid; },
                  [](Response& r, Args&, const Variant& v) { r.lcid = v.ToLong(); }),
              Reader<Response>("IsClientConnected", 17, [](Response&) { return true; }),
              ReadWrite<Response>(
                  "CacheControl", 18, [](Response& r, Args&) { return r.CacheControl(); },
                  [](Response& r, Args&, const Variant& v) { r.SetCacheControl(v.ToString()); }),
              Method<Response>("AppendToLog", 19,
                               [](Response& r, Args& a) { r.AppendToLog(Arg(a, 0).ToString()); }),
          },
  };
  return info;
}

const ClassInfo& ResponseCookie::Info() const {
  static const ClassInfo info{
      .className = "Cookie",
      .members =
          {
              Custom<ResponseCookie>("Item", 0, kAny,
                                     [](ResponseCookie& c, InvokeKind kind, Args& a) -> Variant {
                                       if (!IsPropertyWrite(kind))
                                         return a.empty() ? Variant(c.Value()) : c.Key(Arg(a, 0).Text());
                                       if (a.size() > 1)
                                         c.SetKey(Arg(a, 0).Text(), PropertyValue(a).Text());
                                       else
                                         c.SetValue(PropertyValue(a).Text());
                                       return {};
                                     }),
              ReadWrite<ResponseCookie>(
                  "Expires", 1,
                  [](ResponseCookie& c, Args&) {
                    return c.expires ? Variant::FromDate(*c.expires) : Variant();
                  },
                  [](ResponseCookie& c, Args&, const Variant& v) { c.expires = v.ToDate(); }),
              Property<&ResponseCookie::path>("Path", 2),
              Property<&ResponseCookie::domain>("Domain", 3),
              ReadWrite<ResponseCookie>(
                  "Secure", 4, [](ResponseCookie& c, Args&) { return c.secure; },
                  [](ResponseCookie& c, Args&, const Variant& v) { c.secure = v.ToBool(); }),
              ReadWrite<ResponseCookie>(
                  "HttpOnly", 5, [](ResponseCookie& c, Args&) { return c.httpOnly; },
                  [](ResponseCookie& c, Args&, const Variant& v) { c.httpOnly = v.ToBool(); }),
              Reader<ResponseCookie>("HasKeys", 6, [](ResponseCookie& c) { return c.HasKeys(); }),
          },
  };
  return info;
}

const ClassInfo& SessionObject::Info() const {
  static const ClassInfo info{
      .className = "Session",
      .members =
          {
              Item<SessionObject>(),
              ContentsMember<SessionObject>(1),
              Method<SessionObject>("Remove", 2,
                                    [](SessionObject& s, Args& a) { s.Remove(Arg(a, 0).ToString()); }),
              Method<SessionObject>("RemoveAll", 3, [](SessionObject& s, Args&) { s.Clear(); }),
              Method<SessionObject>("Abandon", 4, [](SessionObject& s, Args&) { s.Abandon(); }),
              Reader<SessionObject>("SessionID", 5, [](SessionObject& s) { return s.SessionID(); }),
              ReadWrite<SessionObject>(
                  "Timeout", 6, [](SessionObject& s, Args&) { return s.TimeoutMinutes(); },
                  [](SessionObject& s, Args&, const Variant& v) { s.SetTimeoutMinutes(v.ToLong()); }),
              ReadWrite<SessionObject>(
                  "LCID", 7, [](SessionObject& s, Args&) { return s.LCID(); },
                  [](SessionObject& s, Args&, const Variant& v) { s.SetLCID(v.ToLong()); }),
              ReadWrite<SessionObject>(
                  "CodePage", 8, [](SessionObject& s, Args&) { return s.CodePage(); },
                  [](SessionObject& s, Args&, const Variant& v) { s.SetCodePage(v.ToLong()); }),
              // corvane's own: a sign-in page moves the session to a new id after the page.
              Method<SessionObject>("RequestNewID", 9, [](SessionObject& s, Args&) { s.RequestNewID(); }),
              StaticObjectsMember<SessionObject>(10),
          },
  };
  return info;
}

const ClassInfo& Application::Info() const {
  static const ClassInfo info{
      .className = "Application",
      .members =
          {
              Item<Application>(),
              ContentsMember<Application>(1),
              Method<Application>("Lock", 2, [](Application& o, Args&) { o.Lock(); }),
              Method<Application>("Unlock", 3, [](Application& o, Args&) { o.Unlock(); }),
              StaticObjectsMember<Application>(4),
          },
  };
  return info;
}

const ClassInfo& RequestCollection::Info() const {
  static const ClassInfo info{
      .className = "IRequestDictionary",
      .members =
          {
              Method<RequestCollection>(
                  "Item", 0,
                  [](RequestCollection& c, Args& a) { return a.empty() ? Variant(c.Raw()) : c.Item(a[0]); }),
              Reader<RequestCollection>("Count", 1, [](RequestCollection& c) { return c.Count(); }),
              Method<RequestCollection>(
                  "Key", 2, [](RequestCollection& c, Args& a) { return c.Key(Arg(a, 0).ToLong()); }),
          },
  };
  return info;
}

const ClassInfo& ContentsCollection::Info() const {
  static const ClassInfo info{
      .className = "IVariantDictionary",
      .members =
          {
              Custom<ContentsCollection>("Item", 0, kAny,
                                         [](ContentsCollection& c, InvokeKind kind, Args& a) -> Variant {
                                           if (!IsPropertyWrite(kind)) return c.Item(Arg(a, 0));
                                           c.SetItem(Arg(a, 0), PropertyValue(a));
                                           return {};
                                         }),
              Reader<ContentsCollection>(
                  "Count", 1, [](ContentsCollection& c) { return static_cast<int32_t>(c.Values().Count()); }),
              Method<ContentsCollection>(
                  "Key", 2, [](ContentsCollection& c, Args& a) { return c.Key(Arg(a, 0).ToLong()); }),
              Method<ContentsCollection>("Remove", 3,
                                         [](ContentsCollection& c, Args& a) { c.Remove(Arg(a, 0)); }),
              Method<ContentsCollection>("RemoveAll", 4,
                                         [](ContentsCollection& c, Args&) { c.Values().Clear(); }),
          },
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
              Method<Server>("MapPath", 4, [](Server& s, Args& a) { return s.MapPath(Arg(a, 0).Text()); }),
              Method<Server>("Execute", 5, [](Server& s, Args& a) { s.Execute(Arg(a, 0).ToString()); }),
              Method<Server>("Transfer", 6, [](Server& s, Args& a) { s.Transfer(Arg(a, 0).ToString()); }),
              ReadWrite<Server>(
                  "ScriptTimeout", 7, [](Server& s, Args&) { return s.ScriptTimeout(); },
                  [](Server& s, Args&, const Variant& v) { s.SetScriptTimeout(v.ToLong()); }),
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
