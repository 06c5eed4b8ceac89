// What the list page benches share: DNA's list page of the bench table (id,name,dept,pay, the dept
// shown through a code look-up) viewed as a site page views it, and their clocks.
#pragma once

#include <time.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "corvane/host.h"
#include "corvane/registry.h"
#include "corvane/variant.h"
#include "dna/dna.h"

namespace bench {

constexpr int kPageSize = 20;

// A session that has seen the list before: its page size, and the sort by pay when `sorted`.
inline corvane::host::Session ListPageSession(bool sorted) {
  corvane::host::Session session;
  session.Set("strURL", corvane::Variant("/big.asp"));  // a return to the same page keeps the sort
  session.Set("nPageSize", corvane::Variant(int16_t{kPageSize}));
  if (sorted) session.Set("strOrder", corvane::Variant("pay"));
  return session;
}

// One view of page `page` of `table` on `connection`, as a site page does it; answers the bytes written.
inline size_t ViewListPage(const std::string& connection, const std::string& table, int page,
                           corvane::host::Session& session) {
  using corvane::Variant;
  corvane::host::Page view(
      corvane::host::PageRequest{.url = "/big.asp", .queryString = "page=" + std::to_string(page)}, session,
      corvane::host::PageHost{.createObject = corvane::CreateObject});
  auto dna = view.Server().CreateObject("corvane.DNA").As<corvane::DNA>();
  Variant conn(connection), sql("select id,name,dept,pay from " + table), captions("编号,姓名,部门,工资");
  dna->OpenDNA(conn, sql, captions);
  dna->SetCodeSQL(Variant("id;name;select deptName,deptID from dept;pay"));
  dna->DispList();
  dna->CloseDNA();
  view.End();
  size_t bytes = 0;
  for (const std::string& w : view.Response().Writes()) bytes += w.size();
  return bytes;
}

inline double Ms(std::chrono::steady_clock::duration d) {
  return std::chrono::duration<double, std::milli>(d).count();
}

// CPU time in milliseconds of the process or of the calling thread (CLOCK_PROCESS_CPUTIME_ID,
// CLOCK_THREAD_CPUTIME_ID).
inline double CpuMs(clockid_t clock) {
  timespec ts{};
  clock_gettime(clock, &ts);
  return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) / 1e6;
}

}  // namespace bench
