#!/usr/bin/env bash
# Builds the Release corvane-server in a build folder, optimized with a profile of the demo site's
# pages (GCC's profile-guided optimization: the branches and calls the pages take are laid out and
# inlined for them). The server's work is an interpreter running scripts over many small branchy
# functions, which is what a profile helps most: the list page costs about 6-10% less CPU.
#
#   bash scripts/build-release.sh BUILD_DIR
#
# The profile is taken once per build folder, into BUILD_DIR/pgo-profile: an instrumented build in
# BUILD_DIR-train serves the demo site's pages (sign-in, lists, forms, the calendar, static files)
# from a scratch copy of the database for a few seconds, then is removed. Later builds reuse the
# profile; functions changed since it was taken are compiled as without one.
#   CORVANE_PGO=0        builds without a profile
#   CORVANE_PGO=retrain  takes the profile again first
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/await-address.sh

dir=${1:?usage: build-release.sh BUILD_DIR}
mode=${CORVANE_PGO:-1}
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)
profile="$dir/pgo-profile"
release=(-DCMAKE_BUILD_TYPE=Release -DCORVANE_SANITIZE=OFF -DCORVANE_TESTS=OFF)

configure_and_build() {  # folder cxx-flags linker-flags
  cmake -S . -B "$1" "${release[@]}" -DCMAKE_CXX_FLAGS="$2" -DCMAKE_EXE_LINKER_FLAGS="$3" >/dev/null
  cmake --build "$1" -j2 --target corvane-server
}

# Serves the pages a user of the demo site visits, many times over, with the server at `1`; stops
# it with SIGTERM so that it writes its profile on the way out.
train() {  # server
  local work base pid cookie i
  work=$(mktemp -d)
  [ -f data/corvane-site.db ] && cp data/corvane-site.db "$work/site.db"
  "$1" --port 0 --db "$work/site.db" --drives "$work/drives" >"$work/out" 2>"$work/err" &
  pid=$!
  base=$(await_address "$pid" "$work/out" 60)  # a first start seeds the database
  if [ -z "$base" ]; then
    cat "$work/out" "$work/err" >&2
    kill "$pid" 2>/dev/null || true
    rm -rf "$work"
    echo "the instrumented server did not start" >&2
    return 1
  fi
  curl -s -o /dev/null -c "$work/jar" -d 'loginName=zhangwei&password=123456' "$base/login.asp"
  cookie=$(awk '$6 == "CORVANESESSIONID" { print $6 "=" $7 }' "$work/jar")
  local pages=(/main.asp /contact.asp /contact.asp?action=list\&page=3 /contact.asp?action=update\&contactID=5
    /contact.asp?action=search /notice.asp /staff.asp /scheduler/ /images/edit.gif /include/site.css)
  # One kept-alive connection per round: curl reuses it for every address on its command line.
  local urls=()
  for i in $(seq 1 40); do
    for p in "${pages[@]}"; do urls+=(-o /dev/null "$base$p"); done
    for _ in 1 2 3 4 5 6; do urls+=(-o /dev/null "$base/contact.asp?action=list&page=$((i % 26 + 1))"); done
  done
  for _ in 1 2 3; do curl -s -H "Cookie: $cookie" "${urls[@]}" || true; done
  kill -TERM "$pid"
  wait "$pid" || true
  rm -rf "$work"
}

if [ "$mode" = 0 ]; then
  configure_and_build "$dir" "" ""
  exit 0
fi

if [ "$mode" = retrain ] || [ ! -d "$profile" ]; then
  echo "building an instrumented server to take the pages' profile (once per build folder) ..."
  rm -rf "$profile" "$dir-train"
  mkdir -p "$dir-train"
  train_dir=$(cd "$dir-train" && pwd)
  configure_and_build "$train_dir" \
    "-fprofile-generate=$profile -fprofile-update=prefer-atomic -fprofile-prefix-path=$train_dir" \
    "-fprofile-generate=$profile"
  train "$train_dir/server/corvane-server"
  rm -rf "$train_dir"
  [ -n "$(ls -A "$profile" 2>/dev/null)" ] || { echo "the training run left no profile" >&2; exit 1; }
  # make knows nothing of the profile: what was compiled with an earlier one is compiled again.
  [ -f "$dir/Makefile" ] && cmake --build "$dir" --target clean
fi

# -Wno-restrict: GCC 12 warns of overlapping copies inside std::string where the profile's inlining
# reaches them (false positives, gcc.gnu.org/PR105329).
configure_and_build "$dir" \
  "-fprofile-use=$profile -fprofile-prefix-path=$dir -fprofile-partial-training -Wno-missing-profile -Wno-coverage-mismatch -Wno-restrict" \
  ""
