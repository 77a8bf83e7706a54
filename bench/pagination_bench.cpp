// Pagination cost without the text measuring: the line split against a bare memchr line count
// (the least any split can do), and the page-split loop against a bare sum of line heights.
// Run: ./pagination_bench [--benchmark_filter=...]
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "print/pagination.h"

namespace {

// About 64 MB of source-like lines with CR LF endings and some blank lines.
const std::string& Document() {
  static const std::string text = [] {
    std::string s;
    const char* lines[] = {"    for (size_t i = 0; i < count; ++i) {", "", "        total += values[i] * 2;",
                           "    }", "// a comment line of moderate length, as in most code"};
    size_t k = 0;
    while (s.size() < (64u << 20)) {
      s += lines[k++ % 5];
      s += "\r\n";
    }
    return s;
  }();
  return text;
}

void BM_ReferenceLineCount(benchmark::State& state) {
  const std::string& text = Document();
  for (auto _ : state) {
    size_t lines = 0;
    const char* p = text.data();
    const char* end = p + text.size();
    while ((p = static_cast<const char*>(std::memchr(p, '\n', end - p))) != nullptr) {
      ++lines;
      ++p;
    }
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ReferenceLineCount)->Unit(benchmark::kMillisecond);

void BM_SplitPrintLines(benchmark::State& state) {
  const std::string& text = Document();
  for (auto _ : state) {
    auto lines = nebro::print::SplitPrintLines(text);
    benchmark::DoNotOptimize(lines.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_SplitPrintLines)->Unit(benchmark::kMillisecond);

nebro::print::LineMeasure CheapMeasure() {
  nebro::print::LineMeasure m;
  m.textHeight = [](std::string_view line, int width) {
    return 15 * static_cast<int>(1 + line.size() * 8 / static_cast<size_t>(width));
  };
  m.emptyLineHeight = 15;
  return m;
}

void BM_ReferenceHeightSum(benchmark::State& state) {
  const std::string& text = Document();
  const auto lines = nebro::print::SplitPrintLines(text);
  const auto measure = CheapMeasure();
  for (auto _ : state) {
    int64_t sum = 0;
    for (const auto& l : lines)
      sum += (l.length ? measure.textHeight(nebro::print::LineText(text, l), 679) : 15) + 2;
    benchmark::DoNotOptimize(sum);
  }
  state.counters["lines"] = static_cast<double>(lines.size());
}
BENCHMARK(BM_ReferenceHeightSum)->Unit(benchmark::kMillisecond);

void BM_PaginateLines(benchmark::State& state) {
  const std::string& text = Document();
  const auto lines = nebro::print::SplitPrintLines(text);
  nebro::print::PaginationHooks hooks;
  hooks.measure = CheapMeasure();
  hooks.cancelRequested = [] { return false; };
  hooks.pageAdded = [](int, int64_t) {};
  for (auto _ : state) {
    auto result = nebro::print::PaginateLines(text, lines, 679, 979, hooks);
    benchmark::DoNotOptimize(result.pageStarts.data());
    state.counters["pages"] = static_cast<double>(result.pageStarts.size());
  }
}
BENCHMARK(BM_PaginateLines)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
