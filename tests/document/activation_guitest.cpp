// The "File Changed" question under a real window manager: the activation its own box gives back
// when it closes is not the user coming back, so Cancel really cancels.
#include <gtest/gtest.h>

#include <filesystem>

#include "document/document_ops_gtk.h"
#include "gtk/message_box_gtk.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"
#include "support/window_manager.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

class ActivationTest : public MainWindowTest {
  // Managed from its first map, as on a desktop.
  void Configure() override { ASSERT_TRUE(StartWindowManager()); }
};

// Makes `window` the active window the way a user's click would, and waits until it is.
bool Activate(GtkWidget* window) {
  gtk_window_present_with_time(GTK_WINDOW(window), gdk_x11_get_server_time(gtk_widget_get_window(window)));
  return WaitUntil([&] { return gtk_window_is_active(GTK_WINDOW(window)); }, 10);
}

TEST_F(ActivationTest, CancelOnFileChangedIsNotUndoneByTheBoxClosing) {
  boxesExpected = true;
  const std::string path = WriteFile("gone.txt", "typed text");
  ASSERT_TRUE(LoadDocument(path));
  Type("!");
  ASSERT_TRUE(Activate(app::gMain.window));
  GtkWidget* other = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_show(other);
  ASSERT_TRUE(Activate(other));
  std::filesystem::remove(path);

  // Coming back: the real box asks, and the user cancels it.
  SetMessageBoxHook(nullptr);
  AccessibilityProbe probe({"wait|dialog|Nebro \xC3\xA2\xE2\x82\xAC\xE2\x80\x9D File Changed",
                            "click|push button|Cancel", "gone|dialog|Nebro \xC3\xA2\xE2\x82\xAC\xE2\x80\x9D File Changed"});
  ASSERT_TRUE(Activate(app::gMain.window));
  const AccessibilityResult& answered = probe.Finish();
  ASSERT_TRUE(answered.ok) << answered.err;

  // The box's closing hands the activation back; whatever that sets off must not ask again.
  int askedAgain = 0;
  SetMessageBoxHook([&](int, const std::string&, const std::string&) { return ++askedAgain, kMbResultCancel; });
  ASSERT_TRUE(WaitUntil([] { return gtk_window_is_active(GTK_WINDOW(app::gMain.window)); }, 10));
  Pump(app::gMain.window);
  EXPECT_EQ(askedAgain, 0);
  EXPECT_EQ(app::gMain.doc.path, path);

  // Leaving for another window and coming back asks again.
  ASSERT_TRUE(Activate(other));
  ASSERT_TRUE(Activate(app::gMain.window));
  EXPECT_TRUE(WaitUntil([&] { return askedAgain == 1; }, 10));
  gtk_widget_destroy(other);
}

}  // namespace
