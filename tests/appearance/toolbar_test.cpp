// The toolbar's layout, hit testing, enabled rules and the colours of each button state.
#include "appearance/toolbar.h"

#include <gtest/gtest.h>

#include "common/command_ids.h"

using namespace nebro;

namespace {

std::vector<int> Lefts(const Toolbar& t) {
  std::vector<int> out;
  for (const ToolbarButton& b : t.buttons) out.push_back(b.rect.left);
  return out;
}

// Perceived brightness, enough to compare two fills.
int Luma(Colour c) { return 299 * static_cast<int>(RedOf(c)) + 587 * static_cast<int>(GreenOf(c)) + 114 * static_cast<int>(BlueOf(c)); }

// The labels come from the command table's rows.
CommandTable Labels() {
  CommandTable t;
  const std::pair<int, const char*> rows[] = {{kCmdNew, "New"},       {kCmdOpen, "Open"},         {kCmdSave, "Save"},
                                              {kCmdExport, "Export"}, {kCmdSettings, "Settings"}, {kCmdHelp, "Help"}};
  for (const auto& [id, label] : rows) AddCommand(t, {id, label, {}, "", {}, {}});
  return t;
}

Toolbar MakeToolbar() { return nebro::MakeToolbar(Labels()); }

}  // namespace

TEST(Toolbar, ButtonTableInOrder) {
  const Toolbar t = MakeToolbar();
  const uint32_t ids[] = {kCmdNew, kCmdOpen, kCmdSave, kCmdExport, kCmdSettings, kCmdHelp};
  const char* labels[] = {"New", "Open", "Save", "Export", "Settings", "Help"};
  for (int i = 0; i < kToolbarButtonCount; ++i) {
    EXPECT_EQ(t.buttons[i].commandId, ids[i]);
    EXPECT_EQ(t.buttons[i].label, labels[i]);
    EXPECT_FALSE(t.buttons[i].pressed);
    EXPECT_EQ(t.buttons[i].enabled, i != kToolbarSaveIndex) << i;
  }
  EXPECT_EQ(t.hot, -1);
  EXPECT_EQ(kToolbarRowWidth, 490);
}

TEST(Toolbar, LayoutCentresTheRowButNeverLeftOfEight) {
  Toolbar t = MakeToolbar();
  // A narrow client starts at 8 and lets the row run past the right edge.
  LayoutToolbar(t, 400);
  EXPECT_EQ(Lefts(t), (std::vector<int>{8, 91, 174, 257, 340, 423}));
  EXPECT_GT(t.buttons[5].rect.right, 400);
  for (const ToolbarButton& b : t.buttons) {
    EXPECT_EQ(b.rect.top, 6);
    EXPECT_EQ(b.rect.bottom, 36);
    EXPECT_EQ(b.rect.right - b.rect.left, 75);
  }
  // A wide one centres it: (1200 - 490) / 2 = 355.
  LayoutToolbar(t, 1200);
  EXPECT_EQ(Lefts(t), (std::vector<int>{355, 438, 521, 604, 687, 770}));
  EXPECT_EQ(t.buttons[5].rect.right, 845);
  // Exactly the row plus two margins of 8, and an odd remainder that rounds down.
  LayoutToolbar(t, 506);
  EXPECT_EQ(t.buttons[0].rect.left, 8);
  LayoutToolbar(t, 507);
  EXPECT_EQ(t.buttons[0].rect.left, 8);
  LayoutToolbar(t, 509);
  EXPECT_EQ(t.buttons[0].rect.left, 9);
  LayoutToolbar(t, 0);
  EXPECT_EQ(t.buttons[0].rect.left, 8);
}

