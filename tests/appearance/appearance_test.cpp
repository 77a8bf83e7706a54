#include "appearance/languages.h"
#include "appearance/style_maps.h"
#include "appearance/themes.h"

#include <gtest/gtest.h>

#include <clocale>

using namespace nebro;
using namespace nebro::appearance;

TEST(Themes, UnknownNumbersReadAsThemeZeroAndCodeBackgroundIsClamped) {
  EXPECT_EQ(&ThemeColorsFor(9), &ThemeColorsFor(0));
  EXPECT_EQ(&ThemeColorsFor(0xFFFFFFFF), &ThemeColorsFor(0));
  EXPECT_STREQ(ThemeName(9), ThemeName(0));

  // Dark themes lighten the editor background by 18 per channel, light ones darken it by 14,
  // each channel clamped on its own.
  ThemeColors t = ThemeColorsFor(0);
  t.isDark = true;
  t.editorBackground = Rgb(250, 0, 100);
  EXPECT_EQ(ColourText(CodeBackground(t)), "#FF1276");
  t.isDark = false;
  t.editorBackground = Rgb(5, 14, 200);
  EXPECT_EQ(ColourText(CodeBackground(t)), "#0000BA");
}

TEST(Languages, DetectionByLastDot) {
  std::setlocale(LC_ALL, "C.UTF-8");
  struct Case {
    const char16_t* path;
    LanguageId id;
  } cases[] = {
      {u"README.MD", kLangMarkdown}, {u"archive.tar.gz", kLangPlainText}, {u"Makefile", kLangPlainText},
      {u"ends.with.", kLangPlainText}, {u"", kLangPlainText}, {u"script.jsonc", kLangJson},
      {u"/src/x.HPP", kLangCpp}, {u"icon.svg", kLangXml}, {u"/a.b/file", kLangPlainText},
      {u"/home/u/.bashrc", kLangPlainText}, {u"x.c++", kLangPlainText},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DetectLanguage(c.path), c.id) << std::string(c.path, c.path + std::char_traits<char16_t>::length(c.path));
  }
  EXPECT_STREQ(LexerName(999), "null");

  // The editor splits keyword lists at single blanks: no doubled, leading or trailing blank.
  for (LanguageId id : {kLangCpp, kLangPython, kLangBatch}) {
    for (int set = 0; set < 2; ++set) {
      const char* list = KeywordList(id, set);
      if (!list) continue;
      const std::string s = list;
      EXPECT_EQ(s.find("  "), std::string::npos) << id;
      EXPECT_NE(s.front(), ' ');
      EXPECT_NE(s.back(), ' ');
    }
  }
  EXPECT_EQ(KeywordList(kLangJson, 0), nullptr);
}

// The C++ map's colours, bold and italic reach the real editor in theme_guitest.
TEST(StyleMaps, FontFlagsAndCodeBackgrounds) {
  // The font's own flags spread to every listed style.
  for (const ResolvedStyle& s : ResolveStyleMap(kLangPython, ThemeColorsFor(0), true, true)) {
    EXPECT_TRUE(s.bold && s.italic) << s.style;
  }
  // Markdown code takes the derived code background; quotes the muted colour.
  const ThemeColors& light = ThemeColorsFor(1);
  int seen = 0;
  for (const ResolvedStyle& s : ResolveStyleMap(kLangMarkdown, light, false, false)) {
    if (s.style == 19 || s.style == 12) {
      EXPECT_EQ(s.back, CodeBackground(light)) << s.style;
      ++seen;
    } else if (s.style == 15) {
      EXPECT_EQ(s.fore, light.mutedText);
      ++seen;
    }
  }
  EXPECT_EQ(seen, 3);
}
