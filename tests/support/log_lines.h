// Lines as the log tool prints them.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tollvane::test {

inline std::string logLine(std::string_view path, std::string_view message) {
  return nlohmann::json{{"processImagePath", path}, {"eventMessage", message}, {"traceID", 1}}.dump() + "\n";
}
inline std::string outputMessage(std::string_view name, std::string_view pid, bool running = true) {
  return "update_running_state {\"name\":\"" + std::string(name) + "(" + std::string(pid) +
         ")\",\"output_running\":" + (running ? "true" : "false") + "}";
}
inline std::string requestMessage(std::string_view name, std::string_view pid) {
  return "Incoming Request : actionID 4098, inClientPID " + std::string(pid) + "(" + std::string(name) + "), flags 0";
}
inline std::string outputStarted(std::string_view name, int pid) {
  return logLine("/usr/sbin/audiomxd", outputMessage(name, std::to_string(pid)));
}
inline std::string soundRequested(std::string_view name, int pid) {
  return logLine("/usr/sbin/systemsoundserverd", requestMessage(name, std::to_string(pid)));
}
inline std::string notificationPresented(std::string_view bundleID) {
  return logLine("/usr/sbin/usernoted",
                 "Presenting <NotificationRecord app:\"" + std::string(bundleID) + "\" ident:\"7\">");
}

}  // namespace tollvane::test
