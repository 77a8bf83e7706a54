#include "search/regex_window_rules.h"

#include <algorithm>

#include "common/utf.h"
#include "settings/settings.h"

namespace nebro::search {

namespace {

// A row shows at most this many bytes of text: a whole 20 MB line would stall every redraw.
constexpr size_t kShownBytes = 2000;

// `text` made fit for one row of the list: line breaks and tabs read as blanks, cut at a
// character boundary when too long.
void AppendShown(std::string& out, std::string_view text) {
  size_t n = text.size();
  if (n > kShownBytes) {
    n = kShownBytes;
    while (n > 0 && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) --n;
  }
  const size_t from = out.size();
  out.append(text.data(), n);
  for (size_t i = from; i < out.size(); ++i) {
    if (out[i] == '\n' || out[i] == '\r' || out[i] == '\t') out[i] = ' ';
  }
  if (n < text.size()) out += "...";
}

}  // namespace

std::string RegexFoundStatus(std::u16string_view text, int64_t position) {
  return "Found: \"" + Utf16ToUtf8(text) + "\" at position " + std::to_string(position);
}

std::string RegexReplacedStatus(std::u16string_view text) {
  return "Replaced: \"" + Utf16ToUtf8(text) + "\"";
}

std::string RegexReplacedAllStatus(uint64_t count) {
  return "Replaced " + std::to_string(count) + " occurrence(s).";
}

std::string RegexStoppedStatus(uint64_t total) {
  return "Found " + std::to_string(total) + " matches.";
}

std::string RegexCompleteStatus(uint64_t total) {
  return "Search complete. Found " + std::to_string(total) + " matches.";
}

void PushRegexHistory(char16_t (&list)[10][512], std::u16string_view text) {
  if (text.empty()) return;
  const std::u16string copy(text.substr(0, 511));  // the text may lie in the list itself
  constexpr int kEntries = 10;
  int found = kEntries - 1;
  for (int i = 0; i < kEntries; ++i) {
    if (settings::FieldText(list[i]) == copy) {
      found = i;
      break;
    }
  }
  for (int i = found; i > 0; --i) std::copy_n(list[i - 1], 512, list[i]);
  settings::SetFieldText(list[0], copy);
}

std::string_view LineAround(std::string_view utf8, uint64_t offset) {
  const size_t at = std::min<size_t>(offset, utf8.size());
  const size_t lf = at == 0 ? std::string_view::npos : utf8.rfind('\n', at - 1);
  const size_t begin = lf == std::string_view::npos ? 0 : lf + 1;
  size_t end = utf8.find_first_of("\n\r", at);
  if (end == std::string_view::npos) end = utf8.size();
  return utf8.substr(begin, end - begin);
}

std::string RegexListEntryText(const RegexMatch& match, int32_t outputFormat,
                               bool includeLineNumbers, std::string_view lineUtf8) {
  std::string out;
  const std::string text = Utf16ToUtf8(match.text);
  switch (outputFormat) {
    case 1:
      if (includeLineNumbers) {
        out = "Ln " + std::to_string(match.line) + "  Col " + std::to_string(match.start) + "  ";
      } else {
        out = "[" + std::to_string(match.start) + "-" + std::to_string(match.end) + "]  ";
      }
      AppendShown(out, text);
      break;
    case 2:
      if (includeLineNumbers) out = "Ln " + std::to_string(match.line) + "  ";
      AppendShown(out, lineUtf8.empty() ? std::string_view(text) : lineUtf8);
      break;
    default:
      AppendShown(out, text);
      break;
  }
  return out;
}

}  // namespace nebro::search
