#include "search/regex_engine.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <algorithm>

namespace nebro {

namespace {

// Limits that turn a runaway search into RegexStatus::TooComplex instead of a hang or a crash.
// The match limit counts backtracking steps per start position: ten million stops `(a+)+$` over
// a run of a's within about a tenth of a second. The JIT stack is only reserved address space
// until a search needs it; a quarter of a gigabyte lets `(?:.|\n)*` run over several megabytes.
constexpr uint32_t kMatchLimit = 10'000'000;
constexpr size_t kJitStackStart = 64 * 1024;
constexpr size_t kJitStackMax = 256 * 1024 * 1024;
constexpr uint32_t kHeapLimitKiB = 256 * 1024;  // the interpreter's backtracking memory

// Every expression starts with a prefix that matches nothing:
// - a callout. PCRE2 keeps its start-of-match optimisations past it, so it runs once per
//   candidate start position, which is where a long search polls the cancel flag: a search that
//   crawls over a huge text can still be stopped;
// - a CR repeated zero times. A pattern without an explicit CR or LF would make PCRE2 (with
//   newline ANY) never try a match between a CR and the LF that follows it, where ECMAScript
//   does find one (`\B` or an empty match there).
constexpr std::u16string_view kPatternPrefix = u"(?C)\\r{0}";

bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

struct Regex {
  pcre2_code* code = nullptr;
  pcre2_match_data* data = nullptr;
  pcre2_match_context* context = nullptr;
  pcre2_jit_stack* stack = nullptr;
  bool jit = false;
  uint32_t groups = 0;
  const std::atomic<bool>* cancel = nullptr;  // what the callout polls during the current search

