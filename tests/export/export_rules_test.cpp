#include "export/export_rules.h"

#include <gtest/gtest.h>

#include "export/styled_text.h"

using namespace nebro;

TEST(ExportRules, ElapsedTimeTextAtItsBoundaries) {
  EXPECT_EQ(ElapsedTimeText(0), "0.000 sec");
  EXPECT_EQ(ElapsedTimeText(4321), "4.321 sec");
  EXPECT_EQ(ElapsedTimeText(59999), "59.999 sec");
  EXPECT_EQ(ElapsedTimeText(60000), "1:00 min");
  EXPECT_EQ(ElapsedTimeText(65432), "1:05 min");
  EXPECT_EQ(ElapsedTimeText(3599999), "59:59 min");
  EXPECT_EQ(ElapsedTimeText(3600000), "1:00:00");
  EXPECT_EQ(ElapsedTimeText(3725000), "1:02:05");
  EXPECT_EQ(ElapsedTimeText(36000000 * 10ULL + 61000), "100:01:01");
  EXPECT_EQ(HtmlDoneQuestion(4321),
            "HTML exported successfully.\n\nExport time:  4.321 sec\n\nOpen in browser?");
}

TEST(ExportRules, ProgressStepAndStatus) {
  EXPECT_EQ(ProgressStep(0), 50);
  EXPECT_EQ(ProgressStep(1000), 50);
  EXPECT_EQ(ProgressStep(1001), 10);
  EXPECT_EQ(ProgressStep(5000), 50);
  EXPECT_EQ(ProgressStep(123456), 1234);
  EXPECT_EQ(ProgressStep(-3), 50);
  EXPECT_TRUE(IsProgressLine(0, 10));
  EXPECT_FALSE(IsProgressLine(9, 10));
  EXPECT_TRUE(IsProgressLine(10, 10));

  EXPECT_EQ(ProgressStatusText(1, 1000), "Exporting line 1 of 1000  (0%)");
  EXPECT_EQ(ProgressStatusText(951, 1000), "Exporting line 951 of 1000  (95%)");
  EXPECT_EQ(ProgressStatusText(3000000000u, 2000000000), "Exporting line 3000000000 of 2000000000  (150%)");
  EXPECT_EQ(ProgressStatusText(0xFFFFFFFFu, 10), "Finalizing...");
  EXPECT_EQ(ProgressStatusText(7, 0), "Exporting line 7 of 0  (0%)");
}

TEST(ExportRules, FormatTableLookup) {
  // Rows in id order, PDF first; ids outside the table find nothing.
  ASSERT_EQ(ExportFormats().size(), 4u);
  for (int32_t id = 0; id < 4; ++id) EXPECT_EQ(FindExportFormat(id), &ExportFormats()[id]);
  EXPECT_EQ(FindExportFormat(4), nullptr);
  EXPECT_EQ(FindExportFormat(-1), nullptr);
  EXPECT_EQ(ExportInitialFileName("/a/b.md", FindExportFormat(kExportHtml)->extension), "b.html");
}

TEST(ExportRules, NamesFromTheDocumentPath) {
  EXPECT_TRUE(IsMarkdownPath("notes.MD"));
  EXPECT_TRUE(IsMarkdownPath("a.md"));
  EXPECT_TRUE(IsMarkdownPath(".md"));
  EXPECT_TRUE(IsMarkdownPath("/x/y.mD"));
  EXPECT_FALSE(IsMarkdownPath("md"));
  EXPECT_FALSE(IsMarkdownPath("a.mdx"));
  EXPECT_FALSE(IsMarkdownPath("readme"));
  EXPECT_FALSE(IsMarkdownPath(""));

  EXPECT_EQ(ExportTitle(""), "Untitled");
  EXPECT_EQ(ExportTitle("/home/u/src/main.cpp"), "main.cpp");
  EXPECT_EQ(ExportTitle("main.cpp"), "main.cpp");

  EXPECT_EQ(ExportInitialFileName("", ".html"), "");
  EXPECT_EQ(ExportInitialFileName("/home/u/src/main.cpp", ".html"), "main.html");
  EXPECT_EQ(ExportInitialFileName("/home/u/archive.tar.gz", ".rtf"), "archive.tar.rtf");
  EXPECT_EQ(ExportInitialFileName("/home/u.d/Makefile", ".txt"), "Makefile.txt");
}

