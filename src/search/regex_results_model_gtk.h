// The Regex Search result list as a tree model that holds the match records themselves and makes
// each row's text only when the view asks for it, so hundreds of thousands of matches cost no
// string or widget per row. One text column.
#pragma once

#include <gtk/gtk.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "search/regex_engine.h"
#include "search/regex_offsets.h"

namespace nebro::search {

// The document copy a run searched: the full-line format reads its lines, and selecting a match
// in the editor maps its UTF-16 indices to byte offsets.
struct RegexListDocument {
  std::string utf8;
  RegexOffsetCache offsets;
  // Every UTF-16 index is its byte offset. Found out by the worker before it reports matches.
  std::atomic<bool> ascii{false};
  uint64_t walkUnit = 0;  // where the last forward walk stopped, as an index and a byte offset
  uint64_t walkByte = 0;
};

// Whether `utf8` holds only ASCII characters.
bool IsAscii(std::string_view utf8);

// The byte offset of UTF-16 index `index` of the document. Matches are asked for in the order
// they were found, so a walk forward from the previous answer makes a whole list cost one pass.
uint64_t RegexListByteOffset(RegexListDocument& document, uint64_t index);

// Matches that arrived together, with the output format in force when they came.
struct RegexListSegment {
  std::shared_ptr<RegexListDocument> document;
  std::vector<RegexMatch> matches;
  int32_t outputFormat = 1;
  bool includeLineNumbers = true;
  uint64_t firstRow = 0;  // set by RegexResultsAppend
};

// A new empty model (a full reference).
GtkTreeModel* NewRegexResultsModel();

// Stores matches after the last row. The view learns of them with RegexResultsAnnounce.
void RegexResultsAppend(GtkTreeModel* model, RegexListSegment segment);

// Rows stored, and rows the view has been told of.
uint64_t RegexResultsStored(GtkTreeModel* model);
uint64_t RegexResultsShown(GtkTreeModel* model);

// Tells the view of stored rows up to `upTo` (one row-inserted signal each).
void RegexResultsAnnounce(GtkTreeModel* model, uint64_t upTo);
// Counts every stored row as shown without signals: for a model that no view is attached to.
void RegexResultsShowAllSilently(GtkTreeModel* model);

// The match of a row and the segment it came in; null past the shown rows.
const RegexMatch* RegexResultsMatch(GtkTreeModel* model, uint64_t row, RegexListSegment** segment);

}  // namespace nebro::search
