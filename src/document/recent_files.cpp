#include "document/recent_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "common/utf.h"
#include "document/document_questions.h"

namespace nebro::document {

namespace {

char16_t FoldCase(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 0x20) : c;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 0x20);
  if (c >= 0x100 && c <= 0x17F) {
    // Latin Extended-A pairs capital/small as even/odd, except between U+0139 and U+0148 and
    // from U+0179 on, where the capital is odd. U+0130, U+0131, U+0138 and U+017F stand alone.
    if (c == 0x130 || c == 0x131 || c == 0x138 || c == 0x149 || c == 0x17F) return c;
    if (c == 0x178) return 0xFF;
    const bool oddCapital = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    const bool isCapital = oddCapital ? (c & 1) != 0 : (c & 1) == 0;
    return isCapital ? static_cast<char16_t>(c + 1) : c;
  }
  if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return static_cast<char16_t>(c + 0x20);
  if (c >= 0x410 && c <= 0x42F) return static_cast<char16_t>(c + 0x20);
  if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 0x50);
  return c;
}

void StoreEntry(char16_t (&entry)[kRecentFileUnits], std::u16string_view text) {
  size_t n = std::min<size_t>(text.size(), kRecentFileUnits - 1);
  // Never keep half of a surrogate pair at the cut.
  if (n < text.size() && n > 0 && text[n - 1] >= 0xD800 && text[n - 1] <= 0xDBFF) --n;
  std::copy_n(text.data(), n, entry);
  std::fill(entry + n, entry + kRecentFileUnits, u'\0');
}

}  // namespace

bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (FoldCase(a[i]) != FoldCase(b[i])) return false;
  }
  return true;
}

std::u16string_view RecentFileEntry(const RecentFileList& list, int index) {
  if (index < 0 || index >= kRecentFileCount) return {};
  const char16_t* entry = list[index];
  const auto* end = std::find(entry, entry + kRecentFileUnits, u'\0');
  return {entry, static_cast<size_t>(end - entry)};
}

bool AddRecentFile(RecentFileList& list, std::u16string_view path) {
  if (path.empty()) return false;
  // The text may point into the list itself (reopening an entry): work on a copy.
  const std::u16string text(path);
  int found = kRecentFileCount - 1;  // not found: the last entry is the one that falls out
  for (int i = 0; i < kRecentFileCount; ++i) {
    if (EqualIgnoringCase(RecentFileEntry(list, i), text)) {
      found = i;
      break;
    }
  }
  if (found > 0) std::memmove(list[1], list[0], sizeof list[0] * static_cast<size_t>(found));
  StoreEntry(list[0], text);
  return true;
}

bool RemoveRecentFile(RecentFileList& list, int index) {
  if (index < 0 || index >= kRecentFileCount) return false;
  std::memmove(list[index], list[index + 1],
               sizeof list[0] * static_cast<size_t>(kRecentFileCount - 1 - index));
  std::fill(list[kRecentFileCount - 1], list[kRecentFileCount - 1] + kRecentFileUnits, u'\0');
  return true;
}

void ClearRecentFiles(RecentFileList& list) {
  for (auto& entry : list) std::fill(entry, entry + kRecentFileUnits, u'\0');
}

RecentOpenStep RecentOpenFirstStep(std::u16string_view entry, bool fileExists) {
  if (entry.empty()) return RecentOpenStep::Nothing;
  return fileExists ? RecentOpenStep::Load : RecentOpenStep::AskRemoveMissing;
}

std::string RecentMissingQuestion(std::u16string_view entry) {
  return "\"" + DocumentDisplayName(Utf16ToUtf8(entry)) +
         "\" no longer exists on disk.\n\nRemove it from the Recent Files list?";
}

bool PathExists(const std::string& path) {
  struct stat st {};
  return !path.empty() && stat(path.c_str(), &st) == 0;
}

}  // namespace nebro::document
