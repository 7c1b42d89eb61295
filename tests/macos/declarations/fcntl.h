// The system's own header, and what only macOS has.
// https://developer.apple.com/library/archive/documentation/System/Conceptual/ManPages_iPhoneOS/man2/open.2.html
#pragma once

#include_next <fcntl.h>

#define O_EVTONLY 0x8000
