// The status bar against the real editor: the five texts after caret moves, selections, zoom,
// line-ending and encoding changes, and what the bar paints.
#include "appearance/current_theme.h"
#include "toolbar_harness.h"

using namespace nebro;
using namespace nebro::testing;
using namespace nebro::sci;

namespace {

class StatusBarWidgetTest : public ChromeTest {};

}  // namespace

TEST_F(StatusBarWidgetTest, CaretPositionAndSelection) {
  ChromeWindow w(900, 500);
  EXPECT_STREQ(gtk_widget_get_name(w.statusBar), "NebroStatusBar");
  UpdateStatusBar();
  StatusTexts t = StatusBarTexts();
  EXPECT_EQ(t[0], "  Ln 1, Col 1");
  EXPECT_EQ(t[1], "");
  EXPECT_EQ(t[2], "  UTF-8");
  EXPECT_EQ(t[3], "  CRLF");
  EXPECT_EQ(t[4], "  100%");

  // Columns count characters, not bytes: "äöü" is six bytes but three columns.
  const std::string text = "first line\r\näöü xyz\r\n\tx\r\n";
  w.SetText(text);
  const size_t second = text.find("äöü");
  w.Send(SCI_GOTOPOS, second + 6);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[0], "  Ln 2, Col 4");
  // A tab advances the column to the next tab stop.
  w.Send(SCI_GOTOPOS, text.find("\tx") + 1);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[0], "  Ln 3, Col 9");

  // Three two-byte characters selected: three, not six; in either direction.
  w.Send(SCI_SETSEL, second, second + 6);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[1], "  Sel: 3");
  w.Send(SCI_SETSEL, second + 6, second);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[1], "  Sel: 3");
  EXPECT_EQ(StatusBarTexts()[0], "  Ln 2, Col 1");
  // Four-byte characters and a line end (two characters) count the same way.
  w.SetText("\xF0\x9F\x98\x80\xF0\x9F\x98\x80\r\n");
  w.Send(SCI_SETSEL, 0, 10);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[1], "  Sel: 4");
  // Collapsing the selection empties the part.
  w.Send(SCI_GOTOPOS, 0);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[1], "");
}

TEST_F(StatusBarWidgetTest, LineCountsFromTheFirstVisibleLineOnScreen) {
  ChromeWindow w(900, 500);
  std::string text;
  for (int i = 0; i < 300; ++i) text += "line " + std::to_string(i + 1) + "\r\n";
  w.SetText(text);
  w.Send(SCI_GOTOPOS, w.Send(SCI_POSITIONFROMLINE, 110) + 3);
  w.Send(SCI_SETFIRSTVISIBLELINE, 100);
  Pump(w.window);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[0], "  Ln 111, Col 4");
  // Scrolled far below the caret: still counted from the screen, still right.
  w.Send(SCI_SETFIRSTVISIBLELINE, 200);
  Pump(w.window);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[0], "  Ln 111, Col 4");

  // With word wrap on, "Ln" counts display lines: the line after a wrapped one is numbered
  // after all of its rows.
  std::string longLine;
  for (int i = 0; i < 200; ++i) longLine += "word" + std::to_string(i) + " ";
  w.SetText(longLine + "\r\nnext\r\n");
  w.Send(SCI_SETWRAPMODE, SC_WRAP_WORD);
  w.Send(SCI_GOTOPOS, w.Send(SCI_POSITIONFROMLINE, 1));
  w.Send(SCI_SETFIRSTVISIBLELINE, 0);
  Pump(w.window);
  const long rows = static_cast<long>(w.Send(SCI_WRAPCOUNT, 0));
  ASSERT_GT(rows, 1);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[0], "  Ln " + std::to_string(rows + 1) + ", Col 1");
}

TEST_F(StatusBarWidgetTest, LabelsFollowTheEditorAndTheDocument) {
  ChromeWindow w(900, 500);
  w.Send(SCI_SETEOLMODE, SC_EOL_LF);
  gMain.doc.encoding = TextEncoding::Utf16Be;
  w.Send(SCI_SETZOOM, 2);
  UpdateStatusBar();
  StatusTexts t = StatusBarTexts();
  EXPECT_EQ(t[2], "  UTF-16 BE");
  EXPECT_EQ(t[3], "  LF");
  EXPECT_EQ(t[4], "  120%");

  w.Send(SCI_SETEOLMODE, SC_EOL_CR);
  gMain.doc.encoding = static_cast<TextEncoding>(9);
  w.Send(SCI_SETZOOM, -5);
  UpdateStatusBar();
  t = StatusBarTexts();
  EXPECT_EQ(t[2], "  UTF-8");
  EXPECT_EQ(t[3], "  CR");
  EXPECT_EQ(t[4], "  50%");

  gMain.doc.encoding = TextEncoding::Utf8Bom;
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts()[2], "  UTF-8 BOM");
}

TEST_F(StatusBarWidgetTest, NothingHappensWithoutTheBarOrTheEditor) {
  ChromeWindow w(900, 500);
  UpdateStatusBar();
  const StatusTexts before = StatusBarTexts();
  GtkWidget* editor = gMain.editor;
  gMain.editor = nullptr;
  w.Send(SCI_SETZOOM, 3);
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts(), before);
  gMain.editor = editor;
  gMain.statusBar = nullptr;
  UpdateStatusBar();
  EXPECT_EQ(StatusBarTexts(), StatusTexts{});
  gMain.statusBar = w.statusBar;
}

TEST_F(StatusBarWidgetTest, PaintsPartsWithSeparatorsInTheThemeColours) {
  for (ThemeId id : {0u, 5u}) {
    gSettings.theme = id;
    const ThemeColors& c = GetThemeColors();
    ChromeWindow w(900, 500);
    w.SetText("abc");
    w.Send(SCI_SETSEL, 0, 3);
    UpdateStatusBar();
    Snapshot s(w.statusBar);
    const auto edges = StatusBarPartEdges(w.statusBar);
    EXPECT_EQ(s.At(300, 0), c.border);                   // top line
    EXPECT_EQ(s.At(300, s.height - 1), c.marginBackground);
    for (int i = 0; i < kStatusPartCount - 1; ++i) {
      ASSERT_GT(edges[i], 0);
      ASSERT_LT(edges[i], s.width);
      EXPECT_EQ(s.At(edges[i], s.height / 2), c.border) << i;
      EXPECT_EQ(s.At(edges[i], 2), c.marginBackground) << i;  // separators stop 3 short of the top
      EXPECT_EQ(s.At(edges[i] + 1, s.height / 2), c.marginBackground) << i;
    }
    EXPECT_EQ(edges[4], -1);
    // Text ink in each of the five parts, near marginText.
    int left = 0;
    for (int i = 0; i < kStatusPartCount; ++i) {
      const int right = edges[i] < 0 ? s.width - 16 : edges[i];
      int best = 1 << 30;
      for (int x = left + 2; x < right - 2; ++x) {
        for (int y = 2; y < s.height - 1; ++y) best = std::min(best, ColourDistance(s.At(x, y), c.marginText));
      }
      EXPECT_LT(best, 100) << "part " << i;
      left = right;
    }
  }
}
