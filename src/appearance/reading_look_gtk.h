// The fixed look of the read-only viewer: a serif face on paper colours, wrapped, with wide
// side margins.
#pragma once

#include <gtk/gtk.h>

namespace nebro::appearance {

void ApplyReadingLook(GtkWidget* editor);

}  // namespace nebro::appearance
