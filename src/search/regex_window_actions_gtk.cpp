// What the Regex Search window's buttons and its list do.
#include <gio/gio.h>

#include <mutex>

#include "common/colour.h"
#include "common/utf.h"
#include "gtk/viewer_launch_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "search/regex_replace.h"
#include "search/regex_search_run_gtk.h"
#include "search/regex_window_parts_gtk.h"
#include "search/regex_window_rules.h"
#include "settings/data_folder.h"

namespace nebro::search {

using sci::Send;
using sci::SendPtr;

namespace {

// The editor indicator of the match highlights (Find & Replace draws with 8 to 10).
constexpr int kHighlightIndicator = 12;

void PrepareIndicator(GtkWidget* editor) {
  Send(editor, sci::SCI_INDICSETSTYLE, kHighlightIndicator, sci::INDIC_STRAIGHTBOX);
  Send(editor, sci::SCI_INDICSETFORE, kHighlightIndicator, Rgb(255, 220, 0));
  Send(editor, sci::SCI_INDICSETALPHA, kHighlightIndicator, 70);
  Send(editor, sci::SCI_INDICSETOUTLINEALPHA, kHighlightIndicator, 70);
  Send(editor, sci::SCI_INDICSETUNDER, kHighlightIndicator, 1);
  Send(editor, sci::SCI_SETINDICATORCURRENT, kHighlightIndicator);
}

void Highlight(GtkWidget* editor, uint64_t start, uint64_t end) {
  const auto length = static_cast<uint64_t>(Send(editor, sci::SCI_GETLENGTH));
  start = std::min(start, length);
  end = std::min(end, length);
  if (end > start) Send(editor, sci::SCI_INDICATORFILLRANGE, start, static_cast<sci::sptr_t>(end - start));
}

// Selects [start, end) (byte offsets) and scrolls it into view; highlighted with "Color results".
void SelectBytes(RegexWindow& w, uint64_t start, uint64_t end, bool highlight) {
  const auto length = static_cast<uint64_t>(Send(w.editor, sci::SCI_GETLENGTH));
  Send(w.editor, sci::SCI_SETSEL, std::min(start, length), static_cast<sci::sptr_t>(std::min(end, length)));
  Send(w.editor, sci::SCI_SCROLLCARET);
  if (highlight) {
    ClearRegexHighlights(w);
    Highlight(w.editor, start, end);
  }
}

bool On(GtkWidget* check) { return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(check)); }

// Appends a dialog entry to the session log.
void Log(const std::u16string& pattern, const std::string& entry) {
  RegexSearchState& state = SharedRegexSearchState();
  std::lock_guard<std::mutex> lock(state.regexMutex);
  EnsureSessionLog(state.log, settings::GetSettingsFolder(), ResultsTimeNow(), Utf16ToUtf8(pattern));
  WriteLogEntry(state.log, entry);
}

// Keeps the typed texts in the histories, most recent first.
void Remember(RegexWindow& w, const std::u16string& pattern, const std::u16string* replacement) {
  PushRegexHistory(w.settings->regexPatternHistory, pattern);
  if (replacement) PushRegexHistory(w.settings->regexReplaceHistory, *replacement);
  FillRegexHistories(w);  // saved with the options when the window closes
}

// The pattern, or the empty-pattern message and nothing.
bool ReadPattern(RegexWindow& w, std::u16string& pattern) {
  pattern = FieldOf(w.pattern);
  if (!pattern.empty()) return true;
  SetRegexStatus(w, kRegexEmptyPatternText);
  return false;
}

bool Failed(RegexWindow& w, RegexStatus status) {
  if (status == RegexStatus::TooComplex) {
    SetRegexStatus(w, Utf16ToUtf8(kRegexTooComplexText));
    return true;
  }
  return false;
}

}  // namespace

void ClearRegexHighlights(RegexWindow& w) {
  if (!w.editor) return;
  PrepareIndicator(w.editor);
  Send(w.editor, sci::SCI_INDICATORCLEARRANGE, 0, Send(w.editor, sci::SCI_GETLENGTH));
}

