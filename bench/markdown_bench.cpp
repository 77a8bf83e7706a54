// Markdown to HTML throughput on a generated document (50 MB by default, or the size in MB given
// as the first argument), against md4c's HTML renderer and cmark in the same run.
//
//   build-md/bench/markdown_bench [MB] [runs]
//
// Each renderer turns the same UTF-8 bytes into a fresh HTML string; the best of the runs counts.
// The dialects differ (ours is line-oriented and much smaller than CommonMark), so this measures
// what each costs for the job it does on a document such as users write, not equal work.
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "common/utf.h"
#include "markdown/markdown_html.h"

#ifdef NEBRO_HAVE_MD_REFERENCES
#include <cmark.h>
#include <md4c-html.h>
#endif

namespace {

// A document in the shape of real notes: headings, paragraphs with emphasis and code spans,
// bullet and numbered lists, quotes, rules, blank lines, some non-ASCII text, a few CR LF lines.
std::string GenerateDocument(size_t bytes) {
  static const char* const kWords[] = {
      "the",
      "editor",
      "renders",
      "Markdown",
      "into",
      "a",
      "page",
      "with",
      "inline",
      "styles",
      "and",
      "no",
      "script",
      "line",
      "by",
      "text",
      "caf\xC3\xA9",
      "na\xC3\xAFve",
      "\xE2\x82\xAC"
      "5",
      "\xE6\x97\xA5\xE6\x9C\xAC",
      "x < y",
      "R&D",
      "it's",
      "\"quoted\"",
      "snake_case",
      "v1.2",
      "value",
      "list",
  };
  std::mt19937 random(12345);
  auto pick = [&](size_t n) { return static_cast<size_t>(random() % n); };
  auto sentence = [&](std::string& out, int words) {
    for (int w = 0; w < words; ++w) {
      if (w) out += ' ';
      const char* word = kWords[pick(std::size(kWords))];
      switch (pick(14)) {
        case 0:
          out += "**";
          out += word;
          out += "**";
          break;
        case 1:
          out += '*';
          out += word;
          out += '*';
          break;
        case 2:
          out += '`';
          out += word;
          out += '`';
          break;
        case 3:
          out += '_';
          out += word;
          out += '_';
          break;
        default:
          out += word;
      }
    }
  };
  std::string doc;
  doc.reserve(bytes + 1024);
  while (doc.size() < bytes) {
    switch (pick(20)) {
      case 0:
        doc += "# ";
        sentence(doc, 4);
        break;
      case 1:
        doc += "## ";
        sentence(doc, 5);
        break;
      case 2:
        doc += "### ";
        sentence(doc, 6);
        break;
      case 3:
      case 4:
      case 5:
        doc += "- ";
        sentence(doc, 8);
        break;
      case 6:
      case 7:
        doc += std::to_string(1 + pick(20)) + ". ";
        sentence(doc, 8);
        break;
      case 8:
        doc += "> ";
        sentence(doc, 12);
        break;
      case 9:
        doc += "---";
        break;
      case 10:
      case 11:
        break;  // blank line
      default:
        sentence(doc, 12 + static_cast<int>(pick(30)));
    }
    doc += pick(50) == 0 ? "\r\n" : "\n";
  }
  return doc;
}

struct Result {
  const char* name;
  double wall = 1e30;  // seconds
  double cpu = 1e30;   // seconds of this thread, page faults included
  size_t outputBytes = 0;
};

double ThreadCpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// The machine is shared, so wall time swings with other people's work; the thread's CPU time is
// the steadier figure and the one to compare.
void Measure(Result& r, int runs, const std::function<size_t()>& render) {
  for (int i = 0; i < runs; ++i) {
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = ThreadCpuSeconds();
    const size_t produced = render();
    const double cpu = ThreadCpuSeconds() - cpuStart;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    r.wall = std::min(r.wall, took.count());
    r.cpu = std::min(r.cpu, cpu);
    r.outputBytes = produced;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const size_t megabytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 50;
  const int runs = argc > 2 ? std::atoi(argv[2]) : 3;
  const std::string doc = GenerateDocument(megabytes * 1000 * 1000);
  const double mb = static_cast<double>(doc.size()) / 1e6;
  std::printf("document: %.1f MB, best of %d runs\n\n", mb, runs);

  nebro::markdown::MarkdownPageOptions options;
  options.documentPath = "/tmp/bench.md";
  options.fontName = "Consolas";

  std::vector<Result> results;
  results.push_back({"nebro RenderMarkdownPage (UTF-8)"});
  Measure(results.back(), runs, [&] {
    std::string html;
    nebro::markdown::RenderMarkdownPage(doc, options, html);
    return html.size();
  });

  // The UTF-16 entry as the interface states it, conversion from the editor's bytes included.
  results.push_back({"nebro UTF-8 -> UTF-16 -> page"});
  Measure(results.back(), runs, [&] {
    const std::u16string wide = nebro::Utf8ToUtf16(doc);
    std::string html;
    nebro::markdown::RenderMarkdownPage(wide, options, html);
    return html.size();
  });

#ifdef NEBRO_HAVE_MD_REFERENCES
  results.push_back({"md4c md_html"});
  Measure(results.back(), runs, [&] {
    std::string html;
    html.reserve(2 * doc.size());  // as ours does
    md_html(
        doc.data(), static_cast<MD_SIZE>(doc.size()),
        [](const MD_CHAR* text, MD_SIZE size, void* user) {
          static_cast<std::string*>(user)->append(text, size);
        },
        &html, 0, 0);
    return html.size();
  });

  results.push_back({"cmark cmark_markdown_to_html"});
  Measure(results.back(), runs, [&] {
    char* html = cmark_markdown_to_html(doc.data(), doc.size(), CMARK_OPT_DEFAULT);
    const size_t size = std::strlen(html);
    std::free(html);
    return size;
  });
#else
  std::printf("(md4c-html and cmark not found at configure time: no reference figures)\n");
#endif

  std::printf("%-34s %9s %9s %9s %9s %10s\n", "renderer", "cpu ms", "cpu MB/s", "wall ms",
              "wall MB/s", "output MB");
  for (const Result& r : results) {
    std::printf("%-34s %9.1f %9.1f %9.1f %9.1f %10.1f\n", r.name, r.cpu * 1e3, mb / r.cpu,
                r.wall * 1e3, mb / r.wall, static_cast<double>(r.outputBytes) / 1e6);
  }
  return 0;
}
