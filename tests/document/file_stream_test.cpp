// The streaming load: its decoding (byte-order marks, UTF-16, line endings) across piece
// boundaries, and its sink.
#include "document/file_stream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <random>

#include "common/utf.h"

using namespace nebro;
using namespace nebro::document;
namespace fs = std::filesystem;

namespace {

struct Streamed {
  LoadResult result;
  std::string text;
  size_t announced = 0;
  int pieces = 0;
};

Streamed Stream(const std::string& path) {
  Streamed s;
  TextSink sink{[&](size_t total) { s.announced = total; s.text.reserve(total); return true; },
                [&](const char* p, size_t n) { s.text.append(p, n); ++s.pieces; return true; }};
  s.result = StreamDocumentFile(OpenDocumentFile(path), UINT64_MAX, sink);
  return s;
}

}  // namespace

TEST(FileStream, DecodesMarksLineEndsAndPieces) {
  char name[] = "/tmp/nebro-stream-XXXXXX";
  const std::string dir = mkdtemp(name);
  std::mt19937 rng(7);
  auto utf16 = [](const std::u16string& s, bool big) {
    std::string out = big ? "\xFE\xFF" : "\xFF\xFE";
    for (char16_t u : s) {
      const char a = static_cast<char>(u & 0xFF), b = static_cast<char>(u >> 8);
      out += big ? std::string{b, a} : std::string{a, b};
    }
    return out;
  };
  // A long UTF-16 text whose surrogate pairs fall on every possible chunk boundary.
  std::u16string astral;
  for (int i = 0; i < 3'000'000; ++i) astral += (i % 3 == 0) ? std::u16string(u"\U0001F600") : std::u16string(u"a\u00e9");
  std::u16string broken = u"x";
  broken += static_cast<char16_t>(0xD800);  // unpaired high surrogate at the very end

  std::string big8;
  for (int i = 0; i < 400000; ++i) big8 += "line " + std::to_string(rng()) + (i % 7 ? "\n" : "\r\n");

  using enum TextEncoding;
  constexpr std::nullopt_t none = std::nullopt;
  struct Case {
    std::string name, bytes;
    std::string text;  // expected, worked out independently of the decoder
    TextEncoding encoding;
    std::optional<LineEndingMode> eol;
  };
  const std::vector<Case> cases = {
      {"empty", "", "", Utf8, none},
      {"bom", "\xEF\xBB\xBFhello\rworld", "hello\rworld", Utf8Bom, LineEndingMode::CR},
      // An incomplete mark is text; bytes that are not UTF-8 pass unchanged.
      {"short_mark", "\xEF\xBB", "\xEF\xBB", Utf8, none},
      {"lead_only", "\xEF" "abc", "\xEF" "abc", Utf8, none},
      {"latin1", "caf\xE9\n", "caf\xE9\n", Utf8, LineEndingMode::LF},
      // Any CR with any LF, paired or not, is CRLF; endings are never converted.
      {"cr_then_lf", "a\rb\nc", "a\rb\nc", Utf8, LineEndingMode::CRLF},
      {"big8", big8, big8, Utf8, LineEndingMode::CRLF},
      {"le", utf16(astral, false), Utf16ToUtf8(astral), Utf16Le, none},
      {"be", utf16(astral, true), Utf16ToUtf8(astral), Utf16Be, none},
      {"le_cr", utf16(u"a\r", false), "a\r", Utf16Le, LineEndingMode::CR},
      // An odd last byte is dropped, also when it would have completed a surrogate pair.
      {"odd", utf16(u"abc", false) + "Z", "abc", Utf16Le, none},
      {"be_odd", "\xFE\xFF\x41", "", Utf16Be, none},
      {"be_cut_pair", "\xFE\xFF\xD8\x3D\xDE", "\xEF\xBF\xBD", Utf16Be, none},
      {"broken", utf16(broken, false), "x\xEF\xBF\xBD", Utf16Le, none},
      {"utf16nulls", std::string("\xFF\xFE\0\0\0\0\0\0", 8), std::string(3, '\0'), Utf16Le, none},
  };
  for (const Case& c : cases) {
    const std::string path = dir + "/" + c.name;
    std::ofstream(path, std::ios::binary) << c.bytes;
    Streamed s = Stream(path);
    ASSERT_EQ(s.result.decision, LoadDecision::Loaded) << c.name;
    EXPECT_TRUE(s.text == c.text) << c.name;
    EXPECT_EQ(s.announced, s.text.size()) << c.name;
    EXPECT_EQ(s.result.encoding, c.encoding) << c.name;
    EXPECT_EQ(s.result.eolMode, c.eol) << c.name;
    EXPECT_TRUE(s.result.lock.Valid()) << c.name;
    if (c.name == "le" || c.name == "big8") {
      EXPECT_GT(s.pieces, 1) << c.name;  // several pieces, joined without seams
    }
    // The whole-file load gives the same text.
    s.result.lock.Reset();
    EXPECT_TRUE(LoadDocumentFile(path, UINT64_MAX).text.view() == c.text) << c.name;
  }

  // A sink that runs out of memory stops the load and drops the lock.
  const std::string path = dir + "/big8";
  TextSink refusing{[](size_t) { return true; }, [](const char*, size_t) { return false; }};
  LoadResult r = StreamDocumentFile(OpenDocumentFile(path), UINT64_MAX, refusing);
  EXPECT_EQ(r.decision, LoadDecision::TooLarge);
  EXPECT_FALSE(r.lock.Valid());
  // The size limit is checked before anything is read.
  int calls = 0;
  TextSink counting{[&](size_t) { ++calls; return true; }, [&](const char*, size_t) { ++calls; return true; }};
  r = StreamDocumentFile(OpenDocumentFile(path), 100, counting);
  EXPECT_EQ(r.decision, LoadDecision::TooLarge);
  EXPECT_EQ(calls, 0);
  fs::remove_all(dir);
}
