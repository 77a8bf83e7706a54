// Regex Search's Find All against std::wregex (the ECMAScript engine of the standard library) on
// the same generated text, in the same run.
//
// Find All is the worker's loop: FindBatch in batches of 3000 matches (the default batch size)
// until an empty batch, each match recorded with its text and line number. The reference is the
// same loop written over std::wregex as the original design does it: std::regex_search on each
// sub-range, the same empty-match rule, one search per collected match (so an empty match that
// repeats until the batch is full costs one search per copy, where FindBatch makes the copies
// without searching again). It runs on the text as wchar_t, in a forked child, so that a crash
// of the reference is reported instead of ending the benchmark, and on the first part of the
// text where the whole would take minutes; the size used is printed. Throughput is megabytes of
// the UTF-8 document per second (the UTF-16 text searched is about twice as many bytes).
//
// Usage: regex_bench [megabytes]   (default 100)
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "common/utf.h"
#include "search/regex_engine.h"
#include "search/regex_worker.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

// Prose and code, the mix a text editor sees: sentences with capitals, numbers such as 3.25,
// some accented, Cyrillic and Greek words and an emoji now and then; C-like code with
// identifiers, keywords and comments.
std::string MakeText(size_t bytes, uint32_t seed) {
  // clang-format off
  static const char* const kWords[] = {
      "the", "of", "and", "to", "in", "is", "that", "for", "it", "as", "was", "with", "be", "by",
      "on", "not", "he", "this", "are", "or", "his", "from", "at", "which", "but", "have", "an",
      "had", "they", "you", "were", "their", "one", "all", "we", "can", "her", "has", "there",
      "been", "if", "more", "when", "will", "would", "who", "so", "no", "between", "because",
      "while", "return", "structure", "letter", "little", "street", "apple", "book", "summer",
      "coffee", "success", "common", "river", "village", "example", "window", "market",
      "history", "simple", "people", "number", "after", "water", "light", "other", "place",
      "caf\xC3\xA9", "na\xC3\xAFve", "\xC3\xA9" "cole", "Stra\xC3\x9F" "e", "\xC3\xBC" "ber",
      "\xD0\xBF\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82",
      "\xCE\xB5\xCE\xBB\xCE\xBB\xCE\xAC\xCE\xB4\xCE\xB1",
  };
  static const char* const kNames[] = {"London", "Maria", "Paris", "John", "Tuesday", "March",
                                       "Europe", "Anna", "Berlin", "\xC3\x89" "cole"};
  static const char* const kCode[] = {
      "    for (int i = 0; i < count; ++i) {\n",
      "        total += values[i] * 2.5;\n",
      "    }\n",
      "    return result;\n",
      "}\n",
      "// Walk the list once and keep the running sum.\n",
      "#include <vector>\n",
      "static int helper(const char* name, size_t len);\n",
      "    if (node->next == nullptr) return 0;\n",
      "    while (left < right) { swap(a[left++], a[--right]); }\n",
      "    const uint32_t mask = 0x1F;\n",
      "struct Point { double x; double y; };\n",
      "    std::string label = \"value: \" + std::to_string(3.14159);\n",
      "\n",
  };
  // clang-format on
  std::mt19937 random(seed);
  auto pick = [&](size_t n) { return static_cast<size_t>(random() % n); };
  std::string text;
  text.reserve(bytes + 4096);
  while (text.size() < bytes) {
    if (pick(10) < 6) {
      // A paragraph of prose, wrapped at about 80 columns.
      const size_t sentences = 2 + pick(6);
      size_t column = 0;
      for (size_t s = 0; s < sentences; ++s) {
        const size_t words = 6 + pick(14);
        for (size_t w = 0; w < words; ++w) {
          std::string word;
          const size_t kind = pick(100);
          if (kind < 4) {
            word = kNames[pick(std::size(kNames))];
          } else if (kind < 7) {
            word = std::to_string(pick(2000)) + (pick(2) ? "." + std::to_string(pick(100)) : "");
          } else if (kind == 7 && pick(4) == 0) {
            word = "\xF0\x9F\x98\x80";
          } else {
            word = kWords[pick(std::size(kWords))];
          }
          if (w == 0 && word[0] >= 'a' && word[0] <= 'z') word[0] = static_cast<char>(word[0] - 32);
          if (column > 72) {
            text += '\n';
            column = 0;
          } else if (w > 0 || s > 0) {
            text += ' ';
            ++column;
          }
          text += word;
          column += word.size();
          if (w + 1 < words && pick(12) == 0) text += ',';
        }
        text += '.';
      }
      text += "\n\n";
    } else {
      const size_t lines = 3 + pick(12);
      for (size_t l = 0; l < lines; ++l) text += kCode[pick(std::size(kCode))];
      text += '\n';
    }
  }
  return text;
}

