// The status bar of the real main window: its texts follow the caret, the selection, the zoom
// and the document through the window's own wiring, and it paints them in the theme's colours.
#include <string>

#include "appearance/current_theme.h"
#include "appearance/status_bar_gtk.h"
#include "appearance/theme_gtk.h"
#include "appearance/toolbar.h"
#include "gtk/object_ptr_gtk.h"
#include "common/command_ids.h"
#include "document/document_ops_gtk.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::appearance;
using namespace nebro::testing;
using namespace nebro::sci;
using namespace nebro::app;
using namespace nebro::document;

namespace {

class StatusBarTest : public MainWindowTest {
 protected:
  void ExpectShows(int part, const std::string& text) {
    EXPECT_TRUE(WaitUntil([&] { return StatusBarTexts(gMain.statusBar)[part] == text; }, 5))
        << "part " << part << " shows \"" << StatusBarTexts(gMain.statusBar)[part] << "\", not \"" << text << "\"";
  }
};

}  // namespace

TEST_F(StatusBarTest, TextsFollowTheCaretTheSelectionAndTheZoom) {
  EXPECT_EQ(StatusBarTexts(gMain.statusBar), (StatusTexts{"  Ln 1, Col 1", "", "  UTF-8", "  LF", "  100%"}));
  // Columns count characters, not bytes; a tab advances to the next tab stop.
  const std::string text = "first line\n\xC3\xA4\xC3\xB6\xC3\xBC xyz\n\tx\n";
  SetText(text);
  const sptr_t second = static_cast<sptr_t>(text.find('\xC3'));
  Send(SCI_GOTOPOS, second + 6);
  ExpectShows(0, "  Ln 2, Col 4");
  Send(SCI_GOTOPOS, static_cast<sptr_t>(text.find("\tx")) + 1);
  ExpectShows(0, "  Ln 3, Col 9");
  // Selected characters, in either direction; four-byte ones count one each.
  Send(SCI_SETSEL, second, second + 6);
  ExpectShows(1, "  Sel: 3");
  Send(SCI_SETSEL, second + 6, second);
  ExpectShows(0, "  Ln 2, Col 1");
  ExpectShows(1, "  Sel: 3");
  SetText("\xF0\x9F\x98\x80\xF0\x9F\x98\x80\n");
  Send(SCI_SETSEL, 0, 8);
  ExpectShows(1, "  Sel: 2");
  Send(SCI_GOTOPOS, 0);
  ExpectShows(1, "");
  Send(SCI_SETZOOM, 2);
  ExpectShows(4, "  120%");
  Send(SCI_SETZOOM, -5);
  ExpectShows(4, "  50%");

  // The line is counted on the screen: right with the caret's line scrolled far out of view.
  std::string lines;
  for (int i = 0; i < 300; ++i) lines += "line " + std::to_string(i + 1) + "\n";
  SetText(lines);
  Send(SCI_GOTOPOS, Send(SCI_POSITIONFROMLINE, 110) + 3);
  for (int top : {100, 200, 0}) {
    Send(SCI_SETFIRSTVISIBLELINE, top);
    Pump(gMain.window);
    ExpectShows(0, "  Ln 111, Col 4");
  }

  // Wrapping lays the lines out again after the command: the line follows the new layout.
  if (settings::gSettings.wordWrap) {
    ASSERT_TRUE(DispatchCommand(kCmdWordWrap));
  }
  SetText(std::string(600, 'w') + "\n" + std::string(600, 'x') + "\nthird " + std::string(300, 'y'));
  Send(SCI_GOTOPOS, Send(SCI_POSITIONFROMLINE, 2) + 204);
  ExpectShows(0, "  Ln 3, Col 205");
  ASSERT_TRUE(DispatchCommand(kCmdWordWrap));  // on: the two long lines take several rows
  EXPECT_TRUE(WaitUntil([&] { return StatusBarTexts(gMain.statusBar)[0] != "  Ln 3, Col 205"; }, 5));
  ASSERT_TRUE(DispatchCommand(kCmdWordWrap));
  ExpectShows(0, "  Ln 3, Col 205");
}

