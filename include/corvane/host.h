// The page host's object model: ScriptingContext, Request, Response, Session, Server, Application.
//
// The same objects serve corvane-server and the tests. A Page binds them to one request: it decodes
// the query string and an urlencoded body in the request's code page, collects every Response.Write,
// creates objects for Server.CreateObject through the class factory its host gives it, and at its end
// calls OnEndPage on each object that Server.CreateObject attached to it.
//
// Scripts reach the same objects late-bound (host_members.cc). Where a member is called without its
// name argument it answers a collection object: Request.Form, Request.QueryString,
// Request.ServerVariables, Request.Cookies, Session.Contents and Application.Contents count their
// names (Count), give a name by 1-based position (Key) and a value by name or position (Item, the
// default member), and For Each walks their names.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane::host {

class ScriptingContext;

// Creates an object by ProgID or CLSID for Server.CreateObject (corvane::CreateObject of
// corvane/registry.h has this shape); it raises 429 for a name it does not know.
using ClassFactory = std::function<Object(std::string_view progID)>;

// Names with their values, in order: headers, server variables.
using NameValues = std::vector<std::pair<std::string, std::string>>;

// A name/value collection as Request.Form and Request.QueryString present it: names are matched
// case-insensitively, a missing name gives Empty, a repeated name gives its values joined by ", ".
class ValueCollection {
 public:
  void Add(std::string name, std::string value);
  Variant Item(std::string_view name) const;
  size_t Count() const { return items_.size(); }
  const std::vector<std::pair<std::string, std::string>>& Items() const { return items_; }
  // The distinct names in the order they first came (a repeated name once, as first written).
  std::vector<std::string> Names() const;

 private:
  std::vector<std::pair<std::string, std::string>> items_;
};

// Where the changes of a Contents go besides the Contents itself: a store other processes read
// (corvane-server's Redis, when several servers share a site's sessions and Application). Each call
// comes before the change; an Error it raises refuses the change, and the page gets that error.
class ContentsStore {
 public:
  virtual ~ContentsStore() = default;
  virtual void Set(std::string_view key, const Variant& value) = 0;
  virtual void Remove(std::string_view key) = 0;
  virtual void Clear() = 0;
};

// Names with values, kept in the order they were first set; names match case-insensitively and keep
// the case they were first set with. Safe to share between threads. Session and Application hold
// their values in one.
class Contents {
 public:
  Variant Get(std::string_view key) const;  // Empty when missing
  void Set(std::string_view key, Variant value);
  void Remove(std::string_view key);
  void Clear();
  size_t Count() const;
  std::vector<std::string> Keys() const;
  // The key and value at a 0-based position, or nullopt past the end.
  std::optional<std::pair<std::string, Variant>> At(size_t index) const;
  // Every key with its value, in order.
  std::vector<std::pair<std::string, Variant>> Items() const;
  // Replaces every value at once, telling the store nothing (the values came from it); a key given
  // twice keeps its last value.
  void Assign(const std::vector<std::pair<std::string, Variant>>& items);
  // Sends every later Set, Remove and Clear to `store` first (nullptr: none). Set it before the
  // Contents is shared between threads.
  void SetStore(std::shared_ptr<ContentsStore> store) { store_ = std::move(store); }

 private:
  mutable std::mutex mu_;
  std::vector<std::pair<std::string, Variant>> items_;
  std::unordered_map<std::string, size_t> index_;  // lower-case key -> position in items_
  std::shared_ptr<ContentsStore> store_;
};

// Text made safe inside HTML elements and quoted attributes: < > & " ' become entities.
std::string HtmlEncode(std::string_view text);

// Parses "a=1&b=%C4%E3" (with "+" as blank), decoding names and values from the code page.
ValueCollection ParseUrlEncoded(std::string_view text, int codePage);
// The bytes of an URL path: each "%XX" decoded ("+" stays as it is); nullopt when a "%" is not
// followed by two hex digits.
std::optional<std::string> DecodeUrlPath(std::string_view path);
// Parses a Cookie header ("a=1; b=x%20y"), decoding the values from the code page.
ValueCollection ParseCookies(std::string_view header, int codePage);
// Escapes text for an URL query in the code page ("a b" -> "a+b", "中" -> "%D6%D0" in 936).
std::string UrlEncode(std::string_view text, int codePage);

