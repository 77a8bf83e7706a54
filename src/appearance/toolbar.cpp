#include "appearance/toolbar.h"

#include <algorithm>

#include "common/command_ids.h"

namespace nebro::appearance {
namespace {

constexpr Colour kDarkTopLine = Rgb(0x46, 0x46, 0x4B);
constexpr Colour kLightTopLine = Rgb(0xFF, 0xFF, 0xFF);
constexpr Colour kLightExportFill = Rgb(0xE1, 0xE8, 0xF5);
constexpr Colour kLightAccent = Rgb(0x1E, 0x64, 0xA0);
constexpr Colour kDarkAccent = Rgb(0x46, 0x82, 0xB4);
constexpr Colour kDarkHighlight = Rgb(0x64, 0x64, 0x6E);
constexpr Colour kLightHighlight = Rgb(0xFF, 0xFF, 0xFF);

// `weight` parts in five of `b`, the rest of `a`, per channel.
Colour MixFifths(Colour a, Colour b, unsigned weight) {
  auto mix = [&](unsigned x, unsigned y) { return (x * (5 - weight) + y * weight + 2) / 5; };
  return Rgb(mix(RedOf(a), RedOf(b)), mix(GreenOf(a), GreenOf(b)), mix(BlueOf(a), BlueOf(b)));
}

}  // namespace

const std::array<int, kToolbarButtonCount> kToolbarCommands = {kCmdNew, kCmdOpen, kCmdSave,
                                                               kCmdExport, kCmdSettings, kCmdHelp};

Toolbar MakeToolbar(const CommandTable& commands) {
  Toolbar t;
  for (int i = 0; i < kToolbarButtonCount; ++i) {
    const Command* c = FindCommand(commands, kToolbarCommands[i]);
    const bool built = !CommandNotBuilt(commands, kToolbarCommands[i]);
    t.buttons[i] = {static_cast<uint32_t>(kToolbarCommands[i]), c ? c->label : std::string(), {},
                    built && i != kToolbarSaveIndex, false, built};
  }
  LayoutToolbar(t, 0);
  return t;
}

void LayoutToolbar(Toolbar& toolbar, int clientWidth) {
  int left = std::max(kToolbarButtonGap, (clientWidth - kToolbarRowWidth) / 2);
  for (ToolbarButton& b : toolbar.buttons) {
    b.rect = {left, kToolbarButtonTop, left + kToolbarButtonWidth, kToolbarButtonTop + kToolbarButtonHeight};
    left += kToolbarButtonWidth + kToolbarButtonGap;
  }
}

int ToolbarHitTest(const Toolbar& toolbar, int x, int y) {
  for (int i = 0; i < kToolbarButtonCount; ++i) {
    const ToolbarButton& b = toolbar.buttons[i];
    if (b.enabled && b.rect.Contains(x, y)) return i;
  }
  return -1;
}

bool UpdateToolbarEnabled(Toolbar& toolbar, bool documentModified) {
  bool changed = false;
  for (int i = 0; i < kToolbarButtonCount; ++i) {
    ToolbarButton& b = toolbar.buttons[i];
    const bool enabled = b.built && (i == kToolbarSaveIndex ? documentModified : true);
    if (b.enabled != enabled) {
      b.enabled = enabled;
      changed = true;
    }
    // A button that is switched off can be neither hot nor pressed.
    if (!enabled) {
      b.pressed = false;
      if (toolbar.hot == i) toolbar.hot = -1;
    }
  }
  return changed;
}

ToolbarChrome ToolbarChromeColours(const ThemeColors& theme) {
  return {theme.toolbarBackground, theme.isDark ? kDarkTopLine : kLightTopLine, theme.border};
}

Colour ExportRestingFill(const ThemeColors& theme) {
  return theme.isDark ? MixFifths(theme.inputBackground, kDarkAccent, 1) : kLightExportFill;
}

ToolbarButtonLook ToolbarButtonLookFor(const Toolbar& toolbar, int index, const ThemeColors& theme) {
  const ToolbarButton& b = toolbar.buttons[index];
  const bool hot = b.enabled && toolbar.hot == index;
  const bool pressed = b.enabled && b.pressed;
  ToolbarButtonLook look{};
  // The outline is drawn around every button; only a hot one takes the focus colour.
  look.outline = hot ? theme.buttonFocusBorder : theme.pressedBackground;
  if (!b.enabled) {
    look.fill = theme.toolbarBackground;
    look.text = theme.disabledText;
    return look;
  }
  if (index == kToolbarExportIndex) {
    look.fill = pressed ? theme.pressedBackground : hot ? theme.hoverBackground : ExportRestingFill(theme);
    look.accentLine = !pressed;
    look.accent = theme.isDark ? kDarkAccent : kLightAccent;
  } else {
    // A pressed button sinks: the pressed face is darker than the resting one in every theme.
    look.fill = pressed ? theme.buttonFacePressed : hot ? theme.hoverBackground : theme.inputBackground;
  }
  look.highlightLine = hot;
  look.highlight = theme.isDark ? kDarkHighlight : kLightHighlight;
  look.text = hot ? theme.strongText : theme.controlText;
  return look;
}

}  // namespace nebro::appearance