std::string Narrow(std::u16string_view s) { return nebro::Utf16ToUtf8(s); }

std::wstring ToWide(const std::u16string& s) {
  std::wstring out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size(); ++i) {
    char32_t c = s[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < s.size()) {
      c = 0x10000 + ((c - 0xD800) << 10) + (s[i + 1] - 0xDC00);
      ++i;
    }
    out.push_back(static_cast<wchar_t>(c));
  }
  return out;
}

constexpr uint64_t kBatch = 3000;

struct Run {
  uint64_t matches = 0;
  double seconds = 0;
  nebro::search::RegexStatus status = nebro::search::RegexStatus::Ok;
};

Run OurFindAllOnce(const std::u16string& text, std::u16string_view pattern, bool matchCase) {
  Run run;
  nebro::search::RegexPtr regex = nebro::search::BuildRegex(pattern, matchCase, false);
  if (!regex) {
    std::fprintf(stderr, "pattern does not compile: %s\n", Narrow(pattern).c_str());
    std::exit(1);
  }
  std::atomic<bool> cancel{false};
  const Clock::time_point start = Clock::now();
  nebro::search::FindBatchContext context;
  context.cancel = &cancel;
  context.wellFormed = true;  // made by Utf8ToUtf16, as the worker's copy is
  uint64_t cursor = 0;
  for (;;) {
    nebro::search::RegexBatch batch = nebro::search::FindBatch(text, *regex, cursor, kBatch, context);
    run.matches += batch.matches.size();
    run.status = batch.status;
    if (batch.matches.empty() || batch.status != nebro::search::RegexStatus::Ok) break;
  }
  run.seconds = Seconds(start);
  return run;
}

// The best of three runs: the machine is shared.
Run OurFindAll(const std::u16string& text, std::u16string_view pattern, bool matchCase,
               int runs = 3) {
  Run best = OurFindAllOnce(text, pattern, matchCase);
  for (int i = 1; i < runs; ++i) {
    const Run again = OurFindAllOnce(text, pattern, matchCase);
    if (again.seconds < best.seconds) best = again;
  }
  return best;
}

struct ReferenceMatch {
  size_t start;
  size_t end;
  std::wstring text;
  size_t line;
};

// The same loop over std::wregex. With `copyRepeats`, an empty match that every further search
// would find again fills the batch with copies, as FindBatch does.
uint64_t ReferenceFindAll(const std::wstring& text, const std::wregex& re, bool copyRepeats) {
  uint64_t total = 0;
  size_t cursor = 0;
  size_t linePos = 0;
  size_t line = 1;
  std::vector<ReferenceMatch> batch;
  for (;;) {
    batch.clear();
    const size_t batchStart = cursor;
    size_t pos = cursor;
    while (batch.size() < kBatch && pos < text.size()) {
      std::wsmatch m;
      if (!std::regex_search(text.cbegin() + static_cast<std::ptrdiff_t>(pos), text.cend(), m, re))
        break;
      const size_t start = pos + static_cast<size_t>(m.position(0));
      const size_t end = start + static_cast<size_t>(m.length(0));
      line +=
          static_cast<size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(linePos),
                                         text.begin() + static_cast<std::ptrdiff_t>(start), L'\n'));
      linePos = start;
      batch.push_back(ReferenceMatch{start, end, m.str(0), line});
      if (start == end && end == batchStart) {
        pos = end + 1;
      } else if (copyRepeats && start == end && start == pos && end < text.size()) {
        while (batch.size() < kBatch) batch.push_back(batch.back());
      } else {
        pos = end;
      }
    }
    cursor = pos;
    total += batch.size();
    if (batch.empty()) break;
  }
  return total;
}

struct ChildResult {
  bool finished = false;
  bool crashed = false;
  int signal = 0;
  uint64_t matches = 0;
  double seconds = 0;
};

