// Callbacks that do nothing once their owner is gone.
//
//   class Watcher {
//     void restartLater() { queue_.after(3s, alive_.guard([this] { start(); })); }
//     Liveness alive_;   // the last member, so that it ends first
//   };
//
// Owner and callbacks live on one thread.
#pragma once

#include <memory>
#include <utility>

namespace tollvane {

class Liveness {
 public:
  Liveness() = default;
  Liveness(const Liveness&) = delete;
  Liveness& operator=(const Liveness&) = delete;

  // `function`, for as long as this object exists; afterwards a function that does nothing.
  template <typename Function>
  auto guard(Function function) const {
    return [alive = std::weak_ptr<const char>(token_), function = std::move(function)](auto&&... arguments) mutable {
      if (!alive.expired()) function(std::forward<decltype(arguments)>(arguments)...);
    };
  }

 private:
  std::shared_ptr<const char> token_ = std::make_shared<const char>();
};

}  // namespace tollvane
