#include "appearance/plain_styling.h"

namespace nebro::appearance {

bool HasLineLongerThan(std::string_view text, size_t limit) {
  const char* p = text.data();
  const char* end = p + text.size();
  while (static_cast<size_t>(end - p) > limit) {
    // The line starting at p ends (at LF or CR) within its first limit + 1 bytes, or it is too
    // long. Looking back from the end of that stretch finds its last line end a few bytes away in
    // ordinary text, so the text is crossed in steps of nearly `limit` bytes, and no byte is read
    // more than twice.
    const char* q = p + limit + 1;
    while (q > p && q[-1] != '\n' && q[-1] != '\r') --q;
    if (q == p) return true;
    p = q;
  }
  return false;
}

PlainReason PlainReasonFor(std::string_view text, bool coloured) {
  if (text.size() > kLargeDocumentLimit) return PlainReason::LargeDocument;
  if (!coloured || HasLineLongerThan(text, kLongLineLimit)) {
    if (HasLineLongerThan(text, kUnwrappedLineLimit)) return PlainReason::UnwrappedLine;
    if (coloured) return PlainReason::LongLine;
  }
  return PlainReason::None;
}

const char* PlainReasonNotice(PlainReason reason) {
  switch (reason) {
    case PlainReason::LongLine: return "   No colours: a line is longer than 20,000 characters";
    case PlainReason::UnwrappedLine: return "   No colours or wrapping: a line is longer than 1 MB";
    case PlainReason::LargeDocument: return "   No colours or wrapping: the file is larger than 256 MB";
    case PlainReason::None: break;
  }
  return "";
}

}  // namespace nebro::appearance
