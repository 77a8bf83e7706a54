#include "appearance/languages.h"
#include "appearance/style_maps.h"
#include "appearance/themes.h"

#include <gtest/gtest.h>

#include <clocale>
#include <sstream>

using namespace nebro;

TEST(Themes, TableLookupClampsAndDerivesCodeBackground) {
  // A few cells of the table, read back through the accessor in #RRGGBB form.
  EXPECT_EQ(ColourText(ThemeColorsFor(0).editorBackground), "#1C1C1E");
  EXPECT_EQ(ColourText(ThemeColorsFor(1).selectionBackground), "#ADD6FF");
  EXPECT_EQ(ColourText(ThemeColorsFor(4).buttonText), "#B4B4D2");
  EXPECT_EQ(ColourText(ThemeColorsFor(5).syntax.operator_), "#503719");
  EXPECT_EQ(ColourText(ThemeColorsFor(2).syntax.keyword), "#003CC8");
  EXPECT_EQ(ColourText(ThemeColorsFor(3).currentLineNumberText), "#005000");
  const bool dark[] = {true, false, false, false, true, false};
  for (ThemeId id = 0; id < kThemeCount; ++id) EXPECT_EQ(ThemeColorsFor(id).isDark, dark[id]);

  // Out of range reads theme 0 everywhere.
  EXPECT_EQ(&ThemeColorsFor(9), &ThemeColorsFor(0));
  EXPECT_EQ(&ThemeColorsFor(0xFFFFFFFF), &ThemeColorsFor(0));
  EXPECT_STREQ(ThemeName(9), "Nebro Dark");
  EXPECT_STREQ(ThemeName(5), "Sepia");

  EXPECT_EQ(ColourText(CodeBackground(ThemeColorsFor(1))), "#F1F1F1");
  EXPECT_EQ(ColourText(CodeBackground(ThemeColorsFor(0))), "#2E2E30");
  // Clamping at both ends of a channel.
  ThemeColors t = ThemeColorsFor(0);
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
      {u"README.MD", kLangMarkdown}, {u"notes.Markdown", kLangMarkdown},
      {u"archive.tar.gz", kLangPlainText}, {u"Makefile", kLangPlainText},
      {u"ends.with.", kLangPlainText}, {u"", kLangPlainText},
      {u"script.jsonc", kLangJson}, {u"style.less", kLangCss}, {u"a.tsx", kLangCpp},
      {u"Program.cs", kLangCpp}, {u"/src/x.HPP", kLangCpp}, {u"t.pyi", kLangPython},
      {u"page.aspx", kLangHtml}, {u"icon.svg", kLangXml}, {u"run.CMD", kLangBatch},
      {u"init.lua", kLangLua}, {u"q.sql", kLangSql}, {u"/a.b/file", kLangPlainText},
      {u"/home/u/.bashrc", kLangPlainText}, {u"x.c++", kLangPlainText},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DetectLanguage(c.path), c.id) << std::string(c.path, c.path + std::char_traits<char16_t>::length(c.path));
  }
  EXPECT_STREQ(LexerName(kLangHtml), "hypertext");
  EXPECT_STREQ(LexerName(kLangPlainText), "null");
  EXPECT_STREQ(LexerName(999), "null");
}

TEST(Languages, KeywordListsAreExact) {
  auto words = [](const char* list) {
    std::istringstream in(list);
    std::string w;
    int n = 0;
    while (in >> w) ++n;
    return n;
  };
  EXPECT_EQ(words(kCppKeywords0), 92);
  EXPECT_EQ(std::string(kCppKeywords0).size(), 668u);
  EXPECT_EQ(words(kCppKeywords1), 62);
  EXPECT_EQ(words(kPythonKeywords), 76);
  EXPECT_EQ(words(kBatchKeywords), 38);
  // Single blanks only, no leading or trailing blank.
  for (const char* list : {kCppKeywords0, kCppKeywords1, kPythonKeywords, kBatchKeywords}) {
    const std::string s = list;
    EXPECT_EQ(s.find("  "), std::string::npos);
    EXPECT_NE(s.front(), ' ');
    EXPECT_NE(s.back(), ' ');
  }
  EXPECT_EQ(std::string(kCppKeywords0).substr(0, 16), "alignas alignof ");
  EXPECT_EQ(std::string(kCppKeywords1).substr(std::string(kCppKeywords1).size() - 11), "make_shared");
  EXPECT_EQ(KeywordList(kLangCpp, 1), kCppKeywords1);
  EXPECT_EQ(KeywordList(kLangJson, 0), nullptr);
  EXPECT_EQ(KeywordList(kLangPython, 1), nullptr);
}

TEST(StyleMaps, ResolveColoursAndForcedAttributes) {
  const ThemeColors& dark = ThemeColorsFor(0);
  auto find = [](const std::vector<ResolvedStyle>& map, int style) {
    for (const ResolvedStyle& s : map)
      if (s.style == style) return s;
    ADD_FAILURE() << "style " << style << " missing";
    return ResolvedStyle{};
  };
  const auto cpp = ResolveStyleMap(kLangCpp, dark, false, false);
  EXPECT_EQ(cpp.size(), 15u);
  EXPECT_EQ(find(cpp, 5).fore, dark.syntax.keyword);
  EXPECT_TRUE(find(cpp, 5).bold);
  EXPECT_FALSE(find(cpp, 5).italic);
  EXPECT_TRUE(find(cpp, 16).italic);   // second keyword set
  EXPECT_EQ(find(cpp, 16).fore, dark.syntax.keyword);
  EXPECT_EQ(find(cpp, 11).fore, dark.editorText);
  EXPECT_EQ(find(cpp, 11).back, dark.editorBackground);

  // The font's own flags spread to every listed style.
  const auto italicFont = ResolveStyleMap(kLangPython, dark, false, true);
  for (const ResolvedStyle& s : italicFont) EXPECT_TRUE(s.italic);

  const ThemeColors& light = ThemeColorsFor(1);
  const auto md = ResolveStyleMap(kLangMarkdown, light, false, false);
  EXPECT_EQ(md.size(), 22u);
  EXPECT_EQ(ColourText(find(md, 19).back), "#F1F1F1");
  EXPECT_EQ(ColourText(find(md, 12).back), "#F1F1F1");
  EXPECT_EQ(find(md, 15).fore, light.mutedText);
  EXPECT_TRUE(find(md, 15).italic);
  EXPECT_EQ(find(md, 6).fore, light.syntax.keyword);

  EXPECT_TRUE(StyleMapFor(kLangJson).empty());
  EXPECT_TRUE(StyleMapFor(kLangSql).empty());
  EXPECT_EQ(StyleMapFor(kLangXml).data(), StyleMapFor(kLangHtml).data());
  EXPECT_EQ(StyleMapFor(kLangCss).size(), 19u);
  EXPECT_EQ(StyleMapFor(kLangBatch).size(), 8u);
}
