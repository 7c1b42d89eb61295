// What a Wayland compositor offers to panels and their menus beyond ordinary windows: surfaces at any place, in front
// of everything. Only compositors with zwlr_layer_shell_v1 offer it. Main thread only.
//
// The toolkit must not give such a window a role of its own. Therefore the window has LayerShell::flags among its
// flags, and a LayerShell::Windows exists while it is shown. Source: wlr-layer-shell-unstable-v1, xdg-activation-v1.
#pragma once

#include <QPoint>
#include <QSize>
#include <QWindow>
#include <memory>
#include <optional>
#include <string>

struct wl_display;
struct wl_event_queue;
struct wl_output;
struct wl_registry;
struct xdg_activation_v1;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace tollvane {

// A window's place; destroy it before the window is hidden.
class LayerSurface {
 public:
  ~LayerSurface();
  LayerSurface(const LayerSurface&) = delete;
  LayerSurface& operator=(const LayerSurface&) = delete;

  // The size that the compositor allows.
  QSize size() const { return size_; }

 private:
  friend class LayerShell;
  friend struct LayerSurfaceEvents;
  LayerSurface() = default;

  zwlr_layer_surface_v1* surface_ = nullptr;
  QSize size_;
  bool configured_ = false;
};

class LayerShell {
 public:
  static constexpr Qt::WindowFlags flags = Qt::BypassWindowManagerHint | Qt::FramelessWindowHint;

  // While it exists, the toolkit leaves windows with these flags to us.
  class Windows {
   public:
    Windows();
    ~Windows();
    Windows(const Windows&) = delete;
    Windows& operator=(const Windows&) = delete;
  };

  // The layer shell of this process's compositor; null if it has none.
  static LayerShell* ofThisDesktop();

  // Makes `window` cover an output, panels too, and gives it the keyboard. Null if the compositor does not answer.
  std::unique_ptr<LayerSurface> cover(QWindow& window);

  // Puts `window` at `at` on `output`, which a covering window is on. Null if the compositor does not answer.
  std::unique_ptr<LayerSurface> place(QWindow& window, const QPoint& at, const QSize& size, wl_output* output);

  // The size of what the panels of `output` leave free; absent if the compositor does not answer.
  std::optional<QSize> sizeWithoutPanels(wl_output* output);

  // An activation token for the user's last click or key in one of our windows. Empty if none exists.
  std::string activationToken(QWindow& window);

 private:
  struct Role;

  LayerShell(wl_display* display, wl_event_queue* queue) : display_(display), queue_(queue) {}
  static std::unique_ptr<LayerShell> find();
  std::unique_ptr<LayerSurface> attach(void* surface, wl_output* output, const Role& role);
  static void offered(void* self, wl_registry* registry, unsigned name, const char* interface, unsigned version);

  wl_display* display_;
  wl_event_queue* queue_;
  zwlr_layer_shell_v1* shell_ = nullptr;
  xdg_activation_v1* activation_ = nullptr;
};

}  // namespace tollvane
