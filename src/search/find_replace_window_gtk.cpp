#include "search/find_replace_window_gtk.h"

#include <string>
#include <string_view>
#include <vector>

#include "appearance/current_theme.h"
#include "common/utf.h"
#include "gtk/drawing_gtk.h"
#include "gtk/theme_broadcast_gtk.h"
#include "gtk/themed_window_gtk.h"
#include "gtk/widget_style_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "search/find_replace_replace.h"
#include "search/find_replace_rules.h"
#include "search/find_replace_search.h"
#include "settings/histories.h"

namespace nebro::search {
namespace {

using namespace sci;

// The six check boxes, in their order, with the settings field each one is kept in.
struct CheckBox {
  int id;
  const char* mnemonic;
  bool settings::AppSettings::*field;
};
constexpr CheckBox kCheckBoxes[] = {
    {kMatchCaseCheck, "Match _case", &settings::AppSettings::findMatchCase},
    {kWholeWordCheck, "_Whole word", &settings::AppSettings::findWholeWord},
    {kWrapAroundCheck, "Wrap a_round", &settings::AppSettings::findWrapAround},
    {kPreserveCaseCheck, "Pr_eserve case", &settings::AppSettings::findPreserveCase},
    {kInSelectionCheck, "Replace in _selection", &settings::AppSettings::findInSelection},
    {kColorResultsCheck, "Color res_ults", &settings::AppSettings::findColorResults},
};
constexpr int kCheckCount = 6;

struct PushButton {
  int id;
  const char* mnemonic;
};
constexpr PushButton kButtons[] = {
    {kFindNextButton, "Find _Next"},     {kFindPrevButton, "Find Pre_v"},
    {kReplaceButton, "Rep_lace"},        {kReplaceAllButton, "Replace _All"},
    {kHighlightAllButton, "_Highlight All"}, {kCloseButton, "Cl_ose"},
};

struct FindWindow {
  GtkWidget* window = nullptr;
  GtkWidget* editor = nullptr;
  settings::AppSettings* settings = nullptr;
  GtkWidget* findCombo = nullptr;
  GtkWidget* replaceCombo = nullptr;
  GtkWidget* checks[kCheckCount] = {};
  GtkWidget* status = nullptr;
  GtkCssProvider* css = nullptr;
  FindStatusKind statusKind = FindStatusKind::Normal;
  // The match list, and the document it was built from (the editor's document can be replaced
  // by another while the window is open).
  MatchListCache cache;
  sptr_t cacheDocument = 0;
  sptr_t cacheLength = -1;
  bool currentMarked = false;  // indicator 10 marks a match
  guint clearCurrentSource = 0;
  gulong notifyHandler = 0;
  gulong editorDestroyHandler = 0;
};

FindWindow* gOpen = nullptr;

// --- the editor -------------------------------------------------------------------------------

// Only what differs is set: the editor lays out (and re-wraps) every line of the document again
// after any change of an indicator's look, which takes seconds on a large document.
void StyleIndicator(GtkWidget* editor, const FindIndicatorStyle& style) {
  const auto set = [&](long get, long put, sptr_t value) {
    if (Send(editor, get, style.indicator) != value) Send(editor, put, style.indicator, value);
  };
  set(SCI_INDICGETSTYLE, SCI_INDICSETSTYLE, INDIC_ROUNDBOX);
  set(SCI_INDICGETFORE, SCI_INDICSETFORE, style.colour);
  set(SCI_INDICGETALPHA, SCI_INDICSETALPHA, style.alpha);
  set(SCI_INDICGETUNDER, SCI_INDICSETUNDER, 1);
}

void ClearIndicator(GtkWidget* editor, int indicator) {
  const sptr_t length = Send(editor, SCI_GETLENGTH);
  if (length == 0) return;
  Send(editor, SCI_SETINDICATORCURRENT, indicator);
  Send(editor, SCI_INDICATORCLEARRANGE, 0, length);
}

// Marks every range (moved by `offset`). The editor reports each filled range to whoever listens
// for changes; nobody needs a million of those, so they are held back meanwhile.
void FillIndicator(GtkWidget* editor, int indicator, const std::vector<FindMatch>& ranges, int64_t offset = 0) {
  const sptr_t mask = Send(editor, SCI_GETMODEVENTMASK);
  if (ranges.size() > 1) Send(editor, SCI_SETMODEVENTMASK, mask & ~SC_MOD_CHANGEINDICATOR);
  Send(editor, SCI_SETINDICATORCURRENT, indicator);
  for (const FindMatch& m : ranges) Send(editor, SCI_INDICATORFILLRANGE, m.start + offset, m.end - m.start);
  if (ranges.size() > 1) Send(editor, SCI_SETMODEVENTMASK, mask);
}

void SelectAndShow(GtkWidget* editor, const FindMatch& m) {
  Send(editor, SCI_SETSEL, m.start, m.end);
  Send(editor, SCI_SCROLLCARET);
}

// Indicator 10 goes, and a clearing still waiting for the main loop is no longer needed.
void ClearCurrentMatch(FindWindow* w) {
  if (w->clearCurrentSource) g_source_remove(w->clearCurrentSource);
  w->clearCurrentSource = 0;
  ClearIndicator(w->editor, kCurrentMatchIndicator.indicator);
  w->currentMarked = false;
}

// The list for the current document, rebuilt when the text, a flag or the document differs.
const std::vector<FindMatch>& Matches(FindWindow* w, const std::string& findText, const FindTextOptions& options) {
  const sptr_t document = Send(w->editor, SCI_GETDOCPOINTER);
  const sptr_t length = Send(w->editor, SCI_GETLENGTH);
  if (document != w->cacheDocument || length != w->cacheLength) ForgetMatchList(w->cache);
  RefreshMatchList(w->cache, DocumentText(w->editor), findText, options);
  w->cacheDocument = document;
  w->cacheLength = length;
  return w->cache.matches;
}

// Typing, undo or a replacement makes the list stale and moves the text under the current mark.
void OnEditorNotify(GtkWidget*, gint, SCNotification* n, gpointer data) {
  auto* w = static_cast<FindWindow*>(data);
  if (n->nmhdr.code != SCN_MODIFIED || !(n->modificationType & (SC_MOD_INSERTTEXT | SC_MOD_DELETETEXT))) return;
  ForgetMatchList(w->cache);
  // After the change is complete: the editor is not to be changed from inside its report.
  if (w->currentMarked && !w->clearCurrentSource) {
    w->clearCurrentSource = g_idle_add([](gpointer data) -> gboolean {
      auto* w = static_cast<FindWindow*>(data);
      w->clearCurrentSource = 0;
      ClearCurrentMatch(w);
      return G_SOURCE_REMOVE;
    }, w);
  }
}

// --- the window's fields ----------------------------------------------------------------------

GtkEntry* EntryOf(GtkWidget* combo) { return GTK_ENTRY(gtk_bin_get_child(GTK_BIN(combo))); }

std::string FieldText(GtkWidget* combo) { return ClipFindFieldText(gtk_entry_get_text(EntryOf(combo))); }

bool Checked(FindWindow* w, int id) {
  for (int i = 0; i < kCheckCount; ++i)
    if (kCheckBoxes[i].id == id) return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w->checks[i]));
  return false;
}

