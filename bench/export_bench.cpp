// Export throughput on a generated C++-like styled document (100 MB by default; the first
// argument sets the size in MB). Each exporter is timed building in memory (a fresh buffer, and
// a buffer kept from the previous run) and writing a file under /tmp, against a plain memcpy
// and fwrite of the same bytes in the same run. Figures are MB of input per second, by
// wall-clock time and by the process's CPU time.
//
//   build/bench/export_bench [MB] [repeats] [row filter]
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "appearance/themes.h"
#include "export/html_export.h"
#include "export/plain_text_export.h"
#include "export/rtf_export.h"
#include "export/styled_text.h"

using namespace nebro;
using namespace nebro::appearance;
using namespace nebro::exports;

namespace {

// Lexer style numbers of the C++ lexer, as the editor would report them.
enum : unsigned char { kDefault = 0, kComment = 2, kNumber = 4, kWord = 5, kString = 6,
                       kPreproc = 9, kOperator = 10, kIdentifier = 11 };

struct Generated {
  std::string text;
  std::string styles;
};

void Put(Generated& g, std::string_view s, unsigned char style) {
  g.text += s;
  g.styles.append(s.size(), static_cast<char>(style));
}

// Lines drawn from a few C++ shapes with varying names, numbers and indentation: several style
// runs per line, some strings with characters that need escaping, some non-ASCII comments.
Generated MakeDocument(size_t bytes) {
  static const char* names[] = {"value", "count", "buffer", "index", "result", "node",
                                "width", "offset", "item", "handle", "total", "line"};
  static const char* types[] = {"int", "size_t", "auto", "double", "bool", "char"};
  std::mt19937 rng(12345);
  auto pick = [&rng](auto& array) { return array[rng() % (sizeof array / sizeof array[0])]; };
  Generated g;
  g.text.reserve(bytes + 256);
  g.styles.reserve(bytes + 256);
  while (g.text.size() < bytes) {
    Put(g, std::string(4 * (rng() % 4), ' '), kDefault);
    switch (rng() % 8) {
      case 0:
        Put(g, pick(types), kWord); Put(g, " ", kDefault); Put(g, pick(names), kIdentifier);
        Put(g, " = ", kOperator); Put(g, std::to_string(rng() % 10000), kNumber);
        Put(g, ";", kOperator);
        break;
      case 1:
        Put(g, "if", kWord); Put(g, " (", kOperator); Put(g, pick(names), kIdentifier);
        Put(g, " < ", kOperator); Put(g, pick(names), kIdentifier); Put(g, " && ", kOperator);
        Put(g, pick(names), kIdentifier); Put(g, " > ", kOperator);
        Put(g, std::to_string(rng() % 100), kNumber); Put(g, ") {", kOperator);
        break;
      case 2:
        Put(g, "return", kWord); Put(g, " ", kDefault); Put(g, pick(names), kIdentifier);
        Put(g, "(", kOperator); Put(g, "\"it's <done> & \\\"ok\\\"\"", kString);
        Put(g, ", ", kOperator); Put(g, pick(names), kIdentifier); Put(g, ");", kOperator);
        break;
      case 3:
        Put(g, "// ", kComment); Put(g, "compute the ", kComment); Put(g, pick(names), kComment);
        Put(g, (rng() % 4 == 0) ? " \xC3\xA9t\xC3\xA9 \xE2\x86\x92 \xE4\xB8\xAD" : " for the caller",
            kComment);
        break;
      case 4:
        Put(g, "#include", kPreproc); Put(g, " ", kDefault); Put(g, "<vector>", kString);
        break;
      case 5:
        Put(g, "}", kOperator);
        break;
      case 6:
        Put(g, "for", kWord); Put(g, " (", kOperator); Put(g, pick(types), kWord);
        Put(g, " ", kDefault); Put(g, "i", kIdentifier); Put(g, " = ", kOperator);
        Put(g, "0", kNumber); Put(g, "; ", kOperator); Put(g, "i", kIdentifier);
        Put(g, " < ", kOperator); Put(g, pick(names), kIdentifier); Put(g, "; ++", kOperator);
        Put(g, "i", kIdentifier); Put(g, ") {", kOperator);
        break;
      default:
        Put(g, pick(names), kIdentifier); Put(g, ".", kOperator); Put(g, "push_back", kIdentifier);
        Put(g, "(", kOperator); Put(g, pick(names), kIdentifier); Put(g, "[", kOperator);
        Put(g, std::to_string(rng() % 64), kNumber); Put(g, "]);", kOperator);
        Put(g, "\t", kDefault); Put(g, "/* see above */", kComment);
        break;
    }
    Put(g, "\n", kDefault);
  }
  return g;
}

ExportStyleTable DarkCppStyles() {
  const ThemeColors& t = ThemeColorsFor(0);
  ExportStyleTable table;
  for (ExportStyle& s : table) s = {t.editorText, t.editorBackground, false, false};
  table[kComment] = {t.syntax.comment, t.editorBackground, false, true};
  table[kNumber] = {t.syntax.number, t.editorBackground, false, false};
  table[kWord] = {t.syntax.keyword, t.editorBackground, true, false};
  table[kString] = {t.syntax.string, t.editorBackground, false, false};
  table[kPreproc] = {t.syntax.preprocessor, t.editorBackground, false, false};
  table[kOperator] = {t.syntax.operator_, t.editorBackground, false, false};
  return table;
}

// Wall-clock and CPU seconds of one run. On a shared machine the CPU time of the process (user
// and kernel, page faults, file writes and the file writer's thread included) is the steadier
// figure; on an idle one the wall-clock time is what a user waits.
struct Timing {
  double wall = 1e30;
  double cpu = 1e30;
};

double ProcessCpuSeconds() {
  timespec ts;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// Best of `repeats` runs.
Timing Best(int repeats, const std::function<void()>& work) {
  Timing best;
  for (int r = 0; r < repeats; ++r) {
    const double cpu0 = ProcessCpuSeconds();
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    best.wall = std::min(best.wall, took.count());
    best.cpu = std::min(best.cpu, ProcessCpuSeconds() - cpu0);
  }
  return best;
}

void Row(const char* name, Timing t, size_t inputBytes, size_t outputBytes) {
  const double mb = static_cast<double>(inputBytes) / 1e6;
  std::printf("%-34s %8.1f %8.0f %8.1f %8.0f %9.1f\n", name, t.wall * 1e3, mb / t.wall,
              t.cpu * 1e3, mb / t.cpu, static_cast<double>(outputBytes) / 1e6);
}

}  // namespace

int main(int argc, char** argv) {
  const size_t megabytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 3;
  // A third argument keeps only the rows whose names contain it.
  const std::string only = argc > 3 ? argv[3] : "";
  auto wanted = [&only](const char* row) { return std::string(row).find(only) != std::string::npos; };
  const Generated doc = MakeDocument(megabytes * 1000 * 1000);
  const size_t n = doc.text.size();
  const int64_t lines = CountEditorLines(doc.text);
  size_t runs = 1;
  for (size_t i = 1; i < n; ++i) runs += doc.styles[i] != doc.styles[i - 1];
  std::printf("input: %.1f MB, %lld lines, %.1f style runs per line, best of %d\n\n", n / 1e6,
              static_cast<long long>(lines), static_cast<double>(runs) / lines, repeats);
  std::printf("%-34s %8s %8s %8s %8s %9s\n", "", "wall ms", "MB/s in", "CPU ms", "MB/s in",
              "MB out");

  // Every file-writing run gets a new file name, and the files are removed only after the
  // row is timed: removing or truncating a file whose pages are still being written back
  // waits for the disk, which no single export would.
  const std::string base = "/tmp/nebro_export_bench_" + std::to_string(getpid()) + "_";
  std::vector<std::string> written;
  std::string path;
  auto nextPath = [&] {
    path = base + std::to_string(written.size());
    written.push_back(path);
    return path;
  };
  const ThemeColors& dark = ThemeColorsFor(0);
  HtmlExportInput html;
  html.document = {doc.text, doc.styles};
  html.styles = DarkCppStyles();
  html.pageBackground = dark.editorBackground;
  html.title = "bench.cpp";
  html.fontName = "Consolas";
  html.lineCount = lines;
  RtfExportInput rtf;
  rtf.document = html.document;
  rtf.styles = html.styles;
  rtf.darkTheme = true;
  rtf.fontName = "Consolas";
  rtf.fontSize = 11;
  rtf.lineCount = lines;
  // The hooks a worker would hand in: an atomic-like flag test and a counter.
  volatile bool cancel = false;
  uint32_t lastProgress = 0;
  ExportMonitor monitor;
  monitor.isCancelled = [&cancel] { return cancel; };
  monitor.onProgress = [&lastProgress](uint32_t line) { lastProgress = line; };

  std::string interleaved(2 * n, '\0');
  for (size_t i = 0; i < n; ++i) {
    interleaved[2 * i] = doc.text[i];
    interleaved[2 * i + 1] = doc.styles[i];
  }
  std::string splitText, splitStyles;
  ExportBytes reused;  // kept between runs: generation without fresh memory
  size_t out = 0;
  auto check = [&out](ExportResult r, size_t size) {
    if (r != ExportResult::Ok) {
      std::fprintf(stderr, "export failed (%d)\n", static_cast<int>(r));
      std::exit(1);
    }
    out = size;
  };
  auto fileSize = [&path] {
    struct stat st {};
    stat(path.c_str(), &st);
    return static_cast<size_t>(st.st_size);
  };

  struct Case {
    const char* name;
    std::function<void()> run;
  };
  const Case cases[] = {
      // References: the same bytes copied to a fresh buffer and written to a file.
      {"reference: memcpy to fresh buffer",
       [&] {
         char* fresh = static_cast<char*>(std::malloc(n));
         std::memcpy(fresh, doc.text.data(), n);
         benchmark::DoNotOptimize(fresh);
         std::free(fresh);
         out = n;
       }},
      {"reference: fwrite of the text",
       [&] {
         FILE* f = std::fopen(nextPath().c_str(), "wb");
         std::fwrite(doc.text.data(), 1, n, f);
         std::fclose(f);
         out = n;
       }},
      {"plain text to file", [&] { check(WritePlainTextExport(doc.text, nextPath()), n); }},
      {"HTML page in memory",
       [&] {
         ExportBytes page;
         const ExportResult r = BuildHtmlPage(html, page, monitor);
         check(r, page.size());
       }},
      {"HTML page into a reused buffer",
       [&] {
         const ExportResult r = BuildHtmlPage(html, reused, monitor);
         check(r, reused.size());
       }},
      {"HTML page to file", [&] {
         const ExportResult r = ExportHtmlToFile(html, nextPath(), monitor);
         check(r, fileSize());
       }},
      {"RTF in memory",
       [&] {
         ExportBytes bytes;
         const ExportResult r = BuildRtf(rtf, bytes, monitor);
         check(r, bytes.size());
       }},
      {"RTF into a reused buffer", [&] {
         const ExportResult r = BuildRtf(rtf, reused, monitor);
         check(r, reused.size());
       }},
      {"RTF to file", [&] {
         const ExportResult r = ExportRtfToFile(rtf, nextPath(), monitor);
         check(r, fileSize());
       }},
      {"split SCI_GETSTYLEDTEXT output",
       [&] {
         SplitStyledText(interleaved, splitText, splitStyles);
         out = 2 * n;
       }},
      {"count editor lines",
       [&] {
         benchmark::DoNotOptimize(CountEditorLines(doc.text));
         out = 0;
       }},
  };
  for (const Case& c : cases) {
    if (!wanted(c.name)) continue;
    const Timing t = Best(repeats, c.run);
    Row(c.name, t, n, out);
    for (const std::string& file : written) unlink(file.c_str());
  }
  std::printf("\n(last progress line %u)\n", lastProgress);
  return 0;
}
