// Tollvane's pages on the web. Any thread.
#pragma once

#include <string>
#include <string_view>

#include "platform/bundle.h"

namespace tollvane {

// The address of a page, from a path that begins with "/". Scheme and host are the bundle's "TollvaneSite"
// ("https://www.example.org"); a bundle that names none asks a host that does not exist, so that nobody real is asked.
std::string sitePage(const Bundle& bundle, std::string_view path);

}  // namespace tollvane
