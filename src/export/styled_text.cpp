#include "export/styled_text.h"

#include <cstring>

namespace nebro {

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

}  // namespace nebro