// Resolves `path` against the site path of the page `base` ("/a/b.asp"): "/x" from the site root,
// "x" from the page's folder; "\\" separates as "/" does, "." and ".." are applied. nullopt when ".."
// would leave the site or the path names a drive or a stream (holds ":").
std::optional<std::string> ResolveSitePath(std::string_view base, std::string_view path);
// The local path of a site path under `folder`: each segment that exists on disk in another case
// takes the case it has there (the site's pages mix the case of folder names); the rest stays as given.
std::string LocalPathIn(const std::string& folder, std::string_view sitePath);

// The host's own errors (the facility 0x8004....), with the description the page shows.
Error HostError(std::string description);

class Request : public Dispatch {
 public:
  Request(std::string url, std::string queryString, std::string contentType, std::string body,
          std::string method, int codePage, NameValues serverVariables = {});
  const ClassInfo& Info() const override;

  Variant Form(std::string_view name) const;
  Variant QueryString(std::string_view name) const;
  const std::string& QueryString() const { return queryString_; }  // the raw query string
  // "URL" (the path without the query), "QUERY_STRING", "REQUEST_METHOD", "CONTENT_TYPE",
  // "CONTENT_LENGTH", and whatever the host added (REMOTE_ADDR, HTTP_* headers). Empty when unknown.
  Variant ServerVariables(std::string_view name) const;
  // A cookie of the Cookie header (the server variable HTTP_COOKIE), decoded; Empty when absent.
  Variant Cookies(std::string_view name) const;
  // Request("x"): the first of QueryString, Form, Cookies and ServerVariables that has the name.
  Variant Item(std::string_view name) const;
  const ValueCollection& FormValues() const { return form_; }
  const ValueCollection& QueryValues() const { return query_; }
  const ValueCollection& ServerVariableValues() const { return serverVariables_; }
  const ValueCollection& CookieValues() const { return cookies_; }
  int32_t TotalBytes() const { return static_cast<int32_t>(body_.size()); }
  // Reads up to `count` bytes of the raw body from where the last read stopped; `count` is set to the
  // number read. The result is a byte array.
  Variant BinaryRead(int32_t& count);
  // BinaryRead without the copy: the same bytes, as a view of the body. The view is valid as long
  // as this Request lives.
  std::string_view BinaryReadView(int32_t& count);
  const std::string& Body() const { return body_; }
  int CodePage() const { return codePage_; }

 private:
  std::string url_, queryString_, contentType_, body_, method_;
  int codePage_;
  ValueCollection serverVariables_, form_, query_, cookies_;
  size_t readPos_ = 0;
};

class ResponseCookie;

class Response : public Dispatch {
 public:
  explicit Response(int codePage = kCodePageGbk) : codePage_(codePage) {}
  const ClassInfo& Info() const override;

  // Writes the text form of any value (Null and Empty write nothing); an Object writes its default
  // value (13 when it has none).
  void Write(const Variant& v);
  void Write(std::string_view utf8);
  void Write(const std::string& utf8) { Write(std::string_view(utf8)); }
  void Write(const char* utf8) { Write(std::string_view(utf8)); }
  void BinaryWrite(const Bytes& bytes);  // raw bytes, sent as they are
  // Sends the browser to `url` (status 302). The page goes on; a script's Response.Redirect also
  // replaces what was written with a short "Object moved" page and ends the page.
  void Redirect(std::string url);
  void AddHeader(std::string name, std::string value);
  void SetContentType(std::string type);
  // Ends the page (Response.End): marks it ended and throws corvane::PageEnd; what was written is sent.
  [[noreturn]] void End();
  bool Ended() const { return ended_; }
  void MarkEnded() { ended_ = true; }
  // Drops everything written so far (text and binary).
  void Clear();
  // "404 Not Found" or "404": the code, and the text when given (else the usual one). A status
  // without a code from 100 to 999 raises 5.
  void SetStatus(std::string_view status);
  std::string StatusLine() const;  // "200 OK"
  // The charset named in Content-Type ("" : the code page's name).
  void SetCharset(std::string charset) { charset_ = std::move(charset); }
  const std::string& Charset() const { return charset_; }
  // The code page the text is sent in (the page's, unless the page sets another). An unsupported
  // one raises 5.
  int CodePage() const { return codePage_; }
  void SetCodePage(int codePage);
  // Expires in `minutes` from now, or at a Date (local time); both give an Expires header.
  void SetExpires(int32_t minutes);
  void SetExpiresAbsolute(double date);
  std::optional<double> ExpiresAt() const { return expires_; }  // local Date, when set
  std::optional<int32_t> ExpiresMinutes() const { return expiresMinutes_; }
  void SetCacheControl(std::string value) { cacheControl_ = std::move(value); }
  const std::string& CacheControl() const { return cacheControl_; }
  // The page cookie named so (created empty on first use). The cookies become Set-Cookie headers.
  std::shared_ptr<ResponseCookie> Cookie(std::string_view name);
  // Response.Buffer and Response.LCID: kept for the page to read back; the reply is always buffered.
  bool buffer = true;
  int32_t lcid = 2052;

