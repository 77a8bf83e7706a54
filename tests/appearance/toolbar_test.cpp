// The toolbar's layout, hit testing, enabled rules and the colours of each button state.
#include "appearance/toolbar.h"

#include "common/command_ids.h"

#include <gtest/gtest.h>

using namespace nebro;
using namespace nebro::appearance;

namespace {

std::vector<int> Lefts(const Toolbar& t) {
  std::vector<int> out;
  for (const ToolbarButton& b : t.buttons) out.push_back(b.rect.left);
  return out;
}

// Perceived brightness, enough to compare two fills.
int Luma(Colour c) { return 299 * static_cast<int>(RedOf(c)) + 587 * static_cast<int>(GreenOf(c)) + 114 * static_cast<int>(BlueOf(c)); }

// The labels come from the command table's rows.
Toolbar MakeToolbar() {
  CommandTable t;
  const std::pair<int, const char*> rows[] = {{kCmdNew, "New"},       {kCmdOpen, "Open"},         {kCmdSave, "Save"},
                                              {kCmdExport, "Export"}, {kCmdSettings, "Settings"}, {kCmdHelp, "Help"}};
  for (const auto& [id, label] : rows) AddCommand(t, {id, label, {}, "", {}, {}});
  return nebro::appearance::MakeToolbar(t);
}

}  // namespace

TEST(Toolbar, LayoutCentresTheRowButNeverLeftOfEight) {
  Toolbar t = MakeToolbar();
  // A narrow client starts at 8 and lets the row run past the right edge.
  LayoutToolbar(t, 400);
  EXPECT_EQ(Lefts(t), (std::vector<int>{8, 91, 174, 257, 340, 423}));
  for (const ToolbarButton& b : t.buttons) {
    EXPECT_EQ(b.rect.top, 6);
    EXPECT_EQ(b.rect.bottom, 36);
    EXPECT_EQ(b.rect.right - b.rect.left, 75);
  }
  // A wide one centres it: (1200 - 490) / 2 = 355.
  LayoutToolbar(t, 1200);
  EXPECT_EQ(Lefts(t), (std::vector<int>{355, 438, 521, 604, 687, 770}));
  // An odd remainder rounds down.
  const std::pair<int, int> firstLeft[] = {{506, 8}, {507, 8}, {509, 9}, {0, 8}};
  for (const auto& [width, left] : firstLeft) {
    LayoutToolbar(t, width);
    EXPECT_EQ(t.buttons[0].rect.left, left) << width;
  }
}

TEST(Toolbar, HitTestAndTheSaveButtonFollowingTheModifiedFlag) {
  Toolbar t = MakeToolbar();
  LayoutToolbar(t, 1200);
  EXPECT_EQ(ToolbarHitTest(t, 355, 6), 0);    // top-left pixel
  EXPECT_EQ(ToolbarHitTest(t, 429, 35), 0);   // bottom-right pixel
  EXPECT_EQ(ToolbarHitTest(t, 430, 20), -1);  // right edge is outside
  EXPECT_EQ(ToolbarHitTest(t, 440, 5), -1);   // above
  EXPECT_EQ(ToolbarHitTest(t, 440, 36), -1);  // below
  EXPECT_EQ(ToolbarHitTest(t, 800, 20), 5);
  // Save is disabled on an unmodified document: not hit, as if nothing were there.
  EXPECT_EQ(ToolbarHitTest(t, 530, 20), -1);
  EXPECT_FALSE(UpdateToolbarEnabled(t, false));  // already so
  EXPECT_TRUE(UpdateToolbarEnabled(t, true));
  EXPECT_EQ(ToolbarHitTest(t, 530, 20), kToolbarSaveIndex);
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

TEST(Toolbar, ButtonColoursByState) {
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    SCOPED_TRACE(ThemeName(id));
    const ThemeColors& c = ThemeColorsFor(id);
    Toolbar t = MakeToolbar();
    const int open = 1;

    ToolbarButtonLook look = ToolbarButtonLookFor(t, open, c);  // resting
    EXPECT_EQ(look.fill, c.inputBackground);
    EXPECT_EQ(look.outline, c.pressedBackground);
    EXPECT_EQ(look.text, c.controlText);
    EXPECT_FALSE(look.highlightLine || look.accentLine);

    t.hot = open;
    look = ToolbarButtonLookFor(t, open, c);
    EXPECT_EQ(look.fill, c.hoverBackground);
    EXPECT_EQ(look.outline, c.buttonFocusBorder);
    EXPECT_EQ(look.text, c.strongText);
    EXPECT_TRUE(look.highlightLine);
    const Colour hoverFill = look.fill;

    // Pressed (under the mouse, as a press always is): a fill darker than hovering.
    t.buttons[open].pressed = true;
    look = ToolbarButtonLookFor(t, open, c);
    EXPECT_LT(Luma(look.fill), Luma(hoverFill));
    EXPECT_LT(Luma(look.fill), Luma(c.inputBackground));
    EXPECT_EQ(look.text, c.strongText);
    // Another button is unaffected by the hot one.
    EXPECT_EQ(ToolbarButtonLookFor(t, 0, c).fill, c.inputBackground);

    // The disabled Save button is flat grey and never lights up, whatever the state says.
    t.hot = kToolbarSaveIndex;
    t.buttons[kToolbarSaveIndex].pressed = true;
    look = ToolbarButtonLookFor(t, kToolbarSaveIndex, c);
    EXPECT_EQ(look.fill, c.toolbarBackground);
    EXPECT_EQ(look.text, c.disabledText);
    EXPECT_EQ(look.outline, c.pressedBackground);
    EXPECT_FALSE(look.highlightLine || look.accentLine);
  }
}

TEST(Toolbar, ExportIsTheAccentButton) {
  const int e = kToolbarExportIndex;
  Toolbar t = MakeToolbar();
  // Every light theme shares one resting fill; dark themes get a fill of their own, bluer than
  // an ordinary button.
  const Colour lightFill = ToolbarButtonLookFor(t, e, ThemeColorsFor(1)).fill;
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    const ThemeColors& c = ThemeColorsFor(id);
    const ToolbarButtonLook look = ToolbarButtonLookFor(t, e, c);
    EXPECT_TRUE(look.accentLine) << id;
    if (c.isDark) {
      EXPECT_GT(BlueOf(look.fill), BlueOf(c.inputBackground)) << id;
    } else {
      EXPECT_EQ(look.fill, lightFill) << id;
    }
  }
  // Hot: the hover fill, the highlight drawn over the accent; pressed: the accent goes.
  const ThemeColors& dark = ThemeColorsFor(0);
  t.hot = e;
  ToolbarButtonLook look = ToolbarButtonLookFor(t, e, dark);
  EXPECT_EQ(look.fill, dark.hoverBackground);
  EXPECT_TRUE(look.accentLine && look.highlightLine);
  t.buttons[e].pressed = true;
  look = ToolbarButtonLookFor(t, e, dark);
  EXPECT_EQ(look.fill, dark.pressedBackground);
  EXPECT_FALSE(look.accentLine);
}
