// Reaching this process's windows the way a screen reader does: tests/support/atspi_tool.py runs
// as a child and talks to the accessibility bus that gui_test_main.cpp provides, while this
// process keeps its main loop running (also inside a modal dialog's own loop) so that it can
// answer. Steps are the tool's ("wait|dialog|Nebro - Settings", "click|push button|OK", ...).
#pragma once

#include <glib.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

namespace nebro::testing {

struct AccessibilityResult {
  bool ok = false;
  std::string out;  // what the steps printed
  std::string err;  // why a step failed
};

// A run of the tool started now; Finish() keeps the main loop running until it ends.
class AccessibilityProbe {
 public:
  explicit AccessibilityProbe(const std::vector<std::string>& steps) {
    std::vector<std::string> args = {"/usr/bin/python3", NEBRO_TEST_SUPPORT_DIR "/atspi_tool.py", "--pid",
                                     std::to_string(getpid())};
    args.insert(args.end(), steps.begin(), steps.end());
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    GError* error = nullptr;
    started_ = g_spawn_async_with_pipes(nullptr, argv.data(), nullptr,
                                        static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD), nullptr, nullptr, &pid_,
                                        nullptr, &out_, &err_, &error);
    if (!started_) {
      result_.err = error ? error->message : "cannot start the accessibility tool";
      g_clear_error(&error);
      return;
    }
    g_child_watch_add(pid_, [](GPid pid, gint status, gpointer self) {
      auto* probe = static_cast<AccessibilityProbe*>(self);
      probe->result_.ok = g_spawn_check_wait_status(status, nullptr);
      probe->done_ = true;
      g_spawn_close_pid(pid);
      if (!probe->result_.ok) CloseDialogs();
    }, this);
    pipes_[0] = {this, &result_.out};
    pipes_[1] = {this, &result_.err};
    for (int i = 0; i < 2; ++i) {
      GIOChannel* channel = g_io_channel_unix_new(i == 0 ? out_ : err_);
      g_io_channel_set_close_on_unref(channel, TRUE);
      g_io_add_watch(channel, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), &AccessibilityProbe::Read,
                     &pipes_[i]);
      g_io_channel_unref(channel);
      ++open_;
    }
  }
  AccessibilityProbe(const AccessibilityProbe&) = delete;
  AccessibilityProbe& operator=(const AccessibilityProbe&) = delete;
  ~AccessibilityProbe() { Finish(); }

  // Runs the main loop until the tool has ended and its output is read.
  const AccessibilityResult& Finish() {
    while (started_ && (!done_ || open_ > 0)) g_main_context_iteration(nullptr, TRUE);
    started_ = false;
    return result_;
  }

 private:
  // A failed step would leave a modal dialog waiting for an answer that never comes, and the
  // test blocked in it: every dialog is answered with Cancel so the test can report the failure.
  static void CloseDialogs() {
    GList* windows = gtk_window_list_toplevels();
    for (GList* l = windows; l; l = l->next) {
      if (!gtk_widget_get_visible(GTK_WIDGET(l->data))) continue;
      if (GTK_IS_DIALOG(l->data)) {
        gtk_dialog_response(GTK_DIALOG(l->data), GTK_RESPONSE_CANCEL);
      } else if (gtk_window_get_modal(GTK_WINDOW(l->data))) {
        gtk_window_close(GTK_WINDOW(l->data));  // our message boxes take closing as Cancel
      }
    }
    g_list_free(windows);
  }

  struct Pipe {
    AccessibilityProbe* self;
    std::string* text;
  };

  static gboolean Read(GIOChannel* channel, GIOCondition, gpointer data) {
    auto* pipe = static_cast<Pipe*>(data);
    char buf[4096];
    const ssize_t n = read(g_io_channel_unix_get_fd(channel), buf, sizeof buf);
    if (n > 0) {
      pipe->text->append(buf, static_cast<size_t>(n));
      return TRUE;
    }
    --pipe->self->open_;
    return FALSE;
  }

  bool started_ = false;
  bool done_ = false;
  int open_ = 0;
  GPid pid_ = 0;
  int out_ = -1;
  int err_ = -1;
  AccessibilityResult result_;
  Pipe pipes_[2] = {};
};

// Runs the steps to the end (the main loop keeps running meanwhile).
inline AccessibilityResult Accessible(const std::vector<std::string>& steps) {
  AccessibilityProbe probe(steps);
  return probe.Finish();
}

// Runs the steps to the end, a failed step failing the test; returns what they printed. With
// `start`, the steps begin first and then `start` runs (it may block in a modal dialog that the
// steps answer).
inline std::string RunSteps(const std::vector<std::string>& steps, const std::function<void()>& start = {}) {
  AccessibilityProbe probe(steps);
  if (start) start();
  const AccessibilityResult& r = probe.Finish();
  EXPECT_TRUE(r.ok) << r.err << "\n" << r.out;
  return r.out;
}

}  // namespace nebro::testing
