#!/usr/bin/env bash
# Renders the icon's PNG sizes (needs rsvg-convert from librsvg2-bin). The PNGs are committed, so
# a build needs neither this script nor librsvg. 16, 22 and 24 px come from drawings made for
# those sizes (resources/icons/nebro-16.svg, nebro-24.svg); the others from the scalable icon.
set -euo pipefail
icons="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/resources/icons"
render() {  # SVG SIZE
  mkdir -p "$icons/hicolor/$2x$2/apps"
  rsvg-convert --width "$2" --height "$2" "$1" --output "$icons/hicolor/$2x$2/apps/nebro.png"
}
render "$icons/nebro-16.svg" 16
render "$icons/nebro-24.svg" 24
# 22 px is the 24 px drawing without its outer pixel of margin.
sed 's/viewBox="0 0 24 24"/viewBox="1 1 22 22"/' "$icons/nebro-24.svg" >"$icons/nebro-22.tmp.svg"
render "$icons/nebro-22.tmp.svg" 22
rm "$icons/nebro-22.tmp.svg"
for size in 32 48 64 128 256; do
  render "$icons/hicolor/scalable/apps/nebro.svg" "$size"
done
