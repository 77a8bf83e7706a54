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

}  // namespace
