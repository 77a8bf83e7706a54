// Build (from the repository root): clang++ -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -Isrc -Itests/markdown fuzz/markdown_fuzz.cpp src/markdown/markdown_page.cpp src/markdown/markdown_inline.cpp src/common/utf.cpp src/common/colour.cpp src/appearance/themes.cpp -o markdown_fuzz
//
// Fuzzes the Markdown renderer and its options. The first bytes choose the theme number (any
// 32-bit value, so out-of-range ones too), the editor font and size and the document path; the
// rest is the text, rendered through the UTF-8 entry and, read as UTF-16 units, through the
// UTF-16 entry. Beyond "no crash, no sanitizer report" it checks that every page is well-formed
// UTF-8 with the head and tail in place, and that the body equals what the plain model in
// tests/markdown/markdown_model.h gives for the same text.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "common/utf.h"
#include "markdown/markdown_html.h"
#include "markdown_model.h"

namespace {

constexpr std::string_view kBodyStart = "<div class=\"content\">\n";
constexpr std::string_view kTail = "</div>\n</body>\n</html>\n";

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "markdown_fuzz: %s\n", what);
    std::abort();
  }
}

bool IsUtf8(const std::string& s) { return nebro::Utf16ToUtf8(nebro::Utf8ToUtf16(s)) == s; }

std::string BodyOf(const std::string& page) {
  const size_t start = page.find(kBodyStart);
  Check(start != std::string::npos, "no body start");
  Check(page.size() >= kTail.size() &&
            page.compare(page.size() - kTail.size(), kTail.size(), kTail) == 0,
        "no tail");
  const size_t from = start + kBodyStart.size();
  return page.substr(from, page.size() - kTail.size() - from);
}

nebro::markdown::MarkdownPageOptions OptionsFrom(const uint8_t*& data, size_t& size) {
  nebro::markdown::MarkdownPageOptions options;
  if (size < 7) return options;
  std::memcpy(&options.theme, data, 4);
  static const char* const kFonts[] = {"Consolas",
                                       "cOURIER nEW",
                                       "",
                                       "Georgia",
                                       "Monaco ",
                                       "caf\xC3\xA9 Serif",
                                       "bad\xFF"
                                       "font",
                                       "Fira Code"};
  options.fontName = kFonts[data[4] % std::size(kFonts)];
  options.fontSize = static_cast<int8_t>(data[5]);
  static const char* const kPaths[] = {"", "/tmp/<y>.md", "notes.md", "/a/b/", "/x/\xE2\x82.md"};
  options.documentPath = kPaths[data[6] % std::size(kPaths)];
  data += 7;
  size -= 7;
  return options;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const nebro::markdown::MarkdownPageOptions options = OptionsFrom(data, size);
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const bool compareWithModel = size <= 64 * 1024;

  std::string page;
  const bool rendered = nebro::markdown::RenderMarkdownPage(text, options, page);
  Check(rendered == !text.empty(), "result does not follow emptiness");
  if (rendered) {
    Check(IsUtf8(page), "page is not UTF-8");
    const std::string body = BodyOf(page);
    if (compareWithModel) {
      Check(body == markdown_model::Body(nebro::Utf8ToUtf16(text)), "UTF-8 body differs");
    }
  }

  // The same bytes as UTF-16 code units, lone surrogates and all.
  std::u16string wide(size / 2, u'\0');
  if (!wide.empty()) std::memcpy(wide.data(), data, wide.size() * 2);
  std::string widePage;
  Check(nebro::markdown::RenderMarkdownPage(wide, options, widePage) == !wide.empty(), "UTF-16 result");
  if (!wide.empty()) {
    Check(IsUtf8(widePage), "UTF-16 page is not UTF-8");
    if (compareWithModel) {
      Check(BodyOf(widePage) == markdown_model::Body(wide), "UTF-16 body differs");
    }
  }

  // Inline rendering and escaping of the whole text as one block.
  if (compareWithModel) {
    const std::u16string asUtf16 = nebro::Utf8ToUtf16(text);
    Check(nebro::markdown::RenderInlineMarkdown(text) == markdown_model::Inline(asUtf16), "inline differs");
    Check(nebro::markdown::EscapeHtmlUtf8(text) == markdown_model::Escape(asUtf16), "escape differs");
    Check(nebro::markdown::RenderInlineMarkdown(std::u16string_view(wide)) == markdown_model::Inline(wide),
          "UTF-16 inline differs");
  }

  // Stopping at the first progress call leaves the string as it was.
  if (!text.empty()) {
    std::string kept = "kept";
    auto stop = [](uint32_t, uint32_t) { return false; };
    Check(!nebro::markdown::RenderMarkdownPage(text, options, kept, stop) && kept == "kept", "stop");
  }
  return 0;
}
