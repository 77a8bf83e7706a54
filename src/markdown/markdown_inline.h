// Internal to the Markdown renderer: the output buffer and the byte loops that the page and the
// public inline functions share.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace nebro::markdown::detail {

// Appends to a std::string through a raw pointer. A loop asks once for the most space its chunk
// can need, writes without further capacity tests and commits its end; Finish() cuts the string
// to what was written. The string grows by doubling, so appending stays linear.
class HtmlBuffer {
 public:
  explicit HtmlBuffer(std::string& out) : out_(out), used_(out.size()) {}

  // A pointer to at least `n` writable bytes after what was written so far.
  char* Space(size_t n) {
    if (out_.size() - used_ < n) Grow(n);
    return out_.data() + used_;
  }
  void Commit(const char* end) { used_ = static_cast<size_t>(end - out_.data()); }
  void Append(std::string_view s) {
    char* o = Space(s.size());
    std::memcpy(o, s.data(), s.size());
    used_ += s.size();
  }
  void Finish() { out_.resize(used_); }

 private:
  void Grow(size_t n);

  std::string& out_;
  size_t used_;
};

// UTF-8 of each UTF-16 code unit taken by itself: every surrogate, paired or not, becomes U+FFFD.
// Feeding the result to the byte loops gives what the UTF-16 rules give on the units.
std::string UnitsToUtf8(std::u16string_view text);

// The inline rendering of one block's text (UTF-8 bytes; ill-formed bytes become U+FFFD, a
// character beyond U+FFFF two U+FFFD).
void AppendInline(HtmlBuffer& out, const unsigned char* s, size_t n);

// Escaping of literal text, with the same replacements.
void AppendEscaped(HtmlBuffer& out, const unsigned char* s, size_t n);

}  // namespace nebro::markdown::detail
