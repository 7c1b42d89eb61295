#include "model/site.h"

namespace tollvane {
namespace {

// The domain is reserved for names that never exist (RFC 2606).
constexpr std::string_view nobody = "https://tollvane.invalid";

}  // namespace

std::string sitePage(const Bundle& bundle, std::string_view path) {
  std::string page = bundle.infoString("TollvaneSite").value_or(std::string(nobody));
  while (page.ends_with('/')) page.pop_back();
  return page += path;
}

}  // namespace tollvane
