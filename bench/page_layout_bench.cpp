// The printed-page layout with Pango: paginating 100,000 lines (the way to the preview, goal
// under 1 s; once as a document of repeated lines, once with every line different) and writing
// a 10,000-line PDF (goal under 3 s). The PDF case needs a display (run under xvfb-run -a);
// without one it is skipped.
// Run: ./page_layout_bench [--benchmark_filter=...]
#include <benchmark/benchmark.h>
#include <gtk/gtk.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "print/page_layout_gtk.h"
#include "print/pdf_export_gtk.h"

namespace {

// Five kinds of line over and over; `distinct` numbers every line, so none repeats another (the
// split measures a repeated line once).
std::string Source(int lines, bool distinct = false) {
  std::string s;
  const char* kinds[] = {"    for (size_t i = 0; i < count; ++i) {", "", "        total += values[i] * 2;",
                         "    }", "// a comment line of moderate length, as in most code"};
  for (int i = 0; i < lines; ++i) {
    s += kinds[i % 5];
    if (distinct) s += " " + std::to_string(i);
    if (i % 97 == 0) s += std::string(400, 'w');  // now and then a line that wraps
    s += "\n";
  }
  return s;
}

nebro::print::PageStyle Style() {
  nebro::print::PageStyle style;
  style.fontFace = "DejaVu Sans Mono";
  return style;
}

void BM_Paginate100kLines(benchmark::State& state) {
  const std::string text = Source(100000);
  int pages = 0;
  for (auto _ : state) pages = nebro::print::PaginateDocument(text, Style()).PageCount();
  state.counters["pages"] = pages;
}
BENCHMARK(BM_Paginate100kLines)->Unit(benchmark::kMillisecond);

void BM_Paginate100kDistinctLines(benchmark::State& state) {
  const std::string text = Source(100000, true);
  int pages = 0;
  for (auto _ : state) pages = nebro::print::PaginateDocument(text, Style()).PageCount();
  state.counters["pages"] = pages;
}
BENCHMARK(BM_Paginate100kDistinctLines)->Unit(benchmark::kMillisecond);

void BM_Pdf10kLines(benchmark::State& state) {
  if (!gtk_init_check(nullptr, nullptr)) {
    state.SkipWithError("no display");
    return;
  }
  const std::string text = Source(10000);
  char name[] = "/tmp/nebro-bench-XXXXXX";
  const std::string folder = mkdtemp(name);
  for (auto _ : state) {
    if (!nebro::print::ExportPdf(nullptr, text, Style(), folder + "/out.pdf").ok) {
      state.SkipWithError("export failed");
      break;
    }
  }
  std::filesystem::remove_all(folder);
}
BENCHMARK(BM_Pdf10kLines)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
