// Loading a file for the editor: open and lock, read whole, refuse binaries, decode to UTF-8,
// find the line-ending mode. The result says what the window must do: show a message box, or
// put the text into the editor and keep the open file as the document's lock.
//
// Typical use by the window (UI thread):
//   OpenedDocument opened = OpenDocumentFile(path);          // quick: open + lock
//   LoadResult r = ReadDocumentFile(std::move(opened), DefaultMaxLoadBytes());  // any thread
//   if (r.decision != LoadDecision::Loaded) -> message box (r.message, r.title), keep everything
//   else -> close the old lock, feed r.text.data()/r.text.size to the editor, drop r.text,
//           keep r.lock.Release() as the lock, record r.encoding, set r.eolMode when present.
// ReadDocumentFile touches no global state, so it may run on a worker thread. Opening the very
// file whose lock the window still holds is refused as "already open": close the lock first.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/file_lock.h"
#include "document/text_decode.h"

namespace nebro::document {

// The error code that stands for "another program holds the file's lock" (no errno clashes).
inline constexpr int kOpenErrorLocked = -32;

struct OpenedDocument {
  UniqueFd fd;
  int error = 0;          // 0 when open; else the errno of the last attempt, or kOpenErrorLocked
  bool readOnly = false;  // writing was refused, so the file was opened for reading, unlocked
  bool locked = false;    // the descriptor holds the write lock
  std::string path;
  std::vector<std::string> trace;  // log lines, "Nebro: ..." without the newline
};

// Opens `path` for reading and writing and locks it. When writing is refused (EACCES, EPERM,
// EROFS, ETXTBSY) it opens again for reading only and takes no lock. A lock held elsewhere
// closes the file and gives kOpenErrorLocked. A file system without locks opens unlocked.
OpenedDocument OpenDocumentFile(const std::string& path);

enum class LoadDecision {
  Loaded,
  OpenFailed,       // message from OpenErrorText, title "Nebro - Error"
  SizeFailed,       // "Cannot get file size."
  TooLarge,         // larger than the limit, or no memory for it
  ReadFailed,       // "Cannot read file."
  KnownBinary,      // refused by signature
  TooManyNulls,
  TooManyControls,
  NotRegular,       // a pipe, device or socket
};

struct LoadResult {
  LoadDecision decision = LoadDecision::OpenFailed;
  std::string message;  // UTF-8 text of the message box; empty when loaded
  std::string title;    // UTF-8 title of the message box; empty when loaded
  TextBuffer text;      // the editor's UTF-8 text (a UTF-8 mark is skipped by offset)
  TextEncoding encoding = TextEncoding::Utf8;
  std::optional<LineEndingMode> eolMode;  // none: the editor keeps its current mode
  UniqueFd lock;        // on success, the open file to keep as the document's lock handle
  bool readOnly = false;
  bool locked = false;
  int error = 0;        // errno (or kOpenErrorLocked) behind an OpenFailed/SizeFailed/ReadFailed
  uint64_t fileSize = 0;
  std::vector<std::string> trace;
};

// Reads the whole opened file into one buffer and decides. Takes ownership of the descriptor:
// on every refusal it is closed; on success it moves into LoadResult::lock. An `opened` that
// failed to open becomes an OpenFailed result with its message. Files larger than `maxBytes`
// are refused before anything is read. Safe on any thread.
LoadResult ReadDocumentFile(OpenedDocument opened, uint64_t maxBytes);

// OpenDocumentFile followed by ReadDocumentFile.
LoadResult LoadDocumentFile(const std::string& path, uint64_t maxBytes);

// The largest file offered to the editor: a third of the physical memory, since the read buffer
// and the editor's own copy (about twice the text, with styles) must fit side by side.
uint64_t DefaultMaxLoadBytes();

// The message for a failed open, by errno (or kOpenErrorLocked); limited to 511 characters.
// ENOENT/ENOTDIR: "File not found (error N).\n\n<path>"; EACCES/EPERM: "Access denied ...";
// kOpenErrorLocked: "File is already open by another program.\nPlease close it first.";
// any other: "Cannot open file (error N).\n\n<path>". Bytes of `path` that are not UTF-8 show
// as U+FFFD.
std::string OpenErrorText(int code, std::string_view path);

// `text` cut to at most `maxUnits` UTF-16 units, never inside a character.
std::string LimitUtf16Units(std::string text, size_t maxUnits);

// `bytes` as valid UTF-8 for display: each byte that is not well-formed UTF-8 becomes U+FFFD.
std::string DisplayableUtf8(std::string_view bytes);

}  // namespace nebro::document