// Runs `work` in a child process; it reports (matches, seconds) through a pipe. The child is
// killed after `limitSeconds`.
template <typename Work>
ChildResult InChild(Work work, double limitSeconds) {
  int fds[2];
  if (pipe(fds) != 0) std::exit(1);
  const pid_t child = fork();
  if (child == 0) {
    close(fds[0]);
    const Clock::time_point start = Clock::now();
    const uint64_t matches = work();
    const double seconds = Seconds(start);
    char line[64];
    const int n = std::snprintf(line, sizeof line, "%" PRIu64 " %.6f", matches, seconds);
    if (write(fds[1], line, static_cast<size_t>(n)) != n) _exit(2);
    _exit(0);
  }
  close(fds[1]);
  ChildResult result;
  const Clock::time_point start = Clock::now();
  int status = 0;
  for (;;) {
    const pid_t done = waitpid(child, &status, WNOHANG);
    if (done == child) break;
    if (Seconds(start) > limitSeconds) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      close(fds[0]);
      return result;  // neither finished nor crashed: it ran out of time
    }
    usleep(2000);
  }
  char line[64] = {};
  const ssize_t n = read(fds[0], line, sizeof line - 1);
  close(fds[0]);
  if (WIFSIGNALED(status)) {
    result.crashed = true;
    result.signal = WTERMSIG(status);
  } else if (n > 0 && std::sscanf(line, "%" SCNu64 " %lf", &result.matches, &result.seconds) == 2) {
    result.finished = true;
  }
  return result;
}

struct Case {
  const char* name;
  std::u16string pattern;
  bool matchCase;
  size_t referenceBytes;  // UTF-8 bytes of the text the reference runs on
};

// UTF-16 bytes searched per UTF-8 byte of the document (set once the text is made).
double g_utf16PerUtf8 = 2.0;

