#include "appearance/status_bar.h"

#include <algorithm>
#include <cstdio>

namespace nebro::appearance {
namespace {

// Widths of the parts right of the first, in digit widths: room for "  Sel: 9999999",
// "  UTF-16 LE", "  CRLF" and "  500%" with a little air (and, for the last, the size grip).
constexpr std::array<int, kStatusPartCount - 1> kFixedPartUnits = {14, 12, 7, 9};
constexpr int kFirstPartMinUnits = 16;
constexpr int kLastPartUnits = 7;  // the zoom, "  100%", takes what is left
constexpr int kGripWidth = 16;

template <typename... Args>
std::string Format(const char* format, Args... args) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, args...);
  return buffer;
}

}  // namespace

long StatusLineNumber(long firstVisibleLine, int caretY, int textHeight) {
  const int h = textHeight < 1 ? 16 : textHeight;
  return std::max(1L, firstVisibleLine + 1 + caretY / h);
}

const char* EncodingLabel(int encoding) {
  switch (encoding) {
    case 0: return "UTF-8 BOM";
    case 1: return "UTF-8";
    case 2: return "UTF-16 LE";
    case 3: return "UTF-16 BE";
    case 4: return "ANSI";
    default: return "UTF-8";
  }
}

const char* LineEndingLabel(int eolMode) {
  switch (eolMode) {
    case 0: return "CRLF";
    case 1: return "CR";
    case 2: return "LF";
    default: return "?";
  }
}

int ZoomPercent(int zoom) { return (zoom + 10) * 10; }

StatusTexts MakeStatusTexts(const StatusInput& in) {
  StatusTexts t;
  t[0] = Format("  Ln %ld, Col %ld", StatusLineNumber(in.firstVisibleLine, in.caretY, in.textHeight),
                in.column + 1);
  if (in.notice) t[0] += in.notice;
  if (in.selectedCharacters > 0) t[1] = Format("  Sel: %ld", in.selectedCharacters);
  t[2] = Format("  %s", EncodingLabel(in.encoding));
  t[3] = Format("  %s", LineEndingLabel(in.eolMode));
  t[4] = Format("  %d%%", ZoomPercent(in.zoom));
  return t;
}

int StatusBarMinimumWidth(int unit) {
  if (unit < 1) unit = 8;
  int width = kFirstPartMinUnits * unit + kLastPartUnits * unit + kGripWidth;
  for (int units : kFixedPartUnits) width += units * unit;
  return width;
}

std::array<int, kStatusPartCount> StatusPartEdges(int clientWidth, int unit) {
  if (unit < 1) unit = 8;
  int fixed = 0;
  for (int units : kFixedPartUnits) fixed += units * unit;
  std::array<int, kStatusPartCount> edges{};
  edges[0] = std::max(kFirstPartMinUnits * unit, clientWidth - fixed);
  for (int i = 1; i < kStatusPartCount; ++i) edges[i] = edges[i - 1] + kFixedPartUnits[i - 1] * unit;
  edges[kStatusPartCount - 1] = -1;
  return edges;
}

}  // namespace nebro::appearance
