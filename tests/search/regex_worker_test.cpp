#include "search/regex_worker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/utf.h"

namespace nebro {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// Compares with a stored expectation; a mismatch leaves the actual bytes in a .new file beside it.
void ExpectMatchesStored(const std::string& actual, const std::string& name) {
  const fs::path expected = fs::path(NEBRO_TEST_DATA) / "search" / name;
  const std::string stored = ReadFile(expected);
  if (actual != stored) {
    std::ofstream(expected.string() + ".new", std::ios::binary) << actual;
    ADD_FAILURE() << "differs from " << expected << "; see the .new file beside it";
  }
}

struct TempFolder {
  fs::path path;
  TempFolder() {
    path = fs::temp_directory_path() / ("nebro_regex_worker_" + std::to_string(::getpid()) + "_" +
                                        std::to_string(reinterpret_cast<uintptr_t>(this)));
    fs::remove_all(path);
  }
  ~TempFolder() { fs::remove_all(path); }
};

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
  request.replacement.assign(1, u'r');  // (a literal here trips a false GCC 12 warning)
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
  RegexWorkerHooks hooks = recorder.Hooks(folder.path.string());

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
  EXPECT_EQ(state.log.resultsPath, (folder.path / "regex_20250307_091502_7.txt").string());
  EXPECT_FALSE(ResultsFileOpen(state.log));

  for (int run = 0; run < 2; ++run) {
    RegexSearchRequest more = Request(u"\\w\\d", document, 2, 0, true);
    EXPECT_EQ(RunRegexSearch(more, state, hooks), RegexCompletion::Stopped);
  }
  RegexSearchRequest last = Request(u"\\w\\d", document, 2, 0, true);
  EXPECT_EQ(RunRegexSearch(last, state, hooks), RegexCompletion::Complete);
  EXPECT_FALSE(state.sessionActive);
  EXPECT_EQ(state.totalMatches, 6u);
  // "d\u00E94" has no \w before the digit: 'é' is not an ASCII word character.
  std::vector<std::u16string> texts;
  std::vector<int64_t> lines;
  for (const RegexMatch& m : state.results) {
    texts.push_back(m.text);
    lines.push_back(m.line);
  }
  EXPECT_EQ(texts, (std::vector<std::u16string>{u"a1", u"b2", u"c3", u"e5", u"f6", u"g7"}));
  EXPECT_EQ(lines, (std::vector<int64_t>{1, 1, 2, 2, 3, 3}));
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

  ExpectMatchesStored(ReadFile(state.log.resultsPath), "regex_session_find_all.txt");
}

TEST(RegexWorker, CapsBatchSizesCancelAndOptions) {
  TempFolder folder;
  Recorder recorder;
  RegexWorkerHooks hooks = recorder.Hooks(folder.path.string());

  // A cap below the batch size stops at exactly the cap, writes the footer, ends the session.
  {
    RegexSearchState state;
    RegexSearchRequest request = Request(u"a", "aaaaaaaa", 5, 3);
    request.outputFormat = 0;
    EXPECT_EQ(RunRegexSearch(request, state, hooks), RegexCompletion::Stopped);
    EXPECT_EQ(state.results.size(), 3u);
    EXPECT_FALSE(state.sessionActive);
    const std::string file = ReadFile(state.log.resultsPath);
    EXPECT_NE(file.find("a\na\na\n\n[FIND ALL] "), std::string::npos);
    EXPECT_NE(file.find("Total matches found: 3\n"), std::string::npos);
  }
  // A batch size of 0 finds nothing and keeps the session open.
  {
    RegexSearchState state;
    RegexSearchRequest request = Request(u"a", "aaa", 0, 0);
    EXPECT_EQ(RunRegexSearch(request, state, hooks), RegexCompletion::Stopped);
    EXPECT_TRUE(state.results.empty());
    EXPECT_TRUE(state.sessionActive);
  }
  // A cancelled session has no footer; Find More appends to its file and ends it.
  {
    RegexSearchState state;
    state.cancelRequested = true;
    RegexSearchRequest request = Request(u"a", "aaa", 2, 0);
    EXPECT_EQ(RunRegexSearch(request, state, hooks), RegexCompletion::Stopped);
    EXPECT_TRUE(state.results.empty());
    EXPECT_TRUE(state.sessionActive);
    const std::string path = state.log.resultsPath;
    EXPECT_EQ(ReadFile(path).find("[FIND ALL]"), std::string::npos);
    state.cancelRequested = false;
    RegexSearchRequest more = Request(u"a", "aaa", 5, 0, true);
    EXPECT_EQ(RunRegexSearch(more, state, hooks), RegexCompletion::Complete);
    EXPECT_EQ(state.results.size(), 3u);
    EXPECT_NE(ReadFile(path).find("Total matches found: 3\n"), std::string::npos);
  }
  // An invalid pattern changes nothing of the session.
  {
    RegexSearchState state;
    RegexSearchRequest request = Request(u"a", "aaaa", 2, 0);
    RunRegexSearch(request, state, hooks);
    const std::string path = state.log.resultsPath;
    RegexSearchRequest bad = Request(u"(a", "bbbb", 2, 0);
    EXPECT_EQ(RunRegexSearch(bad, state, hooks), RegexCompletion::InvalidPattern);
    EXPECT_EQ(state.pattern, u"a");
    EXPECT_EQ(state.results.size(), 2u);
    EXPECT_EQ(state.log.resultsPath, path);
    EXPECT_EQ(state.documentUtf8, "aaaa");
    EXPECT_TRUE(state.sessionActive);
  }
  // Without "Color results" the dialog receives no batches; the results still collect.
  {
    RegexSearchState state;
    recorder.color = false;
    recorder.batches.clear();
    RegexSearchRequest request = Request(u"a", "aaa", 10, 0);
    EXPECT_EQ(RunRegexSearch(request, state, hooks), RegexCompletion::Complete);
    EXPECT_TRUE(recorder.batches.empty());
    EXPECT_EQ(state.results.size(), 3u);
    recorder.color = true;
  }
  // No folder, or one that cannot be written: no file, the search works as usual.
  for (const std::string& where : {std::string(), std::string("/proc/nebro-no-such-folder")}) {
    RegexSearchState state;
    RegexWorkerHooks noFile = recorder.Hooks(where);
    RegexSearchRequest request = Request(u"a", "aaa", 10, 0);
    EXPECT_EQ(RunRegexSearch(request, state, noFile), RegexCompletion::Complete);
    EXPECT_EQ(state.results.size(), 3u);
    EXPECT_FALSE(ResultsFileOpen(state.log));
  }
}

TEST(RegexWorker, StatusTextsAndRunawayPatterns) {
  EXPECT_EQ(ProgressStatusText(5, 1, 3), u"Found 5 matches (33%)...");
  EXPECT_EQ(ProgressStatusText(0, 3, 3), u"Found 0 matches (100%)...");

  TempFolder folder;
  Recorder recorder;
  RegexWorkerHooks hooks = recorder.Hooks(folder.path.string());

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
    EXPECT_EQ(ReadFile(state.log.resultsPath).find("[FIND ALL]"), std::string::npos);
  }
}

}  // namespace
}  // namespace nebro
