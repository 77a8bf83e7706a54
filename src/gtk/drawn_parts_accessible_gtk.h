// What screen readers see of a custom-drawn strip of parts (the toolbar's buttons, the status
// bar's fields): one accessible child per part, with its role, name, enabled state and place,
// and a "click" action where the part can be pressed.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>

namespace nebro {

struct DrawnPart {
  std::string name;
  bool enabled = true;
  GdkRectangle area{};  // in the strip's coordinates
};

struct DrawnPartsModel {
  AtkRole role = ATK_ROLE_PANEL;      // of the strip
  AtkRole partRole = ATK_ROLE_LABEL;  // of each part
  int count = 0;
  std::function<DrawnPart(GtkWidget* area, int index)> part;
  // Presses a part (empty: parts cannot be pressed). Returns false when it is disabled. The
  // press should take effect from the main loop, so the assistive tool's request returns first.
  std::function<bool(GtkWidget* area, int index)> activate;
};

// A drawing area whose accessible object describes its parts through `model`.
GtkWidget* NewDrawnPartsArea(DrawnPartsModel model);

// Tells assistive technology that part `index` changed its name or its enabled state.
void NotifyDrawnPartChanged(GtkWidget* area, int index);

}  // namespace nebro
