// The contact list as a script page (site/www/contact.asp) against the same page written as a C++
// handler, served by one corvane-server (in process, on 127.0.0.1) from one seeded database, with one
// signed-in session. Each iteration is one GET over a kept-alive connection.
//
//   ScriptPage   /contact.asp       the site's script page (common.inc, guard.inc, table.inc, DNA)
//   CxxPage      /contact_cxx.asp   the C++ handler below, doing what the script page does
//
// The counter script_vs_cxx on ScriptPage is its time per request over CxxPage's (goal: at most 1.2),
// taken from the CPU and wall times of both in the same run.
#include <benchmark/benchmark.h>
#include <httplib.h>

#include <cctype>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "corvane/ado.h"
#include "corvane/codepage.h"
#include "corvane/host.h"
#include "corvane/registry.h"
#include "http_server.h"
#include "site.h"

namespace {

namespace fs = std::filesystem;
using namespace corvane;

Variant Call(const Object& o, std::string_view name, std::initializer_list<Variant> args = {}) {
  Args a(args);
  return o.Invoke(name, a);
}

// The site's input guard in C++: no request value opens a tag, and the request's value of every
// column of the table fits the column's kind (digits for the key and integers).
bool OpensTag(const std::string& s) {
  for (size_t i = 0; i + 1 < s.size(); ++i)
    if (s[i] == '<' && (std::isalpha(static_cast<unsigned char>(s[i + 1])) || std::strchr("/!?", s[i + 1])))
      return true;
  return false;
}

bool GuardTable(server::PageContext& p, const std::string& connStr, const std::string& table) {
  for (const auto& [name, value] : p.Request.QueryValues().Items())
    if (OpensTag(name) || OpensTag(value)) return false;
  for (const auto& [name, value] : p.Request.FormValues().Items())
    if (OpensTag(name) || OpensTag(value)) return false;
  ado::Recordset rs;
  rs.Open("select * from " + table + " where 1=0", Variant(connStr), 1);
  for (int i = 0; i < rs.FieldCount(); ++i) {
    const int type = rs.FieldType(i);
    const bool integer = i == 0 || type == ado::adInteger || type == ado::adSmallInt || type == ado::adBigInt;
    for (const std::string& v :
         {p.Request.Form(rs.FieldName(i)).Text(), p.Request.QueryString(rs.FieldName(i)).Text()})
      if (integer && v.find_first_not_of("0123456789") != std::string::npos) return false;
  }
  rs.Close();
  return true;
}

// What contact.asp does for a list request, in C++: the input guard, DNA on the contact table with
// its look-ups and default columns, the head, the command bar and the list.
void ContactPage(server::PageContext& p) {
  if (p.Session.Get("personID").Text().empty()) return p.Response.Redirect("/login.asp");
  const std::string connStr = p.Application.Get("ConnStr").Text();
  if (!GuardTable(p, connStr, "contact")) return p.Response.SetStatus("400 Bad Request");
  Object dna = p.Server.CreateObject("corvane.DNA");
  Call(dna, "OpenDNA",
       {connStr,
        "select contactID,contactName,company,cityID,phone,email,createDate from contact where 1=1 "
        "order by contactID,contactName",
        "编号,姓名,单位,城市,电话,电子邮件,登记日期"});
  Call(dna, "SetCodeSQL",
       {"contactID;contactName;company;select cityName,cityID from city;phone;email;createDate"});
  Call(dna, "SetDefaultItem", {"contactID,contactName,company,cityID,phone,createDate"});
  Call(dna, "SetTitle", {"通讯录"});
  p.Response.Write("<html><head>\r\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=" +
                   CharsetName(p.Request.CodePage()) + "\">\r\n<title>" + host::HtmlEncode("通讯录") +
                   "</title>\r\n");
  Call(dna, "SetDispStyle", {1});
  p.Response.Write(
      "\r\n<link rel=\"stylesheet\" href=\"/include/site.css\" type=\"text/css\">"
      "\r\n<script src=\"/include/compat.js\"></script>\r\n</head>\r\n<body class=table>\r\n");
  Call(dna, "DispMenu");
  Call(dna, "DispList");
  Call(dna, "CloseDNA");
  p.Response.Write("\r\n</body></html>\r\n");
}

struct Site {
  fs::path work;
  std::unique_ptr<server::HttpServer> http;
  std::thread thread;
  std::unique_ptr<httplib::Client> client;
  httplib::Headers cookie;

  Site() {
    work = fs::temp_directory_path() / ("corvane-contact-bench-" + std::to_string(::getpid()));
    fs::create_directories(work / "drives");
    ::setenv("CORVANE_DRIVE_ROOT", (work / "drives").c_str(), 1);
    const std::string connStr = "Provider=SQLite;Data Source=" + (work / "site.db").string();
    site::PrepareDatabase(connStr);
    auto application = std::make_shared<host::Application>();
    application->Set("ConnStr", Variant(connStr));
    server::PageRegistry pages;
    pages.Add("/contact_cxx.asp", ContactPage);
    server::ServerOptions options;
    options.port = 0;
    options.site = CORVANE_SOURCE_DIR "/site/www";
    options.accessLog = false;
    http = std::make_unique<server::HttpServer>(
        options, std::move(pages), host::PageHost{.application = application, .createObject = CreateObject});
    int port = http->Bind();
    thread = std::thread([this] { http->Run(); });
    client = std::make_unique<httplib::Client>("127.0.0.1", port);
    client->set_keep_alive(true);
    auto signIn =
        client->Post("/login.asp", "loginName=zhangwei&password=123456", "application/x-www-form-urlencoded");
    if (!signIn) throw std::runtime_error("no answer to the sign-in");
    for (const auto& [name, value] : signIn->headers)
      if (name == "Set-Cookie") cookie = {{"Cookie", value.substr(0, value.find(';'))}};
    if (cookie.empty()) throw std::runtime_error("sign-in gave no session");
  }
  ~Site() {
    http->Stop();
    thread.join();
    fs::remove_all(work);
  }
  size_t Get(const char* path) {
    auto reply = client->Get(path, cookie);
    if (!reply || reply->status != 200) throw std::runtime_error(std::string("failed: ") + path);
    return reply->body.size();
  }
};

Site& TheSite() {
  static Site site;
  return site;
}

double cxxCpu = 0, cxxWall = 0;

void Serve(benchmark::State& state, const char* path) {
  Site& site = TheSite();
  size_t bytes = site.Get(path);  // warm: compiled, session settled
  auto wall0 = std::chrono::steady_clock::now();
  auto cpu0 = std::clock();
  for (auto _ : state) bytes = site.Get(path);
  double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall0).count();
  double cpu = double(std::clock() - cpu0) / CLOCKS_PER_SEC;
  state.counters["page_bytes"] = static_cast<double>(bytes);
  if (std::string(path) == "/contact_cxx.asp") {
    cxxCpu = cpu / state.iterations();
    cxxWall = wall / state.iterations();
  } else if (cxxWall > 0) {
    state.counters["script_vs_cxx"] = (wall / state.iterations()) / cxxWall;
    state.counters["script_vs_cxx_cpu"] = (cpu / state.iterations()) / cxxCpu;
  }
}

void CxxPage(benchmark::State& state) { Serve(state, "/contact_cxx.asp"); }
void ScriptPage(benchmark::State& state) { Serve(state, "/contact.asp"); }

BENCHMARK(CxxPage)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(ScriptPage)->Unit(benchmark::kMillisecond)->MinTime(3);

}  // namespace

BENCHMARK_MAIN();
