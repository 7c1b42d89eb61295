// nlohmann::json itself. Its code is compiled once, in json.cpp: compiling it wherever it is used takes half a minute a
// file.
#pragma once

#include <nlohmann/json.hpp>

extern template class nlohmann::basic_json<>;
