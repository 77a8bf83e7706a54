#include "search/regex_engine.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <algorithm>
#include <ctime>
#include <cstring>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace nebro::search {

namespace {

// Limits that turn a runaway search into RegexStatus::TooComplex instead of a hang or a crash.
// The match limit bounds the backtracking of one search: ten million stops `(a+)+$` over a run
// of a's within about a tenth of a second. The JIT stack is only reserved address space
// until a search needs it; a quarter of a gigabyte lets `(?:.|\n)*` run over several megabytes.
constexpr uint32_t kMatchLimit = 10'000'000;
constexpr size_t kJitStackStart = 64 * 1024;
constexpr size_t kJitStackMax = 256 * 1024 * 1024;
constexpr uint32_t kHeapLimitKiB = 256 * 1024;  // the interpreter's backtracking memory

// Every expression starts with a CR repeated zero times, which matches nothing. A pattern without
// an explicit CR or LF would make PCRE2 (with newline ANY) never try a match between a CR and the
// LF that follows it, where ECMAScript does find one (`\B`, or an empty match, there).
constexpr std::u16string_view kPatternPrefix = u"\\r{0}";

// A cancellable search tries its start positions in windows (the engine's offset limit) and reads
// the cancel flag between them. Windows begin small and double while they take under a
// millisecond, up to a size whose worst case stays short when the text turns expensive. Once a
// window is slow the rest of the search runs as one call of a second compilation that calls out
// after every failed start, where the flag is read: many short windows would each repeat work a
// single call does once (a leading `\w*` rescanning a long line), and a call out at the start
// would turn off the engine's own shortcuts for such patterns.
constexpr size_t kWindowFirst = 64;
constexpr size_t kWindowMax = 4096;
constexpr int64_t kWindowFastNs = 1'000'000;
constexpr int64_t kWindowSlowNs = 8'000'000;

// Processor time of the calling thread: a window the system paused is not a slow window.
int64_t ThreadNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

struct Regex {
  pcre2_code* code = nullptr;
  pcre2_code* watched = nullptr;  // the same expression, reading a cancel flag after failed starts
  pcre2_match_data* data = nullptr;
  pcre2_match_context* context = nullptr;
  pcre2_jit_stack* stack = nullptr;
  bool jit = false;
  uint32_t groups = 0;
  // A pattern of literal characters only, matched case-sensitively and not as a whole word, is
  // searched for as plain text: the same matches as the engine's, found by a faster scan.
  std::u16string literal;
  // Likewise an alternation of such literals ("while|return|because"), tried in their order.
  std::vector<std::u16string> alternatives;
  // The whole match of the last successful Search (subject offsets).
  size_t foundStart = 0;
  size_t foundEnd = 0;

  ~Regex() {
    if (stack) pcre2_jit_stack_free(stack);
    if (context) pcre2_match_context_free(context);
    if (data) pcre2_match_data_free(data);
    if (code) pcre2_code_free(code);
    if (watched) pcre2_code_free(watched);
  }
};

void RegexDeleter::operator()(Regex* regex) const { delete regex; }

namespace {

enum class Outcome { Match, NoMatch, Cancelled, TooComplex };

Outcome OutcomeOf(int rc) {
  if (rc >= 0) return Outcome::Match;  // 0 would only mean a too-small match block
  if (rc == PCRE2_ERROR_NOMATCH) return Outcome::NoMatch;
  // PCRE2_ERROR_JIT_STACKLIMIT, _MATCHLIMIT, _DEPTHLIMIT, _HEAPLIMIT, _NOMEMORY: the engine gave
  // up on this pattern. No other error can arise from checked text and a valid offset.
  return Outcome::TooComplex;
}

int Engine(Regex& regex, const char16_t* subject, size_t length, size_t offset, uint32_t options,
           const pcre2_code* code = nullptr) {
  if (!code) code = regex.code;
  const auto* units = reinterpret_cast<PCRE2_SPTR>(subject);
  const int rc =
      regex.jit && options == 0
          ? pcre2_jit_match(code, units, length, offset, 0, regex.data, regex.context)
          : pcre2_match(code, units, length, offset, options | PCRE2_NO_UTF_CHECK, regex.data,
                        regex.context);
  if (rc >= 0) {
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(regex.data);
    regex.foundStart = ovector[0];
    regex.foundEnd = ovector[1];
  }
  return rc;
}

int CancelCallout(pcre2_callout_block*, void* flag) {
  return static_cast<const std::atomic<bool>*>(flag)->load(std::memory_order_relaxed) ? PCRE2_ERROR_CALLOUT : 0;
}

// The first occurrence of `literal` in s[from, n), or n. Eight positions at a time are tested on
// the literal's first and last unit together; only positions passing both are compared in full.
size_t FindLiteral(const char16_t* s, size_t n, size_t from, std::u16string_view literal) {
  const size_t m = literal.size();
  if (m > n || from > n - m) return n;
  const size_t lastStart = n - m;
  const char16_t first = literal[0];
  const char16_t last = literal[m - 1];
  const size_t bytes = m * sizeof(char16_t);
  size_t i = from;
#if defined(__SSE2__)
  const __m128i firsts = _mm_set1_epi16(static_cast<short>(first));
  const __m128i lasts = _mm_set1_epi16(static_cast<short>(last));
  for (; i + 8 <= lastStart + 1; i += 8) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + m - 1));
    unsigned mask = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi16(a, firsts), _mm_cmpeq_epi16(b, lasts))));
    while (mask != 0) {
      const unsigned bit = static_cast<unsigned>(__builtin_ctz(mask));
      const size_t candidate = i + bit / 2;
      if (std::memcmp(s + candidate, literal.data(), bytes) == 0) return candidate;
      mask &= ~(3u << bit);
    }
  }
