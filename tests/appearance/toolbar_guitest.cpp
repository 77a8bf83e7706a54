// The toolbar widget in a window: layout from its allocation, commands on button-down for
// enabled buttons only, hover and cursor, and what it paints.
#include <cstdlib>
#include <string>
#include <vector>

#include "common/command_ids.h"
#include "appearance/current_theme.h"
#include "toolbar_harness.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

class ToolbarWidgetTest : public ChromeTest {
 protected:
  void SetUp() override {
    ChromeTest::SetUp();
    SetToolbarCommandSink([this](int id) { fired.push_back(id); });
  }
  void TearDown() override { SetToolbarCommandSink(nullptr); }

  // The centre of button `i` as laid out now.
  static std::pair<int, int> Centre(GtkWidget* toolbar, int i) {
    const ToolbarRect& r = ToolbarState(toolbar)->buttons[i].rect;
    return {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
  }
  void Press(GtkWidget* toolbar, int i) {
    const auto [x, y] = Centre(toolbar, i);
    SendButton(toolbar, GDK_BUTTON_PRESS, x, y);
  }

  std::vector<int> fired;
};

GdkCursorType CursorOf(GtkWidget* widget) {
  GdkCursor* c = gdk_window_get_cursor(gtk_widget_get_window(widget));
  return c ? gdk_cursor_get_cursor_type(c) : GDK_ARROW;  // none set: the parent's arrow
}

}  // namespace

TEST_F(ToolbarWidgetTest, IsFortyFourPixelsHighAndLaysOutFromItsWidth) {
  ChromeWindow w(1200, 500);
  EXPECT_STREQ(gtk_widget_get_name(w.toolbar), "NebroToolbar");
  EXPECT_EQ(gtk_widget_get_allocated_height(w.toolbar), kToolbarHeight);
  ASSERT_EQ(w.Width(w.toolbar), 1200);
  EXPECT_EQ(ToolbarState(w.toolbar)->buttons[0].rect.left, 355);

  // Narrower than the row: the first button stays at 8.
  gtk_window_resize(GTK_WINDOW(w.window), 400, 500);
  Pump(w.window);
  ASSERT_EQ(w.Width(w.toolbar), 400);
  EXPECT_EQ(ToolbarState(w.toolbar)->buttons[0].rect.left, 8);
  EXPECT_EQ(ToolbarState(w.toolbar)->buttons[5].rect.left, 423);
}

TEST_F(ToolbarWidgetTest, EnabledButtonsFireTheirCommandOnButtonDown) {
  ChromeWindow w(1000, 400);
  Press(w.toolbar, 0);
  Press(w.toolbar, 3);
  Press(w.toolbar, 5);
  EXPECT_EQ(fired, (std::vector<int>{kCmdNew, kCmdExport, kCmdHelp}));
  // Only the press counts: the release fires nothing and leaves no button pressed.
  const auto [x, y] = Centre(w.toolbar, 1);
  SendButton(w.toolbar, GDK_BUTTON_PRESS, x, y);
  SendButton(w.toolbar, GDK_BUTTON_RELEASE, x, y);
  EXPECT_EQ(fired.back(), kCmdOpen);
  EXPECT_EQ(fired.size(), 4u);
  for (const ToolbarButton& b : ToolbarState(w.toolbar)->buttons) EXPECT_FALSE(b.pressed);

  // A double click is two presses: two commands, not three.
  fired.clear();
  SendButton(w.toolbar, GDK_BUTTON_PRESS, x, y);
  SendButton(w.toolbar, GDK_BUTTON_PRESS, x, y);
  SendButton(w.toolbar, GDK_2BUTTON_PRESS, x, y);
  EXPECT_EQ(fired, (std::vector<int>{kCmdOpen, kCmdOpen}));

  // The right button, the gaps and the strip around the buttons do nothing.
  fired.clear();
  SendButton(w.toolbar, GDK_BUTTON_PRESS, x, y, 3);
  const ToolbarRect& first = ToolbarState(w.toolbar)->buttons[0].rect;
  SendButton(w.toolbar, GDK_BUTTON_PRESS, first.right + 3, y);
  SendButton(w.toolbar, GDK_BUTTON_PRESS, x, 2);
  SendButton(w.toolbar, GDK_BUTTON_PRESS, 2, y);
  EXPECT_TRUE(fired.empty());
}

