// https://developer.apple.com/library/archive/documentation/System/Conceptual/ManPages_iPhoneOS/man3/sysctl.3.html
#pragma once

#include <stddef.h>
#include <sys/time.h>
#include <sys/types.h>

#define CTL_KERN 1
#define KERN_PROC 14
#define KERN_PROC_PID 1

// Only the members that Tollvane reads; the real record has 648 bytes.
struct kinfo_proc {
  struct {
    timeval p_starttime;
  } kp_proc;
  struct {
    pid_t e_ppid;
  } kp_eproc;
};

extern "C" int sysctl(int* name, unsigned int count, void* old, size_t* oldSize, void* fresh, size_t freshSize);
