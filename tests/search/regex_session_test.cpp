// The Regex Search session: the results file and session log, its clean-up, and the Find All /
// Find More runs that write it.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/utf.h"
#include "search/regex_worker.h"
#include "search/results_file.h"
#include "support/disk_fixtures.h"

namespace nebro::search {
namespace {

namespace fs = std::filesystem;

using test::ExpectStored;
using test::ReadBytes;
using test::TempFolder;

RegexMatch Match(int64_t start, int64_t end, std::u16string text, int64_t line) {
  RegexMatch m;
  m.start = start;
  m.end = end;
  m.text = std::move(text);
  m.line = line;
  return m;
}

TEST(RegexResults, NamesAndClock) {
  // The folder is made when it is missing; the milliseconds are not padded.
  TempFolder folder;
  const std::string dir = folder / "results";
  EXPECT_EQ(NewResultsPath(dir, ResultsTime{2025, 3, 7, 9, 15, 2, 7}), dir + "/regex_20250307_091502_7.txt");
  EXPECT_TRUE(fs::is_directory(dir));
  EXPECT_EQ(NewResultsPath(dir + "/", ResultsTime{2024, 12, 31, 23, 59, 59, 999}),
            dir + "/regex_20241231_235959_999.txt");
  EXPECT_EQ(NewResultsPath("", ResultsTime{}), "");
  EXPECT_EQ(ClockText(ResultsTime{2025, 1, 1, 9, 5, 2, 0}), "09:05:02");
  const ResultsTime now = ResultsTimeNow();
  EXPECT_TRUE(now.year >= 2024 && now.month >= 1 && now.month <= 12 && now.millisecond < 1000);
}

TEST(RegexResults, SessionFileBytes) {
  TempFolder folder;
  const std::string dir = folder.Path();
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
  ExpectStored(ReadBytes(dialogPath), "search/regex_session_dialog.txt");

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
  ExpectStored(ReadBytes(session.resultsPath), "search/regex_session_results.txt");

  // A folder that cannot be made leaves the log closed, and the writers skip a closed file.
  RegexResultsLog nowhere;
  EnsureSessionLog(nowhere, "/proc/nebro-no-such-folder", t, "p");
  EXPECT_FALSE(ResultsFileOpen(nowhere));
  WriteFindAllHeader(nowhere, u"x", true, true, t);
  WriteResultsBatch(nowhere, {Match(0, 1, u"x", 1)}, 1, 1);
  WriteFindAllFooter(nowhere, 1, t);
  WriteLogEntry(nowhere, "x");
  EXPECT_FALSE(ResultsFileOpen(nowhere));
}

TEST(RegexResults, CleanupBySevenDays) {
  TempFolder folder;
  const auto now = std::chrono::system_clock::now();
  auto age = [&](const std::string& name, std::chrono::nanoseconds old) {
    const auto when = std::chrono::duration_cast<std::chrono::nanoseconds>((now - old).time_since_epoch());
    ASSERT_TRUE(test::SetFileTime(folder / name, when.count())) << name;
  };
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
    test::WriteBytes(folder / c.name, "x");
    age(c.name, c.age);
  }
  // A directory and a symbolic link named like results files are not regular files.
  fs::create_directory(folder / "regex_dir.txt");
  age("regex_dir.txt", hours(24 * 30));
  fs::create_symlink(folder / "regex_young.txt", folder / "regex_link.txt");
  age("regex_link.txt", hours(24 * 30));

  EXPECT_EQ(CleanupOldResults(folder.Path(), now), 3);
  for (const Case& c : cases) EXPECT_EQ(fs::exists(folder / c.name), c.kept) << c.name;
  EXPECT_TRUE(fs::is_directory(folder / "regex_dir.txt"));
  EXPECT_TRUE(fs::is_symlink(folder / "regex_link.txt"));

