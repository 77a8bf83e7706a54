// Character-level helpers shared by the Find & Replace scans: UTF-8 character widths the way the
// editor component steps through its text, its character classes for whole-word tests, and
// Unicode simple case mappings that do not depend on the process locale.
#pragma once

#include "common/utf.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace nebro::search::find_replace_internal {

// Width in bytes of the character starting at `pos`, as the editor steps: a well-formed sequence
// is taken whole, any other byte alone. The non-characters U+xFFFE/U+xFFFF are stepped whole but
// reported as not well-formed through `valid`.
size_t EditorCharWidth(std::string_view text, size_t pos, bool* valid = nullptr);

// True when `pos` does not fall inside a well-formed multi-byte character.
bool IsEditorCharBoundary(std::string_view text, size_t pos);

// The editor's character classes for its whole-word rule.
enum class CharClass { Space, NewLine, Word, Punctuation };
CharClass EditorCharClass(unsigned char byte);

// Whole word in the editor's sense: [start, end) starts on a word or punctuation character whose
// predecessor is of another class, and ends likewise (document edges count as space).
bool IsEditorWordAt(std::string_view text, size_t start, size_t end);

using nebro::DecodeUtf8At;

// Unicode simple case mappings and classes (the C.UTF-8 character tables; ASCII only when those
// are missing).
char32_t LowerChar(char32_t c);
char32_t UpperChar(char32_t c);
bool IsUpperChar(char32_t c);
bool IsAlnumChar(char32_t c);

// Maps every code point of a UTF-16 text through `LowerChar` / `UpperChar`; a mapping that would
// change the number of code units is not applied, so positions stay the same.
void LowerUtf16InPlace(std::u16string& text);
std::u16string LowerUtf16(std::u16string_view text);
std::u16string UpperUtf16(std::u16string_view text);

// The editor's case folding of UTF-8 bytes: ASCII letters lowered, well-formed characters mapped
// through `LowerChar`, any other byte kept.
std::string FoldUtf8(std::string_view text);

}  // namespace nebro::search::find_replace_internal
