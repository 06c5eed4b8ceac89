# Sourced. await_address PID OUT [SECONDS]: the address (http://127.0.0.1:PORT) that a corvane-server
# started with --port 0 announces in its output file OUT, waited for up to SECONDS (30); nothing when
# the server ends first or never says it.
await_address() {
  local address="" i
  for i in $(seq 1 $((${3:-30} * 5))); do
    address=$(grep -o -m1 'http://127\.0\.0\.1:[0-9]*' "$2" || true)
    [ -n "$address" ] && break
    kill -0 "$1" 2>/dev/null || break
    sleep 0.2
  done
  echo "$address"
}
