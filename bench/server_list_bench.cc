// DNA's list page on a database server, against what the server's own client library alone needs for
// the same page (the floor): libpq for PostgreSQL, libmariadb for MariaDB.
//
//   server_list_bench pg|mariadb TABLE [ROUNDS]
//
// The connection string comes from CORVANE_TEST_PG or CORVANE_TEST_MARIADB (scripts/db-servers.sh
// writes them); bench/server_list_bench.sh starts the servers, fills the tables and runs this program
// once per backend and table size, so that each process's peak memory is that of one table.
//
// TABLE(id int primary key, name varchar(20), dept int, pay int, hired timestamp), index on pay, and
// dept(deptID int primary key, deptName varchar(20)) with 50 codes. The page lists id,name,dept,pay at
// 20 rows a page with dept shown through a code look-up (one query per shown row), unsorted and sorted
// by the indexed pay column, on the first page and on page 1638 (the deepest page whose row numbers
// fit 16 bits). The floor does, on one warm connection: count(*), the page's select with
// limit/offset, and the 20 look-ups (a prepared statement on PostgreSQL, a text query on MariaDB, as
// each one's client is commonly used). Each round times one whole DNA page view and one floor, in
// alternating order; the medians are printed with their ratio, and the process's peak resident set at
// the end.
#include <libpq-fe.h>
#include <mysql.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ado/connection_string.h"
#include "corvane/corvane.h"
#include "dna/dna.h"
#include "list_page_view.h"

namespace {

using Clock = std::chrono::steady_clock;
using corvane::Variant;

using bench::CpuMs;
using bench::kPageSize;
using bench::Ms;
constexpr const char* kLookupSQL = "select deptName,deptID from dept where deptID=";

struct Case {
  bool sorted;
  int page;
};

std::string PageQuery(const std::string& table, const Case& c) {
  return "select id,name,dept,pay from " + table + (c.sorted ? " order by pay" : "") + " limit " +
         std::to_string(kPageSize) + " offset " + std::to_string((c.page - 1) * kPageSize);
}

// ---- the floors

class Floor {
 public:
  virtual ~Floor() = default;
  // Count, page, look-ups; answers the bytes read.
  virtual size_t Page(const std::string& table, const Case& c) = 0;
};

class PostgresFloor : public Floor {
 public:
  explicit PostgresFloor(const corvane::ado::detail::ConnectionString& cs) {
    auto quoted = [](const std::string& v) {
      std::string out = "'";
      for (char ch : v) out += ch == '\'' || ch == '\\' ? std::string{'\\', ch} : std::string{ch};
      return out + "'";
    };
    const std::string info = "host=" + quoted(cs.Get("server").value_or("127.0.0.1")) +
                             " port=" + quoted(cs.Get("port").value_or("5432")) +
                             " dbname=" + quoted(cs.Get("database").value_or("")) +
                             " user=" + quoted(cs.Get("uid").value_or("")) +
                             " password=" + quoted(cs.Get("pwd").value_or(""));
    c_ = PQconnectdb(info.c_str());
    if (PQstatus(c_) != CONNECTION_OK) throw std::runtime_error(PQerrorMessage(c_));
    PGresult* r = PQprepare(c_, "lookup", (std::string(kLookupSQL) + "$1").c_str(), 1, nullptr);
    Check(r);
    PQclear(r);
  }
  ~PostgresFloor() override { PQfinish(c_); }

  size_t Page(const std::string& table, const Case& c) override {
    size_t bytes = 0;
    PGresult* r = PQexec(c_, ("select count(*) from " + table).c_str());
    Check(r);
    bytes += PQgetlength(r, 0, 0);
    PQclear(r);
    r = PQexec(c_, PageQuery(table, c).c_str());
    Check(r);
    for (int row = 0; row < PQntuples(r); ++row) {
      for (int col = 0; col < 4; ++col) bytes += static_cast<size_t>(PQgetlength(r, row, col));
      const char* dept[1] = {PQgetvalue(r, row, 2)};
      PGresult* l = PQexecPrepared(c_, "lookup", 1, dept, nullptr, nullptr, 0);
      Check(l);
      if (PQntuples(l) > 0) bytes += static_cast<size_t>(PQgetlength(l, 0, 0));
      PQclear(l);
    }
    PQclear(r);
    return bytes;
  }

 private:
  void Check(PGresult* r) const {
    const ExecStatusType s = PQresultStatus(r);
    if (s == PGRES_TUPLES_OK || s == PGRES_COMMAND_OK) return;
    std::string message = PQresultErrorMessage(r);
    PQclear(r);
    throw std::runtime_error(message);
  }
  PGconn* c_ = nullptr;
};

class MariaDbFloor : public Floor {
 public:
  explicit MariaDbFloor(const corvane::ado::detail::ConnectionString& cs) {
    c_ = mysql_init(nullptr);
    const std::string host = cs.Get("server").value_or("127.0.0.1"), user = cs.Get("uid").value_or(""),
                      password = cs.Get("pwd").value_or(""), db = cs.Get("database").value_or("");
    const unsigned port = static_cast<unsigned>(std::stoul(cs.Get("port").value_or("3306")));
    if (!mysql_real_connect(c_, host.c_str(), user.c_str(), password.c_str(), db.c_str(), port, nullptr, 0))
      throw std::runtime_error(mysql_error(c_));
    mysql_set_character_set(c_, "utf8mb4");
  }
  ~MariaDbFloor() override { mysql_close(c_); }

