#include "support/web_page.h"

#include <algorithm>

namespace tollvane {

bool isWebPage(std::string_view url) {
  const auto startsWith = [&](std::string_view scheme) {
    return url.size() > scheme.size() &&
           std::equal(scheme.begin(), scheme.end(), url.begin(),
                      [](char expected, char c) { return expected == (c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); });
  };
  return startsWith("https://") || startsWith("http://");
}

}  // namespace tollvane
