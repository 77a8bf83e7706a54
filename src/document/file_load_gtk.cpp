#include "document/file_load_gtk.h"

#include <algorithm>

#include "app/main_window_gtk.h"
#include "app/message_box_gtk.h"
#include "app/trace_gtk.h"
#include "appearance/theme_gtk.h"
#include "document/file_load.h"
#include "scintilla/scintilla_loader_gtk.h"

namespace nebro {
namespace {

using namespace sci;

bool loadInProgress = false;

constexpr size_t kLoaderChunk = 1 << 20;
constexpr long long kLargeDocument = 0x7FFFFFFFll;

void ClearSearchIndicators(GtkWidget* editor) {
  const sptr_t length = Send(editor, SCI_GETLENGTH);
  if (length == 0) return;
  for (int indicator : {8, 9, 10}) {
    Send(editor, SCI_SETINDICATORCURRENT, indicator);
    Send(editor, SCI_INDICATORCLEARRANGE, 0, length);
  }
}

}  // namespace

void CloseDocumentLock(DocumentState& doc) { nebro::CloseDocumentLock(doc.lockFd); }

void LoadTextIntoEditor(GtkWidget* editor, const char* text, size_t length) {
  Send(editor, SCI_SETREADONLY, 0);
  int options = SC_DOCUMENTOPTION_DEFAULT;
  if (static_cast<long long>(length) >= kLargeDocument) options |= SC_DOCUMENTOPTION_TEXT_LARGE;
  if (gViewerMode) options |= SC_DOCUMENTOPTION_STYLES_NONE;  // the viewer draws one style only
  auto* loader = reinterpret_cast<ILoader*>(Send(editor, SCI_CREATELOADER, length, options));
  void* document = nullptr;
  if (loader) {
    bool ok = true;
    for (size_t done = 0; ok && done < length; done += kLoaderChunk) {
      ok = loader->AddData(text + done, static_cast<Sci_Position>(std::min(kLoaderChunk, length - done))) == SC_STATUS_OK;
    }
    if (ok) document = loader->ConvertToDocument();
    else loader->Release();
  }
  if (!document) {
    // The loader refused (out of memory): fall back to a fresh document filled in one go.
    document = reinterpret_cast<void*>(Send(editor, SCI_CREATEDOCUMENT, 0, options));
    SendPtr(editor, SCI_SETDOCPOINTER, 0, document);
    SendPtr(editor, SCI_RELEASEDOCUMENT, 0, document);
    Send(editor, SCI_APPENDTEXT, length, reinterpret_cast<sptr_t>(text));
  } else {
    // The view takes its own reference; ours goes, so the next replacement frees this one.
    SendPtr(editor, SCI_SETDOCPOINTER, 0, document);
    SendPtr(editor, SCI_RELEASEDOCUMENT, 0, document);
  }
  Send(editor, SCI_SETCODEPAGE, SC_CP_UTF8);
  Send(editor, SCI_EMPTYUNDOBUFFER);
  Send(editor, SCI_SETSAVEPOINT);
  Send(editor, SCI_GOTOPOS, 0);
}

bool FileLoad(const std::string& path) {
  if (loadInProgress) {
    Trace("Nebro: FileLoad already in progress, skipping");
    return false;
  }
  loadInProgress = true;
  struct Clear {
    ~Clear() { loadInProgress = false; }
  } clear;

  Trace("Nebro: FileLoad called for: %s", path.c_str());
  if (path != gMain.doc.path) CloseDocumentLock(gMain.doc);

  LoadResult result = LoadDocumentFile(path, DefaultMaxLoadBytes());
  for (const std::string& line : result.trace) Trace("%s", line.c_str());
  if (result.decision != LoadDecision::Loaded) {
    ShowMessageBox(GTK_WINDOW(gMain.window), kMbOk, result.message, result.title);
    return false;
  }

  GtkWidget* editor = gMain.editor;
  if (result.eolMode) Send(editor, SCI_SETEOLMODE, static_cast<int>(*result.eolMode));
  CloseDocumentLock(gMain.doc);
  LoadTextIntoEditor(editor, result.text.data(), result.text.size);
  result.text = TextBuffer();  // the editor holds its own copy now
  gMain.doc.lockFd = result.lock.Release();
  gMain.doc.encoding = result.encoding;

  if (gViewerMode) {
    ApplyReadingLook(editor);
    Send(editor, SCI_SETREADONLY, 1);
  } else {
    SetupLexer(editor, path);
    RepaintChrome();
    ClearSearchIndicators(editor);
  }
  Trace("Nebro: FileLoad completed successfully");
  return true;
}

}  // namespace nebro
