#include "print/page_setup_gtk.h"

#include <gtk/gtkunixprint.h>

#include <cmath>

#include "gtk/object_ptr_gtk.h"
#include "print/page_style.h"

namespace nebro::print {
namespace {

double Millimetres(int hundredths) { return hundredths / 100.0; }
int Hundredths(double millimetres) { return static_cast<int>(std::lround(millimetres * 100.0)); }

// The stored page (through the same fallbacks printing uses) as GTK's record.
GtkPageSetup* StoredPageSetup(const settings::AppSettings& s) {
  const PageStyle style = PageStyleFromSettings(s);
  GtkPageSetup* setup = gtk_page_setup_new();
  GtkPaperSize* paper = gtk_paper_size_new_custom("nebro-stored", "Stored",
                                                  Millimetres(style.paper.width),
                                                  Millimetres(style.paper.height), GTK_UNIT_MM);
  // A size GTK knows under a name (A4, Letter) is shown by that name in the dialog.
  GList* known = gtk_paper_size_get_paper_sizes(FALSE);
  for (GList* l = known; l; l = l->next) {
    auto* candidate = static_cast<GtkPaperSize*>(l->data);
    if (std::lround(gtk_paper_size_get_width(candidate, GTK_UNIT_MM) * 100) == style.paper.width &&
        std::lround(gtk_paper_size_get_height(candidate, GTK_UNIT_MM) * 100) == style.paper.height) {
      gtk_paper_size_free(paper);
      paper = gtk_paper_size_copy(candidate);
      break;
    }
  }
  g_list_free_full(known, reinterpret_cast<GDestroyNotify>(gtk_paper_size_free));
  gtk_page_setup_set_paper_size(setup, paper);
  gtk_paper_size_free(paper);
  gtk_page_setup_set_left_margin(setup, Millimetres(style.margins.left), GTK_UNIT_MM);
  gtk_page_setup_set_top_margin(setup, Millimetres(style.margins.top), GTK_UNIT_MM);
  gtk_page_setup_set_right_margin(setup, Millimetres(style.margins.right), GTK_UNIT_MM);
  gtk_page_setup_set_bottom_margin(setup, Millimetres(style.margins.bottom), GTK_UNIT_MM);
  return setup;
}

}  // namespace

bool RunPageSetup(GtkWindow* owner, settings::AppSettings& s) {
  GtkWidget* dialog = gtk_page_setup_unix_dialog_new("Page Setup", owner);
  GObjectPtr<GtkPageSetup> stored(StoredPageSetup(s));
  gtk_page_setup_unix_dialog_set_page_setup(GTK_PAGE_SETUP_UNIX_DIALOG(dialog), stored.get());
  const bool ok = gtk_dialog_run(GTK_DIALOG(dialog)) == GTK_RESPONSE_OK;
  if (ok) {
    GtkPageSetup* chosen = gtk_page_setup_unix_dialog_get_page_setup(GTK_PAGE_SETUP_UNIX_DIALOG(dialog));
    // The sheet as it lies (a landscape choice swaps the sides), margins as GTK keeps them.
    s.paperWidth = Hundredths(gtk_page_setup_get_paper_width(chosen, GTK_UNIT_MM));
    s.paperHeight = Hundredths(gtk_page_setup_get_paper_height(chosen, GTK_UNIT_MM));
    s.pageMarginLeft = Hundredths(gtk_page_setup_get_left_margin(chosen, GTK_UNIT_MM));
    s.pageMarginTop = Hundredths(gtk_page_setup_get_top_margin(chosen, GTK_UNIT_MM));
    s.pageMarginRight = Hundredths(gtk_page_setup_get_right_margin(chosen, GTK_UNIT_MM));
    s.pageMarginBottom = Hundredths(gtk_page_setup_get_bottom_margin(chosen, GTK_UNIT_MM));
  }
  gtk_widget_destroy(dialog);
  return ok;
}

}  // namespace nebro::print
