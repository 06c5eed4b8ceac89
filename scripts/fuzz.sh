#!/usr/bin/env bash
# Builds the fuzzers with clang, libFuzzer and the sanitizers (in build-fuzz) and runs them: the
# upload parser for FUZZ_SECONDS seconds (default 60), then the page compiler for
# PAGE_FUZZ_SECONDS (default 30). Fails when a fuzzer finds a crash, a leak, a hang or a broken
# property; the crashing input is left in build-fuzz/. Installs nothing: clang and its libFuzzer
# runtime must be there (scripts/deps.sh installs them).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${FUZZ_SECONDS:-60}"
page_seconds="${PAGE_FUZZ_SECONDS:-30}"
command -v clang++ >/dev/null || { echo "fuzz.sh: clang++ not found" >&2; exit 2; }

# The library is instrumented for coverage too (fuzzer-no-link), so that the fuzzer sees the parser.
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCORVANE_FUZZ=ON -DCORVANE_SANITIZE=ON -DCORVANE_TESTS=OFF -DCORVANE_SERVER=OFF \
  -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link" >/dev/null
cmake --build build-fuzz -j2 --target upload_fuzz script_page_fuzz

# Absolute paths: the target works inside its own scratch folder.
here="$(pwd)"
corpus="$here/build-fuzz/corpus/upload"
page_corpus="$here/build-fuzz/corpus/script_page"
mkdir -p "$corpus" "$page_corpus"
cd build-fuzz
./fuzz/upload_fuzz -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=8192 \
  -dict="$here/fuzz/upload.dict" -artifact_prefix="$here/build-fuzz/" -print_final_stats=1 \
  "$corpus" "$here/fuzz/upload_seeds"
./fuzz/script_page_fuzz -max_total_time="$page_seconds" -timeout=10 -rss_limit_mb=2048 -max_len=16384 \
  -dict="$here/fuzz/script_page.dict" -artifact_prefix="$here/build-fuzz/" -print_final_stats=1 \
  "$page_corpus" "$here/fuzz/script_page_seeds"
