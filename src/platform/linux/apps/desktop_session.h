// Which of a user's desktop sessions a process belongs to. A user may have several at once, as one at the machine and
// one over the network. Main thread.
#pragma once

#include "platform/linux/kernel/proc_fs.h"

namespace tollvane {

// Whether windows of this process of the user can appear in the desktop session of this program. The displays in the
// process's environment tell. If there are none, as in a text login, or none that can be compared, as in a container,
// it counts as being here.
bool isInThisDesktopSession(const ProcFs& processes, Pid pid);

}  // namespace tollvane