TEST_F(StatusBarTest, EncodingAndLineEndingsFollowTheDocument) {
  struct { const char* name; std::string bytes; const char* encoding; const char* ends; } files[] = {
      {"wide.txt", std::string("\xFE\xFF\0a\0\r\0\n\0b", 10), "  UTF-16 BE", "  CRLF"},
      {"old.txt", "\xEF\xBB\xBFone\rtwo\r", "  UTF-8 BOM", "  CR"}};
  for (const auto& f : files) {
    ASSERT_TRUE(LoadDocument(WriteFile(f.name, f.bytes)));
    ExpectShows(2, f.encoding);
    ExpectShows(3, f.ends);
    // A save writes UTF-8 (keeping a byte-order mark): the bar describes the file on disk.
    ASSERT_TRUE(SaveDocument(MainDocumentWindow()));
    ExpectShows(2, f.bytes[0] == '\xEF' ? "  UTF-8 BOM" : "  UTF-8");
  }
  ASSERT_TRUE(DispatchCommand(kCmdNew));
  ExpectShows(2, "  UTF-8");
  ExpectShows(3, "  LF");
}

TEST_F(StatusBarTest, PaintsItsPartsInTheThemeColours) {
  SetTheme(5, true);
  const ThemeColors& c = GetThemeColors();
  SetText("abc");
  Send(SCI_SETSEL, 0, 3);
  ExpectShows(1, "  Sel: 3");
  Snapshot s(gMain.statusBar);
  const auto edges = StatusBarPartEdges(gMain.statusBar);
  EXPECT_EQ(s.At(300, 0), c.border);
  EXPECT_EQ(s.At(300, s.height - 1), c.marginBackground);
  // Text ink in every part, and a separator in the border colour after each but the last.
  for (int i = 0, left = 0; i < kStatusPartCount; left = edges[i++]) {
    const int right = i == kStatusPartCount - 1 ? s.width - 16 : edges[i];
    ASSERT_TRUE(left < right && right < s.width) << i;
    if (i < kStatusPartCount - 1) {
      EXPECT_EQ(s.At(right, s.height / 2), c.border) << i;
    }
    int ink = 1 << 30;
    for (int x = left + 2; x < right - 2; ++x) {
      for (int y = 2; y < s.height - 1; ++y) ink = std::min(ink, ColourDistance(s.At(x, y), c.marginText));
    }
    EXPECT_LT(ink, 100) << "part " << i;
  }
}

TEST_F(StatusBarTest, ANarrowWindowKeepsTheZoomAndEveryButtonOnScreen) {
  gtk_window_resize(GTK_WINDOW(gMain.window), 400, 400);
  ASSERT_TRUE(WaitUntil([&] { return gtk_widget_get_allocated_width(gMain.statusBar) < 900; }, 5));
  PaintAndWait(gMain.window);
  const int width = gtk_widget_get_allocated_width(gMain.statusBar);
  // The zoom part starts where the fourth part ends and needs room for "  100%".
  const auto edges = StatusBarPartEdges(gMain.statusBar);
  GObjectPtr<PangoLayout> zoom(gtk_widget_create_pango_layout(gMain.statusBar, "  100%"));
  int zoomWidth = 0, h = 0;
  pango_layout_get_pixel_size(zoom.get(), &zoomWidth, &h);
  EXPECT_LE(edges[kStatusPartCount - 2] + zoomWidth, width - 16) << "status bar " << width << " px";
  const int toolbar = gtk_widget_get_allocated_width(gMain.toolbar);
  Toolbar buttons = MakeToolbar(gMain.commands);
  LayoutToolbar(buttons, toolbar);
  EXPECT_LE(buttons.buttons.back().rect.right, toolbar) << "toolbar " << toolbar << " px";
}

