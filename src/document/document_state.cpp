#include "document/document_state.h"

#include "document/document_questions.h"

namespace nebro::document {

std::string DocumentTitle(const DocumentState& doc) {
  return "Nebro - " + DocumentDisplayName(doc.path) + (doc.modified ? " *" : "");
}

}  // namespace nebro::document