  ~Regex() {
    if (stack) pcre2_jit_stack_free(stack);
    if (context) pcre2_match_context_free(context);
    if (data) pcre2_match_data_free(data);
    if (code) pcre2_code_free(code);
  }
};

void RegexDeleter::operator()(Regex* regex) const { delete regex; }

namespace {

int CancelCallout(pcre2_callout_block*, void* data) {
  const auto* regex = static_cast<const Regex*>(data);
  if (regex->cancel && regex->cancel->load(std::memory_order_relaxed)) return PCRE2_ERROR_CALLOUT;
  return 0;
}

enum class Outcome { Match, NoMatch, Cancelled, TooComplex };

// One call of the engine on subject[0, length) from `offset`. The subject must be well-formed
// UTF-16 that does not start inside a surrogate pair.
Outcome Search(Regex& regex, const char16_t* subject, size_t length, size_t offset,
               uint32_t options, const std::atomic<bool>* cancel) {
  regex.cancel = cancel;
  const auto* units = reinterpret_cast<PCRE2_SPTR>(subject);
  const int rc = regex.jit && options == 0
                     ? pcre2_jit_match(regex.code, units, length, offset, 0, regex.data, regex.context)
                     : pcre2_match(regex.code, units, length, offset, options | PCRE2_NO_UTF_CHECK,
                                   regex.data, regex.context);
  if (rc >= 0) return Outcome::Match;  // 0 would only mean a too-small match block
  if (rc == PCRE2_ERROR_NOMATCH) return Outcome::NoMatch;
  if (rc == PCRE2_ERROR_CALLOUT && cancel && cancel->load()) return Outcome::Cancelled;
  // PCRE2_ERROR_JIT_STACKLIMIT, _MATCHLIMIT, _DEPTHLIMIT, _HEAPLIMIT, _NOMEMORY: the engine gave
  // up on this pattern. No other error can arise from checked text and a valid offset.
  return Outcome::TooComplex;
}

RegexStatus StatusOf(Outcome outcome) {
  return outcome == Outcome::Cancelled ? RegexStatus::Cancelled : RegexStatus::TooComplex;
}

std::u16string_view CheckedUtf16(std::u16string_view text, std::u16string& storage, bool* repaired) {
  const size_t n = text.size();
  size_t bad = n;
  for (size_t i = 0; i < n; ++i) {
    const char16_t c = text[i];
    if (c < 0xD800 || c > 0xDFFF) continue;
    if (IsHighSurrogate(c) && i + 1 < n && IsLowSurrogate(text[i + 1])) {
      ++i;
      continue;
    }
    bad = i;
    break;
  }
  if (repaired) *repaired = bad != n;
  if (bad == n) return text;
  storage.assign(text);
  for (size_t i = bad; i < n; ++i) {
    const char16_t c = storage[i];
    if (IsHighSurrogate(c) && i + 1 < n && IsLowSurrogate(storage[i + 1])) {
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      storage[i] = u'\uFFFD';
    }
  }
  return storage;
}

// Moves a position that lies inside a surrogate pair to the pair's end.
size_t OnCharacter(std::u16string_view text, size_t pos) {
  if (pos > 0 && pos < text.size() && IsLowSurrogate(text[pos]) && IsHighSurrogate(text[pos - 1])) {
    return pos + 1;
  }
  return pos;
}

// The position one character after `pos`.
size_t NextCharacter(std::u16string_view text, size_t pos) {
  if (pos + 1 < text.size() && IsHighSurrogate(text[pos]) && IsLowSurrogate(text[pos + 1])) {
    return pos + 2;
  }
  return pos + 1;
}

int64_t CountLf(const char16_t* from, const char16_t* to) {
  return std::count(from, to, u'\n');
}

// The 1-based line of `pos`, counting on from the previous answer when `pos` lies after it.
int64_t LineAt(FindBatchContext& context, std::u16string_view text, int64_t pos) {
  if (pos < context.linePos) {
    context.linePos = 0;
    context.lineNumber = 1;
  }
  context.lineNumber += CountLf(text.data() + context.linePos, text.data() + pos);
  context.linePos = pos;
  return context.lineNumber;
}

int64_t LineOf(std::u16string_view text, size_t pos) {
  return 1 + CountLf(text.data(), text.data() + pos);
}

void ReadSpans(const Regex& regex, size_t base, std::vector<RegexSpan>& spans) {
  const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(regex.data);
  spans.resize(regex.groups + 1);
  for (uint32_t i = 0; i <= regex.groups; ++i) {
    if (ovector[2 * i] == PCRE2_UNSET) {
      spans[i] = RegexSpan{};
    } else {
      spans[i].start = static_cast<int64_t>(base + ovector[2 * i]);
      spans[i].end = static_cast<int64_t>(base + ovector[2 * i + 1]);
    }
  }
}

}  // namespace

std::u16string_view WellFormedUtf16(std::u16string_view text, std::u16string& storage) {
  return CheckedUtf16(text, storage, nullptr);
}

RegexPtr BuildRegex(std::u16string_view pattern, bool matchCase, bool wholeWord,
                    std::string* error) {
  std::u16string expression(kPatternPrefix);
  if (wholeWord) {
    expression += u"\\b(?:";
    expression += pattern;
    expression += u")\\b";
  } else {
    expression += pattern;
  }

  uint32_t options = PCRE2_UTF | PCRE2_ALT_BSUX | PCRE2_MATCH_UNSET_BACKREF |
                     PCRE2_DOLLAR_ENDONLY | PCRE2_ALLOW_EMPTY_CLASS | PCRE2_NEVER_BACKSLASH_C;
  if (!matchCase) options |= PCRE2_CASELESS;

  pcre2_compile_context* compileContext = pcre2_compile_context_create(nullptr);
  if (!compileContext) {
    if (error) *error = "out of memory";
    return nullptr;
  }
  pcre2_set_compile_extra_options(compileContext, PCRE2_EXTRA_ALT_BSUX);
  // Line terminators for `.`: ECMAScript's LF, CR, U+2028 and U+2029 are all among them.
  pcre2_set_newline(compileContext, PCRE2_NEWLINE_ANY);

  int errorCode = 0;
  PCRE2_SIZE errorOffset = 0;
  pcre2_code* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()),
                                   expression.size(), options, &errorCode, &errorOffset,
                                   compileContext);
  pcre2_compile_context_free(compileContext);
  if (!code) {
    if (error) {
      PCRE2_UCHAR message[256];
      const int len = pcre2_get_error_message(errorCode, message, 256);
      error->clear();
      for (int i = 0; i < len; ++i) error->push_back(static_cast<char>(message[i]));
    }
    return nullptr;
  }

