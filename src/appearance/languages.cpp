#include "appearance/languages.h"

#include <cwctype>
#include <string>
#include <vector>

namespace nebro::appearance {

const char* const kCppKeywords0 =
    "alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t "
    "char16_t char32_t class compl concept const consteval constexpr constinit const_cast "
    "continue co_await co_return co_yield decltype default delete do double dynamic_cast else "
    "enum explicit export extern false float for friend goto if inline int long mutable "
    "namespace new noexcept not not_eq nullptr operator or or_eq private protected public "
    "register reinterpret_cast requires return short signed sizeof static static_assert "
    "static_cast struct switch template this thread_local throw true try typedef typeid "
    "typename union unsigned using virtual void volatile wchar_t while xor xor_eq";

const char* const kCppKeywords1 =
    "NULL TRUE FALSE BOOL BYTE WORD DWORD QWORD INT8 INT16 INT32 INT64 UINT UINT8 UINT16 "
    "UINT32 UINT64 LPSTR LPCSTR LPWSTR LPCWSTR LPVOID HANDLE HWND HINSTANCE HMODULE HFONT "
    "HBRUSH HPEN HDC HMENU HICON WPARAM LPARAM LRESULT CALLBACK WINAPI size_t ptrdiff_t "
    "uintptr_t int8_t int16_t int32_t int64_t uint8_t uint16_t uint32_t uint64_t string "
    "wstring vector map unordered_map set pair optional variant unique_ptr shared_ptr "
    "weak_ptr make_unique make_shared";

const char* const kPythonKeywords =
    "False None True and as assert async await break class continue def del elif else except "
    "finally for from global if import in is lambda nonlocal not or pass raise return try "
    "while with yield self cls super print len range type isinstance issubclass hasattr "
    "getattr setattr delattr callable iter next enumerate zip map filter sorted reversed min "
    "max sum abs round open int float str bool list dict set tuple bytes bytearray memoryview "
    "complex frozenset";

const char* const kBatchKeywords =
    "call cd chdir cls copy del dir echo endlocal erase exit for goto if md mkdir move path "
    "pause popd pushd rd rem ren rename rmdir set setlocal shift start title type xcopy "
    "robocopy defined exist errorlevel not";

namespace {

struct Extension {
  std::u16string_view ext;
  LanguageId id;
};

constexpr Extension kExtensions[] = {
    {u"c", kLangCpp},    {u"cpp", kLangCpp},   {u"cxx", kLangCpp},   {u"cc", kLangCpp},
    {u"h", kLangCpp},    {u"hpp", kLangCpp},   {u"hxx", kLangCpp},   {u"cs", kLangCpp},
    {u"js", kLangCpp},   {u"ts", kLangCpp},    {u"jsx", kLangCpp},   {u"tsx", kLangCpp},
    {u"py", kLangPython}, {u"pyw", kLangPython}, {u"pyi", kLangPython},
    {u"html", kLangHtml}, {u"htm", kLangHtml}, {u"php", kLangHtml}, {u"asp", kLangHtml},
    {u"aspx", kLangHtml},
    {u"xml", kLangXml},  {u"xaml", kLangXml},  {u"svg", kLangXml},   {u"xsl", kLangXml},
    {u"xslt", kLangXml}, {u"xsd", kLangXml},
    {u"json", kLangJson}, {u"jsonc", kLangJson},
    {u"css", kLangCss},  {u"scss", kLangCss},  {u"less", kLangCss},
    {u"bat", kLangBatch}, {u"cmd", kLangBatch},
    {u"lua", kLangLua},
    {u"md", kLangMarkdown}, {u"markdown", kLangMarkdown},
    {u"sql", kLangSql},
};

}  // namespace

LanguageId DetectLanguage(std::u16string_view path) {
  const auto dot = path.rfind(u'.');
  if (path.empty() || dot == std::u16string_view::npos) return kLangPlainText;
  std::u16string ext(path.substr(dot + 1));
  for (char16_t& c : ext) c = static_cast<char16_t>(std::towlower(static_cast<wint_t>(c)));
  for (const Extension& e : kExtensions) {
    if (e.ext == ext) return e.id;
  }
  return kLangPlainText;
}

std::vector<std::string> LanguageExtensions(LanguageId id) {
  std::vector<std::string> list;
  for (const Extension& e : kExtensions) {
    if (e.id == id) list.emplace_back(e.ext.begin(), e.ext.end());  // the table is ASCII
  }
  return list;
}

const char* LexerName(LanguageId id) {
  switch (id) {
    case kLangPython: return "python";
    case kLangCpp: return "cpp";
    case kLangHtml: return "hypertext";
    case kLangXml: return "xml";
    case kLangSql: return "sql";
    case kLangBatch: return "batch";
    case kLangLua: return "lua";
    case kLangCss: return "css";
    case kLangMarkdown: return "markdown";
    case kLangJson: return "json";
    default: return "null";
  }
}

const char* KeywordList(LanguageId id, int set) {
  switch (id) {
    case kLangCpp: return set == 0 ? kCppKeywords0 : set == 1 ? kCppKeywords1 : nullptr;
    case kLangPython: return set == 0 ? kPythonKeywords : nullptr;
    case kLangBatch: return set == 0 ? kBatchKeywords : nullptr;
    default: return nullptr;
  }
}

}  // namespace nebro::appearance
