// The Settings and Font dialogs on the real main window, driven over the accessibility bus as a
// screen reader user would: what OK applies and saves, what Cancel and a refused value leave as
// they were.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "appearance/current_theme.h"
#include "common/command_ids.h"
#include "settings/settings.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::testing;
using namespace nebro::sci;

namespace {

class SettingsDialogTest : public MainWindowTest {
 protected:
  // The record as the settings file on disk holds it (a missing or bad file fails the test).
  settings::AppSettings OnDisk() {
    settings::AppSettings s{};
    EXPECT_TRUE(settings::LoadSettingsFrom(settings::GetSettingsFilePath(), s));
    return s;
  }

  Colour EditorPixel() {
    const Snapshot s(app::gMain.editor, true);
    return s.At(s.width / 2, s.height / 2);
  }

  std::string StyleFont() {
    char face[128] = {};
    sci::SendPtr(app::gMain.editor, SCI_STYLEGETFONT, STYLE_DEFAULT, face);
    return face;
  }

  GtkWidget* HorizontalScrollBar() {
    GtkWidget* found = nullptr;
    gtk_container_forall(GTK_CONTAINER(app::gMain.editor), [](GtkWidget* child, gpointer out) {
      if (GTK_IS_SCROLLBAR(child) && gtk_orientable_get_orientation(GTK_ORIENTABLE(child)) == GTK_ORIENTATION_HORIZONTAL)
        *static_cast<GtkWidget**>(out) = child;
    }, &found);
    return found;
  }
};

constexpr const char* kDialog = "dialog|Nebro - Settings";
constexpr const char* kFontDialog = "dialog|Nebro - Font";

TEST_F(SettingsDialogTest, ThemeChosenFromTheToolbarRepaintsTheEditorAndIsSaved) {
  SetText("int main() {}\n");
  ASSERT_FALSE(std::filesystem::exists(settings::GetSettingsFilePath()));
  const appearance::ThemeColors& sepia = appearance::ThemeColorsFor(5);
  ASSERT_NE(EditorPixel(), sepia.editorBackground);

  // The dialog opens on the stored values; a theme picked in the list counts only on OK.
  RunSteps({"click|push button|Settings", std::string("wait|") + kDialog, "wait|label|Font: Consolas, 11 pt",
       "select|combo box|Theme|Sepia"});
  EXPECT_EQ(settings::gSettings.theme, 0u);
  RunSteps({"click|push button|OK", std::string("gone|") + kDialog});

  EXPECT_EQ(settings::gSettings.theme, 5u);
  EXPECT_EQ(Send(SCI_STYLEGETBACK, STYLE_DEFAULT), static_cast<sptr_t>(sepia.editorBackground));
  EXPECT_TRUE(WaitUntil([&] { return EditorPixel() == sepia.editorBackground; }, 5)) << std::hex << EditorPixel();
  const settings::AppSettings disk = OnDisk();
  EXPECT_EQ(disk.theme, 5u);
  EXPECT_TRUE(disk.wordWrap);
  EXPECT_TRUE(disk.lineNumbers);
  EXPECT_EQ(disk.transparency, 0);
}

TEST_F(SettingsDialogTest, CancelAndRefusedTransparencyChangeNothingThenOkAppliesInOrder) {
  boxesExpected = true;
  answer = kMbResultOk;
  settings::gSettings.autoSaveMinutes = 10;
  SetText(std::string(4000, 'x') + "\n");
  GtkWidget* hbar = HorizontalScrollBar();
  ASSERT_NE(hbar, nullptr);
  Pump(app::gMain.window);
  EXPECT_FALSE(gtk_widget_get_visible(hbar));  // wrapped text needs none

  // Everything changed, then Escape: the stored theme stays in force and nothing is saved.
  ASSERT_TRUE(app::DispatchCommand(kCmdSettings));
  const std::string states = RunSteps({std::string("wait|") + kDialog, "wait|label|(0 - 50)", "state|combo box|Interval",
                                       "click|check box|Enable", "state|combo box|Interval"});
  const std::string before = states.substr(0, states.find('\n')), after = states.substr(states.find('\n') + 1);
  EXPECT_NE(before.find("sensitive"), std::string::npos) << before;  // auto-save was on
  EXPECT_EQ(after.find("sensitive"), std::string::npos) << after;    // off greys the interval
  RunSteps({"select|combo box|Theme|Night", "click|check box|Word wrap", "set|text|Transparency|20"});
  SendKey(FindWindow("NebroSettings"), GDK_KEY_Escape);
  RunSteps({std::string("gone|") + kDialog});
  EXPECT_EQ(settings::gSettings.theme, 0u);
  EXPECT_TRUE(settings::gSettings.wordWrap);
  EXPECT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_WORD);
  EXPECT_EQ(settings::gSettings.autoSaveMinutes, 10);
  EXPECT_EQ(settings::gSettings.transparency, 0);
  EXPECT_EQ(gtk_widget_get_opacity(app::gMain.window), 1.0);
  EXPECT_FALSE(std::filesystem::exists(settings::GetSettingsFilePath()));

