#include "app/startup_rules.h"

namespace nebro::app {

StartupArgs ParseStartupArgs(const std::vector<std::string>& args) {
  StartupArgs out;
  out.viewerMode = args.size() >= 2 && args[1] == "--viewer";
  if (args.size() < 2) return out;
  if (args[1] == "--viewer" && args.size() >= 3) {
    out.fileToOpen = args[2];
    out.fileFromViewerArgument = true;
    if (args.size() >= 4) out.viewerGeometry = ParseViewerGeometry(args[3]);
  } else {
    // Even a lone "--viewer" is taken as the file to open; that start reports it as not found.
    out.fileToOpen = args[1];
  }
  return out;
}

int TransparencyAlpha(int percent) {
  return 255 - static_cast<int>(static_cast<double>(percent) * 255.0 / 100.0);
}

}  // namespace nebro::app
