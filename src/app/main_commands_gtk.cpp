#include "app/main_commands_gtk.h"

#include "app/main_window_gtk.h"
#include "appearance/lexer_setup_gtk.h"
#include "appearance/line_numbers_gtk.h"
#include "appearance/theme_gtk.h"
#include "appearance/themes.h"
#include "common/command_ids.h"
#include "export/export_window_gtk.h"
#include "help/help_window_gtk.h"
#include "markdown/markdown_preview_gtk.h"
#include "print/page_setup_gtk.h"
#include "print/print_job_gtk.h"
#include "print/print_preview_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "search/find_replace_window_gtk.h"
#include "search/regex_window_gtk.h"
#include "settings/font_dialog_gtk.h"
#include "settings/settings.h"
#include "settings/settings_dialog_gtk.h"

namespace nebro::app {
namespace {

using namespace sci;

void ToggleLineNumbers() {
  settings::gSettings.lineNumbers = !settings::gSettings.lineNumbers;
  if (!gMain.margin) return;
  gtk_widget_set_visible(gMain.margin, settings::gSettings.lineNumbers);
  appearance::UpdateMargin(gMain.margin);
}

void ToggleWordWrap() {
  settings::gSettings.wordWrap = !settings::gSettings.wordWrap;
  appearance::ApplyWordWrap(gMain.editor);
  appearance::UpdateMargin(gMain.margin);
}

Command EditorMessage(int id, const char* label, const char* key, unsigned message) {
  return {id, label, {key}, "", [message] { Send(gMain.editor, message); }, {}};
}

}  // namespace

void AddMainWindowCommands(CommandTable& t) {
  AddCommand(t, {kCmdExit, "Exit", {}, "", [] { RequestClose(); }, {}});
  AddCommand(t, EditorMessage(kCmdUndo, "Undo", "Ctrl+Z", SCI_UNDO));
  AddCommand(t, EditorMessage(kCmdRedo, "Redo", "Ctrl+Y", SCI_REDO));
  AddCommand(t, EditorMessage(kCmdCut, "Cut", "Ctrl+X", SCI_CUT));
  AddCommand(t, EditorMessage(kCmdCopy, "Copy", "Ctrl+C", SCI_COPY));
  AddCommand(t, EditorMessage(kCmdPaste, "Paste", "Ctrl+V", SCI_PASTE));
  AddCommand(t, EditorMessage(kCmdSelectAll, "Select All", "Ctrl+A", SCI_SELECTALL));
  AddCommand(t, {kCmdFindReplace, "Find & Replace", {"Ctrl+F", "Ctrl+H"}, "Ctrl+H", [] {
                   search::ShowFindReplace(GTK_WINDOW(gMain.window), gMain.editor, settings::gSettings);
                 }, {}});
  // The menu names Ctrl+Shift+H although the key is Ctrl+Alt+H; the label is kept as it is.
  AddCommand(t, {kCmdRegexSearch, "Regex Search", {"Ctrl+Alt+H"}, "Ctrl+Shift+H", [] {
                   search::ShowRegexDialog(GTK_WINDOW(gMain.window), gMain.editor, settings::gSettings);
                 }, {}});
  AddCommand(t, {kCmdFont, "Font", {"Ctrl+Shift+F"}, "", [] {
                   settings::ShowFontDialog(GTK_WINDOW(gMain.window), gMain.editor, gMain.margin);
                 }, {}});
  AddCommand(t, {kCmdPrint, "Print", {"Ctrl+P"}, "", [] {
                   print::PrintEditor(GTK_WINDOW(gMain.window), gMain.editor,
                                      print::PageStyleFromSettings(settings::gSettings), gMain.doc.path);
                 }, {}});
  AddCommand(t, {kCmdPrintPreview, "Print Preview", {}, "", [] {
                   print::OpenPrintPreview(GTK_WINDOW(gMain.window), gMain.editor,
                                           print::PageStyleFromSettings(settings::gSettings));
                 }, {}});
  AddCommand(t, {kCmdPageSetup, "Page Setup", {}, "", [] {
                   print::RunPageSetup(GTK_WINDOW(gMain.window), settings::gSettings);
                 }, {}});
  AddCommand(t, {kCmdMarkdownPreview, "MD Preview (HTML)", {}, "", [] {
                   markdown::ShowMarkdownPreview(GTK_WINDOW(gMain.window), gMain.editor, gMain.doc.path, settings::gSettings);
                 }, {}});
  AddCommand(t, {kCmdExport, "Export", {}, "", [] {
                   exports::ShowExportWindow(GTK_WINDOW(gMain.window), gMain.editor, gMain.doc.path, settings::gSettings);
                 }, {}});
  AddCommand(t, {kCmdSettings, "Settings", {}, "", [] {
                   settings::ShowSettingsDialog({GTK_WINDOW(gMain.window), gMain.editor, gMain.margin, ApplyTransparency,
                                                 [](int minutes) { document::RestartAutoSaveTimer(MainDocumentWindow(), minutes); }});
                 }, {}});
  AddCommand(t, {kCmdHelp, "Help", {"F1"}, "", [] {
                   help::ShowHelp(GTK_WINDOW(gMain.window), gMain.commands, settings::gSettings);
                 }, {}});
  AddCommand(t, {kCmdLineNumbers, "Line Numbers", {}, "", ToggleLineNumbers, {}});
  AddCommand(t, {kCmdWordWrap, "Word Wrap", {}, "", ToggleWordWrap, {}});
  for (appearance::ThemeId id = 0; id < appearance::kThemeCount; ++id) {
    AddCommand(t, {kCmdThemeFirst + static_cast<int>(id), appearance::ThemeName(id), {}, "", [id] { appearance::SetTheme(id, true); }, {}});
  }
  for (int step = 0; step <= kCmdTransparencyLast - kCmdTransparencyFirst; ++step) {
    AddCommand(t, {kCmdTransparencyFirst + step, "Transparency", {}, "", [step] {
                     settings::gSettings.transparency = step * 10;
                     ApplyTransparency(settings::gSettings.transparency);
                     settings::SaveSettings(settings::gSettings);
                   }, {}});
  }
}

}  // namespace nebro::app
