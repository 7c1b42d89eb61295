// Which addresses Tollvane asks on the web. Pure; any thread.
#pragma once

#include <string_view>

namespace tollvane::web {

// https anywhere, http only on this computer. `scheme` and `host` in small letters, an IPv6 address without brackets.
constexpr bool mayAsk(std::string_view scheme, std::string_view host) {
  // Names in this domain never exist (RFC 6761), so no server needs to be asked.
  if (host.empty() || host.ends_with(".invalid")) return false;
  const bool isThisComputer = host == "localhost" || host == "127.0.0.1" || host == "::1";
  return scheme == "https" || (scheme == "http" && isThisComputer);
}

// Whether an answer with this status is one: not a redirection that was not followed.
constexpr bool isAnswer(long status) { return status >= 200 && (status < 300 || status >= 400); }

}  // namespace tollvane::web
