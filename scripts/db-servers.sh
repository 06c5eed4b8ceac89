#!/usr/bin/env bash
# Throwaway database servers for the data layer's server tests.
#
#   bash scripts/db-servers.sh start DIR   a PostgreSQL cluster and a MariaDB data folder under DIR,
#                                          each on loopback on a free port with its socket in DIR, a
#                                          test user with a password and a database in each; writes
#                                          the ODBC connection strings to DIR/env:
#                                            CORVANE_TEST_PG='Driver={PostgreSQL Unicode};...'
#                                            CORVANE_TEST_MARIADB='Driver={MariaDB Unicode};...'
#                                          and ODBCSYSINI=DIR: the drivers' entries, logs off;
#                                          CORVANE_TEST_DB_DIR=DIR: the servers' folders, for the
#                                          tests that stop and start a server (PostgreSQL's data
#                                          folder is DIR/pg/data)
#   bash scripts/db-servers.sh stop DIR    stops both and removes DIR
#
# Both servers refuse to run as root: under root they run as the system user corvane-test (made when
# missing), otherwise as the calling user. MariaDB runs with lower_case_table_names=1, so table names
# match in any case as they do on SQL Server.
set -euo pipefail

action=${1:-}
dir=${2:-}
if [ -z "$action" ] || [ -z "$dir" ]; then
  echo "usage: $0 start|stop DIR" >&2
  exit 2
fi
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)

run=()
if [ "$(id -u)" = 0 ]; then
  getent passwd corvane-test >/dev/null ||
    useradd --system --no-create-home --home-dir /nonexistent --shell /usr/sbin/nologin corvane-test
  run=(runuser -u corvane-test --)
fi

pg_bin() {
  local bin
  bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
  [ -n "$bin" ] || { echo "PostgreSQL is not installed (bash scripts/deps.sh)" >&2; exit 1; }
  echo "$bin"
}

# A port on loopback that nothing listens on.
free_port() {
  local port
  for _ in $(seq 1 200); do
    port=$((20000 + RANDOM % 40000))
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      echo "$port"
      return
    fi
  done
  echo "no free port found" >&2
  exit 1
}

