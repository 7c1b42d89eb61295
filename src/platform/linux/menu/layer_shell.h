// What the Wayland compositor offers to panels and their menus beyond ordinary windows: surfaces at a place of their
// own choice, in front of everything. Only compositors with zwlr_layer_shell_v1 do. Main thread only.
//
// A window that takes part is made without the toolkit's own role for it: LayerShell::flags in its flags, and a
// LayerShell::Windows while it is shown.
// Source: wlr-layer-shell-unstable-v1, xdg-activation-v1.
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

  // As the compositor allows it.
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

  // Makes the toolkit leave windows with these flags to us.
  class Windows {
   public:
    Windows();
    ~Windows();
    Windows(const Windows&) = delete;
    Windows& operator=(const Windows&) = delete;
  };

  // Of the compositor that this process is shown by; null where it has none.
  static LayerShell* ofThisDesktop();

  // All of an output, panels too, with the keyboard. Null when the compositor does not answer.
  std::unique_ptr<LayerSurface> cover(QWindow& window);

  // At a place of the output that a covering window is on.
  std::unique_ptr<LayerSurface> place(QWindow& window, const QPoint& at, const QSize& size, wl_output* output);

  // What an output has besides its panels, as a size alone; absent when the compositor does not answer.
  std::optional<QSize> sizeWithoutPanels(wl_output* output);

  // For the user's last click or key, which one of our windows has got. Empty where there is none.
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