// Lists the history's entries, empty ones skipped. The rows are rewritten in place rather than
// made anew, so the list's items (and what screen readers hold of them) live on.
void FillCombo(GtkWidget* combo, const char16_t (&history)[10][256]) {
  GtkTreeModel* model = gtk_combo_box_get_model(GTK_COMBO_BOX(combo));
  GtkListStore* store = GTK_LIST_STORE(model);
  GtkTreeIter row;
  gboolean have = gtk_tree_model_get_iter_first(model, &row);
  for (const auto& entry : history) {
    const std::u16string text = settings::FieldText(entry);
    if (text.empty()) continue;
    if (!have) gtk_list_store_append(store, &row);
    gtk_list_store_set(store, &row, 0, Utf16ToUtf8(text).c_str(), -1);
    have = have && gtk_tree_model_iter_next(model, &row);
  }
  while (have) have = gtk_list_store_remove(store, &row);
}

// The text goes to the top of its history, the settings file is written, and the list is shown
// again with the text kept in the field.
void AddToHistory(FindWindow* w, GtkWidget* combo, char16_t (&history)[10][256], const std::string& text) {
  settings::PushRecent(history, Utf8ToUtf16(text));
  settings::SaveSettings(*w->settings);
  FillCombo(combo, history);
  gtk_entry_set_text(EntryOf(combo), text.c_str());
  gtk_editable_set_position(GTK_EDITABLE(EntryOf(combo)), -1);
}