# Runs a step with its output in LOG; when it fails, says which step and shows the end of every log
# beside LOG (the server's own log too), before the caller's exit trap removes the folder.
step() {
  local what=$1 log=$2
  shift 2
  "$@" >"$log" 2>&1 && return
  echo "db-servers: $what failed" >&2
  tail -n 40 "$(dirname "$log")"/*.log >&2 || true
  exit 1
}

driver_or_library() {  # the driver's name when odbcinst.ini has it, else its library
  if odbcinst -q -d 2>/dev/null | grep -qx "\[$1\]"; then echo "{$1}"; else echo "$2"; fi
}

stop() {
  local bin
  if [ -f "$dir/pg/data/postmaster.pid" ]; then
    bin=$(pg_bin)
    "${run[@]}" "$bin/pg_ctl" -D "$dir/pg/data" -m fast -w stop >/dev/null 2>&1 || true
  fi
  if [ -f "$dir/mariadb/mariadb.pid" ]; then
    local pid
    pid=$(cat "$dir/mariadb/mariadb.pid")
    kill "$pid" 2>/dev/null || true
    for _ in $(seq 1 100); do
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.1
    done
  fi
  rm -rf "$dir"
}

start() {
  bash "$(dirname "${BASH_SOURCE[0]}")/deps.sh" servers
  stop
  mkdir -p "$dir/pg" "$dir/mariadb"
  [ ${#run[@]} -eq 0 ] || chown -R corvane-test: "$dir"
  chmod 700 "$dir"
  # A password with a ";" in it: the connection strings carry it in braces.
  local password bin pg_port my_port
  password="c0rv;$(od -An -N8 -tx1 /dev/urandom | tr -d ' \n')"
  bin=$(pg_bin)

  # PostgreSQL: the superuser reaches the cluster through the socket only; the test user through TCP
  # with its password.
  pg_port=$(free_port)
  step "PostgreSQL's initdb" "$dir/pg/initdb.log" "${run[@]}" "$bin/initdb" -D "$dir/pg/data" \
    -U postgres --encoding=UTF8 --no-locale --auth-local=trust --auth-host=scram-sha-256
  step "PostgreSQL's start" "$dir/pg/pg_ctl.log" "${run[@]}" "$bin/pg_ctl" -D "$dir/pg/data" \
    -l "$dir/pg/server.log" -w -t 120 \
    -o "-p $pg_port -k $dir/pg -c listen_addresses=127.0.0.1 -c max_connections=400 -c fsync=off" \
    start
  "${run[@]}" "$bin/psql" -h "$dir/pg" -p "$pg_port" -U postgres -d postgres -v ON_ERROR_STOP=1 -q \
    -c "create role corvane login createdb password '$password'" \
    -c "create database corvane owner corvane"

  # MariaDB: root through the socket without a password; the test user through TCP. InnoDB uses
  # simulated AIO: a container's shared aio-max-nr can be used up by its neighbours.
  my_port=$(free_port)
  local my=(--no-defaults --datadir="$dir/mariadb/data" --lower-case-table-names=1
            --character-set-server=utf8mb4 --collation-server=utf8mb4_general_ci
            --innodb-use-native-aio=0)
  step "MariaDB's install" "$dir/mariadb/install.log" "${run[@]}" mariadb-install-db "${my[@]}" \
    --auth-root-authentication-method=normal --skip-test-db
  "${run[@]}" mariadbd "${my[@]}" --bind-address=127.0.0.1 --port="$my_port" \
    --socket="$dir/mariadb/mariadb.sock" --pid-file="$dir/mariadb/mariadb.pid" \
    --log-error="$dir/mariadb/server.log" --max-connections=400 --skip-log-bin \
    --innodb-flush-log-at-trx-commit=0 </dev/null >/dev/null 2>&1 &
  local my_pid=$!
  # Ready once it answers on its socket; up to two minutes on a busy machine.
  for _ in $(seq 1 1200); do
    mariadb-admin --no-defaults -uroot --socket="$dir/mariadb/mariadb.sock" ping >/dev/null 2>&1 && break
    kill -0 "$my_pid" 2>/dev/null || break
    sleep 0.1
  done
  step "MariaDB's start" "$dir/mariadb/ping.log" \
    mariadb-admin --no-defaults -uroot --socket="$dir/mariadb/mariadb.sock" ping
  mariadb --no-defaults -uroot --socket="$dir/mariadb/mariadb.sock" -e "
    create user 'corvane'@'127.0.0.1' identified by '$password';
    create database corvane;
    grant all privileges on *.* to 'corvane'@'127.0.0.1';"

  local pg_driver my_driver
  pg_driver=$(driver_or_library "PostgreSQL Unicode" /usr/lib/x86_64-linux-gnu/odbc/psqlodbcw.so)
  my_driver=$(driver_or_library "MariaDB Unicode" /usr/lib/x86_64-linux-gnu/odbc/libmaodbc.so)
  # The tests' own driver list: the system's entries without psqlODBC's communication log (Debian
  # turns it on, and every test process would leave a log file in /tmp).
  for name in "PostgreSQL Unicode" "MariaDB Unicode"; do
    odbcinst -q -d -n "$name" 2>/dev/null | sed 's/^CommLog=.*/CommLog=0/' || true
    echo
  done >"$dir/odbcinst.ini"
  {
    echo "ODBCSYSINI='$dir'"
    echo "CORVANE_TEST_DB_DIR='$dir'"
    echo "CORVANE_TEST_PG='Driver=$pg_driver;Server=127.0.0.1;Port=$pg_port;Database=corvane;Uid=corvane;Pwd={$password}'"
    echo "CORVANE_TEST_MARIADB='Driver=$my_driver;Server=127.0.0.1;Port=$my_port;Database=corvane;Uid=corvane;Pwd={$password}'"
  } >"$dir/env.tmp"
  mv "$dir/env.tmp" "$dir/env"
  chmod 644 "$dir/env"
  echo "database servers under $dir: PostgreSQL on 127.0.0.1:$pg_port, MariaDB on 127.0.0.1:$my_port"
}

case "$action" in
  start) start ;;
  stop) stop ;;
  *) echo "usage: $0 start|stop DIR" >&2; exit 2 ;;
esac
