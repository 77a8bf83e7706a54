// A deliberately plain model of the Markdown renderer, written straight from its rules over
// UTF-16 code units: a line list built first, a pending-text buffer flushed at every delimiter,
// find(". ") for ordered items. It is slow and simple on purpose; the fast renderer works on UTF-8
// bytes and must give the same page body for every input. Used by the differential test and by
// the fuzz target.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/utf.h"

namespace markdown_model {

inline std::string Escape(std::u16string_view text) {
  // Each code unit by itself: a lone unit of a surrogate pair is unpaired.
  std::string utf8;
  for (char16_t unit : text) utf8 += nebro::Utf16ToUtf8(std::u16string_view(&unit, 1));
  std::string out;
  for (char c : utf8) {
    switch (c) {
      case '\t': out += "    "; break;
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out += c;
    }
  }
  return out;
}

inline std::string Inline(std::u16string_view s) {
  bool strongOpen = false, emOpen = false, codeOpen = false;
  std::u16string pending;
  std::string out;
  auto flush = [&] {
    out += Escape(pending);
    pending.clear();
  };
  const size_t n = s.size();
  size_t i = 0;
  while (i < n) {
    const char16_t c = s[i];
    const bool prevIs = [&](char16_t d) { return i > 0 && s[i - 1] == d; }(c);
    const bool nextIs = i + 1 < n && s[i + 1] == c;
    if (codeOpen) {
      if (c == u'`') {
        flush();
        out += "</code>";
        codeOpen = false;
      } else {
        pending += c;
      }
      ++i;
    } else if (c == u'*' && nextIs) {
      flush();
      out += strongOpen ? "</strong>" : "<strong>";
      strongOpen = !strongOpen;
      i += 2;
    } else if ((c == u'*' || c == u'_') && !prevIs && !nextIs) {
      flush();
      out += emOpen ? "</em>" : "<em>";
      emOpen = !emOpen;
      ++i;
    } else if (c == u'`') {
      flush();
      out += "<code>";
      codeOpen = true;
      ++i;
    } else {
      pending += c;
      ++i;
    }
  }
  flush();
  if (codeOpen) out += "</code>";
  if (emOpen) out += "</em>";
  if (strongOpen) out += "</strong>";
  return out;
}

inline std::vector<std::u16string> SplitLines(std::u16string_view text) {
  std::vector<std::u16string> lines;
  while (!text.empty()) {
    const size_t k = text.find_first_of(u"\r\n");
    if (k == std::u16string_view::npos) {
      lines.emplace_back(text);
      break;
    }
    lines.emplace_back(text.substr(0, k));
    const bool crlf = text[k] == u'\r' && k + 1 < text.size() && text[k + 1] == u'\n';
    text.remove_prefix(k + (crlf ? 2 : 1));
  }
  return lines;
}

// The page between the head and the closing tags.
inline std::string Body(std::u16string_view text) {
  std::string out;
  bool ulOpen = false, olOpen = false;
  auto closeLists = [&] {
    if (ulOpen) out += "</ul>\n";
    if (olOpen) out += "</ol>\n";
    ulOpen = olOpen = false;
  };
  auto starts = [](const std::u16string& s, std::u16string_view p) {
    return s.compare(0, p.size(), p) == 0;
  };
  for (std::u16string line : SplitLines(text)) {
    const size_t first = line.find_first_not_of(u" \t\r\n");
    if (first == std::u16string::npos) {
      line.clear();
    } else {
      line = line.substr(first, line.find_last_not_of(u" \t\r\n") - first + 1);
    }
    const size_t dot = line.find(u". ");
    bool ordered = dot == 1 || dot == 2;
    for (size_t k = 0; ordered && k < dot; ++k) ordered = line[k] >= u'0' && line[k] <= u'9';

    if (line.empty()) {
      closeLists();
      out += "<p></p>\n";
    } else if (line == u"---" || line == u"***" || line == u"___") {
      closeLists();
      out += "<hr>\n";
    } else if (line.size() > 4 && starts(line, u"### ")) {
      closeLists();
      out += "<h3>" + Inline(std::u16string_view(line).substr(4)) + "</h3>\n";
    } else if (line.size() > 3 && starts(line, u"## ")) {
      closeLists();
      out += "<h2>" + Inline(std::u16string_view(line).substr(3)) + "</h2>\n";
    } else if (line.size() > 2 && starts(line, u"# ")) {
      closeLists();
      out += "<h1>" + Inline(std::u16string_view(line).substr(2)) + "</h1>\n";
    } else if (line.size() > 2 && (starts(line, u"- ") || starts(line, u"* "))) {
      if (olOpen) out += "</ol>\n";
      olOpen = false;
      if (!ulOpen) out += "<ul>\n";
      ulOpen = true;
      out += "  <li>" + Inline(std::u16string_view(line).substr(2)) + "</li>\n";
    } else if (line.size() > 2 && starts(line, u"> ")) {
      closeLists();
      out += "<blockquote>" + Inline(std::u16string_view(line).substr(2)) + "</blockquote>\n";
    } else if (ordered) {
      if (ulOpen) out += "</ul>\n";
      ulOpen = false;
      if (!olOpen) out += "<ol>\n";
      olOpen = true;
      out += "  <li>" + Inline(std::u16string_view(line).substr(dot + 2)) + "</li>\n";
    } else {
      closeLists();
      out += "<p>" + Inline(line) + "</p>\n";
    }
  }
  closeLists();
  return out;
}

}  // namespace markdown_model
