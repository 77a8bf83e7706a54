// Fixed texts of opening and saving documents, as UTF-8. A few titles carry the three characters
// U+00E2 U+20AC U+201D where an em dash was meant ("Nebro â€” Error"); they are these titles'
// exact bytes, so do not "repair" them into a dash.
#pragma once

#include <string_view>

namespace nebro::document {

#define NEBRO_MANGLED_DASH "\xC3\xA2\xE2\x82\xAC\xE2\x80\x9D"

inline constexpr std::string_view kTitleError = "Nebro - Error";
inline constexpr std::string_view kTitleErrorMangled = "Nebro " NEBRO_MANGLED_DASH " Error";
inline constexpr std::string_view kTitleCannotOpen = "Nebro - Cannot Open";
inline constexpr std::string_view kTitleSaveChanges = "Nebro";
inline constexpr std::string_view kTitleFileChanged = "Nebro " NEBRO_MANGLED_DASH " File Changed";
inline constexpr std::string_view kTitleRecentMissing = "Nebro " NEBRO_MANGLED_DASH " Recent Files";
inline constexpr std::string_view kTitleRecentClear = "Nebro - Recent Files";

#undef NEBRO_MANGLED_DASH

inline constexpr std::string_view kTextCannotGetSize = "Cannot get file size.";
inline constexpr std::string_view kTextCannotRead = "Cannot read file.";
inline constexpr std::string_view kTextKnownBinary = "Cannot open binary file.\n\n";
inline constexpr std::string_view kTextTooManyNulls =
    "This file appears to be a binary file and cannot be opened as text.";
inline constexpr std::string_view kTextTooManyControls =
    "This file contains binary control characters and cannot be opened as text.";
inline constexpr std::string_view kTextNotRegular =
    "Cannot open this file: it is a device, a pipe or a socket, not a file of text.";
inline constexpr std::string_view kTextSizelessTooLong =
    "Cannot open this file: it does not say how long it is, and it is longer than 64 MB.";
inline constexpr std::string_view kTextLockedElsewhere =
    "File is already open by another program.\nPlease close it first.";
// Shown with kTitleErrorMangled when saving fails, whatever the reason.
inline constexpr std::string_view kTextCannotSave = "Cannot save file.";
// Shown with kTitleErrorMangled when the Open dialog cannot be created.
inline constexpr std::string_view kTextFileDialogFailed = "Failed to create file dialog.";
inline constexpr std::string_view kTextClearRecent = "Clear the entire Recent Files list?";

struct FileFilter {
  std::string_view label;
  std::string_view patterns;  // separated by ';'
};

// The Open dialog's file types, the first selected.
inline constexpr std::string_view kOpenDialogTitle = "Open File - Nebro";
inline constexpr FileFilter kOpenFileTypes[] = {
    {"All Text Files",
     "*.txt;*.md;*.cpp;*.h;*.c;*.hpp;*.cxx;*.cc;*.json;*.xml;*.ini;*.log;*.csv;*.bat;*.cmd;*.py;"
     "*.js;*.css;*.html"},
    {"Text Files", "*.txt"},
    {"Source Files", "*.cpp;*.h;*.c;*.hpp"},
    {"Markdown", "*.md"},
    {"All Files", "*.*"},
};

// The Save As dialog's filters, the first selected; a name without extension gets ".txt".
inline constexpr std::string_view kSaveAsDialogTitle = "Save As - Nebro";
inline constexpr std::string_view kSaveAsDefaultExtension = "txt";
inline constexpr FileFilter kSaveAsFilters[] = {
    {"Text Files (*.txt)", "*.txt"},
    {"Markdown (*.md)", "*.md"},
    {"Source Files (*.cpp)", "*.cpp"},
    {"All Files (*.*)", "*.*"},
};

}  // namespace nebro::document
