#include "print/page_frame.h"

#include <cstdint>

namespace nebro::print {

namespace {

constexpr int kTwipsPerInch = 1440;

}  // namespace

int MulDivRounded(int a, int b, int c) {
  if (c == 0) return -1;
  int64_t x = a;
  int64_t d = c;
  if (d < 0) {
    x = -x;
    d = -d;
  }
  const int64_t product = x * b;
  const int64_t result = product >= 0 ? (product + d / 2) / d : (product - d / 2) / d;
  if (result > INT32_MAX || result < -INT32_MAX) return -1;
  return static_cast<int>(result);
}

int HundredthsMmToTwips(int hundredthsMm) {
  return static_cast<int>(static_cast<int64_t>(hundredthsMm) * kTwipsPerInch / 2540);
}

int TwipsToPixels(int twips, int dpi) { return MulDivRounded(twips, dpi, kTwipsPerInch); }

int MarginToPixels(int hundredthsMm, int dpi) {
  return TwipsToPixels(HundredthsMmToTwips(hundredthsMm), dpi);
}

DevicePage PaperDevicePage(const PaperSize& paper, int dpiX, int dpiY, int offsetX, int offsetY) {
  DevicePage page;
  page.dpiX = dpiX;
  page.dpiY = dpiY;
  page.physicalWidth = MarginToPixels(paper.width, dpiX);
  page.physicalHeight = MarginToPixels(paper.height, dpiY);
  page.offsetX = offsetX;
  page.offsetY = offsetY;
  return page;
}

int BodyFontHeight(int fontSize, int dpiY) { return MulDivRounded(fontSize, dpiY, 72); }

int FooterFontHeight(int fontSize, int dpiY) { return BodyFontHeight(fontSize, dpiY) + 2; }

int FooterBandHeight(int fontSize, int dpiY) { return MulDivRounded(fontSize * 2, dpiY, 72); }

PageFrame ComputePageFrame(const DevicePage& page, const PageMargins& margins, int fontSize) {
  const int left = MarginToPixels(margins.left, page.dpiX);
  const int right = MarginToPixels(margins.right, page.dpiX);
  const int top = MarginToPixels(margins.top, page.dpiY);
  const int bottom = MarginToPixels(margins.bottom, page.dpiY);
  const int band = FooterBandHeight(fontSize, page.dpiY);

  PageFrame frame;
  frame.content.left = page.offsetX + left;
  frame.content.top = page.offsetY + top;
  frame.content.right = page.physicalWidth - page.offsetX - right;
  frame.content.bottom = page.physicalHeight - band - page.offsetY - bottom;
  frame.footer = {frame.content.left, frame.content.bottom, frame.content.right,
                  frame.content.bottom + band};
  return frame;
}

}  // namespace nebro::print
