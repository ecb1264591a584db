#!/bin/sh
# Regenerates the command and event reference into a temporary folder and compares it with the committed
# copy. A copy that differs fails, naming the file and what to run.
# Usage: docs_fresh.sh TIDEWRIGHT_CHECK GAME_DIR DOCS_DIR
set -u
checker=$1 game=$2 docs=$3
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
if ! "$checker" --game "$game" --reference "$tmp"; then
  echo "the reference generator failed"
  exit 1
fi
status=0
for file in commands.md events.md; do
  if ! cmp -s "$tmp/$file" "$docs/$file"; then
    echo "docs/$file is out of date: run make docs"
    diff -u "$docs/$file" "$tmp/$file" 2>&1 | head -20
    status=1
  fi
done
exit $status
