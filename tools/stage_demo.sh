#!/usr/bin/env bash
# Makes the demo tree as built: the files of demo/ that the repository tracks, and the plugin's event
# declarations as addons/brannock_tidewright.res and the Python package tw as
# addons/tidewright/_libs/python/tw. Tests, scenarios and benchmarks copy this tree, never
# demo/ itself, so nothing a run left in demo/ (logs, saved keygroups, a user's scripts) reaches them.
# demo/tests, the tests of the demo's examples, stays out: a server root doesn't carry its tests.
# Outside a git checkout every file of demo/ counts as tracked. Quiet; rewrites DEST only when it changed.
# Usage: stage_demo.sh SOURCE_DIR DEST
set -euo pipefail

source=$(cd "$1" && pwd)
dest=$2
fresh=$(mktemp -d "$dest.new.XXXXXX")
trap 'rm -rf "$fresh"' EXIT

if git -C "$source" rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  git -C "$source" ls-files -z -- demo
else
  (cd "$source" && find demo -type f -print0)
fi | while IFS= read -r -d '' file; do
  [ -f "$source/$file" ] || continue  # tracked but deleted in the working tree
  case $file in demo/tests/*) continue ;; esac
  mkdir -p "$fresh/$(dirname "${file#demo/}")"
  cp -p "$source/$file" "$fresh/${file#demo/}"
done
mkdir -p "$fresh/game/addons"
cp -p "$source/plugin/data/brannock_tidewright.res" "$fresh/game/addons/brannock_tidewright.res"
mkdir -p "$fresh/game/addons/tidewright/_libs/python/tw"
cp -p "$source"/pylib/tw/*.py "$fresh/game/addons/tidewright/_libs/python/tw/"

if [ -d "$dest" ] && diff -r "$dest" "$fresh" >/dev/null 2>&1; then
  exit 0
fi
rm -rf "$dest"
mv "$fresh" "$dest"
trap - EXIT
