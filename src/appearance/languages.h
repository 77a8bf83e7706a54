// Languages: the extension table, the Lexilla lexer of each language and its keyword lists.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nebro::appearance {

// Lexilla's lexer numbers.
using LanguageId = int32_t;
enum : LanguageId {
  kLangPlainText = 1,
  kLangPython = 2,
  kLangCpp = 3,
  kLangHtml = 4,
  kLangXml = 5,
  kLangSql = 7,
  kLangBatch = 12,
  kLangLua = 15,
  kLangCss = 38,
  kLangMarkdown = 98,
  kLangJson = 120,
};

// The language of a path by the text after its last dot (directories are not skipped).
LanguageId DetectLanguage(std::u16string_view path);

// The extensions (lower case, without the dot) that choose `id`, in the table's order.
std::vector<std::string> LanguageExtensions(LanguageId id);

// The Lexilla lexer name of a language ("null" for plain text and unknown numbers).
const char* LexerName(LanguageId id);

// The keyword list of a set, or null when the language has none for it.
const char* KeywordList(LanguageId id, int set);

extern const char* const kCppKeywords0;
extern const char* const kCppKeywords1;
extern const char* const kPythonKeywords;
extern const char* const kBatchKeywords;

}  // namespace nebro::appearance
