// What the Regex Search window's files share: the open window's widgets and the editor helpers.
// Internal to src/search.
#pragma once

#include <gtk/gtk.h>

#include <atomic>
#include <memory>
#include <string>

#include "search/regex_results_model_gtk.h"
#include "settings/settings.h"

namespace nebro::search {

struct RegexWindow {
  GtkWindow* owner = nullptr;
  GtkWidget* editor = nullptr;  // null once the editor is gone
  settings::AppSettings* settings = nullptr;

  GtkWidget* window = nullptr;
  GtkWidget* pattern = nullptr;  // combo boxes with an entry
  GtkWidget* replacement = nullptr;
  GtkWidget* matchCase = nullptr;
  GtkWidget* wholeWord = nullptr;
  GtkWidget* preserveCase = nullptr;
  GtkWidget* colorResults = nullptr;
  GtkWidget* batchSize = nullptr;
  GtkWidget* maxMatches = nullptr;
  GtkWidget* includeLines = nullptr;
  GtkWidget* outputFormat = nullptr;
  GtkWidget* list = nullptr;
  GtkWidget* progress = nullptr;
  GtkWidget* findNext = nullptr;
  GtkWidget* findPrev = nullptr;
  GtkWidget* replace = nullptr;
  GtkWidget* findAll = nullptr;
  GtkWidget* replaceAll = nullptr;
  GtkWidget* openResults = nullptr;
  GtkWidget* cancel = nullptr;
  GtkWidget* status = nullptr;

  GtkTreeModel* model = nullptr;  // owned
  bool findMoreShown = false;     // the Find All button reads "Find More"
  std::shared_ptr<RegexListDocument> runDocument;  // the text the current run searches
  uint64_t highlighted = 0;       // list rows highlighted so far
  guint flushSource = 0;          // shows stored rows in slices
};

// The one open window, or null.
extern RegexWindow* gRegexWindow;
// The "Color results" option as the worker reads it.
extern std::atomic<bool> gRegexColorResults;

// Window side (regex_window_gtk.cpp).
void SetRegexStatus(RegexWindow& w, const std::string& text);
void SetFindAllLabel(RegexWindow& w, bool findMore);
void EmptyRegexList(RegexWindow& w);
void ScheduleRegexListFlush(RegexWindow& w);
std::u16string FieldOf(GtkWidget* combo);  // a combo box's text, at most 511 units
void ReadRegexOptions(RegexWindow& w);      // controls -> kept options (and the worker's flag)
void FillRegexHistories(RegexWindow& w);

// Actions (regex_window_actions_gtk.cpp).
void OnRegexFindNext(RegexWindow& w, bool previous);
void OnRegexReplace(RegexWindow& w);
void OnRegexReplaceAll(RegexWindow& w);
void OnRegexFindAll(RegexWindow& w);
void OnRegexCancel(RegexWindow& w);
void OnRegexOpenResults(RegexWindow& w);
void OnRegexApply(RegexWindow& w);
void SelectRegexListRow(RegexWindow& w, uint64_t row);
void HighlightRegexRows(RegexWindow& w, uint64_t upTo);
void ClearRegexHighlights(RegexWindow& w);

}  // namespace nebro::search
