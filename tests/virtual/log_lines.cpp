#include "tests/virtual/log_lines.h"

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane::test {

std::string logLine(std::string_view path, std::string_view message) {
  return json::compact({{"processImagePath", path}, {"eventMessage", message}, {"traceID", 1}}) + "\n";
}

std::string outputMessage(std::string_view name, std::string_view pid, bool running) {
  return "update_running_state {\"name\":\"" + std::string(name) + "(" + std::string(pid) +
         ")\",\"output_running\":" + (running ? "true" : "false") + "}";
}

std::string requestMessage(std::string_view name, std::string_view pid) {
  return "Incoming Request : actionID 4098, inClientPID " + std::string(pid) + "(" + std::string(name) + "), flags 0";
}

std::string outputStarted(std::string_view name, int pid) {
  return logLine("/usr/sbin/audiomxd", outputMessage(name, std::to_string(pid)));
}

std::string soundRequested(std::string_view name, int pid) {
  return logLine("/usr/sbin/systemsoundserverd", requestMessage(name, std::to_string(pid)));
}

std::string notificationPresented(std::string_view bundleID) {
  return logLine("/usr/sbin/usernoted",
                 "Presenting <NotificationRecord app:\"" + std::string(bundleID) + "\" ident:\"7\">");
}

}  // namespace tollvane::test
