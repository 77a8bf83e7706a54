#!/usr/bin/env bash
# Prints how many lines of C++ (*.cpp, *.h) live under src/ and under tests/ and how big the
# tests are compared with the code. Stored data files under tests/data are not counted.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# count_lines DIR [SKIPPED_DIR]
count_lines() {
  local skip=${2:-/nonexistent}
  find "$1" -path "$skip" -prune -o -type f \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 -r cat | wc -l
}

src=$(count_lines "$root/src")
tests=$(count_lines "$root/tests" "$root/tests/data")
ratio=$(awk -v s="$src" -v t="$tests" 'BEGIN { printf "%.2f", (s > 0 ? t / s : 0) }')
echo "src $src lines, tests $tests lines, ratio $ratio"
