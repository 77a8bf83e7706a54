// Fuzzes the HTML and RTF generators with any text, any style bytes (also 128 and above) and any
// style table, font name and size. Beyond "no crash, no sanitizer report": both succeed, the
// page ends as a page ends, and the RTF's braces balance.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "export/html_export.h"
#include "export/rtf_export.h"

namespace {

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "export_fuzz: %s\n", what);
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace nebro::exports;
  if (size < 8) return 0;
  // The first bytes pick the font, the size and the theme; the rest is text and styles.
  const std::string fontName(reinterpret_cast<const char*>(data), data[0] % 8);
  const int fontSize = static_cast<int8_t>(data[1]);
  const bool dark = data[2] & 1;
  const std::string rest(reinterpret_cast<const char*>(data) + 3, size - 3);
  const size_t half = rest.size() / 2;
  const std::string text = rest.substr(0, half), styles = rest.substr(half, half);
  ExportStyleTable table{};
  for (int i = 0; i < kExportStyleCount; ++i) {
    const uint8_t b = static_cast<uint8_t>(text.empty() ? i : text[static_cast<size_t>(i) % text.size()]);
    table[static_cast<size_t>(i)] = {static_cast<nebro::Colour>(b * 0x010203u), static_cast<nebro::Colour>(b * 0x030201u),
                                     (b & 1) != 0, (b & 2) != 0};
  }
  int64_t lines = 1;
  for (char c : text) lines += c == '\n';

  HtmlExportInput html{{text, styles}, table, 0x202020, fontName, fontName, lines};
  ExportBytes page;
  Check(BuildHtmlPage(html, page) == ExportResult::Ok, "the page failed");
  const std::string_view p(page.data(), page.size());
  Check(p.size() >= 7 && p.substr(p.size() - 7) == "</html>", "the page does not end as a page");

  RtfExportInput rtf{{text, styles}, table, dark, fontName, fontSize, lines};
  ExportBytes doc;
  const ExportResult r = BuildRtf(rtf, doc);
  if (text.empty()) return 0;
  Check(r == ExportResult::Ok, "the RTF failed");
  long depth = 0;
  const std::string_view d(doc.data(), doc.size());
  for (size_t i = 0; i < d.size(); ++i) {
    if (d[i] == '\\') ++i;  // an escaped brace is text
    else if (d[i] == '{') ++depth;
    else if (d[i] == '}') Check(--depth >= 0, "an RTF group closes that never opened");
  }
  Check(depth == 0, "RTF groups left open");
  return 0;
}
