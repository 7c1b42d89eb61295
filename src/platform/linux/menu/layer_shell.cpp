#include "platform/linux/menu/layer_shell.h"

#include <qpa/qplatformnativeinterface.h>
#include <wayland-client.h>

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "wlr-layer-shell-unstable-v1-client-protocol.h"
#include "xdg-activation-v1-client-protocol.h"

namespace tollvane {
namespace {

constexpr auto variable = "QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT";
constexpr int answers = 5;  // round trips after which we do not expect an answer any more

void* ofTheConnection(const char* what) {
  QPlatformNativeInterface* native = QGuiApplication::platformNativeInterface();
  return native == nullptr ? nullptr : native->nativeResourceForIntegration(what);
}

wl_surface* surfaceOf(QWindow& window) {
  window.create();
  return static_cast<wl_surface*>(
      QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", &window));
}

}  // namespace

struct LayerShell::Role {
  std::uint32_t anchor = 0;
  QSize size;  // 0 if the anchors decide
  QPoint at;
  int exclusiveZone = -1;  // -1: does not make way for panels
  bool keyboard = false;
};

struct LayerSurfaceEvents {
  static void configure(void* data, zwlr_layer_surface_v1* surface, std::uint32_t serial, std::uint32_t width,
                        std::uint32_t height) {
    auto& self = *static_cast<LayerSurface*>(data);
    zwlr_layer_surface_v1_ack_configure(surface, serial);
    self.size_ = {static_cast<int>(width), static_cast<int>(height)};
    self.configured_ = true;
  }
  // The output is gone, and with it what we show on it: there is nothing to do.
  static void closed(void*, zwlr_layer_surface_v1*) {}

  static constexpr zwlr_layer_surface_v1_listener listener{configure, closed};
};

LayerSurface::~LayerSurface() {
  if (surface_ != nullptr) zwlr_layer_surface_v1_destroy(surface_);
}

LayerShell::Windows::Windows() { qputenv(variable, "1"); }
LayerShell::Windows::~Windows() { qunsetenv(variable); }

LayerShell* LayerShell::ofThisDesktop() {
  // A process has only one connection to its compositor.
  static const std::unique_ptr<LayerShell> found = find();
  return found.get();
}

std::unique_ptr<LayerShell> LayerShell::find() {
  if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return nullptr;
  auto* display = static_cast<wl_display*>(ofTheConnection("wl_display"));
  if (display == nullptr) return nullptr;
  // A queue of its own, so that none of the toolkit's events are handled while we wait.
  wl_event_queue* queue = wl_display_create_queue(display);
  auto shell = std::unique_ptr<LayerShell>(new LayerShell(display, queue));
  auto* wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
  wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), queue);
  wl_registry* registry = wl_display_get_registry(wrapper);
  wl_proxy_wrapper_destroy(wrapper);
  static constexpr wl_registry_listener listener{offered, [](void*, wl_registry*, std::uint32_t) {}};
  wl_registry_add_listener(registry, &listener, shell.get());
  wl_display_roundtrip_queue(display, queue);
  wl_registry_destroy(registry);
  return shell->shell_ == nullptr ? nullptr : std::move(shell);
}

void LayerShell::offered(void* self, wl_registry* registry, unsigned name, const char* interface, unsigned version) {
  auto& shell = *static_cast<LayerShell*>(self);
  const auto is = [&](const wl_interface& wanted) { return std::strcmp(interface, wanted.name) == 0; };
  if (is(zwlr_layer_shell_v1_interface)) {
    shell.shell_ = static_cast<zwlr_layer_shell_v1*>(
        wl_registry_bind(registry, name, &zwlr_layer_shell_v1_interface, std::min(version, 3U)));
  }
  if (is(xdg_activation_v1_interface)) {
    shell.activation_ =
        static_cast<xdg_activation_v1*>(wl_registry_bind(registry, name, &xdg_activation_v1_interface, 1));
  }
}