  // What the page set, for the host that sends the reply.
  int Status() const { return status_; }
  const std::string& ContentType() const { return contentType_; }    // "text/html" unless set
  const std::string& RedirectLocation() const { return redirect_; }  // "" unless Redirect
  const NameValues& AddedHeaders() const { return headers_; }
  // Every header of the reply but Content-Type: AddHeader's, Location, Expires, Cache-Control and
  // one Set-Cookie per cookie, in that order.
  NameValues ReplyHeaders() const;
  // The Content-Type of the reply: a text type gets the charset (Charset, else the code page's).
  std::string ReplyContentType() const;
  // The reply's body: the text writes in the code page, then the binary writes.
  std::string ReplyBody() const;

  // Each Response.Write, in order, as UTF-8 (cut from the joined text).
  std::vector<std::string> Writes() const;
  // Response.AppendToLog: lines for the host's log, in order.
  void AppendToLog(std::string text) { log_.push_back(std::move(text)); }
  const std::vector<std::string>& LogEntries() const { return log_; }
  // UTF-8 text writes joined (binary writes excluded).
  const std::string& Output() const { return output_; }
  const std::string& Binary() const { return binary_; }

 private:
  int status_ = 200;
  std::string statusText_;
  std::string contentType_ = "text/html";
  std::string charset_;
  int codePage_;
  std::string redirect_;
  NameValues headers_;
  std::optional<double> expires_;
  std::optional<int32_t> expiresMinutes_;
  std::string cacheControl_;
  std::vector<std::shared_ptr<ResponseCookie>> cookies_;
  // The text writes, joined as they come (a page's writes are many and small: one buffer, one copy
  // each), and where each ends.
  static constexpr size_t kFirstCapacity = 32768;
  std::string output_;
  std::vector<size_t> writeEnds_;
  std::vector<std::string> log_;
  std::string binary_;
  bool ended_ = false;
};

// A cookie the page sets (Response.Cookies("name")): a value, or keys with values ("k1=v1&k2=v2"),
// and the attributes of its Set-Cookie header. Path is "/" unless set; HttpOnly and Secure only when
// asked.
class ResponseCookie : public Dispatch {
 public:
  explicit ResponseCookie(std::string name) : name_(std::move(name)) {}
  const ClassInfo& Info() const override;

  const std::string& Name() const { return name_; }
  void SetValue(std::string value);  // drops the keys
  std::string Value() const;         // "k1=v1&k2=v2" when it has keys
  void SetKey(std::string_view key, std::string value);
  Variant Key(std::string_view key) const;  // Empty when missing
  bool HasKeys() const { return !keys_.empty(); }
  std::optional<double> expires;  // a local Date
  std::string path = "/", domain;
  bool secure = false, httpOnly = false;
  // "name=value; expires=Sat, 01 Jan 2028 00:00:00 GMT; domain=x; path=/; secure; HttpOnly", the
  // name, value and keys URL-encoded in the code page.
  std::string SetCookieHeader(int codePage) const;

 private:
  std::string name_, value_;
  std::vector<std::pair<std::string, std::string>> keys_;
};

// The HTTP date ("Sat, 01 Jan 2028 00:00:00 GMT") of a local Date.
std::string HttpDate(double localDate);

// One user's session state. Keys are case-insensitive; a missing key reads as Empty.
class SessionObject : public Dispatch {
 public:
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override;  // For Each: the keys

