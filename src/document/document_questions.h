// The questions asked about the open document: unsaved changes before it is replaced or closed,
// and its file having gone from disk. Each function builds the text; the window shows the box
// and turns its answer back with PromptAnswer.
#pragma once

#include <string>
#include <string_view>

namespace nebro::document {

// Where the document's file stands: present (or the document is untitled), deleted, or moved
// or renamed (the file is gone but its folder is still there).
enum class DiskStatus : int {
  Present = 0,
  Deleted = 1,
  Moved = 2,
};

// Asks the file system about `path` ("" for an untitled document).
DiskStatus CheckDocumentOnDisk(const std::string& path);

// The same rule over answers already known: can the path be examined, and can its folder (the
// text up to the last '/', "/" for a file at the root) be examined.
DiskStatus DiskStatusFrom(std::string_view path, bool pathExists, bool folderExists);

// The name shown for a document: the text after the last '/', "Untitled" for an empty path.
// Bytes that are not UTF-8 show as U+FFFD.
std::string DocumentDisplayName(std::string_view path);

// The answers of the three-button question (Save, Don't Save, Cancel).
inline constexpr int kAnswerSave = 6;
inline constexpr int kAnswerDontSave = 7;
inline constexpr int kAnswerCancel = 2;

// The message box's result turned into an answer: 133 (Save) gives kAnswerSave, 134 (Don't
// Save) kAnswerDontSave, anything else (Cancel, Escape, closing the box) kAnswerCancel.
int PromptAnswer(int messageBoxResult);

struct DocumentQuestion {
  bool ask = false;        // false: nothing to ask
  std::string text;        // UTF-8
  std::string_view title;  // UTF-8
};

// The unsaved-changes question before New, Open, a drop or closing. Not asked (the answer is
// then kAnswerDontSave) when the document is unmodified and its file is where it was. On
// kAnswerSave the caller saves and stops if that fails; on kAnswerCancel it stops.
DocumentQuestion SaveChangesQuestion(std::string_view path, bool modified, DiskStatus status);

// The question when the main window becomes active and the document's file has gone; not asked
// for an untitled document or a file still present. kAnswerSave writes the text back to its
// path; kAnswerDontSave makes the document untitled (text and modified flag kept);
// kAnswerCancel does nothing, and the question comes again at the next activation.
DocumentQuestion FileChangedQuestion(std::string_view path, DiskStatus status);

}  // namespace nebro::document
