#include "gtk/progress_gtk.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "gtk/themed_window_gtk.h"

namespace nebro {

struct ProgressJob {
  std::atomic<bool> cancelled{false};
  std::mutex mutex;
  double fraction = 0;
  std::string text;
  bool updatePending = false;  // an update is queued for the main loop
  std::thread worker;
  GtkWidget* window = nullptr;
  GtkWidget* label = nullptr;
  GtkWidget* bar = nullptr;
  std::string cancellingText;
  std::function<void(bool)> done;
};

namespace {

std::vector<std::shared_ptr<ProgressJob>>& Running() {
  static std::vector<std::shared_ptr<ProgressJob>> jobs;
  return jobs;
}

using JobRef = std::shared_ptr<ProgressJob>;

gboolean ApplyUpdate(gpointer data) {
  std::unique_ptr<JobRef> ref(static_cast<JobRef*>(data));
  ProgressJob& job = **ref;
  double fraction;
  std::string text;
  {
    std::lock_guard<std::mutex> lock(job.mutex);
    job.updatePending = false;
    fraction = job.fraction;
    text = job.text;
  }
  if (job.bar) gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(job.bar), std::clamp(fraction, 0.0, 1.0));
  if (job.label && !text.empty()) gtk_label_set_text(GTK_LABEL(job.label), text.c_str());
  return G_SOURCE_REMOVE;
}

void QueueUpdate(const JobRef& job) {
  // Called with the job's mutex held: at most one update waits in the main loop at a time.
  if (job->updatePending) return;
  job->updatePending = true;
  g_idle_add(ApplyUpdate, new JobRef(job));
}

void OnWindowDestroyed(GtkWidget*, gpointer data);

gboolean OnFinished(gpointer data) {
  std::unique_ptr<JobRef> ref(static_cast<JobRef*>(data));
  JobRef job = *ref;
  job->worker.join();
  std::erase(Running(), job);
  if (job->window) {
    g_signal_handlers_disconnect_by_func(job->window, reinterpret_cast<gpointer>(OnWindowDestroyed), job.get());
    gtk_widget_destroy(job->window);
  }
  job->window = job->label = job->bar = nullptr;
  if (job->done) job->done(job->cancelled);
  return G_SOURCE_REMOVE;
}

gboolean OnDelete(GtkWidget*, GdkEvent*, gpointer data) {
  // The window goes when the work has ended; a close request only asks a cancellable job to stop.
  auto* job = static_cast<ProgressJob*>(data);
  if (g_object_get_data(G_OBJECT(job->window), "nebro-cancellable")) {
    job->cancelled = true;
    if (job->label && !job->cancellingText.empty()) {
      {
        std::lock_guard<std::mutex> lock(job->mutex);
        job->text = job->cancellingText;  // later progress reports keep saying so
      }
      gtk_label_set_text(GTK_LABEL(job->label), job->cancellingText.c_str());
    }
  }
  return TRUE;
}

void OnWindowDestroyed(GtkWidget*, gpointer data) {
  // The window went before the work ended (its owner was destroyed): the work is asked to stop
  // and nothing touches the window again.
  auto* job = static_cast<ProgressJob*>(data);
  job->cancelled = true;
  job->window = job->label = job->bar = nullptr;
}

}  // namespace

bool ProgressReporter::Cancelled() const { return job_->cancelled; }

void ProgressReporter::SetFraction(double fraction) {
  std::lock_guard<std::mutex> lock(job_->mutex);
  job_->fraction = fraction;
  QueueUpdate(job_);
}

void ProgressReporter::SetText(const std::string& text) {
  std::lock_guard<std::mutex> lock(job_->mutex);
  if (job_->cancelled && !job_->cancellingText.empty()) return;
  job_->text = text;
  QueueUpdate(job_);
}

void ProgressReporter::RunOnUi(const std::function<void()>& fn) {
  struct Call {
    const std::function<void()>* fn = nullptr;
    std::mutex mutex;
    std::condition_variable ran;
    bool done = false;
  } call;
  call.fn = &fn;
  g_idle_add_full(G_PRIORITY_HIGH_IDLE, [](gpointer data) -> gboolean {
    auto* c = static_cast<Call*>(data);
    try {
      (*c->fn)();
    } catch (...) {
      g_warning("Nebro: a worker's request to the window failed");
    }
    {
      std::lock_guard<std::mutex> lock(c->mutex);
      c->done = true;
    }
    c->ran.notify_one();
    return G_SOURCE_REMOVE;
  }, &call, nullptr);
  std::unique_lock<std::mutex> lock(call.mutex);
  call.ran.wait(lock, [&call] { return call.done; });
}

void RunWithProgress(const ProgressOptions& o, std::function<void(ProgressReporter&)> work,
                     std::function<void(bool)> done) {
  auto job = std::make_shared<ProgressJob>();
  job->done = std::move(done);
  job->cancellingText = o.cancellingText;

  ThemedWindowOptions shell;
  shell.parent = o.parent;
  shell.title = o.title;
  shell.name = o.name;
  shell.modal = true;
  shell.resizable = false;
  GtkWidget* window = CreateThemedWindow(shell);
  gtk_window_set_deletable(GTK_WINDOW(window), o.cancellable);
  if (o.cancellable) g_object_set_data(G_OBJECT(window), "nebro-cancellable", GINT_TO_POINTER(1));
  job->window = window;
  g_signal_connect(window, "delete-event", G_CALLBACK(OnDelete), job.get());
  g_signal_connect(window, "destroy", G_CALLBACK(OnWindowDestroyed), job.get());
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
  gtk_container_set_border_width(GTK_CONTAINER(box), 16);
  job->label = gtk_label_new(o.text.c_str());
  gtk_label_set_xalign(GTK_LABEL(job->label), 0);
  job->bar = gtk_progress_bar_new();
  gtk_widget_set_size_request(job->bar, 320, -1);
  gtk_box_pack_start(GTK_BOX(box), job->label, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(box), job->bar, FALSE, FALSE, 0);
  if (o.cancellable) {
    GtkWidget* cancel = gtk_button_new_with_mnemonic("_Cancel");
    gtk_widget_set_halign(cancel, GTK_ALIGN_END);
    g_signal_connect_swapped(cancel, "clicked", G_CALLBACK(gtk_window_close), window);
    gtk_box_pack_start(GTK_BOX(box), cancel, FALSE, FALSE, 0);
  }
  gtk_container_add(GTK_CONTAINER(window), box);
  gtk_widget_show_all(window);

  Running().push_back(job);
  job->worker = std::thread([job, work = std::move(work)]() mutable {
    ProgressReporter reporter(job);
    try {
      work(reporter);
    } catch (...) {
      g_warning("Nebro: a background job failed");
    }
    g_idle_add(OnFinished, new JobRef(job));
  });
}

int ProgressJobsRunning() { return static_cast<int>(Running().size()); }

void CancelProgressJobs() {
  for (const JobRef& job : Running()) job->cancelled = true;
}

}  // namespace nebro
