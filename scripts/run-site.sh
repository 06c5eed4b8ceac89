#!/usr/bin/env bash
# Installs, builds, seeds and starts the demo office site on its embedded SQLite database.
#   bash scripts/run-site.sh [corvane-server options]     (PORT=8080 by default; Ctrl-C stops it)
# The database is data/corvane-site.db (created and seeded on first start), uploads go to data/drives.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh site
cmake -S . -B build-site -DCMAKE_BUILD_TYPE=Release -DCORVANE_SANITIZE=OFF -DCORVANE_TESTS=OFF >/dev/null
cmake --build build-site -j2 --target corvane-server
port="${PORT:-8080}"
echo
echo "  open http://127.0.0.1:${port}/   (sign in as zhangwei / 123456, or sysop / sysop)"
echo
exec build-site/server/corvane-server --port "$port" --db data/corvane-site.db --drives data/drives "$@"
