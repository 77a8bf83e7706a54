// The Markdown renderer: one self-contained HTML page (UTF-8, inline CSS, no scripts) from the
// text of a Markdown document. The dialect is small and line-oriented: every line is classified
// on its own, without look-ahead and without joining lines into paragraphs.
//
// Everything here is a pure function of its arguments: it touches no window, no editor and no
// global state, so a worker thread may call it on its own copy of the text.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "appearance/themes.h"

namespace nebro::markdown {

// What the page takes from outside the text: the document path (its file name is the page
// title, "Untitled" when empty), the editor font and the theme (any number above 5 is theme 0).
struct MarkdownPageOptions {
  std::string documentPath;
  std::string fontName;  // UTF-8
  int fontSize = 0;      // points
  appearance::ThemeId theme = 0;
};

// The page font: "Segoe UI" at 10 for an empty name or any of the usual monospace faces (compared
// without regard to case), else the editor font at its size (10 when the size is not positive).
struct MarkdownFont {
  std::string name;
  int size = 10;
};
MarkdownFont ChooseMarkdownFont(std::string_view editorFontName, int editorFontSize);

// The file-name part of the path (after the last '/'), or "Untitled" for an empty path.
std::string MarkdownPageTitle(std::string_view documentPath);

// Called before a line is rendered, at the export framework's step (every 50 lines up to 1,000
// lines, else every line count / 100 lines, counted from line 0), with the 1-based number of that
// line and the number of lines of the text. Returning false stops the rendering.
using MarkdownProgress = std::function<bool(uint32_t line, uint32_t lineCount)>;

// Appends the whole page to `out`. Returns false and appends nothing when the text is empty or
// the progress callback asked to stop.
//
// Literal text reaches the page one UTF-16 code unit at a time, so every surrogate renders as
// U+FFFD: a character beyond U+FFFF (an emoji, say) becomes two U+FFFD. The UTF-8 form is the
// fast one and gives the same page as converting to UTF-16 first: each byte that starts no
// well-formed UTF-8 sequence renders as one U+FFFD.
bool RenderMarkdownPage(std::string_view markdownUtf8, const MarkdownPageOptions& options,
                        std::string& out, const MarkdownProgress& progress = {});
bool RenderMarkdownPage(std::u16string_view markdownText, const MarkdownPageOptions& options,
                        std::string& out, const MarkdownProgress& progress = {});

// Builds the page and writes it to `outputPath` in one write (binary, truncating, no BOM).
// Returns false, creating no file, when the text is empty or rendering was stopped; false when
// the file cannot be opened; otherwise whether the write and close succeeded.
bool RenderMarkdownToHtmlFile(const std::string& outputPath, std::string_view markdownUtf8,
                              const MarkdownPageOptions& options,
                              const MarkdownProgress& progress = {});
bool RenderMarkdownToHtmlFile(const std::string& outputPath, std::u16string_view markdownText,
                              const MarkdownPageOptions& options,
                              const MarkdownProgress& progress = {});

// The inline rendering of one block's text: **strong**, *em* and _em_ (one shared flag), `code`,
// everything else escaped; markers left open are closed at the end (code, em, strong).
std::string RenderInlineMarkdown(std::u16string_view text);
std::string RenderInlineMarkdown(std::string_view utf8);

// Literal text as HTML: tab becomes four blanks, & < > " ' become entities; surrogates and
// ill-formed bytes become U+FFFD as above.
std::string EscapeHtmlUtf8(std::u16string_view text);
std::string EscapeHtmlUtf8(std::string_view utf8);

}  // namespace nebro::markdown
