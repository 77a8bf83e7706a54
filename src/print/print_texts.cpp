#include "print/print_texts.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace nebro::print {

std::string PaginationProgressText(int pages, int64_t lines) {
  char buf[96];
  if (lines > 0)
    std::snprintf(buf, sizeof buf, "Paginating... page %d  (%" PRId64 " lines)", pages, lines);
  else
    std::snprintf(buf, sizeof buf, "Paginating... page %d", pages);
  return buf;
}

int PaginationDialogResult(int finished) { return finished > 0 ? 1 : 2; }

std::string PreviewPageLabel(int currentPage, int pageCount) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "Page %d / %d", currentPage + 1, pageCount);
  return buf;
}

std::string PageFooterText(int pageNumber) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "- %d -", pageNumber);
  return buf;
}

std::string PrintDocumentName(std::string_view path) {
  return path.empty() ? std::string(kUnsavedPrintDocumentName) : std::string(path);
}

bool PreviewPreviousPage(PreviewState& state) {
  if (state.currentPage <= 0) return false;
  --state.currentPage;
  return true;
}

bool PreviewNextPage(PreviewState& state) {
  if (state.currentPage + 1 >= state.pageCount) return false;
  ++state.currentPage;
  return true;
}

PreviewSize ClampPreviewSize(PreviewSize size) {
  return {std::max(size.width, kPreviewMinWidth), std::max(size.height, kPreviewMinHeight)};
}

PreviewPagePlacement FitPreviewPage(int pageWidth, int pageHeight, int areaWidth, int areaHeight,
                                    int gap) {
  PreviewPagePlacement p;
  if (pageWidth <= 0 || pageHeight <= 0) return p;
  const int roomW = std::max(1, areaWidth - 2 * gap);
  const int roomH = std::max(1, areaHeight - 2 * gap);
  p.scale = std::min({1.0, static_cast<double>(roomW) / pageWidth,
                      static_cast<double>(roomH) / pageHeight});
  p.width = static_cast<int>(std::floor(pageWidth * p.scale));
  p.height = static_cast<int>(std::floor(pageHeight * p.scale));
  p.x = (areaWidth - p.width) / 2;
  p.y = (areaHeight - p.height) / 2;
  return p;
}

}  // namespace nebro::print
