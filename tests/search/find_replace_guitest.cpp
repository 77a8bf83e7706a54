// The Find & Replace window on the real main window, driven the way a screen reader drives it:
// fields filled and buttons pressed over the accessibility bus, the editor's selection, text,
// undo and marks read back from the editor, and what is kept read back from the settings file.
#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>

#include "appearance/theme_gtk.h"
#include "appearance/themes.h"
#include "common/command_ids.h"
#include "gtk/widget_style_gtk.h"
#include "search/find_replace_window_gtk.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

constexpr const char* kWindow = "dialog|Nebro - Find & Replace";

class FindReplaceTest : public MainWindowTest {
 protected:
  // Runs the steps, which start by waiting for the window, and returns what they printed.
  std::string Steps(std::vector<std::string> steps) {
    steps.insert(steps.begin(), std::string("wait|") + kWindow);
    return RunSteps(steps);
  }
  std::string Status() { return Steps({"text|label|Status"}); }
  std::pair<long, long> Selection() { return {Send(sci::SCI_GETSELECTIONSTART), Send(sci::SCI_GETSELECTIONEND)}; }
  // The ranges an indicator covers, as (start, end) pairs.
  std::vector<std::pair<long, long>> Marked(int indicator) {
    std::vector<std::pair<long, long>> ranges;
    const long length = Send(sci::SCI_GETLENGTH);
    for (long pos = 0; pos < length;) {
      const long end = Send(sci::SCI_INDICATOREND, indicator, pos);
      if (Send(sci::SCI_INDICATORVALUEAT, indicator, pos)) ranges.push_back({pos, end});
      if (end <= pos) break;
      pos = end;
    }
    return ranges;
  }
  static GtkWidget* Control(int id) {
    return FindChildByName(search::FindReplaceWindow(), std::to_string(id).c_str());
  }
};

using Ranges = std::vector<std::pair<long, long>>;

