// Themes on the real main window: a switch reaches the screen in every part of the window, the
// tokens of a language take the theme's colours, and the theme a window opens in.
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "appearance/current_theme.h"
#include "appearance/theme_gtk.h"
#include "appearance/toolbar.h"
#include "common/command_ids.h"
#include "document/document_ops_gtk.h"
#include "settings/settings.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::appearance;
using namespace nebro::testing;
using namespace nebro::sci;
using namespace nebro::app;
using namespace nebro::document;
using namespace nebro::settings;

namespace {

// The pixel at (x, y) of `widget` as the X server shows it; negative coordinates count from the
// far edge.
Colour OnScreen(GtkWidget* widget, int x, int y) {
  const Snapshot s(widget, true);
  return s.At(x < 0 ? x + s.width : x, y < 0 ? y + s.height : y);
}

using ThemeTest = MainWindowTest;

}  // namespace

TEST_F(ThemeTest, SwitchRepaintsEveryPartOfTheWindowOnScreen) {
  SetText("int main() {}\n");
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    SCOPED_TRACE(ThemeName(id));
    SetTheme(id, true);
    const ThemeColors& c = ThemeColorsFor(id);
    const std::vector<std::pair<GtkWidget*, Colour>> parts = {{gMain.toolbar, ToolbarChromeColours(c).background},
        {gMain.margin, c.lineNumberBackground}, {gMain.statusBar, c.marginBackground}, {gMain.editor, c.editorBackground}};
    // Nothing here asks for a paint: the switch repaints on its own.
    for (const auto& [widget, colour] : parts) {
      const int x = widget == gMain.editor ? 300 : 2, y = widget == gMain.statusBar ? -2 : 20;
      EXPECT_TRUE(WaitUntil([&] { return OnScreen(widget, x, y) == colour; }, 5)) << gtk_widget_get_name(widget) << " shows " << std::hex << OnScreen(widget, x, y);
    }
  }
  // GTK's own parts (scroll bars, file dialogs) take the light or dark look of the theme, and the
  // scroll bars its colours.
  std::string lines;
  for (int i = 0; i < 200; ++i) lines += "line\n";
  SetText(lines);
  GtkWidget* scrollbar = nullptr;
  gtk_container_forall(GTK_CONTAINER(gMain.editor), [](GtkWidget* child, gpointer found) {
    if (GTK_IS_SCROLLBAR(child) && gtk_orientable_get_orientation(GTK_ORIENTABLE(child)) == GTK_ORIENTATION_VERTICAL)
      *static_cast<GtkWidget**>(found) = child;
  }, &scrollbar);
  ASSERT_TRUE(scrollbar);
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    SCOPED_TRACE(ThemeName(id));
    SetTheme(id, true);
    gboolean dark = FALSE;
    g_object_get(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", &dark, nullptr);
    EXPECT_EQ(dark != FALSE, ThemeColorsFor(id).isDark);
    const Colour trough = ThemeColorsFor(id).editorBackground;
    EXPECT_TRUE(WaitUntil([&] { return gtk_widget_get_mapped(scrollbar) && OnScreen(scrollbar, -3, -3) == trough; }, 5))
        << "the trough shows " << std::hex << OnScreen(scrollbar, -3, -3);
  }

  // The choice is saved at once; a number past the last theme is ignored.
  AppSettings saved;
  ASSERT_TRUE(LoadSettingsFrom(GetSettingsFilePath(), saved));
  EXPECT_EQ(saved.theme, kThemeCount - 1);
  SetTheme(kThemeCount, true);
  EXPECT_EQ(CurrentThemeId(), kThemeCount - 1);
}