std::string ThemeCss(FindStatusKind kind) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const std::string panel = ColourText(t.panelBackground), text = ColourText(t.dialogText);
  const std::string editBack = ColourText(t.editorBackground), editText = ColourText(t.editorText);
  const std::string border = ColourText(t.buttonBorder);
  return "window { background-color: " + panel + "; }\n"
         "* { font-family: \"Segoe UI\"; font-size: 9pt; }\n"
         "label, checkbutton { color: " + text + "; background-color: transparent; }\n"
         "label.nebro-find-status { color: " + ColourText(FindStatusColour(kind, t.dialogText)) + "; }\n"
         "frame > border { border: 1px solid " + border + "; border-radius: 4px; }\n"
         "entry { background-color: " + editBack + "; background-image: none; color: " + editText +
         "; caret-color: " + editText + "; border-color: " + border + "; box-shadow: none; }\n"
         "entry selection { background-color: " + ColourText(t.selectionBackground) + "; color: " +
         ColourText(t.selectionText) + "; }\n"
         "combobox button { background-color: " + editBack + "; background-image: none; color: " + editText +
         "; border-color: " + border + "; box-shadow: none; }\n"
         "button.nebro-drawn { padding: 0; min-width: 0; min-height: 0; }\n";
}

void Restyle(FindWindow* w) {
  gtk_css_provider_load_from_data(w->css, ThemeCss(w->statusKind).c_str(), -1, nullptr);
  gtk_widget_queue_draw(w->window);
}

void SetStatus(FindWindow* w, const FindStatus& status) {
  gtk_label_set_text(GTK_LABEL(w->status), status.text.c_str());
  if (status.kind != w->statusKind) {
    w->statusKind = status.kind;
    Restyle(w);
  }
}

// --- the actions ------------------------------------------------------------------------------

FindTextOptions SearchOptions(FindWindow* w) {
  return {Checked(w, kMatchCaseCheck), Checked(w, kWholeWordCheck)};
}

void FindNext(FindWindow* w, bool forward) {
  const std::string findText = FieldText(w->findCombo);
  if (findText.empty()) return;
  const bool wrapAround = Checked(w, kWrapAroundCheck);
  AddToHistory(w, w->findCombo, w->settings->findHistory, findText);
  const std::vector<FindMatch>& matches = Matches(w, findText, SearchOptions(w));
  const FindNextOutcome out = ChooseFindNextMatch(matches, forward, Send(w->editor, SCI_GETCURRENTPOS),
                                                  Send(w->editor, SCI_GETSELECTIONSTART), wrapAround);
  if (out.select) {
    ClearCurrentMatch(w);
    StyleIndicator(w->editor, kCurrentMatchIndicator);
    FillIndicator(w->editor, kCurrentMatchIndicator.indicator, {out.match});
    w->currentMarked = true;
    SelectAndShow(w->editor, out.match);
  }
  SetStatus(w, out.status);
}

