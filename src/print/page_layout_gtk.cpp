#include "print/page_layout_gtk.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <memory>

#include "print/print_texts.h"

namespace nebro::print {
namespace {

struct GObjectUnref {
  void operator()(void* p) const { g_object_unref(p); }
};
struct FontDescFree {
  void operator()(PangoFontDescription* p) const { pango_font_description_free(p); }
};
template <typename T>
using Owned = std::unique_ptr<T, GObjectUnref>;

// A context of its own at the layout resolution with unhinted metrics, so widths and heights do
// not depend on the surface that is drawn on.
Owned<PangoContext> MakeLayoutContext() {
  PangoFontMap* map = pango_cairo_font_map_get_default();
  Owned<PangoContext> context(pango_font_map_create_context(map));
  pango_cairo_context_set_resolution(context.get(), kLayoutDpi);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  pango_cairo_context_set_font_options(context.get(), options);
  cairo_font_options_destroy(options);
  return context;
}

std::unique_ptr<PangoFontDescription, FontDescFree> MakeFont(const std::string& face, int size) {
  std::unique_ptr<PangoFontDescription, FontDescFree> font(pango_font_description_new());
  pango_font_description_set_family(font.get(), face.c_str());
  pango_font_description_set_size(font.get(), size * PANGO_SCALE);
  return font;
}

// One layout reused for every line: the body font, word wrapping at the content width.
struct LineLayouter {
  Owned<PangoContext> context = MakeLayoutContext();
  Owned<PangoLayout> layout{pango_layout_new(context.get())};

  explicit LineLayouter(const PageStyle& style) {
    auto font = MakeFont(style.fontFace, style.fontSize);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
  }
  PangoLayout* Set(std::string_view line, int width) {
    pango_layout_set_width(layout.get(), width * PANGO_SCALE);
    pango_layout_set_text(layout.get(), line.data(), static_cast<int>(line.size()));
    return layout.get();
  }
  int Height(std::string_view line, int width) {
    int w = 0, h = 0;
    pango_layout_get_pixel_size(Set(line, width), &w, &h);
    return h;
  }
};

LineMeasure MeasureWith(const std::shared_ptr<LineLayouter>& layouter) {
  LineMeasure measure;
  measure.textHeight = [layouter](std::string_view line, int width) {
    return layouter->Height(line, width);
  };
  measure.emptyLineHeight = layouter->Height(" ", 1 << 20);
  return measure;
}

PageFrame FrameFor(const PageStyle& style, int* width, int* height) {
  DevicePage page = PaperDevicePage(style.paper, kLayoutDpi, kLayoutDpi, 0, 0);
  *width = page.physicalWidth;
  *height = page.physicalHeight;
  return ComputePageFrame(page, style.margins, style.fontSize);
}

}  // namespace

PagedDocument PaginateDocument(std::string text, const PageStyle& style,
                               const PaginationHooks& hooks) {
  PagedDocument doc;
  doc.text = std::move(text);
  doc.style = style;
  doc.frame = FrameFor(style, &doc.pageWidth, &doc.pageHeight);
  doc.lines = SplitPrintLines(doc.text);
  PaginationHooks measured = hooks;
  measured.measure = MeasureWith(std::make_shared<LineLayouter>(style));
  PaginationResult result = PaginateLines(doc.text, doc.lines, doc.frame.content.Width(),
                                          doc.frame.content.Height(), measured);
  doc.pageStarts = std::move(result.pageStarts);
  doc.cancelled = result.cancelled;
  return doc;
}

void DrawPage(cairo_t* cr, const PagedDocument& doc, int page) {
  if (page < 0 || page >= doc.PageCount()) return;
  auto layouter = std::make_shared<LineLayouter>(doc.style);
  const LineMeasure measure = MeasureWith(layouter);
  const PageRect& content = doc.frame.content;
  const PageLineRange range = LinesOfPage(doc.pageStarts, page, doc.lines.size());
  const auto placed =
      LayoutPageLines(doc.text, doc.lines, range, content.top, content.Width(), measure);

  cairo_save(cr);
  // The line that crosses the content's bottom belongs to this page and is drawn whole, into
  // the bottom margin; only a line taller than the sheet is cut, at the sheet's edge.
  cairo_rectangle(cr, 0, 0, doc.pageWidth, doc.pageHeight);
  cairo_clip(cr);
  cairo_set_source_rgb(cr, 0, 0, 0);
  for (const PlacedLine& p : placed) {
    std::string_view line = LineText(doc.text, doc.lines[p.line]);
    if (line.empty()) continue;
    cairo_move_to(cr, content.left, p.y);
    pango_cairo_show_layout(cr, layouter->Set(line, content.Width()));
  }
  cairo_restore(cr);

  // The page number, centred in the band under the content; when the page's last line runs
  // past the content's bottom, the number moves down under that line so the two never overlap.
  auto footerFont = MakeFont(doc.style.fontFace, doc.style.fontSize);
  pango_font_description_set_absolute_size(
      footerFont.get(), FooterFontHeight(doc.style.fontSize, kLayoutDpi) * PANGO_SCALE);
  Owned<PangoLayout> footer(pango_layout_new(layouter->context.get()));
  pango_layout_set_font_description(footer.get(), footerFont.get());
  const std::string number = PageFooterText(page + 1);
  pango_layout_set_text(footer.get(), number.c_str(), -1);
  int w = 0, h = 0;
  pango_layout_get_pixel_size(footer.get(), &w, &h);
  const PageRect& band = doc.frame.footer;
  cairo_save(cr);
  cairo_set_source_rgb(cr, kFooterGrey / 255.0, kFooterGrey / 255.0, kFooterGrey / 255.0);
  double top = band.top + (band.Height() - h) / 2.0;
  if (!placed.empty()) {
    const PlacedLine& last = placed.back();
    top = std::max(top, static_cast<double>(last.y + last.height + kPrintLineSpacing));
  }
  top = std::min(top, static_cast<double>(doc.pageHeight - h));
  cairo_move_to(cr, band.left + (band.Width() - w) / 2.0, top);
  pango_cairo_show_layout(cr, footer.get());
  cairo_restore(cr);
}

}  // namespace nebro::print
