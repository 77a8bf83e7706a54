// Themes and lexers applied to the real Scintilla and Lexilla.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "app/main_window_gtk.h"
#include "appearance/theme_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

using namespace nebro;
using namespace nebro::sci;

namespace {

class ThemeTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    char name[] = "/tmp/nebro-theme-XXXXXX";
    configDir = mkdtemp(name);
    SetConfigRoot(configDir);
    ASSERT_EQ(LoadScintilla(), LibraryLoad::Ok);
    ASSERT_EQ(LoadLexilla(), LibraryLoad::Ok);
  }
  static void TearDownTestSuite() { std::filesystem::remove_all(configDir); }

  void SetUp() override {
    SetDefaultSettings(gSettings);
    gThemeChosenByUser = true;
    ASSERT_TRUE(CreateMainWindow("test", 0, 0, 600, 400, true));
    editor = gMain.editor;
  }
  void TearDown() override {
    gtk_widget_destroy(gMain.window);
    gMain = MainWindow();
  }

  void Load(const char* path, const char* text) {
    SendPtr(editor, SCI_SETTEXT, 0, text);
    SetupLexer(editor, path);
    Send(editor, SCI_COLOURISE, 0, -1);
  }
  int StyleAt(const char* text, const char* word) {
    return static_cast<int>(Send(editor, SCI_GETSTYLEAT, std::strstr(text, word) - text));
  }
  long Fore(int style) { return static_cast<long>(Send(editor, SCI_STYLEGETFORE, style)); }
  long Back(int style) { return static_cast<long>(Send(editor, SCI_STYLEGETBACK, style)); }
  bool Bold(int style) { return Send(editor, SCI_STYLEGETBOLD, style) != 0; }
  bool Italic(int style) { return Send(editor, SCI_STYLEGETITALIC, style) != 0; }

  static inline std::string configDir;
  GtkWidget* editor = nullptr;
};

}  // namespace

TEST_F(ThemeTest, CppKeywordsGetTheKeywordStyleAndColour) {
  const char* text = "int main() { void* p = nullptr; HWND w; return 0; } // done\n";
  Load("/tmp/a.tsx", text);
  EXPECT_EQ(gLanguage, kLangCpp);
  const ThemeColors& t = GetThemeColors();
  EXPECT_EQ(StyleAt(text, "int"), 5);
  EXPECT_EQ(StyleAt(text, "nullptr"), 5);
  EXPECT_EQ(Fore(5), static_cast<long>(t.syntax.keyword));
  EXPECT_TRUE(Bold(5));
  EXPECT_EQ(StyleAt(text, "HWND"), 16);  // second keyword set: italic in the keyword colour
  EXPECT_EQ(Fore(16), static_cast<long>(t.syntax.keyword));
  EXPECT_TRUE(Italic(16));
  EXPECT_EQ(StyleAt(text, "// done"), 2);
  EXPECT_EQ(Fore(2), static_cast<long>(t.syntax.comment));
  EXPECT_EQ(StyleAt(text, "main"), 11);
  EXPECT_EQ(Back(11), static_cast<long>(t.editorBackground));
  EXPECT_EQ(Back(STYLE_LINENUMBER), static_cast<long>(t.lineNumberBackground));

  // A theme switch re-colours the same lexer's styles.
  SetTheme(1, true);
  EXPECT_EQ(Fore(5), static_cast<long>(ThemeColorsFor(1).syntax.keyword));
  EXPECT_EQ(Back(0), static_cast<long>(ThemeColorsFor(1).editorBackground));
  EXPECT_EQ(StyleAt(text, "int"), 5);
}

TEST_F(ThemeTest, OtherLanguagesAndPlainText) {
  const char* py = "def f(x):\n    return None  # nothing\n";
  Load("/tmp/s.py", py);
  EXPECT_EQ(StyleAt(py, "return"), 5);
  EXPECT_EQ(StyleAt(py, "# nothing"), 1);
  EXPECT_TRUE(Italic(1));

  const char* html = "<p class=\"x\">a &amp; b</p>\n";
  Load("/tmp/p.html", html);
  EXPECT_EQ(StyleAt(html, "p class"), 1);
  EXPECT_EQ(Fore(1), static_cast<long>(GetThemeColors().syntax.keyword));

  // JSON keeps the default colours for every token.
  const char* json = "{\"a\": [1, true, \"s\"]}\n";
  Load("/tmp/c.jsonc", json);
  EXPECT_EQ(gLanguage, kLangJson);
  for (int style = 0; style < 16; ++style) {
    EXPECT_EQ(Fore(style), static_cast<long>(GetThemeColors().editorText)) << style;
    EXPECT_EQ(Back(style), static_cast<long>(GetThemeColors().editorBackground)) << style;
  }

  // Markdown code gets the derived code background.
  SetTheme(1, true);
  const char* md = "# Head\n\nsome `code` here\n";
  Load("/tmp/n.MD", md);
  EXPECT_EQ(gLanguage, kLangMarkdown);
  EXPECT_EQ(Back(19), 0xF1F1F1);

  // Plain text: the null lexer, everything one style.
  const char* txt = "int main nullptr\n";
  Load("/tmp/readme", txt);
  EXPECT_EQ(gLanguage, kLangPlainText);
  EXPECT_EQ(StyleAt(txt, "nullptr"), 0);
}

TEST_F(ThemeTest, StoredThemeNineDrawsAsThemeZeroAndCannotBeChosen) {
  gSettings.theme = 9;
  ApplyTheme();
  const ThemeColors& dark = ThemeColorsFor(0);
  EXPECT_EQ(Back(STYLE_DEFAULT), static_cast<long>(dark.editorBackground));
  EXPECT_EQ(Fore(STYLE_DEFAULT), static_cast<long>(dark.editorText));

  SetTheme(9, true);  // ignored
  EXPECT_EQ(gSettings.theme, 9u);
  SetTheme(5, true);
  EXPECT_EQ(gSettings.theme, 5u);
  EXPECT_EQ(Back(STYLE_DEFAULT), static_cast<long>(ThemeColorsFor(5).editorBackground));
  // SetTheme saves at once.
  AppSettings saved;
  ASSERT_TRUE(LoadSettingsFrom(GetSettingsFilePath(), saved));
  EXPECT_EQ(saved.theme, 5u);
}

TEST_F(ThemeTest, SystemPreferenceOnlyReplacesAnUnchosenTheme) {
  gSettings.theme = 5;
  gThemeChosenByUser = true;
  ApplySystemThemePreference();
  EXPECT_EQ(gSettings.theme, 5u);  // a normal start keeps Sepia
  gThemeChosenByUser = false;
  ApplySystemThemePreference();  // no readable preference here: light
  EXPECT_EQ(gSettings.theme, 1u);
  EXPECT_FALSE(gThemeChosenByUser);
}

TEST_F(ThemeTest, ReadingLook) {
  ApplyReadingLook(editor);
  EXPECT_EQ(Back(STYLE_DEFAULT), 0xDCEFF5);  // #F5EFDC
  EXPECT_EQ(Fore(0), 0x0F1E2D);              // #2D1E0F spread to every style
  EXPECT_EQ(Send(editor, SCI_GETWRAPMODE), SC_WRAP_WORD);
  EXPECT_EQ(Send(editor, SCI_GETMARGINLEFT), 28);
  EXPECT_EQ(Send(editor, SCI_GETCARETPERIOD), 0);
  char font[64] = {};
  SendPtr(editor, SCI_STYLEGETFONT, STYLE_DEFAULT, font);
  EXPECT_STREQ(font, "Georgia");
}
