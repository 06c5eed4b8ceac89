#!/usr/bin/env bash
# Load test of corvane-server: wrk against a DNA list page with a signed-in session cookie
# (2 threads, 50 connections, 20 s), then against a static file. Loopback only; stops by itself.
#   bash bench/load_test.sh [path/to/corvane-server]
# Fails when wrk saw any socket error or non-2xx reply.
set -euo pipefail
cd "$(dirname "$0")/.."
server="${1:-}"
if [ -z "$server" ]; then
  bash scripts/build-release.sh build-site
  server=build-site/server/corvane-server
fi
command -v wrk >/dev/null || { echo "wrk is missing: bash scripts/deps.sh" >&2; exit 1; }

work=$(mktemp -d)
"$server" --port 0 --db "$work/site.db" --drives "$work/drives" --no-access-log >"$work/out" 2>&1 &
pid=$!
trap 'kill $pid 2>/dev/null; wait $pid 2>/dev/null; rm -rf "$work"' EXIT
for _ in $(seq 1 100); do
  base=$(grep -o 'http://127\.0\.0\.1:[0-9]*' "$work/out" || true)
  [ -n "$base" ] && break
  sleep 0.2
done
[ -n "$base" ] || { cat "$work/out"; exit 1; }

# Sign in and keep the session cookie.
curl -s -o /dev/null -c "$work/jar" -d 'loginName=zhangwei&password=123456' "$base/login.asp"
cookie=$(awk '$6 == "CORVANESESSIONID" { print $6 "=" $7 }' "$work/jar")
[ -n "$cookie" ] || { echo "sign-in failed" >&2; exit 1; }
# Visit the list once so that the session holds its sort and page size, as a user's would.
curl -s -o /dev/null -b "$work/jar" "$base/contact.asp"

failed=0
run() {
  local name=$1 url=$2
  echo "== $name: $url"
  wrk -t2 -c50 -d20s --latency -H "Cookie: $cookie" "$url" | tee "$work/wrk"
  if grep -q 'Socket errors\|Non-2xx' "$work/wrk"; then
    echo "!! errors under load" >&2
    failed=1
  fi
}
run "list page (one session: its pages run one at a time)" "$base/contact.asp?action=list&page=3"
run "static file" "$base/images/edit.gif"
exit $failed
