#include "search/regex_window_gtk.h"

#include <algorithm>
#include <cstdlib>

#include "appearance/current_theme.h"
#include "common/colour.h"
#include "common/utf.h"
#include "gtk/themed_window_gtk.h"
#include "search/regex_search_run_gtk.h"
#include "search/regex_window_parts_gtk.h"
#include "search/regex_window_rules.h"

namespace nebro::search {

RegexWindow* gRegexWindow = nullptr;
std::atomic<bool> gRegexColorResults{true};

namespace {

// Rows the view is told of one by one, in slices. When more than kAnnounceLimit arrive at once
// and the list stays below kReattachLimit rows, the model is attached again instead: one pass over
// the rows, about a third of the signals' cost, but all in one main-loop turn.
constexpr uint64_t kAnnounceLimit = 20000;
constexpr uint64_t kReattachLimit = 150000;
// A slice of list work on the main loop stays below this many microseconds.
constexpr gint64 kSliceMicros = 40000;

// The theme's colours for the window's controls; a screen provider scoped to the window's name.
void LoadWindowCss(GtkCssProvider* provider) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  auto c = [](Colour colour) { return ColourText(colour); };
  const std::string w = std::string("#") + kRegexWindowName;
  const std::string css =
      w + " entry, " + w + " combobox button, " + w + " check, " + w + " progressbar trough {"
          " background-image: none; background-color: " + c(t.inputBackground) + "; color: " + c(t.controlText) +
          "; border-color: " + c(t.border) + "; }\n" +
      w + " entry selection { background-color: " + c(t.selectionBackground) + "; color: " +
          c(t.selectionText) + "; }\n" +
      w + " button { background-image: none; background-color: " + c(t.buttonFace) + "; color: " +
          c(t.buttonText) + "; border-color: " + c(t.buttonBorder) + "; box-shadow: none; text-shadow: none; }\n" +
      w + " button:hover { background-color: " + c(t.hoverBackground) + "; }\n" +
      w + " button:active, " + w + " button:checked { background-color: " + c(t.buttonFacePressed) + "; }\n" +
      w + " button:focus { border-color: " + c(t.buttonFocusBorder) + "; }\n" +
      w + " button:disabled, " + w + " button:disabled label, " + w + " label:disabled, " + w +
          " checkbutton:disabled label { color: " + c(t.disabledText) + "; }\n" +
      w + " checkbutton label, " + w + " frame > label { color: " + c(t.dialogText) + "; }\n" +
      w + " frame > border { border-color: " + c(t.border) + "; }\n" +
      w + " scrolledwindow { border-color: " + c(t.border) + "; }\n" +
      w + " treeview.view { background-color: " + c(t.listBackground) + "; color: " + c(t.controlText) + "; }\n" +
      w + " treeview.view:selected { background-color: " + c(t.selectionBackground) + "; color: " +
          c(t.selectionText) + "; }\n" +
      w + " progressbar progress { background-image: none; background-color: " + c(t.selectionBackground) +
          "; border-color: " + c(t.selectionBackground) + "; }\n" +
      w + " #" + std::to_string(kRegexStatusText) + " { color: " + c(t.dialogText) + "; }\n";
  gtk_css_provider_load_from_data(provider, css.c_str(), -1, nullptr);
}

GtkCssProvider* WindowCss() {
  static GtkCssProvider* provider = nullptr;
  if (!provider) {
    provider = gtk_css_provider_new();
    gtk_style_context_add_provider_for_screen(gdk_screen_get_default(), GTK_STYLE_PROVIDER(provider),
                                              GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  }
  return provider;
}

void Name(GtkWidget* widget, int id) { gtk_widget_set_name(widget, std::to_string(id).c_str()); }

void AccessibleName(GtkWidget* widget, const char* name) {
  atk_object_set_name(gtk_widget_get_accessible(widget), name);
}

// A label with a mnemonic that focuses `target`.
GtkWidget* Label(const char* text, int id, GtkWidget* target) {
  GtkWidget* label = gtk_label_new_with_mnemonic(text);
  Name(label, id);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_mnemonic_widget(GTK_LABEL(label), target);
  return label;
}

GtkWidget* Check(const char* text, int id, bool on) {
  GtkWidget* check = gtk_check_button_new_with_mnemonic(text);
  Name(check, id);
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(check), on);
  return check;
}

GtkWidget* Button(const char* text, int id, void (*act)(RegexWindow&)) {
  GtkWidget* button = gtk_button_new_with_mnemonic(text);
  Name(button, id);
  g_signal_connect(button, "clicked", G_CALLBACK(+[](GtkButton*, gpointer data) {
    if (gRegexWindow) reinterpret_cast<void (*)(RegexWindow&)>(data)(*gRegexWindow);
  }), reinterpret_cast<gpointer>(act));
  return button;
}

GtkWidget* HistoryCombo(int id, const char* accessibleName) {
  GtkWidget* combo = gtk_combo_box_text_new_with_entry();
  Name(combo, id);
  GtkWidget* entry = gtk_bin_get_child(GTK_BIN(combo));
  gtk_entry_set_max_length(GTK_ENTRY(entry), 511);
  gtk_entry_set_activates_default(GTK_ENTRY(entry), TRUE);
  gtk_widget_set_hexpand(combo, TRUE);
  AccessibleName(combo, accessibleName);
  AccessibleName(entry, accessibleName);
  return combo;
}

// A number edit: digits only.
GtkWidget* NumberEdit(int id, uint32_t value, const char* accessibleName) {
  GtkWidget* entry = gtk_entry_new();
  Name(entry, id);
  gtk_entry_set_width_chars(GTK_ENTRY(entry), 10);
  gtk_entry_set_max_length(GTK_ENTRY(entry), 10);
  gtk_entry_set_input_purpose(GTK_ENTRY(entry), GTK_INPUT_PURPOSE_DIGITS);
  gtk_entry_set_text(GTK_ENTRY(entry), std::to_string(value).c_str());
  g_signal_connect(entry, "insert-text", G_CALLBACK(+[](GtkEditable* editable, const gchar* text, gint length,
                                                        gint*, gpointer) {
    const size_t n = length < 0 ? strlen(text) : static_cast<size_t>(length);
    for (size_t i = 0; i < n; ++i) {
      if (text[i] < '0' || text[i] > '9') {
        g_signal_stop_emission_by_name(editable, "insert-text");
        gtk_widget_error_bell(GTK_WIDGET(editable));
        return;
      }
    }
  }), nullptr);
  AccessibleName(entry, accessibleName);
  return entry;
}

uint32_t NumberOf(GtkWidget* entry) {
  const unsigned long long v = std::strtoull(gtk_entry_get_text(GTK_ENTRY(entry)), nullptr, 10);
  return static_cast<uint32_t>(std::min<unsigned long long>(v, 0xFFFFFFFFull));
}

bool On(GtkWidget* check) { return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(check)); }

