#!/usr/bin/env bash
# Installs the Debian packages the build and tests need; skips apt entirely when all are present.
set -euo pipefail
pkgs=(build-essential cmake pkg-config libsqlite3-dev libgtest-dev libgmock-dev libbenchmark-dev
      libcpp-httplib-dev clang libclang-rt-14-dev "$@")
missing=()
for p in "${pkgs[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  SUDO=""; [ "$(id -u)" = 0 ] || SUDO=sudo
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${missing[@]}"
fi
