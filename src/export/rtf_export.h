// The RTF document: the editor's colours, bold and italic in the editor font, for word
// processors. Non-ASCII text goes out as \uN? escapes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/colour.h"
#include "export/export_output.h"
#include "export/styled_text.h"

namespace nebro::exports {

struct RtfExportInput {
  StyledText document;
  // Foreground, bold and italic are used; backgrounds are not exported.
  ExportStyleTable styles{};
  // The theme's dark flag: dark themes get their light colours darkened for paper.
  bool darkTheme = false;
  // The editor font's face name in UTF-8; at most its first 127 bytes are used (cut at a
  // character boundary).
  std::string fontName;
  // The editor font size in points.
  int fontSize = 10;
  // The editor's line count (SCI_GETLINECOUNT); it sets the progress step.
  int64_t lineCount = 0;
};

// The colour a style gets on paper: on a dark theme a colour whose brightness (the integer
// part of 0.299 R + 0.587 G + 0.114 B in single precision) is above 180 is scaled to 35 % per
// channel; light themes keep every colour.
Colour RtfPaperColour(Colour colour, bool darkTheme);

// Builds the RTF into `out`. Runs of equal style (a style byte of 128 or more counts as style
// 0) become groups; the cancel hook is asked once per text line. On cancel or failure `out` is
// left empty.
ExportResult BuildRtf(const RtfExportInput& input, ExportBytes& out,
                      const ExportMonitor& monitor = {});

// Builds the RTF straight into a new file beside `path`, through a small buffer, and puts it
// in place of `path` when it is complete; on cancel or failure `path` stays as it was.
ExportResult ExportRtfToFile(const RtfExportInput& input, const std::string& path,
                             const ExportMonitor& monitor = {});

// From this size on the finished RTF is written by a worker under a progress dialog.
inline constexpr size_t kRtfWorkerThreshold = 512000;

inline constexpr std::string_view kRtfNothingToExport = "Nothing to export.";
inline constexpr std::string_view kRtfCannotCreate = "Cannot create RTF file.";
inline constexpr std::string_view kRtfWriteError = "Error writing RTF file.";
inline constexpr std::string_view kRtfFailedOrCancelled = "RTF export failed or was cancelled.";

// "RTF exported successfully.\n\n<path>" (written at once, no time shown).
std::string RtfDoneText(std::string_view path);
// "RTF exported successfully.\n\nExport time: S.mmm sec\n\n<path>" (written by the worker).
std::string RtfDoneTimedText(uint64_t milliseconds, std::string_view path);

}  // namespace nebro::exports