// Shows stored rows and highlights them, a slice per main-loop turn.
gboolean FlushList(gpointer) {
  RegexWindow* w = gRegexWindow;
  if (!w) return G_SOURCE_REMOVE;
  const gint64 end = g_get_monotonic_time() + kSliceMicros;
  const uint64_t stored = RegexResultsStored(w->model);
  const uint64_t before = RegexResultsShown(w->model);
  uint64_t shown = before;
  if (stored - shown > kAnnounceLimit && stored <= kReattachLimit) {
    gtk_tree_view_set_model(GTK_TREE_VIEW(w->list), nullptr);
    RegexResultsShowAllSilently(w->model);
    gtk_tree_view_set_model(GTK_TREE_VIEW(w->list), w->model);
  } else {
    while (shown < stored && g_get_monotonic_time() < end) {
      shown = std::min(stored, shown + 500);
      RegexResultsAnnounce(w->model, shown);
    }
  }
  shown = RegexResultsShown(w->model);
  if (shown > before && shown == stored) {  // every row is in: the list shows its last entry
    GtkTreePath* last = gtk_tree_path_new_from_indices(static_cast<gint>(shown - 1), -1);
    gtk_tree_view_scroll_to_cell(GTK_TREE_VIEW(w->list), last, nullptr, FALSE, 0, 0);
    gtk_tree_path_free(last);
  }
  if (On(w->colorResults)) {
    while (w->highlighted < shown && g_get_monotonic_time() < end) {
      HighlightRegexRows(*w, std::min(shown, w->highlighted + 2000));
    }
  } else {
    w->highlighted = shown;
  }
  if (shown < stored || w->highlighted < shown) return G_SOURCE_CONTINUE;
  w->flushSource = 0;
  return G_SOURCE_REMOVE;
}

