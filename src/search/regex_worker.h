// The Find All / Find More run of Regex Search, free of any toolkit: the dialog starts a thread
// that calls RunRegexSearch and turns the hooks into messages for its main loop.
//
// The dialog, before starting the thread: removes the match highlights (a new search with "Color
// results" on), copies the editor's text into the request, clears `cancelRequested` and sets
// `searchRunning`. When the completion arrives it clears `searchRunning`.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "search/regex_engine.h"
#include "search/regex_offsets.h"
#include "search/results_file.h"

namespace nebro::search {

// One started search.
struct RegexSearchRequest {
  std::u16string pattern;
  bool matchCase = false;
  bool wholeWord = false;
  bool preserveCase = false;
  uint64_t batchSize = 3000;    // matches collected by one Find All / Find More run
  uint64_t maxMatches = 10000;  // cap on the session's total; 0 = unlimited
  bool includeLineNumbers = true;
  int32_t outputFormat = 1;  // 0 "Only matches", 1 "With line numbers", 2 "Full lines"
  bool findMore = false;     // continue the session instead of starting a new one
  std::string documentUtf8;  // the editor's text; the run takes it over
};

// How a run ended: the completion message's code.
enum class RegexCompletion : int {
  Complete = 0,        // the end of the document was reached
  Stopped = 1,         // batch full, match cap, cancelled, or nothing to continue
  InvalidPattern = 2,  // "Invalid regex pattern."
  TooComplex = 3,      // the engine gave up; the status line already says kRegexTooComplexText
};

// The one search state of the process. Everything except the two flags is guarded by
// `regexMutex`; the dialog takes it to read `results`, `totalMatches` or the cursor and when its
// Apply button writes the options.
struct RegexSearchState {
  std::mutex regexMutex;

  std::u16string pattern;  // the session's

  bool searching = false;
  uint64_t totalMatches = 0;
  std::string documentUtf8;
  std::u16string documentText;
  uint64_t documentLength = 0;  // UTF-16 units, for the progress percentage
  uint64_t cursor = 0;          // where the next batch starts
  uint64_t savedCursor = 0;     // the cursor after the last completed batch: Find More's start
  bool sessionActive = false;
  std::vector<RegexMatch> results;
  RegexOffsetCache offsetCache;  // UTF-16 index -> UTF-8 offset in documentUtf8
  RegexResultsLog log;

  std::atomic<bool> searchRunning{false};    // a worker thread exists
  std::atomic<bool> cancelRequested{false};  // polled by the worker
};

// The process's search state.
RegexSearchState& SharedRegexSearchState();

// What a run reports, and what it needs from outside.
struct RegexWorkerHooks {
  // Posted: the search begins.
  std::function<void()> begin;
  // Posted: a status-line text (at most 255 UTF-16 units); the dialog also updates the progress
  // bar from the cursor.
  std::function<void(const std::u16string&)> status;
  // Sent: one batch for the list and the highlights; the run waits until it returns. Only called
  // while `colorResults` says yes.
  std::function<void(std::vector<RegexMatch>)> batch;
  // The "Color results" option, read while the run goes on.
  std::function<bool()> colorResults;
  // The application folder for a new results file ("" = no results file).
  std::string resultsFolder;
  std::function<ResultsTime()> clock = ResultsTimeNow;
};

// Status texts of a run.
std::u16string LargeFileStatusText();  // "Large file detected, searching..."
std::u16string ProgressStatusText(uint64_t total, uint64_t cursor, uint64_t documentLength);

// One Find All or Find More run over `request.documentUtf8`, which it takes over. Returns the
// completion code; the caller posts it with the request.
RegexCompletion RunRegexSearch(RegexSearchRequest& request, RegexSearchState& state,
                               const RegexWorkerHooks& hooks);

}  // namespace nebro::search
