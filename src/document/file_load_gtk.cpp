#include "document/file_load_gtk.h"

#include <algorithm>

#include "app/main_window_gtk.h"
#include "app/message_box_gtk.h"
#include "app/trace_gtk.h"
#include "appearance/theme_gtk.h"
#include "document/document_texts.h"
#include "document/file_stream.h"
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

// Builds a fresh document through Scintilla's loader: the text goes in piece by piece while no
// view shows it, and the view switches to it in one step.
class DocumentBuilder {
 public:
  explicit DocumentBuilder(GtkWidget* editor) : editor_(editor) {}
  ~DocumentBuilder() {
    if (loader_) loader_->Release();
  }

  bool Begin(size_t length) {
    int options = SC_DOCUMENTOPTION_DEFAULT;
    if (static_cast<long long>(length) >= kLargeDocument) options |= SC_DOCUMENTOPTION_TEXT_LARGE;
    if (gViewerMode) options |= SC_DOCUMENTOPTION_STYLES_NONE;  // the viewer draws one style only
    loader_ = reinterpret_cast<ILoader*>(Send(editor_, SCI_CREATELOADER, length, options));
    return loader_ != nullptr;
  }

  bool Add(const char* data, size_t length) {
    for (size_t done = 0; done < length; done += kLoaderChunk) {
      const auto n = static_cast<Sci_Position>(std::min(kLoaderChunk, length - done));
      if (loader_->AddData(data + done, n) != SC_STATUS_OK) return false;
    }
    return true;
  }

  // Shows the new document in the editor: empty undo history, caret at 0. The old document's
  // memory goes with it.
  bool Finish() {
    void* document = loader_->ConvertToDocument();
    loader_ = nullptr;
    if (!document) return false;
    Send(editor_, SCI_SETREADONLY, 0);
    // The view takes its own reference; ours goes, so the next replacement frees this one.
    SendPtr(editor_, SCI_SETDOCPOINTER, 0, document);
    SendPtr(editor_, SCI_RELEASEDOCUMENT, 0, document);
    Send(editor_, SCI_SETCODEPAGE, SC_CP_UTF8);
    Send(editor_, SCI_EMPTYUNDOBUFFER);
    Send(editor_, SCI_SETSAVEPOINT);
    Send(editor_, SCI_GOTOPOS, 0);
    return true;
  }

 private:
  GtkWidget* editor_;
  ILoader* loader_ = nullptr;
};

}  // namespace

void CloseDocumentLock(DocumentState& doc) { nebro::CloseDocumentLock(doc.lockFd); }

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

  GtkWidget* editor = gMain.editor;
  DocumentBuilder builder(editor);
  TextSink sink{[&](size_t total) { return builder.Begin(total); },
                [&](const char* data, size_t length) { return builder.Add(data, length); }};
  LoadResult result = StreamDocumentFile(OpenDocumentFile(path), DefaultMaxLoadBytes(), sink);
  for (const std::string& line : result.trace) Trace("%s", line.c_str());
  if (result.decision == LoadDecision::Loaded && !builder.Finish()) {
    result.decision = LoadDecision::TooLarge;
    result.message = "Not enough memory to open this file.";
    result.title = kTitleErrorMangled;
    result.lock.Reset();
  }
  if (result.decision != LoadDecision::Loaded) {
    ShowMessageBox(GTK_WINDOW(gMain.window), kMbOk, result.message, result.title);
    return false;
  }

  if (result.eolMode) Send(editor, SCI_SETEOLMODE, static_cast<int>(*result.eolMode));
  CloseDocumentLock(gMain.doc);
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