TEST(Toolbar, HitTestFindsOnlyEnabledButtonsInsideTheirRectangles) {
  Toolbar t = MakeToolbar();
  LayoutToolbar(t, 1200);
  EXPECT_EQ(ToolbarHitTest(t, 355, 6), 0);    // top-left pixel
  EXPECT_EQ(ToolbarHitTest(t, 429, 35), 0);   // bottom-right pixel
  EXPECT_EQ(ToolbarHitTest(t, 430, 20), -1);  // right edge is outside
  EXPECT_EQ(ToolbarHitTest(t, 433, 20), -1);  // in the gap
  EXPECT_EQ(ToolbarHitTest(t, 440, 5), -1);   // above
  EXPECT_EQ(ToolbarHitTest(t, 440, 36), -1);  // below
  EXPECT_EQ(ToolbarHitTest(t, 440, 20), 1);
  EXPECT_EQ(ToolbarHitTest(t, 800, 20), 5);
  EXPECT_EQ(ToolbarHitTest(t, 10, 20), -1);
  // Save is disabled on an unmodified document: not hit, as if nothing were there.
  EXPECT_EQ(ToolbarHitTest(t, 530, 20), -1);
  UpdateToolbarEnabled(t, true);
  EXPECT_EQ(ToolbarHitTest(t, 530, 20), kToolbarSaveIndex);
}

TEST(Toolbar, SaveFollowsTheModifiedFlag) {
  Toolbar t = MakeToolbar();
  EXPECT_FALSE(UpdateToolbarEnabled(t, false));  // already so
  EXPECT_TRUE(UpdateToolbarEnabled(t, true));
  for (const ToolbarButton& b : t.buttons) EXPECT_TRUE(b.enabled);
  EXPECT_FALSE(UpdateToolbarEnabled(t, true));

  // Disabling the hot, pressed Save button leaves it neither hot nor pressed.
  t.hot = kToolbarSaveIndex;
  t.buttons[kToolbarSaveIndex].pressed = true;
  t.buttons[0].pressed = true;
  EXPECT_TRUE(UpdateToolbarEnabled(t, false));
  EXPECT_FALSE(t.buttons[kToolbarSaveIndex].enabled);
  EXPECT_FALSE(t.buttons[kToolbarSaveIndex].pressed);
  EXPECT_EQ(t.hot, -1);
  EXPECT_TRUE(t.buttons[0].pressed);  // the others are left alone
  EXPECT_TRUE(t.buttons[3].enabled);
}

TEST(Toolbar, StripColoursFollowTheDarkFlag) {
  const ToolbarChrome dark = ToolbarChromeColours(ThemeColorsFor(0));
  EXPECT_EQ(ColourText(dark.background), "#19191B");
  EXPECT_EQ(ColourText(dark.topLine), "#46464B");
  EXPECT_EQ(ColourText(dark.bottomLine), "#37373A");
  const ToolbarChrome sepia = ToolbarChromeColours(ThemeColorsFor(5));
  EXPECT_EQ(ColourText(sepia.background), "#F2E8D7");
  EXPECT_EQ(ColourText(sepia.topLine), "#FFFFFF");
  EXPECT_EQ(ColourText(sepia.bottomLine), "#D2B99B");
}

TEST(Toolbar, OrdinaryButtonColoursByState) {
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    SCOPED_TRACE(ThemeName(id));
    const ThemeColors& c = ThemeColorsFor(id);
    Toolbar t = MakeToolbar();
    const int open = 1;

    ToolbarButtonLook look = ToolbarButtonLookFor(t, open, c);  // resting
    EXPECT_EQ(look.fill, c.inputBackground);
    EXPECT_EQ(look.outline, c.pressedBackground);
    EXPECT_EQ(look.text, c.controlText);
    EXPECT_FALSE(look.highlightLine);
    EXPECT_FALSE(look.accentLine);

    t.hot = open;
    look = ToolbarButtonLookFor(t, open, c);
    EXPECT_EQ(look.fill, c.hoverBackground);
    EXPECT_EQ(look.outline, c.buttonFocusBorder);
    EXPECT_EQ(look.text, c.strongText);
    EXPECT_TRUE(look.highlightLine);
    EXPECT_EQ(look.highlight, c.isDark ? Rgb(0x64, 0x64, 0x6E) : Rgb(0xFF, 0xFF, 0xFF));
    const Colour hoverFill = look.fill;

    // Pressed (under the mouse, as a press always is): a fill darker than hovering.
    t.buttons[open].pressed = true;
    look = ToolbarButtonLookFor(t, open, c);
    EXPECT_LT(Luma(look.fill), Luma(hoverFill));
    EXPECT_LT(Luma(look.fill), Luma(c.inputBackground));
    EXPECT_EQ(look.outline, c.buttonFocusBorder);
    EXPECT_EQ(look.text, c.strongText);

    // Another button is unaffected by the hot one.
    look = ToolbarButtonLookFor(t, 0, c);
    EXPECT_EQ(look.fill, c.inputBackground);
    EXPECT_EQ(look.text, c.controlText);
  }
}

