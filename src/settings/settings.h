// The settings record and its file "nebro.cfg": a 16-byte header and the record's fields packed
// little-endian, with no padding, in the order below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nebro {

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

// True when the file was read and checked; otherwise the defaults are put in place.
bool LoadSettings(AppSettings& s);
bool LoadSettingsFrom(const std::string& path, AppSettings& s);
// True when the whole file was written (through SafeWriteFile, so a failed save leaves the old
// file as it was).
bool SaveSettings(const AppSettings& s);
bool SaveSettingsTo(const std::string& path, const AppSettings& s);

// The per-user folder: the configuration root followed by "/Nebro", created on every call.
// Empty when there is no configuration root.
std::string GetSettingsFolder();
// The folder followed by "/nebro.cfg", or "nebro.cfg" when the folder is empty.
std::string GetSettingsFilePath();
// The GTK layer sets the root at start-up (g_get_user_config_dir); tests point it elsewhere.
// By default it is $XDG_CONFIG_HOME, else $HOME/.config.
void SetConfigRoot(const std::string& root);

// "<folder>/temp_YYYYMMDD_HHMMSS_mmm.pdf" from the local time; empty when the folder is empty.
std::string MakeTempPdfPath();
std::string MakeTempPath(const std::string& folder, std::string_view extension);

// Deletes temp_* files ending in .html, .pdf or .txt (any case) older than 24 hours.
void CleanupTempFiles();
// The same over a given folder and "now" in 100-nanosecond ticks since the Unix epoch.
void CleanupTempFilesIn(const std::string& folder, uint64_t nowTicks);
uint64_t NowTicks();

// Text fields: read a zero-terminated array as a string, and store a string truncated so that
// the terminator fits.
std::u16string FieldText(const char16_t* field, size_t capacity);
void SetFieldText(char16_t* field, size_t capacity, std::u16string_view text);
template <size_t N>
std::u16string FieldText(const char16_t (&field)[N]) { return FieldText(field, N); }
template <size_t N>
void SetFieldText(char16_t (&field)[N], std::u16string_view text) { SetFieldText(field, N, text); }

// The search dialogs' history helper over ten entries of 256 units: an entry equal to the text
// (case-sensitive) moves to the top, otherwise the last entry falls out. Copies are truncated to
// 255 units. (The recent-files list, which ignores case, has its own in document/.)
void PushRecent(char16_t (&list)[10][256], std::u16string_view text);

}  // namespace nebro
