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

// Adds the filters in order; the first is selected.
void AddChooserFilters(GtkFileChooser* chooser, const std::vector<ChooserFilter>& filters);

// Runs the dialog, releases it, and returns the chosen path, or "" when cancelled.
std::string RunFileChooser(GtkFileChooserNative* dialog);

}  // namespace nebro