  RegexPtr regex(new Regex);
  regex->code = code;
  pcre2_pattern_info(code, PCRE2_INFO_CAPTURECOUNT, &regex->groups);
  regex->data = pcre2_match_data_create_from_pattern(code, nullptr);
  regex->context = pcre2_match_context_create(nullptr);
  if (!regex->data || !regex->context) {
    if (error) *error = "out of memory";
    return nullptr;
  }
  pcre2_set_match_limit(regex->context, kMatchLimit);
  pcre2_set_heap_limit(regex->context, kHeapLimitKiB);
  pcre2_set_callout(regex->context, CancelCallout, regex.get());
  // Without the JIT (a system that forbids executable memory) the interpreter does the same job,
  // more slowly.
  if (pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) == 0) {
    regex->stack = pcre2_jit_stack_create(kJitStackStart, kJitStackMax, nullptr);
    if (regex->stack) {
      pcre2_jit_stack_assign(regex->context, nullptr, regex->stack);
      regex->jit = true;
    }
  }
  return regex;
}

uint32_t RegexGroupCount(const Regex& regex) { return regex.groups; }

RegexBatch FindBatch(std::u16string_view text, Regex& regex, uint64_t& cursor, uint64_t want,
                     FindBatchContext& context) {
  if (context.checkedData != text.data() || context.checkedSize != text.size()) {
    CheckedUtf16(text, context.repairedText, &context.repaired);
    if (!context.repaired) context.repairedText.clear();
    context.checkedData = text.data();
    context.checkedSize = text.size();
    context.linePos = 0;
    context.lineNumber = 1;
  }
  const std::u16string_view subject = context.repaired ? std::u16string_view(context.repairedText) : text;
  const size_t length = subject.size();
  const std::atomic<bool>* cancel = context.cancel;

  RegexBatch batch;
  if (cursor >= length) return batch;
  size_t pos = OnCharacter(subject, static_cast<size_t>(cursor));
  const size_t batchStart = pos;
  while (batch.matches.size() < want) {
    if (pos >= length) break;
    if (cancel && cancel->load()) {
      batch.status = RegexStatus::Cancelled;
      break;
    }
    // The sub-range is its own subject: its first unit is the start of input.
    const Outcome outcome = Search(regex, subject.data() + pos, length - pos, 0, 0, cancel);
    if (outcome == Outcome::NoMatch) break;
    if (outcome != Outcome::Match) {
      batch.status = StatusOf(outcome);
      break;
    }
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(regex.data);
    const size_t start = pos + ovector[0];
    const size_t end = pos + ovector[1];
    RegexMatch match;
    match.start = static_cast<int64_t>(start);
    match.end = static_cast<int64_t>(end);
    match.text.assign(subject.substr(start, end - start));
    match.line = LineAt(context, subject, match.start);
    if (start == end && end == batchStart) {
      batch.matches.push_back(std::move(match));
      pos = NextCharacter(subject, end);
    } else if (start == end && start == pos && end < length) {
      // An empty match right where this search began: every further search from `pos` is the
      // same search and finds it again, so its copies fill the batch without searching again.
      // (At the end of the text there is no further search.)
      const size_t copies = static_cast<size_t>(want - batch.matches.size());
      batch.matches.insert(batch.matches.end(), copies, match);
      pos = end;
    } else {
      batch.matches.push_back(std::move(match));
      pos = end;
    }
  }
  cursor = pos;
  return batch;
}

