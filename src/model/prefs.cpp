#include "model/prefs.h"

namespace tollvane {

bool Prefs::boolean(std::string_view key, bool otherwise) const {
  const auto value = store_.object(key);
  if (!value) return otherwise;
  if (const bool* on = std::get_if<bool>(&*value)) return *on;
  const double* number = std::get_if<double>(&*value);
  if (number && (*number == 0 || *number == 1)) return *number == 1;  // some stores keep a truth value as a number
  return otherwise;
}

double Prefs::updateLastCheck() const {
  const auto value = store_.object("updateLastCheck");
  const double* seconds = value ? std::get_if<double>(&*value) : nullptr;
  return seconds ? *seconds : 0;
}

}  // namespace tollvane
