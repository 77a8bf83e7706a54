// The Save As dialog as a user meets it: the document's own type chosen in the type box, and
// files listed whatever the case of their extension.
#include <gtest/gtest.h>

#include "document/document_ops_gtk.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

class SaveDialog : public MainWindowTest {};

TEST_F(SaveDialog, ShowsTheDocumentsTypeAndFilesOfEitherCase) {
  WriteFile("README.MD", "# upper case\n");
  WriteFile("notes.txt", "text\n");
  ASSERT_TRUE(LoadDocument(WriteFile("guide.md", "# guide\n")));
  AccessibilityProbe probe({"wait|file chooser|Save As - Nebro", "wait|table cell|guide.md",
                            "wait|table cell|README.MD", "gone|table cell|notes.txt", "text|combo box|",
                            "click|push button|Cancel"});
  EXPECT_FALSE(document::SaveDocumentAs(app::MainDocumentWindow()));
  const AccessibilityResult& seen = probe.Finish();
  EXPECT_TRUE(seen.ok) << seen.err;
  EXPECT_EQ(seen.out, "Markdown (*.md)\n");
}

}  // namespace
