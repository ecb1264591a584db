#!/usr/bin/env bash
# Runs every fuzz target of BUILD_DIR's tw_fuzz for SECONDS each (default 60), starting from the seed
# corpus fuzz/corpus/<target>/ and what earlier runs found (BUILD_DIR/fuzz/found/<target>/). Prints the
# executions and seconds of each target. Fails when a target crashes, leaks, runs out of memory or takes
# longer than INPUT_TIMEOUT seconds on one input; the input that did it is kept in
# BUILD_DIR/fuzz/artifacts/ and the target's log is shown. Usage: run_fuzz.sh BUILD_DIR [SECONDS] [TARGET...]
set -uo pipefail
cd "$(dirname "$0")/.."

build=$1
seconds=${2:-60}
shift $(( $# > 1 ? 2 : 1 ))
fuzzer=$build/tw_fuzz
input_timeout=${INPUT_TIMEOUT:-10}
rss_limit_mb=${RSS_LIMIT_MB:-2560}

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  read -r -a targets <<<"$(TW_FUZZ_TARGET= "$fuzzer" 2>&1 | sed -n 's/^tw_fuzz: set TW_FUZZ_TARGET to one of: //p')"
fi
[ ${#targets[@]} -gt 0 ] || { echo "fuzz: no targets in $fuzzer" >&2; exit 1; }

mkdir -p "$build/fuzz/artifacts" "$build/fuzz/logs"
failed=()
for target in $(printf '%s\n' "${targets[@]}" | sort); do
  found=$build/fuzz/found/$target
  log=$build/fuzz/logs/$target.log
  mkdir -p "$found"
  # The command language's words help the targets that read it.
  dict=()
  case $target in console | scriptfile | expansion) dict=(-dict=fuzz/dict/console.dict) ;; esac
  start=$(date +%s)
  TW_FUZZ_TARGET=$target "$fuzzer" -max_total_time="$seconds" -timeout="$input_timeout" \
    -rss_limit_mb="$rss_limit_mb" -max_len=4096 -print_final_stats=1 "${dict[@]}" \
    -artifact_prefix="$build/fuzz/artifacts/$target-" "$found" "fuzz/corpus/$target" >"$log" 2>&1
  rc=$?
  took=$(( $(date +%s) - start ))
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  printf 'fuzz %-11s %10s executions in %4d s\n' "$target" "${runs:-?}" "$took"
  if [ $rc -ne 0 ]; then
    failed+=("$target")
    grep -E -A30 '^==[0-9]+==ERROR|ALARM|out-of-memory|^SUMMARY|deadly signal|runtime error' "$log" | head -60
    grep -E '^(Test unit written|artifact_prefix)' "$log"
    echo "fuzz: $target failed (exit $rc); its whole log is $log. Keep the input as fuzz/regressions/$target/<name>."
  fi
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: failed: ${failed[*]}" >&2
  exit 1
fi
