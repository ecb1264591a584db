#!/usr/bin/env bash
# Installs the Debian packages that building and testing Tidewright need, and only those that are missing.
# Runs as root, or through sudo when it is available; does nothing when everything is there.
# `setup.sh fuzz` adds what the fuzz build needs: clang and its runtime libraries, libFuzzer among them.
set -euo pipefail

packages=(cmake g++ make libsqlite3-dev libmuparser-dev libpython3-dev python3 libgtest-dev libgmock-dev libbenchmark-dev libreadline-dev)
if [ "${1:-}" = fuzz ]; then
  packages+=(clang libclang-rt-dev)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
if [ "$(id -u)" -eq 0 ]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1; then
  as_root=(sudo)
else
  echo "setup: missing packages (${missing[*]}) and neither root nor sudo to install them" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}" \
  || { "${as_root[@]}" apt-get update && "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"; }
