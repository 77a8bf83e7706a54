// The streaming load must decide and decode exactly like the whole-file load.
#include "document/file_stream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

using namespace nebro;
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

TEST(FileStream, AgreesWithTheWholeFileLoad) {
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

  const std::vector<std::pair<std::string, std::string>> files = {
      {"empty", ""},
      {"mz2", "MZ"},
      {"mz4", "MZab"},
      {"nulls", std::string("ab\0c\0d\0e", 8)},
      {"controls", "\x01\x02\x03\x04\x05\x06 text"},
      {"bom", "\xEF\xBB\xBFhello\rworld"},
      {"lf", "a\nb\n"},
      {"big8", big8},
      {"le", utf16(astral, false)},
      {"be", utf16(astral, true)},
      {"odd", utf16(u"abc", false) + "Z"},
      {"broken", utf16(broken, false)},
      {"utf16nulls", std::string("\xFF\xFE\0\0\0\0\0\0", 8)},
  };
  for (const auto& [name, bytes] : files) {
    const std::string path = dir + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    LoadResult whole = LoadDocumentFile(path, UINT64_MAX);
    whole.lock.Reset();  // the file's lock would refuse the second open
    Streamed s = Stream(path);
    EXPECT_EQ(s.result.decision, whole.decision) << name;
    EXPECT_EQ(s.result.message, whole.message) << name;
    EXPECT_EQ(s.result.title, whole.title) << name;
    if (whole.decision != LoadDecision::Loaded) {
      EXPECT_FALSE(s.result.lock.Valid()) << name;
      continue;
    }
    EXPECT_EQ(s.text, std::string(whole.text.view())) << name;
    EXPECT_EQ(s.announced, s.text.size()) << name;
    EXPECT_EQ(s.result.encoding, whole.encoding) << name;
    EXPECT_EQ(s.result.eolMode, whole.eolMode) << name;
    EXPECT_TRUE(s.result.lock.Valid()) << name;
    if (name == "le" || name == "big8") {
      EXPECT_GT(s.pieces, 1) << name;
    }
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