TEST_F(StatusBarTest, AVeryLongLineTurnsTheColoursOffAndSaysSo) {
  constexpr int kLexerNull = 1, kLexerMarkdown = 98;
  // Loaded with a line of 30,000 underscores: no Markdown colouring, and the bar says why.
  const std::string longLine(30000, '_');
  ASSERT_TRUE(LoadDocument(WriteFile("long.md", "# Title\n\n" + longLine + "\n")));
  EXPECT_EQ(Send(SCI_GETLEXER), kLexerNull);
  ExpectShows(0, "  Ln 1, Col 1   No colours: a line is longer than 20,000 characters");

  // An ordinary Markdown file is coloured; pasting such a line into it turns the colours off
  // before the next paint.
  ASSERT_TRUE(LoadDocument(WriteFile("short.md", "# Title\n\n*text*\n")));
  EXPECT_EQ(Send(SCI_GETLEXER), kLexerMarkdown);
  ExpectShows(0, "  Ln 1, Col 1");
  Type(longLine.c_str());
  EXPECT_TRUE(WaitUntil([&] { return Send(SCI_GETLEXER) == kLexerNull; }, 5));
  EXPECT_NE(StatusBarTexts(gMain.statusBar)[0].find("No colours: a line is longer"), std::string::npos);
}

TEST_F(StatusBarTest, ALineOfMegabytesIsNotWrappedAndTheLinesStillFollowTheScreen) {
  ASSERT_TRUE(settings::gSettings.wordWrap);
  const std::string notice = "   No colours or wrapping: a line is longer than 1 MB";
  std::string text = std::string(kUnwrappedLineLimit + 1, 'w') + "\n";
  for (int i = 2; i <= 300; ++i) text += "line " + std::to_string(i) + "\n";
  ASSERT_TRUE(LoadDocument(WriteFile("wide.txt", text)));
  EXPECT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_NONE);
  EXPECT_TRUE(settings::gSettings.wordWrap);  // the setting stays for the next document
  ExpectShows(0, "  Ln 1, Col 1" + notice);
  // The horizontal scroll bar reaches the end of the line.
  const sptr_t lineWidth = Send(SCI_POINTXFROMPOSITION, 0, Send(SCI_GETLINEENDPOSITION, 0)) - Send(SCI_POINTXFROMPOSITION, 0, 0);
  EXPECT_TRUE(WaitUntil([&] { return Send(SCI_GETSCROLLWIDTH) >= lineWidth; }, 5)) << Send(SCI_GETSCROLLWIDTH);
  Send(SCI_GOTOPOS, Send(SCI_POSITIONFROMLINE, 110) + 3);
  for (int top : {100, 0}) {
    Send(SCI_SETFIRSTVISIBLELINE, top);
    Pump(gMain.window);
    ExpectShows(0, "  Ln 111, Col 4" + notice);
  }

  // Typed (or pasted) into a wrapped document, such a line ends the wrapping before the caret is
  // scrolled to its end.
  ASSERT_TRUE(RunCommand(gMain.commands, kCmdNew));
  ASSERT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_WORD);
  Type("short\n");
  EXPECT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_WORD);
  Type(std::string(kUnwrappedLineLimit + 1, 'p').c_str());
  EXPECT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_NONE);
  ExpectShows(0, "  Ln 2, Col " + std::to_string(kUnwrappedLineLimit + 2) + notice);
}

TEST_F(StatusBarTest, AFilePastTheSizeLimitIsNeitherColouredNorWrapped) {
  ASSERT_TRUE(settings::gSettings.wordWrap);
  std::string huge;
  huge.reserve(kLargeDocumentLimit + 100);
  while (huge.size() <= kLargeDocumentLimit) huge += std::string(99, 'x') + "\n";
  ASSERT_TRUE(LoadDocument(WriteFile("huge.cpp", huge)));
  huge = std::string();
  EXPECT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_NONE);
  ExpectShows(0, "  Ln 1, Col 1   No colours or wrapping: the file is larger than 256 MB");
  // The next document is wrapped again, as the settings say.
  ASSERT_TRUE(RunCommand(gMain.commands, kCmdNew));
  EXPECT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_WORD);
  ExpectShows(0, "  Ln 1, Col 1");
}
