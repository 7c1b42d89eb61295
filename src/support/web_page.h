// Which addresses Tollvane opens at all. Any thread.
#pragma once

#include <string_view>

namespace tollvane {

// Whether it is the address of a page on the web, http or https: other schemes start programs.
bool isWebPage(std::string_view url);

}  // namespace tollvane
