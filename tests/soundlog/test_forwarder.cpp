// A notification service that shows nothing itself: owns a name on the session bus (and prints "ready"), and passes
// each call of Notify on to another name.
//   test_forwarder NAME DESTINATION
// For the tests of TollvaneLog; a client of the real bus. Ends with the bus.
#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdio>

namespace {

constexpr const char* interface = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";

int serve(sd_bus_message* call, void* destination, sd_bus_error*) {
  if (sd_bus_message_is_method_call(call, interface, "GetServerInformation"))
    return sd_bus_reply_method_return(call, "ssss", "forwarder", "nobody", "1", "1.2");
  if (!sd_bus_message_is_method_call(call, interface, "Notify")) return 0;
  sd_bus* const bus = sd_bus_message_get_bus(call);
  sd_bus_message* copy = nullptr;
  sd_bus_message_new_method_call(bus, &copy, static_cast<const char*>(destination), path, interface, "Notify");
  sd_bus_message_copy(copy, call, 1);
  sd_bus_send(bus, copy, nullptr);
  sd_bus_message_unref(copy);
  return sd_bus_reply_method_return(call, "u", 1);
}

}  // namespace

int main(int count, char** arguments) {
  sd_bus* bus = nullptr;
  if (count != 3 || sd_bus_open_user(&bus) < 0) return 1;
  sd_bus_add_object(bus, nullptr, path, serve, arguments[2]);
  if (sd_bus_request_name(bus, arguments[1], 0) < 0) return 1;
  std::puts("ready");
  std::fflush(stdout);
  while (sd_bus_process(bus, nullptr) >= 0) sd_bus_wait(bus, UINT64_MAX);
}
