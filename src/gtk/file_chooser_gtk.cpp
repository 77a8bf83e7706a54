#include "gtk/file_chooser_gtk.h"

#include "gtk/object_ptr_gtk.h"
#include "gtk/shutdown_gtk.h"

namespace nebro {

namespace {

// "*.txt;*.md" -> {"*.txt", "*.md"}
std::vector<std::string> Patterns(const std::string& patterns) {
  std::vector<std::string> out;
  for (size_t start = 0; start <= patterns.size();) {
    size_t end = patterns.find(';', start);
    if (end == std::string::npos) end = patterns.size();
    out.push_back(patterns.substr(start, end - start));
    start = end + 1;
  }
  return out;
}

// "*.md" -> "*.[mM][dD]": file names are matched in either case (README.MD, Notes.Txt).
std::string EitherCase(const std::string& pattern) {
  std::string out;
  for (const char c : pattern) {
    const char lower = g_ascii_tolower(c), upper = g_ascii_toupper(c);
    if (lower == upper) {
      out += c;
    } else {
      out += {'[', lower, upper, ']'};
    }
  }
  return out;
}

}  // namespace

void AddChooserFilters(GtkFileChooser* chooser, const std::vector<ChooserFilter>& filters, size_t selected) {
  for (size_t i = 0; i < filters.size(); ++i) {
    GtkFileFilter* filter = gtk_file_filter_new();
    gtk_file_filter_set_name(filter, filters[i].label.c_str());
    for (const std::string& pattern : Patterns(filters[i].patterns)) {
      // "*.*" is every file, with or without an extension.
      gtk_file_filter_add_pattern(filter, pattern == "*.*" ? "*" : EitherCase(pattern).c_str());
    }
    gtk_file_chooser_add_filter(chooser, filter);
    if (i == selected) gtk_file_chooser_set_filter(chooser, filter);
  }
}

size_t FilterForFile(const std::vector<ChooserFilter>& filters, const std::string& path) {
  const size_t slash = path.rfind('/');
  const size_t dot = path.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return 0;
  const GCharPtr extension(g_ascii_strdown(path.c_str() + dot, -1));
  const std::string wanted = "*" + std::string(extension.get());
  for (size_t i = 0; i < filters.size(); ++i) {
    for (const std::string& pattern : Patterns(filters[i].patterns)) {
      if (pattern == wanted) return i;
    }
  }
  return 0;
}

std::string RunFileChooser(GtkFileChooserNative* dialog) {
  GObjectPtr<GtkFileChooserNative> owned(dialog);
  std::string path;
  if (ShuttingDown()) return path;
  // Hiding the dialog ends its loop with no answer: the program is ending.
  ModalLoopStarted({[](void* d) { gtk_native_dialog_hide(GTK_NATIVE_DIALOG(d)); }, dialog});
  const int response = gtk_native_dialog_run(GTK_NATIVE_DIALOG(dialog));
  ModalLoopEnded(dialog);
  if (response == GTK_RESPONSE_ACCEPT && !ShuttingDown()) {
    GCharPtr chosen(gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(dialog)));
    if (chosen) path = chosen.get();
  }
  return path;
}

}  // namespace nebro
