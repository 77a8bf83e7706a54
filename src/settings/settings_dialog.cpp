#include "settings/settings_dialog.h"

#include <iterator>
#include <limits>

namespace nebro::settings {

std::string IntervalText(int minutes) { return std::to_string(minutes) + " min"; }

int IntervalIndexFor(int minutes) {
  int fallback = 0;
  for (int i = 0; i < static_cast<int>(std::size(kAutoSaveIntervals)); ++i) {
    if (kAutoSaveIntervals[i] == minutes) return i;
    if (kAutoSaveIntervals[i] == 5) fallback = i;
  }
  return fallback;
}

std::string FontLabelText(const std::string& face, int size, bool bold, bool italic) {
  return "Font: " + face + ", " + std::to_string(size) + " pt" + (bold ? " Bold" : "") + (italic ? " Italic" : "");
}

std::optional<unsigned> ReadUnsigned(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (text.empty()) return std::nullopt;
  unsigned long long value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<unsigned>(c - '0');
    if (value > std::numeric_limits<unsigned>::max()) return std::nullopt;
  }
  return static_cast<unsigned>(value);
}

std::optional<int> ReadTransparency(std::string_view text) {
  const std::optional<unsigned> v = ReadUnsigned(text);
  if (!v || *v > static_cast<unsigned>(kMaxTransparency)) return std::nullopt;
  return static_cast<int>(*v);
}

std::optional<int> ReadFontSize(std::string_view text) {
  const std::optional<unsigned> v = ReadUnsigned(text);
  if (!v || *v < static_cast<unsigned>(kMinFontSize) || *v > static_cast<unsigned>(kMaxFontSize)) return std::nullopt;
  return static_cast<int>(*v);
}

}  // namespace nebro::settings
