#pragma once

#include <nlohmann/json.hpp>

// Keys keep their insertion order so written files read like the objects
// that wrote them.
using FLKJSON = nlohmann::ordered_json;
