#include "app/measure_command.h"

#include "app/atomic_file.h"
#include "app/command.h"
#include "app/exit_code.h"
#include "app/file_formats.h"
#include "app/layout_picture.h"
#include "app/measure_layout.h"
#include "app/mesh_import.h"
#include "app/mesh_reader.h"
#include "app/options.h"
#include "app/unwrap_options.h"
#include "formats/mesh_file.h"
#include "host/io/obj_reader.h"
#include "measure/straight.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* k_measure_usage = R"(usage: tessora measure MESH [options]

Tells how good the texture coordinates of a mesh are (OBJ, glTF, GLB or PLY,
whoever made them): charts, stretch, distortion, flips, overlaps, gaps, coverage, seams.
docs/measures.md defines every figure.

examples:
  tessora measure bunny_uv.obj
  tessora measure other_tool.obj --width 1024 --height 512
  tessora measure bunny_uv.obj --json > figures.json
  tessora measure bunny_uv.obj --layout stretch.png --picture stretch
)";

constexpr const char* k_verify_usage = R"(usage: tessora verify MESH [options]

Checks that the texture coordinates of a mesh keep what an unwrap promises: all
polygons mapped, none flipped, collapsed or mirrored, no overlaps, the gutter
kept, all inside the texture, every chart within the stretch limit. Ends with
exit code 6 and names the polygons (from 0, in the order of the file's faces)
when one of these is broken.

examples:
  tessora verify bunny_uv.obj
  tessora verify level_uv.obj --width 2048 --height 2048 --padding 8 --stretch 0.05
  tessora verify city_packed.obj --tiles 4
      four tiles, numbered as UDIM, each checked as a texture of its own
)";

constexpr const char* k_notes = R"(
In option names - and _ are the same; "-" stands for standard input.

exit codes: 0 done, 2 usage, 3 input missing or no mesh, 4 mesh too large or
memory ran out, 6 a guarantee is broken (verify only), 7 the picture cannot be
written.
)";

struct Request {
    std::string input;
    int width = 512;
    int height = 512;
    int padding = 2;
    double stretch = 0.15;
    int tiles = 1;
    std::string layout; // file of the picture; empty if not requested
    std::string picture = "layout";
    int texcoord = 0; // glTF: the n of TEXCOORD_n
    bool json = false;
    bool per_chart = false;
    bool help = false;
};

OptionTable make_table(Request& request, bool verify) {
    OptionTable table;
    table.heading("options (defaults in parentheses):");
    table.add("width", &request.width, "TEXELS", "width of the texture");
    table.add("height", &request.height, "TEXELS", "height of the texture");
    table.add("padding", &request.padding, "TEXELS", "least gap between two charts");
    table.add("stretch", &request.stretch, "LIMIT", "largest stretch of a chart, 0 to 1");
    table.add("texcoord", &request.texcoord, "N", "glTF: the set TEXCOORD_N");
    table.add("json", &request.json, "", "print JSON");
    table.add("layout", &request.layout, "FILE.png", "draw a picture of the layout");
    table.add("picture", &request.picture, "KIND",
              "layout (charts, texel grid, gutter), checker or stretch");
    table.choices({"layout", "checker", "stretch"});
    if (verify)
        table.add(
            "tiles", &request.tiles, "N",
            "textures that the coordinates cover, 1 to 100, numbered as UDIM: 1001, 1002, ...");
    else
        table.add("per_chart", &request.per_chart, "", "in JSON, list every chart");
    table.add("help", &request.help, "", "show this text");
    return table;
}

bool parse(const Words& words, bool verify, Request& request, std::string& error) {
    std::vector<std::string> operands;
    if (!make_table(request, verify).parse(words, operands, error) || request.help)
        return request.help;
    if (operands.size() != 1 || operands[0].empty())
        error = operands.empty() ? "which mesh? an input file is needed" : "one mesh at a time";
    else if (request.width < 1 || request.height < 1 || request.width > 65536 ||
             request.height > 65536)
        error = "a texture has 1 to 65536 texels a side";
    else if (request.texcoord < 0 || request.texcoord > 7)
        error = "--texcoord is 0 to 7";
    else if (request.padding < 0)
        error = "--padding must not be negative";
    else if (request.tiles < 1 || request.tiles > 100)
        error = "--tiles must be between 1 and 100";
    else if (request.tiles > 1 && !request.layout.empty())
        error = "--layout draws one texture; --tiles has several";
    else if (!(request.stretch >= 0.0 && request.stretch <= 1.0))
        error = "--stretch must be between 0 and 1";
    else if (PictureKind kind; !picture_kind(request.picture, kind))
        error = "--picture is layout, checker or stretch, not '" + request.picture + "'";
    else if (!request.layout.empty() && same_file(request.layout, operands[0]))
        error = "the picture would be written over the mesh";
    else if (const std::string refusal = picture_refusal(request.layout); !refusal.empty())
        error = refusal;
    else
        request.input = operands[0];
    return error.empty();
}

int fail(int code, const std::string& reason) {
    say(reason);
    return code;
}