void ReplaceOne(FindWindow* w) {
  const std::string findText = FieldText(w->findCombo);
  const std::string replaceText = FieldText(w->replaceCombo);
  if (findText.empty()) return;
  AddToHistory(w, w->findCombo, w->settings->findHistory, findText);
  AddToHistory(w, w->replaceCombo, w->settings->replaceHistory, replaceText);
  const sptr_t start = Send(w->editor, SCI_GETSELECTIONSTART);
  const sptr_t end = Send(w->editor, SCI_GETSELECTIONEND);
  if (end > start) {
    const std::string_view selection = DocumentText(w->editor).substr(start, end - start);
    const ReplaceOneDecision decision = DecideReplaceOne(selection, findText, replaceText, Checked(w, kMatchCaseCheck),
                                                         Checked(w, kPreserveCaseCheck));
    if (decision.replace) {
      SendPtr(w->editor, SCI_REPLACESEL, 0, decision.replacement.c_str());
      StyleIndicator(w->editor, kReplacedIndicator);
      const auto length = static_cast<int64_t>(decision.replacement.size());
      FillIndicator(w->editor, kReplacedIndicator.indicator, {FindMatch{start, start + length}});
      ForgetMatchList(w->cache);
      SetStatus(w, {kReplacedSearchingText, FindStatusKind::Normal});
    }
  }
  FindNext(w, true);
}

void ReplaceAll(FindWindow* w) {
  const std::string findText = FieldText(w->findCombo);
  const std::string replaceText = FieldText(w->replaceCombo);
  if (findText.empty()) return;
  AddToHistory(w, w->findCombo, w->settings->findHistory, findText);
  AddToHistory(w, w->replaceCombo, w->settings->replaceHistory, replaceText);
  const ReplaceAllRange range =
      ResolveReplaceAllRange(Send(w->editor, SCI_GETLENGTH), Send(w->editor, SCI_GETSELECTIONSTART),
                             Send(w->editor, SCI_GETSELECTIONEND), Checked(w, kInSelectionCheck));
  if (range.clearInSelection) {
    SetStatus(w, {kNoTextSelectedText, FindStatusKind::Warning});
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(w->checks[4]), FALSE);
  }
  const ReplaceAllOptions options{Checked(w, kMatchCaseCheck), Checked(w, kWholeWordCheck),
                                  Checked(w, kPreserveCaseCheck)};
  const ReplaceAllResult result = ReplaceAllLiteral(DocumentText(w->editor).substr(range.start, range.end - range.start),
                                                    findText, replaceText, options);
  if (result.count == 0) {
    SetStatus(w, ReplaceAllStatus(0));
    return;
  }
  Send(w->editor, SCI_BEGINUNDOACTION);
  Send(w->editor, SCI_SETTARGETRANGE, range.start, range.end);
  SendPtr(w->editor, SCI_REPLACETARGET, result.newText.size(), result.newText.data());
  Send(w->editor, SCI_ENDUNDOACTION);
  if (Checked(w, kColorResultsCheck)) {
    ClearIndicator(w->editor, kReplacedAllIndicator.indicator);
    StyleIndicator(w->editor, kReplacedAllIndicator);
    FillIndicator(w->editor, kReplacedAllIndicator.indicator, result.replaced, range.start);
  }
  SetStatus(w, ReplaceAllStatus(result.count));
  ForgetMatchList(w->cache);
}

void HighlightAll(FindWindow* w) {
  const std::string findText = FieldText(w->findCombo);
  if (findText.empty()) return;
  ClearIndicator(w->editor, kHighlightAllIndicator.indicator);
  ClearCurrentMatch(w);
  const std::vector<FindMatch>& matches = Matches(w, findText, SearchOptions(w));
  const HighlightAllOutcome out = DecideHighlightAll(matches, Checked(w, kColorResultsCheck));
  if (out.mark) {
    StyleIndicator(w->editor, kHighlightAllIndicator);
    FillIndicator(w->editor, kHighlightAllIndicator.indicator, matches);
  }
  if (out.selectLast) SelectAndShow(w->editor, out.last);
  SetStatus(w, out.status);
}