TEST_F(FindReplaceTest, FindsWithWrapReplacesAllAsOneUndoStepAndKeepsItsChoices) {
  const std::string text = "alpha beta alpha gamma\nALPHA alphabet";
  SetText(text);
  // Ctrl+F at the main window opens the window with "Find what" focused.
  SendKey(app::gMain.window, GDK_KEY_f, GDK_CONTROL_MASK);
  ASSERT_TRUE(WaitUntil([] { return search::FindReplaceWindow() != nullptr; }));
  GtkWindow* window = GTK_WINDOW(search::FindReplaceWindow());
  Pump(GTK_WIDGET(window));
  EXPECT_EQ(gtk_window_get_focus(window), gtk_bin_get_child(GTK_BIN(Control(501))));

  // Mnemonics reach the fields; Tab goes on in reading order.
  SendKey(GTK_WIDGET(window), GDK_KEY_p, GDK_MOD1_MASK);
  EXPECT_EQ(gtk_window_get_focus(window), gtk_bin_get_child(GTK_BIN(Control(502))));
  for (const char* next : {"503", "504", "505", "506"}) {
    SendKey(GTK_WIDGET(window), GDK_KEY_Tab, GdkModifierType(0));
    EXPECT_STREQ(gtk_widget_get_name(gtk_window_get_focus(window)), next);
  }
  SendKey(GTK_WIDGET(window), GDK_KEY_f, GDK_MOD1_MASK);
  EXPECT_EQ(gtk_window_get_focus(window), gtk_bin_get_child(GTK_BIN(Control(501))));

  // Find Next from the caret at 0: the first of four matches (case ignored, "alphabet" counts).
  Steps({"set|text|Find what|alpha", "click|push button|Find Next"});
  EXPECT_EQ(Selection(), std::make_pair(0L, 5L));
  EXPECT_EQ(Status(), "4 matches found.\n");
  EXPECT_EQ(Marked(10), (Ranges{{0, 5}}));
  // Enter in the field is Find Next; Find Prev goes back.
  SendKey(GTK_WIDGET(window), GDK_KEY_Return, GdkModifierType(0));
  EXPECT_TRUE(WaitUntil([&] { return Selection() == std::make_pair(11L, 16L); }));  // the button's press shows first
  EXPECT_EQ(Marked(10), (Ranges{{11, 16}}));
  Steps({"click|push button|Find Prev"});
  EXPECT_EQ(Selection(), std::make_pair(0L, 5L));
  // From the first match backwards, and from the end forwards, the search wraps around.
  Steps({"click|push button|Find Prev"});
  EXPECT_EQ(Selection(), std::make_pair(29L, 34L));
  Send(sci::SCI_GOTOPOS, text.size());
  Steps({"click|push button|Find Next"});
  EXPECT_EQ(Selection(), std::make_pair(0L, 5L));
  EXPECT_EQ(Status(), "4 matches found.\n");
  // Without wrap-around the end is the end, and the selection stays where it was.
  Send(sci::SCI_GOTOPOS, text.size());
  Steps({"click|check box|Wrap around", "click|check box|Match case", "click|push button|Find Next"});
  EXPECT_EQ(Selection(), std::make_pair(static_cast<long>(text.size()), static_cast<long>(text.size())));
  EXPECT_EQ(Status(), "No more matches.\n");
  // The list follows typing: a sixth "alpha" is found at once.
  Type(" alpha");
  Send(sci::SCI_GOTOPOS, 0);
  Steps({"click|check box|Whole word", "click|push button|Find Prev"});
  EXPECT_EQ(Status(), "No more matches.\n");
  Send(sci::SCI_GOTOPOS, text.size());
  Steps({"click|push button|Find Next"});
  EXPECT_EQ(Selection(), std::make_pair(static_cast<long>(text.size()) + 1, static_cast<long>(text.size()) + 6));
  EXPECT_EQ(Status(), "3 matches found.\n");  // whole words in this case only

  // Replace All over the whole document (whole words, case kept as typed), in one undo step.
  Send(sci::SCI_SETSEL, 0, 0);
  const std::string before = Text();
  Steps({"set|text|Replace with|omega", "click|push button|Replace All"});
  EXPECT_EQ(Text(), "omega beta omega gamma\nALPHA alphabet omega");
  EXPECT_EQ(Status(), "3 occurrence(s) replaced.\n");
  EXPECT_EQ(Marked(9), (Ranges{{0, 5}, {11, 16}, {38, 43}}));
  EXPECT_EQ(Send(sci::SCI_INDICGETALPHA, 9), 120);
  Send(sci::SCI_UNDO);
  EXPECT_EQ(Text(), before);
  Send(sci::SCI_SETSEL, 0, 0);
  // "Replace in selection" without a selection runs on the whole document and clears itself.
  Steps({"click|check box|Match case", "click|check box|Whole word", "click|check box|Preserve case",
         "click|check box|Replace in selection", "click|push button|Replace All"});
  EXPECT_EQ(Text(), "omega beta omega gamma\nOMEGA omegabet omega");
  EXPECT_EQ(Status(), "5 occurrence(s) replaced.\n");
  EXPECT_FALSE(gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(Control(507))));
  Steps({"set|text|Find what|nothing", "click|push button|Replace All"});
  EXPECT_EQ(Status(), "No occurrences found.\n");

  // Escape closes; the histories (written at once) and the check boxes (written on closing)
  // are in the settings file.
  SendKey(GTK_WIDGET(window), GDK_KEY_Escape);
  EXPECT_TRUE(WaitUntil([] { return search::FindReplaceWindow() == nullptr; }));
  settings::AppSettings stored;
  ASSERT_TRUE(settings::LoadSettings(stored));
  EXPECT_EQ(settings::FieldText(stored.findHistory[0]), u"nothing");
  EXPECT_EQ(settings::FieldText(stored.findHistory[1]), u"alpha");
  EXPECT_EQ(settings::FieldText(stored.findHistory[2]), u"");
  EXPECT_EQ(settings::FieldText(stored.replaceHistory[0]), u"omega");
  EXPECT_FALSE(stored.findWrapAround);
  EXPECT_FALSE(stored.findMatchCase);
  EXPECT_FALSE(stored.findWholeWord);
  EXPECT_TRUE(stored.findPreserveCase);
  EXPECT_FALSE(stored.findInSelection);
  EXPECT_TRUE(stored.findColorResults);

  // Opened again, the window shows what was kept: the history in the list, the boxes as left.
  ASSERT_TRUE(app::DispatchCommand(kCmdFindReplace));
  const std::string states = Steps({"state|check box|Preserve case", "state|check box|Wrap around"});
  const std::string preserve = states.substr(0, states.find('\n')), wrap = states.substr(states.find('\n') + 1);
  EXPECT_NE((" " + preserve + " ").find(" checked "), std::string::npos) << preserve;
  EXPECT_EQ((" " + wrap).find(" checked "), std::string::npos) << wrap;
  GtkTreeModel* history = gtk_combo_box_get_model(GTK_COMBO_BOX(Control(501)));
  EXPECT_EQ(gtk_tree_model_iter_n_children(history, nullptr), 2);
}

