#!/usr/bin/env bash
# Builds the upload fuzzer with clang, libFuzzer and the sanitizers (in build-fuzz) and runs it for
# FUZZ_SECONDS seconds (default 60). Fails when the fuzzer finds a crash, a leak or a broken
# property; the crashing input is left in build-fuzz/. Installs nothing: clang and its libFuzzer
# runtime must be there (scripts/deps.sh installs them).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${FUZZ_SECONDS:-60}"
command -v clang++ >/dev/null || { echo "fuzz.sh: clang++ not found" >&2; exit 2; }

# The library is instrumented for coverage too (fuzzer-no-link), so that the fuzzer sees the parser.
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCORVANE_FUZZ=ON -DCORVANE_SANITIZE=ON -DCORVANE_TESTS=OFF -DCORVANE_SERVER=OFF \
  -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link" >/dev/null
cmake --build build-fuzz -j2 --target upload_fuzz

# Absolute paths: the target works inside its own scratch folder.
here="$(pwd)"
corpus="$here/build-fuzz/corpus/upload"
mkdir -p "$corpus"
cd build-fuzz
./fuzz/upload_fuzz -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=8192 \
  -dict="$here/fuzz/upload.dict" -artifact_prefix="$here/build-fuzz/" -print_final_stats=1 \
  "$corpus" "$here/fuzz/upload_seeds"
