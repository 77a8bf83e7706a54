// What screen readers see of the custom-drawn toolbar: a tool bar whose children are push
// buttons with the buttons' labels, their enabled state, their place and a "click" action.
#pragma once

#include <gtk/gtk.h>

namespace nebro::appearance {

// A drawing area whose accessible object has one child per toolbar button; the toolbar widget
// is made of this type.
GtkWidget* NewAccessibleToolbarArea();

// Tells assistive technology that button `index` became enabled or disabled.
void NotifyToolbarButtonEnabled(GtkWidget* toolbar, int index, bool enabled);

}  // namespace nebro::appearance
