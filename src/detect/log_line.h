// One line of the log stream: a JSON object of which two members matter.
// Source of the form: the system log tool's "ndjson" style; JSON is RFC 8259, in UTF-8. One thread per reader.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

namespace tollvane {

struct LogLine {
  std::string_view process;  // last component of "processImagePath"; empty when that is missing or not a text
  std::string_view message;  // "eventMessage"
};

class LogLineReader {
 public:
  LogLineReader();
  ~LogLineReader();

  // The members of the line; the last one counts where a name is repeated. Absent when the line is not one well-formed
  // JSON object with a text under "eventMessage". What is returned is valid until the next call. `line` must have
  // LineBuffer::padding readable bytes behind it. Allocates nothing once it has seen a line of that length.
  std::optional<LogLine> read(std::string_view line);

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
};

}  // namespace tollvane