void HighlightRegexRows(RegexWindow& w, uint64_t upTo) {
  if (!w.editor) {
    w.highlighted = upTo;
    return;
  }
  PrepareIndicator(w.editor);
  for (; w.highlighted < upTo; ++w.highlighted) {
    RegexListSegment* segment = nullptr;
    const RegexMatch* m = RegexResultsMatch(w.model, w.highlighted, &segment);
    if (!m || !segment->document) continue;
    RegexListDocument& doc = *segment->document;
    const uint64_t start = RegexListByteOffset(doc, static_cast<uint64_t>(m->start));
    const uint64_t end = RegexListByteOffset(doc, static_cast<uint64_t>(m->end));
    Highlight(w.editor, start, end);
  }
}

void SelectRegexListRow(RegexWindow& w, uint64_t row) {
  RegexListSegment* segment = nullptr;
  const RegexMatch* m = RegexResultsMatch(w.model, row, &segment);
  if (!m || !segment->document || !w.editor) return;
  RegexListDocument& doc = *segment->document;
  const uint64_t start = RegexListByteOffset(doc, static_cast<uint64_t>(m->start));
  const uint64_t end = RegexListByteOffset(doc, static_cast<uint64_t>(m->end));
  const auto length = static_cast<uint64_t>(Send(w.editor, sci::SCI_GETLENGTH));
  Send(w.editor, sci::SCI_SETSEL, std::min(start, length), static_cast<sci::sptr_t>(std::min(end, length)));
  Send(w.editor, sci::SCI_SCROLLCARET);
}

void OnRegexFindNext(RegexWindow& w, bool previous) {
  std::u16string pattern;
  if (!w.editor || !ReadPattern(w, pattern)) return;
  Remember(w, pattern, nullptr);
  RegexPtr regex = BuildRegex(pattern, On(w.matchCase), On(w.wholeWord));
  if (!regex) {
    SetRegexStatus(w, kRegexInvalidPatternText);
    return;
  }
  const std::string utf8 = sci::DocumentCopy(w.editor);
  const std::u16string text = Utf8ToUtf16(utf8);
  const auto caret = static_cast<uint64_t>(Send(w.editor, previous ? sci::SCI_GETANCHOR : sci::SCI_GETCURRENTPOS));
  const uint64_t from = Utf8OffsetToUtf16Index(utf8, caret);
  const RegexFound found = previous ? FindPrevMatch(text, *regex, from) : FindNextMatch(text, *regex, from);
  if (Failed(w, found.status)) return;
  if (!found.match) {
    SetRegexStatus(w, kRegexNoMatchText);
    return;
  }
  const RegexMatch& m = *found.match;
  RegexOffsetCache offsets;
  const uint64_t start = Utf16IndexToUtf8Offset(utf8, offsets, static_cast<uint64_t>(m.start));
  const uint64_t end = Utf16IndexToUtf8Offset(utf8, offsets, static_cast<uint64_t>(m.end));
  SelectBytes(w, start, end, On(w.colorResults));
  const auto line = Send(w.editor, sci::SCI_LINEFROMPOSITION, start) + 1;
  Log(pattern, FindLogEntry(previous, ResultsTimeNow(), line, static_cast<int64_t>(start), m.text));
  SetRegexStatus(w, RegexFoundStatus(m.text, m.start));
}

void OnRegexReplace(RegexWindow& w) {
  std::u16string pattern;
  if (!w.editor || !ReadPattern(w, pattern)) return;
  const std::u16string replacement = FieldOf(w.replacement);
  Remember(w, pattern, &replacement);
  const auto selStart = static_cast<uint64_t>(Send(w.editor, sci::SCI_GETSELECTIONSTART));
  const auto selEnd = static_cast<uint64_t>(Send(w.editor, sci::SCI_GETSELECTIONEND));
  if (selStart == selEnd) {
    SetRegexStatus(w, kRegexNoSelectionText);
    return;
  }
  RegexPtr regex = BuildRegex(pattern, On(w.matchCase), On(w.wholeWord));
  if (!regex) {
    SetRegexStatus(w, kRegexInvalidPatternText);
    return;
  }
  std::string selected(selEnd - selStart + 1, '\0');
  SendPtr(w.editor, sci::SCI_GETSELTEXT, 0, selected.data());
  selected.resize(selEnd - selStart);
  const std::u16string before = Utf8ToUtf16(selected);
  const std::optional<RegexCaptures> captures = MatchWhole(*regex, before);
  if (!captures) {
    SetRegexStatus(w, kRegexSelectionMismatchText);
    return;
  }
  std::u16string after = ExpandReplacement(replacement, *captures);
  if (On(w.preserveCase)) after = ApplyPreserveCase(after, before);
  const std::string afterUtf8 = Utf16ToUtf8(after);
  Send(w.editor, sci::SCI_BEGINUNDOACTION);
  Send(w.editor, sci::SCI_SETTARGETSTART, selStart);
  Send(w.editor, sci::SCI_SETTARGETEND, selEnd);
  SendPtr(w.editor, sci::SCI_REPLACETARGET, afterUtf8.size(), afterUtf8.data());
  Send(w.editor, sci::SCI_ENDUNDOACTION);
  SelectBytes(w, selStart, selStart + afterUtf8.size(), On(w.colorResults));
  Log(pattern, ReplaceLogEntry(ResultsTimeNow(), before, after));
  SetRegexStatus(w, RegexReplacedStatus(after));
}

