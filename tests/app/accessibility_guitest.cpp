// The main window as a screen reader meets it: its frame by title, the text through the
// editor's accessible text, the title following the document.
#include <gtest/gtest.h>

#include <string>

#include "support/accessibility.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

class AccessibilityTest : public MainWindowTest {};

TEST_F(AccessibilityTest, TheWindowAndItsTextAreReachableByRoleAndName) {
  SetText("first line\nsecond line");
  const AccessibilityResult text = Accessible({"wait|frame|Nebro - Untitled *", "text|text|"});
  ASSERT_TRUE(text.ok) << text.err;
  EXPECT_EQ(text.out, "first line\nsecond line\n");

  // A large document switches the accessible text off (announcing it would stall the window);
  // the next ordinary one is read again.
  ASSERT_TRUE(LoadDocument(WriteFile("large.txt", std::string(9u << 20, 'x'))));
  ASSERT_TRUE(LoadDocument(WriteFile("notes.txt", "hello")));
  const AccessibilityResult renamed =
      Accessible({"wait|frame|Nebro - notes.txt", "gone|frame|Nebro - Untitled *", "text|text|"});
  EXPECT_TRUE(renamed.ok) << renamed.err;
  EXPECT_EQ(renamed.out, "hello\n");
}

TEST_F(AccessibilityTest, ToolbarButtonsArePushButtonsThatClick) {
  // Save is greyed on an unmodified document, New is not; typing enables Save.
  AccessibilityResult r = Accessible({"wait|tool bar|", "state|push button|Save", "state|push button|New"});
  ASSERT_TRUE(r.ok) << r.err;
  const std::string saveState = r.out.substr(0, r.out.find('\n'));
  const std::string newState = r.out.substr(r.out.find('\n') + 1);
  EXPECT_EQ(saveState.find("enabled"), std::string::npos) << saveState;
  EXPECT_NE(newState.find("enabled"), std::string::npos) << newState;
  Type("text");
  r = Accessible({"state|push button|Save"});
  EXPECT_NE(r.out.find("enabled"), std::string::npos) << r.out;

  // Clicking New through the accessibility bus runs the command: the unsaved text is asked about.
  boxesExpected = true;
  answer = kMbResultDontSaveOrNo;
  r = Accessible({"click|push button|New"});
  ASSERT_TRUE(r.ok) << r.err;
  EXPECT_TRUE(WaitUntil([&] { return !asked.empty() && Text().empty(); }, 10));
}

TEST_F(AccessibilityTest, StatusBarPartsAreLabelsWithTheirTexts) {
  SetText("one\ntwo");
  Send(sci::SCI_GOTOPOS, 6);
  const AccessibilityResult r = Accessible({"wait|status bar|", "wait|label|Ln 2, Col 3", "wait|label|UTF-8",
                                            "wait|label|LF", "wait|label|100%"});
  EXPECT_TRUE(r.ok) << r.err;
}

TEST_F(AccessibilityTest, TheLineNumbersSayWhichLinesShow) {
  std::string text;
  for (int i = 1; i <= 500; ++i) text += "line " + std::to_string(i) + "\n";
  SetText(text);
  const long onScreen = static_cast<long>(Send(sci::SCI_LINESONSCREEN));
  ASSERT_GT(onScreen, 5);
  EXPECT_TRUE(Accessible({"wait|panel|Line numbers", "wait|label|Lines 1 to " + std::to_string(onScreen) + " of 501"}).ok);
  Send(sci::SCI_SETFIRSTVISIBLELINE, 99);
  const AccessibilityResult r =
      Accessible({"wait|label|Lines 100 to " + std::to_string(99 + onScreen) + " of 501"});
  EXPECT_TRUE(r.ok) << r.err;
}

}  // namespace
