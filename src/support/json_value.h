// nlohmann::json itself, for code that makes values of its own.
#pragma once

#include <nlohmann/json.hpp>
