// The PDF's pages are the laid-out pages: the page count and each page's first line and footer,
// read back from the PDF with poppler's pdftotext, match the split the preview draws from.
#include <gtest/gtest.h>
#include <pango/pangocairo.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "../support/process.h"
#include "print/page_layout_gtk.h"
#include "print/pdf_export_gtk.h"
#include "print/print_texts.h"

namespace nebro::print {
namespace {

using test::PdfPageCount;

class PdfPagesTest : public ::testing::Test {
 protected:
  test::TempFolder dir;
  const std::string folder = dir.Path();
};

// Lines of different lengths, some wrapping several times, some empty, so the split depends on
// the measured wrapping and not on a line count.
std::string MixedDocument(int lines) {
  std::string text;
  for (int i = 1; i <= lines; ++i) {
    text += "line" + std::to_string(i) + "x";
    if (i % 7 == 0) {
      for (int w = 0; w < 40; ++w) text += " word" + std::to_string(w);
    }
    if (i % 11 == 0) text += "\n";
    text += "\n";
  }
  return text;
}

TEST_F(PdfPagesTest, PdfPagesAreTheLaidOutPages) {
  PageStyle style;
  style.fontFace = "DejaVu Sans Mono";
  style.fontSize = 11;
  const PagedDocument doc = PaginateDocument(MixedDocument(500), style);
  ASSERT_GT(doc.PageCount(), 5);

  const std::string path = folder + "/out.pdf";
  const PdfExportResult result = ExportPagedPdf(nullptr, doc, path);
  ASSERT_TRUE(result.ok) << result.error;
  ASSERT_EQ(PdfPageCount(path), doc.PageCount());

  for (int page = 0; page < doc.PageCount(); ++page) {
    const std::string n = std::to_string(page + 1);
    SCOPED_TRACE("page " + n);
    const std::string text = test::PdfText(path, "-layout -f " + n + " -l " + n);
    const PageLineRange range = LinesOfPage(doc.pageStarts, page, doc.lines.size());
    // The page's first non-empty line is on it, and the line before the page is not.
    size_t first = range.first;
    while (first < range.last && doc.lines[first].length == 0) ++first;
    ASSERT_LT(first, range.last);
    const std::string firstLine(LineText(doc.text, doc.lines[first]).substr(0, 10));
    EXPECT_NE(text.find(firstLine.substr(0, firstLine.find(' '))), std::string::npos);
    const std::string lastLine(LineText(doc.text, doc.lines[range.last - 1]));
    if (!lastLine.empty()) {
      EXPECT_NE(text.find(lastLine.substr(0, lastLine.find(' '))), std::string::npos);
    }
    const std::string before(range.first > 0 ? LineText(doc.text, doc.lines[range.first - 1]) : "");
    if (!before.empty()) {
      EXPECT_EQ(text.find(before.substr(0, before.find(' '))), std::string::npos);
    }
    EXPECT_NE(text.find(PageFooterText(page + 1)), std::string::npos);
  }
}

TEST_F(PdfPagesTest, MarginsAndPaperChangeTheSplitTheSameWayInThePdf) {
  PageStyle wide;
  wide.fontFace = "DejaVu Sans Mono";
  PageStyle narrow = wide;
  narrow.margins = {4000, 4000, 4000, 4000};
  narrow.paper = {14800, 21000};  // A5
  const std::string text = MixedDocument(300);
  const PagedDocument a = PaginateDocument(text, wide);
  const PagedDocument b = PaginateDocument(text, narrow);
  ASSERT_LT(a.PageCount(), b.PageCount());
  for (const PagedDocument* doc : {&a, &b}) {
    const std::string path = folder + "/" + std::to_string(doc->PageCount()) + ".pdf";
    ASSERT_TRUE(ExportPagedPdf(nullptr, *doc, path).ok);
    EXPECT_EQ(PdfPageCount(path), doc->PageCount());
  }
}

// Whatever shortcut the split takes, each line is as tall as Pango lays it out in the content
// width at the layout resolution with unhinted metrics: lines just under and over the width, in a
// monospace and a proportional font, with tabs, accents and a character from another font.
TEST_F(PdfPagesTest, LinesAreAsTallAsPangoLaysThemOut) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += std::string(60 + i % 70, "iW m,"[i % 5]) + (i % 7 ? "" : "\t\xC3\xA9\xE4\xB8\xAD") + "\n";
  PangoContext* context = pango_font_map_create_context(pango_cairo_font_map_get_default());
  pango_cairo_context_set_resolution(context, kLayoutDpi);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  pango_cairo_context_set_font_options(context, options);
  for (const char* face : {"DejaVu Sans Mono", "DejaVu Serif"}) {
    PageStyle style;
    style.fontFace = face;
    const PagedDocument doc = PaginateDocument(text, style);
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* font = pango_font_description_from_string((std::string(face) + " 11").c_str());
    pango_layout_set_font_description(layout, font);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_width(layout, doc.frame.content.Width() * PANGO_SCALE);
    PaginationHooks plain;
    plain.measure.textHeight = [layout](std::string_view line, int) {
      int w = 0, h = 0;
      pango_layout_set_text(layout, line.data(), static_cast<int>(line.size()));
      pango_layout_get_pixel_size(layout, &w, &h);
      return h;
    };
    const PaginationResult expected =
        PaginateLines(doc.text, doc.lines, doc.frame.content.Width(), doc.frame.content.Height(), plain);
    EXPECT_EQ(doc.pageStarts, expected.pageStarts) << face;
    pango_font_description_free(font);
    g_object_unref(layout);
  }
  cairo_font_options_destroy(options);
  g_object_unref(context);
}

TEST_F(PdfPagesTest, AnEmptyDocumentWritesNoPdf) {
  const std::string path = folder + "/empty.pdf";
  const PdfExportResult result = ExportPdf(nullptr, "", PageStyle{}, path);
  EXPECT_FALSE(result.ok);
  EXPECT_FALSE(result.error.empty());
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace nebro::print
