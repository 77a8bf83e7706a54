// The Markdown page: font and title, the head with its CSS, then one block per input line.
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "common/colour.h"
#include "common/utf.h"
#include "markdown/markdown_html.h"
#include "markdown/markdown_inline.h"

namespace nebro::markdown {
namespace {

using detail::HtmlBuffer;

// Editor faces that make a poor reading font; a page edited in one of them is set in Segoe UI.
constexpr std::string_view kMonospaceFaces[] = {
    "Courier New", "Consolas",        "Lucida Console", "Cascadia Code", "Cascadia Mono",
    "Fira Code",   "Source Code Pro", "Inconsolata",    "Monaco",
};

constexpr std::string_view kDefaultFace = "Segoe UI";
constexpr int kDefaultSize = 10;

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

// Invalid UTF-8 in a name becomes U+FFFD, as the conversion of the text does.
std::string CleanUtf8(std::string_view s) { return Utf16ToUtf8(Utf8ToUtf16(s)); }

std::string BuildHead(const MarkdownPageOptions& options) {
  const appearance::ThemeColors& theme = appearance::ThemeColorsFor(options.theme);
  const std::string background = ColourText(theme.editorBackground);
  const std::string heading = ColourText(theme.dialogText);
  const std::string text = ColourText(theme.editorText);
  const std::string muted = ColourText(theme.mutedText);
  const std::string rule = ColourText(theme.border);
  const std::string codeBackground = ColourText(theme.listBackground);
  const MarkdownFont font = ChooseMarkdownFont(options.fontName, options.fontSize);

  std::string h;
  h.reserve(2048);
  h += "<!DOCTYPE html>\n<html>\n<head>\n";
  h += "  <meta charset=\"UTF-8\">\n";
  h += "  <meta name=\"viewport\" content=\"width=device-width, initial-scale=1.0\">\n";
  h += "  <title>" + MarkdownPageTitle(options.documentPath) + "</title>\n";
  h += "  <style>\n";
  h += "    * { margin: 0; padding: 0; box-sizing: border-box; }\n";
  h += "    body { background: " + background + "; color: " + text + "; ";
  h += "font-family: '" + font.name + "', 'Segoe UI', sans-serif; ";
  h += "font-size: " + std::to_string(font.size) + "pt; line-height: 1.6; }\n";
  h += "    .content { max-width: 860px; margin: 0 auto; padding: 40px 32px; }\n";
  h += "    h1 { font-size: 2em;   color: " + heading + "; border-bottom: 1px solid " + rule +
       "; padding-bottom: 6px; margin: 1.2em 0 0.5em; }\n";
  h += "    h2 { font-size: 1.5em; color: " + heading + "; margin: 1em 0 0.4em; }\n";
  h += "    h3 { font-size: 1.2em; color: " + heading + "; margin: 0.8em 0 0.3em; }\n";
  h += "    p  { margin: 0.4em 0; }\n";
  h += "    ul, ol { margin: 0.3em 0 0.3em 1.6em; }\n";
  h += "    li { margin: 0.15em 0; }\n";
  h += "    blockquote { border-left: 3px solid " + rule +
       "; margin: 0.5em 0; padding: 0.2em 0 0.2em 1em; color: " + muted +
       "; font-style: italic; }\n";
  h += "    hr { border: none; border-top: 1px solid " + rule + "; margin: 1em 0; }\n";
  h += "    code { background: " + codeBackground + "; color: " + muted +
       "; font-family: 'Courier New', monospace; font-size: 0.9em; padding: 1px 4px; "
       "border-radius: 3px; }\n";
  h += "    strong { color: " + heading + "; }\n";
  h += "  </style>\n";
  h += "</head>\n<body>\n<div class=\"content\">\n";
  return h;
}

constexpr std::string_view kTail = "</div>\n</body>\n</html>\n";

inline bool IsTrimmed(unsigned char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
inline bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }

inline bool StartsWith(const unsigned char* s, size_t n, std::string_view prefix) {
  return n >= prefix.size() && std::memcmp(s, prefix.data(), prefix.size()) == 0;
}

// Walks the text line by line: a lone CR, a lone LF and CR LF each end a line, and a break at
// the very end does not start another one. The next CR and the next LF are each searched for
// once and kept until the walk passes them, so mixed line ends stay linear.
class LineWalker {
 public:
  explicit LineWalker(std::string_view text)
      : p_(reinterpret_cast<const unsigned char*>(text.data())), end_(p_ + text.size()) {}

