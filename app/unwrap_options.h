/// What `tessora unwrap` is asked to do.
#pragma once

#include "app/panel_view.h"

#include <string>
#include <vector>

namespace app {

/// The plug-in command's settings under its long flags' names, with its defaults. Sizes in texels,
/// angles in degrees. The unwrap driver brings values outside their range to its ends.
struct UnwrapSettingsRequest {
    std::string mapchannel = "map1";
    int charts = 0;
    double stretch = 0.15;
    int padding = 2;
    int width = 512;
    int height = 512;
    bool high_quality = false;
    bool keep_seams = false;
    bool use_grooves = false;
    double groove_angle = 90.0;
    bool use_ridges = false;
    double ridge_angle = 90.0;
    int adjacency_method = 0;
    double epsilon = 0.001;
};

struct UnwrapRequest {
    UnwrapSettingsRequest settings;
    std::string input;  ///< "-" is standard input
    std::string output; ///< "-" is standard output
    std::string report; ///< empty: none
    std::string layout; ///< empty: none
    std::string picture = "layout";
    std::string view; ///< empty: none
    PanelPictureRequest view_picture;
    bool in_place = false;
    bool beside = false; ///< report and layout get names after the output's unless they have some
    bool quiet = false;
    bool help = false; ///< nothing else is asked
    std::vector<std::string> warnings;
};

/// Reads the command line and settles the output's name.
/// Errors: false with a sentence in `error`.
bool parse_unwrap_request(const std::vector<std::string>& words, UnwrapRequest& request,
                          std::string& error);

/// The text of `tessora unwrap --help`.
std::string unwrap_help();

/// Mesh formats that are certainly not OBJ, by the name's extension.
bool is_other_format(const std::string& path);

/// INPUT's name with "_uv" ahead of its extension.
std::string default_output(const std::string& input);

} // namespace app
