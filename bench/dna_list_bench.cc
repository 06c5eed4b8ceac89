// DNA's list page on large tables, against what SQLite alone needs for the same page.
//
// Tables of 100,000 and 1,000,000 rows (built once into build-bench/, reused afterwards):
//   big(id integer primary key, name varchar(20), dept int, pay int, hired datetime), index on pay;
//   dept(deptID integer primary key, deptName varchar(20)), 50 codes.
// The page lists id,name,dept,pay at 20 rows a page with dept shown through a code look-up (one
// GetCodeName query per shown row), unsorted and sorted by the indexed pay column, on the first page
// and on page 1638 (the deepest page whose row numbers fit 16 bits; page 1639 must fail with
// overflow 6, which the program checks before measuring).
//
// Each iteration times one whole page view (page, object, OpenDNA, SetCodeSQL, DispList, CloseDNA,
// page end) and, untimed by the framework but timed by hand right after it, what SQLite alone does for
// the same page on a warm connection: count(*), the page's select with limit/offset, and the 20
// look-ups with one prepared statement. Counters:
//   dna_ms      the DNA page view (wall)     sqlite_ms   SQLite alone (wall)
//   ratio       dna_ms / sqlite_ms
//   dna_cpu_ms, sqlite_cpu_ms, cpu_ratio     the same in the thread's CPU time, steadier than the
//                                            wall clock on a busy machine
//   page_bytes  the bytes the page wrote (UTF-8)
//   peak_rss_MB the process's peak resident set after the benchmark (the 100k cases run first).
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "corvane/corvane.h"
#include "dna/dna.h"
#include "list_page_view.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using corvane::Variant;

using bench::CpuMs;
using bench::kPageSize;
using bench::Ms;
constexpr int kDepts = 50;

fs::path BenchDir() {
  if (const char* dir = std::getenv("CORVANE_BENCH_DB_DIR")) return dir;
  // The program lives in build-bench/bench/: the databases go to build-bench/.
  return fs::read_symlink("/proc/self/exe").parent_path().parent_path();
}

void Exec(sqlite3* db, const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    std::string message = error ? error : "?";
    sqlite3_free(error);
    throw std::runtime_error(sql + ": " + message);
  }
}

