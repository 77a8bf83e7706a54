// Positions between the editor's UTF-8 bytes and the UTF-16 indices of Regex Search. Both
// directions follow the conversion rule of Utf8ToUtf16: a well-formed sequence is one character
// (two UTF-16 units above U+FFFF), every other byte is one U+FFFD.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace nebro::search {

// UTF-16 index of the character that starts at UTF-8 byte `offset` (the caret of Find / Next).
// An offset inside a character counts that character as passed; past the end gives the length.
uint64_t Utf8OffsetToUtf16Index(std::string_view utf8, uint64_t offset);

// Checkpoints for mapping many UTF-16 indices of one document back to byte offsets (selecting
// matches in the editor). Built on first use; clear it when the document copy changes.
struct RegexOffsetCache {
  bool built = false;
  std::vector<uint64_t> unitAt;  // checkpoint k: UTF-16 index of a character start
  std::vector<uint64_t> byteAt;  // ... and its UTF-8 offset
  void Clear() {
    built = false;
    unitAt.clear();
    byteAt.clear();
  }
};

// UTF-8 offset of the character holding UTF-16 index `index` of `utf8`'s conversion; the length
// in bytes for an index at or past the end.
uint64_t Utf16IndexToUtf8Offset(std::string_view utf8, RegexOffsetCache& cache, uint64_t index);

}  // namespace nebro::search