std::unique_ptr<LayerSurface> LayerShell::cover(QWindow& window) {
  constexpr std::uint32_t everywhere = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                       ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
  return attach(surfaceOf(window), nullptr, {.anchor = everywhere, .size = {0, 0}, .at = {}, .keyboard = true});
}

std::unique_ptr<LayerSurface> LayerShell::place(QWindow& window, const QPoint& at, const QSize& size,
                                                wl_output* output) {
  constexpr std::uint32_t corner = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
  return attach(surfaceOf(window), output, {.anchor = corner, .size = size, .at = at});
}

std::optional<QSize> LayerShell::sizeWithoutPanels(wl_output* output) {
  auto* compositor = static_cast<wl_compositor*>(ofTheConnection("compositor"));
  if (compositor == nullptr) return std::nullopt;
  wl_surface* surface = wl_compositor_create_surface(compositor);
  constexpr std::uint32_t everywhere = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                       ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
  auto asked = attach(surface, output, {.anchor = everywhere, .size = {0, 0}, .at = {}, .exclusiveZone = 0});
  const auto size = asked ? std::optional(asked->size()) : std::nullopt;
  asked.reset();
  wl_surface_destroy(surface);
  return size;
}

std::unique_ptr<LayerSurface> LayerShell::attach(void* surface, wl_output* output, const Role& role) {
  if (surface == nullptr) return nullptr;
  auto* handle = static_cast<wl_surface*>(surface);
  auto made = std::unique_ptr<LayerSurface>(new LayerSurface);
  made->surface_ =
      zwlr_layer_shell_v1_get_layer_surface(shell_, handle, output, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "menu");
  zwlr_layer_surface_v1_add_listener(made->surface_, &LayerSurfaceEvents::listener, made.get());
  zwlr_layer_surface_v1_set_anchor(made->surface_, role.anchor);
  zwlr_layer_surface_v1_set_size(made->surface_, static_cast<std::uint32_t>(role.size.width()),
                                 static_cast<std::uint32_t>(role.size.height()));
  zwlr_layer_surface_v1_set_exclusive_zone(made->surface_, role.exclusiveZone);
  zwlr_layer_surface_v1_set_margin(made->surface_, role.at.y(), 0, 0, role.at.x());
  zwlr_layer_surface_v1_set_keyboard_interactivity(made->surface_, role.keyboard ? 1 : 0);
  wl_surface_commit(handle);
  // Nothing may be drawn before the compositor has answered.
  for (int i = 0; i < answers && !made->configured_; ++i) {
    if (wl_display_roundtrip_queue(display_, queue_) < 0) return nullptr;
  }
  if (!made->configured_) return nullptr;
  // Later events come with the toolkit's own.
  wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(made->surface_), nullptr);
  return made;
}

std::string LayerShell::activationToken(QWindow& window) {
  auto* seat = static_cast<wl_seat*>(ofTheConnection("wl_seat"));
  if (activation_ == nullptr || seat == nullptr) return {};
  const auto serial = reinterpret_cast<std::uintptr_t>(ofTheConnection("serial"));
  xdg_activation_token_v1* request = xdg_activation_v1_get_activation_token(activation_);
  std::optional<std::string> token;
  static constexpr xdg_activation_token_v1_listener listener{
      [](void* answer, xdg_activation_token_v1*, const char* text) {
        *static_cast<std::optional<std::string>*>(answer) = text;
      }};
  xdg_activation_token_v1_add_listener(request, &listener, &token);
  xdg_activation_token_v1_set_serial(request, static_cast<std::uint32_t>(serial), seat);
  xdg_activation_token_v1_set_surface(request, surfaceOf(window));
  xdg_activation_token_v1_commit(request);
  for (int i = 0; i < answers && !token; ++i) {
    if (wl_display_roundtrip_queue(display_, queue_) < 0) break;
  }
  xdg_activation_token_v1_destroy(request);
  return token.value_or("");
}

}  // namespace tollvane
