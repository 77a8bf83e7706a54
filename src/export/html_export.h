// The syntax-coloured HTML page: a column of line numbers beside a column of code lines, each
// line a sequence of spans whose classes stand for the editor's styles.
#pragma once

#include <cstdint>
#include <string>

#include "common/colour.h"
#include "export/export_output.h"
#include "export/styled_text.h"

namespace nebro::exports {

struct HtmlExportInput {
  StyledText document;
  ExportStyleTable styles{};
  // The theme's editorBackground: the page, the number column and the code column.
  Colour pageBackground = 0;
  // The document's file name (ExportTitle), written into <title> as it stands.
  std::string title;
  // The editor font's face name in UTF-8. The page always uses 11pt, whatever the editor size.
  std::string fontName;
  // The editor's line count (SCI_GETLINECOUNT); it sets the progress step.
  int64_t lineCount = 0;
};

// Builds the page into `out` in one pass over the text. Lines are split at LF only (a CR before
// it stays in the line); a text ending in LF has a final empty line. On cancel or failure `out`
// is left empty.
ExportResult BuildHtmlPage(const HtmlExportInput& input, ExportBytes& out,
                           const ExportMonitor& monitor = {});

// Builds the page straight into a new file beside `path`, through a small buffer, and puts it
// in place of `path` when it is complete; on cancel or failure `path` stays as it was.
ExportResult ExportHtmlToFile(const HtmlExportInput& input, const std::string& path,
                              const ExportMonitor& monitor = {});

}  // namespace nebro::exports