// The pressed look reaches the screen before the command runs (a command may keep the main loop
// busy for a while, or open a dialog), and is gone again afterwards.
TEST_F(ToolbarWidgetTest, PressedLookIsPaintedBeforeTheCommandRuns) {
  ChromeWindow w(1000, 400);
  std::vector<int> pressedWhenPainted;  // per paint: the pressed button, or -1
  const gulong handler = g_signal_connect_after(
      w.toolbar, "draw", G_CALLBACK(+[](GtkWidget* widget, cairo_t*, std::vector<int>* log) -> gboolean {
        int pressed = -1;
        for (int i = 0; i < kToolbarButtonCount; ++i) {
          if (ToolbarState(widget)->buttons[i].pressed) pressed = i;
        }
        log->push_back(pressed);
        return FALSE;
      }),
      &pressedWhenPainted);
  std::vector<int> paintsBeforeCommand;
  SetToolbarCommandSink([&](int id) {
    fired.push_back(id);
    paintsBeforeCommand = pressedWhenPainted;
  });
  Pump(w.window);
  pressedWhenPainted.clear();
  Press(w.toolbar, 4);
  EXPECT_EQ(fired, (std::vector<int>{kCmdSettings}));
  EXPECT_EQ(paintsBeforeCommand, (std::vector<int>{4}));
  PaintAndWait(w.window);
  ASSERT_FALSE(pressedWhenPainted.empty());
  EXPECT_EQ(pressedWhenPainted.back(), -1);
  g_signal_handler_disconnect(w.toolbar, handler);
}

TEST_F(ToolbarWidgetTest, SaveFiresOnlyWhileTheDocumentIsModified) {
  ChromeWindow w(1000, 400);
  Press(w.toolbar, kToolbarSaveIndex);
  EXPECT_TRUE(fired.empty());

  gMain.doc.modified = true;
  RefreshToolbarState();
  EXPECT_TRUE(ToolbarState(w.toolbar)->buttons[kToolbarSaveIndex].enabled);
  Press(w.toolbar, kToolbarSaveIndex);
  EXPECT_EQ(fired, (std::vector<int>{kCmdSave}));

  gMain.doc.modified = false;
  RefreshToolbarState();
  Press(w.toolbar, kToolbarSaveIndex);
  EXPECT_EQ(fired.size(), 1u);
}

TEST_F(ToolbarWidgetTest, HoverLightsEnabledButtonsWithTheHandCursor) {
  ChromeWindow w(1000, 400);
  auto [x, y] = Centre(w.toolbar, 4);
  SendMotion(w.toolbar, x, y);
  EXPECT_EQ(ToolbarState(w.toolbar)->hot, 4);
  EXPECT_EQ(CursorOf(w.toolbar), GDK_HAND2);

  // Over the disabled Save button: nothing hot, the arrow.
  std::tie(x, y) = Centre(w.toolbar, kToolbarSaveIndex);
  SendMotion(w.toolbar, x, y);
  EXPECT_EQ(ToolbarState(w.toolbar)->hot, -1);
  EXPECT_EQ(CursorOf(w.toolbar), GDK_ARROW);

  std::tie(x, y) = Centre(w.toolbar, 0);
  SendMotion(w.toolbar, x, y);
  EXPECT_EQ(ToolbarState(w.toolbar)->hot, 0);
  SendLeave(w.toolbar);
  EXPECT_EQ(ToolbarState(w.toolbar)->hot, -1);
  EXPECT_EQ(CursorOf(w.toolbar), GDK_ARROW);

  // Save hot, then the document is saved: Save goes grey and the hand goes.
  gMain.doc.modified = true;
  RefreshToolbarState();
  std::tie(x, y) = Centre(w.toolbar, kToolbarSaveIndex);
  SendMotion(w.toolbar, x, y);
  EXPECT_EQ(CursorOf(w.toolbar), GDK_HAND2);
  gMain.doc.modified = false;
  RefreshToolbarState();
  EXPECT_EQ(ToolbarState(w.toolbar)->hot, -1);
  EXPECT_EQ(CursorOf(w.toolbar), GDK_ARROW);
}

