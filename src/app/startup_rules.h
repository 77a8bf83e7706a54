// Start-up decisions that depend only on the command line and the settings.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/viewer_geometry.h"

namespace nebro::app {

struct StartupArgs {
  bool viewerMode = false;
  // The path posted to the window, if the command line names one (only the first is used).
  std::optional<std::string> fileToOpen;
  bool fileFromViewerArgument = false;  // "--viewer PATH" rather than a plain path
  // Where the launching editor asked a viewer to appear (the internal argument after the path).
  std::optional<WindowGeometry> viewerGeometry;
};

// `args` includes the program path as args[0], like argv.
StartupArgs ParseStartupArgs(const std::vector<std::string>& args);

// 255 - trunc(percent x 255 / 100), computed in double precision.
int TransparencyAlpha(int percent);

}  // namespace nebro::app
