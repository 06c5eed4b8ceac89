#!/usr/bin/env bash
# Installs what the tests need, builds everything with the sanitizers and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Debug -DCORVANE_SANITIZE=ON -DCORVANE_TESTS=ON
cmake --build build -j2
ctest --test-dir build --output-on-failure -j2
