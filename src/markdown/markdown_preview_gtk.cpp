#include "markdown/markdown_preview_gtk.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "common/utf.h"
#include "export/export_dispatch_gtk.h"
#include "export/export_output.h"
#include "export/export_rules.h"
#include "gtk/message_box.h"
#include "gtk/message_box_gtk.h"
#include "gtk/object_ptr_gtk.h"
#include "gtk/progress_gtk.h"
#include "gtk/viewer_launch_gtk.h"
#include "markdown/markdown_html.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"

namespace nebro::markdown {
namespace {

using namespace std::chrono_literals;

// The renderer cannot tell how far it is, so the window shows an estimate that climbs to 90 %
// of the lines in forty steps, one every 80 ms, and then says "Finalizing..." until the page
// is written.
constexpr auto kTick = 80ms;
// A cancelled rendering is given this long to stop before the window closes without it.
constexpr auto kCancelWait = 5s;

// What the rendering thread shares with the worker; it outlives a worker that stopped
// waiting for it.
struct Rendering {
  std::string text;
  MarkdownPageOptions options;
  std::string path;
  std::atomic<bool> stop{false};
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  bool ok = false;
};

struct MarkdownJob {
  std::shared_ptr<Rendering> rendering;
  int32_t lineCount = 0;
  bool preview = false;
  bool ok = false;
  uint64_t started = 0;
};

uint64_t NowMs() { return static_cast<uint64_t>(g_get_monotonic_time() / 1000); }

void Render(const std::shared_ptr<Rendering>& r) {
  std::string page;
  bool ok = RenderMarkdownPage(r->text, r->options, page, [r](uint32_t, uint32_t) { return !r->stop; });
  if (ok && !r->stop) ok = exports::WriteExportFile(r->path, page) == exports::ExportResult::Ok;
  std::lock_guard<std::mutex> lock(r->mutex);
  r->ok = ok && !r->stop;
  r->done = true;
  r->changed.notify_all();
}

void RunMarkdownWorker(MarkdownJob& job, ProgressReporter& reporter) {
  const std::shared_ptr<Rendering> r = job.rendering;
  const int32_t total = job.lineCount;
  auto show = [&reporter, total](uint32_t line) {
    reporter.SetText(exports::ProgressStatusText(line, total));
    if (total > 0 && line != exports::kProgressFinalizing) reporter.SetFraction(static_cast<double>(line) / total);
  };
  show(1);
  std::thread inner(Render, r);
  const int64_t target = static_cast<int64_t>(std::max(total, 1) * 0.9);
  const int64_t increment = std::max<int64_t>(target / 40, 1);
  int64_t shown = 0;
  bool finalizing = false;
  for (;;) {
    {
      std::unique_lock<std::mutex> lock(r->mutex);
      if (r->changed.wait_for(lock, kTick, [&r] { return r->done; })) break;
    }
    if (reporter.Cancelled()) {
      r->stop = true;
      std::unique_lock<std::mutex> lock(r->mutex);
      const bool ended = r->changed.wait_for(lock, kCancelWait, [&r] { return r->done; });
      lock.unlock();
      if (ended) inner.join();
      else inner.detach();  // it keeps its own copy of everything it uses
      job.ok = false;
      return;
    }
    if (finalizing) continue;
    if (shown < target) {
      shown = std::min(shown + increment, target);
      show(static_cast<uint32_t>(shown));
    } else {
      show(exports::kProgressFinalizing);
      finalizing = true;
    }
  }
  inner.join();
  job.ok = r->ok;
  if (job.ok) show(static_cast<uint32_t>(std::max(total, 1)));
}

}  // namespace

bool ExportMarkdown(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                    const settings::AppSettings& s, const std::string& outputPath) {
  const bool preview = outputPath.empty();
  const std::string path = preview ? settings::MakeTempPath(settings::GetSettingsFolder(), ".html") : outputPath;
  if (path.empty()) {
    ShowMessageBox(owner, kMbOk, "Failed to determine output path.", std::string(kMarkdownExportTitle));
    return false;
  }
  auto job = std::make_shared<MarkdownJob>();
  job->rendering = std::make_shared<Rendering>();
  job->rendering->text = sci::DocumentCopy(editor);
  job->rendering->options = {documentPath, Utf16ToUtf8(settings::FieldText(s.fontName)), s.fontSize, s.theme};
  job->rendering->path = path;
  job->lineCount = static_cast<int32_t>(std::min<sci::sptr_t>(sci::Send(editor, sci::SCI_GETLINECOUNT), INT32_MAX));
  job->preview = preview;
  job->started = NowMs();

  ProgressOptions options;
  options.parent = owner;
  options.title = std::string(kMarkdownExportTitle);
  options.text = std::string(exports::kStatusPreparing);
  options.name = "NebroMarkdownProgress";
  options.cancellable = true;
  options.cancellingText = std::string(exports::kStatusCancelling);
  const bool hadOwner = owner != nullptr;
  auto ownerWatch = std::make_shared<WidgetWatch>(owner ? GTK_WIDGET(owner) : nullptr);
  RunWithProgress(
      options, [job](ProgressReporter& reporter) { RunMarkdownWorker(*job, reporter); },
      [job, ownerWatch, hadOwner, documentPath, path](bool cancelled) {
        GtkWindow* owner = ownerWatch->window();
        if (cancelled || !job->ok || (hadOwner && !owner)) return;
        const std::string elapsed = exports::ElapsedTimeText(NowMs() - job->started);
        if (job->preview) {
          ShowMessageBox(owner, kMbOk,
                         "MD exported successfully.\n\nLines: " + std::to_string(job->lineCount) +
                             "\nExport time: " + elapsed,
                         std::string(kMarkdownExportTitle));
          // Without a browser the document itself opens in the viewer.
          OpenWithDefaultApplication(owner, path, documentPath);
          return;
        }
        if (ShowMessageBox(owner, kMbYesNo, exports::HtmlDoneQuestion(NowMs() - job->started),
                           std::string(exports::kHtmlExportTitle)) == kMbResultSaveOrYes) {
          OpenWithDefaultApplication(owner, path);
        }
      });
  return true;
}

void ShowMarkdownPreview(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                         const settings::AppSettings& s) {
  if (!editor) return;
  const auto lines = sci::Send(editor, sci::SCI_GETLINECOUNT);
  if (lines > kMarkdownPreviewLineLimit) {
    const std::string question = "This Markdown file has ~" + std::to_string(lines) +
                                 " lines.\n\nFull Markdown preview would be slow.\n"
                                 "Open as plain text in Nebro Viewer instead?";
    if (ShowMessageBox(owner, kMbYesNo, question, std::string(kMarkdownPreviewTitle)) == kMbResultSaveOrYes) {
      exports::OpenAsPlainTextInViewer(owner, editor);
    }
    return;
  }
  ExportMarkdown(owner, editor, documentPath, s, "");
}

}  // namespace nebro::markdown
