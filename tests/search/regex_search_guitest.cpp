// Regex Search as a user meets it on the real main window, reached by role and name over the
// accessibility bus: Find / Next, Find Prev, Replace, Replace All and Undo with their status lines
// and log entries; Find All over a long document into the result list, continued with Find More,
// the results file and Open Results; Cancel of a long run, a new search replacing a running one,
// and closing the window or the editor while a search runs.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "app/main_window_gtk.h"
#include "common/command_ids.h"
#include "common/command_table.h"
#include "common/utf.h"
#include "gtk/widget_style_gtk.h"
#include "search/regex_search_run_gtk.h"
#include "search/regex_window_rules.h"
#include "settings/data_folder.h"
#include "settings/settings.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::testing;
namespace fs = std::filesystem;

namespace {

class RegexSearchTest : public MainWindowTest {
 protected:
  // Alt with a key, delivered through the toolkit as the window manager would hand it over.
  static void PressAlt(GtkWidget* window, guint keyval) {
    GdkEvent* event = gdk_event_new(GDK_KEY_PRESS);
    event->key.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(window)));
    event->key.keyval = keyval;
    event->key.state = GDK_MOD1_MASK;
    event->key.send_event = TRUE;
    GdkKeymapKey* keys = nullptr;
    gint count = 0;
    if (gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(gdk_display_get_default()), keyval, &keys,
                                          &count) && count > 0) {
      event->key.hardware_keycode = static_cast<guint16>(keys[0].keycode);
    }
    g_free(keys);
    gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(gdk_display_get_default())));
    gtk_main_do_event(event);
    gdk_event_free(event);
  }
  static GtkWidget* Control(int id) {
    GtkWidget* window = FindWindow(search::kRegexWindowName);
    return window ? FindChildByName(window, std::to_string(id).c_str()) : nullptr;
  }
  static GtkTreeModel* ListModel() { return gtk_tree_view_get_model(GTK_TREE_VIEW(Control(search::kRegexResultList))); }
  static int Rows() { return gtk_tree_model_iter_n_children(ListModel(), nullptr); }
  static std::string RowText(int row) {
    GtkTreeIter iter;
    if (!gtk_tree_model_iter_nth_child(ListModel(), &iter, nullptr, row)) return "<no row>";
    gchar* text = nullptr;
    gtk_tree_model_get(ListModel(), &iter, 0, &text, -1);
    std::string out = text ? text : "";
    g_free(text);
    return out;
  }
  // The results files in the data folder, the one whose text begins with `start` first (their
  // names do not sort by time: the milliseconds are not padded).
  static std::vector<std::string> ResultsFiles(const std::string& start) {
    std::vector<std::string> out;
    for (const auto& e : fs::directory_iterator(settings::GetSettingsFolder())) {
      const std::string name = e.path().filename().string();
      if (name.rfind("regex_", 0) != 0) continue;
      if (ReadFile(e.path().string()).rfind(start, 0) == 0) {
        out.insert(out.begin(), e.path().string());
      } else {
        out.push_back(e.path().string());
      }
    }
    return out;
  }
  static int Threads() {
    int n = 0;
    for ([[maybe_unused]] const auto& e : fs::directory_iterator("/proc/self/task")) ++n;
    return n;
  }
  void Open() {
    ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdRegexSearch));
    AccessibilityResult r = Accessible({"wait|frame|Regex Search - Nebro", "wait|label|Ready"});
    ASSERT_TRUE(r.ok) << r.err;
  }
  void Steps(const std::vector<std::string>& steps) {
    AccessibilityResult r = Accessible(steps);
    ASSERT_TRUE(r.ok) << r.err << "\n" << r.out;
  }
};

