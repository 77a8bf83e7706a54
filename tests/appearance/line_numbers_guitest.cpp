// The line-number margin of the real main window: it follows the editor's line count, zoom and
// scrolling through the window's own wiring, hands the focus back and passes the wheel on.
#include <algorithm>
#include <string>
#include <vector>

#include "appearance/current_theme.h"
#include "appearance/line_numbers_gtk.h"
#include "appearance/status_bar_gtk.h"
#include "appearance/theme_gtk.h"
#include "common/command_ids.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::appearance;
using namespace nebro::testing;
using namespace nebro::sci;
using namespace nebro::app;

namespace {

struct PaintedRow {
  bool ink = false, current = false;  // current: some ink in the current line's colour
  int left = -1, right = -1;          // the ink's horizontal extent
};

class LineNumbersTest : public MainWindowTest {
 protected:
  static std::string Lines(int n) {
    std::string text;
    for (int i = 1; i < n; ++i) text += "x\n";
    return text + "x";  // n lines, the last without an end
  }
  int Width() { return gtk_widget_get_allocated_width(gMain.margin); }
  int EditorLeft() {
    GtkAllocation a;
    gtk_widget_get_allocation(gMain.editor, &a);
    return a.x;
  }
  // The margin as it paints itself now, or as the X server shows it: one entry per text row.
  std::vector<PaintedRow> Rows(bool onScreen = false) {
    const Snapshot s(gMain.margin, onScreen);
    const int h = static_cast<int>(Send(SCI_TEXTHEIGHT, 0));
    std::vector<PaintedRow> rows(s.height / h);
    for (int y = 0; y < static_cast<int>(rows.size()) * h; ++y) {
      for (int x = 0; x < s.width - 1; ++x) {
        const Colour colour = s.At(x, y);
        if (colour == GetThemeColors().lineNumberBackground) continue;
        PaintedRow& row = rows[y / h];
        row.ink = true;
        row.current |= ColourDistance(colour, GetThemeColors().currentLineNumberText) < 30;
        row.left = row.left < 0 ? x : std::min(row.left, x);
        row.right = std::max(row.right, x);
      }
    }
    return rows;
  }
};

}  // namespace

TEST_F(LineNumbersTest, WidthFollowsTheLineCountTheZoomAndTheSwitch) {
  SetText(Lines(999));
  Pump(gMain.window);
  const int small = Width();
  EXPECT_GT(small, 0);
  EXPECT_EQ(small, MarginWidth(gMain.editor));
  EXPECT_EQ(EditorLeft(), small);
  // The 1,000th line, typed at the end, widens the margin, and the editor moves right with it.
  Send(SCI_GOTOPOS, Send(SCI_GETLENGTH));
  SendPtr(gMain.editor, SCI_REPLACESEL, 0, "\ny");
  Pump(gMain.window);
  const int wide = Width();
  EXPECT_GT(wide, small);
  EXPECT_EQ(wide, MarginWidth(gMain.editor));
  EXPECT_EQ(EditorLeft(), wide);
  Send(SCI_UNDO);
  Pump(gMain.window);
  EXPECT_EQ(Width(), small);
  EXPECT_EQ(EditorLeft(), small);

  Send(SCI_SETZOOM, 6);
  Pump(gMain.window);
  EXPECT_GT(Width(), small);
  EXPECT_EQ(Width(), MarginWidth(gMain.editor));
  EXPECT_EQ(EditorLeft(), Width());
  Send(SCI_SETZOOM, 0);

  // Switched off, the margin gives its room to the editor; switched on, it has caught up.
  ASSERT_TRUE(DispatchCommand(kCmdLineNumbers));
  SetText(Lines(20000));
  Pump(gMain.window);
  EXPECT_EQ(EditorLeft(), 0);
  ASSERT_TRUE(DispatchCommand(kCmdLineNumbers));
  Pump(gMain.window);
  EXPECT_GT(Width(), wide);
  EXPECT_EQ(Width(), MarginWidth(gMain.editor));
  EXPECT_EQ(EditorLeft(), Width());
}

