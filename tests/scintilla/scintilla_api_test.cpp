// Every Scintilla number the program declares must equal the published one.
#include "scintilla/scintilla_api.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace {

std::map<std::string, long> ReadDefines(const std::string& path) {
  std::ifstream in(path);
  std::map<std::string, long> out;
  const std::regex define(R"(^#define\s+(\w+)\s+(-?(?:0x[0-9A-Fa-f]+|\d+))\s*$)");
  std::string line;
  while (std::getline(in, line)) {
    std::smatch m;
    if (std::regex_match(line, m, define)) out[m[1]] = std::stol(m[2], nullptr, 0);
  }
  return out;
}

}  // namespace

TEST(ScintillaInterface, NumbersMatchThePublishedHeaders) {
  const std::string dir = "/usr/include/geany/scintilla/";
  auto published = ReadDefines(dir + "Scintilla.h");
  const auto lexers = ReadDefines(dir + "SciLexer.h");
  ASSERT_GT(published.size(), 500u) << "published Scintilla.h not found under " << dir;
  ASSERT_GT(lexers.size(), 500u);
  published.insert(lexers.begin(), lexers.end());

  int checked = 0;
#define NEBRO_CHECK(name, value)                                          \
  {                                                                       \
    auto it = published.find(#name);                                     \
    if (it == published.end()) ADD_FAILURE() << #name " is not published"; \
    else EXPECT_EQ(it->second, value) << #name;                           \
    ++checked;                                                            \
  }
  NEBRO_SCINTILLA_CONSTANTS(NEBRO_CHECK)
#undef NEBRO_CHECK
  EXPECT_GT(checked, 200);

  // The newer names really are absent from the older header; if it ever gains them, check them.
#define NEBRO_CHECK_NEWER(name, value)                  \
  {                                                     \
    auto it = published.find(#name);                   \
    if (it != published.end()) {                        \
      EXPECT_EQ(it->second, value) << #name;            \
    }                                                   \
  }
  NEBRO_SCINTILLA_NEWER_CONSTANTS(NEBRO_CHECK_NEWER)
#undef NEBRO_CHECK_NEWER
}

TEST(ScintillaInterface, NotificationRecordHasThePublishedLayout) {
  using nebro::sci::SCNotification;
  // Offsets of the fields read by the program, as laid out by Scintilla 5 on 64-bit Linux.
  EXPECT_EQ(offsetof(SCNotification, nmhdr.code), 16u);
  EXPECT_EQ(offsetof(SCNotification, position), 24u);
  EXPECT_EQ(offsetof(SCNotification, ch), 32u);
  EXPECT_EQ(offsetof(SCNotification, modificationType), 40u);
  EXPECT_EQ(offsetof(SCNotification, text), 48u);
  EXPECT_EQ(offsetof(SCNotification, length), 56u);
  EXPECT_EQ(offsetof(SCNotification, updated), offsetof(SCNotification, annotationLinesAdded) + 8);
}
