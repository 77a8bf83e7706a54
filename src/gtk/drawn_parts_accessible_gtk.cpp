#include "gtk/drawn_parts_accessible_gtk.h"

#include <gtk/gtk-a11y.h>

#include <memory>
#include <vector>

namespace nebro {
namespace {

constexpr const char* kModelKey = "nebro-drawn-parts";

const DrawnPartsModel* ModelOf(GtkWidget* area) {
  return area ? static_cast<const DrawnPartsModel*>(g_object_get_data(G_OBJECT(area), kModelKey)) : nullptr;
}

// ---- One part: an AtkObject with the action and component interfaces.

struct PartAccessible {
  AtkObject parent;
  GtkWidget* area;  // weak (nulled when the area goes: the bridge may keep a part longer)
  int index;
  std::string* name;  // kept for the name GTK hands out as a const pointer
};
struct PartAccessibleClass {
  AtkObjectClass parent;
};

PartAccessible* Part(gpointer object) { return reinterpret_cast<PartAccessible*>(object); }

bool Describe(gpointer object, DrawnPart& out) {
  const DrawnPartsModel* model = ModelOf(Part(object)->area);
  if (!model || Part(object)->index >= model->count) return false;
  out = model->part(Part(object)->area, Part(object)->index);
  return true;
}

const gchar* PartName(AtkObject* object) {
  DrawnPart part;
  if (!Describe(object, part)) return "";
  *Part(object)->name = part.name;
  return Part(object)->name->c_str();
}

AtkStateSet* PartStates(AtkObject* object) {
  AtkStateSet* set = atk_state_set_new();
  DrawnPart part;
  if (!Describe(object, part)) {
    atk_state_set_add_state(set, ATK_STATE_DEFUNCT);
    return set;
  }
  for (AtkStateType s : {ATK_STATE_VISIBLE, ATK_STATE_SHOWING}) atk_state_set_add_state(set, s);
  if (part.enabled) {
    atk_state_set_add_state(set, ATK_STATE_ENABLED);
    atk_state_set_add_state(set, ATK_STATE_SENSITIVE);
  }
  return set;
}

gint PartIndex(AtkObject* object) { return Part(object)->index; }

// The part forgets its area when the area is finalized before it.
void SetPartArea(PartAccessible* part, GtkWidget* area) {
  if (part->area) g_object_remove_weak_pointer(G_OBJECT(part->area), reinterpret_cast<gpointer*>(&part->area));
  part->area = area;
  if (area) g_object_add_weak_pointer(G_OBJECT(area), reinterpret_cast<gpointer*>(&part->area));
}

void PartFinalize(GObject* object) {
  SetPartArea(Part(object), nullptr);
  delete Part(object)->name;
  G_OBJECT_CLASS(g_type_class_peek(ATK_TYPE_OBJECT))->finalize(object);
}

bool Pressable(gpointer object) {
  const DrawnPartsModel* model = ModelOf(Part(object)->area);
  return model && model->activate;
}

gboolean PartDoAction(AtkAction* action, gint i) {
  return i == 0 && Pressable(action) && ModelOf(Part(action)->area)->activate(Part(action)->area, Part(action)->index);
}
gint PartActionCount(AtkAction* action) { return Pressable(action) ? 1 : 0; }
const gchar* PartActionName(AtkAction* action, gint i) { return i == 0 && Pressable(action) ? "click" : nullptr; }

void PartExtents(AtkComponent* component, gint* x, gint* y, gint* width, gint* height, AtkCoordType coords) {
  *x = *y = *width = *height = 0;
  GtkWidget* area = Part(component)->area;
  DrawnPart part;
  if (!Describe(component, part) || !gtk_widget_get_realized(area)) return;
  GtkWidget* top = gtk_widget_get_toplevel(area);
  int wx = 0, wy = 0;
  if (!gtk_widget_translate_coordinates(area, top, part.area.x, part.area.y, &wx, &wy)) return;
  if (coords == ATK_XY_SCREEN) {
    int ox = 0, oy = 0;
    gdk_window_get_origin(gtk_widget_get_window(top), &ox, &oy);
    wx += ox;
    wy += oy;
  }
  *x = wx;
  *y = wy;
  *width = part.area.width;
  *height = part.area.height;
}

void InitPartAction(gpointer g, gpointer) {
  auto* iface = static_cast<AtkActionIface*>(g);
  iface->do_action = PartDoAction;
  iface->get_n_actions = PartActionCount;
  iface->get_name = PartActionName;
}

void InitPartComponent(gpointer g, gpointer) { static_cast<AtkComponentIface*>(g)->get_extents = PartExtents; }

void InitPartClass(gpointer klass, gpointer) {
  AtkObjectClass* atk = ATK_OBJECT_CLASS(klass);
  atk->get_name = PartName;
  atk->ref_state_set = PartStates;
  atk->get_index_in_parent = PartIndex;
  G_OBJECT_CLASS(klass)->finalize = PartFinalize;
}

GType PartAccessibleType() {
  static const GType type = [] {
    const GType t = g_type_register_static_simple(ATK_TYPE_OBJECT, "NebroDrawnPartAccessible",
                                                  sizeof(PartAccessibleClass), InitPartClass,
                                                  sizeof(PartAccessible), nullptr, GTypeFlags(0));
    const GInterfaceInfo action{InitPartAction, nullptr, nullptr};
    const GInterfaceInfo component{InitPartComponent, nullptr, nullptr};
    g_type_add_interface_static(t, ATK_TYPE_ACTION, &action);
    g_type_add_interface_static(t, ATK_TYPE_COMPONENT, &component);
    return t;
  }();
  return type;
}

// ---- The strip: the drawing area's accessible, with the parts as its children.

struct AreaAccessible {
  GtkWidgetAccessible parent;
  std::vector<AtkObject*>* parts;
};
struct AreaAccessibleClass {
  GtkWidgetAccessibleClass parent;
};

GtkWidget* WidgetOf(AtkObject* object) { return gtk_accessible_get_widget(GTK_ACCESSIBLE(object)); }

gint AreaChildCount(AtkObject* object) {
  const DrawnPartsModel* model = ModelOf(WidgetOf(object));
  return model ? model->count : 0;
}

AtkObject* AreaChild(AtkObject* object, gint i) {
  auto* self = reinterpret_cast<AreaAccessible*>(object);
  GtkWidget* widget = WidgetOf(object);
  if (i < 0 || i >= AreaChildCount(object)) return nullptr;
  if (static_cast<size_t>(i) >= self->parts->size()) self->parts->resize(static_cast<size_t>(i) + 1, nullptr);
  AtkObject*& slot = (*self->parts)[static_cast<size_t>(i)];
  if (!slot) {
    PartAccessible* part = Part(g_object_new(PartAccessibleType(), nullptr));
    SetPartArea(part, widget);
    part->index = i;
    part->name = new std::string;
    slot = ATK_OBJECT(part);
    slot->role = ModelOf(widget)->partRole;
    atk_object_set_parent(slot, object);
  }
  return ATK_OBJECT(g_object_ref(slot));
}

void AreaInitialize(AtkObject* object, gpointer data) {
  ATK_OBJECT_CLASS(g_type_class_peek(GTK_TYPE_WIDGET_ACCESSIBLE))->initialize(object, data);
  reinterpret_cast<AreaAccessible*>(object)->parts = new std::vector<AtkObject*>;
  if (const DrawnPartsModel* model = ModelOf(GTK_WIDGET(data))) object->role = model->role;
}

void AreaFinalize(GObject* object) {
  auto* self = reinterpret_cast<AreaAccessible*>(object);
  if (self->parts) {
    for (AtkObject* part : *self->parts) {
      if (!part) continue;
      SetPartArea(Part(part), nullptr);
      g_object_unref(part);
    }
    delete self->parts;
  }
  G_OBJECT_CLASS(g_type_class_peek(GTK_TYPE_WIDGET_ACCESSIBLE))->finalize(object);
}

void InitAreaClass(gpointer klass, gpointer) {
  AtkObjectClass* atk = ATK_OBJECT_CLASS(klass);
  atk->get_n_children = AreaChildCount;
  atk->ref_child = AreaChild;
  atk->initialize = AreaInitialize;
  G_OBJECT_CLASS(klass)->finalize = AreaFinalize;
}

GType AreaAccessibleType() {
  static const GType type = g_type_register_static_simple(
      GTK_TYPE_WIDGET_ACCESSIBLE, "NebroDrawnPartsAccessible", sizeof(AreaAccessibleClass), InitAreaClass,
      sizeof(AreaAccessible), nullptr, GTypeFlags(0));
  return type;
}

// ---- The drawing area that uses it.

struct Area {
  GtkDrawingArea parent;
};
struct AreaClass {
  GtkDrawingAreaClass parent;
};

void InitAreaWidgetClass(gpointer klass, gpointer) {
  gtk_widget_class_set_accessible_type(GTK_WIDGET_CLASS(klass), AreaAccessibleType());
}

GType AreaType() {
  static const GType type = g_type_register_static_simple(GTK_TYPE_DRAWING_AREA, "NebroDrawnPartsArea",
                                                          sizeof(AreaClass), InitAreaWidgetClass, sizeof(Area),
                                                          nullptr, GTypeFlags(0));
  return type;
}

}  // namespace

GtkWidget* NewDrawnPartsArea(DrawnPartsModel model) {
  GtkWidget* area = GTK_WIDGET(g_object_new(AreaType(), nullptr));
  // Set before anyone asks for the accessible object, which reads the roles from it.
  g_object_set_data_full(G_OBJECT(area), kModelKey, new DrawnPartsModel(std::move(model)),
                         [](gpointer p) { delete static_cast<DrawnPartsModel*>(p); });
  return area;
}

void NotifyDrawnPartChanged(GtkWidget* area, int index) {
  AtkObject* atk = gtk_widget_get_accessible(area);
  if (!atk || G_TYPE_FROM_INSTANCE(atk) != AreaAccessibleType()) return;
  const std::vector<AtkObject*>& parts = *reinterpret_cast<AreaAccessible*>(atk)->parts;
  if (index < 0 || static_cast<size_t>(index) >= parts.size() || !parts[static_cast<size_t>(index)]) return;
  AtkObject* part = parts[static_cast<size_t>(index)];  // only parts someone has asked for
  DrawnPart now;
  if (!Describe(part, now)) return;
  atk_object_notify_state_change(part, ATK_STATE_ENABLED, now.enabled);
  atk_object_notify_state_change(part, ATK_STATE_SENSITIVE, now.enabled);
  g_object_notify(G_OBJECT(part), "accessible-name");
}

}  // namespace nebro
