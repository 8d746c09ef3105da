#include "app/unwrap_options.h"

#include "app/atomic_file.h"
#include "app/file_formats.h"
#include "app/glob.h"
#include "app/layout_picture.h"
#include "app/options.h"
#include "app/pack_options.h"
#include "app/presets.h"
#include "formats/mesh_file.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>

namespace app {
namespace {

constexpr const char* k_usage = R"(usage: tessora unwrap INPUT [-o OUTPUT] [options]
       tessora unwrap INPUT... [--out_dir DIR] [options]

Gives the mesh in INPUT (OBJ, glTF, GLB, PLY, STL, FBX, Collada and others, also
compressed by gzip) new texture coordinates and writes it to OUTPUT. Of OBJ,
glTF and PLY only texture coordinates change: all else in the file stays
(docs/formats.md).
INPUT can be several files, folders and patterns: then each mesh gets a result
and a report of its own (docs/batch.md).

examples:
  tessora unwrap bunny.obj
      writes bunny_uv.obj beside it
  tessora unwrap chair.obj -o out/chair.obj --width 2048 --height 2048 --padding 8
      charts stay 8 texels apart in a 2048 x 2048 texture
  tessora unwrap part.obj --use_grooves --use_ridges --groove_angle 40 --ridge_angle 40
      cuts along every edge that is bent by 40 degrees or more
  tessora unwrap head.obj --keep_seams --report head.json --layout head.png
      keeps the cuts of the present layout; writes figures and a picture
  tessora unwrap boot.obj --keep_seams --view boot.png --view_panel persp
      a picture of the mesh with its seams
  tessora unwrap body.obj --max_charts 8
      at most eight charts, with as little stretch as that takes
  tessora unwrap wall.obj --density 256 --align --effort 8
      256 texels per unit of length, charts parallel to the axes, packed with patience
  tessora unwrap scan.obj --stretch 0.05 --high_quality
      less distortion, more charts, more time
  tessora unwrap meshes/ --out_dir out --jobs 4 --skip_existing
      all meshes below a folder, in the same folders below out; only what is new
  tessora unwrap "scans/**/*.obj" --preset lightmap --time_limit 60 --json_lines
      settings by name; a line of JSON a mesh; none takes over a minute
  tessora unwrap meshes/ --out_dir out --html page
      page/index.html shows every mesh with its layout, stretch and seams
  tessora unwrap rig.fbx -o rig.glb
      from another format; FBX is written as text
  tessora unwrap car.glb --each_mesh --report car.json
      body, wheels and glass get a texture each
  tessora unwrap props/ --out_dir packed --one_atlas --width 4096 --height 4096
      all props share one texture
)";

constexpr const char* k_notes = R"(
In option names - and _ are the same. After a switch the next word is taken as
its value only if it is on, off, yes, no, true, false, 1 or 0. Values out of
range count as the nearest end of the range, with a warning. "--" ends the
options; "-" stands for standard input or output.

presets: PRESETS

exit codes: 0 done, 2 usage, 3 input missing or no mesh, 4 mesh too large or
memory ran out, 5 not possible as asked, 6 the result failed its verification,
7 output cannot be written, 70 internal error, 130 and 143 interrupted. Unless
the code is 0, OUTPUT is as it was. With several meshes 1 says that at least one
failed; the code of each is in its report.
)";

