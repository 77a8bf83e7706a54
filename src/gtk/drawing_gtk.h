// Cairo helpers every custom-drawn part of the program paints with.
#pragma once

#include <gtk/gtk.h>

#include "common/colour.h"

namespace nebro {

void SetSourceColour(cairo_t* cr, Colour c);
void FillRect(cairo_t* cr, double x, double y, double w, double h, Colour c);
void RoundedRectangle(cairo_t* cr, double x, double y, double w, double h, double radius);

// Paints an owner-drawn push button: face, outline, centred label.
struct ButtonLook {
  Colour face, border, text;
  bool focused = false;  // draws a focus ring inside the border
};
void DrawPushButton(GtkWidget* button, cairo_t* cr, const ButtonLook& look, const char* label);

}  // namespace nebro
