#include "print/pagination.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace nebro::print {
namespace {

using Starts = std::vector<int32_t>;

// A monospaced fake: ten pixels per character, rows of ten pixels, wrapped at the width.
LineMeasure FakeMeasure(int emptyHeight = 10) {
  LineMeasure m;
  m.textHeight = [](std::string_view line, int width) {
    const int perRow = std::max(1, width / 10);
    const int rows = (static_cast<int>(line.size()) + perRow - 1) / perRow;
    return rows * 10;
  };
  m.emptyLineHeight = emptyHeight;
  return m;
}

std::string Lines(int count, const std::string& line = "x") {
  std::string text;
  for (int i = 0; i < count; ++i) text += line + "\n";
  return text;
}

PaginationResult Paginate(const std::string& text, int height, PaginationHooks hooks = {}) {
  if (!hooks.measure.textHeight) hooks.measure = FakeMeasure();
  return PaginateLines(text, SplitPrintLines(text), 100, height, hooks);
}

TEST(Pagination, LinesEndAtCrLfAndCrLfWithoutATrailingEmptyLine) {
  using Spans = std::vector<LineSpan>;
  const std::pair<std::string_view, Spans> cases[] = {
      {"a\r\nbb\rc\nd", {{0, 1}, {3, 2}, {6, 1}, {8, 1}}},
      {"abc", {{0, 3}}},
      {"a\n", {{0, 1}}},
      {"a\n\n", {{0, 1}, {2, 0}}},
      {"\r\n", {{0, 0}}},
      {"\n\r", {{0, 0}, {1, 0}}},
      {"\r\r\n", {{0, 0}, {1, 0}}},
      {"", {}},
  };
  for (const auto& [text, spans] : cases) EXPECT_EQ(SplitPrintLines(text), spans) << testing::PrintToString(text);
  EXPECT_EQ(LineText("a\r\nbb\rc", {3, 2}), "bb");
}

TEST(Pagination, TheLineCrossingTheBottomStaysAndTheNextPageStartsEmpty) {
  // Each one-character line takes 10 + 2 pixels; 50 pixels hold four and the fifth crosses.
  PaginationHooks hooks;
  std::vector<std::pair<int, int64_t>> added;
  hooks.pageAdded = [&](int pages, int64_t lines) { added.push_back({pages, lines}); };
  EXPECT_EQ(Paginate(Lines(12), 50, hooks).pageStarts, (Starts{0, 5, 10}));
  EXPECT_EQ(added, (std::vector<std::pair<int, int64_t>>{{2, 5}, {3, 10}}));

  // Filling the content height exactly is no overflow; one pixel less is.
  EXPECT_EQ(Paginate(Lines(12), 48).pageStarts, (Starts{0, 5, 10}));
  EXPECT_EQ(Paginate(Lines(12), 47).pageStarts, (Starts{0, 4, 8}));
  // The last line crossing the bottom opens no empty page.
  EXPECT_EQ(Paginate(Lines(5), 50).pageStarts, (Starts{0}));
  EXPECT_EQ(Paginate(Lines(6), 50).pageStarts, (Starts{0, 5}));
}

TEST(Pagination, TallLinesEmptyTextBlankLinesAndFailedMeasures) {
  const std::string tall(1000, 'w');  // 100 rows: 1000 pixels, far taller than a page
  EXPECT_EQ(Paginate(tall, 50).pageStarts, (Starts{0}));
  EXPECT_EQ(Paginate("a\n" + tall + "\nb\nc", 50).pageStarts, (Starts{0, 2}));
  // The next page starts at 0, not at the tall line's height.
  EXPECT_EQ(Paginate(tall + "\n" + Lines(6), 50).pageStarts, (Starts{0, 1, 6}));

  EXPECT_EQ(Paginate("", 50).pageStarts, (Starts{0}));

  // Blank lines take the font's height and are never measured.
  int measured = 0;
  PaginationHooks hooks;
  hooks.measure = FakeMeasure(4);
  const auto inner = hooks.measure.textHeight;
  hooks.measure.textHeight = [&](std::string_view line, int width) {
    ++measured;
    EXPECT_FALSE(line.empty());
    return inner(line, width);
  };
  // x (12) + four blanks (6 each: 36) + x (48) + blank (54 > 50): the next line starts page 2.
  EXPECT_EQ(Paginate("x\n\n\n\n\nx\n\nx\n", 50, hooks).pageStarts, (Starts{0, 7}));
  EXPECT_EQ(measured, 3);

  // A failed measure counts as the font's height.
  for (int failed : {0, -3}) {
    hooks.measure.textHeight = [failed](std::string_view, int) { return failed; };
    EXPECT_EQ(Paginate(Lines(12, "long line"), 24, hooks).pageStarts, (Starts{0, 5, 10}));
  }

  // Wrapped lines count all their rows: 25 characters in 10 per row are 30 pixels.
  EXPECT_EQ(Paginate(Lines(4, std::string(25, 'y')), 60).pageStarts, (Starts{0, 2}));
}

TEST(Pagination, CancelIsPolledEveryFiftyLines) {
  const std::string text = Lines(120);
  int polls = 0;
  PaginationHooks hooks;
  hooks.cancelRequested = [&] { return ++polls == 2; };
  int measured = 0;
  hooks.measure = FakeMeasure();
  hooks.measure.textHeight = [&](std::string_view, int) { return ++measured, 10; };
  const auto r = Paginate(text, 50, hooks);
  EXPECT_TRUE(r.cancelled);
  EXPECT_EQ(polls, 2);
  EXPECT_EQ(measured, 50);  // lines 0-49, stopped before line 50

  polls = 0;
  hooks.cancelRequested = [&] { return ++polls, false; };
  EXPECT_FALSE(Paginate(text, 50, hooks).cancelled);
  EXPECT_EQ(polls, 3);  // before lines 0, 50 and 100
}

TEST(Pagination, PagesAreLaidOutLineByLine) {
  const std::string text = "a\n\n" + std::string(25, 'z') + "\nq";
  const auto lines = SplitPrintLines(text);
  const Starts starts{0, 3};
  EXPECT_EQ(LinesOfPage(starts, 0, lines.size()), (PageLineRange{0, 3}));
  EXPECT_EQ(LinesOfPage(starts, 1, lines.size()), (PageLineRange{3, 4}));
  EXPECT_EQ(LinesOfPage(starts, 2, lines.size()), (PageLineRange{4, 4}));

  // From y = 100: each line at the current y, then y moves by its height + 2; the blank line
  // takes the font's 7 pixels, the 25 characters three rows.
  std::vector<std::tuple<size_t, int, int>> placed;
  for (const PlacedLine& p : LayoutPageLines(text, lines, {0, 3}, 100, 100, FakeMeasure(7))) {
    placed.emplace_back(p.line, p.y, p.height);
  }
  EXPECT_EQ(placed, (std::vector<std::tuple<size_t, int, int>>{{0, 100, 10}, {1, 112, 7}, {2, 121, 30}}));
}

}  // namespace
}  // namespace nebro::print
