#!/usr/bin/env bash
# Installs what the tests need, builds everything with the sanitizers and runs every test: the unit
# tests, the server's HTTP tests, the browser test of the demo site (headless Chromium) and a
# fuzz run of the upload parser.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Debug -DCORVANE_SANITIZE=ON -DCORVANE_TESTS=ON
cmake --build build -j2
(cd tests/browser && npm ci --no-audit --no-fund --loglevel=error)
# The data layer's server backends: throwaway PostgreSQL and MariaDB under build/db-servers, stopped
# and removed on every exit; the server tests read their connection strings from the environment.
trap 'bash scripts/db-servers.sh stop build/db-servers' EXIT
bash scripts/db-servers.sh start build/db-servers
set -a
. build/db-servers/env
set +a
ctest --test-dir build --output-on-failure -j2
# The upload parser's fuzz target, for a fixed time (FUZZ_SECONDS, 60 by default).
bash scripts/fuzz.sh