void add_setting_options(OptionTable& table, UnwrapSettingsRequest& s) {
    table.heading("settings (defaults in parentheses):");
    table.add("mapchannel", &s.mapchannel, "NAME",
              "UV set that receives the result; an OBJ file holds one set, which becomes this one");
    table.add("stretch", &s.stretch, "LIMIT",
              "largest stretch of a chart, 0 (none) to 1 (any); charts are cut until they meet it");
    table.add("padding", &s.padding, "TEXELS", "gutter between charts, 0 to 32");
    add_texture_options(table, s.width, s.height);
    table.add("high_quality", &s.high_quality, "",
              "look for fewer charts and shorter seams; takes longer");
    table.add("keep_seams", &s.keep_seams, "",
              "keep the borders of the present UVs as cuts; edges without UVs on a side are cut");
    table.add("use_grooves", &s.use_grooves, "", "cut along concave creases");
    table.add("groove_angle", &s.groove_angle, "DEGREES",
              "bend from which a concave edge is a crease, 0 to 180");
    table.add("use_ridges", &s.use_ridges, "", "cut along convex creases");
    table.add("ridge_angle", &s.ridge_angle, "DEGREES",
              "bend from which a convex edge is a crease, 0 to 180");
    table.heading("what becomes of the charts (acts after the plug-in):");
    table.add(
        "max_charts", &s.max_charts, "N",
        "at most this many charts, 0: any number; allows as much stretch as that takes, up to "
        "--stretch if given, else up to 1");
    table.add("density", &s.density, "TEXELS",
              "texels per unit of length; the texture's sides are doubled until all fits; 0: as "
              "many as fit");
    table.add("align", &s.align, "",
              "turn every chart so that most of its straight border, or its smallest box, is "
              "parallel to the axes");
    add_stack_option(table, s.stack);
    table.add("effort", &s.effort, "N", "time for the layout, 0 to 10; each step about doubles it");
    table.heading("settings that are carried without effect:");
    table.add("charts", &s.charts, "N", "number of charts, 0 to 64; stretch alone governs");
    table.add("adjacency_method", &s.adjacency_method, "N",
              "0 or 1; polygons are neighbours where they share vertices");
    table.add("epsilon", &s.epsilon, "LENGTH", "0.001 to 1000; no vertices are welded");
}

void add_batch_options(OptionTable& table, BatchRequest& batch) {
    table.heading("several meshes:");
    table.add("out_dir", &batch.out_dir, "DIR",
              "folder of the results, with the folders of the inputs in it");
    table.add("suffix", &batch.suffix, "TEXT",
              "added to the name of each result (_uv; nothing with --out_dir)");
    table.add("list", &batch.list, "FILE", "more inputs, a file name a line; - for standard input");
    table.add("jobs", &batch.jobs, "N", "meshes at a time, a process each; 0: one a processor");
    table.add("skip_existing", &batch.skip_existing, "",
              "leave out a mesh whose result is there, made by this version from this input with "
              "these settings");
    table.add("keep_going", &batch.keep_going, "", "go on when a mesh fails, as usual");
    table.add("fail_fast", &batch.fail_fast, "", "end the batch when a mesh fails");
    table.add("time_limit", &batch.time_limit, "SECONDS",
              "give up a mesh after this time; 0: never");
    table.add("shard", &batch.shard, "K/N",
              "only every N-th mesh, from the K-th, K from 0: N such calls do them all");
    table.add("dry_run", &batch.dry_run, "", "list what would be done, and do nothing");
    table.add("one_atlas", &batch.one_atlas, "",
              "pack the charts of all meshes into one texture, with as many texels per unit of "
              "length everywhere; the report is DIR/atlas.json");
    table.add("tiles", &batch.tiles, "N",
              "with --one_atlas: textures to fill, 1 to 100, numbered as UDIM: 1001, 1002, ...");
    table.add("html", &batch.html, "DIR",
              "write a page with pictures and figures of all meshes: DIR/index.html");
    table.add("json_lines", &batch.json_lines, "",
              "print a JSON object a mesh as it is done, and one at the end");
}

void add_picture_options(OptionTable& table, UnwrapRequest& request) {
    table.add("report", &request.report, "FILE.json",
              "what was done, in figures; on failure the reason");
    table.add("layout", &request.layout, "FILE.png", "picture of the charts in the texture");
    table.add("picture", &request.picture, "KIND",
              "what the picture shows: layout, checker or stretch");
    table.choices({"layout", "checker", "stretch"});
    table.add(
        "view", &request.view, "FILE.png",
        "picture of the mesh in the model panels, seams on it: kept ones green, new ones blue");
    table.add("view_panel", &request.view_picture.panel, "NAME",
              "all four panels, or one: top, front, side, persp");
    table.choices({"all", "top", "front", "side", "persp"});
    table.add("view_width", &request.view_picture.width, "PIXELS",
              "width of that picture, 64 to 8192; it is three quarters as high");
}