bool read_document(const Request& request, host::ObjDocument& document, int& code) {
    host::IoError error;
    formats::MeshFile file;
    formats::ReadOptions options;
    options.texcoord = request.texcoord;
    if (read_mesh(request.input, options, file, error)) {
        document = std::move(file.document);
        for (const std::string& warning : document.warnings)
            say("warning: " + warning);
        return true;
    }
    code = fail(error.kind == host::IoError::too_large ? exit_limit : exit_input, error.message);
    return false;
}

Json header(const Request& request) {
    return {{"schema", 1},
            {"program", std::string("tessora ") + version()},
            {"input", request.input},
            {"width", request.width},
            {"height", request.height}};
}

void print(const Json& json) {
    std::printf("%s\n", json.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

void print_measures(const Request& request, const Judgement& judgement) {
    const measure::Straightness straight =
        measure::straightness(judgement.layout, {double(request.width), double(request.height)},
                              judgement.measures.triangle_chart, judgement.measures.outline);
    if (!request.json) {
        std::printf("%s\n\n%s%-22s %14.6g  texels of straight border; %.6g if every chart stood "
                    "straight\n",
                    request.input.c_str(), measures_table(judgement).c_str(),
                    "parallel to the axes", straight.parallel, straight.best);
        return;
    }
    Json out = header(request);
    out["measures"] = Json::parse(measures_json(judgement, request.per_chart));
    out["measures"]["straight_texels"] = straight.parallel;
    out["measures"]["straight_texels_best"] = straight.best;
    print(out);
}

/// Prints the verdict on every tile; one judgement per tile.
void print_verdict(const Request& request, const std::vector<Judgement>& tiles, bool good) {
    Json out = header(request);
    out["padding"] = request.padding;
    out["stretch"] = request.stretch;
    if (request.tiles > 1)
        out["tiles"] = request.tiles;
    out["status"] = good ? "ok" : "broken";
    out["breaches"] = Json::array();
    if (good && !request.json)
        std::printf("%s: all guarantees hold\n", one_line(request.input).c_str());
    for (size_t i = 0; i < tiles.size(); ++i) {
        const std::string tile = tiles.size() > 1 ? std::to_string(1001 + i) + ": " : "";
        for (const measure::Breach& breach : tiles[i].breaches) {
            if (!request.json)
                std::printf("%s: %s%s: %s\n", one_line(request.input).c_str(), tile.c_str(),
                            breach.name, breach_text(breach).c_str());
            out["breaches"].push_back({{"name", breach.name},
                                       {"message", breach.sentence},
                                       {"polygons", breach.polygons}});
            if (tiles.size() > 1)
                out["breaches"].back()["tile"] = 1001 + i;
        }
    }
    if (!request.json)
        return;
    Json measures = Json::array();
    for (const Judgement& judgement : tiles)
        measures.push_back(Json::parse(measures_json(judgement, false)));
    out["measures"] = tiles.size() > 1 ? measures : measures[0];
    print(out);
}

/// Draws and writes the picture, if requested; returns the exit code.
int write_picture(const Request& request, const Judgement& judgement,
                  const measure::Texture& texture) {
    if (request.layout.empty())
        return exit_done;
    PictureKind kind = PictureKind::layout;
    picture_kind(request.picture, kind);
    AtomicFile file;
    std::string png, error;
    if (file.open(request.layout, error) &&
        draw_picture(kind, {judgement.layout, judgement.measures, texture, double(request.padding)},
                     png, error) &&
        file.write(png, error) && file.commit(error))
        return exit_done;
    return fail(exit_output, error);
}

int run(const Words& words, bool verify) {
    Request request;
    std::string error;
    const char* name = verify ? "verify" : "measure";
    if (!parse(words, verify, request, error))
        return fail(exit_usage, error + "\nsee 'tessora " + name + " --help'");
    if (request.help) {
        std::fputs((verify ? verify_help() : measure_help()).text().c_str(), stdout);
        return exit_done;
    }
    host::ObjDocument document;
    int code = exit_done;
    if (!read_document(request, document, code))
        return code;
    const measure::Texture texture{double(request.width), double(request.height)};
    ImportedMesh imported;
    host::Mesh mesh;
    if (!import_mesh(document, imported, mesh))
        return fail(exit_limit, request.input + ": not enough memory for the mesh");
    const std::vector<Judgement> tiles = judge_tiles(document, mesh, request.tiles, texture,
                                                     {double(request.padding), request.stretch});
    code = write_picture(request, tiles[0], texture);
    if (code != exit_done)
        return code;
    if (!verify) {
        print_measures(request, tiles[0]);
        return exit_done;
    }
    const bool good = std::all_of(tiles.begin(), tiles.end(),
                                  [](const Judgement& tile) { return tile.breaches.empty(); });
    print_verdict(request, tiles, good);
    return good ? exit_done : exit_verification;
}

} // namespace

CommandHelp measure_help() {
    Request defaults;
    return {k_measure_usage, make_table(defaults, false), k_notes};
}

CommandHelp verify_help() {
    Request defaults;
    return {k_verify_usage, make_table(defaults, true), k_notes};
}

int measure_command(const Words& words) { return run(words, false); }

int verify_command(const Words& words) { return run(words, true); }

} // namespace app
