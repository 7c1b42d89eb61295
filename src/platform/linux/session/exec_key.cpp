#include "platform/linux/session/exec_key.h"

namespace tollvane {

std::string keyFileText(std::string_view text) {
  std::string value;
  for (const char c : text) {
    if (c == '\\') {
      value += "\\\\";
    } else if (c == '\n') {
      value += "\\n";
    } else {
      value += c;
    }
  }
  return value;
}

// Quoted as the key's own rules say, and then written like every text of such a file.
std::string execArgument(std::string_view argument) {
  std::string quoted = "\"";
  for (const char c : argument) {
    if (c == '\\' || c == '"' || c == '`' || c == '$') quoted += '\\';
    if (c == '%') quoted += '%';
    quoted += c;
  }
  return keyFileText(quoted + '"');
}

// A program's path must not contain a "=" in this key, and "env" would take it for one more variable. A shell starts
// such a program.
std::string execCommand(const std::filesystem::path& program) {
  const bool isPlain = program.native().find('=') == std::string::npos;
  return (isPlain ? "" : "sh -c " + execArgument("exec \"$0\" \"$@\"") + " ") + execArgument(program.native());
}

}  // namespace tollvane
