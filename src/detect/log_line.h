// One line of the log stream: a JSON object of which two members matter. One thread per reader. Source of the format:
// the "ndjson" style of the system's log tool; JSON is RFC 8259, in UTF-8.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

namespace tollvane {

struct LogLine {
  std::string_view process;  // last component of "processImagePath"; empty if that is missing or not a text
  std::string_view message;  // "eventMessage"
};

class LogLineReader {
 public:
  LogLineReader();
  ~LogLineReader();

  // Reads the two members; if a name is repeated, the last one counts. Absent if `line` is not one well-formed JSON
  // object with a text under "eventMessage". The result is valid until the next call. `line` must have
  // LineBuffer::padding readable bytes behind it. Allocates nothing once it has read a line of that length.
  std::optional<LogLine> read(std::string_view line);

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
};

}  // namespace tollvane
