// Font names kept in the settings and texts ("Consolas", "Segoe UI", "Georgia") that this
// machine may not have.
#pragma once

namespace nebro::appearance {

// Makes those names resolve to the installed monospace, sans and serif faces when the fonts are
// missing. Call before the first window.
void LoadFontAliases();

}  // namespace nebro::appearance
