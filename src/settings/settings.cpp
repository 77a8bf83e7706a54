#include "settings/settings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>

#include "common/safe_write.h"
#include "settings/data_folder.h"

namespace nebro::settings {

static_assert(std::endian::native == std::endian::little, "the settings file is little-endian");

AppSettings gSettings;

namespace {

// Visits every field in file order; the writer and the reader are the two visitors, so the
// order is stated once.
template <typename S, typename V>
void VisitFields(S& s, V& v) {
  v.num(s.theme);
  v.num(s.fontSize);
  v.text(s.fontName);
  v.flag(s.fontBold);
  v.flag(s.fontItalic);
  v.flag(s.wordWrap);
  v.flag(s.lineNumbers);
  v.flag(s.firstRun);
  v.num(s.windowX);
  v.num(s.windowY);
  v.num(s.windowWidth);
  v.num(s.windowHeight);
  v.flag(s.windowMaximized);
  v.text(s.lastFile);
  v.num(s.transparency);
  v.num(s.autoSaveMinutes);
  v.flag(s.findMatchCase);
  v.flag(s.findWholeWord);
  v.flag(s.findWrapAround);
  v.flag(s.findPreserveCase);
  v.flag(s.findInSelection);
  v.flag(s.findColorResults);
  v.text(s.findHistory);
  v.text(s.replaceHistory);
  v.num(s.pageMarginLeft);
  v.num(s.pageMarginTop);
  v.num(s.pageMarginRight);
  v.num(s.pageMarginBottom);
  v.num(s.paperWidth);
  v.num(s.paperHeight);
  v.num(s.previewWidth);
  v.num(s.previewHeight);
  v.num(s.helpWidth);
  v.num(s.helpHeight);
  v.num(s.helpTopic);
  v.num(s.reserved0[0]);
  v.num(s.reserved0[1]);
  v.num(s.reserved1);
  v.num(s.reserved2);
  v.num(s.reserved3);
  v.text(s.regexPatternHistory);
  v.text(s.regexReplaceHistory);
  v.flag(s.regexMatchCase);
  v.flag(s.regexWholeWord);
  v.flag(s.regexPreserveCase);
  v.flag(s.regexIncludeLineNumbers);
  v.num(s.regexBatchSize);
  v.num(s.regexMaxMatches);
  v.num(s.regexOutputFormat);
  v.flag(s.regexColorResults);
  v.num(s.reserved4);
  v.text(s.recentFiles);
  v.flag(s.soundOnKeyPress);
  v.flag(s.soundOnNewLine);
}

struct Writer {
  std::string out;
  template <typename T>
  void num(const T& value) {
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void flag(const bool& value) { out.push_back(value ? 1 : 0); }
  template <typename A>
  void text(const A& array) {
    out.append(reinterpret_cast<const char*>(&array), sizeof array);
  }
};

struct Reader {
  const unsigned char* in;
  template <typename T>
  void num(T& value) {
    std::memcpy(&value, in, sizeof value);
    in += sizeof value;
  }
  void flag(bool& value) { value = *in++ != 0; }
  template <typename A>
  void text(A& array) {
    std::memcpy(&array, in, sizeof array);
    in += sizeof array;
  }
};

void PutU32(std::string& out, uint32_t v) { out.append(reinterpret_cast<const char*>(&v), 4); }

uint32_t GetU32(const unsigned char* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

struct FileCloser {
  void operator()(FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

}  // namespace

void SetDefaultSettings(AppSettings& s) {
  std::memset(&s, 0, sizeof s);
  s.fontSize = 11;
  SetFieldText(s.fontName, u"Consolas");
  s.wordWrap = true;
  s.lineNumbers = true;
  s.firstRun = true;
  s.windowX = kDefaultPosition;
  s.windowY = kDefaultPosition;
  s.windowWidth = 920;
  s.windowHeight = 660;
  s.findWrapAround = true;
  s.findColorResults = true;
  s.pageMarginLeft = s.pageMarginTop = s.pageMarginRight = s.pageMarginBottom = 1500;
  s.paperWidth = 21000;
  s.paperHeight = 29700;
  s.reserved2 = 4;
  s.regexIncludeLineNumbers = true;
  s.regexBatchSize = 3000;
  s.regexMaxMatches = 10000;
  s.regexOutputFormat = 1;
  s.regexColorResults = true;
  s.reserved4 = 1;
}

std::string EncodeSettingsRecord(const AppSettings& s) {
  Writer w;
  w.out.reserve(kSettingsRecordSize);
  VisitFields(s, w);
  return std::move(w.out);
}

void DecodeSettingsRecord(const unsigned char* bytes, AppSettings& s) {
  Reader r{bytes};
  VisitFields(s, r);
}

uint32_t Fnv1a(const unsigned char* bytes, size_t size) {
  uint32_t hash = 2166136261u;
  for (size_t i = 0; i < size; ++i) {
    hash ^= bytes[i];
    hash *= 16777619u;
  }
  return hash;
}

namespace {

// Only a regular file is read: a pipe or device in its place would hang start-up or never end.
FILE* OpenRegularFile(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return nullptr;
  struct stat st {};
  if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    close(fd);
    return nullptr;
  }
  FILE* f = fdopen(fd, "rb");
  if (!f) close(fd);
  return f;
}

}  // namespace

bool LoadSettingsFrom(const std::string& path, AppSettings& s) {
  FilePtr f(OpenRegularFile(path));
  unsigned char header[kSettingsHeaderSize];
  auto record = std::make_unique<unsigned char[]>(kSettingsRecordSize);
  const bool ok = f && std::fread(header, 1, sizeof header, f.get()) == sizeof header &&
                  std::memcmp(header, "NEBR", 4) == 0 && GetU32(header + 4) == kSettingsVersion &&
                  GetU32(header + 8) == kSettingsRecordSize &&
                  std::fread(record.get(), 1, kSettingsRecordSize, f.get()) == kSettingsRecordSize &&
                  Fnv1a(record.get(), kSettingsRecordSize) == GetU32(header + 12);
  if (!ok) {
    SetDefaultSettings(s);
    return false;
  }
  DecodeSettingsRecord(record.get(), s);
  return true;
}

bool SaveSettingsTo(const std::string& path, const AppSettings& s) {
  const std::string record = EncodeSettingsRecord(s);
  std::string file = "NEBR";
  PutU32(file, kSettingsVersion);
  PutU32(file, kSettingsRecordSize);
  PutU32(file, Fnv1a(reinterpret_cast<const unsigned char*>(record.data()), record.size()));
  file += record;
  return SafeWriteFile(path, file).Ok();
}

bool LoadSettings(AppSettings& s) { return LoadSettingsFrom(GetSettingsFilePath(), s); }
bool SaveSettings(const AppSettings& s) { return SaveSettingsTo(GetSettingsFilePath(), s); }

std::u16string FieldText(const char16_t* field, size_t capacity) {
  size_t n = 0;
  while (n < capacity && field[n] != 0) ++n;
  return std::u16string(field, n);
}

void SetFieldText(char16_t* field, size_t capacity, std::u16string_view text) {
  const size_t n = std::min(text.size(), capacity - 1);
  std::copy_n(text.data(), n, field);
  std::fill(field + n, field + capacity, u'\0');
}

}  // namespace nebro::settings
