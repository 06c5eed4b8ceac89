#!/usr/bin/env bash
# Several hosts against one, in one run on loopback: wrk (2 threads, 50 connections) against the
# contact list page, round-robin over N signed-in sessions (bench/load_compare.lua), served by
#   1. one corvane-server, sessions in the process, straight (the baseline),
#   2. the same process through nginx (what the proxy costs),
#   3. one corvane-server with its sessions in Redis, through nginx (what Redis costs),
#   4. two corvane-servers with their sessions in Redis, through nginx round-robin (the arrangement
#      of README's "Several hosts").
# The four run in turn, in rounds (5 by default): this machine's rate drifts by 10% and more from one
# run to the next, so each ratio is taken within a round, between runs seconds apart, and the median
# of the rounds' ratios is checked. Prints req/s, p50, p99, max and errors for each run, and checks
# the goal: Redis's round trips cost at most 15% of the rate (3 against 2). Exit status 1 when it is
# missed.
#
#   bash bench/hosts_compare.sh [--sessions N] [--duration SECONDS] [--rounds N] [--server PATH]
#
# The servers are the Release build of build-bench (built first) on one scratch copy of the demo
# database (data/corvane-site.db, or a freshly seeded one); redis-server and nginx (1 worker) run
# with their configs in a scratch folder. Everything is stopped on every way out.
set -euo pipefail
cd "$(dirname "$0")/.."

sessions=50
duration=10
rounds=5
server=""
while [ $# -gt 0 ]; do
  case "$1" in
    --sessions) sessions=$2; shift 2 ;;
    --duration) duration=$2; shift 2 ;;
    --rounds) rounds=$2; shift 2 ;;
    --server) server=$2; shift 2 ;;
    -h|--help) sed -n '2,20p' "$0"; exit 0 ;;
    *) echo "unknown option $1" >&2; exit 2 ;;
  esac
done
. bench/bench_common.sh
require_tools wrk nginx redis-server curl python3
build_bench_server

work=$(mktemp -d)
chmod 755 "$work"
pids=()
wrk_pid=""
stop() {
  local pid
  [ -n "$wrk_pid" ] && kill "$wrk_pid" 2>/dev/null || true
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
  rm -rf "$work"
}
trap stop EXIT
trap 'exit 130' INT TERM HUP

await_port() {  # port what
  for _ in $(seq 1 150); do
    python3 -c "import socket,sys; socket.create_connection(('127.0.0.1', $1), 0.2)" 2>/dev/null && return 0
    sleep 0.2
  done
  echo "$2 did not start" >&2
  exit 1
}

# --- Redis, no persistence
redis_port=$(free_port)
redis-server --port "$redis_port" --bind 127.0.0.1 --save "" --appendonly no --dir "$work" \
  >"$work/redis.log" 2>&1 &
pids+=($!)
await_port "$redis_port" redis-server

# --- the servers on one database: the first seeds it when there is no demo database to copy
[ -f data/corvane-site.db ] && cp data/corvane-site.db "$work/site.db"
start_server() {  # name port [options...]
  local name=$1 port=$2
  shift 2
  "$server" --port "$port" --db "$work/site.db" --drives "$work/drives" --no-access-log \
    --max-connections-per-client 200 "$@" >"$work/$name.out" 2>"$work/$name.err" &
  pids+=($!)
  await_port "$port" "corvane-server $name"
}
port_local=$(free_port)
port_redis1=$(free_port)
port_redis2=$(free_port)
start_server local "$port_local"
start_server redis1 "$port_redis1" --sessions "redis://127.0.0.1:$redis_port"
start_server redis2 "$port_redis2" --sessions "redis://127.0.0.1:$redis_port"