TEST_F(RegexSearchTest, FindReplaceReplaceAllUndoAndTheSessionLog) {
  SetText("alpha beta\ngamma beta\nBeta delta\n");
  Open();
  // Ctrl+Alt+H again brings the same window forward.
  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdRegexSearch));
  int windows = 0;
  GList* top = gtk_window_list_toplevels();
  for (GList* l = top; l; l = l->next) windows += std::string(gtk_widget_get_name(GTK_WIDGET(l->data))) == search::kRegexWindowName;
  g_list_free(top);
  EXPECT_EQ(windows, 1);

  // The pattern field has the keyboard; Alt and a label's underlined letter reach its control.
  AccessibilityResult focus = Accessible({"focus"});
  EXPECT_EQ(focus.out, "text|Pattern:\n") << focus.err;
  // (A button activated from the keyboard shows itself pressed for a moment before it acts.)
  auto wholeWord = [] { return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(Control(search::kRegexWholeWordCheck))); };
  PressAlt(FindWindow(search::kRegexWindowName), GDK_KEY_w);
  EXPECT_TRUE(WaitUntil(wholeWord));
  PressAlt(FindWindow(search::kRegexWindowName), GDK_KEY_w);
  EXPECT_TRUE(WaitUntil([&] { return !wholeWord(); }));
  PressAlt(FindWindow(search::kRegexWindowName), GDK_KEY_e);
  focus = Accessible({"focus"});
  EXPECT_EQ(focus.out, "text|Replace:\n") << focus.err;

  Steps({"click|push button|Find / Next", "wait|label|Please enter a pattern.",
         "set|text|Pattern:|b(e)ta", "click|push button|Find / Next", "wait|label|Found: \"beta\" at position 6"});
  EXPECT_EQ(Send(sci::SCI_GETSELECTIONSTART), 6);
  EXPECT_EQ(Send(sci::SCI_GETSELECTIONEND), 10);
  Steps({"click|push button|Find / Next", "wait|label|Found: \"beta\" at position 17",
         "click|push button|Find Prev", "wait|label|Found: \"beta\" at position 6",
         "set|text|Replace:|<$1$&>", "click|push button|Replace", "wait|label|Replaced: \"<ebeta>\""});
  EXPECT_EQ(Text(), "alpha <ebeta>\ngamma beta\nBeta delta\n");
  EXPECT_EQ(Send(sci::SCI_GETSELECTIONSTART), 6);
  EXPECT_EQ(Send(sci::SCI_GETSELECTIONEND), 13);
  // The selection no longer matches the whole pattern.
  Steps({"click|push button|Replace", "wait|label|Selection does not match pattern."});
  EXPECT_EQ(Text(), "alpha <ebeta>\ngamma beta\nBeta delta\n");

  // Replace All ignores case unless told; one undo step takes it back.
  Steps({"set|text|Replace:|[$0]", "click|push button|Replace All", "wait|label|Replaced 3 occurrence(s)."});
  EXPECT_EQ(Text(), "alpha <e[beta]>\ngamma [beta]\n[Beta] delta\n");
  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdUndo));
  EXPECT_EQ(Text(), "alpha <ebeta>\ngamma beta\nBeta delta\n");
  Steps({"click|check box|Match case", "set|text|Pattern:|Beta", "set|text|Replace:|omega",
         "click|check box|Preserve case", "click|push button|Replace All", "wait|label|Replaced 1 occurrence(s).",
         "set|text|Pattern:|zeta", "click|push button|Replace All", "wait|label|No matches found to replace."});
  EXPECT_EQ(Text(), "alpha <ebeta>\ngamma beta\nOmega delta\n");

  // Bad patterns end in the status line; a pattern matching empty strings ends.
  Steps({"set|text|Pattern:|(", "click|push button|Find / Next", "wait|label|Invalid regex pattern.",
         "set|text|Pattern:|zeta", "click|push button|Find Prev", "wait|label|No match found."});
  SetText(std::string(40, 'a') + "b");
  Steps({"set|text|Pattern:|(a+)+$", "click|push button|Find / Next",
         "wait|label|" + Utf16ToUtf8(search::kRegexTooComplexText), "set|text|Pattern:|x*",
         "click|push button|Find All", "wait|label|Found 3000 matches."});
  EXPECT_TRUE(WaitUntil([] { return Rows() == 3000; })) << Rows();

  // The log of this session, in the data folder; the histories keep the patterns, newest first.
  const std::vector<std::string> files =
      ResultsFiles("Regex Session Log\nPattern: b(e)ta\n========================================\n\n[FIND] ");
  ASSERT_EQ(files.size(), 2u);  // the dialog's session log, then the Find All file
  std::string log = ReadFile(files[0]);
  EXPECT_EQ(log.rfind("Regex Session Log\nPattern: b(e)ta\n========================================\n\n[FIND] ", 0), 0u) << log;
  EXPECT_EQ(ReadFile(files[1]).rfind("Regex Session Log\nPattern:    x*\n", 0), 0u);
  for (const char* entry : {" \xE2\x80\x94 Ln 1, Col 6\n  beta\n\n[FIND] ", " \xE2\x80\x94 Ln 2, Col 17\n  beta\n\n[FIND PREV] ",
                            " \xE2\x80\x94 Replaced 1 match\n  Before: beta\n  After:  <ebeta>\n\n",
                            " \xE2\x80\x94 Replaced 3 match(es)\n  Pattern: b(e)ta  ->  [$0]\n\n",
                            " \xE2\x80\x94 Replaced 1 match(es)\n  Pattern: Beta  ->  omega\n\n"}) {
    EXPECT_NE(log.find(entry), std::string::npos) << entry << "\n" << log;
  }
  EXPECT_EQ(log.find("zeta"), std::string::npos);  // nothing replaced, nothing logged
  EXPECT_EQ(settings::FieldText(settings::gSettings.regexPatternHistory[0]), u"x*");
  EXPECT_EQ(settings::FieldText(settings::gSettings.regexPatternHistory[1]), u"(a+)+$");
  EXPECT_EQ(settings::FieldText(settings::gSettings.regexReplaceHistory[0]), u"omega");
  EXPECT_TRUE(settings::gSettings.regexMatchCase);

  // Close ends the window; its options and histories stay for the next run of the program.
  Steps({"click|push button|Close", "gone|frame|Regex Search - Nebro"});
  settings::AppSettings saved;
  ASSERT_TRUE(settings::LoadSettings(saved));
  EXPECT_TRUE(saved.regexMatchCase);
  EXPECT_TRUE(saved.regexPreserveCase);
  EXPECT_EQ(settings::FieldText(saved.regexPatternHistory[0]), u"x*");
}

