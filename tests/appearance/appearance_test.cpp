#include "appearance/languages.h"
#include "appearance/plain_styling.h"
#include "appearance/style_maps.h"
#include "appearance/themes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <random>
#include <string>

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

TEST(PlainStyling, LongLinesAreFoundWhereverTheyAreAndWhateverEndsThem) {
  // Against counting every line: random texts of short and long runs, ended by LF, CRLF or CR.
  const auto longest = [](const std::string& text) {
    size_t best = 0, run = 0;
    for (char c : text) {
      run = (c == '\n' || c == '\r') ? 0 : run + 1;
      best = std::max(best, run);
    }
    return best;
  };
  std::mt19937 random(7);
  const char* ends[] = {"\n", "\r\n", "\r"};
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    const int lines = static_cast<int>(random() % 12);
    for (int i = 0; i < lines; ++i) {
      text += std::string(random() % 3 == 0 ? random() % 300 : random() % 12, 'x');
      if (i + 1 < lines || random() % 2) text += ends[random() % 3];
    }
    for (size_t limit : {size_t{0}, size_t{1}, size_t{11}, size_t{100}, size_t{299}}) {
      EXPECT_EQ(HasLineLongerThan(text, limit), longest(text) > limit) << "limit " << limit << ", text of " << text.size();
    }
  }
  // Which reason a text gets: the wrapping limit counts in every language, the colour limit only
  // in coloured ones.
  const std::string wide(kUnwrappedLineLimit + 1, 'w');
  const std::string longish(kLongLineLimit + 1, 'l');
  EXPECT_EQ(PlainReasonFor("a\n" + longish + "\n", false), PlainReason::None);
  EXPECT_EQ(PlainReasonFor("a\n" + longish + "\n", true), PlainReason::LongLine);
  EXPECT_EQ(PlainReasonFor("a\r" + wide, false), PlainReason::UnwrappedLine);
  EXPECT_EQ(PlainReasonFor(wide + "\r\n", true), PlainReason::UnwrappedLine);
}
