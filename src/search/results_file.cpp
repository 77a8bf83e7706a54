#include "search/results_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstring>

#include "common/utf.h"

namespace nebro::search {

namespace {

constexpr std::string_view kRule = "========================================";  // 40
constexpr std::string_view kEmDash = "\xE2\x80\x94";                            // U+2014
constexpr int64_t kResultsMaxAgeSeconds = 7 * 24 * 60 * 60;

void Write(RegexResultsLog& log, std::string_view bytes) {
  if (log.file && !bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), log.file.get());
}

void Flush(RegexResultsLog& log) {
  if (log.file) std::fflush(log.file.get());
}

void AppendNumber(std::string& out, int64_t value) { out += std::to_string(value); }

std::string TwoDigits(int value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%02d", value);
  return buffer;
}

}  // namespace

ResultsTime ResultsTimeNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm parts{};
  localtime_r(&now.tv_sec, &parts);
  ResultsTime t;
  t.year = parts.tm_year + 1900;
  t.month = parts.tm_mon + 1;
  t.day = parts.tm_mday;
  t.hour = parts.tm_hour;
  t.minute = parts.tm_min;
  t.second = parts.tm_sec;
  t.millisecond = static_cast<int>(now.tv_nsec / 1'000'000);
  return t;
}

std::string ClockText(const ResultsTime& time) {
  return TwoDigits(time.hour) + ":" + TwoDigits(time.minute) + ":" + TwoDigits(time.second);
}

std::string NewResultsPath(const std::string& folder, const ResultsTime& t) {
  if (folder.empty()) return std::string();
  mkdir(folder.c_str(), 0700);  // an existing folder is fine; other failures show at open time
  char name[96];
  std::snprintf(name, sizeof name, "regex_%04d%02d%02d_%02d%02d%02d_%d.txt", t.year, t.month, t.day,
                t.hour, t.minute, t.second, t.millisecond);
  std::string path = folder;
  if (path.back() != '/') path += '/';
  return path + name;
}

void ResultsFileCloser::operator()(std::FILE* file) const { std::fclose(file); }

bool ResultsFileOpen(const RegexResultsLog& log) { return log.file != nullptr; }

bool OpenResultsFile(RegexResultsLog& log, bool append) {
  log.file.reset();
  if (log.resultsPath.empty()) return false;
  log.file.reset(std::fopen(log.resultsPath.c_str(), append ? "ab" : "wb"));
  return log.file != nullptr;
}

void CloseResultsFile(RegexResultsLog& log) { log.file.reset(); }

void WriteFindAllHeader(RegexResultsLog& log, std::u16string_view pattern, bool matchCase,
                        bool wholeWord, const ResultsTime& started) {
  if (!log.file) return;
  std::string out = "Regex Session Log\n";
  out += "Pattern:    " + Utf16ToUtf8(pattern) + "\n";
  out += std::string("Match case: ") + (matchCase ? "Yes" : "No") +
         "  |  Whole word: " + (wholeWord ? "Yes" : "No") + "  |  Started: " + ClockText(started) +
         "\n";
  out += kRule;
  out += "\n\n";
  Write(log, out);
}

void WriteResultsBatch(RegexResultsLog& log, const std::vector<RegexMatch>& batch,
                       uint64_t batchNumber, int32_t outputFormat) {
  if (!log.file) return;
  const bool withPlace = outputFormat == 1 || outputFormat == 2;
  const std::string prefix = "[" + std::to_string(batchNumber) + "] Ln ";
  std::string out;
  for (const RegexMatch& m : batch) {
    if (withPlace) {
      out += prefix;
      AppendNumber(out, m.line);
      out += "  Pos ";
      AppendNumber(out, m.start);
      out += '-';
      AppendNumber(out, m.end);
      out += ": ";
    }
    out += Utf16ToUtf8(m.text);
    out += '\n';
    if (out.size() >= (1u << 20)) {
      Write(log, out);
      out.clear();
    }
  }
  Write(log, out);
  Flush(log);
}