  // 51, then letters: the message, the old value back in the field, the dialog still open and
  // nothing applied.
  ASSERT_TRUE(app::DispatchCommand(kCmdSettings));
  RunSteps({std::string("wait|") + kDialog, "select|combo box|Theme|Night", "set|text|Transparency|51", "click|push button|OK"});
  ASSERT_TRUE(WaitUntil([&] { return asked.size() == 1; }, 10));
  EXPECT_EQ(RunSteps({std::string("wait|") + kDialog, "text|text|Transparency", "set|text|Transparency|2a",
                      "click|push button|OK"}),
            "0\n");
  ASSERT_TRUE(WaitUntil([&] { return asked.size() == 2; }, 10));
  for (const Asked& box : asked) {
    EXPECT_EQ(box.kind, kMbOk);
    EXPECT_EQ(box.text, "Transparency must be a number between 0 and 50.");
    EXPECT_EQ(box.title, "Nebro \xC3\xA2\xE2\x82\xAC\xE2\x80\x9D Settings");
  }
  EXPECT_EQ(RunSteps({std::string("wait|") + kDialog, "text|text|Transparency"}), "0\n");
  EXPECT_EQ(settings::gSettings.theme, 0u);
  EXPECT_FALSE(std::filesystem::exists(settings::GetSettingsFilePath()));

  // Then a good value, auto-save off and word wrap off: OK applies all of it and saves it.
  RunSteps({"set|text|Transparency|20", "click|check box|Enable", "click|check box|Word wrap", "click|push button|OK",
       std::string("gone|") + kDialog});
  EXPECT_EQ(settings::gSettings.theme, 4u);
  EXPECT_EQ(settings::gSettings.autoSaveMinutes, 0);  // whatever the interval list shows
  EXPECT_FALSE(settings::gSettings.wordWrap);
  EXPECT_EQ(Send(SCI_GETWRAPMODE), SC_WRAP_NONE);
  EXPECT_EQ(Send(SCI_GETHSCROLLBAR), 1);
  EXPECT_TRUE(WaitUntil([&] { return gtk_widget_get_visible(hbar); }, 5)) << "the horizontal scroll bar stays hidden";
  EXPECT_DOUBLE_EQ(gtk_widget_get_opacity(app::gMain.window), 204 / 255.0);
  EXPECT_EQ(Send(SCI_STYLEGETBACK, STYLE_DEFAULT), static_cast<sptr_t>(appearance::ThemeColorsFor(4).editorBackground));
  const settings::AppSettings disk = OnDisk();
  EXPECT_EQ(disk.theme, 4u);
  EXPECT_EQ(disk.transparency, 20);
  EXPECT_EQ(disk.autoSaveMinutes, 0);
  EXPECT_FALSE(disk.wordWrap);
  EXPECT_EQ(asked.size(), 2u);
}

TEST_F(SettingsDialogTest, FontDialogRefusesBadSizesAndStoresTheChosenFont) {
  boxesExpected = true;
  answer = kMbResultOk;
  SendKey(app::gMain.window, GDK_KEY_F, GDK_CONTROL_MASK | GDK_SHIFT_MASK);
  RunSteps({std::string("wait|") + kFontDialog, "set|text|Search|sans mono", "select|table|Face|DejaVu Sans Mono"});
  size_t expected = 0;
  for (const char* bad : {"0", "145", "twelve"}) {
    SCOPED_TRACE(bad);
    RunSteps({std::string("set|text|Size|") + bad, "click|push button|OK"});
    ASSERT_TRUE(WaitUntil([&] { return asked.size() == expected + 1; }, 10));
    EXPECT_EQ(asked[expected].text, "Font size must be a number between 1 and 144.");
    EXPECT_EQ(asked[expected].title, "Nebro - Font");
    ++expected;
    RunSteps({std::string("wait|") + kFontDialog});
  }
  EXPECT_EQ(settings::FieldText(settings::gSettings.fontName), u"Consolas");
  EXPECT_EQ(settings::gSettings.fontSize, 11);
  // Enter is OK.
  RunSteps({"set|text|Size|14", "click|check box|Bold"});
  SendKey(FindWindow("NebroFont"), GDK_KEY_Return);
  RunSteps({std::string("gone|") + kFontDialog});

  EXPECT_EQ(settings::FieldText(settings::gSettings.fontName), u"DejaVu Sans Mono");
  EXPECT_EQ(settings::gSettings.fontSize, 14);
  EXPECT_TRUE(settings::gSettings.fontBold);
  EXPECT_FALSE(settings::gSettings.fontItalic);
  EXPECT_EQ(StyleFont(), "DejaVu Sans Mono");
  EXPECT_EQ(Send(SCI_STYLEGETSIZE, STYLE_DEFAULT), 14);
  EXPECT_EQ(Send(SCI_STYLEGETBOLD, STYLE_DEFAULT), 1);
  const settings::AppSettings disk = OnDisk();
  EXPECT_EQ(settings::FieldText(disk.fontName), u"DejaVu Sans Mono");
  EXPECT_EQ(disk.fontSize, 14);

  // From the Settings dialog: the Font dialog opens over it and its label follows the choice.
  ASSERT_TRUE(app::DispatchCommand(kCmdSettings));
  RunSteps({std::string("wait|") + kDialog, "wait|label|Font: DejaVu Sans Mono, 14 pt Bold", "click|push button|Select Font...",
       std::string("within|") + kFontDialog, "click|check box|Italic", "click|push button|OK", "within||",
       std::string("gone|") + kFontDialog, "wait|label|Font: DejaVu Sans Mono, 14 pt Bold Italic",
       "click|push button|Cancel", std::string("gone|") + kDialog});
  EXPECT_TRUE(settings::gSettings.fontItalic);
  EXPECT_EQ(Send(SCI_STYLEGETITALIC, STYLE_DEFAULT), 1);
  EXPECT_EQ(asked.size(), 3u);
}

}  // namespace
