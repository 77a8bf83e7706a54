// What the Settings and Font dialogs decide without a window: their texts, the control ids used
// as widget names, the auto-save intervals, and reading the numbers typed into their fields.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nebro::settings {

inline constexpr const char* kSettingsTitle = "Nebro - Settings";
// The title carries the bytes of a mis-encoded em dash (U+00E2 U+20AC U+201D), as it always has.
inline constexpr const char* kTransparencyErrorTitle = "Nebro \xC3\xA2\xE2\x82\xAC\xE2\x80\x9D Settings";
inline constexpr const char* kTransparencyErrorText = "Transparency must be a number between 0 and 50.";
inline constexpr int kMaxTransparency = 50;

inline constexpr const char* kFontTitle = "Nebro - Font";
inline constexpr const char* kFontSizeErrorText = "Font size must be a number between 1 and 144.";
inline constexpr const char* kFontPreviewText = "AaBbCcDd 0123456789";
inline constexpr int kMinFontSize = 1;
inline constexpr int kMaxFontSize = 144;
// The face name is kept in 64 UTF-16 units with the terminator.
inline constexpr size_t kMaxFontNameUnits = 63;

// Control ids of the Settings dialog, used as the widgets' names.
enum SettingsControl : int {
  kSettingsOk = 1,
  kSettingsCancel = 2,
  kSettingsTheme = 302,
  kSettingsTransparency = 303,
  kSettingsSelectFont = 311,
  kSettingsFontLabel = 312,
  kSettingsLineNumbers = 313,
  kSettingsWordWrap = 314,
  kSettingsAutoSave = 321,
  kSettingsInterval = 322,
  kSettingsSoundKey = 331,
  kSettingsSoundNewLine = 332,
};

// The auto-save intervals offered, in minutes, and their texts ("5 min").
inline constexpr int kAutoSaveIntervals[] = {1, 5, 10, 30, 60};
std::string IntervalText(int minutes);
// The entry shown for a stored interval: the equal one, or "5 min" when there is none (off).
int IntervalIndexFor(int minutes);

// "Font: %s, %d pt%s%s" with " Bold" and " Italic" when set.
std::string FontLabelText(const std::string& face, int size, bool bold, bool italic);

// An unsigned decimal number as typed (spaces around it allowed); nothing for an empty text, a
// non-digit or a number too large to hold.
std::optional<unsigned> ReadUnsigned(std::string_view text);
// The transparency field: a number from 0 to 50, else nothing.
std::optional<int> ReadTransparency(std::string_view text);
// The font size field: a number from 1 to 144, else nothing.
std::optional<int> ReadFontSize(std::string_view text);

// The sizes the Font dialog lists (any size from 1 to 144 may be typed).
inline constexpr int kListedFontSizes[] = {6, 7, 8, 9, 10, 11, 12, 13, 14, 16, 18, 20, 22, 24, 28, 32, 36, 48, 60, 72, 96, 144};

}  // namespace nebro::settings
