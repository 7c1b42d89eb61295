#include "platform/linux/sandbox/sandbox.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <cstddef>
#include <iterator>

// Made when Tollvane is built: an array of instructions for each filter.
#include "sandbox_filters.h"

namespace tollvane {
namespace {

template <std::size_t size>
bool filter(const sock_filter (&instructions)[size]) {
  static_assert(size <= BPF_MAXINSNS);
  const sock_fprog program{static_cast<unsigned short>(size), const_cast<sock_filter*>(instructions)};
  return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace

bool enterSandbox(Sandbox sandbox) {
  // The kernel asks for this first: no program with other rights, such as sudo, can be started any more.
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return false;
  switch (sandbox) {
    case Sandbox::listener:
      return filter(listenerFilter);
    case Sandbox::localListener:
      return filter(localFilter) && filter(listenerFilter);  // of two filters, the one that refuses counts
    case Sandbox::relay:
      return filter(relayFilter);
  }
  return false;
}

}  // namespace tollvane
