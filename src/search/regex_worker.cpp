#include "search/regex_worker.h"

#include <algorithm>
#include <new>

#include "common/utf.h"

namespace nebro::search {

namespace {

// Documents longer than this many UTF-16 units get a notice before the search starts.
constexpr uint64_t kLargeDocumentUnits = 0xA00000;
// A batch is collected in parts of at most this many matches, each handed on as it is found, so the
// list fills while the search goes on.
constexpr uint64_t kPartMatches = 16384;
// The dialog's status buffer holds 256 units with the terminator.
constexpr size_t kStatusMaxUnits = 255;

std::u16string Ascii(std::string_view s) { return std::u16string(s.begin(), s.end()); }

void PostStatus(const RegexWorkerHooks& hooks, std::u16string text) {
  if (text.size() > kStatusMaxUnits) text.resize(kStatusMaxUnits);
  if (hooks.status) hooks.status(text);
}

bool ColorResults(const RegexWorkerHooks& hooks) {
  return hooks.colorResults && hooks.colorResults();
}

}  // namespace

RegexSearchState& SharedRegexSearchState() {
  static RegexSearchState state;
  return state;
}

std::u16string LargeFileStatusText() { return u"Large file detected, searching..."; }

std::u16string ProgressStatusText(uint64_t total, uint64_t cursor, uint64_t documentLength) {
  const auto percent = static_cast<uint64_t>(static_cast<double>(cursor) /
                                             static_cast<double>(documentLength) * 100.0);
  return u"Found " + Ascii(std::to_string(total)) + u" matches (" + Ascii(std::to_string(percent)) +
         u"%)...";
}

RegexCompletion RunRegexSearch(RegexSearchRequest& request, RegexSearchState& state,
                               const RegexWorkerHooks& hooks) {
  if (hooks.begin) hooks.begin();

  std::string documentUtf8 = std::move(request.documentUtf8);
  request.documentUtf8.clear();
  std::u16string documentText = Utf8ToUtf16(documentUtf8);
  if (documentText.size() > kLargeDocumentUnits) PostStatus(hooks, LargeFileStatusText());

  RegexPtr regex = BuildRegex(request.pattern, request.matchCase, request.wholeWord);
  if (!regex) return RegexCompletion::InvalidPattern;

  {
    std::lock_guard<std::mutex> lock(state.regexMutex);
    if (request.findMore) {
      if (!state.sessionActive) return RegexCompletion::Stopped;
      state.cursor = state.savedCursor;
      if (!ResultsFileOpen(state.log) && !state.log.resultsPath.empty()) {
        OpenResultsFile(state.log, true);
      }
    } else {
      CloseResultsFile(state.log);
      state.pattern = request.pattern;
      state.searching = true;
      state.totalMatches = 0;
      state.cursor = 0;
      state.savedCursor = 0;
      state.sessionActive = true;
      state.results.clear();
      const ResultsTime now = hooks.clock();
      state.log.resultsPath = NewResultsPath(hooks.resultsFolder, now);
      if (OpenResultsFile(state.log, false)) {
        WriteFindAllHeader(state.log, request.pattern, request.matchCase, request.wholeWord, now);
      }
    }
    state.documentUtf8 = std::move(documentUtf8);
    state.documentText = std::move(documentText);
    state.documentLength = state.documentText.size();
    state.offsetCache.Clear();
  }

  const uint64_t batchSize = request.batchSize;
  const uint64_t maxMatches = request.maxMatches;
  uint64_t total = 0;
  if (request.findMore) {
    std::lock_guard<std::mutex> lock(state.regexMutex);
    total = state.totalMatches;
  }
  // Every match of this run carries the run's batch number.
  const uint64_t batchNumber = batchSize == 0 ? 1 : total / batchSize + 1;
  uint64_t foundThisRun = 0;
  bool complete = false;
  bool cancelled = false;
  bool tooComplex = false;
  FindBatchContext context;
  context.cancel = &state.cancelRequested;
  context.wellFormed = true;  // the document copy comes from Utf8ToUtf16

  {
    std::lock_guard<std::mutex> lock(state.regexMutex);
    context.batchStart = static_cast<int64_t>(state.cursor);
  }

  try {
    if (!state.cancelRequested.load()) {
      for (;;) {
        if (maxMatches != 0 && total >= maxMatches) break;
        if (foundThisRun >= batchSize) break;
        uint64_t want = batchSize - foundThisRun;
        if (maxMatches != 0) want = std::min(want, maxMatches - total);
        want = std::min(want, kPartMatches);

        RegexBatch batch;
        {
          std::lock_guard<std::mutex> lock(state.regexMutex);
          batch = FindBatch(state.documentText, *regex, state.cursor, want, context);
        }
        if (batch.status == RegexStatus::TooComplex) tooComplex = true;
        if (batch.matches.empty()) {
          // An empty batch means the end of the document, unless the search was interrupted.
          if (batch.status == RegexStatus::Cancelled) {
            cancelled = true;
          } else if (!tooComplex) {
            complete = true;
          }
          break;
        }
        const uint64_t size = batch.matches.size();
        {
          std::lock_guard<std::mutex> lock(state.regexMutex);
          state.results.insert(state.results.end(), batch.matches.begin(), batch.matches.end());
          state.savedCursor = state.cursor;
        }
        if (ColorResults(hooks) && hooks.batch) hooks.batch(batch.matches);
        uint64_t cursor = 0;
        uint64_t length = 0;
        {
          std::lock_guard<std::mutex> lock(state.regexMutex);
          WriteResultsBatch(state.log, batch.matches, batchNumber, request.outputFormat);
          total += size;
          state.totalMatches = total;
          cursor = state.cursor;
          length = state.documentLength;
        }
        if (length != 0) PostStatus(hooks, ProgressStatusText(total, cursor, length));
        if (tooComplex) break;
        if (state.cancelRequested.load()) {
          cancelled = true;
          break;
        }
        foundThisRun += size;
      }
    }
  } catch (const std::bad_alloc&) {
    // Matches that no longer fit in memory end the run like a pattern the engine gives up on.
    tooComplex = true;
  }

  {
    std::lock_guard<std::mutex> lock(state.regexMutex);
    const bool capReached = maxMatches != 0 && total >= maxMatches;
    if (ResultsFileOpen(state.log)) {
      if (complete || capReached) WriteFindAllFooter(state.log, total, hooks.clock());
      CloseResultsFile(state.log);
    }
    // The session ends at the end of the document or the cap, whether or not the results file
    // could be written; also when the engine gave up, since Find More would stop at the same place.
    if (complete || capReached || tooComplex) state.sessionActive = false;
    state.searching = false;
  }

  if (tooComplex) {
    PostStatus(hooks, std::u16string(kRegexTooComplexText));
    return RegexCompletion::TooComplex;
  }
  if (cancelled) return RegexCompletion::Stopped;
  return complete ? RegexCompletion::Complete : RegexCompletion::Stopped;
}

}  // namespace nebro::search
