// The recent-files list: ten entries of 260 UTF-16 units, entry 0 the most recent, an entry whose
// first unit is 0 empty. It lives in the settings record; after every change here the caller
// saves the settings.
#pragma once

#include <string>
#include <string_view>

namespace nebro::document {

inline constexpr int kRecentFileCount = 10;
inline constexpr int kRecentFileUnits = 260;
using RecentFileList = char16_t[kRecentFileCount][kRecentFileUnits];

// Moves `path` to the top. An entry equal to it without regard to case is taken out (entries
// above it move down one place); otherwise entry 9 falls out. The path is stored truncated to
// 259 units with the rest of the entry zeroed. Returns false (nothing changed) for "".
bool AddRecentFile(RecentFileList& list, std::u16string_view path);

// Takes entry `index` out: the entries after it move up and entry 9 becomes empty. Returns false
// (nothing changed) for an index outside 0 to 9.
bool RemoveRecentFile(RecentFileList& list, int index);

// Empties all ten entries.
void ClearRecentFiles(RecentFileList& list);

// The text of entry `index` (empty for an empty entry or an index outside 0 to 9).
std::u16string_view RecentFileEntry(const RecentFileList& list, int index);

// Equal without regard to case: ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic letters
// fold to their small forms; everything else compares exactly.
bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b);

// What choosing entry `index` from the menu does first: nothing for an empty entry; asks whether
// to drop an entry whose file cannot be examined (on Yes: RemoveRecentFile); else the usual
// unsaved-changes question, then the load (and AddRecentFile on success).
enum class RecentOpenStep {
  Nothing,
  AskRemoveMissing,
  Load,
};
RecentOpenStep RecentOpenFirstStep(std::u16string_view entry, bool fileExists);

// "\"<name>\" no longer exists on disk.\n\nRemove it from the Recent Files list?" (UTF-8), asked
// as Yes/No under kTitleRecentMissing.
std::string RecentMissingQuestion(std::u16string_view entry);

// Whether the file system can tell anything about `path` (a file or a folder there).
bool PathExists(const std::string& path);

}  // namespace nebro::document
