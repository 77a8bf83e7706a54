// The main window as a screen reader meets it: its frame by title, the text through the
// editor's accessible text, the title following the document.
#include <gtest/gtest.h>

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

  ASSERT_TRUE(LoadDocument(WriteFile("notes.txt", "hello")));
  const AccessibilityResult renamed = Accessible({"wait|frame|Nebro - notes.txt", "gone|frame|Nebro - Untitled *"});
  EXPECT_TRUE(renamed.ok) << renamed.err;
}

}  // namespace
