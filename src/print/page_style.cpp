#include "print/page_style.h"

#include "common/utf.h"

namespace nebro::print {

PageStyle PageStyleFromSettings(const settings::AppSettings& s) {
  PageStyle style;
  const std::string face = Utf16ToUtf8(settings::FieldText(s.fontName));
  if (!face.empty()) style.fontFace = face;
  if (s.fontSize > 0) style.fontSize = s.fontSize;
  if (s.paperWidth > 0 && s.paperHeight > 0) style.paper = {s.paperWidth, s.paperHeight};
  const PageMargins m{s.pageMarginLeft, s.pageMarginTop, s.pageMarginRight, s.pageMarginBottom};
  const bool fits = m.left >= 0 && m.top >= 0 && m.right >= 0 && m.bottom >= 0 &&
                    m.left + m.right < style.paper.width && m.top + m.bottom < style.paper.height;
  if (fits) style.margins = m;
  return style;
}

}  // namespace nebro::print
