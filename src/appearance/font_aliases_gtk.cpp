#include "appearance/font_aliases_gtk.h"

#include <fontconfig/fontconfig.h>

namespace nebro::appearance {
namespace {

constexpr const char* kFontAliases = R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <alias binding="same"><family>Consolas</family><accept><family>monospace</family></accept></alias>
  <alias binding="same"><family>Segoe UI</family><accept><family>sans-serif</family></accept></alias>
  <alias binding="same"><family>Georgia</family><accept><family>serif</family></accept></alias>
</fontconfig>
)";

}  // namespace

void LoadFontAliases() {
  FcConfig* config = FcConfigGetCurrent();
  if (config) FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(kFontAliases), FcFalse);
}

}  // namespace nebro::appearance
