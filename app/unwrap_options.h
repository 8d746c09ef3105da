/// The command line of `tessora unwrap`. To add a flag: a member here, a line in
/// unwrap_options.cpp.
#pragma once

#include "app/panel_view.h"

#include <string>
#include <vector>

namespace app {

/// The plug-in's settings, named like the long flags of its command, with their defaults. Sizes in
/// texels, angles in degrees. Values may be out of range; run_unwrap clamps them.
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
    std::string report; ///< empty if not requested
    std::string layout; ///< empty if not requested
    std::string picture = "layout";
    std::string view; ///< empty if not requested
    PanelPictureRequest view_picture;
    bool in_place = false;
    bool beside = false; ///< name report and layout after the output unless given
    bool quiet = false;
    bool help = false; ///< print the help text and stop
    std::vector<std::string> warnings;
};

/// Parses the command line, checks values and file names, and fills in default names.
/// Errors: false with a sentence in `error`.
bool parse_unwrap_request(const std::vector<std::string>& words, UnwrapRequest& request,
                          std::string& error);

/// The text of `tessora unwrap --help`.
std::string unwrap_help();

/// True if the file's extension names a mesh format other than OBJ.
bool is_other_format(const std::string& path);

/// INPUT.bak, where --in_place keeps the original.
std::string backup_name(const std::string& input);

/// INPUT with "_uv" before its extension.
std::string default_output(const std::string& input);

} // namespace app