void PrintRow(const char* name, double mb, const Run& ours, const ChildResult& ref, double refMb) {
  const double ourRate = mb / ours.seconds;
  std::printf("%-28s %6.1f %7.0f %8.0f %10" PRIu64 " |", name, mb, ourRate,
              ourRate * g_utf16PerUtf8, ours.matches);
  if (ref.finished) {
    const double refRate = refMb / ref.seconds;
    std::printf(" %7.1f %9.1f %10" PRIu64 " | %7.0fx\n", refMb, refRate, ref.matches,
                ourRate / refRate);
  } else if (ref.crashed) {
    std::printf(" %7.1f   crashed (signal %d)        |       -\n", refMb, ref.signal);
  } else {
    std::printf(" %7.1f   no answer within the limit  |       -\n", refMb);
  }
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const size_t megabytes = argc > 1 ? static_cast<size_t>(std::atoi(argv[1])) : 100;
  const size_t bytes = megabytes << 20;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);

  Clock::time_point start = Clock::now();
  const std::string document = MakeText(bytes, 20240611);
  const std::u16string text = nebro::Utf8ToUtf16(document);
  std::printf("text: %.1f MB UTF-8 (%zu UTF-16 units), made in %.1f s\n\n",
              document.size() / 1048576.0, text.size(), Seconds(start));

  const std::vector<Case> cases = {
      {"literal  return", u"return", true, 24u << 20},
      {"class    \\b[A-Z][a-z]+\\b", u"\\b[A-Z][a-z]+\\b", true, 4u << 20},
      {"5-word alternation", u"while|return|structure|because|between", true, 8u << 20},
      {"decimal  \\d+\\.\\d+", u"\\d+\\.\\d+", true, 8u << 20},
      {"backref  (\\w)\\1", u"(\\w)\\1", true, 4u << 20},
      {"icase    \u00C9COLE|STRA\u00DFE|\u041F\u0420\u0418\u0412\u0415\u0422",
       u"\u00C9COLE|STRA\u00DFE|\u041F\u0420\u0418\u0412\u0415\u0422", false, 4u << 20},
      {"negated  [^x]*", u"[^x]*", true, 1u << 20},
  };

  g_utf16PerUtf8 = 2.0 * static_cast<double>(text.size()) / static_cast<double>(document.size());
  std::printf(
      "MB/s: megabytes of the UTF-8 document per second; UTF-16 MB/s: of the UTF-16 text "
      "searched (%.2f times as many bytes)\n\n",
      g_utf16PerUtf8);
  std::printf("%-28s %6s %7s %8s %10s | %7s %9s %10s | %8s\n", "pattern", "MB", "MB/s", "UTF-16",
              "matches", "ref MB", "ref MB/s", "ref match", "speed-up");
  for (const Case& c : cases) {
    const double mb = document.size() / 1048576.0;
    const Run ours = OurFindAll(text, c.pattern, c.matchCase);

    // The reference's slice: the first referenceBytes of the document, cut at a line end.
    size_t cut = std::min(c.referenceBytes, document.size());
    while (cut < document.size() && document[cut - 1] != '\n') ++cut;
    const std::u16string slice16 = nebro::Utf8ToUtf16(std::string_view(document).substr(0, cut));
    const std::wstring slice = ToWide(slice16);
    const double refMb = cut / 1048576.0;
    const std::wstring widePattern = ToWide(c.pattern);
    auto reference = [&](bool copyRepeats) {
      return InChild(
          [&]() -> uint64_t {
            auto flags = std::regex::ECMAScript;
            std::wregex re;
            if (!c.matchCase) {
              // Case folding beyond ASCII needs a locale that knows those letters. (Only here:
              // in such a locale libstdc++ would also count them in \w and \b.)
              flags |= std::regex::icase;
              re.imbue(std::locale("C.UTF-8"));
            }
            re.assign(widePattern, flags);
            return ReferenceFindAll(slice, re, copyRepeats);
          },
          600);
    };
    const ChildResult ref = reference(false);
    // Both engines on the reference's slice must agree.
    const Run check = OurFindAll(slice16, c.pattern, c.matchCase, 1);
    if (ref.finished && check.matches != ref.matches) {
      std::printf("  ! on the slice: ours %" PRIu64 " matches, reference %" PRIu64 "\n",
                  check.matches, ref.matches);
    }
    PrintRow(c.name, mb, ours, ref, refMb);
    if (c.pattern == u"[^x]*") {
      // The same pattern with the reference also copying repeated empty matches: the engines
      // alone.
      PrintRow("  reference copying repeats", mb, ours, reference(true), refMb);
    }
  }

  // `.*` over one line of 20 MB.
  {
    std::string line;
    line.reserve(20u << 20);
    for (char c : document) {
      if (line.size() >= (20u << 20)) break;
      line.push_back(c == '\n' ? ' ' : c);
    }
    const std::u16string line16 = nebro::Utf8ToUtf16(line);
    const double mb = line.size() / 1048576.0;
    Run ours = OurFindAll(line16, u".*", true);
    const std::wstring wide = ToWide(line16);
    const ChildResult ref = InChild(
        [&]() -> uint64_t {
          const std::wregex re(L".*", std::regex::ECMAScript);
          return ReferenceFindAll(wide, re, false);
        },
        600);
    PrintRow("dot-star .* (one 20 MB line)", mb, ours, ref, mb);
  }

  // The worker's own run: one batch holding every match, kept in the results list and written
  // to a results file, the document converted from UTF-8 first.
  {
    char folder[] = "/tmp/nebro-regex-bench-XXXXXX";
    if (!mkdtemp(folder)) return 1;
    nebro::search::RegexSearchState state;
    nebro::search::RegexSearchRequest request;
    request.pattern = u"return";
    request.matchCase = true;
    request.batchSize = UINT64_MAX;
    request.maxMatches = 0;
    request.documentUtf8 = document;
    nebro::search::RegexWorkerHooks hooks;
    hooks.resultsFolder = folder;
    start = Clock::now();
    const nebro::search::RegexCompletion done = nebro::search::RunRegexSearch(request, state, hooks);
    const double seconds = Seconds(start);
    std::printf(
        "\nworker run, literal, with results list and file: %.2f s, %.0f MB/s, %zu matches, "
        "completion %d\n",
        seconds, document.size() / 1048576.0 / seconds, state.results.size(),
        static_cast<int>(done));
    std::remove(state.log.resultsPath.c_str());
    rmdir(folder);
  }

  // A catastrophically backtracking pattern.
  std::printf("\ncatastrophic (a+)+$ over a run of a's and a final b:\n");
  for (size_t n : {26u, 5000u, 100000u}) {
    std::u16string runaway(n, u'a');
    runaway += u'b';
    const Run ours = OurFindAll(runaway, u"(a+)+$", true, 1);
    const std::wstring wide = ToWide(runaway);
    const ChildResult ref = InChild(
        [&]() -> uint64_t {
          const std::wregex re(L"(a+)+$", std::regex::ECMAScript);
          return ReferenceFindAll(wide, re, false);
        },
        20);
    std::printf("  %6zu a's: ours %s after %.3f s; std::wregex ", n,
                ours.status == nebro::search::RegexStatus::TooComplex ? "\"too complex\"" : "finished",
                ours.seconds);
    if (ref.finished) {
      std::printf("finished after %.3f s (%" PRIu64 " matches)\n", ref.seconds, ref.matches);
    } else if (ref.crashed) {
      std::printf("crashed (signal %d)\n", ref.signal);
    } else {
      std::printf("still running after 20 s (killed)\n");
    }
  }
  return 0;
}
