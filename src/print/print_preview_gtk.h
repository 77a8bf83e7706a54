// Print Preview: the document paginated on a worker under a progress window, then a resizable
// window showing one printed page at a time, with Prev, Next, Print and Close.
#pragma once
#include <gtk/gtk.h>

#include "print/page_style.h"

namespace nebro::print {

// Paginates the editor's text with `style` and opens the preview over `owner`.
void OpenPrintPreview(GtkWindow* owner, GtkWidget* editor, const PageStyle& style);

}  // namespace nebro::print
