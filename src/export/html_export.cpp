#include "export/html_export.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "export/byte_writer.h"
#include "export/export_rules.h"

namespace nebro::exports {
namespace {

// How each text byte comes out in a code line: most bytes as themselves, five characters as
// entities and tab as four blanks. Replacements are padded to 8 bytes so they copy in one go.
struct Escape {
  char text[8];
  uint8_t length;  // 0: the byte is copied as it is
};

constexpr std::array<Escape, 256> MakeEscapes() {
  std::array<Escape, 256> table{};
  auto set = [&table](unsigned char c, const char* text) {
    Escape& e = table[c];
    uint8_t n = 0;
    while (text[n]) {
      e.text[n] = text[n];
      ++n;
    }
    e.length = n;
  };
  set('&', "&amp;");
  set('<', "&lt;");
  set('>', "&gt;");
  set('"', "&quot;");
  set('\'', "&#39;");
  set('\t', "    ");
  return table;
}

constexpr std::array<Escape, 256> kEscapes = MakeEscapes();
// Text bytes handled per request for room, so that a huge line needs no huge promise.
constexpr size_t kBlock = 1024;

// "<span class=\"sN\">" for every style number, ready to copy.
struct SpanOpen {
  char text[24];
  uint8_t length;
};

std::array<SpanOpen, kExportStyleCount> MakeSpanOpens() {
  std::array<SpanOpen, kExportStyleCount> opens{};
  for (int n = 0; n < kExportStyleCount; ++n) {
    const std::string text = "<span class=\"s" + std::to_string(n) + "\">";
    std::memcpy(opens[n].text, text.data(), text.size());
    opens[n].length = static_cast<uint8_t>(text.size());
  }
  return opens;
}

std::string FontDeclarations(const std::string& font) {
  return "font-family: '" + font + "', monospace; font-size: 11pt;";
}

std::string PageHead(const HtmlExportInput& in) {
  const std::string bg = ColourText(in.pageBackground);
  const std::string font = FontDeclarations(in.fontName);
  std::string head;
  head.reserve(8192);
  head += "<!DOCTYPE html>\n<html>\n<head>\n";
  head += "    <meta charset=\"UTF-8\">\n";
  head += "    <meta name=\"viewport\" content=\"width=device-width, initial-scale=1.0\">\n";
  head += "    <title>" + in.title + " - Nebro Export</title>\n";
  head += "    <style>\n";
  head += "        * { margin: 0; padding: 0; box-sizing: border-box; }\n";
  head += "        body { background-color: " + bg + "; " + font + " line-height: 1.5; }\n";
  head += "        .code-container { display: flex; flex-direction: row; min-height: 100vh; }\n";
  head += "        .line-numbers { background-color: " + bg +
          "; color: #606060; text-align: right; padding: 20px 10px 20px 20px; "
          "user-select: none; border-right: 1px solid #444; " +
          font + " line-height: 1.5; min-width: 50px; }\n";
  head += "        .line-number { height: 1.5em; line-height: 1.5em; white-space: pre; }\n";
  head += "        .code-content { background-color: " + bg +
          "; padding: 20px; flex: 1; overflow-x: auto; " + font + " }\n";
  head += "        .code-line { height: 1.5em; line-height: 1.5em; white-space: pre; }\n";
  for (int n = 0; n < kExportStyleCount; ++n) {
    const ExportStyle& s = in.styles[n];
    if (s.fore == 0 && s.back == 0 && !s.bold && !s.italic) continue;
    head += "        .s" + std::to_string(n) + " { ";
    // Black text counts as unset: it gets no colour of its own.
    if (s.fore != 0) head += "color: " + ColourText(s.fore) + "; ";
    if (s.back != 0 && s.back != in.pageBackground)
      head += "background-color: " + ColourText(s.back) + "; ";
    if (s.bold) head += "font-weight: bold; ";
    if (s.italic) head += "font-style: italic; ";
    head += "}\n";
  }
  head += "    </style>\n</head>\n<body>\n";
  head += "<div class=\"code-container\">\n";
  head += "    <div class=\"line-numbers\">\n";
  return head;
}

constexpr std::string_view kNumberOpen = "        <div class=\"line-number\">";
constexpr std::string_view kLineOpen = "        <div class=\"code-line\">";
constexpr std::string_view kDivClose = "</div>\n";
constexpr std::string_view kSpanClose = "</span>";
// The most one text byte can add to a code line: closing the previous span, opening the next
// (copied as a whole 24-byte entry) and an escape (copied as a whole 8-byte entry).
constexpr size_t kMostPerByte = kSpanClose.size() + sizeof(SpanOpen::text) + sizeof(Escape::text);

// One row of the number column, "        <div class=\"line-number\">N</div>\n", kept whole and
// counted up in place, so each row is one fixed-size copy.
class NumberRow {
 public:
  static constexpr size_t kCapacity = 64;

  NumberRow() {
    std::memcpy(row_, kNumberOpen.data(), kNumberOpen.size());
    row_[kNumberOpen.size()] = '1';
    std::memcpy(row_ + kNumberOpen.size() + 1, kDivClose.data(), kDivClose.size());
  }
  const char* data() const { return row_; }
  size_t size() const { return kNumberOpen.size() + digits_ + kDivClose.size(); }