TEST_F(RegexSearchTest, FindAllFillsTheListFindMoreContinuesAndOpenResults) {
  std::string text;
  for (int i = 1; i <= 50000; ++i) text += "line " + std::to_string(i) + " word\n";
  SetText(text);
  Open();
  Steps({"set|text|Pattern:|word", "set|text|Batch size:|20000", "set|text|Max matches (0 = unlimited):|0",
         "click|push button|Find All", "wait|label|Found 20000 matches.", "wait|push button|Find More"});
  ASSERT_TRUE(WaitUntil([] { return Rows() == 20000; })) << Rows();
  EXPECT_EQ(RowText(0), "Ln 1  Col 7  word");
  Steps({"click|push button|Find More", "wait|label|Found 40000 matches.", "click|push button|Find More",
         "wait|label|Search complete. Found 50000 matches.", "wait|push button|Find All"});
  ASSERT_TRUE(WaitUntil([] { return Rows() == 50000; })) << Rows();
  EXPECT_EQ(gtk_progress_bar_get_fraction(GTK_PROGRESS_BAR(Control(search::kRegexProgressBar))), 1.0);
  const size_t lastStart = text.size() - 5;  // "word\n" of line 50000
  EXPECT_EQ(RowText(49999), "Ln 50000  Col " + std::to_string(lastStart) + "  word");

  // Choosing an entry selects its match in the editor.
  GtkTreePath* path = gtk_tree_path_new_from_indices(49999, -1);
  gtk_tree_view_set_cursor(GTK_TREE_VIEW(Control(search::kRegexResultList)), path, nullptr, FALSE);
  gtk_tree_path_free(path);
  EXPECT_EQ(Send(sci::SCI_GETSELECTIONSTART), static_cast<sci::sptr_t>(lastStart));
  EXPECT_EQ(Send(sci::SCI_GETSELECTIONEND), static_cast<sci::sptr_t>(lastStart + 4));

  // Other output formats, for the next search.
  Steps({"click|check box|Include line numbers"});
  gtk_combo_box_set_active(GTK_COMBO_BOX(Control(search::kRegexOutputFormatList)), 2);
  Steps({"set|text|Pattern:|\\d+ w", "set|text|Max matches (0 = unlimited):|5", "click|push button|Apply",
         "wait|label|Settings saved.", "click|push button|Find All", "wait|label|Found 5 matches."});
  ASSERT_TRUE(WaitUntil([] { return Rows() == 5; })) << Rows();
  EXPECT_EQ(RowText(4), "line 5 word");
  EXPECT_EQ(settings::gSettings.regexMaxMatches, 5u);

  // The results file of the first session: header, one line per match, footer.
  const std::vector<std::string> files = ResultsFiles("Regex Session Log\nPattern:    word\n");
  ASSERT_EQ(files.size(), 2u);
  const std::string results = ReadFile(files[0]);
  EXPECT_EQ(results.rfind("Regex Session Log\nPattern:    word\nMatch case: No  |  Whole word: No  |  Started: ", 0), 0u);
  EXPECT_NE(results.find("\n========================================\n\n[1] Ln 1  Pos 7-11: word\n[1] Ln 2  Pos 19-23: word\n"),
            std::string::npos);
  EXPECT_NE(results.find("[3] Ln 50000  Pos " + std::to_string(lastStart) + "-" + std::to_string(lastStart + 4) +
                         ": word\n\n[FIND ALL] "),
            std::string::npos);
  EXPECT_TRUE(results.ends_with(" \xE2\x80\x94 Search complete\n\n========================================\n"
                                "Total matches found: 50000\n"));
  size_t matchLines = 0;
  for (size_t at = 0; (at = results.find("\n[", at)) != std::string::npos; ++at) ++matchLines;
  EXPECT_EQ(matchLines, 50000u + 1);  // and the footer's "[FIND ALL]"

  // Open Results hands the newest file to the desktop's application for text.
  const std::string dataHome = g_get_user_data_dir();
  const std::string configHome = g_get_user_config_dir();
  if (dataHome.rfind("/tmp/", 0) != 0 || configHome.rfind("/tmp/", 0) != 0) {
    GTEST_SKIP() << "Open Results is only tried in the test environment's own folders";
  }
  const std::string marker = folder + "/opened.txt";
  const std::string script = WriteFile("open.sh", "#!/bin/sh\ncp \"$1\" '" + marker + "'\n");
  chmod(script.c_str(), 0755);
  fs::create_directories(dataHome + "/applications");
  fs::create_directories(configHome);
  test::WriteBytes(dataHome + "/applications/nebro-test-reader.desktop",
                   "[Desktop Entry]\nType=Application\nName=Reader\nMimeType=text/plain;\nExec=" + script + " %f\n");
  test::WriteBytes(configHome + "/mimeapps.list", "[Default Applications]\ntext/plain=nebro-test-reader.desktop\n");
  Steps({"click|push button|Open Results", "wait|label|Results file opened."});
  EXPECT_TRUE(WaitUntil([&] { return fs::exists(marker) && ReadFile(marker) == ReadFile(files[1]); }));
  fs::remove(dataHome + "/applications/nebro-test-reader.desktop");
  fs::remove(configHome + "/mimeapps.list");
}