  // A missing or empty folder is not an error.
  EXPECT_EQ(CleanupOldResults(folder / "missing", now), 0);
  EXPECT_EQ(CleanupOldResults("", now), 0);
}

// Records everything a run reports.
struct Recorder {
  std::vector<std::string> events;
  std::vector<std::vector<RegexMatch>> batches;
  bool color = true;
  ResultsTime time{2025, 3, 7, 9, 15, 2, 7};
  RegexWorkerHooks Hooks(const std::string& folder) {
    RegexWorkerHooks hooks;
    hooks.begin = [this] { events.push_back("begin"); };
    hooks.status = [this](const std::u16string& text) { events.push_back(Utf16ToUtf8(text)); };
    hooks.batch = [this](std::vector<RegexMatch> batch) { batches.push_back(std::move(batch)); };
    hooks.colorResults = [this] { return color; };
    hooks.resultsFolder = folder;
    hooks.clock = [this] {
      ResultsTime now = time;
      time.second += 1;  // every reading one second later
      return now;
    };
    return hooks;
  }
};

RegexSearchRequest Request(std::u16string pattern, std::string document, uint64_t batchSize,
                           uint64_t maxMatches, bool findMore = false) {
  RegexSearchRequest request;
  request.pattern = std::move(pattern);
  request.batchSize = batchSize;
  request.maxMatches = maxMatches;
  request.findMore = findMore;
  request.documentUtf8 = std::move(document);
  return request;
}

TEST(RegexWorker, FindAllFindMoreToTheEndWithResultsFile) {
  TempFolder folder;
  RegexSearchState state;
  Recorder recorder;
  const std::string document =
      "a1 b2\nc3 d\xC3\xA9"
      "4 e5\nf6 \xF0\x9F\x98\x80g7";
  RegexWorkerHooks hooks = recorder.Hooks(folder.Path());

  RegexSearchRequest request = Request(u"\\w\\d", document, 2, 0);
  EXPECT_EQ(RunRegexSearch(request, state, hooks), RegexCompletion::Stopped);
  EXPECT_TRUE(request.documentUtf8.empty());
  EXPECT_EQ(recorder.events, (std::vector<std::string>{"begin", "Found 2 matches (21%)..."}));
  EXPECT_TRUE(state.sessionActive);
  EXPECT_FALSE(state.searching);
  EXPECT_EQ(state.totalMatches, 2u);
  EXPECT_EQ(state.savedCursor, 5u);
  EXPECT_EQ(state.documentLength, 23u);
  EXPECT_EQ(state.documentUtf8, document);
  EXPECT_EQ(state.log.resultsPath, folder / "regex_20250307_091502_7.txt");
  EXPECT_FALSE(ResultsFileOpen(state.log));

  for (RegexCompletion expected : {RegexCompletion::Stopped, RegexCompletion::Stopped, RegexCompletion::Complete}) {
    RegexSearchRequest more = Request(u"\\w\\d", document, 2, 0, true);
    EXPECT_EQ(RunRegexSearch(more, state, hooks), expected);
  }
  EXPECT_FALSE(state.sessionActive);
  EXPECT_EQ(state.totalMatches, 6u);
  // "d\u00E94" has no \w before the digit: 'é' is not an ASCII word character.
  std::vector<std::pair<std::u16string, int64_t>> found;
  for (const RegexMatch& m : state.results) found.emplace_back(m.text, m.line);
  EXPECT_EQ(found, (std::vector<std::pair<std::u16string, int64_t>>{
                       {u"a1", 1}, {u"b2", 1}, {u"c3", 2}, {u"e5", 2}, {u"f6", 3}, {u"g7", 3}}));
  EXPECT_EQ(state.results.back().start, 21);  // the emoji is two units
  EXPECT_EQ(recorder.batches.size(), 3u);
  EXPECT_NE(std::find(recorder.events.begin(), recorder.events.end(), "Found 6 matches (100%)..."),
            recorder.events.end());

  // Nothing left to continue.
  RegexSearchRequest after = Request(u"\\w\\d", document, 2, 0, true);
  const size_t eventsBefore = recorder.events.size();
  EXPECT_EQ(RunRegexSearch(after, state, hooks), RegexCompletion::Stopped);
  EXPECT_EQ(recorder.events.size(), eventsBefore + 1);  // only "begin"
  EXPECT_EQ(state.totalMatches, 6u);

  ExpectStored(ReadBytes(state.log.resultsPath), "search/regex_session_find_all.txt");
}

TEST(RegexWorker, CapsBatchSizesCancelAndOptions) {
  TempFolder folder;
  Recorder recorder;
  const RegexWorkerHooks hooks = recorder.Hooks(folder.Path());
  auto run = [&hooks](RegexSearchState& state, std::u16string pattern, std::string document,
                      uint64_t batchSize, uint64_t maxMatches, bool findMore = false) {
    RegexSearchRequest request = Request(std::move(pattern), std::move(document), batchSize, maxMatches, findMore);
    request.outputFormat = 0;
    return RunRegexSearch(request, state, hooks);
  };

  // A cap below the batch size stops at exactly the cap, writes the footer, ends the session.
  RegexSearchState capped;
  EXPECT_EQ(run(capped, u"a", "aaaaaaaa", 5, 3), RegexCompletion::Stopped);
  EXPECT_EQ(capped.results.size(), 3u);
  EXPECT_FALSE(capped.sessionActive);
  const std::string file = ReadBytes(capped.log.resultsPath);
  EXPECT_NE(file.find("a\na\na\n\n[FIND ALL] "), std::string::npos);
  EXPECT_NE(file.find("Total matches found: 3\n"), std::string::npos);

  // A batch size of 0 finds nothing and keeps the session open.
  RegexSearchState empty;
  EXPECT_EQ(run(empty, u"a", "aaa", 0, 0), RegexCompletion::Stopped);
  EXPECT_TRUE(empty.results.empty());
  EXPECT_TRUE(empty.sessionActive);

  // A cancelled session has no footer; Find More appends to its file and ends it.
  RegexSearchState cancelled;
  cancelled.cancelRequested = true;
  EXPECT_EQ(run(cancelled, u"a", "aaa", 2, 0), RegexCompletion::Stopped);
  EXPECT_TRUE(cancelled.results.empty());
  EXPECT_TRUE(cancelled.sessionActive);
  EXPECT_EQ(ReadBytes(cancelled.log.resultsPath).find("[FIND ALL]"), std::string::npos);
  cancelled.cancelRequested = false;
  EXPECT_EQ(run(cancelled, u"a", "aaa", 5, 0, true), RegexCompletion::Complete);
  EXPECT_EQ(cancelled.results.size(), 3u);
  EXPECT_NE(ReadBytes(cancelled.log.resultsPath).find("Total matches found: 3\n"), std::string::npos);

  // An invalid pattern changes nothing of the session.
  RegexSearchState kept;
  run(kept, u"a", "aaaa", 2, 0);
  const std::string path = kept.log.resultsPath;
  EXPECT_EQ(run(kept, u"(a", "bbbb", 2, 0), RegexCompletion::InvalidPattern);
  EXPECT_EQ(kept.pattern, u"a");
  EXPECT_EQ(kept.results.size(), 2u);
  EXPECT_EQ(kept.log.resultsPath, path);
  EXPECT_EQ(kept.documentUtf8, "aaaa");
  EXPECT_TRUE(kept.sessionActive);

  // Without "Color results" the dialog receives no batches; the results still collect.
  RegexSearchState plain;
  recorder.color = false;
  recorder.batches.clear();
  EXPECT_EQ(run(plain, u"a", "aaa", 10, 0), RegexCompletion::Complete);
  EXPECT_TRUE(recorder.batches.empty());
  EXPECT_EQ(plain.results.size(), 3u);

  // No folder, or one that cannot be written: no file, the search works as usual.
  for (const std::string& where : {std::string(), std::string("/proc/nebro-no-such-folder")}) {
    RegexSearchState state;
    RegexSearchRequest request = Request(u"a", "aaa", 10, 0);
    EXPECT_EQ(RunRegexSearch(request, state, recorder.Hooks(where)), RegexCompletion::Complete);
    EXPECT_EQ(state.results.size(), 3u);
    EXPECT_FALSE(ResultsFileOpen(state.log));
  }
}

// A batch larger than the parts the worker hands on as it goes: the same matches, the repeated
// empty ones included, as one engine call collecting the whole batch, all numbered batch 1.
TEST(RegexWorker, ABatchHandedOnInPartsIsTheWholeBatch) {
  TempFolder folder;
  Recorder recorder;
  const std::string document = std::string(30000, 'a') + " " + std::string(30000, 'b');
  const std::u16string text(document.begin(), document.end());
  for (const std::u16string& pattern : {std::u16string(u"x*"), std::u16string(u"\\w")}) {
    RegexSearchState state;
    recorder.batches.clear();
    RegexSearchRequest request = Request(pattern, document, 50000, 0);
    RunRegexSearch(request, state, recorder.Hooks(folder.Path()));
    uint64_t cursor = 0;
    FindBatchContext context;
    EXPECT_EQ(state.results, FindBatch(text, *BuildRegex(pattern, true, false), cursor, 50000, context).matches);
    EXPECT_GT(recorder.batches.size(), 2u);
    EXPECT_EQ(ReadBytes(state.log.resultsPath).find("[2]"), std::string::npos);
  }
}

// (The progress texts are seen in the events of FindAllFindMoreToTheEndWithResultsFile.)
TEST(RegexWorker, LargeDocumentsAndRunawayPatterns) {
  TempFolder folder;
  Recorder recorder;
  RegexWorkerHooks hooks = recorder.Hooks(folder.Path());

  // Large documents get a notice first.
  {
    RegexSearchState state;
    std::string big(0xA00001, 'x');
    RegexSearchRequest request = Request(u"y", std::move(big), 10, 0);
    EXPECT_EQ(RunRegexSearch(request, state, hooks), RegexCompletion::Complete);
    ASSERT_GE(recorder.events.size(), 2u);
    EXPECT_EQ(recorder.events[1], "Large file detected, searching...");
  }
  // A runaway pattern: the matches before it stay, the status says why, the session ends.
  {
    RegexSearchState state;
    recorder.events.clear();
    std::string text = "ab " + std::string(4000, 'a') + "c";
    RegexSearchRequest request = Request(u"(a+)+b$|ab ", std::move(text), 10, 0);
    EXPECT_EQ(RunRegexSearch(request, state, hooks), RegexCompletion::TooComplex);
    EXPECT_EQ(state.results.size(), 1u);
    EXPECT_FALSE(state.sessionActive);
    EXPECT_EQ(recorder.events.back(), Utf16ToUtf8(kRegexTooComplexText));
    EXPECT_EQ(ReadBytes(state.log.resultsPath).find("[FIND ALL]"), std::string::npos);
  }
}

}  // namespace
}  // namespace nebro::search
