#!/usr/bin/env bash
# Installs the Debian packages the build and tests need; skips apt entirely when all are present.
#   bash scripts/deps.sh          everything: the build, the tests, benchmarks and fuzzing
#   bash scripts/deps.sh site     only what building and running corvane-server needs
#   bash scripts/deps.sh servers  only PostgreSQL and MariaDB with their ODBC drivers (scripts/db-servers.sh)
#   build: compilers, CMake, SQLite, unixODBC (database servers), PCRE2 (the script engine's RegExp),
#   libsodium (password hashes), Boost.Beast/Asio and OpenSSL (corvane-server's HTTP and HTTPS), hiredis
#   (sessions in Redis, --sessions), jemalloc (corvane-server's allocator), curl (the release build's
#   profile run, scripts/build-release.sh)
#   tests: GoogleTest, cpp-httplib (the server tests' client), Google Benchmark, clang with its runtime (fuzzing), chromium (headless browser
#   test), a CJK font (readable screenshots), the sqlite3 shell (the tests read the database), node and
#   npm (playwright-core drives chromium), wrk, nginx and lua5.4 (bench/), redis-server and nginx (the several
#   hosts test), PostgreSQL and MariaDB with
#   their ODBC drivers and FreeTDS's (the data layer's server backends; libpq and libmariadb are the bench's floors)
set -euo pipefail
pkgs=(build-essential cmake pkg-config libsqlite3-dev unixodbc-dev libpcre2-dev libsodium-dev libboost-dev
      libssl-dev libhiredis-dev libjemalloc-dev curl)
site_only=false
[ "${1:-}" = site ] && site_only=true
[ "${1:-}" = servers ] && pkgs=(postgresql odbc-postgresql mariadb-server odbc-mariadb) site_only=true
$site_only || pkgs+=(libgtest-dev libgmock-dev libcpp-httplib-dev libbenchmark-dev clang libclang-rt-14-dev
                     chromium fonts-wqy-microhei sqlite3 wrk nginx redis-server lua5.4
                     postgresql odbc-postgresql mariadb-server odbc-mariadb tdsodbc libpq-dev libmariadb-dev)
missing=()
for p in "${pkgs[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
# node and npm may come from Debian or be installed otherwise (a nodejs that bundles npm).
if ! $site_only; then
  command -v node >/dev/null 2>&1 || missing+=(nodejs)
  command -v npm >/dev/null 2>&1 || missing+=(npm)
fi
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  SUDO=""; [ "$(id -u)" = 0 ] || SUDO=sudo
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${missing[@]}"
fi
