#!/usr/bin/env bash
# Runs one scenario: the stand-in server on a fresh copy of the demo tree, fed the scenario's input.txt,
# its output compared with expected.txt. Usage: run_scenario.sh SCENARIO_DIR BUILD_DIR [DEMO_TREE]
# DEMO_TREE is the demo tree as built, BUILD_DIR/demo unless given.
# UPDATE=1 writes the output to expected.txt instead of comparing. See README.md in this folder.
set -uo pipefail

scenario=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
demo=$(cd "${3:-$build/demo}" && pwd)
# Named <area>/<name> in messages, as the folders are.
name=$(basename "$(dirname "$scenario")")/$(basename "$scenario")
marker='==== input ===='

work=$(mktemp -d "${TMPDIR:-/tmp}/tw-scenario-${name//\//.}.XXXXXX")
input=$(mktemp "${TMPDIR:-/tmp}/tw-scenario-input.XXXXXX")
trap 'rm -rf "$work" "$input"' EXIT

# The server root: the demo tree as built, then the scenario's own game files over it.
cp -rL "$demo/." "$work/"
if [ -d "$scenario/game" ]; then
  cp -rL "$scenario/game/." "$work/game/"
fi

args=()
if [ -f "$scenario/args" ]; then
  eval "args=($(head -n 1 "$scenario/args"))"
fi

# From a file, not a pipe: a server that ends without reading its input leaves no writer to a broken pipe.
{ echo "echo $marker"; cat "$scenario/input.txt"; } >"$input"
output=$(cd "$work" && "$build/tidewright-server" --game "$work/game" "${args[@]}" <"$input" 2>&1)
status=$?
# Paths of the temporary copy differ from run to run, and the build folder from checkout to checkout.
output=${output//$work/@ROOT@}
output=${output//$build/@BUILD@}

if [ ! -f "$scenario/full" ]; then
  output=$(printf '%s\n' "$output" | sed -n "/^$marker\$/,\$p" | sed 1d)
fi
if [ $status -ne 0 ]; then
  output+=$'\n'"(exit status $status)"
fi

if [ "${UPDATE:-0}" = 1 ]; then
  printf '%s\n' "$output" >"$scenario/expected.txt"
  echo "scenario $name: expected.txt written"
  exit 0
fi

if ! diff -u "$scenario/expected.txt" <(printf '%s\n' "$output") >"$work/diff"; then
  echo "scenario $name: output differs from expected.txt (- expected, + actual)"
  cat "$work/diff"
  exit 1
fi
echo "scenario $name: ok"
