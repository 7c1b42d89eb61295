// Which of a user's desktop sessions a process belongs to. A user has several at once if another one is at the machine
// than over the network, or on another virtual terminal. Any thread.
#pragma once

#include "platform/linux/kernel/proc_fs.h"

namespace tollvane {

// Whether the windows of one of the user's processes can appear in the desktop session of this program. The displays in
// its environment tell; if they do not, as for a program in a container or over a text login, it counts as being here.
bool isInThisDesktopSession(const ProcFs& processes, Pid pid);

}  // namespace tollvane