TEST(Toolbar, DisabledSaveIsFlatGreyAndNeverHot) {
  for (ThemeId id : {0u, 1u}) {
    const ThemeColors& c = ThemeColorsFor(id);
    Toolbar t = MakeToolbar();
    t.hot = kToolbarSaveIndex;  // even if the state says so, a disabled button does not light up
    t.buttons[kToolbarSaveIndex].pressed = true;
    const ToolbarButtonLook look = ToolbarButtonLookFor(t, kToolbarSaveIndex, c);
    EXPECT_EQ(look.fill, c.toolbarBackground);
    EXPECT_EQ(look.text, c.disabledText);
    EXPECT_EQ(look.outline, c.pressedBackground);
    EXPECT_FALSE(look.highlightLine);
    EXPECT_FALSE(look.accentLine);
  }
}

TEST(Toolbar, ExportIsTheAccentButton) {
  const ThemeColors& light = ThemeColorsFor(1);
  const ThemeColors& dark = ThemeColorsFor(0);
  Toolbar t = MakeToolbar();
  const int e = kToolbarExportIndex;

  ToolbarButtonLook look = ToolbarButtonLookFor(t, e, light);
  EXPECT_EQ(ColourText(look.fill), "#E1E8F5");
  EXPECT_TRUE(look.accentLine);
  EXPECT_EQ(ColourText(look.accent), "#1E64A0");
  EXPECT_EQ(look.text, light.controlText);
  EXPECT_EQ(ColourText(ToolbarButtonLookFor(t, e, ThemeColorsFor(5)).fill), "#E1E8F5");  // every light theme

  // Dark themes: a fill of their own, bluer than an ordinary button, and the lighter accent.
  for (ThemeId id : {0u, 4u}) {
    const ThemeColors& c = ThemeColorsFor(id);
    look = ToolbarButtonLookFor(t, e, c);
    EXPECT_EQ(look.fill, ExportRestingFill(c));
    EXPECT_NE(look.fill, c.inputBackground);
    EXPECT_GT(BlueOf(look.fill), BlueOf(c.inputBackground));
    EXPECT_GT(BlueOf(look.fill), RedOf(look.fill));
    EXPECT_EQ(ColourText(look.accent), "#4682B4");
  }
  EXPECT_EQ(ColourText(ExportRestingFill(dark)), "#2E3A46");

  t.hot = e;
  look = ToolbarButtonLookFor(t, e, light);
  EXPECT_EQ(look.fill, light.hoverBackground);
  EXPECT_TRUE(look.accentLine);
  EXPECT_TRUE(look.highlightLine);  // drawn over the accent's first row
  EXPECT_EQ(look.outline, light.buttonFocusBorder);

  t.buttons[e].pressed = true;
  look = ToolbarButtonLookFor(t, e, dark);
  EXPECT_EQ(look.fill, dark.pressedBackground);
  EXPECT_FALSE(look.accentLine);  // the accent goes while pressed
  EXPECT_EQ(look.text, dark.strongText);
}
