#include "print/page_layout_gtk.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_map>

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

// A font pointer held only for comparison.
struct FontRef {
  PangoFont* font = nullptr;
  ~FontRef() {
    if (font) g_object_unref(font);
  }
};

// One layout reused for every line: the body font, word wrapping at the content width.
struct LineLayouter {
  Owned<PangoContext> context = MakeLayoutContext();
  Owned<PangoLayout> layout{pango_layout_new(context.get())};
  PangoAttrList* noAttributes = pango_attr_list_new();
  PangoGlyphString* glyphs = pango_glyph_string_new();
  PangoShapeFlags shapeFlags = PANGO_SHAPE_NONE;
  FontRef bodyFont;        // the font printable ASCII is drawn in
  int oneLineHeight = 0;   // a line that does not wrap, in that font
  int fitSlack = 0;        // room kept free at the right before a line counts as fitting
  int narrowest = 1 << 30; // the narrowest printable ASCII character

  explicit LineLayouter(const PageStyle& style) {
    auto font = MakeFont(style.fontFace, style.fontSize);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_context_set_font_description(context.get(), font.get());
    if (pango_context_get_round_glyph_positions(context.get())) shapeFlags = PANGO_SHAPE_ROUND_POSITIONS;
    GList* items = pango_itemize(context.get(), "x", 0, 1, noAttributes, nullptr);
    if (items && !items->next) bodyFont.font = PANGO_FONT(g_object_ref(static_cast<PangoItem*>(items->data)->analysis.font));
    g_list_free_full(items, reinterpret_cast<GDestroyNotify>(pango_item_free));
    oneLineHeight = LaidOutHeight(" ", 1 << 20);
    for (char c = 0x20; c <= 0x7E; ++c) {
      int w = 0, h = 0;
      pango_layout_get_size(Set(std::string_view(&c, 1), -1), &w, &h);
      narrowest = std::min(narrowest, w);
    }
    fitSlack = style.fontSize * kLayoutDpi / 72 * 2 * PANGO_SCALE;  // two ems
  }
  ~LineLayouter() {
    pango_attr_list_unref(noAttributes);
    pango_glyph_string_free(glyphs);
  }
  PangoLayout* Set(std::string_view line, int width) {
    pango_layout_set_width(layout.get(), width * PANGO_SCALE);
    pango_layout_set_text(layout.get(), line.data(), static_cast<int>(line.size()));
    return layout.get();
  }
  int LaidOutHeight(std::string_view line, int width) {
    int w = 0, h = 0;
    pango_layout_get_pixel_size(Set(line, width), &w, &h);
    return h;
  }
  // True when `line` certainly lies on one line of `width` pixels in the body font: printable
  // ASCII only (no tab stops, no forced breaks, no fallback font), shaped as the layout shapes
  // it, and narrower than the width by a wide margin. Such a line is as tall as any one line in
  // that font, without the layout's line breaking and extents.
  bool FitsOnOneLine(std::string_view line, int width) {
    if (!bodyFont.font || static_cast<int64_t>(line.size()) * PANGO_SCALE > (int64_t{1} << 30)) return false;
    for (unsigned char c : line) {
      if (c < 0x20 || c > 0x7E) return false;
    }
    const int64_t limit = int64_t{width} * PANGO_SCALE - fitSlack;
    // A line far too long for the width is not shaped twice.
    if (static_cast<int64_t>(line.size()) * narrowest > limit) return false;
    GList* items = pango_itemize(context.get(), line.data(), 0, static_cast<int>(line.size()), noAttributes, nullptr);
    int64_t used = 0;
    bool fits = true;
    for (GList* l = items; l && fits; l = l->next) {
      auto* item = static_cast<PangoItem*>(l->data);
      if (item->analysis.font != bodyFont.font) {
        fits = false;
        break;
      }
      pango_shape_with_flags(line.data() + item->offset, item->length, line.data(), static_cast<int>(line.size()),
                             &item->analysis, glyphs, shapeFlags);
      used += pango_glyph_string_get_width(glyphs);
      fits = used <= limit;
    }
    g_list_free_full(items, reinterpret_cast<GDestroyNotify>(pango_item_free));
    return fits;
  }
  int Height(std::string_view line, int width) {
    return FitsOnOneLine(line, width) ? oneLineHeight : LaidOutHeight(line, width);
  }
};

LineMeasure MeasureWith(const std::shared_ptr<LineLayouter>& layouter) {
  LineMeasure measure;
  measure.textHeight = [layouter](std::string_view line, int width) {
    return layouter->Height(line, width);
  };
  measure.emptyLineHeight = layouter->oneLineHeight;
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
  // A line that comes again (a closing brace, a repeated log entry) is measured once. The keys
  // are views into doc.text, which outlives the split; the width is the same for every line.
  // Only so many different lines are remembered, so that a huge document of different lines
  // does not get a second index of itself.
  constexpr size_t kRemembered = 1 << 16;
  std::unordered_map<std::string_view, int> known;
  measured.measure.textHeight = [&known, measure = measured.measure.textHeight](std::string_view line, int width) {
    if (auto at = known.find(line); at != known.end()) return at->second;
    const int height = measure(line, width);
    if (known.size() < kRemembered) known.emplace(line, height);
    return height;
  };
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
