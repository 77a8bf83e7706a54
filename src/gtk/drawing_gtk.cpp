#include "gtk/drawing_gtk.h"

#include <cmath>

#include "gtk/object_ptr_gtk.h"

namespace nebro {

void SetSourceColour(cairo_t* cr, Colour c) {
  cairo_set_source_rgb(cr, RedOf(c) / 255.0, GreenOf(c) / 255.0, BlueOf(c) / 255.0);
}

void FillRect(cairo_t* cr, double x, double y, double w, double h, Colour c) {
  SetSourceColour(cr, c);
  cairo_rectangle(cr, x, y, w, h);
  cairo_fill(cr);
}

void RoundedRectangle(cairo_t* cr, double x, double y, double w, double h, double r) {
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + w - r, y + r, r, -M_PI / 2, 0);
  cairo_arc(cr, x + w - r, y + h - r, r, 0, M_PI / 2);
  cairo_arc(cr, x + r, y + h - r, r, M_PI / 2, M_PI);
  cairo_arc(cr, x + r, y + r, r, M_PI, 3 * M_PI / 2);
  cairo_close_path(cr);
}

void DrawPushButton(GtkWidget* button, cairo_t* cr, const ButtonLook& look, const char* label) {
  const double w = gtk_widget_get_allocated_width(button);
  const double h = gtk_widget_get_allocated_height(button);
  RoundedRectangle(cr, 0.5, 0.5, w - 1, h - 1, 4);
  SetSourceColour(cr, look.face);
  cairo_fill_preserve(cr);
  SetSourceColour(cr, look.border);
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);
  if (look.focused) {
    // A ring two pixels wide inside the border, in the text's colour: visible in every theme.
    RoundedRectangle(cr, 3, 3, w - 6, h - 6, 3);
    SetSourceColour(cr, look.text);
    cairo_set_line_width(cr, 2);
    cairo_stroke(cr);
  }

  GObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(button, label));
  FontDescriptionPtr font(pango_font_description_from_string("Segoe UI 9"));
  pango_layout_set_font_description(layout.get(), font.get());
  int tw, th;
  pango_layout_get_pixel_size(layout.get(), &tw, &th);
  SetSourceColour(cr, look.text);
  cairo_move_to(cr, std::floor((w - tw) / 2), std::floor((h - th) / 2));
  pango_cairo_show_layout(cr, layout.get());
}

}  // namespace nebro
