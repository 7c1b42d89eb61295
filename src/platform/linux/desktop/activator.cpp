#include "platform/linux/desktop/activator.h"

#include <utility>

namespace tollvane {

void Activator::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  tryFrom(0, target, Raised::unknown, std::move(done));
}

void Activator::tryFrom(std::size_t index, const ActivationTarget& target, Raised soFar,
                        std::function<void(Raised)> done) {
  if (index >= raisers_.size()) return done(soFar);
  raisers_[index]->raise(target, alive_.guard([this, index, target, soFar, done](Raised raised) {
    if (raised == Raised::yes) return done(raised);
    tryFrom(index + 1, target, raised == Raised::noWindow ? raised : soFar, done);
  }));
}

}  // namespace tollvane
