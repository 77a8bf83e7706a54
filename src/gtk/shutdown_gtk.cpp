#include "gtk/shutdown_gtk.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <vector>

namespace nebro {
namespace {

bool shuttingDown = false;
std::vector<ModalLoop> loops;  // innermost last

}  // namespace

void BeginShutdown() { shuttingDown = true; }
bool ShuttingDown() { return shuttingDown; }
void ResetShutdown() { shuttingDown = false; }

void ModalLoopStarted(const ModalLoop& loop) { loops.push_back(loop); }

void ModalLoopEnded(void* data) {
  loops.erase(std::remove_if(loops.begin(), loops.end(), [data](const ModalLoop& l) { return l.data == data; }),
              loops.end());
}

bool ModalLoopsRunning() { return !loops.empty(); }

void CloseModalWindowsAsCancelled() {
  // Innermost first: an overwrite question inside a chooser goes before the chooser.
  const std::vector<ModalLoop> open(loops.rbegin(), loops.rend());
  for (const ModalLoop& l : open) l.cancel(l.data);
  // Dialogs of GTK's own (a chooser's overwrite question, page setup, print) and modal windows of
  // the program's own dialogs, whichever loop they run.
  GList* windows = gtk_window_list_toplevels();
  for (GList* w = windows; w; w = w->next) g_object_ref(w->data);
  for (GList* w = windows; w; w = w->next) {
    GtkWidget* window = GTK_WIDGET(w->data);
    if (!gtk_widget_get_visible(window)) continue;
    if (GTK_IS_DIALOG(window)) gtk_dialog_response(GTK_DIALOG(window), GTK_RESPONSE_CANCEL);
    else if (gtk_window_get_modal(GTK_WINDOW(window))) gtk_window_close(GTK_WINDOW(window));
  }
  g_list_free_full(windows, g_object_unref);
}

}  // namespace nebro
