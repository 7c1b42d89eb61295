// Who serves a local socket. Any thread. Source: unix(7), SO_PEERCRED.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/process_table.h"

namespace tollvane::soundlog {

// The process that made the socket at `path` listen: the server, or the service manager that made the socket for it.
// Absent if nothing listens there. Connects for a moment and says nothing. Never blocks.
std::optional<Pid> listenerAt(const std::filesystem::path& path);

}  // namespace tollvane::soundlog