void BuildDatabase(const fs::path& file, int rows) {
  fs::path tmp = file;
  tmp += ".building";
  fs::remove(tmp);
  sqlite3* db = nullptr;
  sqlite3_open(tmp.c_str(), &db);
  Exec(db, "pragma journal_mode=off; pragma synchronous=off; begin");
  Exec(db, "create table big(id integer primary key, name varchar(20), dept int, pay int, hired datetime)");
  Exec(db, "create table dept(deptID integer primary key, deptName varchar(20))");
  sqlite3_stmt* st = nullptr;
  sqlite3_prepare_v2(db, "insert into big values(?,?,?,?,?)", -1, &st, nullptr);
  for (int i = 1; i <= rows; ++i) {
    std::string name = "员工" + std::to_string(i);
    char hired[16];
    std::snprintf(hired, sizeof hired, "20%02d-%02d-%02d", 10 + i % 16, 1 + i % 12, 1 + i % 28);
    sqlite3_bind_int(st, 1, i);
    sqlite3_bind_text(st, 2, name.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(st, 3, 1 + i % kDepts);
    sqlite3_bind_int(st, 4, static_cast<int>((i * 7919LL) % 100000));
    sqlite3_bind_text(st, 5, hired, -1, SQLITE_TRANSIENT);
    sqlite3_step(st);
    sqlite3_reset(st);
  }
  sqlite3_finalize(st);
  for (int d = 1; d <= kDepts; ++d)
    Exec(db, "insert into dept values(" + std::to_string(d) + ",'部门" + std::to_string(d) + "')");
  Exec(db, "create index big_pay on big(pay); commit");
  sqlite3_close(db);
  fs::rename(tmp, file);
}

// Builds the file in a child process, so that the benchmark's peak memory is its own.
fs::path EnsureDatabase(int rows) {
  fs::path file = BenchDir() / ("dna_list_bench_" + std::to_string(rows) + ".db");
  if (fs::exists(file)) return file;
  std::fprintf(stderr, "building %s ...\n", file.c_str());
  pid_t child = fork();
  if (child == 0) {
    try {
      BuildDatabase(file, rows);
      _exit(0);
    } catch (const std::exception& e) {
      std::fprintf(stderr, "%s\n", e.what());
      _exit(1);
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error("building the database failed");
  return file;
}

struct Case {
  fs::path file;
  bool sorted;
  int page;
};

const char* kListSQL = "select id,name,dept,pay from big";

std::string ConnectionOf(const fs::path& file) { return "Provider=SQLite;Data Source=" + file.string(); }

// What SQLite alone does for the same page: count, page select, look-ups.
size_t SqliteAlone(sqlite3* db, const Case& c) {
  size_t bytes = 0;
  sqlite3_stmt* st = nullptr;
  sqlite3_prepare_v2(db, "select count(*) from big", -1, &st, nullptr);
  sqlite3_step(st);
  bytes += static_cast<size_t>(sqlite3_column_int(st, 0) > 0);
  sqlite3_finalize(st);

  std::string page = std::string(kListSQL) + (c.sorted ? " order by pay" : "") + " limit " +
                     std::to_string(kPageSize) + " offset " + std::to_string((c.page - 1) * kPageSize);
  sqlite3_stmt* lookup = nullptr;
  sqlite3_prepare_v2(db, "select deptName,deptID from dept where deptID=?", -1, &lookup, nullptr);
  sqlite3_prepare_v2(db, page.c_str(), -1, &st, nullptr);
  while (sqlite3_step(st) == SQLITE_ROW) {
    for (int col = 0; col < 4; ++col) {
      const unsigned char* text = sqlite3_column_text(st, col);
      bytes += text ? std::char_traits<char>::length(reinterpret_cast<const char*>(text)) : 0;
    }
    sqlite3_bind_int(lookup, 1, sqlite3_column_int(st, 2));
    if (sqlite3_step(lookup) == SQLITE_ROW) bytes += static_cast<size_t>(sqlite3_column_bytes(lookup, 0));
    sqlite3_reset(lookup);
  }
  sqlite3_finalize(st);
  sqlite3_finalize(lookup);
  return bytes;
}

double PeakRssMB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

void BM_DispList(benchmark::State& state, Case c) {
  corvane::host::Session session = bench::ListPageSession(c.sorted);
  sqlite3* db = nullptr;
  sqlite3_open_v2(c.file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  Clock::duration dna{}, alone{};
  double dnaCpu = 0, aloneCpu = 0;
  size_t bytes = 0;
  for (auto _ : state) {
    auto t0 = Clock::now();
    double c0 = CpuMs(CLOCK_THREAD_CPUTIME_ID);
    bytes = bench::ViewListPage(ConnectionOf(c.file), "big", c.page, session);
    dnaCpu += CpuMs(CLOCK_THREAD_CPUTIME_ID) - c0;
    dna += Clock::now() - t0;
    state.PauseTiming();
    auto t1 = Clock::now();
    double c1 = CpuMs(CLOCK_THREAD_CPUTIME_ID);
    benchmark::DoNotOptimize(SqliteAlone(db, c));
    aloneCpu += CpuMs(CLOCK_THREAD_CPUTIME_ID) - c1;
    alone += Clock::now() - t1;
    state.ResumeTiming();
  }
  sqlite3_close(db);
  const double n = static_cast<double>(state.iterations());
  state.counters["dna_ms"] = Ms(dna) / n;
  state.counters["sqlite_ms"] = Ms(alone) / n;
  state.counters["ratio"] = Ms(dna) / Ms(alone);
  state.counters["dna_cpu_ms"] = dnaCpu / n;
  state.counters["sqlite_cpu_ms"] = aloneCpu / n;
  state.counters["cpu_ratio"] = dnaCpu / aloneCpu;
  state.counters["page_bytes"] = static_cast<double>(bytes);
  state.counters["peak_rss_MB"] = PeakRssMB();
}

// Page 1639 at 20 rows a page: 20 × 1639 does not fit 16 bits.
void CheckDeepPageOverflows(const fs::path& file) {
  corvane::host::Session session = bench::ListPageSession(false);
  try {
    bench::ViewListPage(ConnectionOf(file), "big", 1639, session);
  } catch (const corvane::Error& e) {
    if (e.Number() == 6) return;
    throw std::runtime_error("page 1639 raised " + std::to_string(e.Number()) + " instead of 6");
  }
  throw std::runtime_error("page 1639 did not overflow");
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  try {
    fs::path small = EnsureDatabase(100'000);
    fs::path large = EnsureDatabase(1'000'000);
    CheckDeepPageOverflows(large);
    std::fprintf(stderr, "page 1639 raises overflow (6): ok\n");
    for (auto [label, file] : {std::pair{"100k", small}, std::pair{"1M", large}}) {
      for (bool sorted : {false, true}) {
        for (int page : {1, 1638}) {
          std::string name = std::string("DispList/") + label + (sorted ? "/sorted_by_pay" : "/unsorted") +
                             "/page" + std::to_string(page);
          benchmark::RegisterBenchmark(name.c_str(), BM_DispList, Case{file, sorted, page})
              ->Unit(benchmark::kMillisecond)
              ->MinTime(1.0);
        }
      }
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "setup failed: %s\n", e.what());
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
