#include "app/document_state.h"

namespace nebro {

std::string DisplayName(const std::string& path) {
  if (path.empty()) return "Untitled";
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string DocumentTitle(const DocumentState& doc) {
  return "Nebro - " + DisplayName(doc.path) + (doc.modified ? " *" : "");
}

}  // namespace nebro