  bool Next(const unsigned char*& begin, const unsigned char*& end) {
    if (p_ >= end_) return false;
    if (nextLf_ < p_) nextLf_ = Find('\n');
    if (nextCr_ < p_) nextCr_ = Find('\r');
    const unsigned char* eol = std::min(nextLf_, nextCr_);
    begin = p_;
    end = eol;
    p_ = eol;
    if (p_ < end_) p_ += (*p_ == '\r' && p_ + 1 < end_ && p_[1] == '\n') ? 2 : 1;
    return true;
  }

 private:
  const unsigned char* Find(unsigned char c) const {
    const void* hit = std::memchr(p_, c, static_cast<size_t>(end_ - p_));
    return hit ? static_cast<const unsigned char*>(hit) : end_;
  }

  const unsigned char* p_;
  const unsigned char* end_;
  const unsigned char* nextLf_ = nullptr;
  const unsigned char* nextCr_ = nullptr;
};

uint32_t CountLines(std::string_view text) {
  LineWalker lines(text);
  const unsigned char* b;
  const unsigned char* e;
  uint32_t count = 0;
  while (lines.Next(b, e)) ++count;
  return count;
}

struct ListState {
  bool ulOpen = false;
  bool olOpen = false;
};

void CloseLists(HtmlBuffer& out, ListState& lists) {
  if (lists.ulOpen) {
    out.Append("</ul>\n");
    lists.ulOpen = false;
  }
  if (lists.olOpen) {
    out.Append("</ol>\n");
    lists.olOpen = false;
  }
}

void AppendBlock(HtmlBuffer& out, std::string_view open, const unsigned char* s, size_t n,
                 std::string_view close) {
  out.Append(open);
  detail::AppendInline(out, s, n);
  out.Append(close);
}

// Length of the "N. " or "NN. " marker that starts an ordered item, or 0.
size_t OrderedMarker(const unsigned char* s, size_t n) {
  if (n >= 3 && IsDigit(s[0]) && s[1] == '.' && s[2] == ' ') return 3;
  if (n >= 4 && IsDigit(s[0]) && IsDigit(s[1]) && s[2] == '.' && s[3] == ' ') return 4;
  return 0;
}

void RenderLine(HtmlBuffer& out, ListState& lists, const unsigned char* s, size_t n) {
  while (n > 0 && IsTrimmed(*s)) {
    ++s;
    --n;
  }
  while (n > 0 && IsTrimmed(s[n - 1])) --n;

  if (n == 0) {
    CloseLists(out, lists);
    out.Append("<p></p>\n");
    return;
  }
  if (n == 3 && (StartsWith(s, n, "---") || StartsWith(s, n, "***") || StartsWith(s, n, "___"))) {
    CloseLists(out, lists);
    out.Append("<hr>\n");
    return;
  }
  if (n > 4 && StartsWith(s, n, "### ")) {
    CloseLists(out, lists);
    AppendBlock(out, "<h3>", s + 4, n - 4, "</h3>\n");
    return;
  }
  if (n > 3 && StartsWith(s, n, "## ")) {
    CloseLists(out, lists);
    AppendBlock(out, "<h2>", s + 3, n - 3, "</h2>\n");
    return;
  }
  if (n > 2 && StartsWith(s, n, "# ")) {
    CloseLists(out, lists);
    AppendBlock(out, "<h1>", s + 2, n - 2, "</h1>\n");
    return;
  }
  if (n > 2 && (StartsWith(s, n, "- ") || StartsWith(s, n, "* "))) {
    if (lists.olOpen) {
      out.Append("</ol>\n");
      lists.olOpen = false;
    }
    if (!lists.ulOpen) {
      out.Append("<ul>\n");
      lists.ulOpen = true;
    }
    AppendBlock(out, "  <li>", s + 2, n - 2, "</li>\n");
    return;
  }
  if (n > 2 && StartsWith(s, n, "> ")) {
    CloseLists(out, lists);
    AppendBlock(out, "<blockquote>", s + 2, n - 2, "</blockquote>\n");
    return;
  }
  if (const size_t marker = OrderedMarker(s, n)) {
    if (lists.ulOpen) {
      out.Append("</ul>\n");
      lists.ulOpen = false;
    }
    if (!lists.olOpen) {
      out.Append("<ol>\n");
      lists.olOpen = true;
    }
    AppendBlock(out, "  <li>", s + marker, n - marker, "</li>\n");
    return;
  }
  CloseLists(out, lists);
  AppendBlock(out, "<p>", s, n, "</p>\n");
}

// A big page is written once from start to end. Asking for huge pages on its buffer turns about
// 500 page faults into one, which on this kind of machine is a large part of the whole cost.
void AdviseLargePages(std::string& out) {
#if defined(MADV_HUGEPAGE)
  constexpr uintptr_t kHuge = uintptr_t{2} << 20;
  if (out.capacity() < 4 * kHuge) return;
  const auto begin = reinterpret_cast<uintptr_t>(out.data());
  const uintptr_t from = (begin + kHuge - 1) & ~(kHuge - 1);
  const uintptr_t to = (begin + out.capacity()) & ~(kHuge - 1);
  if (to > from) madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
#else
  (void)out;
#endif
}

bool WriteFile(const std::string& path, const std::string& bytes) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
  const bool closed = std::fclose(f) == 0;
  return written && closed;
}

}  // namespace

