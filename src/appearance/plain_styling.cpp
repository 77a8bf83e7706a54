#include "appearance/plain_styling.h"

#include <cstring>

namespace nebro::appearance {

bool HasLineLongerThan(std::string_view text, size_t limit) {
  const char* p = text.data();
  const char* end = p + text.size();
  while (static_cast<size_t>(end - p) > limit) {
    // A line ends at LF or at a lone CR; either must come within limit + 1 bytes.
    const void* lf = std::memchr(p, '\n', limit + 1);
    const void* cr = std::memchr(p, '\r', limit + 1);
    if (!lf && !cr) return true;
    const char* stop = static_cast<const char*>(!lf ? cr : !cr ? lf : (lf < cr ? lf : cr));
    p = stop + 1;
  }
  return false;
}

PlainReason PlainReasonFor(std::string_view text) {
  if (text.size() > kLargeDocumentLimit) return PlainReason::LargeDocument;
  if (HasLineLongerThan(text, kLongLineLimit)) return PlainReason::LongLine;
  return PlainReason::None;
}

const char* PlainReasonNotice(PlainReason reason) {
  switch (reason) {
    case PlainReason::LongLine: return "   No colours: a line is longer than 20,000 characters";
    case PlainReason::LargeDocument: return "   No colours or wrapping: the file is larger than 256 MB";
    case PlainReason::None: break;
  }
  return "";
}

}  // namespace nebro::appearance
