#!/usr/bin/env bash
# Kept for old habits: runs one scenario through build/tidewright-test. Usage: run_scenario.sh SCENARIO_DIR
# BUILD_DIR [DEMO_TREE]; UPDATE=1 writes expected.txt. See README.md in this folder.
exec "$2/tidewright-test" --base "${3:-$2/demo}" --server "$2/tidewright-server" $([ "${UPDATE:-0}" = 1 ] && echo --update) "$1"
