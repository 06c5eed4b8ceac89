// The page host's object model: ScriptingContext, Request, Response, Session, Server, Application.
//
// The same objects serve corvane-server and the tests. A Page binds them to one request: it decodes
// the query string and an urlencoded body in the request's code page, collects every Response.Write,
// creates objects for Server.CreateObject through the class factory its host gives it, and at its end
// calls OnEndPage on each object that Server.CreateObject attached to it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
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

 private:
  std::vector<std::pair<std::string, std::string>> items_;
};

// Text made safe inside HTML elements and quoted attributes: < > & " ' become entities.
std::string HtmlEncode(std::string_view text);

// Parses "a=1&b=%C4%E3" (with "+" as blank), decoding names and values from the code page.
ValueCollection ParseUrlEncoded(std::string_view text, int codePage);

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
  NameValues serverVariables_;
  ValueCollection form_, query_;
  size_t readPos_ = 0;
};

class Response : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  // Writes the text form of any value (Null and Empty write nothing); an Object raises 13.
  void Write(const Variant& v);
  void Write(std::string_view utf8);
  void Write(const std::string& utf8) { Write(std::string_view(utf8)); }
  void Write(const char* utf8) { Write(std::string_view(utf8)); }
  void BinaryWrite(const Bytes& bytes);  // raw bytes, sent as they are
  // Sends the browser to `url` (status 302).
  void Redirect(std::string url);
  void AddHeader(std::string name, std::string value);
  void SetContentType(std::string type);

  // What the page set, for the host that sends the reply.
  int Status() const { return status_; }
  const std::string& ContentType() const { return contentType_; }    // "text/html" unless set
  const std::string& RedirectLocation() const { return redirect_; }  // "" unless Redirect
  const NameValues& AddedHeaders() const { return headers_; }

  const std::vector<std::string>& Writes() const { return writes_; }
  std::string Output() const;  // UTF-8 text writes joined (binary writes excluded)
  const std::string& Binary() const { return binary_; }

 private:
  int status_ = 200;
  std::string contentType_ = "text/html";
  std::string redirect_;
  NameValues headers_;
  std::vector<std::string> writes_;
  std::string binary_;
};

// One user's session state. Keys are case-insensitive; a missing key reads as Empty.
class SessionObject : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  Variant Get(std::string_view key) const;
  void Set(std::string_view key, Variant value);
  void Remove(std::string_view key);
  void Clear();
  std::vector<std::string> Keys() const;

  // The host's id of the session (Session.SessionID; "" in tests). The host assigns it.
  std::string SessionID() const;
  void AssignID(std::string id);
  // Asked by a page that changes who the session belongs to (sign-in): after the page the host moves
  // the session to a new id (AssignID clears the request) and sends the new cookie, so an id known
  // before the change is worthless.
  void RequestNewID();
  bool NewIDRequested() const;

 private:
  mutable std::mutex mu_;
  std::string id_;
  bool newIDRequested_ = false;
  std::map<std::string, std::pair<std::string, Variant>> items_;  // lower-case key -> (key, value)
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
  Variant Get(std::string_view key) const;
  void Set(std::string_view key, Variant value);

 private:
  mutable std::mutex mu_;
  std::map<std::string, Variant> items_;
};

// An error that an attached object's OnEndPage raised. The page has been written by then, so the
// error is reported to the host (which logs it) instead of turning the page into an error page.
struct EndPageError {
  std::string className;
  Error error;
};

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

  // Calls OnEndPage on every attached object, in the order they were created; once. Every object
  // gets its call even when an earlier one fails; the failures are answered, not raised.
  std::vector<EndPageError> EndPage();

 private:
  friend class Page;
  std::weak_ptr<ScriptingContext> context_;
  ClassFactory createObject_;
  std::vector<Object> attached_;
  int codePage_ = kCodePageGbk;
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
// none) and the factory behind Server.CreateObject (none: every name raises 429).
struct PageHost {
  std::shared_ptr<host::Application> application;
  ClassFactory createObject;
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
  // Ends the page (once): OnEndPage of every attached object. Answers the errors they raised.
  std::vector<EndPageError> End();

 private:
  std::shared_ptr<ScriptingContext> context_;
  bool ended_ = false;
};

}  // namespace corvane::host