void WriteFindAllFooter(RegexResultsLog& log, uint64_t total, const ResultsTime& now) {
  if (!log.file) return;
  std::string out =
      "\n[FIND ALL] " + ClockText(now) + " " + std::string(kEmDash) + " Search complete\n";
  out += "\n";
  out += kRule;
  out += "\nTotal matches found: " + std::to_string(total) + "\n";
  Write(log, out);
  Flush(log);
}

void EnsureSessionLog(RegexResultsLog& log, const std::string& folder, const ResultsTime& now,
                      std::string_view patternUtf8) {
  if (log.resultsPath.empty()) log.resultsPath = NewResultsPath(folder, now);
  if (log.file) return;
  if (OpenResultsFile(log, true) && !patternUtf8.empty()) {
    std::string out = "Regex Session Log\nPattern: ";
    out += patternUtf8;
    out += "\n";
    out += kRule;
    out += "\n\n";
    Write(log, out);
  }
}

void WriteLogEntry(RegexResultsLog& log, std::string_view entry) {
  if (!log.file) return;
  Write(log, entry);
  Flush(log);
}

std::string FindLogEntry(bool previous, const ResultsTime& time, int64_t line, int64_t position,
                         std::u16string_view matchedText) {
  std::string out = previous ? "[FIND PREV] " : "[FIND] ";
  out += ClockText(time) + " " + std::string(kEmDash) + " Ln " + std::to_string(line) + ", Col " +
         std::to_string(position) + "\n  " + Utf16ToUtf8(matchedText) + "\n\n";
  return out;
}

std::string ReplaceLogEntry(const ResultsTime& time, std::u16string_view before,
                            std::u16string_view after) {
  return "[REPLACE] " + ClockText(time) + " " + std::string(kEmDash) + " Replaced 1 match\n" +
         "  Before: " + Utf16ToUtf8(before) + "\n" + "  After:  " + Utf16ToUtf8(after) + "\n\n";
}

std::string ReplaceAllLogEntry(const ResultsTime& time, uint64_t count, std::u16string_view pattern,
                               std::u16string_view replacement) {
  return "[REPLACE ALL] " + ClockText(time) + " " + std::string(kEmDash) + " Replaced " +
         std::to_string(count) + " match(es)\n" + "  Pattern: " + Utf16ToUtf8(pattern) + "  ->  " +
         Utf16ToUtf8(replacement) + "\n\n";
}

int CleanupOldResults(const std::string& folder, std::chrono::system_clock::time_point now) {
  if (folder.empty()) return 0;
  DIR* dir = opendir(folder.c_str());
  if (!dir) return 0;
  const int64_t nowSeconds =
      std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count();
  const int64_t nowNanos =
      std::chrono::duration_cast<std::chrono::nanoseconds>(now.time_since_epoch()).count() -
      nowSeconds * 1'000'000'000;
  int deleted = 0;
  while (const dirent* entry = readdir(dir)) {
    const std::string_view name = entry->d_name;
    if (name.size() < 10 || name.substr(0, 6) != "regex_" ||
        name.substr(name.size() - 4) != ".txt") {
      continue;
    }
    struct stat info {};
    if (fstatat(dirfd(dir), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (!S_ISREG(info.st_mode)) continue;
    // Age to the nanosecond: older than seven days means strictly more than 604,800 s.
    int64_t ageSeconds = nowSeconds - static_cast<int64_t>(info.st_mtim.tv_sec);
    const int64_t ageNanos = nowNanos - static_cast<int64_t>(info.st_mtim.tv_nsec);
    if (ageSeconds > kResultsMaxAgeSeconds ||
        (ageSeconds == kResultsMaxAgeSeconds && ageNanos > 0)) {
      if (unlinkat(dirfd(dir), entry->d_name, 0) == 0) ++deleted;
    }
  }
  closedir(dir);
  return deleted;
}

}  // namespace nebro::search