  void Increment() {
    char* first = row_ + kNumberOpen.size();
    for (char* d = first + digits_; d-- > first;) {
      if (*d != '9') {
        ++*d;
        return;
      }
      *d = '0';
    }
    // All nines: one digit more, "1" followed by zeros.
    *first = '1';
    first[digits_] = '0';
    ++digits_;
    std::memcpy(first + digits_, kDivClose.data(), kDivClose.size());
  }

 private:
  char row_[kCapacity] = {};
  size_t digits_ = 1;
};

ExportResult GenerateHtml(const HtmlExportInput& in, ByteWriter& w, const ExportMonitor& monitor) {
  static const std::array<SpanOpen, kExportStyleCount> spanOpens = MakeSpanOpens();
  const std::string_view text = in.document.text;
  const size_t len = text.size();
  const char* t = text.data();
  const auto* styles = reinterpret_cast<const unsigned char*>(in.document.styles.data());

  if (!w.Append(PageHead(in))) return w.failure();

  // The number column comes first, so the lines are counted before any is written.
  const int64_t lines = 1 + CountLineFeeds(text);
  NumberRow row;
  for (int64_t i = 1; i <= lines; ++i, row.Increment()) {
    if (!w.Room(NumberRow::kCapacity)) return w.failure();
    std::memcpy(w.cursor(), row.data(), NumberRow::kCapacity);
    w.cursor() += row.size();
  }
  if (!w.Append("    </div>\n    <div class=\"code-content\">\n")) return w.failure();

  const int32_t step = ProgressStep(in.lineCount);
  int32_t untilProgress = 0;
  size_t pos = 0;
  for (int64_t k = 0;; ++k) {
    if (monitor.isCancelled && monitor.isCancelled()) return ExportResult::Cancelled;
    if (untilProgress == 0) {
      if (monitor.onProgress) monitor.onProgress(static_cast<uint32_t>(k + 1));
      untilProgress = step;
    }
    --untilProgress;

    const void* lf = len > pos ? std::memchr(t + pos, '\n', len - pos) : nullptr;
    const size_t lineEnd = lf ? static_cast<size_t>(static_cast<const char*>(lf) - t) : len;
    if (!w.Room(kLineOpen.size() + sizeof(SpanOpen::text))) return w.failure();
    w.Put(kLineOpen);

    if (pos < lineEnd) {
      // Runs are the bytes whose style numbers agree in their low seven bits; every run gets
      // a span, style 0 included.
      unsigned style = styles[pos] & 0x7F;
      std::memcpy(w.cursor(), spanOpens[style].text, sizeof(SpanOpen::text));
      w.cursor() += spanOpens[style].length;
      size_t i = pos;
      while (i < lineEnd) {
        const size_t blockEnd = std::min(lineEnd, i + kBlock);
        if (!w.Room((blockEnd - i) * kMostPerByte + kSpanClose.size() + kDivClose.size()))
          return w.failure();
        char* p = w.cursor();
        for (; i < blockEnd; ++i) {
          const unsigned next = styles[i] & 0x7F;
          if (next != style) {
            std::memcpy(p, kSpanClose.data(), kSpanClose.size());
            p += kSpanClose.size();
            std::memcpy(p, spanOpens[next].text, sizeof(SpanOpen::text));
            p += spanOpens[next].length;
            style = next;
          }
          const unsigned char c = static_cast<unsigned char>(t[i]);
          const Escape& e = kEscapes[c];
          if (e.length == 0) {
            *p++ = static_cast<char>(c);
          } else {
            std::memcpy(p, e.text, sizeof e.text);
            p += e.length;
          }
        }
        w.cursor() = p;
      }
      w.Put(kSpanClose);
    } else if (!w.Room(kDivClose.size())) {
      return w.failure();
    }
    w.Put(kDivClose);
    if (!lf) break;
    pos = lineEnd + 1;
  }

  if (!w.Append("</div>\n    </div>\n</div>\n</body>\n</html>")) return w.failure();
  return ExportResult::Ok;
}

}  // namespace

ExportResult BuildHtmlPage(const HtmlExportInput& in, ExportBytes& out, const ExportMonitor& monitor) {
  out.clear();
  const size_t len = in.document.text.size();
  ExportResult result = ExportResult::Ok;
  if (in.document.styles.size() != len)
    result = ExportResult::BadInput;
  else if (len > (SIZE_MAX - 20000) / 3 || !out.Reserve(3 * len + 20000))
    result = ExportResult::OutOfMemory;
  if (result == ExportResult::Ok) {
    ByteWriter w(out);
    result = GenerateHtml(in, w, monitor);
    if (result == ExportResult::Ok) w.Finish();
  }
  if (result != ExportResult::Ok) out.release();
  return result;
}

ExportResult ExportHtmlToFile(const HtmlExportInput& in, const std::string& path,
                              const ExportMonitor& monitor) {
  if (in.document.styles.size() != in.document.text.size()) return ExportResult::BadInput;
  return StreamToFile(path, [&](ExportBytes& buffer, FileSink* sink) {
    ByteWriter w(buffer, sink);
    ExportResult result = GenerateHtml(in, w, monitor);
    if (result == ExportResult::Ok && !w.Finish()) result = w.failure();
    return result;
  });
}

}  // namespace nebro::exports
