// Where a launching editor asks a viewer to appear: the internal argument it appends after the
// viewer's path, written by the launcher and read back by the viewer's start-up.
#pragma once

#include <optional>
#include <string>

namespace nebro {

struct WindowGeometry {
  int x, y, width, height;
};

std::string ViewerGeometryArgument(const WindowGeometry& g);

// The geometry in `arg`, or nothing when it is not such an argument or names an empty window.
std::optional<WindowGeometry> ParseViewerGeometry(const std::string& arg);

}  // namespace nebro
