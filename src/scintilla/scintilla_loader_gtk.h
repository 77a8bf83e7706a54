// Run-time loading of libscintilla.so and liblexilla.so, and the one checked way to send
// Scintilla messages.
#pragma once

#include <gtk/gtk.h>

#include <source_location>
#include <string>
#include <string_view>

#include "common/install_paths.h"
#include "scintilla/scintilla_api.h"

namespace nebro::sci {

enum class LibraryLoad { Ok, NotFound, EntryMissing };

// Looks beside the executable first, then in the configured folder.
LibraryLoad LoadScintilla();
LibraryLoad LoadLexilla();  // also fetches CreateLexer; EntryMissing when it is absent
void UnloadLexilla();
void UnloadScintilla();
bool ScintillaLoaded();

// Null when liblexilla.so is not loaded or lacks CreateLexer.
CreateLexerFunction CreateLexerFn();

// A new editor widget, or null when the library is not loaded.
GtkWidget* NewEditor();

// Drops a reference to a document (as SCI_RELEASEDOCUMENT does) on a worker thread, through an
// editor kept for this alone: the memory of a large document goes back to the system there,
// which takes the kernel about a tenth of a second per gigabyte, not on the thread that draws.
// The document must no longer be shown by any editor.
void ReleaseDocumentAside(void* document);

// Sends a message to an editor widget. A failure status is logged with the caller's file and
// line, and cleared.
sptr_t Send(GtkWidget* editor, unsigned int message, uptr_t wParam = 0, sptr_t lParam = 0,
            std::source_location where = std::source_location::current());

inline sptr_t Send(GtkWidget* editor, long message, uptr_t wParam = 0, sptr_t lParam = 0,
                   std::source_location where = std::source_location::current()) {
  return Send(editor, static_cast<unsigned int>(message), wParam, lParam, where);
}
inline sptr_t SendPtr(GtkWidget* editor, long message, uptr_t wParam, const void* p,
                      std::source_location where = std::source_location::current()) {
  return Send(editor, static_cast<unsigned int>(message), wParam, reinterpret_cast<sptr_t>(p), where);
}

// The document's bytes where the editor keeps them, without a copy; valid until the next change.
// Asked as a range, which at most moves Scintilla's gap: SCI_GETCHARACTERPOINTER also needs room
// after the text, and a document fresh from the loader has none, so it would copy the whole
// buffer to grow it (seconds for a gigabyte).
std::string_view DocumentText(GtkWidget* editor);
// A copy of it, for work that outlives the next change (a worker's, a file's).
std::string DocumentCopy(GtkWidget* editor);

// The folder searched first ("beside the executable").
using nebro::ExecutableFolder;

// The file each library was loaded from (symbolic links resolved), or empty when it is not
// loaded.
std::string ScintillaPath();
std::string LexillaPath();

// The number of lexers liblexilla.so offers (its GetLexerCount), or -1 when it is not loaded.
int LexerCount();

}  // namespace nebro::sci