void OnRowChosen(GtkTreeView* view, gpointer) {
  if (!gRegexWindow) return;
  GtkTreePath* path = nullptr;
  gtk_tree_view_get_cursor(view, &path, nullptr);
  if (!path) return;
  const gint row = gtk_tree_path_get_indices(path)[0];
  gtk_tree_path_free(path);
  if (row >= 0) SelectRegexListRow(*gRegexWindow, static_cast<uint64_t>(row));
}

void OnDestroy(GtkWidget*, gpointer data) {
  auto* w = static_cast<RegexWindow*>(data);
  StopRegexRun(SharedRegexSearchState());
  if (w->flushSource) g_source_remove(w->flushSource);
  if (w->editor) g_signal_handlers_disconnect_by_data(w->editor, w);
  ReadRegexOptions(*w);
  settings::SaveSettings(*w->settings);
  gRegexWindow = nullptr;
  g_object_unref(w->model);
  delete w;
}

void Build(RegexWindow& w) {
  const settings::AppSettings& s = *w.settings;
  ThemedWindowOptions options;
  options.parent = w.owner;
  options.title = kRegexWindowTitle;
  options.name = kRegexWindowName;
  w.window = CreateThemedWindow(options, [](GtkWidget*) { LoadWindowCss(WindowCss()); });
  gtk_window_set_default_size(GTK_WINDOW(w.window), 640, 600);

  GtkWidget* grid = gtk_grid_new();
  gtk_container_set_border_width(GTK_CONTAINER(grid), 12);
  gtk_grid_set_row_spacing(GTK_GRID(grid), 8);
  gtk_grid_set_column_spacing(GTK_GRID(grid), 8);
  gtk_container_add(GTK_CONTAINER(w.window), grid);

  w.pattern = HistoryCombo(kRegexPatternCombo, "Pattern:");
  w.replacement = HistoryCombo(kRegexReplaceCombo, "Replace:");
  gtk_grid_attach(GTK_GRID(grid), Label("_Pattern:", kRegexPatternLabel, gtk_bin_get_child(GTK_BIN(w.pattern))), 0, 0, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), w.pattern, 1, 0, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), Label("R_eplace:", kRegexReplaceLabel, gtk_bin_get_child(GTK_BIN(w.replacement))), 0, 1, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), w.replacement, 1, 1, 1, 1);

  // Options.
  GtkWidget* frame = gtk_frame_new("Options");
  Name(frame, kRegexOptionsGroup);
  GtkWidget* opts = gtk_grid_new();
  gtk_container_set_border_width(GTK_CONTAINER(opts), 8);
  gtk_grid_set_row_spacing(GTK_GRID(opts), 6);
  gtk_grid_set_column_spacing(GTK_GRID(opts), 12);
  gtk_container_add(GTK_CONTAINER(frame), opts);
  w.matchCase = Check("Match _case", kRegexMatchCaseCheck, s.regexMatchCase);
  w.wholeWord = Check("_Whole word", kRegexWholeWordCheck, s.regexWholeWord);
  w.preserveCase = Check("Pre_serve case", kRegexPreserveCaseCheck, s.regexPreserveCase);
  w.colorResults = Check("Color res_ults", kRegexColorResultsCheck, s.regexColorResults);
  gtk_grid_attach(GTK_GRID(opts), w.matchCase, 0, 0, 1, 1);
  gtk_grid_attach(GTK_GRID(opts), w.wholeWord, 1, 0, 1, 1);
  gtk_grid_attach(GTK_GRID(opts), w.preserveCase, 2, 0, 1, 1);
  gtk_grid_attach(GTK_GRID(opts), w.colorResults, 3, 0, 1, 1);
  w.batchSize = NumberEdit(kRegexBatchSizeEdit, s.regexBatchSize, "Batch size:");
  w.maxMatches = NumberEdit(kRegexMaxMatchesEdit, s.regexMaxMatches, "Max matches (0 = unlimited):");
  GtkWidget* numbers = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
  gtk_box_pack_start(GTK_BOX(numbers), Label("_Batch size:", kRegexBatchSizeLabel, w.batchSize), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(numbers), w.batchSize, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(numbers), Label("Max _matches (0 = unlimited):", kRegexMaxMatchesLabel, w.maxMatches),
                     FALSE, FALSE, 8);
  gtk_box_pack_start(GTK_BOX(numbers), w.maxMatches, FALSE, FALSE, 0);
  gtk_grid_attach(GTK_GRID(opts), numbers, 0, 1, 4, 1);
  w.includeLines = Check("Include _line numbers", kRegexIncludeLinesCheck, s.regexIncludeLineNumbers);
  w.outputFormat = gtk_combo_box_text_new();
  Name(w.outputFormat, kRegexOutputFormatList);
  for (const char* f : {"Only matches", "With line numbers", "Full lines"}) {
    gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(w.outputFormat), f);
  }
  gtk_combo_box_set_active(GTK_COMBO_BOX(w.outputFormat), s.regexOutputFormat <= 2 ? static_cast<gint>(s.regexOutputFormat) : 1);
  AccessibleName(w.outputFormat, "Output format:");
  GtkWidget* formatRow = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
  gtk_box_pack_start(GTK_BOX(formatRow), w.includeLines, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(formatRow), Label("_Output format:", kRegexOutputFormatLabel, w.outputFormat), FALSE, FALSE, 8);
  gtk_box_pack_start(GTK_BOX(formatRow), w.outputFormat, FALSE, FALSE, 0);
  GtkWidget* apply = Button("Appl_y", kRegexApplyButton, OnRegexApply);
  gtk_box_pack_end(GTK_BOX(formatRow), apply, FALSE, FALSE, 0);
  gtk_grid_attach(GTK_GRID(opts), formatRow, 0, 2, 4, 1);
  gtk_grid_attach(GTK_GRID(grid), frame, 0, 2, 2, 1);

  // The result list: a virtual list in fixed-height mode.
  w.model = NewRegexResultsModel();
  w.list = gtk_tree_view_new_with_model(w.model);
  Name(w.list, kRegexResultList);
  gtk_tree_view_set_headers_visible(GTK_TREE_VIEW(w.list), FALSE);
  gtk_tree_view_set_enable_search(GTK_TREE_VIEW(w.list), FALSE);
  GtkCellRenderer* cell = gtk_cell_renderer_text_new();
  g_object_set(cell, "ellipsize", PANGO_ELLIPSIZE_END, nullptr);
  GtkTreeViewColumn* column = gtk_tree_view_column_new_with_attributes("", cell, "text", 0, nullptr);
  gtk_tree_view_column_set_sizing(column, GTK_TREE_VIEW_COLUMN_FIXED);
  gtk_tree_view_column_set_expand(column, TRUE);
  gtk_tree_view_append_column(GTK_TREE_VIEW(w.list), column);
  gtk_tree_view_set_fixed_height_mode(GTK_TREE_VIEW(w.list), TRUE);
  AccessibleName(w.list, "Results");
  g_signal_connect(w.list, "cursor-changed", G_CALLBACK(OnRowChosen), nullptr);
  g_signal_connect(w.list, "row-activated", G_CALLBACK(+[](GtkTreeView* view, GtkTreePath*, GtkTreeViewColumn*,
                                                           gpointer) { OnRowChosen(view, nullptr); }), nullptr);
  GtkWidget* scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_shadow_type(GTK_SCROLLED_WINDOW(scroller), GTK_SHADOW_IN);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_AUTOMATIC, GTK_POLICY_AUTOMATIC);
  gtk_widget_set_vexpand(scroller, TRUE);
  gtk_widget_set_size_request(scroller, -1, 160);
  gtk_container_add(GTK_CONTAINER(scroller), w.list);
  gtk_grid_attach(GTK_GRID(grid), scroller, 0, 3, 2, 1);

  w.progress = gtk_progress_bar_new();
  Name(w.progress, kRegexProgressBar);
  AccessibleName(w.progress, "Progress");
  gtk_grid_attach(GTK_GRID(grid), w.progress, 0, 4, 2, 1);

  // The buttons, in two rows.
  GtkWidget* row1 = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  GtkWidget* row2 = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  gtk_box_set_homogeneous(GTK_BOX(row1), TRUE);
  gtk_box_set_homogeneous(GTK_BOX(row2), TRUE);
  w.findNext = Button("_Find / Next", kRegexFindNextButton, [](RegexWindow& x) { OnRegexFindNext(x, false); });
  w.findPrev = Button("Find Pre_v", kRegexFindPrevButton, [](RegexWindow& x) { OnRegexFindNext(x, true); });
  w.replace = Button("_Replace", kRegexReplaceButton, OnRegexReplace);
  w.findAll = Button("Fin_d All", kRegexFindAllButton, OnRegexFindAll);
  w.replaceAll = Button("Replace _All", kRegexReplaceAllButton, OnRegexReplaceAll);
  w.openResults = Button("Open Resul_ts", kRegexOpenResultsButton, OnRegexOpenResults);
  w.cancel = Button("Ca_ncel", kRegexCancelButton, OnRegexCancel);
  GtkWidget* close = Button("Close", kRegexCloseButton, [](RegexWindow& x) { gtk_window_close(GTK_WINDOW(x.window)); });
  for (GtkWidget* b : {w.findNext, w.findPrev, w.replace, w.findAll}) gtk_box_pack_start(GTK_BOX(row1), b, TRUE, TRUE, 0);
  for (GtkWidget* b : {w.replaceAll, w.openResults, w.cancel, close}) gtk_box_pack_start(GTK_BOX(row2), b, TRUE, TRUE, 0);
  gtk_grid_attach(GTK_GRID(grid), row1, 0, 5, 2, 1);
  gtk_grid_attach(GTK_GRID(grid), row2, 0, 6, 2, 1);

  w.status = gtk_label_new(kRegexReadyText);
  Name(w.status, kRegexStatusText);
  gtk_label_set_xalign(GTK_LABEL(w.status), 0);
  gtk_label_set_ellipsize(GTK_LABEL(w.status), PANGO_ELLIPSIZE_END);
  gtk_label_set_selectable(GTK_LABEL(w.status), FALSE);
  gtk_grid_attach(GTK_GRID(grid), w.status, 0, 7, 2, 1);

  gtk_widget_set_sensitive(w.openResults, FALSE);
  gtk_widget_set_sensitive(w.cancel, FALSE);
  gtk_widget_set_can_default(w.findNext, TRUE);
  gtk_window_set_default(GTK_WINDOW(w.window), w.findNext);
  FillRegexHistories(w);
  // The most recent pattern and replacement are there to be used again.
  gtk_combo_box_set_active(GTK_COMBO_BOX(w.pattern), 0);
  gtk_combo_box_set_active(GTK_COMBO_BOX(w.replacement), 0);
  g_signal_connect(w.window, "destroy", G_CALLBACK(OnDestroy), &w);
  g_signal_connect(w.editor, "destroy", G_CALLBACK(+[](GtkWidget*, gpointer data) {
    auto* x = static_cast<RegexWindow*>(data);
    x->editor = nullptr;
    gtk_widget_destroy(x->window);
  }), &w);
}

}  // namespace

