#include "scintilla/scintilla_loader_gtk.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <system_error>
#include <thread>

#include "common/install_paths.h"

namespace nebro::sci {
namespace {

using NewFn = GtkWidget* (*)();
using SendFn = sptr_t (*)(void*, unsigned int, uptr_t, sptr_t);

void* scintillaModule = nullptr;
void* lexillaModule = nullptr;
NewFn newEditor = nullptr;
SendFn sendMessage = nullptr;
CreateLexerFunction createLexer = nullptr;
std::string scintillaPath, lexillaPath;

// dlsym hands back an object pointer; one typed conversion for every entry point.
template <typename F>
F Symbol(void* module, const char* name) {
  return reinterpret_cast<F>(dlsym(module, name));
}

// Opens the first `fileName` found; `opened` receives its real path.
void* OpenBesideOrConfigured(const char* fileName, std::string& opened) {
  const std::string folders[] = {ExecutableFolder(), NEBRO_SCINTILLA_DIR};
  for (const std::string& folder : folders) {
    if (folder.empty()) continue;
    const std::string path = folder + "/" + fileName;
    if (access(path.c_str(), F_OK) != 0) continue;
    // The first file found is the one used: a broken copy beside the executable is an error,
    // not a reason to take another one silently.
    void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!h) {
      g_debug("Nebro: dlopen %s: %s", path.c_str(), dlerror());
      return nullptr;
    }
    char real[PATH_MAX];
    opened = realpath(path.c_str(), real) ? std::string(real) : path;
    return h;
  }
  return nullptr;
}

}  // namespace

LibraryLoad LoadScintilla() {
  scintillaModule = OpenBesideOrConfigured("libscintilla.so", scintillaPath);
  if (!scintillaModule) return LibraryLoad::NotFound;
  newEditor = Symbol<NewFn>(scintillaModule, "scintilla_new");
  sendMessage = Symbol<SendFn>(scintillaModule, "scintilla_send_message");
  if (!newEditor || !sendMessage) {
    UnloadScintilla();
    return LibraryLoad::NotFound;
  }
  return LibraryLoad::Ok;
}

LibraryLoad LoadLexilla() {
  lexillaModule = OpenBesideOrConfigured("liblexilla.so", lexillaPath);
  if (!lexillaModule) return LibraryLoad::NotFound;
  createLexer = Symbol<CreateLexerFunction>(lexillaModule, "CreateLexer");
  return createLexer ? LibraryLoad::Ok : LibraryLoad::EntryMissing;
}

void UnloadLexilla() {
  createLexer = nullptr;
  if (lexillaModule) dlclose(lexillaModule);
  lexillaModule = nullptr;
  lexillaPath.clear();
}

void UnloadScintilla() {
  // The GTK widget type stays registered with GObject for the life of the process, so the
  // library must stay mapped; only our entry points are forgotten.
  newEditor = nullptr;
  sendMessage = nullptr;
  scintillaModule = nullptr;
  scintillaPath.clear();
}

bool ScintillaLoaded() { return sendMessage != nullptr; }

CreateLexerFunction CreateLexerFn() { return createLexer; }

std::string ScintillaPath() { return scintillaPath; }
std::string LexillaPath() { return lexillaPath; }

int LexerCount() {
  if (!lexillaModule) return -1;
  using CountFn = int (*)();
  const auto count = Symbol<CountFn>(lexillaModule, "GetLexerCount");
  return count ? count() : -1;
}

GtkWidget* NewEditor() { return newEditor ? newEditor() : nullptr; }

void ReleaseDocumentAside(void* document) {
  // Never shown and never destroyed; the library stays mapped for the life of the process.
  static GtkWidget* releaser = [] {
    GtkWidget* editor = NewEditor();
    if (editor) g_object_ref_sink(editor);
    return editor;
  }();
  const SendFn send = sendMessage;
  if (!releaser || !send) return;
  try {
    std::thread([send, document] {
      send(releaser, SCI_RELEASEDOCUMENT, 0, reinterpret_cast<sptr_t>(document));
    }).detach();
  } catch (const std::system_error&) {
    send(releaser, SCI_RELEASEDOCUMENT, 0, reinterpret_cast<sptr_t>(document));  // no thread to spare
  }
}

std::string_view DocumentText(GtkWidget* editor) {
  const sptr_t length = Send(editor, SCI_GETLENGTH);
  if (length <= 0) return {};
  const auto* text = reinterpret_cast<const char*>(Send(editor, SCI_GETRANGEPOINTER, 0, length));
  return text ? std::string_view(text, static_cast<size_t>(length)) : std::string_view();
}

std::string DocumentCopy(GtkWidget* editor) { return std::string(DocumentText(editor)); }

sptr_t Send(GtkWidget* editor, unsigned int message, uptr_t wParam, sptr_t lParam, std::source_location where) {
  if (!sendMessage || !editor) return 0;
  const sptr_t result = sendMessage(editor, message, wParam, lParam);
  // One more call per message is cheap next to what any message does, and a failure (memory
  // running out while a document grows) must not pass unnoticed in the builds users run.
  if (message != SCI_GETSTATUS) {
    const sptr_t status = sendMessage(editor, SCI_GETSTATUS, 0, 0);
    if (status != SC_STATUS_OK && status < SC_STATUS_WARN_START) {
      g_warning("Nebro: Scintilla message %u failed with status %ld at %s:%u", message,
                static_cast<long>(status), where.file_name(), static_cast<unsigned>(where.line()));
      sendMessage(editor, SCI_SETSTATUS, SC_STATUS_OK, 0);
    }
  }
  return result;
}

}  // namespace nebro::sci
