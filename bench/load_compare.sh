#!/usr/bin/env bash
# corvane-server beside nginx, in one run on loopback: wrk (2 threads) against
#   - the contact list page, round-robin over N signed-in sessions (bench/load_compare.lua),
#   - a static GIF of the site,
#   - nginx (2 workers, config in a scratch folder) serving a saved copy of the same list page bytes
#     and the same GIF on another port,
# at 50 and at 500 connections; prints req/s, p50, p99, max, socket errors and timeouts for each, the
# ratios corvane/nginx, the server's peak RSS, and checks the goals (exit status 1 when one is missed).
#
#   bash bench/load_compare.sh [--sessions N] [--duration SECONDS] [--connections "50 500"]
#                              [--server PATH] [--soak MINUTES]
#
# The server is the Release build of build-bench (built first) on a scratch copy of the demo database
# (data/corvane-site.db, or a freshly seeded one). --soak runs the list page load for that many minutes
# instead of the comparison and prints the server's RSS every 30 s. nginx and the server are stopped on
# every way out.
set -euo pipefail
cd "$(dirname "$0")/.."

sessions=50
duration=10
connections="50 500"
soak=0
server=""
while [ $# -gt 0 ]; do
  case "$1" in
    --sessions) sessions=$2; shift 2 ;;
    --duration) duration=$2; shift 2 ;;
    --connections) connections=$2; shift 2 ;;
    --soak) soak=$2; shift 2 ;;
    --server) server=$2; shift 2 ;;
    -h|--help) sed -n '2,16p' "$0"; exit 0 ;;
    *) echo "unknown option $1" >&2; exit 2 ;;
  esac
done
. bench/bench_common.sh
require_tools wrk nginx curl python3
build_bench_server

work=$(mktemp -d)
server_pid=""
nginx_pid=""
wrk_pid=""
stop() {
  local pid
  for pid in "$wrk_pid" "$nginx_pid" "$server_pid"; do
    [ -n "$pid" ] && kill "$pid" 2>/dev/null || true
  done
  for pid in "$wrk_pid" "$nginx_pid" "$server_pid"; do
    [ -n "$pid" ] && wait "$pid" 2>/dev/null || true
  done
  rm -rf "$work"
}
trap stop EXIT
trap 'exit 130' INT TERM HUP

# --- corvane-server on a scratch copy of the demo database
[ -f data/corvane-site.db ] && cp data/corvane-site.db "$work/site.db"
# wrk's connections all come from one address: the server's cap of connections per client address
# (a guard against one client holding them all) is raised above the largest run, as it would be for
# the address of a proxy in front.
server_options=()
if "$server" --help 2>&1 | grep -q -- --max-connections-per-client; then
  most=0
  for c in $connections 50; do [ "$c" -gt "$most" ] && most=$c; done
  server_options+=(--max-connections-per-client $((most + 16)))
fi
"$server" --port 0 --db "$work/site.db" --drives "$work/drives" "${server_options[@]}" \
  >"$work/server.out" 2>"$work/server.err" &
server_pid=$!
base=$(await_address "$server_pid" "$work/server.out")
[ -n "$base" ] || { echo "corvane-server did not start" >&2; cat "$work/server.out" "$work/server.err" >&2; exit 1; }

rss() { awk -v k="$2:" '$1 == k { print $2 / 1024 }' "/proc/$1/status" 2>/dev/null; }

# --- N signed-in sessions, each having visited the list once (its sort and page size kept, as a user's)
page_path="/contact.asp?action=list&page=3"
sign_in_sessions "$base" "$work/cookies" "$sessions" "$page_path"
first_cookie=$(head -1 "$work/cookies")
# The sign-ins' password hashing (Argon2id, 64 MiB each) sets the peak so far: the peak is taken
# again from here, so that it shows what the load costs.
signin_peak=$(rss "$server_pid" VmHWM)
echo 5 >"/proc/$server_pid/clear_refs" 2>/dev/null || true

# --- nginx serving the same bytes
mkdir -p "$work/www/images" "$work/nginx-tmp"
curl -s -f -H "Cookie: $first_cookie" -o "$work/www/contact.html" "$base$page_path"
static_path=/images/edit.gif
cp site/www/images/edit.gif "$work/www/images/edit.gif"
chmod -R a+rX "$work"
page_bytes=$(stat -c %s "$work/www/contact.html")
static_bytes=$(stat -c %s "$work/www/images/edit.gif")
grep -q '<table' "$work/www/contact.html" || { echo "the list page did not come back as a list" >&2; exit 1; }