  Variant Get(std::string_view key) const { return values_.Get(key); }
  void Set(std::string_view key, Variant value) { values_.Set(key, std::move(value)); }
  void Remove(std::string_view key) { values_.Remove(key); }
  void Clear() { values_.Clear(); }
  std::vector<std::string> Keys() const { return values_.Keys(); }
  Contents& Values() { return values_; }

  // The host's id of the session (Session.SessionID; "" in tests). The host assigns it.
  std::string SessionID() const;
  void AssignID(std::string id);
  // Asked by a page that changes who the session belongs to (sign-in): after the page the host moves
  // the session to a new id (AssignID clears the request) and sends the new cookie, so an id known
  // before the change is worthless.
  void RequestNewID();
  bool NewIDRequested() const;
  // Session.Abandon: the values stay for the rest of the page; after it the host ends the session.
  void Abandon();
  bool Abandoned() const;
  // Minutes the session may stay idle (Session.Timeout); below 1 raises 5.
  int TimeoutMinutes() const;
  void SetTimeoutMinutes(int minutes);
  // The session's code page (0: the server's). Setting it also sets the running page's.
  int CodePage() const;
  void SetCodePage(int codePage);
  int32_t LCID() const;
  void SetLCID(int32_t lcid);
  // The running page's Response (Session.CodePage changes its code page too); set by Page.
  void AttachResponse(std::weak_ptr<host::Response> response);
  // Objects of session scope that the site declares, created on first use; by name, case-blind.
  Contents& StaticObjects() { return staticObjects_; }

 private:
  mutable std::mutex mu_;
  std::string id_;
  bool newIDRequested_ = false, abandoned_ = false;
  int timeoutMinutes_ = 20, codePage_ = 0;
  int32_t lcid_ = 2052;
  std::weak_ptr<host::Response> response_;
  Contents values_, staticObjects_;
};

// Facade handle of a session: copies share the same state.
class Session {
 public:
  Session() : p_(std::make_shared<SessionObject>()) {}
  explicit Session(std::shared_ptr<SessionObject> p) : p_(std::move(p)) {}
  Variant Get(std::string_view key) const { return p_->Get(key); }
  void Set(std::string_view key, Variant value) const { p_->Set(key, std::move(value)); }
  Object AsObject() const { return Object(p_); }
  Variant AsVariant() const { return Variant(Object(p_)); }
  const std::shared_ptr<SessionObject>& ptr() const { return p_; }

 private:
  std::shared_ptr<SessionObject> p_;
};

// Shared by every page of one host. Keys are case-insensitive.
class Application : public Dispatch {
 public:
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override;  // For Each: the keys
  Variant Get(std::string_view key) const { return values_.Get(key); }
  void Set(std::string_view key, Variant value) { values_.Set(key, std::move(value)); }
  Contents& Values() { return values_; }
  Contents& StaticObjects() { return staticObjects_; }

  // Application.Lock: one lock for the application, held by the calling thread (a page runs on one
  // thread); it waits while another page holds it, and nests for the page that holds it.
  void Lock();
  // Releases one Lock of the calling thread; nothing when it holds none.
  void Unlock();
  // Releases every Lock the calling thread holds (the end of a page that forgot its Unlock).
  void UnlockAll();
  // Extends the lock across processes (corvane-server's Redis): `acquire` runs once a page's first
  // Lock holds the process's lock, `release` before its last Unlock (or UnlockAll) lets go of it.
  // `acquire` may raise: the Lock then raises and holds nothing. `release` must not raise. Set before
  // pages run.
  void ShareLock(std::function<void()> acquire, std::function<void()> release);

 private:
  void Free(std::unique_lock<std::mutex>& lock);  // the last level of the lock goes
  Contents values_, staticObjects_;
  std::mutex lockMu_;
  std::condition_variable lockFree_;
  std::thread::id owner_;
  int depth_ = 0;
  std::function<void()> acquireShared_, releaseShared_;
};

// An error that an attached object's OnEndPage raised. The page has been written by then, so the
// error is reported to the host (which logs it) instead of turning the page into an error page.
struct EndPageError {
  std::string className;
  Error error;
};

// Runs the script page at a site path into the page of `context` (Server.Execute); errors and
// PageEnd pass through.
using PageRunner = std::function<void(std::string_view sitePath, ScriptingContext& context)>;