TEST_F(LineNumbersTest, ClickGivesTheFocusBackAndTheWheelScrollsTheEditor) {
  SetText(Lines(200));
  Send(SCI_SETSEL, 7, 12);
  gtk_window_set_focus(GTK_WINDOW(gMain.window), nullptr);
  Pump(gMain.window);
  ASSERT_EQ(gtk_window_get_focus(GTK_WINDOW(gMain.window)), nullptr);
  SendButton(gMain.margin, GDK_BUTTON_PRESS, 10, 40);
  SendButton(gMain.margin, GDK_BUTTON_RELEASE, 10, 40);
  EXPECT_EQ(gtk_window_get_focus(GTK_WINDOW(gMain.window)), gMain.editor);
  // Only the focus: the selection stays.
  EXPECT_EQ(Send(SCI_GETANCHOR), 7);
  EXPECT_EQ(Send(SCI_GETCURRENTPOS), 12);

  for (GdkScrollDirection direction : {GDK_SCROLL_DOWN, GDK_SCROLL_UP}) {
    GdkEvent* e = PointerEvent(gMain.margin, GDK_SCROLL);
    e->scroll.direction = direction;
    Deliver(e);
    if (direction == GDK_SCROLL_DOWN) {
      EXPECT_GT(Send(SCI_GETFIRSTVISIBLELINE), 0);
    }
  }
  EXPECT_EQ(Send(SCI_GETFIRSTVISIBLELINE), 0);
}

TEST_F(LineNumbersTest, NumbersFollowScrollingAndZoomWithTheCaretRowHighlighted) {
  for (ThemeId theme : {0u, 1u}) {
    SCOPED_TRACE(ThemeName(theme));
    SetTheme(theme, true);
    SetText(Lines(200));
    Send(SCI_GOTOPOS, Send(SCI_POSITIONFROMLINE, 52));
    Send(SCI_SETFIRSTVISIBLELINE, 50);
    PaintAndWait(gMain.window);
    std::vector<PaintedRow> rows = Rows();
    ASSERT_GT(rows.size(), 8u);
    for (size_t r = 0; r < rows.size(); ++r) EXPECT_TRUE(rows[r].ink && rows[r].current == (r == 2)) << r;

    // Scrolling repaints the margin on screen, the highlight moving with the caret's line.
    Send(SCI_SETFIRSTVISIBLELINE, 47);
    EXPECT_TRUE(WaitUntil([&] {
      rows = Rows(true);
      return rows.size() > 8 && rows[5].current && !rows[2].current;
    }, 5));
    // "98" to "101" end at the same right edge.
    Send(SCI_SETFIRSTVISIBLELINE, 97);
    rows = Rows();
    for (size_t r = 1; r < 4; ++r) EXPECT_NEAR(rows[r].right, rows[0].right, 3) << r;
    EXPECT_LT(rows[3].left, rows[0].left);
  }

  auto extent = [&](int zoom) {
    Send(SCI_SETZOOM, zoom);
    Pump(gMain.window);
    const PaintedRow row = Rows()[3];
    return row.right - row.left;
  };
  const int normal = extent(0);
  EXPECT_GT(extent(6), normal);
  EXPECT_LT(extent(-3), normal);
}

// Word wrap is on by default: each row of a wrapped line gets its own number, in step with the
// status bar's "Ln", and the rows stop after the last line.
TEST_F(LineNumbersTest, WrappedRowsAreNumberedInStepWithTheStatusBar) {
  std::string longLine;
  for (int i = 0; i < 40; ++i) longLine += "wrapped" + std::to_string(i) + " ";
  SetText("first\n" + longLine + "\nlast\n");
  PaintAndWait(gMain.window);
  Send(SCI_GOTOPOS, Send(SCI_POSITIONFROMLINE, 2));
  const long wrapped = static_cast<long>(Send(SCI_WRAPCOUNT, 1));
  ASSERT_GT(wrapped, 1);
  const std::string ln = "  Ln " + std::to_string(wrapped + 2) + ", Col 1";
  EXPECT_TRUE(WaitUntil([&] { return StatusBarTexts(gMain.statusBar)[0] == ln; }, 5)) << StatusBarTexts(gMain.statusBar)[0];
  const std::vector<PaintedRow> rows = Rows();
  ASSERT_GT(static_cast<long>(rows.size()), wrapped + 3);
  for (long r = 0; r < static_cast<long>(rows.size()); ++r) {
    EXPECT_EQ(rows[r].ink, r < wrapped + 3) << r;
    EXPECT_EQ(rows[r].current, r == wrapped + 1) << r;
  }
}