void SetRegexStatus(RegexWindow& w, const std::string& text) { gtk_label_set_text(GTK_LABEL(w.status), text.c_str()); }

void SetFindAllLabel(RegexWindow& w, bool findMore) {
  w.findMoreShown = findMore;
  gtk_button_set_label(GTK_BUTTON(w.findAll), findMore ? "Fin_d More" : "Fin_d All");
}

void EmptyRegexList(RegexWindow& w) {
  GtkTreeModel* fresh = NewRegexResultsModel();
  gtk_tree_view_set_model(GTK_TREE_VIEW(w.list), fresh);
  g_object_unref(w.model);
  w.model = fresh;
  w.highlighted = 0;
}

void ScheduleRegexListFlush(RegexWindow& w) {
  // Ahead of the editor's own idle work (wrapping a large document can take it for seconds), after
  // drawing and input.
  if (!w.flushSource) w.flushSource = g_idle_add_full(G_PRIORITY_DEFAULT_IDLE - 10, FlushList, nullptr, nullptr);
}

std::u16string FieldOf(GtkWidget* combo) {
  std::u16string text = Utf8ToUtf16(gtk_entry_get_text(GTK_ENTRY(gtk_bin_get_child(GTK_BIN(combo)))));
  if (text.size() > 511) text.resize(511);
  return text;
}

