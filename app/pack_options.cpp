#include "app/pack_options.h"

#include "app/atomic_file.h"
#include "app/file_formats.h"
#include "app/layout_picture.h"
#include "app/options.h"
#include "app/unwrap_options.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

namespace app {
namespace {

namespace atlas = tessora::atlas;

constexpr const char* k_usage = R"(usage: tessora pack MESH... [-o OUTPUT] [options]

Packs the charts that meshes have (OBJ, glTF, GLB or PLY, whoever made their texture
coordinates) into one texture, without touching the charts' shape: they are moved,
turned and all scaled alike. With several meshes OUTPUT is a folder. Only texture
coordinates change: every other byte of the files stays.

examples:
  tessora pack bunny.obj
      writes bunny_packed.obj beside it
  tessora pack props/*.obj -o packed --width 2048 --height 2048 --padding 8
      all props share one texture; charts keep their sizes relative to each other
  tessora pack props/*.obj -o packed --density uniform
      the same, with as many texels per unit of length everywhere
  tessora pack house.obj --density 256 --tiles 4
      256 texels per unit of length, on up to four tiles of 512 x 512
  tessora pack hero.obj --keep head --width 2048 --height 2048
      the charts of group head stay where they are, the others fill the rest
  tessora pack trees.obj --stack mirrored --turns quarter --layout trees.png
      charts of one shape share a place; a picture of the layout
)";

constexpr const char* k_notes = R"(
In option names - and _ are the same; after a switch the next word is taken as its
value only if it is on, off, yes, no, true, false, 1 or 0. "--" ends the options.

Promised and checked before anything is written: charts at least --padding texels
apart (stacks excepted), all inside the texture, none on top of another. Charts
that arrive mirrored or overlapping themselves keep their shape and are named in
a warning.

exit codes: 0 done, 2 usage, 3 input missing or no mesh, 4 mesh too large or
memory ran out, 5 not possible as asked (a mesh without texture coordinates, no
room, kept charts that collide), 6 the result failed its verification, 7 output
cannot be written, 70 internal error, 130 and 143 interrupted. Unless the code
is 0, every output is as it was.
)";

/// What the table of options fills in and settle() turns into a request.
struct Raw {
    std::string output, turns = "any", stack = "none", density = "as_is", keep, from;
    double padding = 2;
    int width = 512, height = 512, tiles = 1, effort = 4;
};

void add_settings(OptionTable& table, PackRequest& request, Raw& raw) {
    table.heading("settings (defaults in parentheses):");
    table.add("padding", &raw.padding, "TEXELS",
              "gutter between charts, 0 to 256, fractions allowed");
    add_texture_options(table, raw.width, raw.height);
    table.add("from", &raw.from, "WIDTHxHEIGHT",
              "proportions of the texture that the coordinates were made for; those of the new one "
              "if not given");
    table.add("tiles", &raw.tiles, "N",
              "textures to fill, 1 to 100, numbered as UDIM: 1001, 1002, ...");
    table.add("turns", &raw.turns, "WHICH", "how charts may be turned: any, quarter or none");
    table.choices({"any", "quarter", "none"});
    table.add("align", &request.settings.align, "",
              "turn charts so that most of their straight border is parallel to the axes");
    add_stack_option(table, raw.stack);
    table.add(
        "density", &raw.density, "DENSITY",
        "as_is: charts keep their relative sizes; uniform: the same number of texels per unit "
        "of length everywhere; a number: that many, and the texture grows by doubling until "
        "all fits, or with --tiles as many tiles as needed are filled");
    table.choices({"as_is", "uniform"});
    table.add("keep", &raw.keep, "NAMES",
              "charts that stay where they are: names of meshes, objects, groups or materials, "
              "separated by commas");
    table.add("effort", &raw.effort, "N", "time for the search, 0 to 10; each step doubles it");
}

OptionTable make_table(PackRequest& request, Raw& raw) {
    OptionTable table;
    table.heading("files:");
    table.add("output", &raw.output, "FILE",
              "result; a folder for several meshes; by default each mesh's name with _packed");
    table.alias("-o");
    table.add("in_place", &request.in_place, "",
              "write the results over the meshes; MESH.bak keeps the original");
    table.add("report", &request.report, "FILE.json",
              "what was done, in figures; on failure the reason");
    table.add("layout", &request.layout, "FILE.png",
              "picture of the charts in the texture; with several tiles one picture each, with the "
              "tile's number in the name");
    table.add("picture", &request.picture, "KIND",
              "what the picture shows: layout, checker or stretch");
    table.choices({"layout", "checker", "stretch"});
    table.add("quiet", &request.quiet, "", "say nothing unless something fails");
    table.add("help", &request.help, "", "show this text");
    add_settings(table, request, raw);
    return table;
}

bool read_turns(const std::string& value, atlas::PackSettings& settings, std::string& error) {
    if (value == "any")
        settings.turns = atlas::Turns::any;
    else if (value == "quarter")
        settings.turns = atlas::Turns::quarter;
    else if (value == "none")
        settings.turns = atlas::Turns::none;
    else
        error = "--turns: '" + value + "' is not any, quarter or none";
    return error.empty();
}

bool read_from(const std::string& value, PackRequest& request, std::string& error) {
    if (value.empty())
        return true;
    char* end = nullptr;
    request.from_width = std::strtod(value.c_str(), &end);
    if (*end == 'x')
        request.from_height = std::strtod(end + 1, &end);
    if (*end != '\0' || !(request.from_width >= 1) || !(request.from_height >= 1) ||
        request.from_width > 65536 || request.from_height > 65536)
        error = "--from: '" + value + "' is not a size such as 1024x512";
    return error.empty();
}

bool read_numbers(const Raw& raw, PackRequest& request, std::string& error) {
    const auto within = [&](const char* name, int value, int low, int high) {
        if (error.empty() && (value < low || value > high))
            error = std::string("--") + name + " " + std::to_string(value) + " is not " +
                    std::to_string(low) + " to " + std::to_string(high);
    };
    within("width", raw.width, 8, 8192);
    within("height", raw.height, 8, 8192);
    if (error.empty() && !(raw.padding >= 0.0 && raw.padding <= 256.0))
        error = "--padding must be 0 to 256";
    within("tiles", raw.tiles, 1, 100);
    within("effort", raw.effort, 0, 10);
    request.settings.width = static_cast<uint32_t>(raw.width);
    request.settings.height = static_cast<uint32_t>(raw.height);
    request.settings.gutter = static_cast<float>(raw.padding);
    request.settings.tiles = static_cast<uint32_t>(raw.tiles);
    request.settings.effort = raw.effort;
    request.texture_follows = raw.tiles == 1;
    return error.empty();
}

std::string packed_name(const std::string& input) {
    const auto [name, extension] = split_name(input);
    return name + "_packed" + extension;
}

/// Names the outputs: the one given, files in the folder given, or names beside the inputs.
bool name_outputs(const std::string& output, PackRequest& request, std::string& error) {
    std::error_code ignored;
    const bool many = request.inputs.size() > 1;
    const bool folder = many || std::filesystem::is_directory(output, ignored);
    if (request.in_place && !output.empty())
        error = "--in_place and -o exclude each other";
    else if (many && !output.empty() && std::filesystem::exists(output, ignored) &&
             !std::filesystem::is_directory(output, ignored))
        error = "-o " + output + " is no folder, and several meshes need one";
    for (const std::string& input : request.inputs) {
        const std::filesystem::path name = std::filesystem::path(input).filename();
        request.outputs.push_back(request.in_place ? input
                                  : output.empty() ? packed_name(input)
                                  : folder         ? (std::filesystem::path(output) / name).string()
                                                   : output);
    }
    return error.empty();
}

/// Every file must be a different one, however it is spelled.
bool check_files_differ(const PackRequest& r, std::string& error) {
    std::vector<std::string> files;
    for (const std::string& input : r.inputs)
        if (!r.in_place)
            files.push_back(input);
    files.insert(files.end(), r.outputs.begin(), r.outputs.end());
    for (const std::string& input : r.inputs)
        if (r.in_place)
            files.push_back(backup_name(input));
    if (!r.report.empty())
        files.push_back(r.report);
    for (uint32_t tile = 0; tile < r.settings.tiles && !r.layout.empty(); ++tile)
        files.push_back(r.layout_of(tile));
    for (size_t i = 0; i < files.size(); ++i)
        for (size_t j = i + 1; j < files.size(); ++j)
            if (same_file(files[i], files[j])) {
                error = files[j] + " would be read or written twice";
                return false;
            }
    return true;
}

/// Splits the value of --keep at its commas; none of the names may be empty.
bool read_keep(const std::string& value, PackRequest& request, std::string& error) {
    for (size_t begin = 0; !value.empty() && begin <= value.size();) {
        const size_t end = std::min(value.find(',', begin), value.size());
        if (end == begin) {
            error = "--keep: '" + value + "' has an empty name; names are separated by commas";
            return false;
        }
        request.keep.push_back(value.substr(begin, end - begin));
        begin = end + 1;
    }
    return true;
}

} // namespace

std::string PackRequest::layout_of(uint32_t tile) const {
    if (settings.tiles == 1)
        return layout;
    const std::filesystem::path path(layout);
    return (path.parent_path() /
            (path.stem().string() + "." + std::to_string(1001 + tile) + path.extension().string()))
        .string();
}

bool read_density(const std::string& value, atlas::PackSettings& settings, std::string& error) {
    if (value == "as_is" || value == "as-is") {
        settings.density = atlas::Density::as_is;
    } else if (value == "uniform") {
        settings.density = atlas::Density::uniform;
    } else {
        char* end = nullptr;
        settings.density = atlas::Density::fixed;
        settings.texels_per_unit = std::strtod(value.c_str(), &end);
        if (*end != '\0' || !std::isfinite(settings.texels_per_unit) ||
            !(settings.texels_per_unit > 0))
            error = "--density: '" + value +
                    "' is not as_is, uniform or a number of texels per unit of length";
    }
    return error.empty();
}

bool read_stack(const std::string& value, atlas::PackSettings& settings, std::string& error) {
    if (value == "none")
        settings.stack = atlas::Stack::none;
    else if (value == "congruent")
        settings.stack = atlas::Stack::congruent;
    else if (value == "mirrored")
        settings.stack = atlas::Stack::mirrored;
    else
        error = "--stack: '" + value + "' is not none, congruent or mirrored";
    return error.empty();
}

CommandHelp pack_help() {
    PackRequest defaults;
    Raw raw;
    return {k_usage, make_table(defaults, raw), k_notes};
}

void add_texture_options(OptionTable& table, int& width, int& height) {
    table.add("width", &width, "TEXELS", "width of the texture, 8 to 8192");
    table.add("height", &height, "TEXELS", "height of the texture, 8 to 8192");
}

void add_stack_option(OptionTable& table, std::string& which) {
    table.add("stack", &which, "WHICH",
              "charts of one shape share a place: none, congruent, or mirrored as well");
    table.choices({"none", "congruent", "mirrored"});
}

bool parse_pack_request(const std::vector<std::string>& words, PackRequest& request,
                        std::string& error) {
    Raw raw;
    if (!make_table(request, raw).parse(words, request.inputs, error))
        return false;
    if (request.help)
        return true;
    if (request.inputs.empty()) {
        error = "which meshes? pack needs at least one";
        return false;
    }
    PictureKind kind;
    if (!picture_kind(request.picture, kind)) {
        error = "--picture: '" + request.picture + "' is not layout, checker or stretch";
        return false;
    }
    return read_keep(raw.keep, request, error) && read_numbers(raw, request, error) &&
           read_turns(raw.turns, request.settings, error) &&
           read_stack(raw.stack, request.settings, error) &&
           read_density(raw.density, request.settings, error) &&
           read_from(raw.from, request, error) && name_outputs(raw.output, request, error) &&
           check_files_differ(request, error);
}

} // namespace app
