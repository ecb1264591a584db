#!/bin/sh
# The freshness check fails on a stale copy of the reference, naming the stale file and nothing else.
# Usage: docs_stale.sh DOCS_FRESH TIDEWRIGHT_CHECK GAME_DIR DOCS_DIR
set -u
fresh=$1 checker=$2 game=$3 docs=$4
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cp "$docs/commands.md" "$docs/events.md" "$tmp/"
sed -i '/`tw_xdoblock`/d' "$tmp/commands.md"
if output=$("$fresh" "$checker" "$game" "$tmp"); then
  echo "FAIL: a stale commands.md passed the check"
  exit 1
fi
echo "$output" | grep -qx 'docs/commands.md is out of date: run make docs' || { echo "FAIL: no message naming commands.md:"; echo "$output"; exit 1; }
if echo "$output" | grep -q 'events.md'; then
  echo "FAIL: the fresh events.md was reported too:"
  echo "$output"
  exit 1
fi
echo "ok: $(echo "$output" | head -1)"