void ReadRegexOptions(RegexWindow& w) {
  settings::AppSettings& s = *w.settings;
  s.regexMatchCase = On(w.matchCase);
  s.regexWholeWord = On(w.wholeWord);
  s.regexPreserveCase = On(w.preserveCase);
  s.regexColorResults = On(w.colorResults);
  s.regexIncludeLineNumbers = On(w.includeLines);
  s.regexBatchSize = NumberOf(w.batchSize);
  s.regexMaxMatches = NumberOf(w.maxMatches);
  s.regexOutputFormat = static_cast<uint32_t>(std::max(0, gtk_combo_box_get_active(GTK_COMBO_BOX(w.outputFormat))));
  gRegexColorResults = s.regexColorResults;
}

void FillRegexHistories(RegexWindow& w) {
  const std::pair<GtkWidget*, char16_t(*)[512]> lists[] = {{w.pattern, w.settings->regexPatternHistory},
                                                           {w.replacement, w.settings->regexReplaceHistory}};
  for (const auto& [combo, history] : lists) {
    GtkEntry* entry = GTK_ENTRY(gtk_bin_get_child(GTK_BIN(combo)));
    const std::string typed = gtk_entry_get_text(entry);
    gtk_combo_box_text_remove_all(GTK_COMBO_BOX_TEXT(combo));
    for (int i = 0; i < 10; ++i) {
      const std::u16string item = settings::FieldText(history[i], 512);
      if (!item.empty()) gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(combo), Utf16ToUtf8(item).c_str());
    }
    gtk_entry_set_text(entry, typed.c_str());
  }
}

void ShowRegexDialog(GtkWindow* owner, GtkWidget* editor, settings::AppSettings& settings) {
  if (gRegexWindow) {
    gtk_window_present(GTK_WINDOW(gRegexWindow->window));
    return;
  }
  auto* w = new RegexWindow();
  w->owner = owner;
  w->editor = editor;
  w->settings = &settings;
  gRegexColorResults = settings.regexColorResults;
  Build(*w);
  gRegexWindow = w;
  gtk_widget_show_all(w->window);
  gtk_window_present(GTK_WINDOW(w->window));
  gtk_widget_grab_focus(gtk_bin_get_child(GTK_BIN(w->pattern)));
}

}  // namespace nebro::search
