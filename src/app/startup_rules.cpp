#include "app/startup_rules.h"

#include <cstdio>

namespace nebro::app {
namespace {

constexpr const char* kGeometryPrefix = "--nebro-viewer-geometry=";

std::optional<WindowGeometry> ParseGeometry(const std::string& arg) {
  if (arg.rfind(kGeometryPrefix, 0) != 0) return std::nullopt;
  WindowGeometry g{};
  char end = 0;
  if (std::sscanf(arg.c_str() + std::char_traits<char>::length(kGeometryPrefix), "%d,%d,%d,%d%c",
                  &g.x, &g.y, &g.width, &g.height, &end) != 4 || g.width <= 0 || g.height <= 0) {
    return std::nullopt;
  }
  return g;
}

}  // namespace

StartupArgs ParseStartupArgs(const std::vector<std::string>& args) {
  StartupArgs out;
  out.viewerMode = args.size() >= 2 && args[1] == "--viewer";
  if (args.size() < 2) return out;
  if (args[1] == "--viewer" && args.size() >= 3) {
    out.fileToOpen = args[2];
    out.fileFromViewerArgument = true;
    if (args.size() >= 4) out.viewerGeometry = ParseGeometry(args[3]);
  } else {
    // Even a lone "--viewer" is taken as the file to open; that start reports it as not found.
    out.fileToOpen = args[1];
  }
  return out;
}

std::string ViewerGeometryArgument(const WindowGeometry& g) {
  char buf[96];
  std::snprintf(buf, sizeof buf, "%s%d,%d,%d,%d", kGeometryPrefix, g.x, g.y, g.width, g.height);
  return buf;
}

int TransparencyAlpha(int percent) {
  return 255 - static_cast<int>(static_cast<double>(percent) * 255.0 / 100.0);
}

}  // namespace nebro::app