void add_format_options(OptionTable& table, UnwrapRequest& request) {
    table.add("format", &request.format, "NAME",
              "format of the result, obj, gltf, glb, ply or fbx, if OUTPUT's name does not tell");
    std::vector<std::string> names;
    for (const formats::FormatFacts& facts : formats::all_formats())
        if (facts.is_written)
            names.push_back(facts.name);
    table.choices(names);
    table.add("texcoord", &request.settings.texcoord, "N",
              "glTF: the set TEXCOORD_N gets the result, others stay");
    table.add("ply_uvs", &request.settings.ply_uvs, "PLACE",
              "PLY: coordinates of each corner (face), of vertices, which are split at seams "
              "(vertex), or as_read: where the input has them, else face");
    table.choices({"as_read", "face", "vertex"});
    table.add("each_mesh", &request.settings.each_mesh, "",
              "the meshes of a file (objects of OBJ) get a texture each, not one together; the "
              "report has them by name");
    table.add("max_input", &request.max_input, "GIB",
              "refuse files that are larger, when inflated");
}

OptionTable make_table(UnwrapRequest& request) {
    OptionTable table;
    table.heading("files:");
    table.add("output", &request.output, "FILE", "result; by default INPUT's name with _uv");
    table.alias("-o");
    table.add(
        "in_place", &request.in_place, "",
        "write the result over INPUT; INPUT.bak keeps the original, also when the next --in_place "
        "follows");
    add_picture_options(table, request);
    add_format_options(table, request);
    table.add("beside", &request.beside, "",
              "write report and picture beside OUTPUT, as its name with .json and .png");
    table.add("preset", &request.preset, "NAME",
              "start from these settings: a name from the list below, or a JSON file of settings "
              "(a report will do); other options go on from there");
    std::vector<std::string> names;
    for (const Preset& preset : presets())
        names.push_back(preset.name);
    table.choices(names);
    table.add(
        "threads", &request.threads, "N",
        "threads that one mesh is unwrapped on; 0: one a processor. The result does not depend "
        "on it");
    table.add("quiet", &request.quiet, "", "say nothing unless something fails");
    table.add("help", &request.help, "", "show this text");
    add_batch_options(table, request.batch);
    add_setting_options(table, request.settings);
    return table;
}

std::string with_extension(const std::string& path, const char* extension) {
    return split_name(path).first + extension;
}

template <class Number>
void check_range(const char* name, Number value, Number min, Number max,
                 std::vector<std::string>& warnings) {
    if (value >= min && value <= max)
        return;
    const auto text = [](Number n) {
        std::string digits = std::to_string(n);
        if (digits.find('.') != digits.npos)
            digits.erase(std::max(digits.find_last_not_of('0') + 1, digits.find('.') + 2));
        return digits;
    };
    warnings.push_back(std::string("--") + name + " " + text(value) + " counts as " +
                       text(value < min ? min : max));
}

void check_ranges(const UnwrapSettingsRequest& s, std::vector<std::string>& warnings) {
    check_range("charts", s.charts, 0, 64, warnings);
    check_range("stretch", s.stretch, 0.0, 1.0, warnings);
    check_range("padding", s.padding, 0, 32, warnings);
    check_range("width", s.width, 8, 8192, warnings);
    check_range("height", s.height, 8, 8192, warnings);
    check_range("groove_angle", s.groove_angle, 0.0, 180.0, warnings);
    check_range("ridge_angle", s.ridge_angle, 0.0, 180.0, warnings);
    check_range("adjacency_method", s.adjacency_method, 0, 1, warnings);
    check_range("epsilon", s.epsilon, 0.001, 1000.0, warnings);
    check_range("max_charts", s.max_charts, 0, 1000000000, warnings);
    check_range("density", s.density, 0.0, 1e9, warnings);
    check_range("effort", s.effort, 0, 10, warnings);
    const UnwrapSettingsRequest defaults;
    const std::pair<const char*, bool> without_effect[] = {
        {"charts", s.charts != defaults.charts},
        {"adjacency_method", s.adjacency_method != defaults.adjacency_method},
        {"epsilon", s.epsilon != defaults.epsilon}};
    for (const auto& [name, is_used] : without_effect)
        if (is_used)
            warnings.push_back(std::string("--") + name + " is stored, but has no effect");
}

