#include "common/viewer_geometry.h"

#include <cstdio>

namespace nebro {
namespace {

constexpr const char* kGeometryPrefix = "--nebro-viewer-geometry=";

}  // namespace

std::string ViewerGeometryArgument(const WindowGeometry& g) {
  char buf[96];
  std::snprintf(buf, sizeof buf, "%s%d,%d,%d,%d", kGeometryPrefix, g.x, g.y, g.width, g.height);
  return buf;
}

std::optional<WindowGeometry> ParseViewerGeometry(const std::string& arg) {
  if (arg.rfind(kGeometryPrefix, 0) != 0) return std::nullopt;
  WindowGeometry g{};
  char end = 0;
  if (std::sscanf(arg.c_str() + std::char_traits<char>::length(kGeometryPrefix), "%d,%d,%d,%d%c",
                  &g.x, &g.y, &g.width, &g.height, &end) != 4 || g.width <= 0 || g.height <= 0) {
    return std::nullopt;
  }
  return g;
}

}  // namespace nebro
