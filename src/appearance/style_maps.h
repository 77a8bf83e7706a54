// Per-language style maps: which theme colour and forced attributes each lexer style takes.
#pragma once

#include <span>
#include <vector>

#include "appearance/languages.h"
#include "appearance/themes.h"

namespace nebro::appearance {

enum class ColourRole { EditorText, Keyword, Comment, String, Number, Preprocessor, Operator, Muted };

struct StyleEntry {
  int style;
  ColourRole fore;
  bool codeBackground;  // else the editor background
  bool bold;            // forced on; otherwise the font's own flag
  bool italic;
};

struct ResolvedStyle {
  int style;
  Colour fore;
  Colour back;
  bool bold;
  bool italic;
};

// Empty for languages without a map (JSON, Lua, SQL, plain text).
std::span<const StyleEntry> StyleMapFor(LanguageId id);

Colour RoleColour(const ThemeColors& theme, ColourRole role);

// The map with the theme's colours and the font's bold/italic flags filled in.
std::vector<ResolvedStyle> ResolveStyleMap(LanguageId id, const ThemeColors& theme, bool fontBold,
                                           bool fontItalic);

}  // namespace nebro::appearance