MarkdownFont ChooseMarkdownFont(std::string_view editorFontName, int editorFontSize) {
  for (std::string_view face : kMonospaceFaces) {
    if (EqualIgnoringCase(editorFontName, face)) return {std::string(kDefaultFace), kDefaultSize};
  }
  if (editorFontName.empty()) return {std::string(kDefaultFace), kDefaultSize};
  return {CleanUtf8(editorFontName), editorFontSize > 0 ? editorFontSize : kDefaultSize};
}

std::string MarkdownPageTitle(std::string_view documentPath) {
  if (documentPath.empty()) return "Untitled";
  const size_t slash = documentPath.rfind('/');
  return CleanUtf8(slash == std::string_view::npos ? documentPath : documentPath.substr(slash + 1));
}

bool RenderMarkdownPage(std::string_view markdownUtf8, const MarkdownPageOptions& options,
                        std::string& out, const MarkdownProgress& progress) {
  if (markdownUtf8.empty()) return false;

  uint32_t lineCount = 0;
  uint32_t step = 0;
  if (progress) {
    lineCount = CountLines(markdownUtf8);
    step = lineCount <= 1000 ? 50 : lineCount / 100;
  }

  const size_t start = out.size();
  // Pages usually come out between 1.1 and 1.7 times as long as their text. Address space is
  // cheap where memory is not: reserving twice the text touches no page yet and spares a copy of
  // everything written so far when the page outgrows a tighter guess.
  const size_t estimate = 2 * markdownUtf8.size() + 65536;
  if (out.capacity() - start < estimate) out.reserve(start + estimate);
  AdviseLargePages(out);

  HtmlBuffer html(out);
  html.Append(BuildHead(options));
  ListState lists;
  LineWalker lines(markdownUtf8);
  const unsigned char* b;
  const unsigned char* e;
  uint32_t index = 0;
  while (lines.Next(b, e)) {
    if (step != 0 && index % step == 0 && !progress(index + 1, lineCount)) {
      html.Finish();
      out.resize(start);
      return false;
    }
    ++index;
    RenderLine(html, lists, b, static_cast<size_t>(e - b));
  }
  CloseLists(html, lists);
  html.Append(kTail);
  html.Finish();
  return true;
}

bool RenderMarkdownPage(std::u16string_view markdownText, const MarkdownPageOptions& options,
                        std::string& out, const MarkdownProgress& progress) {
  return RenderMarkdownPage(std::string_view(detail::UnitsToUtf8(markdownText)), options,
                            out, progress);
}

bool RenderMarkdownToHtmlFile(const std::string& outputPath, std::string_view markdownUtf8,
                              const MarkdownPageOptions& options,
                              const MarkdownProgress& progress) {
  std::string html;
  if (!RenderMarkdownPage(markdownUtf8, options, html, progress)) return false;
  return WriteFile(outputPath, html);
}

bool RenderMarkdownToHtmlFile(const std::string& outputPath, std::u16string_view markdownText,
                              const MarkdownPageOptions& options,
                              const MarkdownProgress& progress) {
  std::string html;
  if (!RenderMarkdownPage(markdownText, options, html, progress)) return false;
  return WriteFile(outputPath, html);
}

}  // namespace nebro::markdown
