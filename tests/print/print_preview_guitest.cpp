// Print Preview as a user meets it on the real main window, reached by role and name: the
// progress window, "Page 1 / N" with N the pages the PDF gets, the page buttons and keys, and
// Escape closing the window.
#include <gtest/gtest.h>

#include <string>

#include "app/main_window_gtk.h"
#include "common/command_ids.h"
#include "common/command_table.h"
#include "print/page_layout_gtk.h"
#include "print/pdf_export_gtk.h"
#include "print/print_texts.h"
#include "settings/settings.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"
#include "support/process.h"

using namespace nebro;
using namespace nebro::testing;
using nebro::test::PdfPageCount;
using nebro::test::PdfText;

namespace {

class PrintPreviewTest : public MainWindowTest {};

std::string Lines(int count) {
  std::string text;
  for (int i = 1; i <= count; ++i) {
    text += "line " + std::to_string(i) + ";";
    if (i % 9 == 0) text += std::string(300, 'w');  // wraps
    text += "\n";
  }
  return text;
}

TEST_F(PrintPreviewTest, PagesForwardAndBackAndEscapeCloses) {
  const std::string text = Lines(500);
  SetText(text);
  const print::PageStyle style = print::PageStyleFromSettings(settings::gSettings);
  const print::PagedDocument expected = print::PaginateDocument(text, style);
  const int pages = expected.PageCount();
  ASSERT_GT(pages, 3);
  auto label = [pages](int page) { return "Page " + std::to_string(page) + " / " + std::to_string(pages); };

  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdPrintPreview));
  RunSteps({"wait|frame|Nebro - Print Preview", "wait|label|" + label(1),
            "click|push button|" + std::string(print::kPreviewNextText), "wait|label|" + label(2),
            "click|push button|" + std::string(print::kPreviewPrevText), "wait|label|" + label(1)});

  GtkWidget* preview = FindWindow("NebroPrintPreview");
  ASSERT_NE(preview, nullptr);
  SendKey(preview, GDK_KEY_Page_Down);
  SendKey(preview, GDK_KEY_Right);
  RunSteps({"wait|label|" + label(3)});
  SendKey(preview, GDK_KEY_Left);
  RunSteps({"wait|label|" + label(2)});

  // The PDF of the same document gets the pages the preview counts.
  const std::string pdf = folder + "/same.pdf";
  ASSERT_TRUE(print::ExportPdf(nullptr, text, style, pdf).ok);
  EXPECT_EQ(PdfPageCount(pdf), pages);

  // Its size is kept for the next preview.
  gtk_window_resize(GTK_WINDOW(preview), 700, 560);
  ASSERT_TRUE(WaitUntil([&] { return gtk_widget_get_allocated_width(preview) == 700; }, 5));
  SendKey(preview, GDK_KEY_Escape);
  RunSteps({"gone|frame|Nebro - Print Preview"});
  EXPECT_EQ(settings::gSettings.previewWidth, 700);
  EXPECT_EQ(settings::gSettings.previewHeight, 560);
  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdPrintPreview));
  // The pagination's progress window has the same title: wait for the preview itself.
  ASSERT_TRUE(WaitUntil([&] { return (preview = FindWindow("NebroPrintPreview")) != nullptr; }, 10));
  int width = 0, height = 0;
  gtk_window_get_default_size(GTK_WINDOW(preview), &width, &height);
  EXPECT_EQ(width, 700);
  EXPECT_EQ(height, 560);
  gtk_widget_destroy(preview);
}

TEST_F(PrintPreviewTest, AnEmptyDocumentSaysSoAndOpensNothing) {
  boxesExpected = true;
  ASSERT_TRUE(RunCommand(app::gMain.commands, kCmdPrintPreview));
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0].text, print::kPreviewEmptyText);
  EXPECT_EQ(FindWindow("NebroPrintPreview"), nullptr);
  EXPECT_EQ(FindWindow("NebroPrintPreviewProgress"), nullptr);
}

// Ctrl+P through GTK's own print dialog to its "Print to File" printer: the PDF has the pages the
// preview counts for the same margins, each starting with its first line and ending with "- N -".
TEST_F(PrintPreviewTest, PrintsToAFileThroughThePrintDialog) {
  settings::gSettings.pageMarginLeft = 2500, settings::gSettings.pageMarginTop = 3000;
  const std::string text = Lines(230);
  SetText(text);
  const print::PagedDocument expected =
      print::PaginateDocument(text, print::PageStyleFromSettings(settings::gSettings));
  ASSERT_GT(expected.PageCount(), 2);
  const std::string pdf = folder + "/printed.pdf";
  RunSteps({"wait|dialog|Print", "select|table cell|Print to File", "click|radio button|PDF",
            "click|push button|*output.pdf", "set|text@Select a filename||" + pdf,
            "click|push button@Select a filename|Select", "wait|push button|*/printed.pdf",
            "click|push button@Print|Print"},
           [] { SendKey(app::gMain.window, GDK_KEY_p, GDK_CONTROL_MASK); });
  ASSERT_TRUE(WaitUntil([&] { return PdfPageCount(pdf) > 0; }));
  EXPECT_EQ(PdfPageCount(pdf), expected.PageCount());
  auto squeezed = [](std::string s) { return std::erase_if(s, [](char c) { return std::isspace(c); }), s; };
  for (int page = 1; page <= expected.PageCount(); ++page) {
    const std::string n = std::to_string(page);
    const std::string shown = squeezed(PdfText(pdf, "-f " + n + " -l " + n));
    const print::LineSpan first = expected.lines[expected.pageStarts[page - 1]];
    EXPECT_TRUE(shown.starts_with(squeezed(std::string(print::LineText(text, first))))) << n << ": " << shown.substr(0, 60);
    EXPECT_TRUE(shown.ends_with("-" + n + "-")) << n << ": " << shown.substr(shown.size() - std::min<size_t>(shown.size(), 60));
  }
}

}  // namespace
