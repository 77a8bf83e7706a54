#!/usr/bin/env bash
# `cmake --install` into a fresh prefix gives a desktop application that the desktop's own
# checkers accept, and the installed binary finds its data files beside itself while the build
# folder's binary still finds them in the source tree.
# Usage: install_test.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1 source=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

prefix="$tmp/prefix with space"
cmake --install "$build" --prefix "$prefix" >/dev/null
share="$prefix/share"

# The menu entry and the software-centre metadata, as the desktop reads them.
desktop="$share/applications/nebro.desktop"
desktop-file-validate "$desktop" || fail "desktop-file-validate rejects $desktop"
appstreamcli validate-tree --no-net "$prefix" >"$tmp/appstream.log" 2>&1 ||
  fail "appstreamcli rejects the installed metadata: $(cat "$tmp/appstream.log")"
grep -qx 'Exec=nebro %F' "$desktop" || fail "the menu entry does not open files with nebro"
[ -x "$prefix/bin/nebro" ] || fail "no executable bin/nebro"

# The icon the entry names exists in every size, each PNG as large as its folder says.
icon=$(sed -n 's/^Icon=//p' "$desktop")
[ -f "$share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "no scalable icon $icon.svg"
for size in 16 22 24 32 48 64 128 256; do
  png="$share/icons/hicolor/${size}x${size}/apps/$icon.png"
  [ -f "$png" ] || fail "no ${size}px icon"
  got=$(python3 -c 'import struct,sys; d=open(sys.argv[1],"rb").read(24); assert d[:8]==b"\x89PNG\r\n\x1a\n"; print("%dx%d" % struct.unpack(">II", d[16:24]))' "$png") \
    || fail "$png is not a PNG"
  [ "$got" = "${size}x${size}" ] || fail "$png is $got"
done

# The manual renders without warnings and documents every option --help lists, and back.
man="$share/man/man1/nebro.1.gz"
warnings=$(zcat "$man" | groff -man -ww -z -Tutf8 2>&1) || fail "groff fails on the manual"
[ -z "$warnings" ] || fail "groff warns about the manual: $warnings"
help=$("$prefix/bin/nebro" --help)
manual_options=$(zcat "$man" | grep -o '\\-\\-[a-z]*' | sed 's/\\//g' | sort -u)
help_options=$(grep -o -- '--[a-z]*' <<<"$help" | sort -u)
[ "$manual_options" = "$help_options" ] || fail "the manual documents $(echo $manual_options), --help lists $(echo $help_options)"

# Each binary reports where its data files are, and they are there.
installed=$(cd / && "$prefix/bin/nebro" --version) || fail "installed nebro --version: $installed"
grep -qx "nebro [0-9.]*" <<<"$(head -1 <<<"$installed")" || fail "no version line in: $installed"
grep -qx "Data files: $share/nebro" <<<"$installed" || fail "the installed binary looks elsewhere: $installed"
[ -f "$share/nebro/typewriter_key.wav" ] && [ -f "$share/nebro/typewriter_return.wav" ] || fail "sounds not installed"
from_build=$("$build/nebro" --version)
grep -qx "Data files: $source/resources" <<<"$from_build" || fail "the build folder's binary looks elsewhere: $from_build"
echo "install: ok"
