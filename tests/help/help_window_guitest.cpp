// The help window as a user meets it on the real main window, under a window manager: opened
// from the toolbar, topics chosen by name, the shortcut list made from the window's own command
// table, one window brought back to the front, Escape, the size and topic kept, the theme
// followed while it is open, and the window closing with the main window.
#include <gtest/gtest.h>

#include <string>

#include "app/main_window_gtk.h"
#include "appearance/current_theme.h"
#include "common/command_ids.h"
#include "common/command_table.h"
#include "gtk/widget_style_gtk.h"
#include "settings/settings.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"
#include "support/window_manager.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

class HelpWindowTest : public MainWindowTest {
 protected:
  void Configure() override { ASSERT_TRUE(StartWindowManager()); }

  static int OpenHelpWindows() {
    int count = 0;
    GList* top = gtk_window_list_toplevels();
    for (GList* l = top; l; l = l->next) {
      if (std::string("NebroHelp") == gtk_widget_get_name(GTK_WIDGET(l->data))) ++count;
    }
    g_list_free(top);
    return count;
  }

  // The colour the help text is painted on, as it paints itself now.
  static Colour TextBackground(GtkWidget* help) {
    GtkWidget* view = FindChildByName(help, "NebroHelpText");
    EXPECT_NE(view, nullptr);
    if (!view) return 0;
    return Snapshot(view).At(4, 4);
  }
};

TEST_F(HelpWindowTest, OpensFromTheToolbarListsEveryKeyAndKeepsItsPlace) {
  const std::string out = RunSteps({"click|push button|Help", "wait|frame|Nebro - Help", "wait|list box|Help topics",
                                     "select|list item|Keyboard shortcuts", "state|list item|Keyboard shortcuts",
                                     "text|text|Help text"});
  EXPECT_NE(out.substr(0, out.find('\n')).find("selected"), std::string::npos) << out;
  // Every key the main window binds, with its command, as the table holds them.
  const std::vector<KeyListEntry> keys = CommandKeyList(app::gMain.commands);
  ASSERT_GT(keys.size(), 10u);
  for (const KeyListEntry& entry : keys) {
    EXPECT_NE(out.find("\n" + entry.keys + "\t" + entry.label), std::string::npos) << entry.keys << " " << entry.label;
  }
  EXPECT_NE(out.find("F1\tHelp\n"), std::string::npos);

  GtkWidget* help = FindWindow("NebroHelp");
  ASSERT_NE(help, nullptr);
  EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(help)), GTK_WINDOW(app::gMain.window));

  // F1 in the main window brings the same window back to the front; no second one opens.
  gtk_window_present(GTK_WINDOW(app::gMain.window));
  ASSERT_TRUE(WaitUntil([] { return gtk_window_is_active(GTK_WINDOW(app::gMain.window)); }, 10));
  SendKey(app::gMain.window, GDK_KEY_F1, 0, gdk_x11_get_server_time(gtk_widget_get_window(app::gMain.window)));
  EXPECT_TRUE(WaitUntil([&] { return gtk_window_is_active(GTK_WINDOW(help)); }, 10));
  EXPECT_EQ(OpenHelpWindows(), 1);
  EXPECT_EQ(FindWindow("NebroHelp"), help);

  // A theme chosen while the window is open repaints it.
  const Colour dark = appearance::ThemeColorsFor(0).toolbarBackground;
  const Colour sepia = appearance::ThemeColorsFor(5).toolbarBackground;
  EXPECT_LT(ColourDistance(TextBackground(help), dark), 6);
  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdThemeFirst + 5));
  Pump(help);
  EXPECT_LT(ColourDistance(TextBackground(help), sepia), 6);

  // Escape closes it; its size and topic are stored, in the record and in the file.
  gtk_window_resize(GTK_WINDOW(help), 700, 500);
  ASSERT_TRUE(WaitUntil([&] { return gtk_widget_get_allocated_width(help) == 700; }, 10))
      << gtk_widget_get_allocated_width(help) << "x" << gtk_widget_get_allocated_height(help);
  SendKey(help, GDK_KEY_Escape);
  RunSteps({"gone|frame|Nebro - Help"});
  EXPECT_EQ(OpenHelpWindows(), 0);
  EXPECT_EQ(settings::gSettings.helpWidth, 700);
  EXPECT_EQ(settings::gSettings.helpHeight, 500);
  EXPECT_EQ(settings::gSettings.helpTopic, 1);
  settings::AppSettings stored{};
  ASSERT_TRUE(settings::LoadSettings(stored));
  EXPECT_EQ(stored.helpWidth, 700);
  EXPECT_EQ(stored.helpTopic, 1);

  // The next time it opens as it was left.
  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdHelp));
  const std::string state = RunSteps({"wait|frame|Nebro - Help", "state|list item|Keyboard shortcuts"});
  EXPECT_NE(state.find("selected"), std::string::npos) << state;
  help = FindWindow("NebroHelp");
  ASSERT_NE(help, nullptr);
  int width = 0, height = 0;
  gtk_window_get_default_size(GTK_WINDOW(help), &width, &height);
  EXPECT_EQ(width, 700);
  EXPECT_EQ(height, 500);
  EXPECT_LT(ColourDistance(TextBackground(help), sepia), 6);
}

TEST_F(HelpWindowTest, StoredNonsenseReadsAsTheFirstTopicAndClosingTheEditorClosesIt) {
  settings::gSettings.helpTopic = 42;
  settings::gSettings.helpWidth = 100;
  settings::gSettings.helpHeight = 50;
  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdHelp));
  const std::string out = RunSteps({"wait|frame|Nebro - Help", "state|list item|Getting started",
                                     "select|list item|About Nebro", "text|text|Help text"});
  EXPECT_NE(out.substr(0, out.find('\n')).find("selected"), std::string::npos) << out;
  EXPECT_NE(out.find("Nebro " NEBRO_PROJECT_VERSION "\n"), std::string::npos) << out;
  GtkWidget* help = FindWindow("NebroHelp");
  ASSERT_NE(help, nullptr);
  int width = 0, height = 0;
  gtk_window_get_size(GTK_WINDOW(help), &width, &height);
  EXPECT_GE(width, 560);
  EXPECT_GE(height, 380);

  // Closing the editor closes the help window, which keeps its topic.
  app::DestroyMainWindow();
  EXPECT_EQ(OpenHelpWindows(), 0);
  settings::AppSettings stored{};
  ASSERT_TRUE(settings::LoadSettings(stored));
  EXPECT_EQ(stored.helpTopic, 9);
  EXPECT_GE(stored.helpWidth, 560);
}

}  // namespace