# --- nginx: one port per arrangement
nginx_local=$(free_port)
nginx_one=$(free_port)
nginx_two=$(free_port)
mkdir -p "$work/nginx-tmp"
{
  [ "$(id -u)" = 0 ] && echo "user nobody nogroup;"
  cat <<EOF
worker_processes 1;
daemon off;
pid $work/nginx.pid;
error_log $work/nginx-error.log;
events { worker_connections 2048; }
http {
  access_log off;
  client_body_temp_path $work/nginx-tmp/body;
  proxy_temp_path $work/nginx-tmp/proxy;
  fastcgi_temp_path $work/nginx-tmp/fastcgi;
  uwsgi_temp_path $work/nginx-tmp/uwsgi;
  scgi_temp_path $work/nginx-tmp/scgi;
  upstream local { server 127.0.0.1:$port_local; keepalive 64; }
  upstream one { server 127.0.0.1:$port_redis1; keepalive 64; }
  upstream two { server 127.0.0.1:$port_redis1; server 127.0.0.1:$port_redis2; keepalive 64; }
  proxy_http_version 1.1;
  proxy_set_header Connection "";
  proxy_set_header Host \$host:\$server_port;
  server { listen 127.0.0.1:$nginx_local; location / { proxy_pass http://local; } }
  server { listen 127.0.0.1:$nginx_one; location / { proxy_pass http://one; } }
  server { listen 127.0.0.1:$nginx_two; location / { proxy_pass http://two; } }
}
EOF
} >"$work/nginx.conf"
nginx -c "$work/nginx.conf" -p "$work" 2>>"$work/nginx-error.log" &
pids+=($!)
await_port "$nginx_two" nginx

# --- N signed-in sessions for each store, each having visited the list once
page_path="/contact.asp?action=list&page=3"
sign_in_sessions "http://127.0.0.1:$port_local" "$work/cookies-local" "$sessions" "$page_path"
sign_in_sessions "http://127.0.0.1:$nginx_two" "$work/cookies-redis" "$sessions" "$page_path"
# Read whole before it is searched: grep -q stops at the first match, and under pipefail the cut-off
# curl would fail the check.
page=$(curl -s -f -H "Cookie: $(head -1 "$work/cookies-redis")" "http://127.0.0.1:$nginx_two$page_path" || true)
grep -q '<table' <<<"$page" ||
  { echo "the list page did not come back as a list through nginx" >&2; exit 1; }

echo "list page $page_path, $sessions signed-in sessions round-robin; wrk 2 threads, 50 connections, ${duration} s"
echo "redis-server 127.0.0.1:$redis_port, nginx 1 worker; latencies in ms"
echo
printf '%-56s %9s %8s %8s %8s %7s\n' arrangement req/s p50 p99 max errors
declare -A rps
errors=0
row() {  # key label
  read -r r p50 p99 max se t n <<<"$result"
  rps[$1]=$r
  errors=$((errors + se + t + n))
  printf '%-56s %9s %8s %8s %8s %7s\n' "$2" "$r" "$p50" "$p99" "$max" "$((se + t + n))"
}
median() { tr ' ' '\n' | sort -g | awk '{ v[NR] = $1 } END { printf "%.2f", NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
proxy_cost="" two_share="" redis_share=""
for round in $(seq 1 "$rounds"); do
  run_wrk 50 "$duration" "http://127.0.0.1:$port_local$page_path" "$work/cookies-local"
  row local "round $round: 1 process, sessions in it, straight"
  run_wrk 50 "$duration" "http://127.0.0.1:$nginx_local$page_path" "$work/cookies-local"
  row proxy "round $round: 1 process, sessions in it, through nginx"
  run_wrk 50 "$duration" "http://127.0.0.1:$nginx_one$page_path" "$work/cookies-redis"
  row one "round $round: 1 process, sessions in Redis, through nginx"
  run_wrk 50 "$duration" "http://127.0.0.1:$nginx_two$page_path" "$work/cookies-redis"
  row two "round $round: 2 processes, sessions in Redis, through nginx"
  proxy_cost+=" $(ratio "${rps[proxy]}" "${rps[local]}")"
  two_share+=" $(ratio "${rps[two]}" "${rps[proxy]}")"
  redis_share+=" $(ratio "${rps[one]}" "${rps[proxy]}")"
done

echo
echo "ratios within each round, and their median:"
echo "  nginx's cost:      $(median <<<"${proxy_cost# }") of the straight rate  (${proxy_cost# })"
echo "  two processes:     $(median <<<"${two_share# }") of one through nginx  (${two_share# })"
check "Redis's round trips: one process with them gives $(median <<<"${redis_share# }") of its rate without (${redis_share# }; goal >= 0.85)" \
  "$(median <<<"${redis_share# }") >= 0.85"
check "no socket errors, timeouts or non-2xx (lost sessions would be 302s)" "$errors == 0"
for name in local redis1 redis2; do
  [ -s "$work/$name.err" ] && { echo "$name stderr (last lines):"; tail -3 "$work/$name.err"; }
done
exit $missed
