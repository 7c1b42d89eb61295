// Tells whether a file in one of some folders was written to in place, which the folder itself does not show. Costs
// nothing while nobody asks: the kernel keeps a note (inotify(7)), nothing is polled, and nobody is woken. One thread.
#pragma once

#include <string>

#include "platform/posix/unique_fd.h"

namespace tollvane {

class WriteWatch {
 public:
  WriteWatch();

  // Watches the files of one more folder; links in it are not followed. Once more for the same folder does no harm.
  void add(const std::string& folder);

  // False if the kernel had no watch to give for one of the folders: then nothing can be relied on.
  bool isComplete() const { return complete_; }

  // Whether anything was written, or may have been, since the last call.
  bool takeWrites();

 private:
  UniqueFd inotify_;
  bool complete_;
};

}  // namespace tollvane
