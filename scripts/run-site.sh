#!/usr/bin/env bash
# Installs, builds, seeds and starts the demo office site on its embedded SQLite database.
#   bash scripts/run-site.sh [corvane-server options]     (PORT=8080 by default; Ctrl-C stops it)
# The database is data/corvane-site.db (created and seeded on first start), uploads go to data/drives.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh site
# Release, optimized with a profile of the site's pages: the first build takes a few minutes more.
bash scripts/build-release.sh build-site
port="${PORT:-8080}"
echo
echo "  open http://127.0.0.1:${port}/   (sign in as zhangwei / 123456, or sysop / sysop)"
echo
exec build-site/server/corvane-server --port "$port" --db data/corvane-site.db --drives data/drives "$@"
