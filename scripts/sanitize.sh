#!/usr/bin/env bash
# Builds the editor and its tests with the address and undefined-behaviour sanitizers in a second
# build folder (build-san) and runs the suite there. Any report of either sanitizer fails a test.
# Leaks are looked for in the tests that need no display; the GUI toolkit keeps memory of its own
# until the process ends, so GUI tests run without the leak check.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
nebro_install_missing
build="$NEBRO_ROOT/build-san"
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$NEBRO_ROOT" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNEBRO_SANITIZE=ON >/dev/null
fi
cmake --build "$build" --parallel "$(nproc)" -- --no-print-directory
cd "$build"
tmp_home=$(mktemp -d)
trap 'rm -rf "$tmp_home"' EXIT
export XDG_CONFIG_HOME="$tmp_home/config" HOME="$tmp_home" LC_ALL=C.UTF-8 NO_AT_BRIDGE=1 GSETTINGS_BACKEND=memory
export UBSAN_OPTIONS=print_stacktrace=1
ASAN_OPTIONS=detect_leaks=1 ctest --output-on-failure --parallel "$(nproc)" -L unit
ASAN_OPTIONS=detect_leaks=0 ctest --output-on-failure --parallel "$(nproc)" -L gui
