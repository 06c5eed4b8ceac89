# What the load benches share (sourced by bench/load_compare.sh and bench/hosts_compare.sh, from the
# repository's root): the Release server, free loopback ports, signed-in sessions, wrk runs and the
# goal checks, and the check for the programs they need. The caller sets $work (a scratch folder) and
# reads $result and $missed.

. scripts/await-address.sh

# Stops with a hint unless every named program is found (nginx and redis-server live in /usr/sbin,
# which a user's PATH may lack: it is added).
require_tools() {  # program...
  PATH=$PATH:/usr/sbin
  local tool
  for tool in "$@"; do
    command -v "$tool" >/dev/null || { echo "$tool is missing: bash scripts/deps.sh" >&2; exit 1; }
  done
}

# Builds build-bench's Release corvane-server (as the README's run command builds it: with the pages'
# profile, scripts/build-release.sh) unless $server names one already.
build_bench_server() {
  [ -n "$server" ] && return 0
  local build_log
  build_log=$(mktemp)
  bash scripts/build-release.sh build-bench >"$build_log" 2>&1 ||
    { cat "$build_log" >&2; rm -f "$build_log"; echo "the build failed" >&2; exit 1; }
  rm -f "$build_log"
  server=build-bench/server/corvane-server
}

free_port() {
  python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# N signed-in sessions, each having visited the page once (its sort and page size kept, as a
# user's); one "CORVANESESSIONID=..." per line in the cookie file.
sign_in_sessions() {  # base cookie-file count page-path
  : >"$2"
  local i cookie
  for i in $(seq 1 "$3"); do
    curl -s -o /dev/null -c "$work/jar" -d 'loginName=zhangwei&password=123456' "$1/login.asp"
    cookie=$(awk '$6 == "CORVANESESSIONID" { print $6 "=" $7 }' "$work/jar")
    [ -n "$cookie" ] || { echo "sign-in $i at $1 failed" >&2; exit 1; }
    curl -s -o /dev/null -H "Cookie: $cookie" "$1$4"
    echo "$cookie" >>"$2"
    rm -f "$work/jar"
  done
}

# One wrk run (2 threads, bench/load_compare.lua: the cookies round-robin): "rps p50 p99 max
# socket_errors timeouts non2xx" in $result. $wrk_pid names the run while it lasts.
run_wrk() {  # connections seconds url [cookie-file]
  local out="$work/wrk.out"
  wrk -t2 -c"$1" -d"$2"s --latency -s bench/load_compare.lua "$3" ${4:+-- "$4"} >"$out" 2>&1 &
  wrk_pid=$!
  wait "$wrk_pid" || true
  wrk_pid=""
  result=$(awk '$1 == "RESULT" {
      for (i = 2; i <= NF; i++) { split($i, kv, "="); v[kv[1]] = kv[2] }
      print v["rps"], v["p50"], v["p99"], v["max"], v["socket_errors"], v["timeouts"], v["non2xx"] }' "$out")
  [ -n "$result" ] || { cat "$out" >&2; result="0 0 0 0 1 0 0"; }
}

missed=0
check() {  # description, awk condition
  if awk "BEGIN { exit !($2) }"; then echo "  ok    $1"; else echo "  MISS  $1"; missed=1; fi
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }
