// nebro-markdown-pdf: the small program that turns the rendered Markdown page into a PDF file
// with the browser engine. It lives apart from the editor so that the editor never loads the
// engine at start-up; the editor runs it as
//
//   nebro-markdown-pdf PAGE.html OUTPUT.pdf [WIDTH HEIGHT LEFT TOP RIGHT BOTTOM]
//
// with the paper's size and margins in hundredths of a millimetre (Page Setup's values),
// and reads its exit status: 0 when the PDF was written, 1 with a one-line reason on stderr.
#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <cstdio>
#include <string>

namespace nebro::markdown {
namespace {

// A page that never finishes loading or printing (a broken engine install) must not keep a
// command-line export waiting for ever.
constexpr guint kGiveUpSeconds = 120;

// The page's background colour fills the printed area of every page, the last one too: an
// element fixed to the page repeats on each printed page, while the body's own background would
// end where the text ends.
constexpr const char* kPrintStyle =
    "body::before { content: ''; position: fixed; top: 0; left: 0; right: 0; bottom: 0;"
    " background: inherit; z-index: -1; }";

// The sheet and its margins in hundredths of a millimetre, as Page Setup stores them. Without
// them on the command line: A4 with 12 mm margins, which keep the text off the paper's edge (the
// engine paints nothing in the margins).
struct Page {
  double width = 21000, height = 29700;
  double left = 1200, top = 1200, right = 1200, bottom = 1200;
};

struct ToolState {
  std::string outputUri;
  Page page;
  int status = 1;
  bool ended = false;
  bool printFailed = false;
};

void Finish(ToolState* state, int status, const std::string& reason) {
  if (state->ended) return;
  if (!reason.empty()) std::fprintf(stderr, "nebro-markdown-pdf: %s\n", reason.c_str());
  state->ended = true;
  state->status = status;
  gtk_main_quit();
}

// "W H LEFT TOP RIGHT BOTTOM" as positive sizes and margins that leave room on the sheet.
bool ParsePage(char** fields, Page& page) {
  double v[6];
  for (int i = 0; i < 6; ++i) {
    char* end = nullptr;
    v[i] = g_ascii_strtod(fields[i], &end);
    if (end == fields[i] || *end || v[i] < 0 || v[i] > 1e6) return false;
  }
  page = {v[0], v[1], v[2], v[3], v[4], v[5]};
  return page.left + page.right < page.width && page.top + page.bottom < page.height;
}

GtkPageSetup* NewPageSetup(const Page& page) {
  GtkPageSetup* setup = gtk_page_setup_new();
  GtkPaperSize* paper =
      gtk_paper_size_new_custom("nebro-paper", "Paper", page.width / 100, page.height / 100, GTK_UNIT_MM);
  gtk_page_setup_set_paper_size(setup, paper);
  gtk_paper_size_free(paper);
  gtk_page_setup_set_orientation(setup, GTK_PAGE_ORIENTATION_PORTRAIT);
  gtk_page_setup_set_left_margin(setup, page.left / 100, GTK_UNIT_MM);
  gtk_page_setup_set_top_margin(setup, page.top / 100, GTK_UNIT_MM);
  gtk_page_setup_set_right_margin(setup, page.right / 100, GTK_UNIT_MM);
  gtk_page_setup_set_bottom_margin(setup, page.bottom / 100, GTK_UNIT_MM);
  return setup;
}

void OnPrintFinished(WebKitPrintOperation*, gpointer data) {
  auto* state = static_cast<ToolState*>(data);
  // "failed" comes before "finished" when printing went wrong; it has already said why.
  Finish(state, state->printFailed ? 1 : 0, "");
}

void OnPrintFailed(WebKitPrintOperation*, GError* error, gpointer data) {
  auto* state = static_cast<ToolState*>(data);
  state->printFailed = true;
  std::fprintf(stderr, "nebro-markdown-pdf: cannot print the page: %s\n", error ? error->message : "unknown error");
}

void Print(WebKitWebView* view, ToolState* state) {
  WebKitPrintOperation* operation = webkit_print_operation_new(view);
  GtkPrintSettings* settings = gtk_print_settings_new();
  gtk_print_settings_set_printer(settings, "Print to File");
  gtk_print_settings_set(settings, GTK_PRINT_SETTINGS_OUTPUT_FILE_FORMAT, "pdf");
  gtk_print_settings_set(settings, GTK_PRINT_SETTINGS_OUTPUT_URI, state->outputUri.c_str());
  webkit_print_operation_set_print_settings(operation, settings);
  GtkPageSetup* setup = NewPageSetup(state->page);
  webkit_print_operation_set_page_setup(operation, setup);
  g_object_unref(setup);
  g_object_unref(settings);
  g_signal_connect(operation, "failed", G_CALLBACK(OnPrintFailed), state);
  g_signal_connect(operation, "finished", G_CALLBACK(OnPrintFinished), state);
  webkit_print_operation_print(operation);
}

void OnLoadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer data) {
  auto* state = static_cast<ToolState*>(data);
  if (event == WEBKIT_LOAD_FINISHED && !state->ended) Print(view, state);
}

gboolean OnLoadFailed(WebKitWebView*, WebKitLoadEvent, gchar* uri, GError* error, gpointer data) {
  Finish(static_cast<ToolState*>(data), 1,
         std::string("cannot load ") + (uri ? uri : "the page") + ": " + (error ? error->message : "unknown error"));
  return TRUE;
}

gboolean OnGiveUp(gpointer data) {
  Finish(static_cast<ToolState*>(data), 1, "the page took too long to render");
  return G_SOURCE_REMOVE;
}

std::string FileUri(const char* path, std::string& error) {
  GError* e = nullptr;
  gchar* absolute = g_canonicalize_filename(path, nullptr);
  gchar* uri = g_filename_to_uri(absolute, nullptr, &e);
  g_free(absolute);
  if (!uri) {
    error = e ? e->message : "bad file name";
    g_clear_error(&e);
    return {};
  }
  std::string result(uri);
  g_free(uri);
  return result;
}

}  // namespace

