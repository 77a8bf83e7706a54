#include "document/document_builder_gtk.h"

#include "appearance/plain_styling.h"

#include <algorithm>

#include "scintilla/scintilla_loader_gtk.h"

namespace nebro::document {

using namespace sci;

namespace {

constexpr size_t kLoaderChunk = 1 << 20;
constexpr long long kLargeDocument = 0x7FFFFFFFll;
// Past this size the editor's accessible text is switched off: telling a screen reader about a
// swap counts the characters of the old and the new document, and its line index covers the
// whole text, both on the main loop (about 0.1 s per 10 MB).
constexpr size_t kAccessibleLimit = 8u << 20;
constexpr sptr_t kReleaseAsideBytes = 64 << 20;

}  // namespace

DocumentBuilder::~DocumentBuilder() {
  if (loader_) loader_->Release();
}

bool DocumentBuilder::Begin(size_t length) {
  length_ = length;
  // Room beyond the text: Scintilla grows a full buffer by copying all of it, which the first
  // character typed into a document fresh from the loader would otherwise cost (0.8 s for 1 GB).
  const size_t capacity = length + length / 64 + (64 << 10);
  int options = SC_DOCUMENTOPTION_DEFAULT;
  if (static_cast<long long>(capacity) >= kLargeDocument) options |= SC_DOCUMENTOPTION_TEXT_LARGE;
  // The viewer draws one style only; a document past the size where colours stop gets none
  // either, which keeps its memory near its size.
  if (stylesNone_ || length > appearance::kLargeDocumentLimit) options |= SC_DOCUMENTOPTION_STYLES_NONE;
  loader_ = reinterpret_cast<ILoader*>(Send(editor_, SCI_CREATELOADER, capacity, options));
  return loader_ != nullptr;
}

bool DocumentBuilder::Add(const char* data, size_t length) {
  for (size_t done = 0; done < length; done += kLoaderChunk) {
    const auto n = static_cast<Sci_Position>(std::min(kLoaderChunk, length - done));
    if (loader_->AddData(data + done, n) != SC_STATUS_OK) return false;
  }
  return true;
}

bool DocumentBuilder::Finish() {
  void* document = loader_->ConvertToDocument();
  loader_ = nullptr;
  if (!document) return false;
  Send(editor_, SCI_SETREADONLY, 0);
  Send(editor_, SCI_SETACCESSIBILITY, SC_ACCESSIBILITY_DISABLED);
  // A large document being replaced is freed on a worker, so New after a big file answers at once.
  void* replaced = nullptr;
  if (Send(editor_, SCI_GETLENGTH) > kReleaseAsideBytes) {
    replaced = reinterpret_cast<void*>(Send(editor_, SCI_GETDOCPOINTER));
    SendPtr(editor_, SCI_ADDREFDOCUMENT, 0, replaced);
  }
  // The view takes its own reference; ours goes, so the next replacement frees this one.
  SendPtr(editor_, SCI_SETDOCPOINTER, 0, document);
  SendPtr(editor_, SCI_RELEASEDOCUMENT, 0, document);
  if (replaced) ReleaseDocumentAside(replaced);
  // A line of megabytes is not wrapped (the language setup says so in the status bar). Scintilla
  // keeps the old wrap width until it next wraps, which making line 0 visible does at once.
  if (appearance::HasLineLongerThan(DocumentText(editor_), appearance::kUnwrappedLineLimit)) {
    Send(editor_, SCI_SETWRAPMODE, SC_WRAP_NONE);
    Send(editor_, SCI_ENSUREVISIBLE, 0);
  }
  if (length_ < kAccessibleLimit) Send(editor_, SCI_SETACCESSIBILITY, SC_ACCESSIBILITY_ENABLED);
  Send(editor_, SCI_SETCODEPAGE, SC_CP_UTF8);
  // A loader's document comes without undo collection; edits of a loaded file are undoable too.
  Send(editor_, SCI_SETUNDOCOLLECTION, 1);
  Send(editor_, SCI_EMPTYUNDOBUFFER);
  Send(editor_, SCI_SETSAVEPOINT);
  // The caret and the view go to the start without scrolling the caret into view, which would lay
  // out its line on the spot (a second for a line of 100 MB); the first paint does that.
  Send(editor_, SCI_SETEMPTYSELECTION, 0);
  Send(editor_, SCI_SETFIRSTVISIBLELINE, 0);
  Send(editor_, SCI_SETXOFFSET, 0);
  Send(editor_, SCI_SETSCROLLWIDTH, 1);  // grows again with the new document's lines
  return true;
}

void LoadTextIntoEditor(GtkWidget* editor, const char* text, size_t length) {
  DocumentBuilder builder(editor);
  if (builder.Begin(length) && builder.Add(text, length) && builder.Finish()) return;
  // The loader refused (out of memory): empty the old document in place instead.
  Send(editor, SCI_SETREADONLY, 0);
  Send(editor, SCI_CLEARALL);
  Send(editor, SCI_APPENDTEXT, length, reinterpret_cast<sptr_t>(text));
  Send(editor, SCI_EMPTYUNDOBUFFER);
  Send(editor, SCI_GOTOPOS, 0);
}

}  // namespace nebro::document
