#include "socket_watch.h"

#include <utility>

namespace tollvane::soundlog {

SocketWatch::SocketWatch(std::filesystem::path socket, std::function<void()> appeared)
    : file_(std::move(socket)), appeared_(std::move(appeared)) {
  if (file_.descriptor() < 0) return;
  watch_ = watchDescriptor(file_.descriptor(), G_IO_IN, [this](GIOCondition) {
    if (file_.appeared()) appeared_();
  });
}

}  // namespace tollvane::soundlog
