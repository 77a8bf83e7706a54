#include "search/results_file.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace nebro {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

void ExpectMatchesStored(const std::string& actual, const std::string& name) {
  const fs::path expected = fs::path(NEBRO_TEST_DATA) / "search" / name;
  if (actual != ReadFile(expected)) {
    std::ofstream(expected.string() + ".new", std::ios::binary) << actual;
    ADD_FAILURE() << "differs from " << expected << "; see the .new file beside it";
  }
}

struct TempFolder {
  fs::path path;
  explicit TempFolder(const char* tag) {
    path = fs::temp_directory_path() /
           (std::string("nebro_regex_results_") + tag + "_" + std::to_string(::getpid()));
    fs::remove_all(path);
  }
  ~TempFolder() { fs::remove_all(path); }
};

RegexMatch Match(int64_t start, int64_t end, std::u16string text, int64_t line) {
  RegexMatch m;
  m.start = start;
  m.end = end;
  m.text = std::move(text);
  m.line = line;
  return m;
}

TEST(RegexResults, NamesAndClock) {
  const ResultsTime t{2025, 3, 7, 9, 15, 2, 7};
  EXPECT_EQ(NewResultsPath("/x/Nebro", t), "/x/Nebro/regex_20250307_091502_7.txt");
  EXPECT_EQ(NewResultsPath("/x/Nebro/", ResultsTime{2024, 12, 31, 23, 59, 59, 999}),
            "/x/Nebro/regex_20241231_235959_999.txt");
  EXPECT_EQ(NewResultsPath("", t), "");
  EXPECT_EQ(ClockText(ResultsTime{2025, 1, 1, 9, 5, 2, 0}), "09:05:02");

  const ResultsTime now = ResultsTimeNow();
  EXPECT_GE(now.year, 2024);
  EXPECT_TRUE(now.month >= 1 && now.month <= 12 && now.millisecond >= 0 && now.millisecond < 1000);

  // The folder is made when it is missing.
  TempFolder folder("names");
  const std::string path = NewResultsPath(folder.path.string(), t);
  EXPECT_TRUE(fs::is_directory(folder.path));
  EXPECT_EQ(fs::path(path).parent_path(), folder.path);
}

TEST(RegexResults, SessionFileBytes) {
  TempFolder folder("bytes");
  const std::string dir = folder.path.string();
  RegexResultsLog log;

  // A dialog action before any Find All makes a new file with the short header.
  const ResultsTime t{2025, 3, 7, 9, 15, 2, 7};
  EnsureSessionLog(log, dir, t, "c\xC3\xA9t");
  ASSERT_TRUE(ResultsFileOpen(log));
  WriteLogEntry(log, FindLogEntry(false, ResultsTime{2025, 3, 7, 9, 15, 3, 0}, 3, 41, u"c\u00E9t"));
  WriteLogEntry(log, FindLogEntry(true, ResultsTime{2025, 3, 7, 9, 15, 4, 0}, 1, 0, u"two\nlines"));
  WriteLogEntry(log, ReplaceLogEntry(ResultsTime{2025, 3, 7, 10, 0, 0, 0}, u"Hello", u"World"));
  WriteLogEntry(log,
                ReplaceAllLogEntry(ResultsTime{2025, 3, 7, 10, 0, 1, 0}, 12, u"(\\w+)@x", u"$1"));
  // A further action with the file still open adds no header.
  EnsureSessionLog(log, dir, t, "other");
  CloseResultsFile(log);
  // Reopened after a close: the short header again; an empty pattern writes none.
  EnsureSessionLog(log, dir, t, "again");
  CloseResultsFile(log);
  EnsureSessionLog(log, dir, t, "");
  WriteLogEntry(log, "tail\n");
  CloseResultsFile(log);
  const std::string dialogPath = log.resultsPath;
  EXPECT_EQ(dialogPath, dir + "/regex_20250307_091502_7.txt");
  ExpectMatchesStored(ReadFile(dialogPath), "regex_session_dialog.txt");

  // A Find All session: header, batches in both output styles, footer. A new session truncates
  // a file of the same name.
  RegexResultsLog session;
  session.resultsPath = NewResultsPath(dir, t);
  ASSERT_TRUE(OpenResultsFile(session, false));
  WriteFindAllHeader(session, u"\\bw\u00F6rd\\b", true, false, ResultsTime{2025, 3, 7, 8, 0, 9, 0});
  WriteResultsBatch(session, {Match(0, 4, u"w\u00F6rd", 1), Match(10, 19, u"multi\nline", 1)}, 1,
                    1);
  WriteResultsBatch(session, {Match(25, 29, u"\U0001F600\U0001F600", 3)}, 2, 2);
  CloseResultsFile(session);
  ASSERT_TRUE(OpenResultsFile(session, true));
  WriteResultsBatch(session, {Match(40, 42, u"ok", 5), Match(45, 45, u"", 5)}, 3, 0);
  WriteFindAllFooter(session, 5, ResultsTime{2025, 3, 7, 8, 1, 0, 0});
  CloseResultsFile(session);
  ExpectMatchesStored(ReadFile(session.resultsPath), "regex_session_results.txt");

  // Writers skip a file that is not open.
  RegexResultsLog closed;
  WriteFindAllHeader(closed, u"x", true, true, t);
  WriteResultsBatch(closed, {Match(0, 1, u"x", 1)}, 1, 1);
  WriteFindAllFooter(closed, 1, t);
  WriteLogEntry(closed, "x");
  EXPECT_FALSE(ResultsFileOpen(closed));
  // And a folder that cannot be made leaves the log closed.
  RegexResultsLog nowhere;
  EnsureSessionLog(nowhere, "/proc/nebro-no-such-folder", t, "p");
  EXPECT_FALSE(ResultsFileOpen(nowhere));
}

