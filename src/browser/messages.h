// The messages between Tollvane and its browser extensions: JSON objects with a text under "type".
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace tollvane {

using Message = nlohmann::json;  // always an object

}  // namespace tollvane
