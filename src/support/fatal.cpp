#include "support/fatal.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tollvane {

void fatal(std::string_view sentence) {
  const std::string line = "Tollvane: " + std::string(sentence) + "\n";
  std::fputs(line.c_str(), stderr);
  std::abort();
}

}  // namespace tollvane
