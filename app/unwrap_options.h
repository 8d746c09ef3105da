/// The command line of `tessora unwrap`. To add a flag: a member here, a line in
/// unwrap_options.cpp.
#pragma once

#include "app/command_help.h"
#include "app/panel_view.h"

#include <string>
#include <vector>

namespace host {
struct ObjDocument;
}

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
    // What follows is the program's own; the plug-in does not know of it.
    int max_charts = 0;              ///< 0: any number; else `stretch` is the most that is tried
    double density = 0.0;            ///< texels per unit of length; 0: what fits
    bool align = false;              ///< turn charts straight, and by quarters only
    std::string stack = "none";      ///< or congruent, or mirrored
    int effort = 4;                  ///< of cutting and packing, 0 to 10
    int texcoord = 0;                ///< glTF: the n of TEXCOORD_n
    std::string ply_uvs = "as_read"; ///< PLY: or face, or vertex
    bool each_mesh = false;          ///< a texture for each mesh of the file, not one for all
};

/// What concerns several meshes at once.
struct BatchRequest {
    std::vector<std::string> operands; ///< files, folders and patterns
    std::string list;                  ///< file of file names; "-" is standard input; empty if none
    std::string out_dir;               ///< empty: each result beside its input
    std::string suffix;                ///< empty: "_uv", or nothing with out_dir
    int jobs = 0;                      ///< processes; 0 for one a processor
    bool skip_existing = false;
    bool dry_run = false;
    bool json_lines = false;
    bool keep_going = true;
    bool fail_fast = false;
    double time_limit = 0.0; ///< seconds a mesh; 0 for none
    std::string html;        ///< folder of the page; empty if not requested
    bool one_atlas = false;
    int tiles = 1;     ///< of the one atlas
    std::string shard; ///< "K/N", or empty
    int shard_index = 0, shard_count = 1;
    bool is_wanted = false; ///< there are several meshes, or an option asks for a batch
};

struct UnwrapRequest {
    UnwrapSettingsRequest settings;
    BatchRequest batch;
    std::string preset;                      ///< a name or a file; empty if none
    std::string input;                       ///< "-" is standard input
    const host::ObjDocument* mesh = nullptr; ///< instead of input and output; null if none
    std::string output;                      ///< "-" is standard output
    std::string report;                      ///< empty if not requested
    std::string layout;                      ///< empty if not requested
    std::string picture = "layout";
    std::string view;       ///< empty if not requested
    std::string thumbnails; ///< folder of the thumbnails; empty if not requested
    PanelPictureRequest view_picture;
    int threads = 0;        ///< that one mesh is unwrapped on; 0 for one a processor
    std::string format;     ///< of the result; empty for that of the output's or the input's name
    double max_input = 8.0; ///< GiB
    bool in_place = false;
    bool beside = false; ///< name report and layout after the output unless given
    bool quiet = false;
    bool silent = false; ///< leave also the reason of a failure to the report
    bool help = false;   ///< print the help text and stop
    std::vector<std::string> warnings;
};

/// Parses the command line, checks values and file names, and fills in default names.
/// Errors: false with a sentence in `error`.
bool parse_unwrap_request(const std::vector<std::string>& words, UnwrapRequest& request,
                          std::string& error);

/// Checks the values and file names of a request for one mesh, fills in default names, and adds
/// warnings about what does not count as given.
/// Errors: false with a sentence in `error`.
bool check_unwrap_request(UnwrapRequest& request, std::string& error);

/// What `tessora unwrap --help` says.
CommandHelp unwrap_help();

/// Warnings about the settings among the words: values out of range, and settings without effect.
/// Stops at a word that is no setting.
std::vector<std::string> warnings_about_settings(const std::vector<std::string>& words);

/// The result's extension for an input's: that of the format asked for, compressed as the input.
std::string output_extension(const UnwrapRequest& request, const std::string& input_extension);

/// INPUT.bak, where --in_place keeps the original.
std::string backup_name(const std::string& input);
/// Whether a file is there that may be a backup: not a folder, nor a link to the input itself,
/// which would soon hold the result.
bool has_backup(const std::string& input);

} // namespace app