TEST(ExportRules, ThresholdsAndViewerQuestions) {
  EXPECT_EQ(ExportLineLimit(kExportPlainText, false), std::nullopt);
  EXPECT_EQ(ViewerOfferQuestion(kExportHtml, false, 20000), std::nullopt);
  EXPECT_EQ(ViewerOfferQuestion(kExportHtml, false, 20001),
            "This file has ~20001 lines.\n\nHTML export would be slow for this size.\n"
            "Open as plain text in Nebro Viewer instead?");
  EXPECT_EQ(ViewerOfferQuestion(kExportHtml, true, 30000), std::nullopt);
  EXPECT_EQ(ViewerOfferQuestion(kExportHtml, true, 30001),
            "This Markdown file has ~30001 lines.\n\nRendered MD HTML would be very slow for this "
            "size.\nOpen as plain text in Nebro Viewer instead?");
  EXPECT_EQ(ViewerOfferQuestion(kExportPdf, false, 10001),
            "This file has ~10001 lines.\n\nPDF export would be very slow for this size.\n"
            "Open as plain text in Nebro Viewer instead?");
  EXPECT_EQ(ViewerOfferQuestion(kExportPdf, true, 31000),
            "This Markdown file has ~31000 lines.\n\nRendered MD PDF would be too slow for this "
            "size.\nOpen as plain text in Nebro Viewer instead?");
  EXPECT_EQ(ViewerOfferQuestion(kExportRtf, true, 50001),
            "This file has ~50001 lines.\n\nRTF export would be very slow for this size.\n"
            "Open as plain text in Nebro Viewer instead?");
  EXPECT_EQ(ViewerOfferQuestion(kExportRtf, false, 50000), std::nullopt);
  EXPECT_EQ(ViewerOfferQuestion(kExportPlainText, false, 99999999), std::nullopt);

  EXPECT_EQ(HtmlSizeQuestion(1000000, 5), std::nullopt);
  EXPECT_EQ(HtmlSizeQuestion(1000001, 12345),
            "This file has ~12345 lines. Export may take a while.\n\nContinue?");
  EXPECT_EQ(HtmlSizeQuestion(10000000, 7), "This file has ~7 lines. Export may take a while.\n\nContinue?");
  EXPECT_EQ(HtmlSizeQuestion(10000001, 4),
            "This file is very large (~10 MB, ~4 lines).\nHTML export may take several minutes."
            "\n\nContinue?");
  EXPECT_EQ(HtmlSizeQuestion(2999999999LL, 4),
            "This file is very large (~2999 MB, ~4 lines).\nHTML export may take several minutes."
            "\n\nContinue?");
}

TEST(StyledText, SplitAndCountLines) {
  std::string text, styles;
  SplitStyledText(std::string_view("a\x05" "b\x85" "\n\x00" "z", 7), text, styles);
  EXPECT_EQ(text, std::string("ab\n"));
  EXPECT_EQ(styles, std::string("\x05\x85\x00", 3));

  EXPECT_EQ(CountEditorLines(""), 1);
  EXPECT_EQ(CountEditorLines("abc"), 1);
  EXPECT_EQ(CountEditorLines("a\n"), 2);
  EXPECT_EQ(CountEditorLines("a\r\nb"), 2);
  EXPECT_EQ(CountEditorLines("a\rb\rc"), 3);
  EXPECT_EQ(CountEditorLines("\r"), 2);
  EXPECT_EQ(CountEditorLines("\n\r"), 3);
  EXPECT_EQ(CountEditorLines("\r\r\n\n"), 4);
  EXPECT_EQ(CountEditorLines("x\r\n\r\ny\r"), 4);
}