/// A file that this call reads or writes.
struct UsedFile {
    const char* role;
    std::string path; ///< with a standard stream under its device name; empty if not used
};

/// Every file must be a different one, however it is spelled: results are renamed over each other
/// otherwise.
bool check_files_differ(const UnwrapRequest& r, std::string& error) {
    const auto output = [](const std::string& path) { return path == "-" ? "/dev/stdout" : path; };
    const UsedFile files[] = {{"input", r.in_place       ? ""
                                        : r.input == "-" ? "/dev/stdin"
                                                         : r.input},
                              {"output", output(r.output)},
                              {"backup", r.in_place ? backup_name(r.input) : ""},
                              {"report", output(r.report)},
                              {"layout", output(r.layout)},
                              {"view", output(r.view)}};
    for (const UsedFile* a = std::begin(files); a != std::end(files); ++a)
        for (const UsedFile* b = a + 1; b != std::end(files); ++b)
            if (!a->path.empty() && !b->path.empty() && same_file(a->path, b->path)) {
                error = std::string("the ") + a->role + " and the " + b->role +
                        " would be the same file: " + b->path;
                if (a->role == std::string("input") && b->role == std::string("output"))
                    error += "; --in_place writes over the input";
                return false;
            }
    return true;
}

/// INPUT with "_uv" before its extension; .obj where reading will refuse INPUT's format by name.
std::string default_output(const UnwrapRequest& r) {
    const auto [name, extension] = split_name(r.input);
    const bool is_refused = !input_refusal(r.input).empty();
    return name + "_uv" + (is_refused ? ".obj" : output_extension(r, extension));
}

bool check_format(const UnwrapRequest& r, std::string& error) {
    bool is_known = r.format.empty();
    for (const formats::FormatFacts& facts : formats::all_formats())
        is_known |= facts.is_written && r.format == facts.name;
    formats::Format by_name;
    if (!is_known)
        error = "--format: '" + r.format + "' is not one of " + written_format_names() +
                ", in small letters";
    else if (!r.format.empty() && r.in_place)
        error = "--in_place keeps the format";
    else if (formats::PlyUvs place; !formats::ply_uvs_of(r.settings.ply_uvs, place))
        error = "--ply_uvs: '" + r.settings.ply_uvs + "' is not as_read, face or vertex";
    else if (!r.format.empty() && formats::format_of(r.output, by_name) &&
             r.format != formats::all_formats()[size_t(by_name)].name)
        error = "--format " + r.format + " and the name " + r.output + " contradict each other";
    else if (r.settings.texcoord < 0 || r.settings.texcoord > 7)
        error = "--texcoord is 0 to 7";
    else if (r.threads < 0 || r.threads > 1024)
        error = "--threads is 0 to 1024";
    else if (!(r.max_input > 0.0 && r.max_input <= 1e6))
        error = "--max_input is more than 0 and at most 1000000 GiB";
    return error.empty();
}

bool settle_output(UnwrapRequest& r, std::string& error) {
    if (r.in_place && !r.output.empty())
        error = "--in_place and -o exclude each other";
    else if (r.in_place && r.input == "-")
        error = "--in_place needs a file; standard input has no place";
    else if (r.output.empty() && r.input == "-")
        error = "standard input needs -o OUTPUT ('-o -' for standard output)";
    if (!error.empty())
        return false;
    if (r.output.empty())
        r.output = r.in_place ? r.input : default_output(r);
    if (r.beside && r.output != "-") {
        r.report = r.report.empty() ? with_extension(r.output, ".json") : r.report;
        r.layout = r.layout.empty() ? with_extension(r.output, ".png") : r.layout;
    }
    if ((r.output == "-") + (r.report == "-") + (r.layout == "-") + (r.view == "-") > 1)
        error = "only one of output, report and picture can go to standard output";
    else
        error = output_refusal(r.output);
    if (!error.empty() || !check_files_differ(r, error))
        return false;
    for (const std::string* picture : {&r.layout, &r.view})
        if (error.empty())
            error = picture_refusal(*picture);
    return error.empty();
}

} // namespace

