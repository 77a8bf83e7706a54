#include "print/print_texts.h"

#include <gtest/gtest.h>

namespace nebro {
namespace {

TEST(PrintTexts, ProgressLabelsAndFooters) {
  EXPECT_EQ(PaginationProgressText(3, 0), "Paginating... page 3");
  EXPECT_EQ(PaginationProgressText(3, 150), "Paginating... page 3  (150 lines)");
  EXPECT_EQ(PaginationProgressText(1, -1), "Paginating... page 1");
  EXPECT_EQ(PaginationDialogResult(1), 1);
  EXPECT_EQ(PaginationDialogResult(0), 2);
  EXPECT_EQ(PreviewPageLabel(0, 5), "Page 1 / 5");
  EXPECT_EQ(PreviewPageLabel(4, 5), "Page 5 / 5");
  EXPECT_EQ(PageFooterText(1), "- 1 -");
  EXPECT_EQ(PageFooterText(120), "- 120 -");
  EXPECT_EQ(PrintDocumentName(""), "Nebro Document");
  EXPECT_EQ(PrintDocumentName("/home/a/notes.txt"), "/home/a/notes.txt");
  EXPECT_STREQ(kPreviewPrevText, "\xE2\x97\x84  Prev");
  EXPECT_STREQ(kPreviewCloseText, "\xE2\x9C\x95  Close");
}

TEST(PrintTexts, PreviewStepsWithinThePageList) {
  PreviewState s;
  s.pageCount = 2;
  EXPECT_FALSE(PreviewPreviousPage(s));
  EXPECT_TRUE(PreviewNextPage(s));
  EXPECT_FALSE(PreviewNextPage(s));
  EXPECT_EQ(s.currentPage, 1);
}

TEST(PrintTexts, PreviewWindowSizeAndPagePlacement) {
  EXPECT_EQ(ClampPreviewSize({0, 0}), (PreviewSize{640, 480}));
  EXPECT_EQ(ClampPreviewSize({800, 300}), (PreviewSize{800, 480}));
  EXPECT_EQ(ClampPreviewSize({1024, 768}), (PreviewSize{1024, 768}));

  auto p = FitPreviewPage(800, 1000, 1040, 540, 20);
  EXPECT_DOUBLE_EQ(p.scale, 0.5);
  EXPECT_EQ(p.width, 400);
  EXPECT_EQ(p.height, 500);
  EXPECT_EQ(p.x, 320);
  EXPECT_EQ(p.y, 20);
  p = FitPreviewPage(200, 100, 1000, 1000, 20);  // never enlarged
  EXPECT_DOUBLE_EQ(p.scale, 1.0);
  EXPECT_EQ(p.x, 400);
  EXPECT_EQ(p.y, 450);
}

}  // namespace
}  // namespace nebro
