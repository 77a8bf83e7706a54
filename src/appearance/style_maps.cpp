#include "appearance/style_maps.h"

namespace nebro::appearance {
namespace {

using R = ColourRole;
constexpr bool B = true;   // forced bold / italic / code background
constexpr bool _ = false;

// clang-format off
constexpr StyleEntry kCppMap[] = {
    {0, R::EditorText, _, _, _},   {1, R::Comment, _, _, B},      {2, R::Comment, _, _, B},
    {3, R::Comment, _, _, B},      {4, R::Number, _, _, _},       {5, R::Keyword, _, B, _},
    {6, R::String, _, _, _},       {7, R::String, _, _, _},       {9, R::Preprocessor, _, _, _},
    {10, R::Operator, _, _, _},    {11, R::EditorText, _, _, _},  {12, R::String, _, _, _},
    {16, R::Keyword, _, _, B},     {15, R::Comment, _, _, B},     {13, R::String, _, _, _},
};

constexpr StyleEntry kPythonMap[] = {
    {0, R::EditorText, _, _, _},   {1, R::Comment, _, _, B},      {2, R::Number, _, _, _},
    {3, R::String, _, _, _},       {4, R::String, _, _, _},       {5, R::Keyword, _, B, _},
    {6, R::String, _, _, _},       {7, R::String, _, _, _},       {8, R::Keyword, _, B, _},
    {9, R::Preprocessor, _, _, _}, {10, R::Operator, _, _, _},    {11, R::EditorText, _, _, _},
    {12, R::Comment, _, _, B},     {15, R::Preprocessor, _, _, _},
};

constexpr StyleEntry kHtmlMap[] = {
    {0, R::EditorText, _, _, _},   {1, R::Keyword, _, B, _},      {2, R::Keyword, _, _, _},
    {3, R::Preprocessor, _, _, _}, {4, R::Preprocessor, _, _, _}, {5, R::Number, _, _, _},
    {6, R::String, _, _, _},       {7, R::String, _, _, _},       {8, R::EditorText, _, _, _},
    {9, R::Comment, _, _, B},      {10, R::Number, _, _, _},      {11, R::Keyword, _, B, _},
    {12, R::Keyword, _, B, _},     {13, R::Operator, _, B, _},    {17, R::String, _, _, _},
};

constexpr StyleEntry kCssMap[] = {
    {0, R::EditorText, _, _, _},   {1, R::Keyword, _, B, _},      {2, R::Preprocessor, _, _, _},
    {3, R::Preprocessor, _, _, _}, {4, R::Comment, _, _, _},      {5, R::Operator, _, _, _},
    {6, R::Keyword, _, _, _},      {7, R::EditorText, _, _, _},   {8, R::String, _, _, _},
    {9, R::Comment, _, _, B},      {10, R::Preprocessor, _, B, _}, {11, R::Keyword, _, B, _},
    {12, R::Preprocessor, _, _, _}, {13, R::String, _, _, _},     {14, R::String, _, _, _},
    {16, R::Preprocessor, _, _, _}, {23, R::Number, _, _, _},     {18, R::Preprocessor, _, _, _},
    {22, R::Keyword, _, B, _},
};

constexpr StyleEntry kBatchMap[] = {
    {0, R::EditorText, _, _, _},   {1, R::Comment, _, _, B},      {2, R::Keyword, _, B, _},
    {3, R::Preprocessor, _, _, _}, {4, R::Comment, _, _, _},      {5, R::Keyword, _, B, _},
    {6, R::EditorText, _, _, _},   {7, R::Operator, _, _, _},
};

constexpr StyleEntry kMarkdownMap[] = {
    {0, R::EditorText, _, _, _},   {1, R::EditorText, _, _, _},
    {2, R::EditorText, _, B, _},   {3, R::EditorText, _, B, _},
    {4, R::EditorText, _, _, B},   {5, R::EditorText, _, _, B},
    {6, R::Keyword, _, B, _},      {7, R::Preprocessor, _, B, _}, {8, R::String, _, _, _},
    {9, R::Muted, _, _, _},        {10, R::Muted, _, _, _},       {11, R::Muted, _, _, _},
    {12, R::String, B, _, _},
    {13, R::Operator, _, _, _},    {14, R::Operator, _, _, _},
    {15, R::Muted, _, _, B},       {16, R::Muted, _, _, _},       {17, R::Comment, _, _, _},
    {18, R::String, _, _, B},
    {19, R::String, B, _, _},      {20, R::String, B, _, _},      {21, R::String, B, _, _},
};
// clang-format on

}  // namespace

std::span<const StyleEntry> StyleMapFor(LanguageId id) {
  switch (id) {
    case kLangCpp: return kCppMap;
    case kLangPython: return kPythonMap;
    case kLangHtml:
    case kLangXml: return kHtmlMap;
    case kLangCss: return kCssMap;
    case kLangBatch: return kBatchMap;
    case kLangMarkdown: return kMarkdownMap;
    default: return {};
  }
}

Colour RoleColour(const ThemeColors& theme, ColourRole role) {
  switch (role) {
    case ColourRole::Keyword: return theme.syntax.keyword;
    case ColourRole::Comment: return theme.syntax.comment;
    case ColourRole::String: return theme.syntax.string;
    case ColourRole::Number: return theme.syntax.number;
    case ColourRole::Preprocessor: return theme.syntax.preprocessor;
    case ColourRole::Operator: return theme.syntax.operator_;
    case ColourRole::Muted: return theme.mutedText;
    case ColourRole::EditorText: break;
  }
  return theme.editorText;
}

std::vector<ResolvedStyle> ResolveStyleMap(LanguageId id, const ThemeColors& theme, bool fontBold,
                                           bool fontItalic) {
  std::vector<ResolvedStyle> out;
  for (const StyleEntry& e : StyleMapFor(id)) {
    out.push_back({e.style, RoleColour(theme, e.fore),
                   e.codeBackground ? CodeBackground(theme) : theme.editorBackground,
                   e.bold || fontBold, e.italic || fontItalic});
  }
  return out;
}

}  // namespace nebro::appearance
