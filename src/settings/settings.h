// The settings record and its file "nebro.cfg": a 16-byte header and the record's fields packed
// little-endian, with no padding, in the order below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nebro::settings {

inline constexpr int32_t kDefaultPosition = INT32_MIN;  // 0x80000000: let the window system place
inline constexpr size_t kSettingsRecordSize = 36687;
inline constexpr size_t kSettingsHeaderSize = 16;
inline constexpr uint32_t kSettingsVersion = 15;

// In memory the record is an ordinary struct; its file layout is produced field by field.
struct AppSettings {
  uint32_t theme;
  int32_t fontSize;
  char16_t fontName[64];
  bool fontBold;
  bool fontItalic;
  bool wordWrap;
  bool lineNumbers;
  bool firstRun;
  int32_t windowX;
  int32_t windowY;
  int32_t windowWidth;
  int32_t windowHeight;
  bool windowMaximized;
  char16_t lastFile[260];
  int32_t transparency;
  int32_t autoSaveMinutes;
  bool findMatchCase;
  bool findWholeWord;
  bool findWrapAround;
  bool findPreserveCase;
  bool findInSelection;
  bool findColorResults;
  char16_t findHistory[10][256];
  char16_t replaceHistory[10][256];
  int32_t pageMarginLeft;
  int32_t pageMarginTop;
  int32_t pageMarginRight;
  int32_t pageMarginBottom;
  int32_t paperWidth;
  int32_t paperHeight;
  int32_t previewWidth;
  int32_t previewHeight;
  int32_t helpWidth;
  int32_t helpHeight;
  int32_t helpTopic;
  uint8_t reserved0[2];
  uint32_t reserved1;
  uint32_t reserved2;
  uint8_t reserved3;
  char16_t regexPatternHistory[10][512];
  char16_t regexReplaceHistory[10][512];
  bool regexMatchCase;
  bool regexWholeWord;
  bool regexPreserveCase;
  bool regexIncludeLineNumbers;
  uint32_t regexBatchSize;
  uint32_t regexMaxMatches;
  uint32_t regexOutputFormat;
  bool regexColorResults;
  uint8_t reserved4;
  char16_t recentFiles[10][260];
  bool soundOnKeyPress;
  bool soundOnNewLine;
};

// The one record of the process.
extern AppSettings gSettings;

void SetDefaultSettings(AppSettings& s);

// The record's file bytes (without header) and back. Decoding never fails; booleans read as
// "non-zero".
std::string EncodeSettingsRecord(const AppSettings& s);
void DecodeSettingsRecord(const unsigned char* bytes, AppSettings& s);

uint32_t Fnv1a(const unsigned char* bytes, size_t size);

// True when the file was read and checked; otherwise the defaults are put in place. The plain
// forms use GetSettingsFilePath() (settings/data_folder.h).
bool LoadSettings(AppSettings& s);
bool LoadSettingsFrom(const std::string& path, AppSettings& s);
// True when the whole file was written (through SafeWriteFile, so a failed save leaves the old
// file as it was).
bool SaveSettings(const AppSettings& s);
bool SaveSettingsTo(const std::string& path, const AppSettings& s);

// The record's text fields: read a zero-terminated array as a string, and store a string
// truncated so that the terminator fits.
std::u16string FieldText(const char16_t* field, size_t capacity);
void SetFieldText(char16_t* field, size_t capacity, std::u16string_view text);
template <size_t N>
std::u16string FieldText(const char16_t (&field)[N]) { return FieldText(field, N); }
template <size_t N>
void SetFieldText(char16_t (&field)[N], std::u16string_view text) { SetFieldText(field, N, text); }

}  // namespace nebro::settings
