// The generators write through blocks of promised room and carry style runs across block and
// buffer boundaries. These tests hold them against a plain rendering of the same rules over
// random documents: runs of every length, escapes at every offset, characters split by style
// changes, lines longer than a block, and files many times the stream buffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>

#include "export/html_export.h"
#include "export/rtf_export.h"
#include "export_test_support.h"

using namespace nebro;
using namespace nebro::exports;
using namespace nebro::testing;

namespace {

Doc RandomDoc(std::mt19937& rng, size_t length) {
  static const char* const pieces[] = {
      "a", "b", "Z", "0", " ", " ", "x", "_", "&", "<", ">", "\"", "'", "\t", "\\", "{", "}",
      "\r", "\n", "\r\n", "\xC3\xA9", "\xE4\xB8\xAD", "\xEA\xB0\x80", "\xEF\xBF\xBF",
      "\xF0\x9F\x98\x80", "\x80", "\xFF", "\x01"};
  static const unsigned styles[] = {0, 1, 5, 11, 127, 128, 133, 255};
  Doc doc;
  unsigned style = 0;
  while (doc.text.size() < length) {
    // Runs are mostly short, sometimes long.
    if (rng() % 5 == 0) style = styles[rng() % 8];
    std::string_view piece = pieces[rng() % (sizeof pieces / sizeof pieces[0])];
    if (rng() % 3 == 0) piece = "abcdefgh";
    for (char c : piece) {
      doc.text += c;
      // Now and then a style change falls inside a character.
      doc.styles += static_cast<char>(rng() % 97 == 0 ? styles[rng() % 8] : style);
    }
  }
  return doc;
}

std::string HtmlCodeColumn(const Doc& doc) {
  std::string out;
  size_t pos = 0;
  for (;;) {
    const size_t lf = doc.text.find('\n', pos);
    const size_t end = lf == std::string::npos ? doc.text.size() : lf;
    out += "        <div class=\"code-line\">";
    for (size_t i = pos; i < end;) {
      const unsigned style = static_cast<unsigned char>(doc.styles[i]) & 0x7F;
      out += "<span class=\"s" + std::to_string(style) + "\">";
      for (; i < end && (static_cast<unsigned char>(doc.styles[i]) & 0x7F) == style; ++i) {
        switch (doc.text[i]) {
          case '&': out += "&amp;"; break;
          case '<': out += "&lt;"; break;
          case '>': out += "&gt;"; break;
          case '"': out += "&quot;"; break;
          case '\'': out += "&#39;"; break;
          case '\t': out += "    "; break;
          default: out += doc.text[i];
        }
      }
      out += "</span>";
    }
    out += "</div>\n";
    if (lf == std::string::npos) return out;
    pos = lf + 1;
  }
}

std::string RtfText(std::string_view run) {
  std::string out;
  for (size_t k = 0; k < run.size(); ++k) {
    const unsigned char c = static_cast<unsigned char>(run[k]);
    if (c == '\\' || c == '{' || c == '}') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c == '\r') {
    } else if (c == '\n') {
      out += "\\par\r\n";
    } else if (c == '\t') {
      out += "\\tab ";
    } else if (c < 0x80) {
      out += static_cast<char>(c);
    } else {
      const int need = (c & 0xE0) == 0xC0 ? 1 : (c & 0xF0) == 0xE0 ? 2 : (c & 0xF8) == 0xF0 ? 3 : -1;
      if (need < 0) {
        out += '?';
        continue;
      }
      uint32_t cp = c & (0x3F >> need);
      int got = 0;
      while (got < need && k + 1 < run.size() && (static_cast<unsigned char>(run[k + 1]) & 0xC0) == 0x80) {
        cp = cp << 6 | (static_cast<unsigned char>(run[++k]) & 0x3F);
        ++got;
      }
      if (got < need || cp >= 0x10000)
        out += '?';
      else
        out += "\\u" + std::to_string(static_cast<int16_t>(cp)) + "?";
    }
  }
  return out;
}

// Every style has the same (black) colour, so every group uses colour 1; styles 1, 5 and 127
// add bold and italic.
std::string RtfBody(const Doc& doc) {
  std::string out;
  for (size_t i = 0; i < doc.text.size();) {
    auto styleAt = [&doc](size_t k) {
      const unsigned s = static_cast<unsigned char>(doc.styles[k]);
      return s < 128 ? s : 0;
    };
    const unsigned style = styleAt(i);
    size_t end = i;
    while (end < doc.text.size() && styleAt(end) == style) ++end;
    const bool bold = style == 5 || style == 127, italic = style == 1 || style == 127;
    out += "{\\cf1 ";
    out += bold ? "\\b " : "";
    out += italic ? "\\i " : "";
    out += RtfText(std::string_view(doc.text).substr(i, end - i));
    out += bold ? "\\b0 " : "";
    out += italic ? "\\i0 " : "";
    out += "}";
    i = end;
  }
  return out;
}

}  // namespace