std::vector<std::string> warnings_about_settings(const std::vector<std::string>& words) {
    UnwrapSettingsRequest settings;
    OptionTable table;
    add_setting_options(table, settings);
    std::vector<std::string> operands, warnings;
    std::string ignored; // the plug-in has read the same words and reports its own errors
    table.parse(words, operands, ignored);
    check_ranges(settings, warnings);
    return warnings;
}

std::string output_extension(const UnwrapRequest& request, const std::string& input_extension) {
    formats::Format format;
    std::string name = request.format;
    if (name.empty()) {
        if (!formats::format_of("a" + input_extension, format) ||
            formats::facts_of(format).result == format)
            return input_extension;
        name = formats::facts_of(formats::facts_of(format).result).name;
    }
    return "." + name + (formats::is_compressed_name(input_extension) ? ".gz" : "");
}

std::string backup_name(const std::string& input) { return input + ".bak"; }

bool has_backup(const std::string& input) {
    const std::string backup = backup_name(input);
    std::error_code failure;
    return std::filesystem::exists(backup, failure) &&
           !std::filesystem::is_directory(backup, failure) && !same_file(backup, input);
}

CommandHelp unwrap_help() {
    UnwrapRequest defaults;
    std::string notes = k_notes, list;
    for (const Preset& preset : presets())
        list += std::string("\n  ") + preset.name + ": " + preset.summary;
    notes.replace(notes.find("PRESETS"), 7, list);
    return {k_usage, make_table(defaults), notes};
}

