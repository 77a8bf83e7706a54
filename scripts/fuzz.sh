#!/usr/bin/env bash
# Builds the fuzz targets in fuzz/ with clang's libFuzzer and the address and undefined-behaviour
# sanitizers, then runs each for a number of inputs (default 20000; more by hand:
# scripts/fuzz.sh 1000000). A target that finds a fault stops the script and leaves the input
# that caused it in build-fuzz/.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
nebro_install_missing
runs=${1:-20000}
out="$NEBRO_ROOT/build-fuzz"
mkdir -p "$out/obj"
rm -f "$out"/crash-* "$out"/leak-* "$out"/timeout-*
flags=(-std=c++20 -O1 -g -fno-omit-frame-pointer -fsanitize=address,undefined -fno-sanitize-recover=undefined
       -I"$NEBRO_ROOT/src" -I"$NEBRO_ROOT/tests/markdown" $(pkg-config --cflags libpcre2-16)
       # Set by the build for the files that need them; no target looks at them.
       -DNEBRO_VERSION='"fuzz"' -DNEBRO_INSTALLED_RESOURCES='""' -DNEBRO_INSTALLED_ICONS='""'
       -DNEBRO_SOURCE_RESOURCES='""')

# The portable core, compiled once (only what changed is compiled again).
objects=()
for src in "$NEBRO_ROOT"/src/*/*.cpp; do
  case "$src" in *_gtk.cpp|*/app/main.cpp) continue ;; esac
  obj="$out/obj/$(basename "$(dirname "$src")")_$(basename "$src" .cpp).o"
  if [ ! -f "$obj" ] || [ "$src" -nt "$obj" ]; then
    clang++ "${flags[@]}" -fsanitize=fuzzer-no-link -c "$src" -o "$obj"
  fi
  objects+=("$obj")
done

for target in "$NEBRO_ROOT"/fuzz/*_fuzz.cpp; do
  name=$(basename "$target" .cpp)
  clang++ "${flags[@]}" -fsanitize=fuzzer "$target" "${objects[@]}" $(pkg-config --libs libpcre2-16) -lpthread -o "$out/$name"
  echo "== $name: $runs inputs"
  (cd "$out" && "./$name" -runs="$runs" -max_len=4096 -seed=1 -print_final_stats=1 2>&1 | grep -E "^stat::number_of_executed_units|ERROR|SUMMARY|Done" || true)
  # libFuzzer leaves crash-* files behind when it found something.
  if compgen -G "$out/crash-*" >/dev/null || compgen -G "$out/leak-*" >/dev/null || compgen -G "$out/timeout-*" >/dev/null; then
    echo "$name found a fault; the input is in $out" >&2
    exit 1
  fi
done
