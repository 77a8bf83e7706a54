// When a document is shown without its language's colours although it has a language: lexers
// take time that grows faster than the line (the Markdown lexer spends minutes on one line of
// 100,000 underscores), so a document with a very long line, or a very large one, is shown in
// the plain text colours, and the status bar says why. A very large document is not wrapped
// either, and keeps no styles at all. Neither is a document with a line of megabytes, in any
// language: Scintilla grows a wrapped line's list of breaks a few entries at a time, so wrapping
// one line takes time that grows with the square of its length (seconds for 100 MB).
#pragma once

#include <cstddef>
#include <string_view>

namespace nebro::appearance {

inline constexpr size_t kLongLineLimit = 20000;          // bytes in one line
inline constexpr size_t kUnwrappedLineLimit = 1u << 20;   // bytes in one line
inline constexpr size_t kLargeDocumentLimit = 256u << 20;  // bytes in the document

// From the least to the most that is switched off.
enum class PlainReason { None, LongLine, UnwrappedLine, LargeDocument };

// Why a document of `text` is shown plain and perhaps unwrapped (None: as its language and the
// settings say). Lines past kLongLineLimit count only in a `coloured` language.
PlainReason PlainReasonFor(std::string_view text, bool coloured);
// Whether the reason leaves the document unwrapped.
inline bool Unwrapped(PlainReason reason) { return reason >= PlainReason::UnwrappedLine; }
// True when some line of `text` is longer than `limit` bytes.
bool HasLineLongerThan(std::string_view text, size_t limit);
// What the status bar adds after the caret's place ("" for None).
const char* PlainReasonNotice(PlainReason reason);

}  // namespace nebro::appearance
