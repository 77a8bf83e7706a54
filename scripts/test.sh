#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite (GUI tests on a virtual display).
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
nebro_install_missing
nebro_build
cd "$NEBRO_BUILD"
# A controlled environment: no user settings, a fixed locale, a private config folder.
tmp_home=$(mktemp -d)
trap 'rm -rf "$tmp_home"' EXIT
export XDG_CONFIG_HOME="$tmp_home/config" HOME="$tmp_home" LC_ALL=C.UTF-8 NO_AT_BRIDGE=1 GSETTINGS_BACKEND=memory
# Every GUI test process starts its own X server (Xvfb), so no display is needed here.
ctest --output-on-failure --parallel "$(nproc)" "$@"
