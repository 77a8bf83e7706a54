// Texts and small rules of printing and the print preview that need no window: message and
// title texts, the progress line, page labels and footers, the preview's page stepping and size.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nebro::print {

inline constexpr const char* kPrintPreviewTitle = "Nebro - Print Preview";
inline constexpr const char* kPrintTitle = "Nebro - Print";
inline constexpr const char* kPreviewEmptyText = "The document is empty. Nothing to preview.";
inline constexpr const char* kPreviewWorkerFailedText = "Failed to start Print Preview worker thread.";
inline constexpr const char* kPreviewDialogFailedText = "Failed to open Print Preview dialog.";
inline constexpr const char* kPrintEmptyText = "The document is empty. Nothing to print.";
inline constexpr const char* kPrintStartFailedText =
    "Failed to start print job.\nCheck printer and try again.";
inline constexpr const char* kUnsavedPrintDocumentName = "Nebro Document";
inline constexpr const char* kPreparingPreviewText = "Preparing Print Preview...";
inline constexpr const char* kCancellingPreviewText = "Cancelling...";
inline constexpr const char* kCancellingText = "Cancelling...";

// Preview window buttons (two blanks between symbol and word) and their command numbers.
inline constexpr const char* kPreviewPrevText = "\u25C4  Prev";
inline constexpr const char* kPreviewNextText = "Next  \u25BA";
inline constexpr const char* kPreviewPrintText = "Print";
inline constexpr const char* kPreviewCloseText = "\u2715  Close";
enum PreviewCommand : int {
  kPreviewPrevPage = 610,
  kPreviewNextPage = 611,
  kPreviewPrint = 612,
  kPreviewClose = 613,
};

// The footer's page number is drawn in this grey.
inline constexpr unsigned kFooterGrey = 100;  // RGB(100, 100, 100)

// "Paginating... page %d", or "Paginating... page %d  (%d lines)" when a line count above zero
// is given.
std::string PaginationProgressText(int pages, int64_t lines);

// How the progress dialog closes on the worker's end message: 1 when finished, else 2.
int PaginationDialogResult(int finished);

// "Page %d / %d" with the 1-based current page.
std::string PreviewPageLabel(int currentPage, int pageCount);

// "- %d -" with the 1-based page number.
std::string PageFooterText(int pageNumber);

// The print job's name: the document's full path, or "Nebro Document" when it has none.
std::string PrintDocumentName(std::string_view path);

// The preview window's record: the current page (0-based) of the page list.
struct PreviewState {
  int currentPage = 0;
  int pageCount = 0;
  std::vector<int32_t> pageStarts;
};

// Previous does nothing on the first page, Next nothing on the last; both return whether the
// page changed.
bool PreviewPreviousPage(PreviewState& state);
bool PreviewNextPage(PreviewState& state);

// The preview window is never smaller than 640 × 480.
inline constexpr int kPreviewMinWidth = 640;
inline constexpr int kPreviewMinHeight = 480;
struct PreviewSize {
  int width = 0;
  int height = 0;
  bool operator==(const PreviewSize&) const = default;
};
PreviewSize ClampPreviewSize(PreviewSize size);

// Where the page is painted inside the preview's drawing area: scaled to fit with `gap` pixels
// around it, centred, never scaled up beyond 1.
struct PreviewPagePlacement {
  double scale = 1.0;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};
PreviewPagePlacement FitPreviewPage(int pageWidth, int pageHeight, int areaWidth, int areaHeight,
                                    int gap);

}  // namespace nebro::print
