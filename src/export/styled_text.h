// The document as the exporters take it: the editor's UTF-8 bytes and, beside them, one style
// byte per text byte, plus what the editor's 128 styles look like.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/colour.h"

namespace nebro::exports {

inline constexpr int kExportStyleCount = 128;

// One editor style as SCI_STYLEGETFORE, SCI_STYLEGETBACK, SCI_STYLEGETBOLD and
// SCI_STYLEGETITALIC report it.
struct ExportStyle {
  Colour fore = 0;
  Colour back = 0;
  bool bold = false;
  bool italic = false;
};

using ExportStyleTable = std::array<ExportStyle, kExportStyleCount>;

// Two parallel arrays of equal length: text[i] is drawn in style styles[i]. The views do not
// own the bytes; whoever fills them keeps the storage alive for the export.
struct StyledText {
  std::string_view text;
  std::string_view styles;
};

// Splits SCI_GETSTYLEDTEXT's output (text byte, style byte, text byte, style byte, ...) into
// the two parallel arrays. An odd trailing byte is a text byte without a style and is dropped.
void SplitStyledText(std::string_view interleaved, std::string& text, std::string& styles);

// The number of LF bytes in `text`.
int64_t CountLineFeeds(std::string_view text);

// The number of lines the editor shows for `text` (what SCI_GETLINECOUNT answers): one more
// than the number of line ends, where CR LF, a lone CR and a lone LF each end one line.
int64_t CountEditorLines(std::string_view text);

}  // namespace nebro::exports
