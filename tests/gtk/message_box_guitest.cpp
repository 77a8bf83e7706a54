// The themed message box, answered through its real widgets.
#include <gtest/gtest.h>

#include <functional>

#include "gtk/widget_style_gtk.h"
#include "gtk/message_box_gtk.h"
#include "appearance/current_theme.h"
#include "settings/settings.h"

using namespace nebro;
using namespace nebro::appearance;
using namespace nebro::settings;

namespace {

GtkWidget* FindBox() {
  GList* top = gtk_window_list_toplevels();
  GtkWidget* found = nullptr;
  for (GList* l = top; l; l = l->next) {
    if (std::string(gtk_widget_get_name(GTK_WIDGET(l->data))) == "NebroMessageBox" &&
        gtk_widget_get_visible(GTK_WIDGET(l->data))) {
      found = GTK_WIDGET(l->data);
    }
  }
  g_list_free(top);
  return found;
}

// Shows a box and runs `act` on it once it is on screen.
int ShowAndAct(int kind, const std::string& text, std::function<void(GtkWidget*)> act) {
  struct Ctx {
    std::function<void(GtkWidget*)> act;
    int tries = 0;
  } ctx{std::move(act)};
  g_timeout_add(50, [](gpointer data) -> gboolean {
    auto* c = static_cast<Ctx*>(data);
    GtkWidget* box = FindBox();
    if (!box || !gtk_widget_get_mapped(box)) return ++c->tries < 100;
    c->act(box);
    return G_SOURCE_REMOVE;
  }, &ctx);
  return ShowMessageBox(nullptr, kind, text, "Nebro - Test");
}

void PressKey(GtkWidget* box, guint keyval) {
  GdkEvent* ev = gdk_event_new(GDK_KEY_PRESS);
  ev->key.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(box)));
  ev->key.keyval = keyval;
  ev->key.send_event = TRUE;
  gdk_event_set_device(ev, gdk_seat_get_keyboard(gdk_display_get_default_seat(gdk_display_get_default())));
  gtk_main_do_event(ev);
  gdk_event_free(ev);
}

uint32_t PixelAt(GtkWidget* widget, int x, int y) {
  const int w = gtk_widget_get_allocated_width(widget), h = gtk_widget_get_allocated_height(widget);
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
  cairo_t* cr = cairo_create(surface);
  gtk_widget_draw(widget, cr);
  cairo_destroy(cr);
  cairo_surface_flush(surface);
  const auto* row = cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface);
  const uint32_t pixel = reinterpret_cast<const uint32_t*>(row)[x] & 0xFFFFFF;  // 0xRRGGBB
  cairo_surface_destroy(surface);
  return pixel;
}

Colour AsRgb(Colour c) { return (RedOf(c) << 16) | (GreenOf(c) << 8) | BlueOf(c); }

}  // namespace

TEST(MessageBoxGui, ButtonsEscapeAndClose) {
  SetDefaultSettings(gSettings);
  auto click = [](const char* id) {
    return [id](GtkWidget* box) { gtk_button_clicked(GTK_BUTTON(FindChildByName(box, id))); };
  };
  EXPECT_EQ(ShowAndAct(kMbSaveDontSaveCancel, "Save changes?", click("2501")), kMbResultSaveOrYes);
  EXPECT_EQ(ShowAndAct(kMbSaveDontSaveCancel, "Save changes?", click("2502")), kMbResultDontSaveOrNo);
  EXPECT_EQ(ShowAndAct(kMbSaveDontSaveCancel, "Save changes?", click("2503")), kMbResultCancel);
  EXPECT_EQ(ShowAndAct(kMbOkCancel, "Go on?", click("2502")), kMbResultCancel);
  EXPECT_EQ(ShowAndAct(kMbYesNo, "Sure?", [](GtkWidget* b) { PressKey(b, GDK_KEY_Escape); }), kMbResultCancel);
  EXPECT_EQ(ShowAndAct(kMbOk, "Done.", [](GtkWidget* b) { PressKey(b, GDK_KEY_Escape); }), kMbResultOk);
  EXPECT_EQ(ShowAndAct(kMbYesNo, "Sure?", [](GtkWidget* b) { gtk_window_close(GTK_WINDOW(b)); }), kMbResultCancel);
  EXPECT_EQ(ShowAndAct(kMbOk, "Done.", [](GtkWidget* b) { gtk_window_close(GTK_WINDOW(b)); }), kMbResultOk);

  // The kind decides the buttons; the first has the focus; the text is shown without markup.
  ShowAndAct(kMbYesNo, "a <b>&\nsecond line", [](GtkWidget* box) {
    EXPECT_TRUE(FindChildByName(box, "2501"));
    EXPECT_TRUE(FindChildByName(box, "2502"));
    EXPECT_FALSE(FindChildByName(box, "2503"));
    EXPECT_EQ(gtk_window_get_focus(GTK_WINDOW(box)), FindChildByName(box, "2501"));
    EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(FindChildByName(box, "2500"))), "a <b>&\nsecond line");
    PressKey(box, GDK_KEY_Escape);
  });
}

TEST(MessageBoxGui, BackgroundFollowsTheThemeAfterASwitch) {
  SetDefaultSettings(gSettings);
  uint32_t seen = 0;
  auto sample = [&seen](GtkWidget* box) {
    seen = PixelAt(box, 2, 2);
    gtk_window_close(GTK_WINDOW(box));
  };
  gSettings.theme = 0;
  ShowAndAct(kMbOk, "Dark.", sample);
  EXPECT_EQ(seen, AsRgb(ThemeColorsFor(0).dialogBackground));
  EXPECT_EQ(MessageBoxBrushTheme(), 0);
  gSettings.theme = 5;
  ShowAndAct(kMbOk, "Sepia.", sample);
  EXPECT_EQ(seen, AsRgb(ThemeColorsFor(5).dialogBackground));
  EXPECT_EQ(MessageBoxBrushTheme(), 5);
}

TEST(MessageBoxGui, HookAnswersWithoutShowing) {
  std::vector<std::string> seen;
  SetMessageBoxHook([&](int kind, const std::string& text, const std::string& title) {
    seen.push_back(std::to_string(kind) + "|" + text + "|" + title);
    return kMbResultDontSaveOrNo;
  });
  EXPECT_EQ(ShowMessageBox(nullptr, kMbYesNo, "Question?", "Nebro - Q"), kMbResultDontSaveOrNo);
  SetMessageBoxHook(nullptr);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0], "3|Question?|Nebro - Q");
  EXPECT_EQ(FindBox(), nullptr);
}
