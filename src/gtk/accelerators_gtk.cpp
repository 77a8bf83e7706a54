#include "gtk/accelerators_gtk.h"

#include <glib.h>

namespace nebro {
namespace {

struct Dispatch {
  std::function<bool(int)> fn;
  int id;
};

gboolean OnAccelerator(GtkAccelGroup*, GObject*, guint, GdkModifierType, gpointer data) {
  auto* d = static_cast<Dispatch*>(data);
  try {
    return d->fn(d->id);
  } catch (...) {
    g_warning("Nebro: a command failed");
    return TRUE;
  }
}

}  // namespace

bool KeyChordToAccelerator(const std::string& text, guint& key, GdkModifierType& mods) {
  KeyChord chord;
  if (!ParseKeyChord(text, chord)) return false;
  // Letters are bound by their lower-case value; Shift is a modifier of its own.
  gchar* lower = g_utf8_strdown(chord.key.c_str(), -1);
  key = chord.key.size() == 1 ? gdk_unicode_to_keyval(static_cast<guint32>(lower[0])) : gdk_keyval_from_name(chord.key.c_str());
  g_free(lower);
  if (key == 0 || key == GDK_KEY_VoidSymbol) return false;
  int m = 0;
  if (chord.ctrl) m |= GDK_CONTROL_MASK;
  if (chord.shift) m |= GDK_SHIFT_MASK;
  if (chord.alt) m |= GDK_MOD1_MASK;
  mods = static_cast<GdkModifierType>(m);
  return true;
}

GtkAccelGroup* CreateAccelerators(const CommandTable& table, std::function<bool(int)> dispatch) {
  GtkAccelGroup* group = gtk_accel_group_new();
  for (const Command& c : table.rows) {
    if (!c.run) continue;
    for (const std::string& text : c.keys) {
      guint key = 0;
      GdkModifierType mods{};
      if (!KeyChordToAccelerator(text, key, mods)) {
        g_warning("Nebro: unknown key \"%s\" for command %d", text.c_str(), c.id);
        continue;
      }
      GClosure* closure = g_cclosure_new(G_CALLBACK(OnAccelerator), new Dispatch{dispatch, c.id},
                                         [](gpointer data, GClosure*) { delete static_cast<Dispatch*>(data); });
      gtk_accel_group_connect(group, key, mods, GTK_ACCEL_VISIBLE, closure);
    }
  }
  return group;
}

}  // namespace nebro
