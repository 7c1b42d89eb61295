// One line of the log stream: a JSON object of which two members matter, and two more that only a log tool of ours
// adds. One thread per reader. Source of the format: the "ndjson" style of the system's log tool; JSON is RFC 8259, in
// UTF-8.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/process_table.h"

namespace tollvane {

struct LogLine {
  std::string_view process;  // last component of "processImagePath"; empty if that is missing or not a text
  std::string_view message;  // "eventMessage"
  std::string_view maker;    // "makerName": what to call the maker if it belongs to no application; empty if missing
  std::span<const Pid> ancestors;  // "ancestors": the maker's, the nearest first, as they were when it began
};

class LogLineReader {
 public:
  LogLineReader();
  ~LogLineReader();

  // Reads these members; if a name is repeated, the last one counts. Absent if `line` is not one well-formed JSON
  // object with a text under "eventMessage". The result is valid until the next call. `line` must have
  // LineBuffer::padding readable bytes behind it. Allocates nothing once it has read a line of that length.
  std::optional<LogLine> read(std::string_view line);

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
  std::vector<Pid> ancestors_;
};

}  // namespace tollvane
