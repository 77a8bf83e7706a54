#include "document/document_questions.h"

#include <sys/stat.h>

#include "document/document_texts.h"
#include "document/file_load.h"

namespace nebro::document {

namespace {

bool Examinable(const std::string& path) {
  struct stat st {};
  return stat(path.c_str(), &st) == 0;
}

std::string FolderPart(std::string_view path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return slash == 0 ? std::string("/") : std::string(path.substr(0, slash));
}

std::string Quoted(std::string_view path) { return "\"" + DocumentDisplayName(path) + "\""; }

}  // namespace

DiskStatus DiskStatusFrom(std::string_view path, bool pathExists, bool folderExists) {
  if (path.empty() || pathExists) return DiskStatus::Present;
  if (path.find('/') == std::string_view::npos) return DiskStatus::Deleted;
  return folderExists ? DiskStatus::Moved : DiskStatus::Deleted;
}

DiskStatus CheckDocumentOnDisk(const std::string& path) {
  if (path.empty()) return DiskStatus::Present;
  const bool pathExists = Examinable(path);
  const std::string folder = FolderPart(path);
  const bool folderExists = !pathExists && !folder.empty() && Examinable(folder);
  return DiskStatusFrom(path, pathExists, folderExists);
}

std::string DocumentDisplayName(std::string_view path) {
  if (path.empty()) return "Untitled";
  const size_t slash = path.rfind('/');
  return DisplayableUtf8(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

int PromptAnswer(int messageBoxResult) {
  if (messageBoxResult == 133) return kAnswerSave;
  if (messageBoxResult == 134) return kAnswerDontSave;
  return kAnswerCancel;
}

DocumentQuestion SaveChangesQuestion(std::string_view path, bool modified, DiskStatus status) {
  DocumentQuestion q;
  q.title = kTitleSaveChanges;
  if (status == DiskStatus::Present) {
    if (!modified) return q;
    q.ask = true;
    q.text = "Save changes to \"" + DocumentDisplayName(path) + "\"?";
    return q;
  }
  q.ask = true;
  q.text = Quoted(path) + (status == DiskStatus::Moved
                               ? " was moved or renamed while open in Nebro.\n"
                               : " was deleted from disk while open in Nebro.\n");
  q.text += modified ? "Do you want to save your changes?"
                     : "Do you want to restore it to the original location?";
  return q;
}

DocumentQuestion FileChangedQuestion(std::string_view path, DiskStatus status) {
  DocumentQuestion q;
  q.title = kTitleFileChanged;
  if (path.empty() || status == DiskStatus::Present) return q;
  q.ask = true;
  q.text = Quoted(path) + (status == DiskStatus::Moved ? " was moved or renamed outside of Nebro."
                                                        : " was deleted from disk.");
  q.text += "\n\nDo you want to save it to the original location?";
  return q;
}

}  // namespace nebro::document