#endif
  for (; i <= lastStart; ++i) {
    if (s[i] == first && s[i + m - 1] == last && std::memcmp(s + i, literal.data(), bytes) == 0) {
      return i;
    }
  }
  return n;
}

// The first position in s[from, n) where one of `alternatives` starts, and which one: at a
// position the alternatives are tried in their order, as the engine does. Eight positions at a
// time are tested on each alternative's first, second and last units; only passing positions are
// compared in full.
std::pair<size_t, size_t> FindAlternative(const char16_t* s, size_t n, size_t from,
                                          const std::vector<std::u16string>& alternatives) {
  auto matchAt = [&](size_t i) -> size_t {
    for (size_t k = 0; k < alternatives.size(); ++k) {
      const std::u16string& a = alternatives[k];
      if (a.size() <= n - i && std::memcmp(s + i, a.data(), a.size() * sizeof(char16_t)) == 0) return k;
    }
    return alternatives.size();
  };
  size_t i = from;
#if defined(__SSE2__)
  if (alternatives.size() <= 8) {
    // Per alternative: its first, second and last unit must all be in place.
    __m128i firsts[8], seconds[8], lasts[8];
    size_t longest = 0;
    for (size_t k = 0; k < alternatives.size(); ++k) {
      const std::u16string& a = alternatives[k];
      firsts[k] = _mm_set1_epi16(static_cast<short>(a[0]));
      seconds[k] = _mm_set1_epi16(static_cast<short>(a.size() > 1 ? a[1] : a[0]));
      lasts[k] = _mm_set1_epi16(static_cast<short>(a.back()));
      longest = std::max(longest, a.size());
    }
    for (; i + longest + 8 <= n; i += 8) {
      const __m128i at0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
      const __m128i at1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 1));
      __m128i hits = _mm_setzero_si128();
      for (size_t k = 0; k < alternatives.size(); ++k) {
        const size_t m = alternatives[k].size();
        const __m128i atLast = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + m - 1));
        __m128i hit = _mm_and_si128(_mm_cmpeq_epi16(at0, firsts[k]), _mm_cmpeq_epi16(atLast, lasts[k]));
        if (m > 1) hit = _mm_and_si128(hit, _mm_cmpeq_epi16(at1, seconds[k]));
        hits = _mm_or_si128(hits, hit);
      }
      unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
      while (mask != 0) {
        const unsigned bit = static_cast<unsigned>(__builtin_ctz(mask));
        const size_t candidate = i + bit / 2;
        const size_t k = matchAt(candidate);
        if (k < alternatives.size()) return {candidate, k};
        mask &= ~(3u << bit);
      }
    }
  }
#endif
  for (; i < n; ++i) {
    const size_t k = matchAt(i);
    if (k < alternatives.size()) return {i, k};
  }
  return {n, 0};
}

