#include "print/page_frame.h"

#include <gtest/gtest.h>

#include <climits>

namespace nebro::print {
namespace {

TEST(PageFrame, ArithmeticRoundsAndTruncatesWhereThePrinterDoes) {
  // a x b / c rounded half away from zero, -1 when it cannot be computed.
  EXPECT_EQ(MulDivRounded(10, 3, 4), 8);  // 7.5
  EXPECT_EQ(MulDivRounded(7, 1, 3), 2);
  EXPECT_EQ(MulDivRounded(-10, 3, 4), -8);
  EXPECT_EQ(MulDivRounded(10, 3, -4), -8);
  EXPECT_EQ(MulDivRounded(-10, 3, -4), 8);
  EXPECT_EQ(MulDivRounded(INT_MAX, INT_MAX, INT_MAX), INT_MAX);  // 64-bit intermediate
  EXPECT_EQ(MulDivRounded(1, 1, 0), -1);
  EXPECT_EQ(MulDivRounded(INT_MAX, 2, 1), -1);

  // Margins go through truncated twips, then rounded pixels.
  EXPECT_EQ(HundredthsMmToTwips(2000), 1133);  // 1133.86: truncated, not rounded
  EXPECT_EQ(HundredthsMmToTwips(-1500), -850);
  EXPECT_EQ(MarginToPixels(1500, 96), 57);    // 850 twips = 56.67 px
  EXPECT_EQ(MarginToPixels(2000, 96), 76);    // 1133 twips = 75.53 px
  EXPECT_EQ(MarginToPixels(1500, 600), 354);

  EXPECT_EQ(BodyFontHeight(11, 96), 15);  // 14.67
  EXPECT_EQ(FooterFontHeight(11, 96), 17);
  EXPECT_EQ(FooterBandHeight(11, 96), 29);    // 29.33
  EXPECT_EQ(FooterBandHeight(10, 600), 167);  // 166.67
}

TEST(PageFrame, PrinterFrameAddsTheOffsetsOnBothSides) {
  // Letter at 600 dpi with a printable area starting 100 pixels in; 10 mm margins.
  const PageMargins tenMm{1000, 1000, 1000, 1000};
  const DevicePage letter600 = PaperDevicePage(PaperSize{21590, 27940}, 600, 600, 100, 100);
  EXPECT_EQ(letter600.physicalWidth, 5100);
  EXPECT_EQ(letter600.physicalHeight, 6600);
  PageFrame f = ComputePageFrame(letter600, tenMm, 10);
  EXPECT_EQ(f.content, (PageRect{336, 336, 4764, 6097}));
  EXPECT_EQ(f.footer, (PageRect{336, 6097, 4764, 6264}));
  // Zero margins still leave the offsets as an indent.
  f = ComputePageFrame(letter600, PageMargins{0, 0, 0, 0}, 10);
  EXPECT_EQ(f.content, (PageRect{100, 100, 5000, 6333}));
  // Horizontal margins use the horizontal resolution, vertical ones the vertical.
  f = ComputePageFrame(DevicePage{5100, 3300, 0, 0, 600, 300}, tenMm, 10);
  EXPECT_EQ(f.content, (PageRect{236, 118, 4864, 3099}));
  // Paper sizes from the page setup go through the margin arithmetic (rounded pixels).
  EXPECT_EQ(PaperDevicePage(PaperSize{}, 600, 600, 0, 0).physicalWidth, 4960);
  // Each margin goes to its own side (A4 at 96 dpi: 794 x 1122 pixels).
  f = ComputePageFrame(PaperDevicePage(PaperSize{21000, 29700}, 96, 96, 0, 0), PageMargins{500, 1000, 1500, 2000}, 11);
  EXPECT_EQ(f.content, (PageRect{19, 38, 737, 1017}));
}

}  // namespace
}  // namespace nebro::print
