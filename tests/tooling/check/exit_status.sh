#!/bin/sh
# tidewright-check's exit status: 0 for a clean script and for warnings alone, 1 for errors, for warnings
# under --strict and for a file that can't be read, 2 for a wrong command line.
# Usage: exit_status.sh TIDEWRIGHT_CHECK CASES_DIR
set -u
checker=$1 cases=$2
failed=0
expect() {
  want=$1
  shift
  "$checker" "$@" >/dev/null 2>&1
  got=$?
  if [ "$got" -ne "$want" ]; then
    echo "FAIL: tidewright-check $* exited $got, expected $want"
    failed=1
  fi
}
expect 0 "$cases/tw_clean.txt"
expect 0 "$cases/tw_outside_text.txt"
expect 1 --strict "$cases/tw_outside_text.txt"
expect 1 "$cases/tw_unknown_command.txt"
expect 1 "$cases/tw_clean.txt" "$cases/tw_no_such_file.txt"
expect 2
expect 2 --no-such-option "$cases/tw_clean.txt"
expect 2 --game "$cases/no_such_game" "$cases/tw_clean.txt"
[ $failed -eq 0 ] && echo "ok: every exit status as documented"
exit $failed
