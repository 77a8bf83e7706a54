# Shared by scripts/run.sh and scripts/test.sh: install what is missing, then build.
# Sourced, not run.

NEBRO_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
NEBRO_BUILD="$NEBRO_ROOT/build"

# Debian packages the editor, its tests and its benchmarks need.
NEBRO_PACKAGES=(
  build-essential cmake pkg-config
  libgtk-3-dev scite libpcre2-dev libcanberra-gtk3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth xdotool imagemagick fonts-dejavu-core
  geany-common libmd4c-dev libmd4c-html0-dev libcmark-dev
  dbus-daemon dbus-bin at-spi2-core python3-pyatspi openbox poppler-utils x11-utils
  desktop-file-utils appstream groff-base file
  clang libclang-rt-14-dev
  libwebkit2gtk-4.1-dev
)

nebro_install_missing() {
  local missing=() p
  for p in "${NEBRO_PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

nebro_build() {
  if [ ! -f "$NEBRO_BUILD/CMakeCache.txt" ]; then
    cmake -S "$NEBRO_ROOT" -B "$NEBRO_BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  fi
  cmake --build "$NEBRO_BUILD" --parallel "$(nproc)" -- --no-print-directory
}
