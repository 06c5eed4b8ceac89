// The leader month view (DispLeaderMonth) over 200 staff with 20 plans each, against SQLite running the
// same statements by itself.
//
//   BM_LeaderMonth       the whole view through the scheduler, the data layer and SQLite
//   BM_DataLayerOnly     the same statements through ado::Recordset, reading every field of every row
//   BM_SqliteDirect      the same statements through the sqlite3 API, stepping every row and reading
//                        every column
//
// The statements are the ones the view really runs: an SQLite auto-extension puts a statement trace
// on every connection the process opens, which counts them (the "queries" counter) and records their
// text the first time, for the other two benchmarks to replay.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "corvane/corvane.h"
#include "scheduler/scheduler.h"
#include "test_support.h"

namespace {

using corvane::Variant;

constexpr int kStaff = 200;
constexpr int kPlansEach = 20;

// --- Statement trace on every connection ---------------------------------------------------------

long g_statements = 0;
bool g_recording = false;
std::vector<std::string> g_recorded;  // the expanded SQL, as SQLite ran it

int OnTrace(unsigned type, void*, void* stmt, void*) {
  if (type != SQLITE_TRACE_STMT) return 0;
  ++g_statements;
  if (g_recording) {
    // The SQL as prepared (after the data layer's dialect adaptation), not expanded: the view's
    // statements carry their values inline.
    g_recorded.emplace_back(sqlite3_sql(static_cast<sqlite3_stmt*>(stmt)));
  }
  return 0;
}

int InstallTrace(sqlite3* db, const char**, const sqlite3_api_routines*) {
  sqlite3_trace_v2(db, SQLITE_TRACE_STMT, OnTrace, nullptr);
  return SQLITE_OK;
}

// --- The data --------------------------------------------------------------------------------------

struct Fixture {
  corvane::testing::ScratchDatabase db;

  Fixture() {
    db.Run({
        "create table planAddrType(planAddrTypeID int primary key, planAddrTypeName varchar(20))",
        "create table planAddr(planAddrID int primary key, planAddrName varchar(40))",
        "create table personPlan(planID integer primary key, planStartTime datetime, planEndTime datetime,"
        " planAddrTypeID int, planAddrID int, planAddrDetail varchar(50), planTypeID int,"
        " planContent varchar(200), planAddition varchar(200), planFlagID int, personID int)",
        "create index personPlanByPerson on personPlan(personID, planStartTime)",
        "create table personDuty(dutyID int primary key, dutyName varchar(20))",
        "create table person(personID int primary key, personName varchar(20), dutyID int, systemID int)",
        "insert into planAddrType values (1,'本部'),(2,'北京'),(3,'外地'),(4,'国外')",
        "insert into planAddr values (1,'总部'),(2,'海淀'),(3,'上海'),(4,'东京'),(5,'广州')",
        "insert into personDuty values (1,'经理'),(2,'副经理'),(3,'主管'),(4,'职员'),(5,'助理')",
    });
    corvane::ado::Connection c;
    c.Open(db.connectionString);
    c.Execute("begin");
    for (int p = 1; p <= kStaff; ++p) {
      c.Execute("insert into person values (" + std::to_string(p) + ",'员工" + std::to_string(p) + "'," +
                std::to_string(1 + p % 5) + ",1)");
      // 20 plans spread over October to December, most of them in November; 3 in 4 public.
      for (int i = 0; i < kPlansEach; ++i) {
        int month = i < 2 ? 10 : (i < 18 ? 11 : 12);
        int day = 1 + (p * 7 + i * 3) % 28;
        char start[32], end[32];
        std::snprintf(start, sizeof start, "2026-%02d-%02d %02d:00:00", month, day, 8 + i % 4);
        std::snprintf(end, sizeof end, "2026-%02d-%02d 18:00:00", month, day + i % 3);
        c.Execute(std::string("insert into personPlan(planStartTime,planEndTime,planAddrTypeID,planAddrID,"
                              "planAddrDetail,planTypeID,planContent,planAddition,planFlagID,personID) "
                              "values ('") +
                  start + "','" + end + "'," + std::to_string(1 + i % 4) + "," + std::to_string(1 + i % 5) +
                  ",'room " + std::to_string(i) + "',1,'plan " + std::to_string(i) + "',''," +
                  (i % 4 == 3 ? "0" : "1") + "," + std::to_string(p) + ")");
      }
    }
    c.Execute("commit");
    c.Close();
  }
};

Fixture& Data() {
  static Fixture* f = [] {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(InstallTrace));
    return new Fixture();
  }();
  return *f;
}

