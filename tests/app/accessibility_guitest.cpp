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
  EXPECT_EQ(RunSteps({"wait|frame|Nebro - Untitled *", "text|text|"}), "first line\nsecond line\n");

  // A large document switches the accessible text off (announcing it would stall the window);
  // the next ordinary one is read again.
  ASSERT_TRUE(LoadDocument(WriteFile("large.txt", std::string(9u << 20, 'x'))));
  ASSERT_TRUE(LoadDocument(WriteFile("notes.txt", "hello")));
  EXPECT_EQ(RunSteps({"wait|frame|Nebro - notes.txt", "gone|frame|Nebro - Untitled *", "text|text|"}), "hello\n");
}

TEST_F(AccessibilityTest, ToolbarButtonsArePushButtonsThatClick) {
  // Save is greyed on an unmodified document, New is not; typing enables Save.
  const std::string states = RunSteps({"wait|tool bar|", "state|push button|Save", "state|push button|New"});
  const std::string saveState = states.substr(0, states.find('\n')), newState = states.substr(states.find('\n') + 1);
  EXPECT_EQ(saveState.find("enabled"), std::string::npos) << saveState;
  EXPECT_NE(newState.find("enabled"), std::string::npos) << newState;
  Type("text");
  const std::string typed = RunSteps({"state|push button|Save"});
  EXPECT_NE(typed.find("enabled"), std::string::npos) << typed;

  // Clicking New through the accessibility bus runs the command: the unsaved text is asked about.
  boxesExpected = true;
  answer = kMbResultDontSaveOrNo;
  RunSteps({"click|push button|New"});
  EXPECT_TRUE(WaitUntil([&] { return !asked.empty() && Text().empty(); }, 10));
}

TEST_F(AccessibilityTest, StatusBarPartsAreLabelsWithTheirTexts) {
  SetText("one\ntwo");
  Send(sci::SCI_GOTOPOS, 6);
  RunSteps({"wait|status bar|", "wait|label|Ln 2, Col 3", "wait|label|UTF-8", "wait|label|LF", "wait|label|100%"});
}

TEST_F(AccessibilityTest, TheLineNumbersSayWhichLinesShow) {
  std::string text;
  for (int i = 1; i <= 500; ++i) text += "line " + std::to_string(i) + "\n";
  SetText(text);
  const long onScreen = static_cast<long>(Send(sci::SCI_LINESONSCREEN));
  ASSERT_GT(onScreen, 5);
  RunSteps({"wait|panel|Line numbers", "wait|label|Lines 1 to " + std::to_string(onScreen) + " of 501"});
  Send(sci::SCI_SETFIRSTVISIBLELINE, 99);
  RunSteps({"wait|label|Lines 100 to " + std::to_string(99 + onScreen) + " of 501"});
}

}  // namespace