  size_t Page(const std::string& table, const Case& c) override {
    size_t bytes = 0;
    MYSQL_RES* r = Query("select count(*) from " + table);
    if (mysql_fetch_row(r)) bytes += mysql_fetch_lengths(r)[0];
    mysql_free_result(r);
    r = Query(PageQuery(table, c));
    while (MYSQL_ROW row = mysql_fetch_row(r)) {
      const unsigned long* lengths = mysql_fetch_lengths(r);
      for (int col = 0; col < 4; ++col) bytes += lengths[col];
      MYSQL_RES* l = Query(kLookupSQL + std::string(row[2]));
      if (mysql_fetch_row(l)) bytes += mysql_fetch_lengths(l)[0];
      mysql_free_result(l);
    }
    mysql_free_result(r);
    return bytes;
  }

 private:
  MYSQL_RES* Query(const std::string& sql) {
    if (mysql_real_query(c_, sql.data(), sql.size()) != 0) throw std::runtime_error(mysql_error(c_));
    MYSQL_RES* r = mysql_store_result(c_);
    if (!r) throw std::runtime_error(mysql_error(c_));
    return r;
  }
  MYSQL* c_ = nullptr;
};

// ---- measuring

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const size_t n = v.size();
  return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

// A number from /proc/self/status in MB (VmHWM: the peak resident set).
double StatusMB(const std::string& key) {
  std::ifstream in("/proc/self/status");
  for (std::string line; std::getline(in, line);)
    if (line.compare(0, key.size() + 1, key + ":") == 0)
      return std::stod(line.substr(key.size() + 1)) / 1024.0;
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || (std::string(argv[1]) != "pg" && std::string(argv[1]) != "mariadb")) {
    std::fprintf(stderr, "usage: %s pg|mariadb TABLE [ROUNDS]\n", argv[0]);
    return 2;
  }
  const bool pg = std::string(argv[1]) == "pg";
  const std::string table = argv[2];
  const int rounds = argc > 3 ? std::max(1, std::atoi(argv[3])) : 15;
  const char* variable = pg ? "CORVANE_TEST_PG" : "CORVANE_TEST_MARIADB";
  const char* cs = std::getenv(variable);
  if (!cs || !*cs) {
    std::fprintf(stderr, "%s is not set (bench/server_list_bench.sh starts the servers)\n", variable);
    return 2;
  }
  const char* label = pg ? "PostgreSQL" : "MariaDB";
  try {
    const auto parsed = corvane::ado::detail::ConnectionString::Parse(cs);
    std::unique_ptr<Floor> floor;
    if (pg)
      floor = std::make_unique<PostgresFloor>(parsed);
    else
      floor = std::make_unique<MariaDbFloor>(parsed);

    for (bool sorted : {false, true}) {
      for (int page : {1, 1638}) {
        const Case c{sorted, page};
        corvane::host::Session session = bench::ListPageSession(sorted);
        const size_t pageBytes =
            bench::ViewListPage(cs, table, c.page, session);  // warm: pool, statements, caches
        floor->Page(table, c);
        if (pageBytes < 1000)
          throw std::runtime_error("the DNA page wrote only " + std::to_string(pageBytes) + " bytes");
        std::vector<double> dna, alone, dnaCpu, aloneCpu;
        for (int i = 0; i < rounds; ++i) {
          for (int turn = 0; turn < 2; ++turn) {
            const bool dnaTurn = (turn == 0) == (i % 2 == 0);
            const double cpu = CpuMs(CLOCK_PROCESS_CPUTIME_ID);
            const auto t = Clock::now();
            if (dnaTurn)
              bench::ViewListPage(cs, table, c.page, session);
            else
              floor->Page(table, c);
            (dnaTurn ? dna : alone).push_back(Ms(Clock::now() - t));
            (dnaTurn ? dnaCpu : aloneCpu).push_back(CpuMs(CLOCK_PROCESS_CPUTIME_ID) - cpu);
          }
        }
        const double d = Median(dna), f = Median(alone);
        std::printf(
            "%-10s %-12s %-8s page %4d: dna %8.2f ms  floor %8.2f ms  ratio %.2f  client cpu %6.2f / %6.2f ms"
            "  page %zu bytes\n",
            label, table.c_str(), sorted ? "by pay" : "unsorted", page, d, f, d / f, Median(dnaCpu),
            Median(aloneCpu), pageBytes);
        std::fflush(stdout);
      }
    }
  } catch (const corvane::Error& e) {
    std::fprintf(stderr, "%s: error %d: %s\n", label, e.Number(), e.Description().c_str());
    return 1;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s: %s\n", label, e.what());
    return 1;
  }
  std::printf("%-10s %-12s peak RSS %.1f MB\n", label, table.c_str(), StatusMB("VmHWM"));
  return 0;
}
