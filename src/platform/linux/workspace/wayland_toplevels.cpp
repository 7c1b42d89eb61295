#include "platform/linux/workspace/wayland_toplevels.h"

#include <qpa/qplatformnativeinterface.h>
#include <wayland-client.h>

#include <QGuiApplication>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "wlr-foreign-toplevel-management-unstable-v1-client-protocol.h"

namespace tollvane {
namespace {

constexpr int answersAwaited = 5;  // round trips after which we do not expect an answer any more
constexpr std::size_t mostToplevels = 1000;

void* ofTheConnection(const char* what) {
  QPlatformNativeInterface* native = QGuiApplication::platformNativeInterface();
  return native == nullptr ? nullptr : native->nativeResourceForIntegration(what);
}

// One window of the compositor's list.
class Toplevel {
 public:
  explicit Toplevel(zwlr_foreign_toplevel_handle_v1* handle) : handle_(handle) {
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        .title = [](void* self, auto*, const char* text) { of(self).window.title = text; },
        .app_id = [](void* self, auto*, const char* text) { of(self).window.names = {text}; },
        .output_enter = [](void*, auto*, wl_output*) {},
        .output_leave = [](void*, auto*, wl_output*) {},
        .state = [](void* self, auto*, wl_array* states) { of(self).window.isActive = isActive(*states); },
        .done = [](void*, auto*) {},
        .closed = [](void* self, auto*) { of(self).isClosed = true; },
        .parent = [](void*, auto*, auto*) {},
    };
    zwlr_foreign_toplevel_handle_v1_add_listener(handle_, &listener, this);
  }
  ~Toplevel() { zwlr_foreign_toplevel_handle_v1_destroy(handle_); }
  Toplevel(const Toplevel&) = delete;
  Toplevel& operator=(const Toplevel&) = delete;

  void activate(wl_seat* seat) { zwlr_foreign_toplevel_handle_v1_activate(handle_, seat); }

  OpenWindow window;
  bool isClosed = false;

 private:
  static Toplevel& of(void* self) { return *static_cast<Toplevel*>(self); }
  static bool isActive(const wl_array& states) {
    const auto* first = static_cast<const std::uint32_t*>(states.data);
    const auto* end = first + states.size / sizeof(std::uint32_t);
    return std::find(first, end, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) != end;
  }

  zwlr_foreign_toplevel_handle_v1* handle_;
};

// The compositor's windows at this moment, on the toolkit's own connection, in a queue of our own: none of the
// toolkit's events are handled while we wait.
class Toplevels {
 public:
  explicit Toplevels(wl_display* display) : display_(display), queue_(wl_display_create_queue(display)) {
    auto* wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), queue_);
    wl_registry* registry = wl_display_get_registry(wrapper);
    wl_proxy_wrapper_destroy(wrapper);
    static constexpr wl_registry_listener listener{offered, [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry_add_listener(registry, &listener, this);
    roundTrip();
    wl_registry_destroy(registry);
    if (manager_ != nullptr) roundTrip();  // the list
    if (manager_ != nullptr) roundTrip();  // what each says of itself
  }
  ~Toplevels() {
    windows_.clear();
    if (manager_ != nullptr) zwlr_foreign_toplevel_manager_v1_stop(manager_);
    // What comes for it after this is dropped with the queue.
    roundTrip();
    windows_.clear();
    if (manager_ != nullptr) zwlr_foreign_toplevel_manager_v1_destroy(manager_);
    wl_event_queue_destroy(queue_);
  }
  Toplevels(const Toplevels&) = delete;
  Toplevels& operator=(const Toplevels&) = delete;

  const std::vector<std::unique_ptr<Toplevel>>& windows() const { return windows_; }
  void roundTrip() { wl_display_roundtrip_queue(display_, queue_); }

 private:
  static void offered(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                      std::uint32_t version) {
    if (std::strcmp(interface, zwlr_foreign_toplevel_manager_v1_interface.name) != 0) return;
    auto& toplevels = *static_cast<Toplevels*>(self);
    toplevels.manager_ = static_cast<zwlr_foreign_toplevel_manager_v1*>(
        wl_registry_bind(registry, name, &zwlr_foreign_toplevel_manager_v1_interface, std::min(version, 3U)));
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{appeared, [](void*, auto*) {}};
    zwlr_foreign_toplevel_manager_v1_add_listener(toplevels.manager_, &listener, self);
  }
  static void appeared(void* self, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle) {
    auto& windows = static_cast<Toplevels*>(self)->windows_;
    if (windows.size() >= mostToplevels) return zwlr_foreign_toplevel_handle_v1_destroy(handle);
    windows.push_back(std::make_unique<Toplevel>(handle));
    windows.back()->window.id = std::to_string(windows.size() - 1);
  }

  wl_display* display_;
  wl_event_queue* queue_;
  zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
  std::vector<std::unique_ptr<Toplevel>> windows_;
};

}  // namespace

void WaylandToplevels::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return done(Raised::unknown);
  auto* display = static_cast<wl_display*>(ofTheConnection("wl_display"));
  auto* seat = static_cast<wl_seat*>(ofTheConnection("wl_seat"));
  if (display == nullptr || seat == nullptr) return done(Raised::unknown);
  bool isForward = false;
  {
    Toplevels toplevels(display);
    std::vector<OpenWindow> open;
    for (const auto& each : toplevels.windows())
      if (!each->isClosed) open.push_back(each->window);
    // A window that has another name than its application's entry may still be there.
    const auto best = bestWindowOf(open, target);
    if (!best) return done(Raised::unknown);
    Toplevel& window = *toplevels.windows()[std::stoul(best->id)];
    window.activate(seat);
    window.window.isActive = false;
    for (int i = 0; i < answersAwaited && !window.window.isActive; ++i) toplevels.roundTrip();
    isForward = window.window.isActive || best->isActive;
  }
  done(isForward ? Raised::yes : Raised::unknown);
}

}  // namespace tollvane