// --- building and closing ---------------------------------------------------------------------

// Whatever closes the window (Close, Escape, the title bar, the main window going): the check
// boxes are kept, the marks of the search go (those of replacements stay), and the editor gets
// the focus back.
void OnDestroy(GtkWidget*, gpointer data) {
  auto* w = static_cast<FindWindow*>(data);
  for (int i = 0; i < kCheckCount; ++i)
    w->settings->*kCheckBoxes[i].field = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w->checks[i]));
  settings::SaveSettings(*w->settings);
  if (w->clearCurrentSource) g_source_remove(w->clearCurrentSource);
  w->clearCurrentSource = 0;
  if (w->editor) {
    ClearIndicator(w->editor, kHighlightAllIndicator.indicator);
    ClearIndicator(w->editor, kCurrentMatchIndicator.indicator);
    g_signal_handler_disconnect(w->editor, w->notifyHandler);
    g_signal_handler_disconnect(w->editor, w->editorDestroyHandler);
    GtkWidget* top = gtk_widget_get_toplevel(w->editor);
    if (!gtk_widget_in_destruction(top) && gtk_widget_get_visible(top)) {
      gtk_window_present(GTK_WINDOW(top));
      gtk_widget_grab_focus(w->editor);
    }
  }
  ForgetMatchList(w->cache);
  g_object_unref(w->css);
  if (gOpen == w) gOpen = nullptr;
  delete w;
}

gboolean OnButtonDraw(GtkWidget* button, cairo_t* cr, gpointer data) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const bool pressed = gtk_widget_get_state_flags(button) & GTK_STATE_FLAG_ACTIVE;
  const bool focused = gtk_widget_has_focus(button);
  const ButtonLook look{pressed ? t.buttonFacePressed : t.buttonFace, focused ? t.buttonFocusBorder : t.buttonBorder,
                        t.buttonText, focused};
  DrawPushButton(button, cr, look, FindDialogControlText(GPOINTER_TO_INT(data)));
  return TRUE;
}

void OnButtonClicked(GtkButton* button, gpointer data) {
  auto* w = static_cast<FindWindow*>(data);
  if (!w->editor) return;
  try {
    switch (std::stoi(gtk_widget_get_name(GTK_WIDGET(button)))) {
      case kFindNextButton: FindNext(w, true); break;
      case kFindPrevButton: FindNext(w, false); break;
      case kReplaceButton: ReplaceOne(w); break;
      case kReplaceAllButton: ReplaceAll(w); break;
      case kHighlightAllButton: HighlightAll(w); break;
      case kCloseButton: gtk_window_close(GTK_WINDOW(w->window)); break;
      default: break;
    }
  } catch (...) {
    g_warning("Nebro: a Find & Replace action failed");
  }
}

void Name(GtkWidget* widget, int id) { gtk_widget_set_name(widget, std::to_string(id).c_str()); }

void SetAccessibleName(GtkWidget* widget, const char* name) {
  if (AtkObject* a11y = gtk_widget_get_accessible(widget)) atk_object_set_name(a11y, name);
}

GtkWidget* Label(const char* mnemonic, int id, GtkWidget* target) {
  GtkWidget* label = target ? gtk_label_new_with_mnemonic(mnemonic) : gtk_label_new(mnemonic);
  Name(label, id);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  if (target) gtk_label_set_mnemonic_widget(GTK_LABEL(label), target);
  return label;
}

