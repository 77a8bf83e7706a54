#include "gtk/viewer_launch_gtk.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <climits>

#include "common/viewer_geometry.h"
#include "gtk/trace_gtk.h"

namespace nebro {
namespace {

GPid viewerPid = 0;
std::string viewerExecutable;

void DieWithParent(gpointer) { prctl(PR_SET_PDEATHSIG, SIGTERM); }

void OnViewerExit(GPid pid, gint, gpointer) {
  if (pid == viewerPid) viewerPid = 0;
  g_spawn_close_pid(pid);
}

}  // namespace

int ViewerProcess() { return viewerPid; }

void SetViewerExecutable(const std::string& path) { viewerExecutable = path; }

void EndViewer() {
  if (viewerPid > 0) kill(viewerPid, SIGTERM);
  viewerPid = 0;
}

void LaunchViewer(GtkWindow* owner, const std::string& path) {
  if (path.empty()) return;
  char exe[PATH_MAX];
  if (!viewerExecutable.empty()) {
    g_strlcpy(exe, viewerExecutable.c_str(), sizeof exe);
  } else {
    const ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n <= 0) return;
    exe[n] = '\0';
  }

  int x = 0, y = 0;
  if (owner) gtk_window_get_position(owner, &x, &y);
  const std::string geometry = ViewerGeometryArgument({x + 40, y + 40, 740, 860});
  gchar* argv[] = {exe, const_cast<gchar*>("--viewer"), const_cast<gchar*>(path.c_str()),
                   const_cast<gchar*>(geometry.c_str()), nullptr};
  GPid pid = 0;
  if (!g_spawn_async(nullptr, argv, nullptr, G_SPAWN_DO_NOT_REAP_CHILD, DieWithParent, nullptr, &pid, nullptr)) {
    return;
  }
  EndViewer();  // at most one viewer launched this way outlives a new launch
  viewerPid = pid;
  g_child_watch_add(pid, OnViewerExit, nullptr);
}

void OpenWithDefaultApplication(GtkWindow* owner, const std::string& path, const std::string& fallback) {
  if (path.empty()) return;
  gchar* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
  GError* error = nullptr;
  const bool opened = uri && g_app_info_launch_default_for_uri(uri, nullptr, &error);
  g_free(uri);
  if (error) {
    Trace("Nebro: no application opens %s: %s", path.c_str(), error->message);
    g_error_free(error);
  }
  if (!opened) LaunchViewer(owner, fallback.empty() ? path : fallback);
}

}  // namespace nebro
