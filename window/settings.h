/// How the settings of an unwrap are called and explained, read from the plug-in's scripts, so that
/// a setting has one label in the dialog and in the attribute panel.
#pragma once

#include <map>
#include <string>

namespace window {

struct Setting {
    int row = 0; ///< position in the dialog
    std::string label;
    std::string help; ///< what it does, its unit and its default
    bool has_effect = true;
};

/// By attribute of the unwrap node. Empty if the scripts are missing.
std::map<std::string, Setting> read_settings();

} // namespace window