TEST_F(FindReplaceTest, HighlightAllMarksEveryMatchAndClosingClearsTheSearchMarks) {
  SetText("one two\nthree two four two\nfive");
  // The selection on one line becomes the find text.
  Send(sci::SCI_SETSEL, 4, 7);
  ASSERT_TRUE(app::DispatchCommand(kCmdFindReplace));
  EXPECT_EQ(Steps({"text|text|Find what"}), "two\n");

  Steps({"click|push button|Highlight All"});
  EXPECT_EQ(Marked(8), (Ranges{{4, 7}, {14, 17}, {23, 26}}));
  EXPECT_EQ(Send(sci::SCI_INDICGETFORE, 8), Rgb(0xFF, 0xDC, 0x00));
  EXPECT_EQ(Send(sci::SCI_INDICGETALPHA, 8), 70);
  EXPECT_EQ(Send(sci::SCI_INDICGETSTYLE, 8), sci::INDIC_ROUNDBOX);
  EXPECT_EQ(Selection(), std::make_pair(23L, 26L));  // the last match
  EXPECT_EQ(Status(), "3 matches found.\n");
  // A result count is green; the labels take the theme's text colour, also after a theme change.
  EXPECT_EQ(TextColour(Control(516)), Rgb(0x28, 0xA0, 0x50));
  EXPECT_EQ(TextColour(Control(518)), appearance::ThemeColorsFor(0).dialogText);
  appearance::SetTheme(5, true);
  EXPECT_EQ(TextColour(Control(518)), appearance::ThemeColorsFor(5).dialogText);
  EXPECT_EQ(TextColour(Control(516)), Rgb(0x28, 0xA0, 0x50));

  // Find Next wraps to the first; Replace replaces the selected match and goes on to the next.
  Steps({"click|push button|Find Next"});
  EXPECT_EQ(Marked(10), (Ranges{{4, 7}}));
  EXPECT_EQ(Send(sci::SCI_INDICGETFORE, 10), Rgb(0x00, 0x78, 0xD7));
  Steps({"set|text|Replace with|2", "click|push button|Replace"});
  EXPECT_EQ(Text(), "one 2\nthree two four two\nfive");
  EXPECT_EQ(Marked(9), (Ranges{{4, 5}}));
  EXPECT_EQ(Selection(), std::make_pair(12L, 15L));
  EXPECT_EQ(Marked(10), (Ranges{{12, 15}}));
  EXPECT_EQ(Status(), "2 matches found.\n");
  // Typing moves the text under the current mark, which goes.
  Type("!");
  EXPECT_TRUE(WaitUntil([&] { return Marked(10).empty(); }));

  // A new document replaces the one searched: the window goes on with the new text.
  ASSERT_TRUE(LoadDocument(WriteFile("other.txt", "two and two")));
  Send(sci::SCI_GOTOPOS, 0);
  Steps({"click|push button|Find Next"});
  EXPECT_EQ(Selection(), std::make_pair(0L, 3L));
  Steps({"set|text|Find what|none", "click|push button|Highlight All"});
  EXPECT_EQ(Status(), "No matches found.\n");
  // Replace All in a loaded file is undone in one step like any other edit.
  Steps({"set|text|Find what|two", "click|push button|Replace All"});
  EXPECT_EQ(Text(), "2 and 2");
  Send(sci::SCI_UNDO);
  EXPECT_EQ(Text(), "two and two");
  Steps({"click|push button|Highlight All"});
  Steps({"click|push button|Replace"});  // replaces the last match: indicator 9
  EXPECT_EQ(Text(), "two and 2");
  Steps({"click|push button|Find Next"});
  ASSERT_FALSE(Marked(8).empty());
  ASSERT_FALSE(Marked(10).empty());

  // Close clears the Highlight All and current-match marks; the replacement's mark stays.
  Steps({"click|push button|Close", std::string("gone|") + kWindow});
  EXPECT_EQ(search::FindReplaceWindow(), nullptr);
  EXPECT_TRUE(Marked(8).empty());
  EXPECT_TRUE(Marked(10).empty());
  EXPECT_EQ(Marked(9), (Ranges{{8, 9}}));

  // Closing the main window closes the Find & Replace window with it.
  ASSERT_TRUE(app::DispatchCommand(kCmdFindReplace));
  ASSERT_NE(search::FindReplaceWindow(), nullptr);
  app::DestroyMainWindow();
  EXPECT_EQ(search::FindReplaceWindow(), nullptr);
}

}  // namespace
