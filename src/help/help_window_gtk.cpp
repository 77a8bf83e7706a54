#include "help/help_window_gtk.h"

#include <string>
#include <vector>

#include "appearance/current_theme.h"
#include "gtk/themed_window_gtk.h"
#include "gtk/widget_style_gtk.h"
#include "help/help_topics.h"

namespace nebro::help {
namespace {

struct Help {
  GtkWidget* window = nullptr;
  GtkWidget* list = nullptr;
  GtkWidget* view = nullptr;
  std::vector<HelpTopic> topics;
  settings::AppSettings* settings = nullptr;
  GtkCssProvider* css = gtk_css_provider_new();  // on every widget of the window
  int topic = 0;

  ~Help() { g_object_unref(css); }
};

Help* gHelp = nullptr;  // the one open help window

// Fills the text view with a topic, turning the markup of help_topics.h into tagged text.
void ShowTopic(Help* h, int index) {
  h->topic = index;
  GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(h->view));
  gtk_text_buffer_set_text(buffer, "", 0);
  GtkTextIter end;
  gtk_text_buffer_get_end_iter(buffer, &end);
  const std::string& text = h->topics[static_cast<size_t>(index)].text;
  size_t start = 0;
  while (start <= text.size()) {
    size_t stop = text.find('\n', start);
    if (stop == std::string::npos) stop = text.size();
    std::string line = text.substr(start, stop - start);
    const size_t tab = line.find('\t');
    if (stop < text.size()) line += '\n';
    if (line.rfind("= ", 0) == 0) {
      gtk_text_buffer_insert_with_tags_by_name(buffer, &end, line.c_str() + 2, -1, "heading", nullptr);
    } else if (tab != std::string::npos) {
      // The first column (keys, syntax) in the fixed-width face, the rest as text.
      gtk_text_buffer_insert_with_tags_by_name(buffer, &end, line.c_str(), static_cast<gint>(tab), "row", "code", nullptr);
      gtk_text_buffer_insert_with_tags_by_name(buffer, &end, line.c_str() + tab, -1, "row", nullptr);
    } else {
      gtk_text_buffer_insert(buffer, &end, line.c_str(), -1);
    }
    start = stop + 1;
  }
  GtkTextIter first;
  gtk_text_buffer_get_start_iter(buffer, &first);
  gtk_text_buffer_place_cursor(buffer, &first);
  GtkAdjustment* scroll = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(h->view));
  if (scroll) gtk_adjustment_set_value(scroll, 0);
  AtkObject* accessible = gtk_widget_get_accessible(h->view);
  atk_object_set_description(accessible, h->topics[static_cast<size_t>(index)].title.c_str());
}

// The window's parts in the theme's help-window colours: the toolbar background with dialog
// text, the theme's selection colours, a border line between the topic list and the text.
void Restyle(Help* h) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const std::string bg = ColourText(t.toolbarBackground), fg = ColourText(t.dialogText);
  const std::string selBg = ColourText(t.selectionBackground), selFg = ColourText(t.selectionText);
  const std::string css =
      "window, paned, scrolledwindow, viewport, list, scrollbar { background-color: " + bg + "; color: " + fg + "; }\n"
      "paned > separator { background-color: " + ColourText(t.border) + "; background-image: none; min-width: 1px; }\n"
      "label { color: " + fg + "; }\n"
      "row { padding: 6px 12px; transition: none; }\n"
      "row:hover { background-color: " + ColourText(t.hoverBackground) + "; }\n"
      "row:selected { background-color: " + selBg + "; }\n"
      "row:selected label { color: " + selFg + "; }\n"
      "textview, textview text { background-color: " + bg + "; color: " + fg + "; }\n"
      "textview text selection { background-color: " + selBg + "; color: " + selFg + "; }\n";
  gtk_css_provider_load_from_data(h->css, css.c_str(), -1, nullptr);
}

// Keeps the size and topic the window has as it closes, for the next time.
void Remember(GtkWidget* window, Help* h) {
  int width = 0, height = 0;
  gtk_window_get_size(GTK_WINDOW(window), &width, &height);
  h->settings->helpWidth = width;
  h->settings->helpHeight = height;
  h->settings->helpTopic = h->topic;
  settings::SaveSettings(*h->settings);
}

void OnRowSelected(GtkListBox*, GtkListBoxRow* row, Help* h) {
  if (row) ShowTopic(h, gtk_list_box_row_get_index(row));
}

GtkWidget* TopicList(Help* h) {
  GtkWidget* list = gtk_list_box_new();
  gtk_widget_set_name(list, "NebroHelpTopics");
  gtk_list_box_set_selection_mode(GTK_LIST_BOX(list), GTK_SELECTION_BROWSE);
  atk_object_set_name(gtk_widget_get_accessible(list), "Help topics");
  for (const HelpTopic& topic : h->topics) {
    GtkWidget* label = gtk_label_new(topic.title.c_str());
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    GtkWidget* row = gtk_list_box_row_new();
    gtk_container_add(GTK_CONTAINER(row), label);
    atk_object_set_name(gtk_widget_get_accessible(row), topic.title.c_str());
    gtk_container_add(GTK_CONTAINER(list), row);
  }
  return list;
}

