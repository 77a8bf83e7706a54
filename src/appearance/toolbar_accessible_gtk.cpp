#include "appearance/toolbar_accessible_gtk.h"

#include <gtk/gtk-a11y.h>

#include <array>

#include "appearance/toolbar_gtk.h"

namespace nebro::appearance {
namespace {

// ---- One button: an AtkObject with the action and component interfaces.

struct ButtonAccessible {
  AtkObject parent;
  GtkWidget* toolbar;  // weak: the toolbar owns its accessible, which owns the buttons
  int index;
};
struct ButtonAccessibleClass {
  AtkObjectClass parent;
};

const ToolbarButton* ButtonOf(AtkObject* object) {
  auto* self = reinterpret_cast<ButtonAccessible*>(object);
  const Toolbar* t = self->toolbar ? ToolbarState(self->toolbar) : nullptr;
  return t ? &t->buttons[static_cast<size_t>(self->index)] : nullptr;
}

const gchar* ButtonName(AtkObject* object) {
  if (object->name) return object->name;
  const ToolbarButton* b = ButtonOf(object);
  return b ? b->label.c_str() : "";
}

AtkStateSet* ButtonStates(AtkObject* object) {
  AtkStateSet* set = atk_state_set_new();
  const ToolbarButton* b = ButtonOf(object);
  if (!b) {
    atk_state_set_add_state(set, ATK_STATE_DEFUNCT);
    return set;
  }
  for (AtkStateType s : {ATK_STATE_VISIBLE, ATK_STATE_SHOWING}) atk_state_set_add_state(set, s);
  if (b->enabled) {
    atk_state_set_add_state(set, ATK_STATE_ENABLED);
    atk_state_set_add_state(set, ATK_STATE_SENSITIVE);
  }
  return set;
}

gint ButtonIndex(AtkObject* object) { return reinterpret_cast<ButtonAccessible*>(object)->index; }

gboolean ButtonDoAction(AtkAction* action, gint i) {
  auto* self = reinterpret_cast<ButtonAccessible*>(action);
  return i == 0 && self->toolbar && ActivateToolbarButton(self->toolbar, self->index);
}
gint ButtonActionCount(AtkAction*) { return 1; }
const gchar* ButtonActionName(AtkAction*, gint i) { return i == 0 ? "click" : nullptr; }

void ButtonExtents(AtkComponent* component, gint* x, gint* y, gint* width, gint* height, AtkCoordType coords) {
  *x = *y = *width = *height = 0;
  auto* self = reinterpret_cast<ButtonAccessible*>(component);
  const ToolbarButton* b = ButtonOf(ATK_OBJECT(component));
  if (!b || !gtk_widget_get_realized(self->toolbar)) return;
  GtkWidget* top = gtk_widget_get_toplevel(self->toolbar);
  int wx = 0, wy = 0;
  if (!gtk_widget_translate_coordinates(self->toolbar, top, b->rect.left, b->rect.top, &wx, &wy)) return;
  if (coords == ATK_XY_SCREEN) {
    int ox = 0, oy = 0;
    gdk_window_get_origin(gtk_widget_get_window(top), &ox, &oy);
    wx += ox;
    wy += oy;
  }
  *x = wx;
  *y = wy;
  *width = b->rect.right - b->rect.left;
  *height = b->rect.bottom - b->rect.top;
}

void InitButtonAction(gpointer g, gpointer) {
  auto* iface = static_cast<AtkActionIface*>(g);
  iface->do_action = ButtonDoAction;
  iface->get_n_actions = ButtonActionCount;
  iface->get_name = ButtonActionName;
}

void InitButtonComponent(gpointer g, gpointer) { static_cast<AtkComponentIface*>(g)->get_extents = ButtonExtents; }

void InitButtonClass(gpointer klass, gpointer) {
  AtkObjectClass* atk = ATK_OBJECT_CLASS(klass);
  atk->get_name = ButtonName;
  atk->ref_state_set = ButtonStates;
  atk->get_index_in_parent = ButtonIndex;
}

GType ButtonAccessibleType() {
  static GType type = 0;
  if (!type) {
    type = g_type_register_static_simple(ATK_TYPE_OBJECT, "NebroToolbarButtonAccessible",
                                         sizeof(ButtonAccessibleClass), InitButtonClass,
                                         sizeof(ButtonAccessible), nullptr, GTypeFlags(0));
    const GInterfaceInfo action{InitButtonAction, nullptr, nullptr};
    const GInterfaceInfo component{InitButtonComponent, nullptr, nullptr};
    g_type_add_interface_static(type, ATK_TYPE_ACTION, &action);
    g_type_add_interface_static(type, ATK_TYPE_COMPONENT, &component);
  }
  return type;
}

// ---- The toolbar: the drawing area's accessible, with the buttons as its children.

struct ToolbarAccessible {
  GtkWidgetAccessible parent;
  std::array<AtkObject*, kToolbarButtonCount> buttons;
};
struct ToolbarAccessibleClass {
  GtkWidgetAccessibleClass parent;
};

GtkWidget* WidgetOf(AtkObject* object) { return gtk_accessible_get_widget(GTK_ACCESSIBLE(object)); }

gint ToolbarChildCount(AtkObject* object) { return WidgetOf(object) ? kToolbarButtonCount : 0; }

AtkObject* ToolbarChild(AtkObject* object, gint i) {
  auto* self = reinterpret_cast<ToolbarAccessible*>(object);
  GtkWidget* widget = WidgetOf(object);
  if (!widget || i < 0 || i >= kToolbarButtonCount) return nullptr;
  if (!self->buttons[static_cast<size_t>(i)]) {
    auto* button = reinterpret_cast<ButtonAccessible*>(g_object_new(ButtonAccessibleType(), nullptr));
    button->toolbar = widget;
    button->index = i;
    AtkObject* atk = ATK_OBJECT(button);
    atk->role = ATK_ROLE_PUSH_BUTTON;
    atk_object_set_parent(atk, object);
    self->buttons[static_cast<size_t>(i)] = atk;
  }
  return ATK_OBJECT(g_object_ref(self->buttons[static_cast<size_t>(i)]));
}

void ToolbarInitialize(AtkObject* object, gpointer data) {
  ATK_OBJECT_CLASS(g_type_class_peek(GTK_TYPE_WIDGET_ACCESSIBLE))->initialize(object, data);
  object->role = ATK_ROLE_TOOL_BAR;
}

void ToolbarFinalize(GObject* object) {
  auto* self = reinterpret_cast<ToolbarAccessible*>(object);
  for (AtkObject*& b : self->buttons) {
    if (!b) continue;
    reinterpret_cast<ButtonAccessible*>(b)->toolbar = nullptr;
    g_object_unref(b);
    b = nullptr;
  }
  G_OBJECT_CLASS(g_type_class_peek(GTK_TYPE_WIDGET_ACCESSIBLE))->finalize(object);
}

void InitToolbarClass(gpointer klass, gpointer) {
  AtkObjectClass* atk = ATK_OBJECT_CLASS(klass);
  atk->get_n_children = ToolbarChildCount;
  atk->ref_child = ToolbarChild;
  atk->initialize = ToolbarInitialize;
  G_OBJECT_CLASS(klass)->finalize = ToolbarFinalize;
}

GType ToolbarAccessibleType() {
  static GType type = g_type_register_static_simple(
      GTK_TYPE_WIDGET_ACCESSIBLE, "NebroToolbarAccessible", sizeof(ToolbarAccessibleClass), InitToolbarClass,
      sizeof(ToolbarAccessible), nullptr, GTypeFlags(0));
  return type;
}

// ---- The drawing area that uses it.

struct ToolbarArea {
  GtkDrawingArea parent;
};
struct ToolbarAreaClass {
  GtkDrawingAreaClass parent;
};

GType ToolbarAreaType() {
  static GType type = g_type_register_static_simple(
      GTK_TYPE_DRAWING_AREA, "NebroToolbarArea", sizeof(ToolbarAreaClass),
      [](gpointer klass, gpointer) { gtk_widget_class_set_accessible_type(GTK_WIDGET_CLASS(klass), ToolbarAccessibleType()); },
      sizeof(ToolbarArea), nullptr, GTypeFlags(0));
  return type;
}

}  // namespace

GtkWidget* NewAccessibleToolbarArea() { return GTK_WIDGET(g_object_new(ToolbarAreaType(), nullptr)); }

void NotifyToolbarButtonEnabled(GtkWidget* toolbar, int index, bool enabled) {
  AtkObject* atk = gtk_widget_get_accessible(toolbar);
  if (!atk || G_TYPE_FROM_INSTANCE(atk) != ToolbarAccessibleType()) return;
  AtkObject* button = reinterpret_cast<ToolbarAccessible*>(atk)->buttons[static_cast<size_t>(index)];
  if (!button) return;  // nobody has asked for it yet
  atk_object_notify_state_change(button, ATK_STATE_ENABLED, enabled);
  atk_object_notify_state_change(button, ATK_STATE_SENSITIVE, enabled);
}

}  // namespace nebro::appearance