// One search of subject[0, length) from `offset`, with the result a single engine call gives; the
// match's span is left in regex.foundStart/foundEnd. The subject must be well-formed UTF-16 and
// `offset` must not lie inside a surrogate pair. With a cancel flag the flag is read between
// windows of start positions and, once they turn slow, after every failed start.
Outcome Search(Regex& regex, const char16_t* subject, size_t length, size_t offset,
               uint32_t options, const std::atomic<bool>* cancel) {
  if (!regex.literal.empty() && options == 0) {
    const size_t at = FindLiteral(subject, length, offset, regex.literal);
    if (at == length) return Outcome::NoMatch;
    regex.foundStart = at;
    regex.foundEnd = at + regex.literal.size();
    return Outcome::Match;
  }
  if (!regex.alternatives.empty() && options == 0) {
    const auto [at, k] = FindAlternative(subject, length, offset, regex.alternatives);
    if (at == length) return Outcome::NoMatch;
    regex.foundStart = at;
    regex.foundEnd = at + regex.alternatives[k].size();
    return Outcome::Match;
  }
  if (!cancel || (options & PCRE2_ANCHORED)) {
    return OutcomeOf(Engine(regex, subject, length, offset, options));
  }
  size_t from = offset;
  size_t window = kWindowFirst;
  for (bool first = true;; first = false) {
    if (cancel->load(std::memory_order_relaxed)) return Outcome::Cancelled;
    const bool last = window >= length - from;
    const size_t limit = from + window;
    if (!last) pcre2_set_offset_limit(regex.context, limit);
    // The first window is too short to need timing (most searches end in it).
    const int64_t started = first ? 0 : ThreadNanoseconds();
    const int rc = Engine(regex, subject, length, from, options);
    if (!last) pcre2_set_offset_limit(regex.context, PCRE2_UNSET);
    if (last || rc != PCRE2_ERROR_NOMATCH) return OutcomeOf(rc);
    from = limit + 1;  // the window tried every start up to and including `limit`
    if (from < length && (subject[from] & 0xFC00) == 0xDC00) ++from;  // inside a pair
    if (from > length) return Outcome::NoMatch;
    const int64_t took = first ? 0 : ThreadNanoseconds() - started;
    const bool slow = took > kWindowSlowNs;
    if (slow && regex.watched) {
      pcre2_set_callout(regex.context, CancelCallout, const_cast<std::atomic<bool>*>(cancel));
      const int watchedRc = Engine(regex, subject, length, from, options, regex.watched);
      pcre2_set_callout(regex.context, nullptr, nullptr);
      return watchedRc == PCRE2_ERROR_CALLOUT ? Outcome::Cancelled : OutcomeOf(watchedRc);
    }
    if (took < kWindowFastNs && window < kWindowMax) window *= 2;
  }
}

RegexStatus StatusOf(Outcome outcome) {
  return outcome == Outcome::Cancelled ? RegexStatus::Cancelled : RegexStatus::TooComplex;
}

// Index of the first surrogate unit (U+D800..U+DFFF) of s[0, n), or n. Every search reads the
// whole text through this once, so it goes eight units at a time where the processor allows.
size_t FindSurrogate(const char16_t* s, size_t n) {
  size_t i = 0;
#if defined(__SSE2__)
  const __m128i mask = _mm_set1_epi16(static_cast<short>(0xF800));
  const __m128i surrogate = _mm_set1_epi16(static_cast<short>(0xD800));
  for (; i + 8 <= n; i += 8) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(v, mask), surrogate)) != 0) break;
  }
#endif
  for (; i < n; ++i) {
    if ((s[i] & 0xF800) == 0xD800) return i;
  }
  return n;
}

