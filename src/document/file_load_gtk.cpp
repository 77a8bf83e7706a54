#include "document/file_load_gtk.h"

#include <sys/stat.h>

#include <atomic>
#include <memory>

#include "document/document_builder_gtk.h"
#include "document/document_questions.h"
#include "document/document_texts.h"
#include "document/file_stream.h"
#include "gtk/message_box_gtk.h"
#include "gtk/progress_gtk.h"
#include "gtk/trace_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"

namespace nebro::document {
namespace {

using namespace sci;

bool loadInProgress = false;

// Files from this size on are read on a worker while a small window shows the progress, so
// the editor keeps painting; smaller ones load before anyone would notice.
uint64_t backgroundThreshold = 32ull << 20;

// One load from the opened file to the editor, shared by the UI thread and the worker.
struct Load {
  LoadTarget target;
  std::string path;
  std::function<void(bool)> done;
  DocumentBuilder builder;
  LoadResult result;
  Load(const LoadTarget& t, std::string p, std::function<void(bool)> d)
      : target(t), path(std::move(p)), done(std::move(d)), builder(t.editor, t.doc->viewerMode) {}
};

// The end of every load, on the UI thread: the document takes the file, or the user hears why not.
void Complete(Load& load) {
  LoadResult& result = load.result;
  for (const std::string& line : result.trace) Trace("%s", line.c_str());
  if (result.decision == LoadDecision::Loaded && !load.builder.Finish()) {
    result.decision = LoadDecision::TooLarge;
    result.message = "Not enough memory to open this file.";
    result.title = kTitleErrorMangled;
    result.lock.Reset();
  }
  loadInProgress = false;
  if (result.decision != LoadDecision::Loaded) {
    ShowMessageBox(load.target.owner, kMbOk, result.message, result.title);
    if (load.done) load.done(false);
    return;
  }
  GtkWidget* editor = load.target.editor;
  DocumentState& doc = *load.target.doc;
  if (result.eolMode) Send(editor, SCI_SETEOLMODE, static_cast<int>(*result.eolMode));
  CloseDocumentLock(doc);
  doc.lockFd = result.lock.Release();
  doc.encoding = result.encoding;
  Trace("Nebro: FileLoad completed successfully");
  if (load.done) load.done(true);
}

void LoadInBackground(std::shared_ptr<Load> load, OpenedDocument opened, uint64_t fileSize) {
  auto shared = std::make_shared<OpenedDocument>(std::move(opened));
  ProgressOptions options;
  options.parent = load->target.owner;
  options.title = "Nebro - Loading";
  options.text = "Loading " + DocumentDisplayName(load->path) + "...";
  options.name = "NebroLoadProgress";
  options.cancellable = true;
  RunWithProgress(
      options,
      [load, shared, fileSize](ProgressReporter& progress) {
        uint64_t bytes = 0;
        // The loader makes a document of its own, which no view shows until Finish: it is made and
        // filled here, so allocating and clearing its large buffers never holds up the window.
        TextSink sink{[&](size_t total) { return load->builder.Begin(total); },
                      [&](const char* data, size_t length) {
                        if (progress.Cancelled()) return false;
                        const bool ok = load->builder.Add(data, length);
                        bytes += length;
                        if (fileSize > 0) progress.SetFraction(static_cast<double>(bytes) / static_cast<double>(fileSize));
                        return ok;
                      }};
        load->result = StreamDocumentFile(std::move(*shared), DefaultMaxLoadBytes(), sink);
      },
      [load](bool cancelled) {
        if (!cancelled) {
          Complete(*load);
          return;
        }
        // Cancelled (by the user or a signal): the half-built document goes, the shown one stays.
        loadInProgress = false;
        Trace("Nebro: FileLoad cancelled");
        if (load->done) load->done(false);
      });
}

}  // namespace

void CloseDocumentLock(DocumentState& doc) { nebro::document::CloseDocumentLock(doc.lockFd); }

void ClearSearchIndicators(GtkWidget* editor) {
  const sptr_t length = Send(editor, SCI_GETLENGTH);
  if (length == 0) return;
  for (int indicator : {8, 9, 10}) {
    Send(editor, SCI_SETINDICATORCURRENT, indicator);
    Send(editor, SCI_INDICATORCLEARRANGE, 0, length);
  }
}

bool FileLoadInProgress() { return loadInProgress; }

void SetBackgroundLoadThreshold(uint64_t bytes) { backgroundThreshold = bytes; }

void FileLoad(const LoadTarget& target, const std::string& path, std::function<void(bool)> done) {
  if (loadInProgress) {
    Trace("Nebro: FileLoad already in progress, skipping");
    if (done) done(false);
    return;
  }
  loadInProgress = true;
  Trace("Nebro: FileLoad called for: %s", path.c_str());
  if (path != target.doc->path) CloseDocumentLock(*target.doc);

  auto load = std::make_shared<Load>(target, path, std::move(done));
  OpenedDocument opened = OpenDocumentFile(path);
  struct stat st {};
  const uint64_t size = opened.fd.Valid() && fstat(opened.fd.Get(), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
  if (size >= backgroundThreshold && size <= DefaultMaxLoadBytes()) {
    LoadInBackground(load, std::move(opened), size);
    return;
  }
  DocumentBuilder& builder = load->builder;
  TextSink sink{[&](size_t total) { return builder.Begin(total); },
                [&](const char* data, size_t length) { return builder.Add(data, length); }};
  load->result = StreamDocumentFile(std::move(opened), DefaultMaxLoadBytes(), sink);
  Complete(*load);
}

}  // namespace nebro::document
