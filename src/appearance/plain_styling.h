// When a document is shown without its language's colours although it has a language: lexers
// take time that grows faster than the line (the Markdown lexer spends minutes on one line of
// 100,000 underscores), so a document with a very long line, or a very large one, is shown in
// the plain text colours, and the status bar says why. A very large document is not wrapped
// either, and keeps no styles at all.
#pragma once

#include <cstddef>
#include <string_view>

namespace nebro::appearance {

inline constexpr size_t kLongLineLimit = 20000;          // bytes in one line
inline constexpr size_t kLargeDocumentLimit = 256u << 20;  // bytes in the document

enum class PlainReason { None, LongLine, LargeDocument };

// Why a document of `text` in a coloured language is shown plain (None: it is coloured).
PlainReason PlainReasonFor(std::string_view text);
// True when some line of `text` is longer than `limit` bytes.
bool HasLineLongerThan(std::string_view text, size_t limit);
// What the status bar adds after the caret's place ("" for None).
const char* PlainReasonNotice(PlainReason reason);

}  // namespace nebro::appearance
