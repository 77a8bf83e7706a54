// The toolbar's rules without any drawing: its six buttons, their layout across the client width,
// hit testing, which buttons are enabled, and the colours each button state is painted in.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "appearance/themes.h"
#include "common/command_table.h"

namespace nebro::appearance {

inline constexpr int kToolbarHeight = 44;
inline constexpr int kToolbarButtonCount = 6;
inline constexpr int kToolbarButtonWidth = 75;
inline constexpr int kToolbarButtonHeight = 30;
inline constexpr int kToolbarButtonTop = 6;
inline constexpr int kToolbarButtonGap = 8;
// Six buttons and five gaps.
inline constexpr int kToolbarRowWidth = kToolbarButtonCount * kToolbarButtonWidth + (kToolbarButtonCount - 1) * kToolbarButtonGap;
inline constexpr int kToolbarSaveIndex = 2;
inline constexpr int kToolbarExportIndex = 3;
inline constexpr int kToolbarCornerDiameter = 8;
// Character height of the labels, in pixels.
inline constexpr int kToolbarFontPixels = 13;
inline constexpr const char* kToolbarFontFace = "Segoe UI";

struct ToolbarRect {
  int left = 0, top = 0, right = 0, bottom = 0;
  bool Contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
};

struct ToolbarButton {
  uint32_t commandId;
  std::string label;
  ToolbarRect rect;
  bool enabled;
  bool pressed;
  bool built = true;  // false while the command has no handler: greyed, with a tooltip saying so
};

struct Toolbar {
  std::array<ToolbarButton, kToolbarButtonCount> buttons;
  int hot = -1;  // the enabled button under the mouse, -1 for none
};

// The commands of the six buttons, in their order.
extern const std::array<int, kToolbarButtonCount> kToolbarCommands;

// The six buttons in their order (New, Open, Save, Export, Settings, Help), labelled from the
// command table, laid out for a zero width, Save disabled (a fresh document is unmodified),
// nothing hot or pressed.
Toolbar MakeToolbar(const CommandTable& commands);

// The six rectangles for a client width: 75 x 30 pixels from y = 6, 8 apart, the row centred but
// never starting left of x = 8 (a narrow window lets it run past the right edge).
void LayoutToolbar(Toolbar& toolbar, int clientWidth);

// The enabled button containing the point, or -1. Disabled buttons are not hit.
int ToolbarHitTest(const Toolbar& toolbar, int x, int y);

// Save is enabled only while the document is modified; every other button always.
// Returns true when a flag changed.
bool UpdateToolbarEnabled(Toolbar& toolbar, bool documentModified);

// Colours of the strip behind the buttons.
struct ToolbarChrome {
  Colour background;
  Colour topLine;     // y = 0
  Colour bottomLine;  // y = height - 1
};
ToolbarChrome ToolbarChromeColours(const ThemeColors& theme);

// How one button is painted in its current state. The lines lie inside the top edge, from
// 4 pixels inside the left edge to 4 inside the right: the accent line is 2 pixels high, the
// highlight line 1 pixel, drawn after (over) the accent line.
struct ToolbarButtonLook {
  Colour fill;
  Colour outline;
  bool accentLine;
  Colour accent;
  bool highlightLine;
  Colour highlight;
  Colour text;
};
ToolbarButtonLook ToolbarButtonLookFor(const Toolbar& toolbar, int index, const ThemeColors& theme);

// The Export button's resting fill: #E1E8F5 in light themes; in dark ones the input background
// with a fifth of the accent blue mixed in, so the button stands out without glaring.
Colour ExportRestingFill(const ThemeColors& theme);

}  // namespace nebro::appearance
