/// The command line of `tessora pack`. To add a flag: a member here, a line in pack_options.cpp.
#pragma once

#include "app/command_help.h"
#include "atlas/atlas.h"

#include <string>
#include <vector>

namespace app {

struct PackRequest {
    tessora::atlas::PackSettings settings;
    double from_width = 0, from_height = 0; ///< of the texture that the UVs are of; 0: `settings`
    bool texture_follows = false;           ///< the density is fixed and the texture's size is not
    std::vector<std::string> inputs;
    std::vector<std::string> names;   ///< of the inputs for messages; empty: as they are
    std::vector<std::string> outputs; ///< one per input
    std::vector<std::string> keep;    ///< meshes, objects, groups and materials whose charts stay
    std::string report;               ///< empty if not requested
    std::string layout;               ///< empty if not requested
    std::string picture = "layout";
    bool in_place = false;
    bool quiet = false;
    bool help = false; ///< print the help text and stop
    std::vector<std::string> warnings;

    /// The picture's file for a tile: `layout`, with the tile's UDIM number if there are several.
    std::string layout_of(uint32_t tile) const;
};

/// Reads a value of --density: as_is, uniform, or texels per unit of length.
/// Errors: false with a sentence in `error`.
bool read_density(const std::string& value, tessora::atlas::PackSettings& settings,
                  std::string& error);
/// Reads a value of --stack: none, congruent or mirrored. Errors: as above.
bool read_stack(const std::string& value, tessora::atlas::PackSettings& settings,
                std::string& error);

/// Parses the command line, checks values and file names, and fills in default names.
/// Errors: false with a sentence in `error`.
bool parse_pack_request(const std::vector<std::string>& words, PackRequest& request,
                        std::string& error);

/// What `tessora pack --help` says.
CommandHelp pack_help();

/// Options that other commands have as well.
void add_texture_options(OptionTable& table, int& width, int& height);
void add_stack_option(OptionTable& table, std::string& which);

} // namespace app