TEST(ExportRandomDocuments, HtmlAndRtfAgreeWithAPlainRendering) {
  std::mt19937 rng(2024);
  for (int round = 0; round < 300; ++round) {
    const size_t length = round < 290 ? rng() % 200 : 5000 + rng() % 20000;
    Doc doc = RandomDoc(rng, length);
    if (round >= 295) std::replace(doc.text.begin(), doc.text.end(), '\n', 'n');  // long lines

    HtmlExportInput html;
    html.document = doc.view();
    html.title = "r";
    html.fontName = "f";
    ExportBytes page;
    ASSERT_EQ(BuildHtmlPage(html, page), ExportResult::Ok);
    const std::string_view pageText = page.view();
    const std::string open = "    <div class=\"code-content\">\n";
    const size_t from = pageText.find(open) + open.size();
    const std::string_view tail = "</div>\n    </div>\n</div>\n</body>\n</html>";
    ASSERT_GE(pageText.size(), from + tail.size());
    ASSERT_EQ(pageText.substr(from, pageText.size() - from - tail.size()), HtmlCodeColumn(doc))
        << "round " << round;

    RtfExportInput rtf;
    rtf.document = doc.view();
    rtf.styles[1].italic = rtf.styles[5].bold = rtf.styles[127].bold = rtf.styles[127].italic = true;
    rtf.fontName = "f";
    rtf.fontSize = 10;
    ExportBytes bytes;
    ASSERT_EQ(BuildRtf(rtf, bytes), ExportResult::Ok);
    const std::string_view rtfText = bytes.view();
    const std::string fs = "\\fs20 ";
    const size_t start = rtfText.find(fs) + fs.size();
    ASSERT_EQ(rtfText.substr(start, rtfText.size() - start - 5), RtfBody(doc)) << "round " << round;
  }
}

TEST(ExportRandomDocuments, FileFormsStreamTheSameBytes) {
  // Output several times larger than the stream buffer, so it reaches the file in many writes.
  std::mt19937 rng(7);
  const Doc doc = RandomDoc(rng, 600000);
  const test::TempFolder folder;
  const std::string path = folder / "out";

  HtmlExportInput html;
  html.document = doc.view();
  html.title = "big";
  html.fontName = "f";
  ExportBytes page;
  ASSERT_EQ(BuildHtmlPage(html, page), ExportResult::Ok);
  ASSERT_GT(page.size(), 2u << 20);  // many times the stream buffer
  ASSERT_EQ(ExportHtmlToFile(html, path), ExportResult::Ok);
  EXPECT_TRUE(ReadBytes(path) == page.view());

  RtfExportInput rtf;
  rtf.document = doc.view();
  rtf.fontName = "f";
  ExportBytes bytes;
  ASSERT_EQ(BuildRtf(rtf, bytes), ExportResult::Ok);
  ASSERT_GT(bytes.size(), 400000u);
  ASSERT_EQ(ExportRtfToFile(rtf, path), ExportResult::Ok);
  EXPECT_TRUE(ReadBytes(path) == bytes.view());

  // A cancel late in the document leaves the previous file as it was, and nothing beside it.
  const int64_t half = CountLineFeeds(doc.text) / 2;
  ASSERT_GT(half, 1000);
  int64_t asked = 0;
  ExportMonitor monitor;
  monitor.isCancelled = [&asked, half] { return ++asked == half; };
  EXPECT_EQ(ExportHtmlToFile(html, path, monitor), ExportResult::Cancelled);
  EXPECT_TRUE(ReadBytes(path) == bytes.view());

  // A file that stops taking bytes part-way fails the export and leaves the previous file as well.
  for (int format = 0; format < 2; ++format) {
    EXPECT_EQ(test::WithFileSizeLimit(200000, [&] {
                return static_cast<int>(format == 0 ? ExportHtmlToFile(html, path) : ExportRtfToFile(rtf, path));
              }),
              static_cast<int>(ExportResult::WriteFailed)) << format;
    EXPECT_TRUE(ReadBytes(path) == bytes.view());
  }
  EXPECT_TRUE(test::OnlyNames(folder.Path(), {"out"}));  // no partial file beside it
}
