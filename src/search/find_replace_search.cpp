#include "search/find_replace_search.h"

#include <algorithm>
#include <cstring>

#include "common/utf.h"
#include "search/find_replace_rules.h"
#include "search/find_replace_text.h"

namespace nebro::search {

using namespace find_replace_internal;

namespace {

unsigned char LowerAscii(unsigned char b) { return (b >= 'A' && b <= 'Z') ? b + 32 : b; }

// Moves a range end forward out of a multi-byte character, as the editor does with the ends it
// is given.
size_t OutsideChar(std::string_view doc, size_t pos) {
  while (pos < doc.size() && !IsEditorCharBoundary(doc, pos)) ++pos;
  return pos;
}

std::optional<FindMatch> FindExact(std::string_view doc, size_t start, size_t limit,
                                   std::string_view find, bool wholeWord) {
  // Only occurrences that end by `limit` count; their neighbours may lie beyond it.
  const std::string_view window = doc.substr(0, limit);
  size_t pos = start;
  while (true) {
    const size_t hit = window.find(find, pos);
    if (hit == std::string_view::npos) return std::nullopt;
    if (IsEditorCharBoundary(doc, hit) &&
        (!wholeWord || IsEditorWordAt(doc, hit, hit + find.size())))
      return FindMatch{static_cast<int64_t>(hit), static_cast<int64_t>(hit + find.size())};
    pos = hit + 1;
  }
}

std::optional<FindMatch> FindFolded(std::string_view doc, size_t start, size_t limit,
                                    std::string_view find, bool wholeWord) {
  const std::string folded = FoldUtf8(find);
  const auto first = static_cast<unsigned char>(folded[0]);
  size_t pos = start;
  while (pos < limit) {
    const auto lead = static_cast<unsigned char>(doc[pos]);
    if (lead < 0x80 && LowerAscii(lead) != first) {
      ++pos;  // an ASCII character folds to itself alone: it cannot begin this match
      continue;
    }
    // Walk the document character by character, comparing each folded character with the next
    // bytes of the folded find text.
    size_t docPos = pos;
    size_t searchPos = 0;
    size_t firstWidth = 0;
    bool matches = true;
    while (true) {
      const auto b = static_cast<unsigned char>(doc[docPos]);
      size_t width = 1;
      char foldedChar[8];
      size_t foldedLength = 1;
      if (b < 0x80) {
        foldedChar[0] = static_cast<char>(LowerAscii(b));
      } else {
        const char32_t c = DecodeUtf8At(doc, docPos, &width);
        if (width == 1) {
          foldedChar[0] = static_cast<char>(b);
        } else {
          std::string enc;
          AppendUtf8(enc, LowerChar(c));
          foldedLength = enc.size();
          std::memcpy(foldedChar, enc.data(), foldedLength);
        }
      }
      if (firstWidth == 0) firstWidth = width;
      if (docPos + width > limit) break;
      matches = searchPos + foldedLength <= folded.size() &&
                std::memcmp(foldedChar, folded.data() + searchPos, foldedLength) == 0;
      if (!matches) break;
      docPos += width;
      searchPos += foldedLength;
      if (searchPos >= folded.size() || docPos >= limit) break;
    }
    if (matches && searchPos == folded.size() && (!wholeWord || IsEditorWordAt(doc, pos, docPos)))
      return FindMatch{static_cast<int64_t>(pos), static_cast<int64_t>(docPos)};
    pos += firstWidth;
  }
  return std::nullopt;
}

}  // namespace

std::optional<FindMatch> FindTextRange(std::string_view document, int64_t minPos, int64_t maxPos,
                                       std::string_view findText, const FindTextOptions& options) {
  const auto length = static_cast<int64_t>(document.size());
  minPos = std::clamp<int64_t>(minPos, 0, length);
  maxPos = std::clamp<int64_t>(maxPos, 0, length);
  if (findText.empty()) return FindMatch{minPos, minPos};
  const size_t start = OutsideChar(document, static_cast<size_t>(minPos));
  const size_t limit = OutsideChar(document, static_cast<size_t>(maxPos));
  if (start >= limit) return std::nullopt;
  return options.matchCase ? FindExact(document, start, limit, findText, options.wholeWord)
                           : FindFolded(document, start, limit, findText, options.wholeWord);
}

std::vector<FindMatch> BuildMatchList(std::string_view document, std::string_view findText,
                                      const FindTextOptions& options) {
  std::vector<FindMatch> matches;
  const auto length = static_cast<int64_t>(document.size());
  int64_t pos = 0;
  while (true) {
    const auto found = FindTextRange(document, pos, length, findText, options);
    if (!found || found->end == found->start) break;
    matches.push_back(*found);
    pos = found->end;
    if (pos >= length) break;
  }
  return matches;
}

bool RefreshMatchList(MatchListCache& cache, std::string_view document, std::string_view findText,
                      const FindTextOptions& options) {
  if (cache.valid && cache.text == findText && cache.options.matchCase == options.matchCase &&
      cache.options.wholeWord == options.wholeWord)
    return false;
  cache.matches = BuildMatchList(document, findText, options);
  cache.text = std::string(findText);
  cache.options = options;
  cache.valid = true;
  return true;
}

void ForgetMatchList(MatchListCache& cache) {
  cache.valid = false;
  cache.text.clear();
  cache.matches.clear();
}

FindNextOutcome ChooseFindNextMatch(const std::vector<FindMatch>& matches, bool forward,
                                    int64_t caret, int64_t selectionStart, bool wrapAround) {
  FindNextOutcome out;
  if (matches.empty()) {
    out.status = {kNoMatchesText, FindStatusKind::Warning};
    return out;
  }
  const auto startBefore = [](const FindMatch& m, int64_t pos) { return m.start < pos; };
  size_t index = 0;
  if (forward) {
    const auto it = std::lower_bound(matches.begin(), matches.end(), caret, startBefore);
    if (it != matches.end()) {
      index = static_cast<size_t>(it - matches.begin());
    } else if (wrapAround) {
      index = 0;
    } else {
      out.status = {kNoMoreMatchesText, FindStatusKind::Warning};
      return out;
    }
  } else {
    const auto it = std::lower_bound(matches.begin(), matches.end(), selectionStart, startBefore);
    if (it != matches.begin()) {
      index = static_cast<size_t>(it - matches.begin()) - 1;
    } else if (wrapAround) {
      index = matches.size() - 1;
    } else {
      out.status = {kNoMoreMatchesText, FindStatusKind::Warning};
      return out;
    }
  }
  out.select = true;
  out.index = index;
  out.match = matches[index];
  out.status = MatchCountStatus(matches.size(), FindStatusKind::Normal);
  return out;
}

}  // namespace nebro::search
