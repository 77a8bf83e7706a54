#include "print/print_preview_gtk.h"

#include <gdk/gdkkeysyms.h>

#include <memory>

#include "gtk/message_box.h"
#include "gtk/message_box_gtk.h"
#include "gtk/progress_gtk.h"
#include "gtk/themed_window_gtk.h"
#include "print/print_job_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "print/print_texts.h"
#include "settings/settings.h"

namespace nebro::print {
namespace {

struct Preview {
  PagedDocument doc;
  PreviewState state;
  GtkWidget* window = nullptr;
  GtkWidget* label = nullptr;
  GtkWidget* page = nullptr;
  GtkWidget* prev = nullptr;
  GtkWidget* next = nullptr;
};

void ShowPage(Preview* p) {
  gtk_label_set_text(GTK_LABEL(p->label),
                     PreviewPageLabel(p->state.currentPage, p->state.pageCount).c_str());
  gtk_widget_set_sensitive(p->prev, p->state.currentPage > 0);
  gtk_widget_set_sensitive(p->next, p->state.currentPage + 1 < p->state.pageCount);
  gtk_widget_queue_draw(p->page);
}

gboolean OnDraw(GtkWidget* area, cairo_t* cr, gpointer data) {
  auto* p = static_cast<Preview*>(data);
  const PreviewPagePlacement at =
      FitPreviewPage(p->doc.pageWidth, p->doc.pageHeight, gtk_widget_get_allocated_width(area),
                     gtk_widget_get_allocated_height(area), 20);
  cairo_set_source_rgb(cr, 0.5, 0.5, 0.5);
  cairo_paint(cr);
  cairo_translate(cr, at.x, at.y);
  cairo_set_source_rgb(cr, 1, 1, 1);  // the sheet of paper
  cairo_rectangle(cr, 0, 0, at.width, at.height);
  cairo_fill(cr);
  cairo_scale(cr, at.scale, at.scale);
  DrawPage(cr, p->doc, p->state.currentPage);
  return TRUE;
}

void Step(Preview* p, bool forward) {
  if (forward ? PreviewNextPage(p->state) : PreviewPreviousPage(p->state)) ShowPage(p);
}

gboolean OnKey(GtkWidget*, GdkEventKey* event, gpointer data) {
  auto* p = static_cast<Preview*>(data);
  switch (event->keyval) {
    case GDK_KEY_Page_Up:
    case GDK_KEY_KP_Page_Up:
    case GDK_KEY_Left:
      Step(p, false);
      return TRUE;
    case GDK_KEY_Page_Down:
    case GDK_KEY_KP_Page_Down:
    case GDK_KEY_Right:
      Step(p, true);
      return TRUE;
    default:
      return FALSE;
  }
}

GtkWidget* Button(const char* text, GCallback onClick, gpointer data) {
  GtkWidget* button = gtk_button_new_with_label(text);
  gtk_widget_set_can_focus(button, FALSE);  // the arrow keys stay with the window
  g_signal_connect(button, "clicked", onClick, data);
  return button;
}

// Keeps the size the window has as it closes for the next preview.
void RememberSize(GtkWidget* window, gpointer) {
  int width = 0, height = 0;
  gtk_window_get_size(GTK_WINDOW(window), &width, &height);
  settings::gSettings.previewWidth = width;
  settings::gSettings.previewHeight = height;
}

void ShowPreviewWindow(GtkWindow* owner, PagedDocument doc) {
  auto* p = new Preview;
  p->doc = std::move(doc);
  p->state.pageCount = p->doc.PageCount();
  p->state.pageStarts = p->doc.pageStarts;

  ThemedWindowOptions options;
  options.parent = owner;
  options.title = kPrintPreviewTitle;
  options.name = "NebroPrintPreview";
  p->window = CreateThemedWindow(options);
  GdkGeometry min{};
  min.min_width = kPreviewMinWidth;
  min.min_height = kPreviewMinHeight;
  gtk_window_set_geometry_hints(GTK_WINDOW(p->window), nullptr, &min, GDK_HINT_MIN_SIZE);
  // The size the preview had when it was last closed, once there is one.
  const settings::AppSettings& stored = settings::gSettings;
  const bool known = stored.previewWidth >= kPreviewMinWidth && stored.previewHeight >= kPreviewMinHeight;
  gtk_window_set_default_size(GTK_WINDOW(p->window), known ? stored.previewWidth : 800,
                              known ? stored.previewHeight : 900);
  g_signal_connect(p->window, "unmap", G_CALLBACK(RememberSize), nullptr);
  g_signal_connect_swapped(p->window, "destroy", G_CALLBACK(+[](Preview* p) { delete p; }), p);
  g_signal_connect(p->window, "key-press-event", G_CALLBACK(OnKey), p);

  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  GtkWidget* bar = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  gtk_container_set_border_width(GTK_CONTAINER(bar), 6);
  p->prev = Button(kPreviewPrevText, G_CALLBACK(+[](GtkButton*, Preview* p) { Step(p, false); }), p);
  p->next = Button(kPreviewNextText, G_CALLBACK(+[](GtkButton*, Preview* p) { Step(p, true); }), p);
  GtkWidget* print = Button(kPreviewPrintText, G_CALLBACK(+[](GtkButton*, Preview* p) {
                              PrintPages(GTK_WINDOW(p->window), p->doc, kUnsavedPrintDocumentName);
                            }), p);
  GtkWidget* close = Button(kPreviewCloseText, G_CALLBACK(+[](GtkButton*, Preview* p) {
                              gtk_widget_destroy(p->window);
                            }), p);
  p->label = gtk_label_new("");
  for (GtkWidget* w : {p->prev, p->next, print, close}) gtk_box_pack_start(GTK_BOX(bar), w, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(bar), p->label, TRUE, TRUE, 0);
  p->page = gtk_drawing_area_new();
  g_signal_connect(p->page, "draw", G_CALLBACK(OnDraw), p);
  gtk_box_pack_start(GTK_BOX(box), bar, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(box), p->page, TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(p->window), box);
  ShowPage(p);
  gtk_widget_show_all(p->window);
}

}  // namespace

void OpenPrintPreview(GtkWindow* owner, GtkWidget* editor, const PageStyle& style) {
  auto text = std::make_shared<std::string>(sci::DocumentCopy(editor));
  if (text->empty()) {
    ShowMessageBox(owner, kMbOk, kPreviewEmptyText, kPrintPreviewTitle);
    return;
  }
  auto result = std::make_shared<PagedDocument>();
  ProgressOptions options;
  options.parent = owner;
  options.title = kPrintPreviewTitle;
  options.text = kPreparingPreviewText;
  options.name = "NebroPrintPreviewProgress";
  options.cancellable = true;
  options.cancellingText = kCancellingPreviewText;
  RunWithProgress(
      options,
      [text, result, style](ProgressReporter& reporter) {
        PaginationHooks hooks;
        hooks.cancelRequested = [&reporter] { return reporter.Cancelled(); };
        hooks.pageAdded = [&reporter](int pages, int64_t lines) {
          reporter.SetText(PaginationProgressText(pages, lines));
        };
        *result = PaginateDocument(std::move(*text), style, hooks);
      },
      [owner, result](bool cancelled) {
        if (cancelled || result->cancelled) return;
        ShowPreviewWindow(owner, std::move(*result));
      });
}

}  // namespace nebro::print
