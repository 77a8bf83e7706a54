#include "document/document_state.h"

#include <filesystem>
#include <system_error>

#include "document/document_questions.h"

namespace nebro::document {

std::string DocumentPath(const std::string& path) {
  if (path.empty()) return path;
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

std::string DocumentTitle(const DocumentState& doc) {
  return "Nebro - " + DocumentDisplayName(doc.path) + (doc.modified ? " *" : "");
}

}  // namespace nebro::document
