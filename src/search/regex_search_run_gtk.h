// Runs one Find All / Find More of Regex Search on a thread of its own, at a lower priority, and
// hands its reports to the main loop: the worker never touches a widget.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "search/regex_worker.h"

namespace nebro::search {

// Called on the main loop while the run is the current one.
struct RegexRunReports {
  // A status text and, when it comes with one, the share of the document searched (0..1; < 0 for
  // none).
  std::function<void(const std::string& text, double fraction)> status;
  // One batch of matches; the worker waits until this has taken them.
  std::function<void(std::vector<RegexMatch> matches)> batch;
  // The run is over and its thread joined.
  std::function<void(RegexCompletion completion)> done;
};

// Starts a run of `request`. `prepare`, when given, runs first on the worker: it fills in what
// the window copied out of the editor beforehand. `colorResults` is read by the worker while it
// runs. False when the thread cannot be started.
bool StartRegexRun(RegexSearchRequest request, RegexSearchState& state, const std::string& resultsFolder,
                   const std::atomic<bool>& colorResults, RegexRunReports reports,
                   std::function<void(RegexSearchRequest&)> prepare = {});

// Whether a run's thread exists.
bool RegexRunActive();

// Stops the current run: sets the cancel flag, waits up to 2 s for the thread and clears both
// flags. Its reports still queued are dropped. Nothing when no run exists.
void StopRegexRun(RegexSearchState& state);

}  // namespace nebro::search