std::u16string_view CheckedUtf16(std::u16string_view text, std::u16string& storage,
                                 bool* repaired) {
  const size_t n = text.size();
  size_t bad = n;
  size_t i = FindSurrogate(text.data(), n);
  while (i < n) {
    if (!IsHighSurrogate(text[i]) || i + 1 == n || !IsLowSurrogate(text[i + 1])) {
      bad = i;
      break;
    }
    i += 2;  // a pair: look on after it
    i += FindSurrogate(text.data() + i, n - i);
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
  int64_t count = 0;
#if defined(__SSE2__)
  // Each 16-bit lane counts the LFs it sees (a match compares as -1); after at most 255 steps
  // every count still fits its low byte, and one sum of absolute differences adds them up.
  const __m128i lf = _mm_set1_epi16(u'\n');
  const __m128i zero = _mm_setzero_si128();
  while (to - from >= 8) {
    __m128i lanes = zero;
    for (int k = 0; k < 255 && to - from >= 8; ++k, from += 8) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
      lanes = _mm_sub_epi16(lanes, _mm_cmpeq_epi16(v, lf));
    }
    const __m128i sums = _mm_sad_epu8(lanes, zero);
    count += _mm_cvtsi128_si32(sums) + _mm_cvtsi128_si32(_mm_srli_si128(sums, 8));
  }
#endif
  for (; from < to; ++from) count += *from == u'\n';
  return count;
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
  spans[0].start = static_cast<int64_t>(base + regex.foundStart);
  spans[0].end = static_cast<int64_t>(base + regex.foundEnd);
  for (uint32_t i = 1; i <= regex.groups; ++i) {
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

  uint32_t options = PCRE2_UTF | PCRE2_ALT_BSUX | PCRE2_MATCH_UNSET_BACKREF | PCRE2_DOLLAR_ENDONLY |
                     PCRE2_ALLOW_EMPTY_CLASS | PCRE2_NEVER_BACKSLASH_C | PCRE2_USE_OFFSET_LIMIT;
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
  pcre2_code* code =
      pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()), expression.size(), options,
                    &errorCode, &errorOffset, compileContext);
  pcre2_code* watched = nullptr;
  if (code) {
    // The expression's structure is unchanged: the group opened here closes only where it ends.
    const std::u16string watchedExpression = u"(?:" + expression + u")|(?C1)(*FAIL)";
    watched = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(watchedExpression.data()), watchedExpression.size(),
                            options, &errorCode, &errorOffset, compileContext);
  }
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
  regex->watched = watched;  // without it (a `\Q` left open) the windows go on when slow
  if (matchCase && !wholeWord && !pattern.empty() &&
      pattern.find_first_of(u"\\^$.?*+()[]{}") == std::u16string_view::npos) {
    if (pattern.find(u'|') == std::u16string_view::npos) {
      regex->literal.assign(pattern);
    } else {
      // Only when no alternative is empty (an empty one would match everywhere).
      std::vector<std::u16string> parts;
      size_t start = 0;
      for (size_t bar; (bar = pattern.find(u'|', start)) != std::u16string_view::npos; start = bar + 1) {
        parts.emplace_back(pattern.substr(start, bar - start));
      }
      parts.emplace_back(pattern.substr(start));
      if (std::none_of(parts.begin(), parts.end(), [](const std::u16string& p) { return p.empty(); })) {
        regex->alternatives = std::move(parts);
      }
    }
  }
  pcre2_pattern_info(code, PCRE2_INFO_CAPTURECOUNT, &regex->groups);
  regex->data = pcre2_match_data_create_from_pattern(code, nullptr);
  regex->context = pcre2_match_context_create(nullptr);
  if (!regex->data || !regex->context) {
    if (error) *error = "out of memory";
    return nullptr;
  }
  pcre2_set_match_limit(regex->context, kMatchLimit);
  pcre2_set_heap_limit(regex->context, kHeapLimitKiB);
  // Without the JIT (a system that forbids executable memory) the interpreter does the same job,
  // more slowly.
  if (pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) == 0 &&
      (!watched || pcre2_jit_compile(watched, PCRE2_JIT_COMPLETE) == 0)) {
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
    if (context.wellFormed) {
      context.repaired = false;
    } else {
      CheckedUtf16(text, context.repairedText, &context.repaired);
    }
    if (!context.repaired) context.repairedText.clear();
    context.checkedData = text.data();
    context.checkedSize = text.size();
    context.linePos = 0;
    context.lineNumber = 1;
  }
  const std::u16string_view subject =
      context.repaired ? std::u16string_view(context.repairedText) : text;
  const size_t length = subject.size();
  const std::atomic<bool>* cancel = context.cancel;

  RegexBatch batch;
  if (cursor >= length) return batch;
  batch.matches.reserve(static_cast<size_t>(std::min<uint64_t>(want, 4096)));
  size_t pos = OnCharacter(subject, static_cast<size_t>(cursor));
  const size_t batchStart =
      context.batchStart >= 0 ? OnCharacter(subject, std::min<size_t>(static_cast<size_t>(context.batchStart), length)) : pos;
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
    const size_t start = pos + regex.foundStart;
    const size_t end = pos + regex.foundEnd;
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
      RegexMatch match;
      match.start = static_cast<int64_t>(pos + regex.foundStart);
      match.end = static_cast<int64_t>(pos + regex.foundEnd);
      match.text.assign(subject.substr(match.start, match.end - match.start));
      match.line = LineOf(subject, match.start);
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
  std::u16string storage;
  const std::u16string_view subject = WellFormedUtf16(text, storage);
  std::optional<RegexSpan> before;
  std::optional<RegexSpan> last;
  RegexFound found;
  found.status =
      ForEachMatch(subject, regex, [&](const std::vector<RegexSpan>& groups, std::u16string_view) {
        last = groups[0];
        if (static_cast<uint64_t>(groups[0].end) <= anchor) before = groups[0];
        return true;
      });
  if (found.status != RegexStatus::Ok || !last) return found;
  const RegexSpan span = before ? *before : *last;
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

}  // namespace nebro::search
