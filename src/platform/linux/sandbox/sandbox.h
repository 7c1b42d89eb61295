// A program gives up what it does not need: from then on the kernel refuses it, whatever bytes a sound server, a
// browser or another program has sent. Nothing can be taken back, and all later threads have it, too. To be called on
// the only thread.
//
//   enterSandbox(Sandbox::localListener);  // false: this kernel has no such filters, and the program is as it was
//
// A refused call fails with an error, and the program goes on.
#pragma once

namespace tollvane {

enum class Sandbox {
  // Reads files, maps libraries, connects to servers. It can start no program, write no file, look into or end no other
  // process, and serve no socket.
  listener,
  // The same, with servers of this computer only.
  localListener,
  // Passes bytes on between descriptors that are open and local sockets, and watches paths. It can open no file at all.
  relay,
};

bool enterSandbox(Sandbox sandbox);

}  // namespace tollvane
