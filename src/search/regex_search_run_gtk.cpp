#include "search/regex_search_run_gtk.h"

#include <glib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "common/utf.h"
#include "gtk/trace_gtk.h"

namespace nebro::search {

namespace {

// Nice value of the worker thread: a step below the window's, so typing and redraws come first
// without starving the search when other programs keep the processor busy.
constexpr int kWorkerNice = 2;

struct Run {
  RegexRunReports reports;  // main loop only
  std::mutex mutex;
  std::condition_variable changed;
  bool abandoned = false;  // the window stopped waiting for this run
  bool finished = false;   // the worker is past its last use of the shared state
  std::thread thread;
};

std::shared_ptr<Run> gRun;  // the current run (main loop only)

struct Event {
  std::shared_ptr<Run> run;
  std::function<void(Run&)> act;
};

// Hands `act` to the main loop; dropped when the run is no longer wanted by then.
void Post(const std::shared_ptr<Run>& run, std::function<void(Run&)> act) {
  g_idle_add_full(G_PRIORITY_DEFAULT, [](gpointer data) -> gboolean {
    auto* e = static_cast<Event*>(data);
    bool abandoned;
    {
      std::lock_guard<std::mutex> lock(e->run->mutex);
      abandoned = e->run->abandoned;
    }
    if (!abandoned) e->act(*e->run);
    return G_SOURCE_REMOVE;
  }, new Event{run, std::move(act)}, [](gpointer data) { delete static_cast<Event*>(data); });
}

void Work(std::shared_ptr<Run> run, RegexSearchRequest request, RegexSearchState* state, std::string folder,
          const std::atomic<bool>* colorResults, std::function<void(RegexSearchRequest&)> prepare) {
  setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kWorkerNice);
  if (prepare) prepare(request);
  RegexWorkerHooks hooks;
  hooks.resultsFolder = std::move(folder);
  hooks.colorResults = [colorResults] { return colorResults->load(); };
  hooks.status = [run, state](const std::u16string& text) {
    double fraction = -1;
    if (text != LargeFileStatusText()) {
      std::lock_guard<std::mutex> lock(state->regexMutex);
      if (state->documentLength != 0) {
        fraction = static_cast<double>(static_cast<uint64_t>(static_cast<double>(state->cursor) /
                                                             static_cast<double>(state->documentLength) * 100.0)) /
                   100.0;
      }
    }
    Post(run, [utf8 = Utf16ToUtf8(text), fraction](Run& r) { r.reports.status(utf8, fraction); });
  };
  // Parts of the results go to the list as they are found; the worker does not wait for them.
  hooks.batch = [run](std::vector<RegexMatch> matches) {
    auto holder = std::make_shared<std::vector<RegexMatch>>(std::move(matches));
    Post(run, [holder](Run& r) { r.reports.batch(std::move(*holder)); });
  };
  const RegexCompletion completion = RunRegexSearch(request, *state, hooks);
  {
    std::lock_guard<std::mutex> lock(run->mutex);
    run->finished = true;
    run->changed.notify_all();
  }
  Post(run, [state, completion](Run& r) {
    if (gRun.get() != &r) return;
    if (r.thread.joinable()) r.thread.join();
    std::shared_ptr<Run> keep = std::move(gRun);
    state->searchRunning = false;
    keep->reports.done(completion);
  });
}

}  // namespace

bool StartRegexRun(RegexSearchRequest request, RegexSearchState& state, const std::string& resultsFolder,
                   const std::atomic<bool>& colorResults, RegexRunReports reports,
                   std::function<void(RegexSearchRequest&)> prepare) {
  StopRegexRun(state);
  auto run = std::make_shared<Run>();
  run->reports = std::move(reports);
  state.cancelRequested = false;
  state.searchRunning = true;
  try {
    run->thread = std::thread(Work, run, std::move(request), &state, resultsFolder, &colorResults,
                              std::move(prepare));
  } catch (const std::system_error&) {
    state.searchRunning = false;
    return false;
  }
  gRun = std::move(run);
  return true;
}

bool RegexRunActive() { return gRun != nullptr; }

void StopRegexRun(RegexSearchState& state) {
  if (!gRun) return;
  std::shared_ptr<Run> run = std::move(gRun);
  state.cancelRequested = true;
  bool finished;
  {
    std::unique_lock<std::mutex> lock(run->mutex);
    run->abandoned = true;
    run->changed.notify_all();
    finished = run->changed.wait_for(lock, std::chrono::milliseconds(2000), [&] { return run->finished; });
  }
  if (finished) {
    run->thread.join();
  } else {
    Trace("Nebro: regex search thread did not stop within 2 s; left to finish on its own");
    run->thread.detach();
  }
  state.searchRunning = false;
  state.cancelRequested = false;
}

}  // namespace nebro::search
