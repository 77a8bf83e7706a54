#!/usr/bin/env bash
# The Debian package installs, works and removes cleanly: built with cpack, installed with
# dpkg -i, run, removed with dpkg -r, and then nothing it installed is left on the system.
# Needs root; it installs the package for a few seconds and always removes it again.
# Usage: deb_test.sh BUILD_DIR
set -euo pipefail
build=$1
skip() { echo "SKIPPED: $*"; exit 77; }
fail() { echo "FAIL: $*" >&2; exit 1; }

[ "$(id -u)" -eq 0 ] || skip "installing a package needs root"
command -v dpkg >/dev/null || skip "not a Debian system"
if dpkg-query -W -f='${Status}' nebro 2>/dev/null | grep -q 'installed'; then
  skip "a nebro package is already installed here; it is left alone"
fi

tmp=$(mktemp -d)
installed=false
cleanup() {
  if $installed; then dpkg --purge nebro >/dev/null 2>&1 || true; fi
  rm -rf "$tmp"
}
trap cleanup EXIT
trap 'exit 143' TERM INT  # so that the package is removed on those too

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$tmp/out" >"$tmp/cpack.log" 2>&1 || { cat "$tmp/cpack.log"; fail "cpack"; }
deb=$(ls "$tmp"/out/nebro_*.deb)
depends=$(dpkg-deb --field "$deb" Depends)
grep -q 'scite' <<<"$depends" && grep -q 'libgtk-3-0' <<<"$depends" || fail "Depends lacks scite or GTK: $depends"

installed=true
dpkg -i "$deb" >"$tmp/dpkg.log" 2>&1 || { cat "$tmp/dpkg.log"; fail "dpkg -i"; }
dpkg -L nebro | sort >"$tmp/files"

# The menu knows the editor for text files (the desktop-file-utils trigger ran).
cache=/usr/share/applications/mimeinfo.cache
if command -v update-desktop-database >/dev/null; then
  grep -q '^text/plain=.*nebro.desktop' "$cache" || fail "the desktop database does not offer nebro for text/plain"
fi

export HOME="$tmp/home" XDG_CONFIG_HOME="$tmp/home/.config"
mkdir -p "$HOME"
version=$(cd / && env -u DISPLAY -u WAYLAND_DISPLAY /usr/bin/nebro --version) || fail "nebro --version: $version"
grep -qx 'Scintilla: .*libscintilla.so (Debian package scite .*)' <<<"$version" || fail "no Scintilla line: $version"
grep -qx 'Lexilla: .*liblexilla.so, [0-9]* lexers (Debian package scite .*)' <<<"$version" || fail "no Lexilla line: $version"
grep -qx 'Data files: /usr/share/nebro' <<<"$version" || fail "the packaged binary looks elsewhere: $version"
printf 'first line\r\nsecond line \xc3\xa9\r\n' >"$tmp/in.txt"
env -u DISPLAY -u WAYLAND_DISPLAY /usr/bin/nebro --export txt "$tmp/in.txt" "$tmp/out.txt" || fail "nebro --export txt"
cmp "$tmp/in.txt" "$tmp/out.txt" || fail "the exported text differs from the input"

dpkg -r nebro >"$tmp/dpkg.log" 2>&1 || { cat "$tmp/dpkg.log"; fail "dpkg -r"; }
installed=false
if dpkg-query -W -f='${Status}' nebro 2>/dev/null | grep -q 'installed'; then fail "nebro is still installed"; fi

# Every file is gone; a folder may stay only when another package owns it too.
left=()
while IFS= read -r path; do
  [ -e "$path" ] || [ -L "$path" ] || continue
  if [ -d "$path" ] && [ ! -L "$path" ] && dpkg-query --search "$path" >/dev/null 2>&1; then continue; fi
  left+=("$path")
done <"$tmp/files"
[ ${#left[@]} -eq 0 ] || fail "left behind: ${left[*]}"
if [ -f "$cache" ] && grep -q 'nebro.desktop' "$cache"; then fail "the desktop database still offers nebro"; fi
echo "deb: ok"
