// The Regex Search results file, which is also the session log of the dialog's actions.
//
// One UTF-8 text file per session, "regex_YYYYMMDD_HHMMSS_<ms>.txt" in the application folder,
// with LF line ends and no byte-order mark. Find All writes a header, one line per match and, when
// the session ends, a footer; Find, Find Prev, Replace and Replace All add entries. A file that
// cannot be created is skipped silently: every writer first checks that the file is open. Files
// older than seven days are deleted when the main window starts.
//
// Callers hold the search mutex around every function that takes a RegexResultsLog.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "search/regex_engine.h"

namespace nebro::search {

// A local wall-clock time: the clock behind file names and time stamps.
struct ResultsTime {
  int year = 0;
  int month = 0;  // 1-12
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
};

ResultsTime ResultsTimeNow();

// "HH:MM:SS", each part two digits: the time stamps inside the file.
std::string ClockText(const ResultsTime& time);

// folder + "/regex_" + YYYYMMDD + "_" + HHMMSS + "_" + milliseconds (not padded) + ".txt".
// Creates the folder when it is missing. Empty when `folder` is empty.
std::string NewResultsPath(const std::string& folder, const ResultsTime& time);

struct ResultsFileCloser {
  void operator()(std::FILE* file) const;
};

// The path of the session's file and the file while it is open.
struct RegexResultsLog {
  std::string resultsPath;
  std::unique_ptr<std::FILE, ResultsFileCloser> file;
};

bool ResultsFileOpen(const RegexResultsLog& log);
// Opens `resultsPath` truncated (a new Find All) or for appending; a failure leaves it closed.
bool OpenResultsFile(RegexResultsLog& log, bool append);
void CloseResultsFile(RegexResultsLog& log);

// The Find All header:
//   "Regex Session Log\n"
//   "Pattern:    " pattern "\n"
//   "Match case: Yes|No  |  Whole word: Yes|No  |  Started: HH:MM:SS\n"
//   40 '=' "\n\n"
void WriteFindAllHeader(RegexResultsLog& log, std::u16string_view pattern, bool matchCase,
                        bool wholeWord, const ResultsTime& started);

// One line per match, then a flush: "[batch] Ln line  Pos start-end: text\n" for output formats
// 1 and 2, the bare text + "\n" for format 0 ("Only matches"). Texts holding line breaks are
// written as they are.
void WriteResultsBatch(RegexResultsLog& log, const std::vector<RegexMatch>& batch,
                       uint64_t batchNumber, int32_t outputFormat);

// The footer of a session that reached the end of the document or the match cap, then a flush.
void WriteFindAllFooter(RegexResultsLog& log, uint64_t total, const ResultsTime& now);

// Before every logged dialog action: gives the log a new path when it has none, and opens a
// closed file for appending; when that succeeds and `patternUtf8` is not empty, writes the short
// header ("Regex Session Log\n", "Pattern: " pattern "\n", 40 '=' "\n\n").
void EnsureSessionLog(RegexResultsLog& log, const std::string& folder, const ResultsTime& now,
                      std::string_view patternUtf8);

// Appends an entry and flushes; nothing when the file is not open.
void WriteLogEntry(RegexResultsLog& log, std::string_view entry);

// The dialog's entries. `line` is the editor's 1-based line of the match and `position` its start
// as a byte offset in the editor's UTF-8 text.
std::string FindLogEntry(bool previous, const ResultsTime& time, int64_t line, int64_t position,
                         std::u16string_view matchedText);
std::string ReplaceLogEntry(const ResultsTime& time, std::u16string_view before,
                            std::u16string_view after);
std::string ReplaceAllLogEntry(const ResultsTime& time, uint64_t count, std::u16string_view pattern,
                               std::u16string_view replacement);

// Deletes every regular file in `folder` whose name begins with "regex_" and ends with ".txt"
// and whose last modification lies more than seven days (604,800 s) before `now`. A missing folder
// and files that cannot be deleted are not errors. Returns the number of files deleted.
int CleanupOldResults(const std::string& folder, std::chrono::system_clock::time_point now);

}  // namespace nebro::search