TEST_F(ThemeTest, TextKeepsItsDistanceFromTheEdges) {
  // A full block at the start of every line: its ink must not touch the editor's left edge,
  // with any language and with the line numbers on or off.
  for (const char* name : {"plain.txt", "code.cpp"}) {
    // The caret's line has a background of its own: the block sits on the line below it.
    ASSERT_TRUE(LoadDocument(WriteFile(name, "\n\xE2\x96\x88\xE2\x96\x88 block\n")));
    const int y = static_cast<int>(Send(SCI_TEXTHEIGHT, 0) * 3 / 2);
    for (int lineNumbers = 0; lineNumbers < 2; ++lineNumbers) {
      ASSERT_TRUE(DispatchCommand(kCmdLineNumbers));
      PaintAndWait(gMain.window);
      const Colour paper = GetThemeColors().editorBackground;
      EXPECT_TRUE(WaitUntil([&] { return OnScreen(gMain.editor, 2, y) == paper && OnScreen(gMain.editor, 6, y) != paper; }, 5))
          << name << ": at 2 px " << std::hex << OnScreen(gMain.editor, 2, y) << ", at 6 px " << OnScreen(gMain.editor, 6, y);
    }
  }
}

TEST_F(ThemeTest, TokensTakeTheColoursOfTheirLanguage) {
  const char* cpp = "int main() { void* p = nullptr; HWND w; return 0; } // done\n";
  ASSERT_TRUE(LoadDocument(WriteFile("a.tsx", cpp)));
  Send(SCI_COLOURISE, 0, -1);
  auto style = [&](const char* word) { return Send(SCI_GETSTYLEAT, std::strstr(cpp, word) - cpp); };
  auto fore = [&](const char* word) { return static_cast<Colour>(Send(SCI_STYLEGETFORE, style(word))); };
  for (ThemeId id : {0u, 1u}) {
    SCOPED_TRACE(ThemeName(id));
    SetTheme(id, true);
    const ThemeColors& c = ThemeColorsFor(id);
    EXPECT_EQ(fore("int"), c.syntax.keyword);
    EXPECT_EQ(fore("nullptr"), c.syntax.keyword);
    EXPECT_TRUE(Send(SCI_STYLEGETBOLD, style("int")));
    EXPECT_EQ(fore("HWND"), c.syntax.keyword);  // the second keyword list: italic
    EXPECT_TRUE(Send(SCI_STYLEGETITALIC, style("HWND")));
    EXPECT_EQ(fore("// done"), c.syntax.comment);
    EXPECT_EQ(fore("main"), c.editorText);
    EXPECT_EQ(static_cast<Colour>(Send(SCI_STYLEGETBACK, style("main"))), c.editorBackground);
  }
}

// A theme the user did not choose gives way, as the window opens, to the desktop's preference,
// which this test desktop does not state: light.
class UnchosenTheme : public MainWindowTest {
  void Configure() override {
    gSettings.theme = 5;
    gThemeChosenByUser = false;
  }
};

TEST_F(UnchosenTheme, GivesWayToTheDesktopPreferenceAsTheWindowOpens) {
  EXPECT_EQ(CurrentThemeId(), 1u);
  const ThemeColors& c = ThemeColorsFor(1);
  EXPECT_EQ(static_cast<Colour>(Send(SCI_STYLEGETBACK, STYLE_DEFAULT)), c.editorBackground);
  EXPECT_EQ(static_cast<Colour>(Send(SCI_STYLEGETFORE, STYLE_DEFAULT)), c.editorText);
  Snapshot margin(gMain.margin), status(gMain.statusBar);
  EXPECT_EQ(margin.At(1, margin.height - 2), c.lineNumberBackground);
  EXPECT_EQ(status.At(200, status.height - 2), c.marginBackground);
}

// A light theme kept from the last run gives GTK's own parts (scroll bars, file dialogs) the
// light look from the first paint.
class StoredAzure : public MainWindowTest {
  void Configure() override { gSettings.theme = 2; }
};

TEST_F(StoredAzure, StartsWithTheLightLookOfGtk) {
  gboolean dark = TRUE;
  g_object_get(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", &dark, nullptr);
  EXPECT_FALSE(dark);
}
