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
  for (const auto& [id, label] : rows) AddCommand(t, {id, label, {}, "", [] {}, {}});
  return nebro::appearance::MakeToolbar(t);
}

}  // namespace

TEST(Toolbar, LayoutCentresTheRowButNeverLeftOfEight) {
  Toolbar t = MakeToolbar();
  // A wide client centres the row of 75-pixel buttons 8 apart: (1200 - 490) / 2 = 355.
  LayoutToolbar(t, 1200);
  EXPECT_EQ(Lefts(t), (std::vector<int>{355, 438, 521, 604, 687, 770}));
  // A narrow one starts at 8 and lets the row run past the right edge; an odd remainder rounds
  // down.
  const std::pair<int, int> firstLeft[] = {{400, 8}, {506, 8}, {507, 8}, {509, 9}, {0, 8}};
  for (const auto& [width, left] : firstLeft) {
    LayoutToolbar(t, width);
    EXPECT_EQ(t.buttons[0].rect.left, left) << width;
    EXPECT_EQ(t.buttons[5].rect.left, left + 5 * 83) << width;
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
  // A command without a handler (its window not built yet) is greyed whatever the document.
  CommandTable rows;
  AddCommand(rows, {kCmdHelp, "Help", {}, "", {}, {}});
  Toolbar unbuilt = nebro::appearance::MakeToolbar(rows);
  LayoutToolbar(unbuilt, 1200);
  UpdateToolbarEnabled(unbuilt, true);
  EXPECT_FALSE(unbuilt.buttons[5].enabled);
  EXPECT_EQ(ToolbarHitTest(unbuilt, 800, 20), -1);
  EXPECT_TRUE(unbuilt.buttons[0].enabled);  // no row at all: nothing to say it is missing
}

TEST(Toolbar, ButtonLooksByState) {
  const int open = 1, e = kToolbarExportIndex, save = kToolbarSaveIndex;
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    SCOPED_TRACE(ThemeName(id));
    const ThemeColors& c = ThemeColorsFor(id);
    Toolbar t = MakeToolbar();
    auto look = [&](int i) { return ToolbarButtonLookFor(t, i, c); };
    EXPECT_EQ(look(open).fill, c.inputBackground);  // resting
    EXPECT_FALSE(look(open).highlightLine || look(open).accentLine);
    // Export is the accent button: every light theme shares one resting fill; dark themes get a
    // fill of their own, bluer than an ordinary button.
    EXPECT_TRUE(look(e).accentLine);
    if (c.isDark) {
      EXPECT_GT(BlueOf(look(e).fill), BlueOf(c.inputBackground));
    } else {
      EXPECT_EQ(look(e).fill, ToolbarButtonLookFor(t, e, ThemeColorsFor(1)).fill);
    }

    // Under the pointer: the hover fill, the focus outline, strong text and the highlight.
    t.hot = open;
    EXPECT_EQ(look(open).fill, c.hoverBackground);
    EXPECT_EQ(look(open).outline, c.buttonFocusBorder);
    EXPECT_EQ(look(open).text, c.strongText);
    EXPECT_TRUE(look(open).highlightLine);
    EXPECT_EQ(look(0).fill, c.inputBackground);  // another button is unaffected by the hot one
    // Pressed (under the mouse, as a press always is): a fill darker than hovering and resting.
    t.buttons[open].pressed = true;
    EXPECT_LT(Luma(look(open).fill), Luma(c.hoverBackground));
    EXPECT_LT(Luma(look(open).fill), Luma(c.inputBackground));
    EXPECT_EQ(look(open).text, c.strongText);
    // Export hot: the highlight drawn over the accent; pressed: the accent goes.
    t.hot = e;
    EXPECT_EQ(look(e).fill, c.hoverBackground);
    EXPECT_TRUE(look(e).accentLine && look(e).highlightLine);
    t.buttons[e].pressed = true;
    EXPECT_EQ(look(e).fill, c.pressedBackground);
    EXPECT_FALSE(look(e).accentLine);

    // The disabled Save button is flat grey and never lights up, whatever the state says.
    t.hot = save;
    t.buttons[save].pressed = true;
    EXPECT_EQ(look(save).fill, c.toolbarBackground);
    EXPECT_EQ(look(save).text, c.disabledText);
    EXPECT_EQ(look(save).outline, c.pressedBackground);
    EXPECT_FALSE(look(save).highlightLine || look(save).accentLine);
  }
}
