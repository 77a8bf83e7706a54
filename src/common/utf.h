// Conversions between the editor's UTF-8 bytes and the UTF-16 text used by the settings file,
// the regex engine and the Markdown renderer.
#pragma once

#include <string>
#include <string_view>

namespace nebro {

// The character at byte `pos` of `text` and, in `length`, how many bytes it takes. A byte that
// does not start a well-formed sequence reads as U+FFFD with length 1.
char32_t DecodeUtf8At(std::string_view text, size_t pos, size_t* length);

// Each byte that does not start a well-formed UTF-8 sequence becomes one U+FFFD.
std::u16string Utf8ToUtf16(std::string_view utf8);

// Each unpaired surrogate becomes U+FFFD.
std::string Utf16ToUtf8(std::u16string_view utf16);

// Appends the UTF-8 form of one code point (which must be a scalar value) to `out`.
void AppendUtf8(std::string& out, char32_t codePoint);

// Appends the UTF-16 form of one code point (a surrogate pair above U+FFFF) to `out`.
void AppendUtf16(std::u16string& out, char32_t codePoint);

}  // namespace nebro
