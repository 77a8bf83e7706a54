// The export framework's small rules: the format table, the line-count limits that turn a slow
// export into an offer of the read-only viewer, the progress step, and the texts built from
// numbers (elapsed time, progress status, the size questions).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace nebro::exports {

// Ids of the export formats, in the order of the table and of the Export dialog's list.
enum ExportFormatId : int32_t {
  kExportPdf = 0,
  kExportHtml = 1,
  kExportRtf = 2,
  kExportPlainText = 3,
};

// One row of the format table. The Save dialog filter is the name plus its patterns.
struct ExportFormat {
  int32_t id;
  const char* name;
  const char* description;
  const char* extension;
  const char* filterName;
  std::span<const char* const> filterPatterns;
};

// The four rows, PDF first.
std::span<const ExportFormat> ExportFormats();
// The row with this id, or null: an unknown id makes the export do nothing.
const ExportFormat* FindExportFormat(int32_t id);

// A document path of at least three characters ending in ".md", in any case.
bool IsMarkdownPath(std::string_view path);

// The name an export shows as its title: the text after the last '/', or "Untitled" for an
// empty path.
std::string ExportTitle(std::string_view documentPath);

// The Save dialog's initial file name: the document's file name with everything from its last
// "." removed, followed by `extension`; empty when the document has no path.
std::string ExportInitialFileName(std::string_view documentPath, std::string_view extension);

// One row of the thresholds table: up to `maxLines` lines the export runs; above it the user
// is asked `question` (with the line count for %d) whether to open the viewer instead.
struct ExportThreshold {
  int32_t format;
  bool markdown;
  int32_t maxLines;
  const char* question;
};

// The rows with a line limit. HTML, PDF and RTF have one; plain text has none.
std::span<const ExportThreshold> ExportThresholds();

// The viewer question when `lineCount` is above the format's limit, otherwise nullopt.
std::optional<std::string> ViewerOfferQuestion(int32_t format, bool markdown, int32_t lineCount);

// HTML export asks before starting when the text is long: over 10,000,000 bytes the "very
// large" question with the size in whole millions of bytes and the line count, over 1,000,000
// bytes the "may take a while" question; otherwise nullopt.
std::optional<std::string> HtmlSizeQuestion(int64_t textLength, int32_t lineCount);

// Progress goes out every ProgressStep lines counted from line 0: every 50 lines for a document
// of at most 1,000 lines, otherwise every lineCount / 100 lines.
int32_t ProgressStep(int64_t lineCount);

// True when the 0-based line `index` is one whose 1-based number is posted as progress.
inline bool IsProgressLine(int64_t index, int32_t step) { return index % step == 0; }

// The progress value that means the export is finishing (the Markdown worker sends it when
// its estimate is used up).
inline constexpr uint32_t kProgressFinalizing = 0xFFFFFFFF;

// The progress dialog's status for a progress value: "Finalizing..." for kProgressFinalizing,
// otherwise "Exporting line N of T  (P%)" with P = N * 100 / T (0 when T is 0 or less).
std::string ProgressStatusText(uint32_t line, int32_t total);

// The elapsed-time text of the completion messages: "M:SS min" from one minute on, "S.mmm sec"
// below a minute, "H:MM:SS" from an hour on.
std::string ElapsedTimeText(uint64_t milliseconds);

// Texts of the progress dialogs and completion messages.
inline constexpr std::string_view kExportMessageTitle = "Nebro - Export";
inline constexpr std::string_view kHtmlExportTitle = "Nebro - HTML Export";
inline constexpr std::string_view kRtfExportTitle = "Nebro - RTF Export";
inline constexpr std::string_view kStatusPreparing = "Preparing...";
inline constexpr std::string_view kStatusFinalizing = "Finalizing...";
inline constexpr std::string_view kStatusCancelling = "Cancelling...";
inline constexpr std::string_view kRtfStatusPreparing = "Preparing RTF...";
inline constexpr std::string_view kRtfStatusFinalizing = "Finalizing RTF...";

// "HTML exported successfully.\n\nExport time:  <elapsed>\n\nOpen in browser?"
std::string HtmlDoneQuestion(uint64_t milliseconds);

}  // namespace nebro::exports
