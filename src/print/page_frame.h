// Page geometry for printing and the print preview: margins kept in hundredths of a millimetre,
// converted through twips to device pixels, and the frame of the printable content with the
// footer band under it. The preview and the printer share this arithmetic, so a page splits the
// same way in both.
#pragma once

namespace nebro::print {

// a × b / c in 64 bits, rounded half away from zero; -1 when c is 0 or the result does not fit
// in an int (the Windows MulDiv the page arithmetic was first written with).
int MulDivRounded(int a, int b, int c);

// Hundredths of a millimetre to twips, truncated: v × 1440 / 2540.
int HundredthsMmToTwips(int hundredthsMm);

// Twips to pixels at `dpi`: MulDivRounded(twips, dpi, 1440).
int TwipsToPixels(int twips, int dpi);

// A margin in device pixels: through truncated twips, then rounded to pixels.
int MarginToPixels(int hundredthsMm, int dpi);

// Margins as the page-setup dialog returns them, in hundredths of a millimetre.
struct PageMargins {
  int left = 1500;
  int top = 1500;
  int right = 1500;
  int bottom = 1500;
};

// Paper size in hundredths of a millimetre; A4 by default.
struct PaperSize {
  int width = 21000;
  int height = 29700;
};

struct PageRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  bool operator==(const PageRect&) const = default;
};

// A device page: its whole size, the offsets of its printable area, and its resolution.
struct DevicePage {
  int physicalWidth = 0;
  int physicalHeight = 0;
  int offsetX = 0;
  int offsetY = 0;
  int dpiX = 96;
  int dpiY = 96;
};

// A paper size from the page setup as a device page at the given resolution and offsets.
DevicePage PaperDevicePage(const PaperSize& paper, int dpiX, int dpiY, int offsetX, int offsetY);

// Character heights in pixels: the body font MulDivRounded(fontSize, dpiY, 72), the footer font
// two units taller.
int BodyFontHeight(int fontSize, int dpiY);
int FooterFontHeight(int fontSize, int dpiY);

// The band kept free under the content for the page number: two font heights,
// MulDivRounded(fontSize × 2, dpiY, 72).
int FooterBandHeight(int fontSize, int dpiY);

struct PageFrame {
  PageRect content;  // where the lines go
  PageRect footer;   // the band under the content, between the side margins
};

// left = offsetX + left margin; top = offsetY + top margin; right = width − offsetX − right
// margin; bottom = height − footer band − offsetY − bottom margin. The offsets count on both
// sides, on top of the margins.
PageFrame ComputePageFrame(const DevicePage& page, const PageMargins& margins, int fontSize);

}  // namespace nebro::print
