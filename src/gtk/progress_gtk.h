// Long work on a thread of its own under a small modal progress window. The worker never
// touches GTK: what it reports reaches the window through the main loop, and the main loop is
// never spun by hand while it runs.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>

namespace nebro {

struct ProgressJob;

// What the worker may do; every call is safe from the worker thread.
class ProgressReporter {
 public:
  explicit ProgressReporter(std::shared_ptr<ProgressJob> job) : job_(std::move(job)) {}
  // True once the user pressed Cancel (or Escape) or the program asked every job to stop.
  bool Cancelled() const;
  void SetFraction(double fraction);  // 0 to 1
  void SetText(const std::string& text);
  // Runs `fn` on the UI thread and waits until it has run.
  void RunOnUi(const std::function<void()>& fn);

 private:
  std::shared_ptr<ProgressJob> job_;
};

struct ProgressOptions {
  GtkWindow* parent = nullptr;
  std::string title;
  std::string text;  // the line above the bar
  std::string name = "NebroProgress";
  bool cancellable = false;  // a Cancel button, and Escape, set the cancel flag
  std::string cancellingText;  // shown once Cancel was pressed, until the work has returned
};

// Shows the window, starts `work` on a new thread and returns at once. When the work has
// returned, the window goes and `done(cancelled)` runs on the UI thread.
void RunWithProgress(const ProgressOptions& options, std::function<void(ProgressReporter&)> work,
                     std::function<void(bool cancelled)> done);

// How many jobs are running now.
int ProgressJobsRunning();
// Sets the cancel flag of every running job (a cancellable job stops early; others finish).
void CancelProgressJobs();

}  // namespace nebro
