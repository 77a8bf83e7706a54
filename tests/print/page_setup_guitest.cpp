// Page Setup on the real main window, answered through the accessibility bus: the stored page is
// shown, Apply stores what was chosen, Cancel stores nothing.
#include <gtest/gtest.h>

#include "common/command_ids.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

class PageSetupTest : public MainWindowTest {
 protected:
  // Runs Page Setup from the command table while the steps answer it.
  void RunAnswering(const std::vector<std::string>& steps) {
    std::vector<std::string> all = {"wait|dialog|Page Setup"};
    all.insert(all.end(), steps.begin(), steps.end());
    RunSteps(all, [] { EXPECT_TRUE(app::DispatchCommand(kCmdPageSetup)); });
  }
};

}  // namespace

TEST_F(PageSetupTest, ApplyStoresThePageAndCancelNothing) {
  settings::AppSettings& s = settings::gSettings;
  // Letter with uneven margins comes back exactly as it was when nothing is changed.
  s.paperWidth = 21590;
  s.paperHeight = 27940;
  s.pageMarginLeft = 1000, s.pageMarginTop = 2000, s.pageMarginRight = 1200, s.pageMarginBottom = 2500;
  RunAnswering({"click|push button|Apply"});
  EXPECT_EQ(s.paperWidth, 21590);
  EXPECT_EQ(s.paperHeight, 27940);
  EXPECT_EQ(s.pageMarginLeft, 1000);
  EXPECT_EQ(s.pageMarginTop, 2000);
  EXPECT_EQ(s.pageMarginRight, 1200);
  EXPECT_EQ(s.pageMarginBottom, 2500);

  // Landscape turns the sheet; Cancel after the same choice keeps the stored page.
  s.paperWidth = 21000, s.paperHeight = 29700;
  RunAnswering({"click|radio button|Landscape", "click|push button|Cancel"});
  EXPECT_EQ(s.paperWidth, 21000);
  RunAnswering({"click|radio button|Landscape", "click|push button|Apply"});
  EXPECT_EQ(s.paperWidth, 29700);
  EXPECT_EQ(s.paperHeight, 21000);
}
