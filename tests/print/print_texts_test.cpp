#include "print/print_texts.h"

#include <gtest/gtest.h>

namespace nebro::print {
namespace {

TEST(PrintTexts, LabelsAndTheJobName) {
  // The line count is shown only when there is one; page numbers count from 1.
  EXPECT_EQ(PaginationProgressText(3, 0), "Paginating... page 3");
  EXPECT_EQ(PaginationProgressText(3, 150), "Paginating... page 3  (150 lines)");
  EXPECT_EQ(PaginationProgressText(1, -1), "Paginating... page 1");
  EXPECT_EQ(PaginationDialogResult(0), 2);
  EXPECT_EQ(PreviewPageLabel(4, 5), "Page 5 / 5");
  EXPECT_EQ(PrintDocumentName(""), "Nebro Document");
  EXPECT_EQ(PrintDocumentName("/home/a/notes.txt"), "/home/a/notes.txt");
}

TEST(PrintTexts, PreviewStepsSizeAndPagePlacement) {
  PreviewState s;
  s.pageCount = 2;
  EXPECT_FALSE(PreviewPreviousPage(s));
  EXPECT_TRUE(PreviewNextPage(s));
  EXPECT_FALSE(PreviewNextPage(s));
  EXPECT_EQ(s.currentPage, 1);

  EXPECT_EQ(ClampPreviewSize({0, 0}), (PreviewSize{640, 480}));
  EXPECT_EQ(ClampPreviewSize({800, 300}), (PreviewSize{800, 480}));

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
}  // namespace nebro::print
