// The Open and Save dialogs of the desktop, run to an answer.
#pragma once

#include <gtk/gtk.h>

#include <string>
#include <vector>

namespace nebro {

struct ChooserFilter {
  std::string label;
  std::string patterns;  // "*.txt;*.md"; "*.*" means every file
};

// Adds the filters in order and selects the one at `selected`. Names match in either case.
void AddChooserFilters(GtkFileChooser* chooser, const std::vector<ChooserFilter>& filters, size_t selected = 0);

// The first filter with a pattern for the extension of `path` (in either case), or 0.
size_t FilterForFile(const std::vector<ChooserFilter>& filters, const std::string& path);

// Runs the dialog, releases it, and returns the chosen path, or "" when cancelled.
std::string RunFileChooser(GtkFileChooserNative* dialog);

}  // namespace nebro
