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

std::string execArgument(std::string_view argument) {
  std::string text = "\"";
  for (const char c : argument) {
    if (c == '\\') {
      text += "\\\\\\\\";
    } else if (c == '"' || c == '`' || c == '$') {
      text += std::string("\\\\") + c;
    } else if (c == '%') {
      text += "%%";
    } else if (c == '\n') {
      text += "\\n";
    } else {
      text += c;
    }
  }
  return text + '"';
}

// A program's path must not contain a "=" in this key, and "env" would take it for one more variable. A shell starts
// such a program.
std::string execCommand(const std::filesystem::path& program) {
  const bool isPlain = program.native().find('=') == std::string::npos;
  return (isPlain ? "" : "sh -c " + execArgument("exec \"$0\" \"$@\"") + " ") + execArgument(program.native());
}

}  // namespace tollvane
