// The header that the system installs; it has no page. https://opensource.apple.com, xnu, libproc
#pragma once

#include <stdint.h>

#define PROC_PIDPATHINFO_MAXSIZE 4096
extern "C" int proc_pidpath(int pid, void* buffer, uint32_t size);