// A history combo box; its field is reached by the label's text without the colon.
GtkWidget* HistoryCombo(int id, const char* accessibleName, const char16_t (&history)[10][256]) {
  GtkWidget* combo = gtk_combo_box_text_new_with_entry();
  Name(combo, id);
  gtk_widget_set_hexpand(combo, TRUE);
  GtkEntry* entry = EntryOf(combo);
  gtk_entry_set_activates_default(entry, TRUE);  // Enter is Find Next
  gtk_entry_set_width_chars(entry, 28);
  SetAccessibleName(combo, accessibleName);
  SetAccessibleName(GTK_WIDGET(entry), accessibleName);
  FillCombo(combo, history);
  return combo;
}

FindWindow* Build(GtkWindow* owner, GtkWidget* editor, settings::AppSettings& settings) {
  auto* w = new FindWindow;
  w->editor = editor;
  w->settings = &settings;
  w->css = gtk_css_provider_new();

  ThemedWindowOptions options;
  options.parent = owner;
  options.title = kFindDialogTitle;
  options.name = "NebroFindReplace";
  options.resizable = false;
  w->window = CreateThemedWindow(options);
  GtkWidget* window = w->window;
  if (AtkObject* a11y = gtk_widget_get_accessible(window)) atk_object_set_role(a11y, ATK_ROLE_DIALOG);
  g_signal_connect(window, "destroy", G_CALLBACK(OnDestroy), w);

  GtkWidget* outer = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
  gtk_container_set_border_width(GTK_CONTAINER(outer), 12);
  GtkWidget* columns = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 14);
  GtkWidget* left = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);

  GtkWidget* fields = gtk_grid_new();
  gtk_grid_set_row_spacing(GTK_GRID(fields), 8);
  gtk_grid_set_column_spacing(GTK_GRID(fields), 10);
  w->findCombo = HistoryCombo(kFindWhatCombo, "Find what", settings.findHistory);
  w->replaceCombo = HistoryCombo(kReplaceWithCombo, "Replace with", settings.replaceHistory);
  gtk_grid_attach(GTK_GRID(fields), Label("_Find what:", kFindWhatLabel, w->findCombo), 0, 0, 1, 1);
  gtk_grid_attach(GTK_GRID(fields), w->findCombo, 1, 0, 1, 1);
  gtk_grid_attach(GTK_GRID(fields), Label("Re_place with:", kReplaceWithLabel, w->replaceCombo), 0, 1, 1, 1);
  gtk_grid_attach(GTK_GRID(fields), w->replaceCombo, 1, 1, 1, 1);
  gtk_box_pack_start(GTK_BOX(left), fields, FALSE, FALSE, 0);

  GtkWidget* group = gtk_frame_new(FindDialogControlText(kOptionsGroup));
  Name(group, kOptionsGroup);
  GtkWidget* checkColumns = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 16);
  gtk_container_set_border_width(GTK_CONTAINER(checkColumns), 8);
  GtkWidget* checkColumn[2] = {gtk_box_new(GTK_ORIENTATION_VERTICAL, 4), gtk_box_new(GTK_ORIENTATION_VERTICAL, 4)};
  for (int i = 0; i < kCheckCount; ++i) {
    GtkWidget* check = gtk_check_button_new_with_mnemonic(kCheckBoxes[i].mnemonic);
    Name(check, kCheckBoxes[i].id);
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(check), settings.*kCheckBoxes[i].field);
    w->checks[i] = check;
    gtk_box_pack_start(GTK_BOX(checkColumn[i / 3]), check, FALSE, FALSE, 0);
  }
  for (GtkWidget* c : checkColumn) gtk_box_pack_start(GTK_BOX(checkColumns), c, TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(group), checkColumns);
  gtk_box_pack_start(GTK_BOX(left), group, FALSE, FALSE, 0);

  GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  for (const PushButton& b : kButtons) {
    // Painted by hand; the label GTK keeps inside carries the mnemonic and the accessible name.
    GtkWidget* button = gtk_button_new_with_mnemonic(b.mnemonic);
    Name(button, b.id);
    gtk_style_context_add_class(gtk_widget_get_style_context(button), "nebro-drawn");
    gtk_widget_set_size_request(button, 108, 28);
    g_signal_connect(button, "draw", G_CALLBACK(OnButtonDraw), GINT_TO_POINTER(b.id));
    g_signal_connect(button, "clicked", G_CALLBACK(OnButtonClicked), w);
    gtk_box_pack_start(GTK_BOX(buttons), button, FALSE, FALSE, 0);
    if (b.id == kFindNextButton) {
      gtk_widget_set_can_default(button, TRUE);
      gtk_window_set_default(GTK_WINDOW(window), button);
    }
  }

  gtk_box_pack_start(GTK_BOX(columns), left, TRUE, TRUE, 0);
  gtk_box_pack_start(GTK_BOX(columns), buttons, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(outer), columns, TRUE, TRUE, 0);

  GtkWidget* statusRow = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
  gtk_box_pack_start(GTK_BOX(statusRow), Label(FindDialogControlText(kStatusLabel), kStatusLabel, nullptr), FALSE, FALSE, 0);
  w->status = gtk_label_new("");
  Name(w->status, kStatusText);
  gtk_label_set_xalign(GTK_LABEL(w->status), 0);
  gtk_label_set_ellipsize(GTK_LABEL(w->status), PANGO_ELLIPSIZE_END);
  gtk_style_context_add_class(gtk_widget_get_style_context(w->status), "nebro-find-status");
  SetAccessibleName(w->status, "Status");
  gtk_box_pack_start(GTK_BOX(statusRow), w->status, TRUE, TRUE, 0);
  gtk_box_pack_start(GTK_BOX(outer), statusRow, FALSE, FALSE, 0);
  gtk_container_add(GTK_CONTAINER(window), outer);

  Restyle(w);
  AddCssToTree(window, w->css);
  FollowThemeChanges(window, [w] { Restyle(w); });

  w->notifyHandler = g_signal_connect(editor, kNotifySignal, G_CALLBACK(OnEditorNotify), w);
  w->editorDestroyHandler = g_signal_connect(editor, "destroy", G_CALLBACK(+[](GtkWidget*, FindWindow* w) {
    w->editor = nullptr;  // its handlers go with it
    gtk_widget_destroy(w->window);
  }), w);
  gtk_widget_show_all(window);
  return w;
}

