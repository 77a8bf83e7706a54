#include "search/regex_offsets.h"

#include <algorithm>

namespace nebro::search {

namespace {

constexpr uint64_t kCheckpointUnits = 4096;

// Length in bytes and in UTF-16 units of the character at s[i], by the rule of Utf8ToUtf16.
struct Step {
  uint32_t bytes;
  uint32_t units;
};

Step StepAt(const unsigned char* s, size_t n, size_t i) {
  const unsigned char b = s[i];
  if (b < 0x80) return {1, 1};
  size_t len = 0;
  char32_t c = 0;
  char32_t min = 0;
  if (b >= 0xC2 && b <= 0xDF) {
    len = 2;
    c = b & 0x1F;
    min = 0x80;
  } else if (b >= 0xE0 && b <= 0xEF) {
    len = 3;
    c = b & 0x0F;
    min = 0x800;
  } else if (b >= 0xF0 && b <= 0xF4) {
    len = 4;
    c = b & 0x07;
    min = 0x10000;
  }
  if (len == 0 || i + len > n) return {1, 1};
  for (size_t k = 1; k < len; ++k) {
    if ((s[i + k] & 0xC0) != 0x80) return {1, 1};
    c = (c << 6) | (s[i + k] & 0x3F);
  }
  if (c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return {1, 1};
  return {static_cast<uint32_t>(len), c >= 0x10000 ? 2u : 1u};
}

}  // namespace

uint64_t Utf8OffsetToUtf16Index(std::string_view utf8, uint64_t offset) {
  const auto* s = reinterpret_cast<const unsigned char*>(utf8.data());
  const size_t n = utf8.size();
  uint64_t units = 0;
  size_t i = 0;
  while (i < n && i < offset) {
    const Step step = StepAt(s, n, i);
    i += step.bytes;
    units += step.units;
  }
  return units;
}

uint64_t Utf16IndexToUtf8Offset(std::string_view utf8, RegexOffsetCache& cache, uint64_t index) {
  const auto* s = reinterpret_cast<const unsigned char*>(utf8.data());
  const size_t n = utf8.size();
  if (!cache.built) {
    cache.Clear();
    uint64_t units = 0;
    uint64_t next = 0;
    for (size_t i = 0; i < n;) {
      if (units >= next) {
        cache.unitAt.push_back(units);
        cache.byteAt.push_back(i);
        next = units + kCheckpointUnits;
      }
      const Step step = StepAt(s, n, i);
      i += step.bytes;
      units += step.units;
    }
    cache.unitAt.push_back(units);  // the end
    cache.byteAt.push_back(n);
    cache.built = true;
  }
  if (index >= cache.unitAt.back()) return n;
  // The last checkpoint at or before `index`.
  const size_t k = static_cast<size_t>(
      std::upper_bound(cache.unitAt.begin(), cache.unitAt.end(), index) - cache.unitAt.begin() - 1);
  uint64_t units = cache.unitAt[k];
  size_t i = cache.byteAt[k];
  while (i < n) {
    const Step step = StepAt(s, n, i);
    if (units + step.units > index) break;
    i += step.bytes;
    units += step.units;
  }
  return i;
}

}  // namespace nebro::search
