/// Reads JSON that nobody vouches for.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace formats {

/// Keeps the order of keys, so that a file that is written again differs only where it was changed.
using Json = nlohmann::ordered_json;

/// At most this many arrays and objects inside each other.
inline constexpr int k_max_json_depth = 64;

/// Errors: false with a reason and its place in `error`.
bool parse_json(std::string_view text, Json& json, std::string& error);

} // namespace formats
