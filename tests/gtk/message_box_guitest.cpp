// The themed message box, answered through its real widgets.
#include <gtest/gtest.h>

#include <functional>

#include "gtk/widget_style_gtk.h"
#include "gtk/message_box_gtk.h"
#include "appearance/current_theme.h"
#include "settings/settings.h"
#include "support/gui_helpers.h"

using namespace nebro;
using namespace nebro::appearance;
using namespace nebro::settings;

namespace {

GtkWidget* FindBox() { return nebro::testing::FindWindow("NebroMessageBox"); }

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

void PressKey(GtkWidget* box, guint keyval) { nebro::testing::SendKey(box, keyval); }

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
  Colour seen = 0;
  auto sample = [&seen](GtkWidget* box) {
    seen = nebro::testing::Snapshot(box).At(2, 2);
    gtk_window_close(GTK_WINDOW(box));
  };
  gSettings.theme = 0;
  ShowAndAct(kMbOk, "Dark.", sample);
  EXPECT_EQ(seen, ThemeColorsFor(0).dialogBackground);
  EXPECT_EQ(MessageBoxBrushTheme(), 0);
  gSettings.theme = 5;
  ShowAndAct(kMbOk, "Sepia.", sample);
  EXPECT_EQ(seen, ThemeColorsFor(5).dialogBackground);
  EXPECT_EQ(MessageBoxBrushTheme(), 5);
}

TEST(MessageBoxGui, ButtonsHaveOneWidthAndOneGapAndTheFocusShows) {
  SetDefaultSettings(gSettings);
  for (ThemeId theme : {ThemeId{0}, ThemeId{1}}) {
    gSettings.theme = theme;
    ShowAndAct(kMbSaveDontSaveCancel, "Save changes to \"notes.txt\"?", [](GtkWidget* box) {
      GtkAllocation a[3];
      for (int i = 0; i < 3; ++i) gtk_widget_get_allocation(FindChildByName(box, std::to_string(2501 + i).c_str()), &a[i]);
      EXPECT_EQ(a[0].width, a[1].width);  // "Don't Save" is no wider than the others
      EXPECT_EQ(a[1].width, a[2].width);
      EXPECT_EQ(a[1].x - (a[0].x + a[0].width), a[2].x - (a[1].x + a[1].width));
      EXPECT_GT(a[2].x - (a[1].x + a[1].width), 0);
      // The focused button (the first) differs from an unfocused one where the ring runs.
      nebro::testing::PaintAndWait(box);
      const nebro::testing::Snapshot focused(FindChildByName(box, "2501")), plain(FindChildByName(box, "2503"));
      EXPECT_GT(nebro::testing::ColourDistance(focused.At(3, focused.height / 2), plain.At(3, plain.height / 2)), 100);
      PressKey(box, GDK_KEY_Escape);
    });
  }
}

TEST(MessageBoxGui, AWindowOfItsOwnLookGivesItsBoxesItsColours) {
  SetDefaultSettings(gSettings);
  ThemeColors paper = ThemeColorsFor(5);
  paper.dialogBackground = Rgb(0xF5, 0xEF, 0xDC);
  SetMessageBoxLook(paper);
  ShowAndAct(kMbOk, "Cannot open binary file.", [&](GtkWidget* box) {
    nebro::testing::PaintAndWait(box);
    const nebro::testing::Snapshot s(box);
    EXPECT_EQ(s.At(2, 2), paper.dialogBackground);
    PressKey(box, GDK_KEY_Escape);
  });
  SetMessageBoxLook(std::nullopt);
  ShowAndAct(kMbOk, "Done.", [&](GtkWidget* box) {
    nebro::testing::PaintAndWait(box);
    EXPECT_EQ(nebro::testing::Snapshot(box).At(2, 2), GetThemeColors().dialogBackground);
    PressKey(box, GDK_KEY_Escape);
  });
}
