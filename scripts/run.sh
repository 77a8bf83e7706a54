#!/usr/bin/env bash
# Installs what is missing, builds, and starts the editor on an optional FILE.
# Without a display the editor runs on a virtual one: once its window shows the file a screenshot
# is written, its path printed, and the editor is ended cleanly.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
nebro_install_missing
nebro_build
exe="$NEBRO_BUILD/nebro"

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec "$exe" "$@"
fi

shot="${NEBRO_SCREENSHOT:-$NEBRO_ROOT/build/nebro-screenshot.png}"
export NEBRO_EXE="$exe" NEBRO_SHOT="$shot"
xvfb-run -a -s "-screen 0 1280x900x24" bash -c '
  set -u
  "$NEBRO_EXE" "$@" &
  pid=$!
  if [ $# -gt 0 ]; then want="Nebro - $(basename -- "$1")"; else want="Nebro - "; fi
  for i in $(seq 1 100); do
    xdotool search --name "^$(printf %s "$want" | sed "s/[.[*^$]/\\\\&/g")" >/dev/null 2>&1 && break
    kill -0 $pid 2>/dev/null || { wait $pid; exit $?; }
    sleep 0.1
  done
  sleep 0.7   # let the first paint finish
  import -display "$DISPLAY" -window root "$NEBRO_SHOT"
  echo "$NEBRO_SHOT"
  kill -TERM $pid
  wait $pid
' nebro "$@"