TEST_F(RegexSearchTest, CancelANewSearchAndClosingWhileASearchRuns) {
  // No match, and minutes of work in one long line after many cheap short ones: Cancel must be
  // seen in the costly line although the search went fast for a long while before it.
  std::string text;
  for (int i = 0; i < 2000000; ++i) text += "x\n";
  SetText(text + std::string(3000000, 'a') + "\n");
  // A run that does not stop within the 2 s a new search or closing waits is left to end by itself
  // once it sees the cancel: the thread count is waited for, not read at once. (Threads of the
  // process that ended meanwhile, such as a memory trim after the text was set, may lower it.)
  const int threadsBefore = Threads();
  Open();
  // The status line's "Searching..." may already be overwritten by the run's progress when a
  // screen reader looks; the run itself is what the test waits for.
  Steps({"set|text|Pattern:|\\w{1,20000}\\d", "click|push button|Find All"});
  ASSERT_TRUE(WaitUntil([] { return search::RegexRunActive(); }));
  Steps({"click|push button|Cancel"});
  ASSERT_TRUE(WaitUntil([] { return !search::RegexRunActive(); }));
  EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(Control(search::kRegexStatusText))), "Found 0 matches.");
  EXPECT_TRUE(WaitUntil([&] { return Threads() <= threadsBefore; })) << Threads() << " threads";
  Steps({"state|push button|Cancel"});
  EXPECT_FALSE(gtk_widget_get_sensitive(Control(search::kRegexCancelButton)));

  // A second Find All stops the first, then runs by itself.
  Steps({"click|push button|Find All"});
  ASSERT_TRUE(WaitUntil([] { return search::RegexRunActive(); }));
  Steps({"click|push button|Find All"});
  // Cancel is greyed between runs; it lights up once the second run has started.
  ASSERT_TRUE(WaitUntil([] { return gtk_widget_get_sensitive(Control(search::kRegexCancelButton)); }));
  Steps({"click|push button|Cancel"});
  ASSERT_TRUE(WaitUntil([] { return !search::RegexRunActive(); }));
  EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(Control(search::kRegexStatusText))), "Found 0 matches.");
  EXPECT_TRUE(WaitUntil([&] { return Threads() <= threadsBefore; })) << Threads() << " threads";

  // Closing the window while a search runs stops it.
  Steps({"click|push button|Find All"});
  EXPECT_TRUE(WaitUntil([] { return search::RegexRunActive(); }));
  Steps({"click|push button|Close", "gone|frame|Regex Search - Nebro"});
  EXPECT_FALSE(search::RegexRunActive());
  EXPECT_TRUE(WaitUntil([&] { return Threads() <= threadsBefore; })) << Threads() << " threads";

  // And so does closing the editor.
  Open();
  Steps({"click|push button|Find All"});
  EXPECT_TRUE(WaitUntil([] { return search::RegexRunActive(); }));
  app::ResetMainWindowState();
  Pump();
  EXPECT_FALSE(search::RegexRunActive());
  EXPECT_EQ(FindWindow(search::kRegexWindowName), nullptr);
  EXPECT_TRUE(WaitUntil([&] { return Threads() <= threadsBefore; })) << Threads() << " threads";
}

}  // namespace
