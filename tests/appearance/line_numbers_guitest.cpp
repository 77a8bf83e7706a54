// The line-number margin against the real editor: its width following the line count and the
// zoom, the relayout it causes, clicks, and the numbers it paints.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "appearance/current_theme.h"
#include "toolbar_harness.h"

using namespace nebro;
using namespace nebro::testing;
using namespace nebro::sci;

namespace {

class LineNumbersWidgetTest : public ChromeTest {
 protected:
  static std::string Lines(int n) {
    std::string text;
    for (int i = 1; i < n; ++i) text += "x\r\n";
    return text + "x";  // n lines, the last without an end
  }
  static int Nine(ChromeWindow& w) {
    return static_cast<int>(SendPtr(w.editor, SCI_TEXTWIDTH, STYLE_LINENUMBER, "9"));
  }
  static int Requested(GtkWidget* widget) {
    int width = 0;
    gtk_widget_get_size_request(widget, &width, nullptr);
    return width;
  }
  static int EditorLeft(ChromeWindow& w) {
    GtkAllocation a;
    gtk_widget_get_allocation(w.editor, &a);
    return a.x;
  }
};

}  // namespace

TEST_F(LineNumbersWidgetTest, WidthFollowsTheLineCountAndRelaysTheWindowOut) {
  ChromeWindow w(900, 500);
  EXPECT_STREQ(gtk_widget_get_name(w.margin), "NebroMargin");
  const int nine = Nine(w);
  ASSERT_GT(nine, 1);

  w.SetText(Lines(5));
  Pump(w.window);
  const int small = MarginWidth();
  EXPECT_EQ(small, 3 * nine + 12);
  EXPECT_EQ(w.Width(w.margin), small);
  EXPECT_EQ(EditorLeft(w), small);

  w.SetText(Lines(999));
  Pump(w.window);
  EXPECT_EQ(MarginWidth(), small);
  EXPECT_EQ(w.Width(w.margin), small);

  // The 1,000th line widens the margin by one digit, and the editor moves right with it.
  w.Send(SCI_APPENDTEXT, 3, reinterpret_cast<sptr_t>("\r\ny"));
  ASSERT_EQ(w.Send(SCI_GETLINECOUNT), 1000);
  Pump(w.window);
  EXPECT_EQ(Requested(w.margin), small + nine);
  EXPECT_EQ(w.Width(w.margin), small + nine);
  EXPECT_EQ(EditorLeft(w), small + nine);

  w.SetText(Lines(10000));
  Pump(w.window);
  EXPECT_EQ(w.Width(w.margin), small + 2 * nine);

  // Back to a short document: back to three digits.
  w.SetText("");
  Pump(w.window);
  EXPECT_EQ(w.Width(w.margin), small);
}

TEST_F(LineNumbersWidgetTest, WidthFollowsTheZoom) {
  ChromeWindow w(900, 500);
  w.SetText(Lines(50));
  Pump(w.window);
  const int normal = w.Width(w.margin);

  w.Send(SCI_SETZOOM, 6);
  Pump(w.window);
  const int zoomed = w.Width(w.margin);
  EXPECT_GT(zoomed, normal);
  EXPECT_EQ(zoomed, 3 * Nine(w) + 12);

  w.Send(SCI_SETZOOM, -8);
  Pump(w.window);
  EXPECT_LT(w.Width(w.margin), normal);
  EXPECT_EQ(w.Width(w.margin), MarginWidth());
}

TEST_F(LineNumbersWidgetTest, OffMeansWidthZeroAndNoRelayout) {
  ChromeWindow w(900, 500);
  w.SetText(Lines(5));
  Pump(w.window);
  const int before = Requested(w.margin);
  ASSERT_GT(before, 0);

  gSettings.lineNumbers = false;
  EXPECT_EQ(MarginWidth(), 0);
  w.SetText(Lines(20000));
  UpdateMargin();
  EXPECT_EQ(Requested(w.margin), before);

  // On again: the next update catches up with the document.
  gSettings.lineNumbers = true;
  UpdateMargin();
  EXPECT_EQ(Requested(w.margin), 5 * Nine(w) + 12);

  // Without an editor there is nothing to measure.
  gMain.editor = nullptr;
  EXPECT_EQ(MarginWidth(), 0);
  gMain.editor = w.editor;
}

