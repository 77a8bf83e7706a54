// What the benchmarks that drive the real window share: the longest stretch the main loop went
// without running, measured by a 2 ms timer, and seconds since a moment.
#pragma once

#include <glib.h>

#include <algorithm>
#include <chrono>

namespace nebro::bench {

using Clock = std::chrono::steady_clock;

inline double Since(Clock::time_point t) { return std::chrono::duration<double>(Clock::now() - t).count(); }

// Notes the longest interval between two runs of a 2 ms timer.
struct GapMeter {
  Clock::time_point last = Clock::now();
  double longest = 0;
  guint source = 0;
  void Start() {
    last = Clock::now();
    longest = 0;
    source = g_timeout_add(2, [](gpointer p) -> gboolean {
      auto* m = static_cast<GapMeter*>(p);
      const auto now = Clock::now();
      m->longest = std::max(m->longest, std::chrono::duration<double>(now - m->last).count());
      m->last = now;
      return G_SOURCE_CONTINUE;
    }, this);
  }
  double Stop() {
    g_source_remove(source);
    return std::max(longest, std::chrono::duration<double>(Clock::now() - last).count());
  }
};

}  // namespace nebro::bench