void OnRegexReplaceAll(RegexWindow& w) {
  std::u16string pattern;
  if (!w.editor || !ReadPattern(w, pattern)) return;
  const std::u16string replacement = FieldOf(w.replacement);
  Remember(w, pattern, &replacement);
  RegexSearchState& state = SharedRegexSearchState();
  if (RegexRunActive()) {
    StopRegexRun(state);
    gtk_widget_set_sensitive(w.cancel, FALSE);
    gtk_widget_set_sensitive(w.findNext, TRUE);
  }
  const RegexReplaceAllResult result = ReplaceAllText(Utf8ToUtf16(sci::DocumentCopy(w.editor)), pattern, replacement,
                                                      On(w.matchCase), On(w.wholeWord), On(w.preserveCase));
  if (result.status == RegexStatus::InvalidPattern) {
    SetRegexStatus(w, kRegexInvalidPatternText);
    return;
  }
  if (Failed(w, result.status)) return;
  if (result.count == 0) {
    SetRegexStatus(w, kRegexNothingToReplaceText);
    return;
  }
  const std::string text = Utf16ToUtf8(result.text);
  Send(w.editor, sci::SCI_BEGINUNDOACTION);
  Send(w.editor, sci::SCI_SETTARGETSTART, 0);
  Send(w.editor, sci::SCI_SETTARGETEND, Send(w.editor, sci::SCI_GETLENGTH));
  SendPtr(w.editor, sci::SCI_REPLACETARGET, text.size(), text.data());
  Send(w.editor, sci::SCI_ENDUNDOACTION);
  EmptyRegexList(w);
  ClearRegexHighlights(w);
  {
    std::lock_guard<std::mutex> lock(state.regexMutex);
    state.results.clear();
  }
  SetFindAllLabel(w, false);
  Log(pattern, ReplaceAllLogEntry(ResultsTimeNow(), result.count, pattern, replacement));
  SetRegexStatus(w, RegexReplacedAllStatus(result.count));
}