TEST_F(LineNumbersWidgetTest, ClickOnlyGivesTheFocusBackToTheEditor) {
  ChromeWindow w(900, 500);
  GtkWidget* entry = gtk_entry_new();
  gtk_box_pack_start(GTK_BOX(w.box), entry, FALSE, FALSE, 0);
  gtk_widget_show(entry);
  w.SetText(Lines(40));
  w.Send(SCI_SETSEL, 7, 12);
  Pump(w.window);
  gtk_widget_grab_focus(entry);
  ASSERT_EQ(gtk_window_get_focus(GTK_WINDOW(w.window)), entry);

  SendButton(w.margin, GDK_BUTTON_PRESS, 10, 40);
  SendButton(w.margin, GDK_BUTTON_RELEASE, 10, 40);
  Pump(w.window);
  EXPECT_EQ(gtk_window_get_focus(GTK_WINDOW(w.window)), w.editor);
  EXPECT_EQ(w.Send(SCI_GETANCHOR), 7);
  EXPECT_EQ(w.Send(SCI_GETCURRENTPOS), 12);
  EXPECT_EQ(w.Send(SCI_GETLINECOUNT), 40);
}

TEST_F(LineNumbersWidgetTest, PaintsNumbersRowByRowWithTheCaretRowHighlighted) {
  for (ThemeId id : {0u, 1u}) {
    gSettings.theme = id;
    const ThemeColors& c = GetThemeColors();
    ChromeWindow w(900, 500);
    w.SetText(Lines(200));
    w.Send(SCI_GOTOPOS, w.Send(SCI_POSITIONFROMLINE, 52));
    w.Send(SCI_SETFIRSTVISIBLELINE, 50);
    Pump(w.window);

    Snapshot s(w.margin);
    const int h = static_cast<int>(w.Send(SCI_TEXTHEIGHT, 0));
    ASSERT_GT(h, 4);
    EXPECT_EQ(s.At(1, 1), c.lineNumberBackground);
    for (int y : {0, s.height / 2, s.height - 1}) EXPECT_EQ(s.At(s.width - 1, y), c.border);

    // Per row: the ink colour nearest to each of the two number colours, and the ink's right end.
    auto inkOf = [&](int row, Colour target, int* rightmost) {
      int best = 1 << 30;
      *rightmost = -1;
      for (int y = row * h; y < (row + 1) * h && y < s.height; ++y) {
        for (int x = 0; x < s.width - 1; ++x) {
          const Colour px = s.At(x, y);
          if (px == c.lineNumberBackground) continue;
          *rightmost = std::max(*rightmost, x);
          best = std::min(best, ColourDistance(px, target));
        }
      }
      return best;
    };
    int right0 = 0, right2 = 0;
    // Row 2 shows "53", the caret's line: current colour. Row 0 ("51") the ordinary one.
    EXPECT_LT(inkOf(2, c.currentLineNumberText, &right2), 40);
    EXPECT_LT(inkOf(0, c.lineNumberText, &right0), 40);
    EXPECT_GT(inkOf(0, c.currentLineNumberText, &right0), inkOf(0, c.lineNumberText, &right0));
    // Right-aligned six pixels inside the margin's width (less the glyphs' own side bearing).
    for (int right : {right0, right2}) {
      EXPECT_LE(right, s.width - kMarginRightPadding);
      EXPECT_GE(right, s.width - kMarginRightPadding - 3);
    }
  }
}

TEST_F(LineNumbersWidgetTest, RowsStopAfterTheLastLine) {
  ChromeWindow w(900, 500);
  w.SetText(Lines(3));
  Pump(w.window);
  Snapshot s(w.margin);
  const int h = static_cast<int>(w.Send(SCI_TEXTHEIGHT, 0));
  auto rowHasInk = [&](int row) {
    for (int y = row * h; y < (row + 1) * h; ++y) {
      for (int x = 0; x < s.width - 1; ++x) {
        if (s.At(x, y) != GetThemeColors().lineNumberBackground) return true;
      }
    }
    return false;
  };
  EXPECT_TRUE(rowHasInk(0));
  EXPECT_TRUE(rowHasInk(2));
  EXPECT_FALSE(rowHasInk(3));
  EXPECT_FALSE(rowHasInk(6));
}