void SetAge(const fs::path& path, std::chrono::system_clock::time_point now,
            std::chrono::nanoseconds age) {
  const auto when =
      std::chrono::duration_cast<std::chrono::nanoseconds>((now - age).time_since_epoch()).count();
  timespec times[2];
  times[0].tv_sec = times[1].tv_sec = when / 1'000'000'000;
  times[0].tv_nsec = times[1].tv_nsec = when % 1'000'000'000;
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

TEST(RegexResults, CleanupBySevenDays) {
  TempFolder folder("cleanup");
  fs::create_directories(folder.path);
  const auto now = std::chrono::system_clock::now();
  using std::chrono::hours;
  using std::chrono::nanoseconds;
  using std::chrono::seconds;
  const auto week = seconds(604800);
  struct Case {
    std::string name;
    nanoseconds age;
    bool kept;
  };
  const std::vector<Case> cases = {
      {"regex_20250101_000000_1.txt", hours(24 * 8), false},
      {"regex_.txt", week + seconds(1), false},
      {"regex_foreign.txt", week + nanoseconds(1), false},
      {"regex_exactly.txt", week, true},
      {"regex_young.txt", hours(24 * 6), true},
      {"regex_old.log", hours(24 * 30), true},
      {"regexA.txt", hours(24 * 30), true},
      {"temp_20250101_000000_001.txt", hours(24 * 30), true},
  };
  for (const Case& c : cases) {
    std::ofstream(folder.path / c.name) << "x";
    SetAge(folder.path / c.name, now, c.age);
  }
  // A directory and a symbolic link named like results files are not regular files.
  fs::create_directory(folder.path / "regex_dir.txt");
  SetAge(folder.path / "regex_dir.txt", now, hours(24 * 30));
  fs::create_symlink(folder.path / "regex_young.txt", folder.path / "regex_link.txt");
  SetAge(folder.path / "regex_link.txt", now, hours(24 * 30));

  EXPECT_EQ(CleanupOldResults(folder.path.string(), now), 3);
  for (const Case& c : cases) EXPECT_EQ(fs::exists(folder.path / c.name), c.kept) << c.name;
  EXPECT_TRUE(fs::is_directory(folder.path / "regex_dir.txt"));
  EXPECT_TRUE(fs::is_symlink(folder.path / "regex_link.txt"));

  // A missing or empty folder is not an error.
  EXPECT_EQ(CleanupOldResults((folder.path / "missing").string(), now), 0);
  EXPECT_EQ(CleanupOldResults("", now), 0);
}

}  // namespace
}  // namespace nebro
