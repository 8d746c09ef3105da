/// Settings for usual kinds of work, by name or from a file.
#pragma once

#include "app/unwrap_options.h"

#include <string>
#include <vector>

namespace app {

struct Preset {
    const char* name;
    const char* summary;                            ///< one line, what it is for
    void (*apply)(UnwrapSettingsRequest& settings); ///< changes what the preset is about
};

/// All presets, in the order of the help text.
const std::vector<Preset>& presets();

/// Applies a preset by name, or from a JSON file with settings under the names of the options; a
/// report serves too, with the settings that it lists.
/// Errors: false with a sentence in `error`.
bool apply_preset(const std::string& name, UnwrapSettingsRequest& settings, std::string& error);

/// The settings that are changed but that no unwrap node has: "max_charts, align"; empty if none.
/// Those of single file formats are not among them.
std::string settings_without_node(const UnwrapSettingsRequest& settings);

} // namespace app