namespace {

// How far the painted numbers reach left of their right edge (width - 6).
int InkExtent(GtkWidget* margin) {
  Snapshot s(margin);
  int left = s.width;
  for (int y = 0; y < s.height; ++y) {
    for (int x = 0; x < s.width - 1; ++x) {
      if (s.At(x, y) != GetThemeColors().lineNumberBackground) left = std::min(left, x);
    }
  }
  return s.width - kMarginRightPadding - left;
}

}  // namespace

TEST_F(LineNumbersWidgetTest, NumbersGrowWithTheZoomButNotBelowSixPoints) {
  gSettings.fontSize = 11;
  ChromeWindow w(900, 500);
  // Three-digit numbers from the top. (Far below 6 points the margin, which follows the
  // editor's own digit width, gets narrower than the 6-point numbers and cuts them, so the
  // clamp is looked at one step below 6 points.)
  std::string text;
  for (int i = 0; i < 500; ++i) text += "x\n";
  w.SetText(text);
  w.Send(SCI_SETFIRSTVISIBLELINE, 387);
  auto extentAt = [&](int zoom) {
    w.Send(SCI_SETZOOM, zoom);
    Pump(w.window);
    return InkExtent(w.margin);
  };
  const int large = extentAt(8), normal = extentAt(0), seven = extentAt(-4), six = extentAt(-5);
  const int clamped = extentAt(-6);  // would be 5 points
  EXPECT_GT(large, normal);
  EXPECT_GT(normal, seven);
  EXPECT_GT(seven, six);
  EXPECT_GT(six, 8);
  EXPECT_EQ(clamped, six);
  EXPECT_LT(InkExtent(w.margin), w.Width(w.margin) - kMarginRightPadding);  // not cut
}

// With word wrap on, each row of a wrapped line gets its own number, in step with the status
// bar's "Ln". With NEBRO_SCREENSHOT_DIR set, the zoomed and wrapped view is saved for a look.
TEST_F(LineNumbersWidgetTest, WrappedRowsAreNumberedInStepWithTheStatusBar) {
  for (ThemeId id : {0u, 5u}) {
    gSettings.theme = id;
    ChromeWindow w(700, 420);
    gtk_window_move(GTK_WINDOW(w.window), 0, 0);
    std::string longLine;
    for (int i = 0; i < 30; ++i) longLine += "wrapped" + std::to_string(i) + " ";
    w.SetText("first\r\n" + longLine + "\r\nlast\r\n");
    w.Send(SCI_SETWRAPMODE, SC_WRAP_WORD);
    w.Send(SCI_SETZOOM, 3);
    w.Send(SCI_GOTOPOS, w.Send(SCI_POSITIONFROMLINE, 2));
    Pump(w.window);
    const long rows = static_cast<long>(w.Send(SCI_WRAPCOUNT, 1));
    ASSERT_GT(rows, 1);
    // "last" sits on display line rows + 1: its number and the status bar's line agree.
    UpdateStatusBar();
    EXPECT_EQ(StatusBarTexts()[0], "  Ln " + std::to_string(rows + 2) + ", Col 1");
    const int h = static_cast<int>(w.Send(SCI_TEXTHEIGHT, 0));
    Snapshot s(w.margin);
    // Every display row down to "last" and the empty line after it carries a number; the
    // caret's row is painted in the current-line colour.
    ASSERT_LE((rows + 3) * h, s.height);
    for (long r = 0; r < rows + 3; ++r) {
      bool ink = false, current = false;
      for (int y = static_cast<int>(r) * h; y < (r + 1) * h; ++y) {
        for (int x = 0; x < s.width - 1; ++x) {
          const Colour px = s.At(x, y);
          if (px == GetThemeColors().lineNumberBackground) continue;
          ink = true;
          current |= ColourDistance(px, GetThemeColors().currentLineNumberText) < 30;
        }
      }
      EXPECT_TRUE(ink) << "row " << r;
      EXPECT_EQ(current, r == rows + 1) << "row " << r;
    }
    if (const char* dir = std::getenv("NEBRO_SCREENSHOT_DIR")) {
      PaintAndWait(w.window);
      const std::string cmd = std::string("import -window root -crop 700x420+0+0 ") + dir + "/wrap-" +
                              std::to_string(id) + ".png";
      EXPECT_TRUE(g_spawn_command_line_sync(cmd.c_str(), nullptr, nullptr, nullptr, nullptr));
    }
  }
}