nginx_port=$(free_port)
cat >"$work/nginx.conf" <<EOF
worker_processes 2;
daemon off;
pid $work/nginx.pid;
error_log $work/nginx-error.log;
events { worker_connections 2048; }
http {
  types { text/html html; image/gif gif; }
  access_log $work/nginx-access.log;
  sendfile on;
  client_body_temp_path $work/nginx-tmp/body;
  proxy_temp_path $work/nginx-tmp/proxy;
  fastcgi_temp_path $work/nginx-tmp/fastcgi;
  uwsgi_temp_path $work/nginx-tmp/uwsgi;
  scgi_temp_path $work/nginx-tmp/scgi;
  server {
    listen 127.0.0.1:$nginx_port;
    root $work/www;
  }
}
EOF
nginx -c "$work/nginx.conf" -p "$work" 2>>"$work/nginx-error.log" &
nginx_pid=$!
for _ in $(seq 1 50); do
  curl -s -f -o /dev/null "http://127.0.0.1:$nginx_port/contact.html" && break
  sleep 0.1
done
curl -s -f -o /dev/null "http://127.0.0.1:$nginx_port/contact.html" ||
  { echo "nginx did not start" >&2; cat "$work/nginx-error.log" >&2; exit 1; }

if [ "$soak" != 0 ]; then
  echo "soak: the list page, $sessions sessions, 50 connections, $soak minutes; server RSS every 30 s"
  printf '%8s %10s\n' "minute" "RSS MiB"
  printf '%8.1f %10.1f\n' 0 "$(rss "$server_pid" VmRSS)"
  wrk -t2 -c50 -d"$soak"m -s bench/load_compare.lua "$base$page_path" -- "$work/cookies" >"$work/wrk.out" 2>&1 &
  wrk_pid=$!
  start=$SECONDS
  while kill -0 "$wrk_pid" 2>/dev/null; do
    for _ in $(seq 1 30); do kill -0 "$wrk_pid" 2>/dev/null && sleep 1; done
    printf '%8.1f %10.1f\n' "$(echo "($SECONDS - $start) / 60" | bc -l)" "$(rss "$server_pid" VmRSS)"
  done
  wait "$wrk_pid" || true
  wrk_pid=""
  grep RESULT "$work/wrk.out" || cat "$work/wrk.out"
  echo "peak RSS under the load: $(rss "$server_pid" VmHWM) MiB (during the sign-ins: $signin_peak MiB)"
  exit 0
fi

echo "corvane-server $base ($server ${server_options[*]}), nginx 127.0.0.1:$nginx_port (2 workers)"
echo "list page $page_path: $page_bytes bytes, $sessions sessions round-robin; static $static_path: $static_bytes bytes"
echo "wrk: 2 threads, ${duration} s per run; latencies in ms"
echo
printf '%-22s %6s %9s %8s %8s %8s %7s %8s %7s\n' what conns req/s p50 p99 max errors timeouts non2xx
declare -A rps p99 errs
row() {  # key label connections
  read -r r p50 p99v max e t n <<<"$result"
  rps[$1]=$r
  p99[$1]=$p99v
  errs[$1]=$((e + t + n))
  printf '%-22s %6s %9s %8s %8s %8s %7s %8s %7s\n' "$2" "$3" "$r" "$p50" "$p99v" "$max" "$e" "$t" "$n"
}
for c in $connections; do
  run_wrk "$c" "$duration" "$base$page_path" "$work/cookies"; row "page-corvane-$c" "list page, corvane" "$c"
  run_wrk "$c" "$duration" "http://127.0.0.1:$nginx_port/contact.html"; row "page-nginx-$c" "list page, nginx" "$c"
  run_wrk "$c" "$duration" "$base$static_path"; row "static-corvane-$c" "static GIF, corvane" "$c"
  run_wrk "$c" "$duration" "http://127.0.0.1:$nginx_port$static_path"; row "static-nginx-$c" "static GIF, nginx" "$c"
done

echo
echo "ratios corvane/nginx and goals:"
for c in $connections; do
  pr=$(ratio "${rps[page-corvane-$c]}" "${rps[page-nginx-$c]}")
  sr=$(ratio "${rps[static-corvane-$c]}" "${rps[static-nginx-$c]}")
  check "list page at $c connections: $pr of nginx's rate (goal >= 0.25)" "$pr >= 0.25"
  check "static GIF at $c connections: $sr of nginx's rate (goal >= 0.60)" "$sr >= 0.60"
  check "no socket errors, timeouts or non-2xx at $c connections (corvane: $((errs[page-corvane-$c] + errs[static-corvane-$c])))" \
    "${errs[page-corvane-$c]} + ${errs[static-corvane-$c]} == 0"
done
check "list page p99 at 50 connections: ${p99[page-corvane-50]:-?} ms (goal <= 20)" "${p99[page-corvane-50]:-999} <= 20"
check "static p99 at 50 connections: ${p99[static-corvane-50]:-?} ms (goal <= 10)" "${p99[static-corvane-50]:-999} <= 10"
echo "corvane-server peak RSS under the load: $(rss "$server_pid" VmHWM) MiB (now $(rss "$server_pid" VmRSS) MiB;" \
  "during the sign-ins: $signin_peak MiB)"
[ -s "$work/server.err" ] && { echo "server stderr (last lines):"; tail -5 "$work/server.err"; }
exit $missed