namespace {

/// Reads "K/N".
bool parse_shard(BatchRequest& batch, std::string& error) {
    if (batch.shard.empty())
        return true;
    char end = 0;
    if (std::sscanf(batch.shard.c_str(), "%9d/%9d%c", &batch.shard_index, &batch.shard_count,
                    &end) == 2 &&
        batch.shard_count > 0 && batch.shard_index >= 0 && batch.shard_index < batch.shard_count)
        return true;
    error = "--shard: '" + batch.shard + "' is not K/N with K from 0 to N-1";
    return false;
}

/// Checks what one texture for all meshes needs.
void check_atlas(const UnwrapRequest& r, std::string& error) {
    const BatchRequest& batch = r.batch;
    if (batch.tiles < 1 || batch.tiles > 100)
        error = "--tiles is 1 to 100";
    else if (batch.tiles != 1 && !batch.one_atlas)
        error = "--tiles needs --one_atlas; 'tessora pack' fills tiles too";
    else if (batch.one_atlas && batch.out_dir.empty())
        error = "--one_atlas needs --out_dir";
    else if (batch.one_atlas && (batch.skip_existing || batch.shard_count > 1 ||
                                 !batch.html.empty() || batch.json_lines))
        error = "--one_atlas makes one result of all meshes: it excludes --skip_existing, --shard, "
                "--html and --json_lines";
}

/// Checks what several meshes need, and refuses what is about one.
bool check_batch(UnwrapRequest& r, std::string& error) {
    BatchRequest& batch = r.batch;
    if (!parse_shard(batch, error))
        return false;
    if (!r.output.empty())
        error = "-o names one output; several meshes need --out_dir or --suffix";
    else if (!r.report.empty() || !r.layout.empty())
        error = std::string(r.report.empty() ? "--layout" : "--report") +
                " names one file; with several meshes reports are written beside the results, and "
                "--beside writes pictures";
    else if (!r.view.empty())
        error = "--view is for one mesh at a time";
    else if (r.in_place && (!batch.out_dir.empty() || !batch.suffix.empty()))
        error = "--in_place excludes --out_dir and --suffix";
    else if (batch.suffix.find_first_of("/\\") != batch.suffix.npos)
        error = "--suffix must not contain a slash";
    else if (batch.jobs < 0 || batch.jobs > 1024)
        error = "--jobs is 0 to 1024";
    else if (!(batch.time_limit >= 0.0))
        error = "--time_limit must not be negative";
    else if (std::count(batch.operands.begin(), batch.operands.end(), "-"))
        error = "standard input is one mesh; several come from files";
    else
        check_atlas(r, error);
    batch.fail_fast |= !batch.keep_going;
    return error.empty();
}

/// The preset counts before all other settings, wherever it stands.
bool parse_words(const std::vector<std::string>& words, UnwrapRequest& request,
                 std::vector<std::string>& operands, std::string& error) {
    constexpr double not_given = -2.0;
    UnwrapRequest first;
    first.settings.stretch = not_given;
    std::vector<std::string> ignored;
    if (!make_table(first).parse(words, ignored, error))
        return false;
    if (!first.preset.empty() && !apply_preset(first.preset, request.settings, error))
        return false;
    if (!make_table(request).parse(words, operands, error))
        return false;
    // A number of charts may take any stretch unless one is given.
    if (request.settings.max_charts > 0 && first.preset.empty() &&
        first.settings.stretch == not_given)
        request.settings.stretch = 1.0;
    return true;
}

bool asks_for_batch(const UnwrapRequest& r, const std::vector<std::string>& operands) {
    const BatchRequest& b = r.batch;
    std::error_code failure;
    return operands.size() > 1 || !b.list.empty() || !b.out_dir.empty() || !b.suffix.empty() ||
           b.jobs != 0 || b.skip_existing || b.dry_run || b.json_lines || b.fail_fast ||
           !b.keep_going || b.time_limit != 0.0 || !b.shard.empty() || !b.html.empty() ||
           b.one_atlas || b.tiles != 1 ||
           (operands.size() == 1 && (std::filesystem::is_directory(operands[0], failure) ||
                                     (is_glob(operands[0]) && !file_exists(operands[0]))));
}

/// Checks the values that one mesh and several have in common.
bool check_values(UnwrapRequest& request, std::string& error) {
    PictureKind kind;
    if (!picture_kind(request.picture, kind)) {
        error = "--picture: '" + request.picture + "' is not layout, checker or stretch";
        return false;
    }
    if (!is_panel_name(request.view_picture.panel)) {
        error = "--view_panel: '" + request.view_picture.panel +
                "' is not all, top, front, side or persp";
        return false;
    }
    if (request.settings.each_mesh &&
        (request.beside || request.batch.one_atlas || !request.layout.empty() ||
         !request.view.empty() || !request.batch.html.empty())) {
        error = "--each_mesh gives each mesh of a file a texture of its own, so one picture cannot "
                "show them: it excludes --layout, --view, --beside, --html and --one_atlas";
        return false;
    }
    tessora::atlas::PackSettings ignored;
    if (!read_stack(request.settings.stack, ignored, error))
        return false;
    check_ranges(request.settings, request.warnings);
    check_range("view_width", request.view_picture.width, 64, 8192, request.warnings);
    request.view_picture.width = std::max(64, std::min(request.view_picture.width, 8192));
    return check_format(request, error);
}

} // namespace

bool check_unwrap_request(UnwrapRequest& request, std::string& error) {
    return check_values(request, error) && (request.mesh || settle_output(request, error));
}

bool parse_unwrap_request(const std::vector<std::string>& words, UnwrapRequest& request,
                          std::string& error) {
    std::vector<std::string> operands;
    if (!parse_words(words, request, operands, error))
        return false;
    if (request.help)
        return true;
    request.batch.is_wanted = asks_for_batch(request, operands);
    if ((operands.empty() && request.batch.list.empty()) ||
        std::count(operands.begin(), operands.end(), "")) {
        error = "which mesh? unwrap needs an INPUT file";
        return false;
    }
    if (request.batch.is_wanted) {
        request.batch.operands = operands;
        return check_values(request, error) && check_batch(request, error);
    }
    request.input = operands[0];
    return check_unwrap_request(request, error);
}

} // namespace app
