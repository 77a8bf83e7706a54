// Helpers shared by the export tests: styled documents written as runs, and the C++ styles.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "appearance/themes.h"
#include "support/disk_fixtures.h"
#include "export/styled_text.h"

namespace nebro::testing {

// A document built from (text, style) runs, kept alive while a StyledText views it.
struct Doc {
  std::string text;
  std::string styles;
  exports::StyledText view() const { return {text, styles}; }
};

inline Doc Runs(std::initializer_list<std::pair<std::string_view, unsigned>> runs) {
  Doc doc;
  for (const auto& [text, style] : runs) {
    doc.text += text;
    doc.styles.append(text.size(), static_cast<char>(style));
  }
  return doc;
}

// The styles the editor has for C++ under a theme: every style on the editor background in the
// editor text colour, and the C++ map's colours, bold and italic on top.
inline exports::ExportStyleTable CppStyles(const appearance::ThemeColors& theme) {
  exports::ExportStyleTable table;
  for (exports::ExportStyle& s : table) s = {theme.editorText, theme.editorBackground, false, false};
  const appearance::SyntaxColors& syn = theme.syntax;
  table[1] = {syn.comment, theme.editorBackground, false, true};
  table[2] = {syn.comment, theme.editorBackground, false, true};
  table[4] = {syn.number, theme.editorBackground, false, false};
  table[5] = {syn.keyword, theme.editorBackground, true, false};
  table[6] = {syn.string, theme.editorBackground, false, false};
  table[9] = {syn.preprocessor, theme.editorBackground, false, false};
  table[10] = {syn.operator_, theme.editorBackground, false, false};
  table[16] = {syn.keyword, theme.editorBackground, false, true};
  table[33] = {theme.lineNumberText, theme.lineNumberBackground, false, false};
  return table;
}

using test::ExpectStored;
using test::ReadBytes;

}  // namespace nebro::testing
