// What a printed page looks like: the editor's font and the page setup's margins and paper.
#pragma once
#include <string>

#include "print/page_frame.h"
#include "settings/settings.h"

namespace nebro::print {

struct PageStyle {
  std::string fontFace = "Monospace";
  int fontSize = 11;
  PageMargins margins;
  PaperSize paper;
};

// The font and page setup stored in the settings; sizes the settings cannot hold (zero or
// negative paper, margins that leave no room) fall back to A4 with the default margins.
PageStyle PageStyleFromSettings(const settings::AppSettings& s);

}  // namespace nebro::print
