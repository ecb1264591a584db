#!/usr/bin/env bash
# Configures and builds quietly: the compiler's output goes to BUILD_DIR/build.log and is shown only when
# the build fails. A build that takes more than a moment says so in one line; an up-to-date one says
# nothing. Usage: build.sh BUILD_DIR JOBS TARGET... [-- CMAKE_ARGUMENT...]
set -uo pipefail

build=$1
jobs=$2
shift 2
targets=()
while [ $# -gt 0 ] && [ "$1" != "--" ]; do
  targets+=("$1")
  shift
done
[ $# -gt 0 ] && shift
mkdir -p "$build"
log="$build/build.log"

if ! cmake -S . -B "$build" "$@" >"$log" 2>&1; then
  cat "$log" >&2
  echo "build: configuring $build failed" >&2
  exit 1
fi

cmake --build "$build" -j "$jobs" --target "${targets[@]}" >>"$log" 2>&1 &
pid=$!
for _ in 1 2 3 4 5 6 7 8 9 10; do
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.2
done
if kill -0 "$pid" 2>/dev/null; then
  echo "Building ${targets[*]} in $build (compiler output in $log)..."
fi
if ! wait "$pid"; then
  grep -E -B2 -A8 'error|Error' "$log" | tail -60 >&2
  echo "build: failed; the whole output is in $log" >&2
  exit 1
fi