class Server : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  // Creates the class through the page's class factory (without one, every name raises 429) and,
  // when it has OnStartPage, calls it with the page's context; the page's end then calls its
  // OnEndPage.
  Object CreateObject(std::string_view progID);
  // Escapes text for an URL query in the page's code page ("a b" -> "a+b", "中" -> "%D6%D0").
  std::string URLEncode(std::string_view text) const;
  std::string HTMLEncode(std::string_view text) const;
  // The local path of a site path: "/x" from the site root, "x" from the running page's folder,
  // found case-blind where it exists. Leaving the site, or a host without a site folder, raises.
  std::string MapPath(std::string_view path) const;
  // Runs another page into this response, then this page goes on (Execute), or ends (Transfer).
  // Without a page runner from the host, or nested too deep, they raise.
  void Execute(std::string_view path);
  [[noreturn]] void Transfer(std::string_view path);
  // Seconds a script page may run (Server.ScriptTimeout, 90 unless set); below 1 raises 5.
  int ScriptTimeout() const { return scriptTimeout_; }
  void SetScriptTimeout(int seconds);
  // The site path of the page running now (the executed one inside Execute).
  const std::string& CurrentPath() const { return currentPath_; }

  // Calls OnEndPage on every attached object, in the order they were created; once. Every object
  // gets its call even when an earlier one fails; the failures are answered, not raised.
  std::vector<EndPageError> EndPage();

 private:
  friend class Page;
  int CodePage() const;
  std::weak_ptr<ScriptingContext> context_;
  ClassFactory createObject_;
  PageRunner runPage_;
  std::string siteFolder_, currentPath_;
  std::vector<Object> attached_;
  int codePage_ = kCodePageGbk;
  int scriptTimeout_ = 90;
  int executeDepth_ = 0;
};

class ScriptingContext : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  const std::shared_ptr<host::Request>& Request() const { return request_; }
  const std::shared_ptr<host::Response>& Response() const { return response_; }
  const std::shared_ptr<SessionObject>& Session() const { return session_; }
  const std::shared_ptr<host::Server>& Server() const { return server_; }
  const std::shared_ptr<host::Application>& Application() const { return application_; }

 private:
  friend class Page;
  std::shared_ptr<host::Request> request_;
  std::shared_ptr<host::Response> response_;
  std::shared_ptr<SessionObject> session_;
  std::shared_ptr<host::Server> server_;
  std::shared_ptr<host::Application> application_;
};

struct PageRequest {
  std::string url;              // the page's path, without the query: "/t.asp"
  std::string queryString;      // raw, without "?"
  std::string contentType;      // of the body
  std::string body;             // raw bytes
  std::string method;           // "" means GET without a body, POST with one
  int codePage = kCodePageGbk;  // of the query string, the urlencoded body and the response
  NameValues serverVariables;   // more, e.g. REMOTE_ADDR
};

// What the page host gives every page: the application shared by its pages (a page of its own when
// none), the factory behind Server.CreateObject (none: every name raises 429), the site's folder
// (Server.MapPath; none: MapPath raises) and the runner of script pages (Server.Execute and
// Server.Transfer; none: they raise).
struct PageHost {
  std::shared_ptr<host::Application> application;
  ClassFactory createObject;
  std::string siteFolder;
  PageRunner runPage;
};

// One page request bound to a session. The page's end (End(), or the destructor) calls OnEndPage of
// the objects attached through Server.CreateObject.
class Page {
 public:
  Page(PageRequest request, Session session, PageHost host = {});
  ~Page();
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  Variant Context() const;  // the ScriptingContext as an Object Variant, for OnStartPage
  const std::shared_ptr<ScriptingContext>& ContextObject() const { return context_; }
  host::Request& Request() const { return *context_->Request(); }
  host::Response& Response() const { return *context_->Response(); }
  host::Server& Server() const { return *context_->Server(); }
  host::Session Session() const { return host::Session(context_->Session()); }

  std::vector<std::string> Writes() const { return context_->Response()->Writes(); }
  std::string Output() const { return context_->Response()->Output(); }
  // Ends the page (once): OnEndPage of every attached object, and an Application.Lock the page
  // still holds is released. Answers the errors the objects raised.
  std::vector<EndPageError> End();

 private:
  std::shared_ptr<ScriptingContext> context_;
  bool ended_ = false;
};

}  // namespace corvane::host
