// The plain-text export: the editor's bytes exactly as they are, no byte-order mark, line ends
// untouched.
#pragma once

#include <string>
#include <string_view>

#include "export/export_output.h"

namespace nebro::exports {

// Writes `text` as the whole file at `path` (WriteExportFile). The caller reports
// "Cannot create file." only for CannotCreate: the export counts as done whatever happens to
// the write itself.
ExportResult WritePlainTextExport(std::string_view text, const std::string& path);

inline constexpr std::string_view kPlainTextCannotCreate = "Cannot create file.";
inline constexpr std::string_view kPlainTextDone = "File exported successfully as plain text.";

}  // namespace nebro::exports
