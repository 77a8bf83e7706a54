#include "export/styled_text.h"

#include <cstring>

namespace nebro::exports {

void SplitStyledText(std::string_view interleaved, std::string& text, std::string& styles) {
  const size_t n = interleaved.size() / 2;
  text.resize(n);
  styles.resize(n);
  const auto* in = reinterpret_cast<const unsigned char*>(interleaved.data());
  char* t = text.data();
  char* s = styles.data();
  for (size_t i = 0; i < n; ++i) {
    t[i] = static_cast<char>(in[2 * i]);
    s[i] = static_cast<char>(in[2 * i + 1]);
  }
}

int64_t CountLineFeeds(std::string_view text) {
  // Eight bytes at a time: a byte of x is zero exactly where the text has an LF, and the
  // expression below sets the top bit of exactly those bytes.
  constexpr uint64_t kLf = 0x0A0A0A0A0A0A0A0AULL;
  constexpr uint64_t kLow = 0x7F7F7F7F7F7F7F7FULL;
  const char* p = text.data();
  size_t left = text.size();
  int64_t count = 0;
  for (; left >= 8; p += 8, left -= 8) {
    uint64_t word;
    std::memcpy(&word, p, 8);
    const uint64_t x = word ^ kLf;
    const uint64_t marks = ~(((x & kLow) + kLow) | x | kLow) >> 7;  // one 0/1 per byte
    count += static_cast<int64_t>((marks * 0x0101010101010101ULL) >> 56);  // their sum
  }
  for (; left > 0; ++p, --left) count += *p == '\n';
  return count;
}

int64_t CountEditorLines(std::string_view text) {
  int64_t lines = 1;
  const char* p = text.data();
  const char* end = p + text.size();
  while (p < end) {
    // Most bytes are neither CR nor LF; memchr for LF first, then look for CRs in between.
    const char* lf = static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(end - p)));
    const char* stop = lf ? lf : end;
    for (const char* q = static_cast<const char*>(std::memchr(p, '\r', static_cast<size_t>(stop - p)));
         q; q = static_cast<const char*>(std::memchr(q + 1, '\r', static_cast<size_t>(stop - q - 1)))) {
      if (q + 1 != lf) ++lines;  // a CR right before the LF is part of a CR LF pair
      if (q + 1 >= stop) break;
    }
    if (!lf) break;
    ++lines;
    p = lf + 1;
  }
  return lines;
}

}  // namespace nebro::exports
