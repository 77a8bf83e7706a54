#include "export/plain_text_export.h"

namespace nebro::exports {

ExportResult WritePlainTextExport(std::string_view text, const std::string& path) {
  return WriteExportFile(path, text);
}

}  // namespace nebro::exports
