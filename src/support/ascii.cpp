#include "support/ascii.h"

#include <algorithm>

namespace tollvane::ascii {

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = lowerCase(c);
  return lower;
}

bool equalIgnoringCase(std::string_view one, std::string_view other) {
  return one.size() == other.size() && startsWithIgnoringCase(one, other);
}

bool startsWithIgnoringCase(std::string_view text, std::string_view beginning) {
  return text.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), text.begin(),
                                                       [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}

}  // namespace tollvane::ascii
