// https://developer.apple.com/library/archive/documentation/System/Conceptual/ManPages_iPhoneOS/man2/kqueue.2.html
#pragma once

#include <stdint.h>
#include <time.h>

struct kevent {
  uintptr_t ident;
  int16_t filter;
  uint16_t flags;
  uint32_t fflags;
  intptr_t data;
  void* udata;
};

#define EV_SET(event, identifier, filter_, flags_, details, data_, userData) \
  (*(event) = {static_cast<uintptr_t>(identifier), filter_, flags_, details, data_, userData})

#define EVFILT_VNODE (-4)
#define EVFILT_PROC (-5)
#define EV_ADD 0x0001
#define EV_CLEAR 0x0020
#define NOTE_DELETE 0x00000001
#define NOTE_WRITE 0x00000002
#define NOTE_RENAME 0x00000020
#define NOTE_EXIT 0x80000000

extern "C" int kqueue(void);
extern "C" int kevent(int queue, const struct kevent* changes, int changeCount, struct kevent* events, int eventCount,
                      const struct timespec* timeout);
