#!/usr/bin/env bash
# DNA's list page on PostgreSQL and MariaDB beside each server's own client library (the floor).
#
#   bash bench/server_list_bench.sh [ROUNDS]     (ROUNDS per case, default 15)
#
# Builds server_list_bench (Release, in build-bench-db), starts throwaway servers with
# scripts/db-servers.sh (stopped and removed on exit), fills big_100k (100,000 rows) and big_1m
# (1,000,000 rows) and the 50 dept codes on each server once, then runs the program once per
# backend and table: first page and page 1638, unsorted and sorted by the indexed pay column, the
# DNA page and the floor side by side with their ratio, and each process's peak resident set. The
# summary at the end gives the largest ratio on the 1,000,000-row table and the peak resident set at
# both sizes. (The DNA page's own text grows with the table: its page chooser lists every page, 5,000
# options at 100,000 rows and 50,000 at 1,000,000, some 1.8 MB; the rows read do not.)
set -euo pipefail
cd "$(dirname "$0")/.."

rounds=${1:-15}
build=build-bench-db
servers=$build/db-servers

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DCORVANE_BENCH=ON -DCORVANE_TESTS=OFF >/dev/null
cmake --build "$build" -j2 --target server_list_bench | grep -E "error|warning|Linking" || true

trap 'bash scripts/db-servers.sh stop "$servers"' EXIT
bash scripts/db-servers.sh start "$servers"
set -a
. "$servers/env"
set +a
servers=$CORVANE_TEST_DB_DIR  # the absolute path
pg_port=$(sed -n 's/.*Port=\([0-9]*\).*/\1/p' <<<"$CORVANE_TEST_PG")

# The tables, through each server's own shell on its socket.
psql_run() {
  PGCLIENTENCODING=UTF8 psql -h "$servers/pg" -p "$pg_port" -U corvane -d corvane -v ON_ERROR_STOP=1 -q "$@"
}
mariadb_run() {
  mariadb --no-defaults -uroot --socket="$servers/mariadb/mariadb.sock" --default-character-set=utf8mb4 corvane "$@"
}

tables=("big_100k 100000" "big_1m 1000000")
echo "filling the tables ..."
start=$SECONDS
psql_run -c "create table dept(deptID int primary key, deptName varchar(20));
             insert into dept select d, '部门' || d from generate_series(1, 50) d"
mariadb_run -e "create table dept(deptID int primary key, deptName varchar(20));
                insert into dept with recursive d(n) as (select 1 union all select n + 1 from d where n < 50)
                select n, concat('部门', n) from d"
for entry in "${tables[@]}"; do
  read -r table rows <<<"$entry"
  psql_run -c "create table $table(id int primary key, name varchar(20), dept int, pay int, hired timestamp);
               insert into $table select i, '员工' || i, 1 + i % 50, (i * 7919::bigint % 100000)::int,
                 make_date(2010 + i % 16, 1 + i % 12, 1 + i % 28) from generate_series(1, $rows) i;
               create index ${table}_pay on $table(pay)"
  # MariaDB: the numbers 1..rows from a recursive table of the ten digits, crossed once per digit.
  digits=$((${#rows} - 1))
  sum="1" from="digit d0"
  for ((k = 0; k < digits; k++)); do
    sum+=" + d$k.d * $((10 ** k))"
    [ "$k" = 0 ] || from+=", digit d$k"
  done
  mariadb_run -e "create table $table(id int primary key, name varchar(20), dept int, pay int, hired datetime);
                  insert into $table
                  with recursive digit(d) as (select 0 union all select d + 1 from digit where d < 9),
                    n(i) as (select $sum from $from)
                  select i, concat('员工', i), 1 + i % 50, (i * 7919) % 100000,
                    makedate(2010 + i % 16, 1) + interval i % 12 month + interval i % 28 day from n;
                  create index ${table}_pay on $table(pay); analyze table $table" >/dev/null
done
psql_run -c "vacuum analyze dept, big_100k, big_1m"
echo "filled in $((SECONDS - start)) s"
echo

results=$servers/results.txt
for backend in pg mariadb; do
  for entry in "${tables[@]}"; do
    read -r table _ <<<"$entry"
    "$build/bench/server_list_bench" "$backend" "$table" "$rounds" | tee -a "$results"
  done
  echo
done

echo "summary (the aim: at most 1.3 times the floor on big_1m; peak memory not growing with the table)"
awk '/ratio/ && $2 == "big_1m" { for (i = 1; i < NF; i++) if ($i == "ratio" && $(i + 1) > max[$1]) max[$1] = $(i + 1) }
     /peak RSS/ { rss[$1] = rss[$1] sprintf("  %s %s MB", $2, $5) }
     END { for (b in max) printf "  %-10s largest ratio on big_1m %.2f;  peak RSS%s\n", b, max[b], rss[b] }' "$results"
