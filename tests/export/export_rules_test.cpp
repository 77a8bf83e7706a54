#include "export/export_rules.h"

#include <gtest/gtest.h>

#include "export/styled_text.h"

using namespace nebro;
using namespace nebro::exports;

TEST(ExportRules, ElapsedTimeProgressAndStatusTexts) {
  const std::pair<uint64_t, const char*> times[] = {
      {0, "0.000 sec"},        {59999, "59.999 sec"}, {60000, "1:00 min"},
      {65432, "1:05 min"},     {3599999, "59:59 min"}, {3600000, "1:00:00"},
      {3725000, "1:02:05"},    {360061000, "100:01:01"}};
  for (const auto& [ms, text] : times) EXPECT_EQ(ElapsedTimeText(ms), text) << ms;
  EXPECT_EQ(HtmlDoneQuestion(4321),
            "HTML exported successfully.\n\nExport time:  4.321 sec\n\nOpen in browser?");

  // Every 50 lines up to 1,000 lines, then every hundredth of the document (as the HTML, RTF and
  // Markdown exports post it); an unknown count as a short document.
  EXPECT_EQ(ProgressStep(-3), 50);

  EXPECT_EQ(ProgressStatusText(951, 1000), "Exporting line 951 of 1000  (95%)");
  // No overflow past 100 %, no division by a zero total.
  EXPECT_EQ(ProgressStatusText(3000000000u, 2000000000), "Exporting line 3000000000 of 2000000000  (150%)");
  EXPECT_EQ(ProgressStatusText(7, 0), "Exporting line 7 of 0  (0%)");
  EXPECT_EQ(ProgressStatusText(0xFFFFFFFFu, 10), "Finalizing...");
}

TEST(ExportRules, NamesFromTheDocumentPath) {
  for (const char* path : {"notes.MD", "a.md", ".md", "/x/y.mD"}) EXPECT_TRUE(IsMarkdownPath(path)) << path;
  for (const char* path : {"md", "a.mdx", "readme", "", "/a/notes.md.bak", "/a/notesmd", "b.markdown"}) {
    EXPECT_FALSE(IsMarkdownPath(path)) << path;
  }

  EXPECT_EQ(ExportTitle(""), "Untitled");
  EXPECT_EQ(ExportTitle("/home/u/src/main.cpp"), "main.cpp");
  EXPECT_EQ(ExportTitle("main.cpp"), "main.cpp");

  EXPECT_EQ(ExportInitialFileName("", ".html"), "");
  EXPECT_EQ(ExportInitialFileName("/home/u/archive.tar.gz", ".rtf"), "archive.tar.rtf");
  EXPECT_EQ(ExportInitialFileName("/home/u.d/Makefile", ".txt"), "Makefile.txt");
  EXPECT_EQ(ExportInitialFileName("/a/b.md", FindExportFormat(kExportHtml)->extension), "b.html");
  for (int32_t id : {kExportPdf, kExportHtml, kExportRtf, kExportPlainText}) EXPECT_EQ(FindExportFormat(id)->id, id);
  EXPECT_EQ(FindExportFormat(4), nullptr);
  EXPECT_EQ(FindExportFormat(-1), nullptr);
}

TEST(ExportRules, ThresholdsAndSizeQuestions) {
  // Each limit is the last line count that exports without asking.
  struct Case {
    int32_t format;
    bool markdown;
    int32_t limit;
  } cases[] = {{kExportHtml, false, 20000}, {kExportHtml, true, 30000}, {kExportPdf, false, 10000},
               {kExportPdf, true, 30000},   {kExportRtf, false, 50000}, {kExportRtf, true, 50000}};
  for (const Case& c : cases) {
    EXPECT_EQ(ViewerOfferQuestion(c.format, c.markdown, c.limit), std::nullopt) << c.format;
    const auto question = ViewerOfferQuestion(c.format, c.markdown, c.limit + 1);
    ASSERT_TRUE(question) << c.format;
    EXPECT_NE(question->find("~" + std::to_string(c.limit + 1) + " lines."), std::string::npos) << *question;
    EXPECT_NE(question->find("Open as plain text in Nebro Viewer instead?"), std::string::npos);
  }
  EXPECT_EQ(ViewerOfferQuestion(kExportHtml, true, 30001),
            "This Markdown file has ~30001 lines.\n\nRendered MD HTML would be very slow for this "
            "size.\nOpen as plain text in Nebro Viewer instead?");
  EXPECT_EQ(ViewerOfferQuestion(kExportPlainText, false, 99999999), std::nullopt);

  // (The texts of both questions over a document: export_window_guitest.)
  EXPECT_EQ(HtmlSizeQuestion(1000000, 5), std::nullopt);
  EXPECT_EQ(HtmlSizeQuestion(10000000, 7), "This file has ~7 lines. Export may take a while.\n\nContinue?");
  EXPECT_EQ(HtmlSizeQuestion(2999999999LL, 4),
            "This file is very large (~2999 MB, ~4 lines).\nHTML export may take several minutes."
            "\n\nContinue?");
}

TEST(StyledText, Split) {
  std::string text, styles;
  SplitStyledText(std::string_view("a\x05" "b\x85" "\n\x00" "z", 7), text, styles);
  EXPECT_EQ(text, std::string("ab\n"));
  EXPECT_EQ(styles, std::string("\x05\x85\x00", 3));
}