GtkWidget* TextView() {
  GtkWidget* view = gtk_text_view_new();
  gtk_widget_set_name(view, "NebroHelpText");
  gtk_text_view_set_editable(GTK_TEXT_VIEW(view), FALSE);
  gtk_text_view_set_cursor_visible(GTK_TEXT_VIEW(view), FALSE);
  gtk_text_view_set_wrap_mode(GTK_TEXT_VIEW(view), GTK_WRAP_WORD_CHAR);
  gtk_text_view_set_left_margin(GTK_TEXT_VIEW(view), 18);
  gtk_text_view_set_right_margin(GTK_TEXT_VIEW(view), 18);
  gtk_text_view_set_top_margin(GTK_TEXT_VIEW(view), 12);
  gtk_text_view_set_bottom_margin(GTK_TEXT_VIEW(view), 12);
  gtk_text_view_set_pixels_below_lines(GTK_TEXT_VIEW(view), 3);
  atk_object_set_name(gtk_widget_get_accessible(view), "Help text");
  GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
  gtk_text_buffer_create_tag(buffer, "heading", "weight", PANGO_WEIGHT_BOLD, "scale", 1.2, "pixels-above-lines", 12,
                             "pixels-below-lines", 6, nullptr);
  // Two columns: the keys (or the name), then what they do; a negative indent hangs the wrapped
  // rest of a description under its column.
  PangoTabArray* tabs = pango_tab_array_new_with_positions(1, TRUE, PANGO_TAB_LEFT, 220);
  gtk_text_buffer_create_tag(buffer, "row", "tabs", tabs, "indent", -220, "pixels-below-lines", 2, nullptr);
  pango_tab_array_free(tabs);
  gtk_text_buffer_create_tag(buffer, "code", "family", "monospace", nullptr);
  return view;
}

GtkWidget* Scrolled(GtkWidget* child) {
  GtkWidget* scrolled = gtk_scrolled_window_new(nullptr, nullptr);
  // Automatic rather than never: a wrapping text view can then shrink with the window.
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), GTK_POLICY_AUTOMATIC, GTK_POLICY_AUTOMATIC);
  gtk_container_add(GTK_CONTAINER(scrolled), child);
  return scrolled;
}

}  // namespace

void ShowHelp(GtkWindow* owner, const CommandTable& commands, settings::AppSettings& settings) {
  if (gHelp) {
    gtk_window_present(GTK_WINDOW(gHelp->window));
    return;
  }
  auto* h = new Help;
  gHelp = h;
  h->topics = HelpTopics(commands);
  h->settings = &settings;
  h->list = TopicList(h);
  h->view = TextView();

  ThemedWindowOptions options;
  options.parent = owner;
  options.title = kHelpWindowTitle;
  options.name = "NebroHelp";
  h->window = CreateThemedWindow(options, [h](GtkWidget*) { Restyle(h); });
  GdkGeometry min{};
  min.min_width = kHelpMinWidth;
  min.min_height = kHelpMinHeight;
  gtk_window_set_geometry_hints(GTK_WINDOW(h->window), nullptr, &min, GDK_HINT_MIN_SIZE);
  const HelpSize size = HelpWindowSize(settings.helpWidth, settings.helpHeight);
  gtk_window_set_default_size(GTK_WINDOW(h->window), size.width, size.height);
  g_signal_connect(h->window, "unmap", G_CALLBACK(Remember), h);
  // The record lives as long as the window object, so that no late signal of a child meets it
  // freed; the window stops being the open one as soon as it is destroyed.
  g_object_set_data_full(G_OBJECT(h->window), "nebro-help", h, [](gpointer p) { delete static_cast<Help*>(p); });
  g_signal_connect_swapped(h->window, "destroy", G_CALLBACK(+[](Help* h) {
                             if (gHelp == h) gHelp = nullptr;
                           }), h);

  GtkWidget* paned = gtk_paned_new(GTK_ORIENTATION_HORIZONTAL);
  GtkWidget* left = Scrolled(h->list);
  gtk_widget_set_size_request(left, 200, -1);
  gtk_paned_pack1(GTK_PANED(paned), left, FALSE, FALSE);
  gtk_paned_pack2(GTK_PANED(paned), Scrolled(h->view), TRUE, FALSE);
  gtk_container_add(GTK_CONTAINER(h->window), paned);
  AddCssToTree(h->window, h->css);

  const int topic = HelpTopicIndex(settings.helpTopic);
  ShowTopic(h, topic);
  gtk_list_box_select_row(GTK_LIST_BOX(h->list), gtk_list_box_get_row_at_index(GTK_LIST_BOX(h->list), topic));
  g_signal_connect(h->list, "row-selected", G_CALLBACK(OnRowSelected), h);
  gtk_widget_show_all(h->window);
  gtk_widget_grab_focus(GTK_WIDGET(gtk_list_box_get_row_at_index(GTK_LIST_BOX(h->list), topic)));
}

}  // namespace nebro::help