void OnRegexFindAll(RegexWindow& w) {
  std::u16string pattern;
  if (!w.editor || !ReadPattern(w, pattern)) return;
  Remember(w, pattern, nullptr);
  ReadRegexOptions(w);
  const settings::AppSettings& s = *w.settings;
  RegexSearchState& state = SharedRegexSearchState();
  StopRegexRun(state);

  const bool findMore = w.findMoreShown;
  if (!findMore) {
    EmptyRegexList(w);
    if (s.regexColorResults) ClearRegexHighlights(w);
    gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(w.progress), 0);
  }
  gtk_widget_set_sensitive(w.findNext, FALSE);
  gtk_widget_set_sensitive(w.cancel, TRUE);
  SetRegexStatus(w, kRegexSearchingText);

  RegexSearchRequest request;
  request.pattern = pattern;
  request.matchCase = s.regexMatchCase;
  request.wholeWord = s.regexWholeWord;
  request.preserveCase = s.regexPreserveCase;
  request.batchSize = s.regexBatchSize;
  request.maxMatches = s.regexMaxMatches;
  request.includeLineNumbers = s.regexIncludeLineNumbers;
  request.outputFormat = static_cast<int32_t>(s.regexOutputFormat);
  request.findMore = findMore;
  // The one copy made here; the worker makes its own from it, so the window answers at once.
  w.runDocument = std::make_shared<RegexListDocument>();
  w.runDocument->utf8 = sci::DocumentCopy(w.editor);

  RegexRunReports reports;
  reports.status = [](const std::string& text, double fraction) {
    if (!gRegexWindow) return;
    SetRegexStatus(*gRegexWindow, text);
    if (fraction >= 0) gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(gRegexWindow->progress), fraction);
  };
  reports.batch = [](std::vector<RegexMatch> matches) {
    RegexWindow* x = gRegexWindow;
    if (!x) return;
    RegexListSegment segment;
    segment.document = x->runDocument;
    segment.matches = std::move(matches);
    segment.outputFormat = std::max(0, gtk_combo_box_get_active(GTK_COMBO_BOX(x->outputFormat)));
    segment.includeLineNumbers = On(x->includeLines);
    RegexResultsAppend(x->model, std::move(segment));
    ScheduleRegexListFlush(*x);
  };
  reports.done = [](RegexCompletion completion) {
    RegexWindow* x = gRegexWindow;
    if (!x) return;
    RegexSearchState& st = SharedRegexSearchState();
    uint64_t total = 0;
    bool active = false;
    {
      std::lock_guard<std::mutex> lock(st.regexMutex);
      total = st.totalMatches;
      active = st.sessionActive;
    }
    for (GtkWidget* b : {x->findNext, x->replace, x->replaceAll, x->openResults}) gtk_widget_set_sensitive(b, TRUE);
    gtk_widget_set_sensitive(x->cancel, FALSE);
    SetFindAllLabel(*x, active && total > 0);
    switch (completion) {
      case RegexCompletion::InvalidPattern:
        SetRegexStatus(*x, kRegexInvalidPatternText);
        break;
      case RegexCompletion::Stopped:
        SetRegexStatus(*x, RegexStoppedStatus(total));
        break;
      case RegexCompletion::Complete:
        SetRegexStatus(*x, RegexCompleteStatus(total));
        gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(x->progress), 1.0);
        break;
      case RegexCompletion::TooComplex:
        break;  // the run's last status already says so
    }
  };
  auto prepare = [document = w.runDocument](RegexSearchRequest& r) {
    r.documentUtf8 = document->utf8;
    document->ascii = IsAscii(document->utf8);
  };
  if (!StartRegexRun(std::move(request), state, settings::GetSettingsFolder(), gRegexColorResults, reports, prepare)) {
    SetRegexStatus(w, kRegexThreadFailedText);
    for (GtkWidget* b : {w.findNext, w.findPrev, w.replaceAll}) gtk_widget_set_sensitive(b, TRUE);
    gtk_widget_set_sensitive(w.cancel, FALSE);
  }
}

void OnRegexCancel(RegexWindow& w) {
  if (!RegexRunActive()) return;
  SharedRegexSearchState().cancelRequested = true;
  SetRegexStatus(w, kRegexCancellingText);
  gtk_widget_set_sensitive(w.cancel, FALSE);
}

void OnRegexOpenResults(RegexWindow& w) {
  std::string path;
  {
    RegexSearchState& state = SharedRegexSearchState();
    std::lock_guard<std::mutex> lock(state.regexMutex);
    path = state.log.resultsPath;
  }
  if (path.empty()) {
    SetRegexStatus(w, kRegexNoResultsFileText);
    return;
  }
  gchar* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
  const bool opened = uri && g_app_info_launch_default_for_uri(uri, nullptr, nullptr);
  g_free(uri);
  if (!opened) LaunchViewer(GTK_WINDOW(w.window), path);  // no desktop application for text
  SetRegexStatus(w, kRegexResultsOpenedText);
}

void OnRegexApply(RegexWindow& w) {
  ReadRegexOptions(w);
  const settings::AppSettings& s = *w.settings;
  settings::SaveSettings(*w.settings);
  ClearRegexHighlights(w);
  w.highlighted = 0;
  if (s.regexColorResults) ScheduleRegexListFlush(w);
  SetRegexStatus(w, kRegexSettingsSavedText);
}

}  // namespace nebro::search
