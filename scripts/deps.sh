#!/usr/bin/env bash
# Installs the Debian packages the build and tests need; skips apt entirely when all are present.
#   build: compilers, CMake, SQLite, GoogleTest, Google Benchmark, cpp-httplib (corvane-server)
#   site tests: chromium (headless browser test), a CJK font (readable screenshots), the sqlite3
#   shell (the tests read the database), node and npm (playwright-core drives chromium), wrk (bench/)
set -euo pipefail
pkgs=(build-essential cmake pkg-config libsqlite3-dev libgtest-dev libgmock-dev libbenchmark-dev
      libcpp-httplib-dev clang libclang-rt-14-dev
      chromium fonts-wqy-microhei sqlite3 wrk "$@")
missing=()
for p in "${pkgs[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
# node and npm may come from Debian or be installed otherwise (a nodejs that bundles npm).
command -v node >/dev/null 2>&1 || missing+=(nodejs)
command -v npm >/dev/null 2>&1 || missing+=(npm)
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  SUDO=""; [ "$(id -u)" = 0 ] || SUDO=sudo
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${missing[@]}"
fi
