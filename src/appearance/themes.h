// The six colour themes. Colours are 0x00BBGGRR; the table's order of fields is the
// order of the record.
#pragma once

#include <cstdint>

#include "common/colour.h"

namespace nebro::appearance {

using ThemeId = uint32_t;
inline constexpr ThemeId kThemeCount = 6;

struct SyntaxColors {
  Colour keyword;
  Colour comment;
  Colour string;
  Colour number;
  Colour preprocessor;
  Colour operator_;
};

struct ThemeColors {
  Colour dialogBackground;
  Colour editorBackground;
  Colour toolbarBackground;
  Colour marginBackground;
  Colour dialogText;
  Colour editorText;
  Colour mutedText;
  Colour marginText;
  Colour lineNumberBackground;
  Colour lineNumberText;
  Colour currentLineNumberText;
  Colour inputBackground;
  Colour hoverBackground;
  Colour pressedBackground;
  Colour controlText;
  Colour strongText;
  Colour disabledText;
  Colour border;
  Colour buttonFocusBorder;
  Colour buttonFace;
  Colour buttonFacePressed;
  Colour buttonBorder;
  Colour buttonText;
  Colour listBackground;
  Colour panelBackground;
  Colour caret;
  Colour selectionBackground;
  Colour selectionText;
  bool isDark;
  SyntaxColors syntax;
};

// The record of a theme; any number above 5 reads as theme 0.
const ThemeColors& ThemeColorsFor(ThemeId id);

// The name shown for a theme ("Nebro Dark", ...); clamped like the colours.
const char* ThemeName(ThemeId id);

// Background of Markdown code: the editor background moved by +18 per channel on dark themes
// and by -14 on light ones, clamped to 0..255.
Colour CodeBackground(const ThemeColors& theme);

}  // namespace nebro::appearance
