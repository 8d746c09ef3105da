/// Settings and requests as JSON: in presets, in reports and between processes.
#pragma once

#include "app/unwrap_options.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace app {

nlohmann::ordered_json settings_to_json(const UnwrapSettingsRequest& settings);

/// Changes the settings that the object names and leaves the others.
/// Errors: false with a sentence in `error` for an unknown name or a value of another type.
bool settings_from_json(const nlohmann::ordered_json& json, UnwrapSettingsRequest& settings,
                        std::string& error);

/// A request with its file names and settings, as one object; `request_from_json` reads it back.
nlohmann::ordered_json request_to_json(const UnwrapRequest& request);

/// Errors: false with a sentence in `error` for an unknown key or a value of another type.
bool request_from_json(const nlohmann::ordered_json& json, UnwrapRequest& request,
                       std::string& error);

} // namespace app