TEST_F(ToolbarWidgetTest, PaintsTheStripAndButtonsInTheThemeColours) {
  for (ThemeId id : {0u, 1u}) {
    gSettings.theme = id;
    const ThemeColors& c = GetThemeColors();
    ChromeWindow w(1000, 400);
    const Toolbar& t = *ToolbarState(w.toolbar);
    auto [hx, hy] = Centre(w.toolbar, 1);
    SendMotion(w.toolbar, hx, hy);

    Snapshot s(w.toolbar);
    EXPECT_EQ(s.At(2, 20), c.toolbarBackground);
    EXPECT_EQ(s.At(500, 0), id == 0 ? Rgb(0x46, 0x46, 0x4B) : Rgb(0xFF, 0xFF, 0xFF));
    EXPECT_EQ(s.At(500, s.height - 1), c.border);
    // Just inside the bottom-left corner area of each button, away from the label.
    auto fillOf = [&](int i) { return s.At(t.buttons[i].rect.left + 6, t.buttons[i].rect.bottom - 4); };
    EXPECT_EQ(fillOf(0), c.inputBackground);
    EXPECT_EQ(fillOf(1), c.hoverBackground);
    EXPECT_EQ(fillOf(kToolbarSaveIndex), c.toolbarBackground);
    EXPECT_EQ(fillOf(kToolbarExportIndex), ExportRestingFill(c));
    // The outline on the button's left edge, half-way down.
    const ToolbarRect& r0 = t.buttons[0].rect;
    EXPECT_EQ(s.At(r0.left, (r0.top + r0.bottom) / 2), c.pressedBackground);
    const ToolbarRect& r1 = t.buttons[1].rect;
    EXPECT_EQ(s.At(r1.left, (r1.top + r1.bottom) / 2), c.buttonFocusBorder);
    // The Export accent line inside its top edge, and the hot button's highlight line.
    const ToolbarRect& re = t.buttons[kToolbarExportIndex].rect;
    EXPECT_EQ(s.At(re.left + 10, re.top + 2), id == 0 ? Rgb(0x46, 0x82, 0xB4) : Rgb(0x1E, 0x64, 0xA0));
    EXPECT_EQ(s.At(r1.left + 10, r1.top + 1), id == 0 ? Rgb(0x64, 0x64, 0x6E) : Rgb(0xFF, 0xFF, 0xFF));
    // Some label ink in the middle of the hot button, in a colour near strongText.
    int best = 1 << 30;
    for (int x = r1.left + 8; x < r1.right - 8; ++x) {
      for (int y = r1.top + 6; y < r1.bottom - 6; ++y) best = std::min(best, ColourDistance(s.At(x, y), c.strongText));
    }
    EXPECT_LT(best, 60);
  }
}

// All three companions in every theme, as the user sees them: each paints its own background
// from the active record. With NEBRO_SCREENSHOT_DIR set, the screen is also saved per theme
// (through ImageMagick's import) for a look by eye.
TEST_F(ToolbarWidgetTest, EveryThemeColoursAllThreeCompanions) {
  const char* shotDir = std::getenv("NEBRO_SCREENSHOT_DIR");
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    SCOPED_TRACE(ThemeName(id));
    gSettings.theme = id;
    const ThemeColors& c = GetThemeColors();
    ChromeWindow w(900, 420);
    gtk_window_move(GTK_WINDOW(w.window), 0, 0);
    std::string text = "// The companions of the editor\r\nint main() {\r\n  return 0;\r\n}\r\n";
    for (int i = 0; i < 1200; ++i) text += "filler line " + std::to_string(i + 1) + " \xC3\xA4\xC3\xB6\xC3\xBC\r\n";
    w.SetText(text);
    w.Send(sci::SCI_SETFIRSTVISIBLELINE, 995);
    w.Send(sci::SCI_SETSEL, w.Send(sci::SCI_POSITIONFROMLINE, 1000) + 12, w.Send(sci::SCI_POSITIONFROMLINE, 1000) + 22);
    gMain.doc.modified = id % 2 == 1;  // Save enabled in every other theme
    RefreshToolbarState();
    auto [x, y] = Centre(w.toolbar, 1);
    SendMotion(w.toolbar, x, y);
    Pump(w.window);
    UpdateStatusBar();
    UpdateMargin();
    Pump(w.window);

    EXPECT_EQ(StatusBarTexts()[0], "  Ln 1001, Col 20");
    EXPECT_EQ(StatusBarTexts()[1], "  Sel: 7");
    Snapshot bar(w.toolbar), margin(w.margin), status(w.statusBar);
    EXPECT_EQ(bar.At(2, 20), c.toolbarBackground);
    EXPECT_EQ(margin.At(1, margin.height - 2), c.lineNumberBackground);
    EXPECT_EQ(status.At(200, status.height - 2), c.marginBackground);

    if (shotDir) {
      PaintAndWait(w.window);
      const std::string cmd = std::string("import -window root -crop 900x420+0+0 ") + shotDir + "/chrome-" +
                              std::to_string(id) + ".png";
      gint status = 0;
      EXPECT_TRUE(g_spawn_command_line_sync(cmd.c_str(), nullptr, nullptr, &status, nullptr));
    }
  }
}
