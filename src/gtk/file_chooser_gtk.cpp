#include "gtk/file_chooser_gtk.h"

#include "gtk/object_ptr_gtk.h"

namespace nebro {

void AddChooserFilters(GtkFileChooser* chooser, const std::vector<ChooserFilter>& filters) {
  bool first = true;
  for (const ChooserFilter& f : filters) {
    GtkFileFilter* filter = gtk_file_filter_new();
    gtk_file_filter_set_name(filter, f.label.c_str());
    size_t start = 0;
    while (start <= f.patterns.size()) {
      size_t end = f.patterns.find(';', start);
      if (end == std::string::npos) end = f.patterns.size();
      std::string pattern = f.patterns.substr(start, end - start);
      if (pattern == "*.*") pattern = "*";  // every file, with or without an extension
      gtk_file_filter_add_pattern(filter, pattern.c_str());
      start = end + 1;
    }
    gtk_file_chooser_add_filter(chooser, filter);
    if (first) gtk_file_chooser_set_filter(chooser, filter);
    first = false;
  }
}

std::string RunFileChooser(GtkFileChooserNative* dialog) {
  GObjectPtr<GtkFileChooserNative> owned(dialog);
  std::string path;
  if (gtk_native_dialog_run(GTK_NATIVE_DIALOG(dialog)) == GTK_RESPONSE_ACCEPT) {
    GCharPtr chosen(gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(dialog)));
    if (chosen) path = chosen.get();
  }
  return path;
}

}  // namespace nebro
