// The printed page laid out with Pango in the editor font. The print preview, printing and the
// PDF export all paginate and draw through this one layout, so they never disagree about where
// a page ends: pages are measured at one fixed layout resolution and each output device only
// scales the drawing.
#pragma once
#include <cairo.h>

#include <functional>
#include <string>
#include <vector>

#include "print/page_frame.h"
#include "print/page_style.h"
#include "print/pagination.h"

namespace nebro::print {

// Pages are laid out in pixels of this resolution whatever the device.
inline constexpr int kLayoutDpi = 96;

// A document split into printed pages.
struct PagedDocument {
  std::string text;
  std::vector<LineSpan> lines;
  std::vector<int32_t> pageStarts;
  PageStyle style;
  PageFrame frame;  // in layout pixels
  int pageWidth = 0;
  int pageHeight = 0;
  bool cancelled = false;
  int PageCount() const { return static_cast<int>(pageStarts.size()); }
};

// Splits `text` into pages; `hooks.measure` is filled in here. Safe on a worker thread.
PagedDocument PaginateDocument(std::string text, const PageStyle& style,
                               const PaginationHooks& hooks = {});

// Draws page `page` (0-based) with the page's top-left corner at the origin of `cr`, which is
// in layout pixels (scale it for other devices). Paints no background.
void DrawPage(cairo_t* cr, const PagedDocument& doc, int page);

}  // namespace nebro::print
