#!/usr/bin/env bash
# The script engine's figures in one run:
# - the language core beside Lua 5.4: the same three programs (bench/script_core_bench.cc,
#   bench/script/core.lua), the best of five runs each, and the ratio (goal: at most 2);
# - compiling a 2,000-line page with includes (goal: under 5 ms);
# - the contact list as a script page against the same page as a C++ handler, one server, one
#   database (contact_page_bench; goal: script_vs_cxx at most 1.2).
#   bash bench/script_bench.sh
set -euo pipefail
cd "$(dirname "$0")/.."
command -v lua5.4 >/dev/null || { echo "lua5.4 is missing: bash scripts/deps.sh" >&2; exit 1; }
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DCORVANE_BENCH=ON -DCORVANE_TESTS=OFF \
  -DCORVANE_SERVER=ON >/dev/null
cmake --build build-bench -j2 --target script_core_bench contact_page_bench >/dev/null
ours=$(build-bench/bench/script_core_bench --benchmark_filter='Loop|Fib' --benchmark_repetitions=5 \
         --benchmark_format=csv 2>/dev/null)
lua=$(lua5.4 bench/script/core.lua)
printf '%-14s %12s %12s %8s\n' program "corvane ms" "lua5.4 ms" ratio
for p in numeric_loop:NumericLoop string_loop:StringLoop fib25:Fib25; do
  name=${p%%:*} bench=${p#*:}
  # The fastest of the five repetitions (the real_time column, in ms).
  ms=$(printf '%s\n' "$ours" | awk -F, -v b="\"$bench\"" '$1 == b { print $3 }' | sort -g | head -1)
  l=$(printf '%s\n' "$lua" | awk -v n="$name" '$1 == n { print $2 }')
  awk -v n="$name" -v a="$ms" -v b="$l" 'BEGIN { printf "%-14s %12.2f %12.2f %8.2f\n", n, a, b, a / b }'
done
build-bench/bench/script_core_bench --benchmark_filter=CompilePage
build-bench/bench/contact_page_bench
