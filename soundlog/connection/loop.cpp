#include "soundlog/connection/loop.h"

#include <glib-unix.h>

#include <chrono>

namespace tollvane::soundlog {
namespace {

using DescriptorHandler = std::function<void(GIOCondition)>;
using TimerHandler = std::function<void()>;

gboolean descriptorReady(gint, GIOCondition condition, gpointer data) {
  (*static_cast<DescriptorHandler*>(data))(condition);
  return G_SOURCE_CONTINUE;
}

gboolean timeReached(gpointer data) {
  (*static_cast<TimerHandler*>(data))();
  return G_SOURCE_REMOVE;
}

}  // namespace

void Watch::reset() {
  GSource* const source = std::exchange(source_, nullptr);
  if (!source) return;
  g_source_destroy(source);
  g_source_unref(source);
}

Watch watchDescriptor(int descriptor, GIOCondition conditions, DescriptorHandler handler) {
  GSource* const source = g_unix_fd_source_new(descriptor, conditions);
  // GLib keeps the handler alive until it has returned, even if it destroys its own watch.
  g_source_set_callback(source, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(descriptorReady)),
                        new DescriptorHandler(std::move(handler)),
                        [](gpointer data) { delete static_cast<DescriptorHandler*>(data); });
  g_source_attach(source, nullptr);
  return Watch(source);
}

Watch callAfter(Duration delay, TimerHandler handler) {
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(delay).count();
  GSource* const source = g_timeout_source_new(static_cast<guint>(milliseconds));
  g_source_set_callback(source, timeReached, new TimerHandler(std::move(handler)),
                        [](gpointer data) { delete static_cast<TimerHandler*>(data); });
  g_source_attach(source, nullptr);
  return Watch(source);
}

}  // namespace tollvane::soundlog
