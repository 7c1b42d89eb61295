#include "soundlog/connection/bus_connection.h"

#include <poll.h>

#include <cstdint>
#include <utility>

namespace tollvane::soundlog {
namespace {

// The most messages that are handled before other sources of the event loop get their turn.
constexpr int mostMessages = 32;

}  // namespace

struct BusConnection::Source {
  GSource base;
  BusConnection* connection;
  gpointer descriptor;
  int conditions;
};

struct BusConnection::SourceFunctions {
  static gboolean prepare(GSource* source, gint* timeout) {
    *timeout = -1;
    auto* const self = reinterpret_cast<Source*>(source);
    sd_bus* const bus = self->connection->bus_;
    const int events = sd_bus_get_events(bus);
    if (events < 0) return TRUE;
    const int conditions = (events & POLLIN ? G_IO_IN : 0) | (events & POLLOUT ? G_IO_OUT : 0);
    // Only on a change: each call wakes the loop, which would prepare again, without end.
    if (conditions != self->conditions) {
      self->conditions = conditions;
      g_source_modify_unix_fd(source, self->descriptor, static_cast<GIOCondition>(conditions));
    }
    std::uint64_t due = UINT64_MAX;
    // Both libraries count microseconds of the monotonic clock.
    const bool has = sd_bus_get_timeout(bus, &due) > 0 && due != UINT64_MAX;
    g_source_set_ready_time(source, has ? static_cast<gint64>(due) : -1);
    return FALSE;
  }

  static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
    reinterpret_cast<Source*>(source)->connection->process();
    return G_SOURCE_CONTINUE;
  }

  static GSourceFuncs table() {
    GSourceFuncs functions{};
    functions.prepare = prepare;
    functions.dispatch = dispatch;
    return functions;
  }
};

std::unique_ptr<BusConnection> BusConnection::open(const std::string& address, Role role, MessageHandler message,
                                                   std::function<void()> closed) {
  sd_bus* bus = nullptr;
  if (sd_bus_new(&bus) < 0) return nullptr;
  sd_bus_set_address(bus, address.c_str());
  sd_bus_set_bus_client(bus, 1);
  if (role == Role::monitor) sd_bus_set_monitor(bus, 1);
  if (sd_bus_start(bus) < 0) {
    sd_bus_unref(bus);
    return nullptr;
  }
  return std::unique_ptr<BusConnection>(new BusConnection(bus, role, std::move(message), std::move(closed)));
}

BusConnection::BusConnection(sd_bus* bus, Role role, MessageHandler message, std::function<void()> closed)
    : bus_(bus), role_(role), message_(std::move(message)), closed_(std::move(closed)) {
  static GSourceFuncs functions = SourceFunctions::table();
  GSource* const source = g_source_new(&functions, sizeof(Source));
  auto* const self = reinterpret_cast<Source*>(source);
  self->connection = this;
  self->conditions = G_IO_IN;
  self->descriptor = g_source_add_unix_fd(source, sd_bus_get_fd(bus_), G_IO_IN);
  // If a notification and its sound are pending at the same moment, the notification is written first.
  g_source_set_priority(source, G_PRIORITY_HIGH);
  g_source_attach(source, nullptr);
  source_ = Watch(source);
}

BusConnection::~BusConnection() {
  source_.reset();
  sd_bus_close_unref(bus_);
}

void BusConnection::process() {
  if (closing_.active()) return;
  for (int count = 0; count < mostMessages; ++count) {
    sd_bus_message* message = nullptr;
    const int result = sd_bus_process(bus_, role_ == Role::monitor ? &message : nullptr);
    if (message) {
      if (message_) message_(message);
      sd_bus_message_unref(message);
    }
    if (result == 0) return;
    if (result < 0 || !sd_bus_is_open(bus_)) {
      source_.reset();
      // A copy, because the handler may destroy this connection.
      closing_ = callAfter(Duration::zero(), [closed = closed_] { closed(); });
      return;
    }
  }
}

}  // namespace tollvane::soundlog