RegexStatus ForEachMatch(std::u16string_view text, Regex& regex,
                         const std::function<bool(const std::vector<RegexSpan>& groups,
                                                  std::u16string_view checkedText)>& onMatch) {
  std::u16string storage;
  const std::u16string_view subject = CheckedUtf16(text, storage, nullptr);
  const size_t length = subject.size();
  std::vector<RegexSpan> spans;
  size_t start = 0;
  while (start <= length) {
    Outcome outcome = Search(regex, subject.data(), length, start, 0, nullptr);
    if (outcome == Outcome::NoMatch) break;
    if (outcome != Outcome::Match) return StatusOf(outcome);
    ReadSpans(regex, 0, spans);
    if (!onMatch(spans, subject)) return RegexStatus::Ok;
    const size_t end = static_cast<size_t>(spans[0].end);
    if (static_cast<size_t>(spans[0].start) != end) {
      start = end;
      continue;
    }
    if (end == length) break;
    // An empty match: the same place may still hold a non-empty one.
    outcome = Search(regex, subject.data(), length, end, PCRE2_ANCHORED | PCRE2_NOTEMPTY_ATSTART,
                     nullptr);
    if (outcome == Outcome::Match) {
      ReadSpans(regex, 0, spans);
      if (!onMatch(spans, subject)) return RegexStatus::Ok;
      start = static_cast<size_t>(spans[0].end);
    } else if (outcome == Outcome::NoMatch) {
      start = NextCharacter(subject, end);
    } else {
      return StatusOf(outcome);
    }
  }
  return RegexStatus::Ok;
}

RegexFound FindNextMatch(std::u16string_view text, Regex& regex, uint64_t from) {
  std::u16string storage;
  const std::u16string_view subject = CheckedUtf16(text, storage, nullptr);
  const size_t length = subject.size();
  RegexFound found;
  size_t pos = OnCharacter(subject, static_cast<size_t>(std::min<uint64_t>(from, length)));
  for (int pass = 0; pass < 2; ++pass) {
    const Outcome outcome = Search(regex, subject.data() + pos, length - pos, 0, 0, nullptr);
    if (outcome == Outcome::Match) {
      const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(regex.data);
      RegexMatch match;
      match.start = static_cast<int64_t>(pos + ovector[0]);
      match.end = static_cast<int64_t>(pos + ovector[1]);
      match.text.assign(subject.substr(pos + ovector[0], ovector[1] - ovector[0]));
      match.line = LineOf(subject, pos + ovector[0]);
      found.match = std::move(match);
      return found;
    }
    if (outcome != Outcome::NoMatch) {
      found.status = StatusOf(outcome);
      return found;
    }
    if (pos == 0) break;
    pos = 0;
  }
  return found;
}

RegexFound FindPrevMatch(std::u16string_view text, Regex& regex, uint64_t anchor) {
  RegexSpan before, last;
  bool any = false;
  bool anyBefore = false;
  std::u16string subjectCopy;
  RegexFound found;
  found.status = ForEachMatch(text, regex, [&](const std::vector<RegexSpan>& groups,
                                               std::u16string_view checked) {
    if (!any && checked.data() != text.data()) subjectCopy.assign(checked);
    any = true;
    last = groups[0];
    if (static_cast<uint64_t>(groups[0].end) <= anchor) {
      before = groups[0];
      anyBefore = true;
    }
    return true;
  });
  if (found.status != RegexStatus::Ok || !any) return found;
  const std::u16string_view subject = subjectCopy.empty() ? text : std::u16string_view(subjectCopy);
  const RegexSpan span = anyBefore ? before : last;
  RegexMatch match;
  match.start = span.start;
  match.end = span.end;
  match.text.assign(subject.substr(span.start, span.end - span.start));
  match.line = LineOf(subject, span.start);
  found.match = std::move(match);
  return found;
}

std::optional<RegexCaptures> MatchWhole(Regex& regex, std::u16string_view text) {
  std::u16string storage;
  const std::u16string_view subject = CheckedUtf16(text, storage, nullptr);
  if (Search(regex, subject.data(), subject.size(), 0, PCRE2_ANCHORED | PCRE2_ENDANCHORED,
             nullptr) != Outcome::Match) {
    return std::nullopt;
  }
  std::vector<RegexSpan> spans;
  ReadSpans(regex, 0, spans);
  RegexCaptures captures(spans.size());
  for (size_t i = 0; i < spans.size(); ++i) {
    if (spans[i].start >= 0) {
      captures[i] = std::u16string(subject.substr(spans[i].start, spans[i].end - spans[i].start));
    }
  }
  return captures;
}

}  // namespace nebro