int RunMarkdownPdfTool(int argc, char** argv) {
  ToolState state;
  if ((argc != 3 && argc != 9) || (argc == 9 && !ParsePage(argv + 3, state.page))) {
    std::fprintf(stderr,
                 "nebro-markdown-pdf: usage: nebro-markdown-pdf PAGE.html OUTPUT.pdf [WIDTH HEIGHT LEFT TOP RIGHT BOTTOM]"
                 " (hundredths of a millimetre)\n");
    return 1;
  }
  if (!g_file_test(argv[1], G_FILE_TEST_IS_REGULAR)) {
    std::fprintf(stderr, "nebro-markdown-pdf: cannot read %s\n", argv[1]);
    return 1;
  }
  int gtkArgc = 1;
  char** gtkArgv = argv;
  if (!gtk_init_check(&gtkArgc, &gtkArgv)) {
    std::fprintf(stderr, "nebro-markdown-pdf: needs a display; on a machine without one run it under xvfb-run -a\n");
    return 1;
  }
  std::string error;
  const std::string pageUri = FileUri(argv[1], error);
  state.outputUri = FileUri(argv[2], error);
  if (pageUri.empty() || state.outputUri.empty()) {
    std::fprintf(stderr, "nebro-markdown-pdf: %s\n", error.c_str());
    return 1;
  }

  // The page has no scripts and needs nothing from the network.
  WebKitSettings* settings = webkit_settings_new();
  webkit_settings_set_enable_javascript(settings, FALSE);
  webkit_settings_set_print_backgrounds(settings, TRUE);
  webkit_settings_set_allow_file_access_from_file_urls(settings, FALSE);
  WebKitUserContentManager* content = webkit_user_content_manager_new();
  WebKitUserStyleSheet* sheet =
      webkit_user_style_sheet_new(kPrintStyle, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME, WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr);
  webkit_user_content_manager_add_style_sheet(content, sheet);
  webkit_user_style_sheet_unref(sheet);
  GtkWidget* view = GTK_WIDGET(g_object_new(WEBKIT_TYPE_WEB_VIEW, "settings", settings, "user-content-manager", content, nullptr));
  g_object_unref(settings);
  g_object_unref(content);
  GtkWidget* window = gtk_offscreen_window_new();
  gtk_window_set_default_size(GTK_WINDOW(window), 800, 1100);
  gtk_container_add(GTK_CONTAINER(window), view);
  gtk_widget_show_all(window);
  g_signal_connect(view, "load-changed", G_CALLBACK(OnLoadChanged), &state);
  g_signal_connect(view, "load-failed", G_CALLBACK(OnLoadFailed), &state);
  g_timeout_add_seconds(kGiveUpSeconds, OnGiveUp, &state);
  webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), pageUri.c_str());
  gtk_main();
  gtk_widget_destroy(window);
  if (state.status == 0 && !g_file_test(argv[2], G_FILE_TEST_IS_REGULAR)) {
    std::fprintf(stderr, "nebro-markdown-pdf: the printer wrote no file\n");
    return 1;
  }
  return state.status;
}

}  // namespace nebro::markdown

int main(int argc, char** argv) { return nebro::markdown::RunMarkdownPdfTool(argc, argv); }
