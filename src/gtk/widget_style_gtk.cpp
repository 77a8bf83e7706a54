#include "gtk/widget_style_gtk.h"

#include <cstring>

namespace nebro {

void SetWidgetCss(GtkWidget* widget, const std::string& css) {
  auto* provider = static_cast<GtkCssProvider*>(g_object_get_data(G_OBJECT(widget), "nebro-css"));
  if (!provider) {
    provider = gtk_css_provider_new();
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_set_data_full(G_OBJECT(widget), "nebro-css", provider, g_object_unref);
  }
  gtk_css_provider_load_from_data(provider, css.c_str(), -1, nullptr);
}

void AddCssToTree(GtkWidget* widget, GtkCssProvider* css) {
  gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(css),
                                 GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  if (GTK_IS_CONTAINER(widget)) {
    gtk_container_foreach(GTK_CONTAINER(widget), [](GtkWidget* child, gpointer p) {
      AddCssToTree(child, static_cast<GtkCssProvider*>(p));
    }, css);
  }
}

GtkWidget* FindChildByName(GtkWidget* root, const char* name) {
  if (!root) return nullptr;
  if (std::strcmp(gtk_widget_get_name(root), name) == 0) return root;
  if (!GTK_IS_CONTAINER(root)) return nullptr;
  GList* children = gtk_container_get_children(GTK_CONTAINER(root));
  GtkWidget* found = nullptr;
  for (GList* l = children; l && !found; l = l->next) found = FindChildByName(GTK_WIDGET(l->data), name);
  g_list_free(children);
  return found;
}

}  // namespace nebro
