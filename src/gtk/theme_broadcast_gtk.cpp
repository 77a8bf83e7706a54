#include "gtk/theme_broadcast_gtk.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace nebro {
namespace {

struct Subscriber {
  GtkWidget* widget;
  std::shared_ptr<std::function<void()>> onChange;
};

std::vector<Subscriber>& Subscribers() {
  static std::vector<Subscriber> list;
  return list;
}

void Forget(GtkWidget* widget, gpointer) {
  auto& list = Subscribers();
  std::erase_if(list, [widget](const Subscriber& s) { return s.widget == widget; });
}

}  // namespace

void FollowThemeChanges(GtkWidget* widget, std::function<void()> onChange) {
  Subscribers().push_back({widget, std::make_shared<std::function<void()>>(std::move(onChange))});
  if (widget) g_signal_connect(widget, "destroy", G_CALLBACK(Forget), nullptr);
}

void BroadcastThemeChange() {
  // A copy: a subscriber may open or close windows while it repaints.
  const std::vector<Subscriber> now = Subscribers();
  for (const Subscriber& s : now) {
    const auto& list = Subscribers();
    const bool alive = std::any_of(list.begin(), list.end(), [&](const Subscriber& t) { return t.onChange == s.onChange; });
    if (!alive) continue;
    try {
      (*s.onChange)();
    } catch (...) {
      g_warning("Nebro: a window failed to follow the theme");
    }
  }
}

}  // namespace nebro