const Variant kCond("person.personID>0");

// A page of the leader month, with the scheduler connected.
struct LeaderPage {
  corvane::host::Session session;
  corvane::host::Page page{corvane::host::PageRequest{.url = "/scheduler/leaderMonth.asp"}, session,
                           corvane::testing::LibraryHost()};
  std::shared_ptr<corvane::scheduler> s;

  LeaderPage() {
    session.Set("personID", Variant(1));
    session.Set("systemID", Variant(1));
    session.Set("rnd", Variant("12345"));
    s = page.Server().CreateObject("corvane.scheduler").As<corvane::scheduler>();
    Variant conn(Data().db.connectionString);
    s->Init(conn);
  }
};

// The statements of one view, in order, recorded once.
const std::vector<std::string>& ViewStatements() {
  static const std::vector<std::string> statements = [] {
    LeaderPage p;
    Variant dt = Variant::Date(2026, 11, 15), cond = kCond;
    g_recorded.clear();
    g_recording = true;
    p.s->DispLeaderMonth(dt, cond);
    g_recording = false;
    return g_recorded;
  }();
  return statements;
}

void BM_LeaderMonth(benchmark::State& state) {
  ViewStatements();
  LeaderPage p;
  Variant dt = Variant::Date(2026, 11, 15), cond = kCond;
  size_t bytes = 0;
  long before = g_statements;
  for (auto _ : state) {
    Variant html = p.s->DispLeaderMonth(dt, cond);
    bytes = html.StringPtr()->size();
    benchmark::DoNotOptimize(html);
  }
  state.counters["queries"] = benchmark::Counter(double(g_statements - before) / double(state.iterations()));
  state.counters["html_bytes"] = double(bytes);
}
BENCHMARK(BM_LeaderMonth)->Unit(benchmark::kMillisecond);

void BM_DataLayerOnly(benchmark::State& state) {
  const auto& statements = ViewStatements();
  auto conn = std::make_shared<corvane::ado::Connection>();
  conn->Open(Data().db.connectionString);
  long rows = 0;
  for (auto _ : state) {
    rows = 0;
    for (const std::string& sql : statements) {
      corvane::ado::Recordset rs;
      rs.Open(sql, conn, 1, -1, -1);
      int n = rs.FieldCount();
      for (; !rs.Eof(); rs.MoveNext(), ++rows)
        for (int i = 0; i < n; ++i) benchmark::DoNotOptimize(rs.Field(i));
    }
  }
  conn->Close();
  state.counters["queries"] = double(statements.size());
  state.counters["rows"] = double(rows);
}
BENCHMARK(BM_DataLayerOnly)->Unit(benchmark::kMillisecond);

void BM_SqliteDirect(benchmark::State& state) {
  const auto& statements = ViewStatements();
  sqlite3* db = nullptr;
  sqlite3_open_v2(Data().db.file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  long rows = 0;
  for (auto _ : state) {
    rows = 0;
    for (const std::string& sql : statements) {
      sqlite3_stmt* stmt = nullptr;
      if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
        state.SkipWithError(sqlite3_errmsg(db));
        break;
      }
      int n = sqlite3_column_count(stmt);
      while (sqlite3_step(stmt) == SQLITE_ROW) {
        ++rows;
        for (int i = 0; i < n; ++i) benchmark::DoNotOptimize(sqlite3_column_text(stmt, i));
      }
      sqlite3_finalize(stmt);
    }
  }
  sqlite3_close(db);
  state.counters["queries"] = double(statements.size());
  state.counters["rows"] = double(rows);
}
BENCHMARK(BM_SqliteDirect)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