// A selection on one line becomes the find text. Only its first characters can be kept, so a
// long one is cut before it is measured.
void TakeSelection(FindWindow* w) {
  const sptr_t start = Send(w->editor, SCI_GETSELECTIONSTART);
  const sptr_t end = Send(w->editor, SCI_GETSELECTIONEND);
  if (end <= start) return;
  const std::string_view selection = DocumentText(w->editor).substr(start, end - start);
  if (selection.find_first_of("\r\n") != std::string_view::npos) return;
  gtk_entry_set_text(EntryOf(w->findCombo), ClipFindFieldText(selection.substr(0, 4 * kFindFieldMaxUnits)).c_str());
}

}  // namespace

void ShowFindReplace(GtkWindow* owner, GtkWidget* editor, settings::AppSettings& settings) {
  if (!editor) return;
  if (gOpen && gOpen->editor != editor) gtk_widget_destroy(gOpen->window);
  if (!gOpen) gOpen = Build(owner, editor, settings);
  TakeSelection(gOpen);
  gtk_window_present(GTK_WINDOW(gOpen->window));
  GtkWidget* entry = GTK_WIDGET(EntryOf(gOpen->findCombo));
  gtk_widget_grab_focus(entry);
  gtk_editable_select_region(GTK_EDITABLE(entry), 0, -1);
}

GtkWidget* FindReplaceWindow() { return gOpen ? gOpen->window : nullptr; }

}  // namespace nebro::search
