#include "app/pack_command.h"

#include "app/atomic_file.h"
#include "app/chart_packing.h"
#include "app/exit_code.h"
#include "app/interrupt.h"
#include "app/layout_picture.h"
#include "app/measure_layout.h"
#include "app/mesh_reader.h"
#include "app/pack_options.h"
#include "app/progress_display.h"
#include "app/system.h"
#include "app/unwrap_options.h"
#include "formats/mesh_file.h"
#include "host/io/obj_reader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

namespace app {
namespace {

namespace atlas = tessora::atlas;
using Json = nlohmann::ordered_json;

/// Polygons that belong to an object, group or material of one of these names.
/// `named` receives which of the names occurred.
std::vector<uint8_t> named_polygons(const host::ObjDocument& document,
                                    const std::vector<std::string>& names,
                                    std::vector<uint8_t>& named) {
    std::vector<uint8_t> keep;
    const std::string& text = document.text;
    bool in[3] = {false, false, false}; // object, group, material
    size_t next = 0;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        for (; next < document.statements.size() && document.statements[next].offset < end; ++next)
            if (document.statements[next].kind == host::ObjStatement::polygon)
                keep.push_back(in[0] || in[1] || in[2]);
        std::istringstream line(text.substr(at, std::min<size_t>(end - at, 4096)));
        std::string keyword, name;
        line >> keyword;
        const int kind = keyword == "o" ? 0 : keyword == "g" ? 1 : keyword == "usemtl" ? 2 : -1;
        if (kind >= 0)
            in[kind] = false;
        while (kind >= 0 && line >> name)
            for (size_t i = 0; i < names.size(); ++i)
                if (name == names[i]) {
                    named[i] = 1;
                    in[kind] = true;
                }
        at = end + 1;
    }
    keep.resize(document.polygon_count(), 0);
    return keep;
}

/// One run of the command. A step that fails sets the exit code and the reason. Files appear under
/// their names only after all of them are complete.
class PackRun {
public:
    explicit PackRun(const PackRequest& request)
        : request_(request), settings_(request.settings),
          progress_(ProgressDisplay::style_for_stderr(request.quiet),
                    request.inputs.size() == 1
                        ? request.inputs[0]
                        : std::to_string(request.inputs.size()) + " meshes") {}
    int run();

private:
    bool read();
    bool open_outputs();
    bool collect();
    bool pack();
    bool explain(const atlas::Failure& failure);
    void warn_of_charts(const PackingCheck& check);
    bool verify();
    bool write();
    bool draw_tile(uint32_t tile, std::string& error);
    bool publish();
    void add_result(Json& out) const;
    std::string report() const;
    void write_failure_report();
    void say_result() const;
    void warn(const std::string& sentence);
    bool fail(int code, const std::string& reason);

    const PackRequest& request_;
    atlas::PackSettings settings_; ///< as used
    ProgressDisplay progress_;
    std::vector<formats::MeshFile> meshes_;
    ChartList list_;
    atlas::PackResult result_;
    double gap_ = -1.0;
    std::deque<AtomicFile> files_; ///< meshes in the order of the inputs, then the others
    std::deque<AtomicFile> backups_, pictures_;
    AtomicFile report_file_;
    std::vector<size_t> backed_up_; ///< per backup, its mesh
    std::vector<std::string> warnings_, made_folders_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    int code_ = exit_done;
    std::string reason_;
};

void PackRun::warn(const std::string& sentence) {
    warnings_.push_back(sentence);
    if (!request_.quiet)
        say("warning: " + sentence);
}

bool PackRun::fail(int code, const std::string& reason) {
    code_ = code;
    reason_ = reason;
    return false;
}

bool PackRun::read() {
    progress_.begin_stage("reading");
    meshes_.resize(request_.inputs.size());
    for (size_t i = 0; i < meshes_.size(); ++i) {
        const std::string& input = request_.inputs[i];
        host::IoError error;
        std::string reason;
        if (!read_mesh(input, formats::ReadOptions(), meshes_[i], error))
            return fail(error.kind == host::IoError::too_large ? exit_limit : exit_input,
                        error.message);
        if (!request_.names.empty())
            meshes_[i].document.name = request_.names[i];
        if (!formats::can_write(meshes_[i], request_.outputs[i], {}, reason))
            return fail(exit_usage, reason);
        for (const std::string& warning : meshes_[i].document.warnings)
            warn(warning);
        if (!meshes_[i].document.has_uvs())
            return fail(exit_unwrap, input + ": the mesh has no texture coordinates to pack; "
                                             "'tessora unwrap' makes some");
    }
    return true;
}

/// Opens all outputs before the work, so that an unwritable one is not found only after it.
bool PackRun::open_outputs() {
    std::string error;
    for (const std::string& output : request_.outputs) {
        const std::filesystem::path folder = std::filesystem::path(output).parent_path();
        std::error_code failed;
        if (!folder.empty() && request_.outputs.size() > 1 &&
            std::filesystem::create_directories(folder, failed))
            made_folders_.push_back(folder.string());
        if (!files_.emplace_back().open(output, error))
            return fail(exit_output, error);
        if (!request_.in_place)
            continue;
        if (has_backup(output))
            warn(backup_name(output) + " exists and is kept; " + output +
                 " is replaced without a new backup");
        else if (!backups_.emplace_back().open(backup_name(output), error, AtomicFile::keep))
            return fail(exit_output, error);
        else
            backed_up_.push_back(files_.size() - 1);
    }
    for (uint32_t tile = 0; tile < settings_.tiles && !request_.layout.empty(); ++tile)
        if (!pictures_.emplace_back().open(request_.layout_of(tile), error))
            return fail(exit_output, error);
    if (!request_.report.empty() && !report_file_.open(request_.report, error))
        return fail(exit_output, error);
    return true;
}

/// Lists the charts, with those to keep.
bool PackRun::collect() {
    std::vector<uint8_t> named(request_.keep.size(), 0);
    std::vector<PackSource> sources;
    for (size_t i = 0; i < meshes_.size(); ++i) {
        PackSource source;
        source.document = &meshes_[i].document;
        if (!request_.keep.empty())
            source.keep = named_polygons(meshes_[i].document, request_.keep, named);
        for (size_t k = 0; k < request_.keep.size(); ++k)
            if (request_.keep[k] == request_.inputs[i] ||
                same_file(request_.keep[k], request_.inputs[i])) {
                named[k] = 1;
                source.keep.assign(meshes_[i].document.polygon_count(), 1);
            }
        sources.push_back(std::move(source));
    }
    for (size_t k = 0; k < named.size(); ++k)
        if (!named[k])
            return fail(exit_unwrap, "--keep: no mesh, object, group or material is named '" +
                                         request_.keep[k] + "'");
    std::string error;
    if (!list_charts(std::move(sources), list_, error))
        return fail(exit_limit, error);
    for (size_t i = 0; i < meshes_.size(); ++i) {
        const auto corners = std::count(meshes_[i].document.corner_texture.begin(),
                                        meshes_[i].document.corner_texture.end(), host::k_obj_none);
        if (corners > 0)
            warn(request_.inputs[i] + ": " + std::to_string(corners) +
                 " polygon corners have no texture coordinates; their polygons stay as they are");
    }
    if (request_.from_width > 0)
        take_from_texture(request_.from_width, request_.from_height, settings_, list_);
    return true;
}

bool PackRun::explain(const atlas::Failure& failure) {
    using atlas::Status;
    const auto at = [&] { return ": " + name_polygons(list_, {failure.element}); };
    switch (failure.status) {
    case Status::ok:
        return true;
    case Status::out_of_memory:
        return fail(exit_limit, "not enough memory to pack the charts");
    case Status::kept_charts_collide:
        return fail(exit_unwrap, "kept charts collide: one lies on another or closer than the "
                                 "padding" +
                                     at());
    case Status::kept_chart_outside:
        return fail(exit_unwrap, "a kept chart lies outside the texture" + at());
    case Status::does_not_fit:
        break;
    default:
        return fail(exit_unexpected, atlas::describe(failure.status));
    }
    const bool fixed = settings_.density == atlas::Density::fixed;
    char text[160];
    if (fixed && request_.texture_follows) {
        std::snprintf(
            text, sizeof text,
            "--density %g needs a texture of at least %.0f texels a side; 8192 is the most",
            settings_.texels_per_unit, std::max(8193.0, std::ceil(least_side(list_, settings_))));
        return fail(exit_unwrap, text);
    }
    const std::string tiles = request_.settings.tiles == 1
                                  ? "the texture is"
                                  : std::to_string(request_.settings.tiles) + " tiles are";
    return fail(exit_unwrap,
                tiles + (fixed ? " too small for the charts at this density"
                               : " too small for the charts with this padding between them"));
}

bool PackRun::pack() {
    progress_.begin_stage("packing");
    settings_.user = this;
    settings_.stage_progress = [](atlas::Stage stage, float fraction, void* user) {
        if (stage == atlas::Stage::packing)
            static_cast<PackRun*>(user)->progress_.set_percent(static_cast<int>(fraction * 100.0f));
        return 0;
    };
    const bool fixed = settings_.density == atlas::Density::fixed;
    return explain(fixed ? pack_to_density(list_, request_.texture_follows, settings_, result_)
                         : atlas::pack(list_.mesh(), settings_, result_));
}

/// Names the charts that packing could not make good, since it keeps their shape.
void PackRun::warn_of_charts(const PackingCheck& check) {
    const std::pair<const std::vector<uint32_t>&, const char*> faults[] = {
        {check.flipped, "triangles are flipped against the rest of their chart: "},
        {check.overlapping, "charts overlap themselves: "},
        {check.mirrored, "charts are mirrored: "}};
    for (const auto& [triangles, what] : faults)
        if (!triangles.empty())
            warn(what + name_polygons(list_, triangles));
}

/// Measures the result independently of the engine; one that breaks a promise is not written.
bool PackRun::verify() {
    progress_.begin_stage("verifying");
    const PackingCheck check = check_packing(list_, settings_, result_);
    gap_ = check.gap;
    if (check.breaches.empty()) {
        warn_of_charts(check);
        return true;
    }
    return fail(exit_verification, refusal_text(check.breaches));
}

bool PackRun::draw_tile(uint32_t tile, std::string& error) {
    const measure::Texture texture = {double(settings_.width), double(settings_.height)};
    PictureKind kind = PictureKind::layout;
    picture_kind(request_.picture, kind);
    const measure::Layout layout = tile_layout(list_, result_, tile, kind != PictureKind::layout);
    const measure::Measures measures = measure::measure(layout, texture);
    std::string png;
    return draw_picture(kind, {layout, measures, texture, double(settings_.gutter)}, png, error) &&
           pictures_[tile].write(png, error);
}

bool PackRun::write() {
    progress_.begin_stage("writing");
    const std::vector<host::ObjUvs> uvs = packed_uvs(list_, result_);
    std::string text, error;
    for (size_t i = 0; i < meshes_.size(); ++i) {
        if (!formats::format_mesh(meshes_[i], uvs[i], request_.outputs[i], {}, text, error))
            return fail(exit_unwrap, request_.inputs[i] + ": " + error);
        if (!files_[i].write(text, error))
            return fail(exit_output, error);
    }
    for (size_t i = 0; i < backups_.size(); ++i)
        if (!backups_[i].write(meshes_[backed_up_[i]].original(), error))
            return fail(exit_output, error);
    for (uint32_t tile = 0; tile < pictures_.size(); ++tile) {
        if (tile >= settings_.tiles)
            pictures_[tile].discard();
        else if (!draw_tile(tile, error))
            return fail(exit_output, error);
    }
    return true;
}

/// All files are complete. Signals are blocked during the renames; the meshes come last, so that
/// they are unchanged unless everything else succeeded.
bool PackRun::publish() {
    std::string error;
    if (report_file_.is_open() && !report_file_.write(report(), error))
        return fail(exit_output, error);
    std::vector<AtomicFile*> files = {&report_file_};
    for (std::deque<AtomicFile>* group : {&backups_, &pictures_, &files_})
        for (AtomicFile& file : *group)
            files.push_back(&file);
    for (AtomicFile* file : files)
        if (file->is_open() && file->is_direct() && !file->commit(error))
            return fail(exit_output, error);
    const SignalsHeld held;
    for (AtomicFile* file : files)
        if (file->is_open() && !file->commit(error))
            return fail(exit_output, error);
    set_results_published(true);
    return true;
}

void PackRun::add_result(Json& out) const {
    out["outputs"] = request_.outputs;
    for (uint32_t tile = 0; tile < settings_.tiles && !request_.layout.empty(); ++tile)
        out["layouts"].push_back(request_.layout_of(tile));
    uint64_t kept = 0, stacked = 0;
    std::vector<uint64_t> charts(settings_.tiles, 0);
    for (const atlas::PackedChart& chart : result_.charts) {
        ++charts[chart.tile];
        kept += chart.kept;
        stacked += chart.stacked_on != atlas::k_none;
    }
    out["charts"] = result_.charts.size();
    out["kept"] = kept;
    out["stacked"] = stacked;
    out["texels_per_unit"] = result_.texels_per_unit;
    out["gap_texels"] = gap_ < 0.0 ? Json(nullptr) : Json(gap_);
    for (uint32_t tile = 0; tile < settings_.tiles; ++tile)
        out["tiles"].push_back({{"number", 1001 + tile},
                                {"charts", charts[tile]},
                                {"coverage", result_.coverage[tile]}});
}

std::string PackRun::report() const {
    Json out;
    out["schema"] = 1;
    out["program"] = std::string("tessora ") + version();
    out["status"] = code_ == exit_done ? "ok" : "failed";
    out["code"] = code_;
    if (!reason_.empty())
        out["reason"] = reason_;
    out["inputs"] = request_.names.empty() ? request_.inputs : request_.names;
    if (code_ == exit_done)
        add_result(out);
    out["width"] = settings_.width;
    out["height"] = settings_.height;
    out["padding"] = settings_.gutter;
    out["effort"] = settings_.effort;
    out["seconds"] =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
    out["peak_mb"] = std::round(peak_memory_mb() * 10.0) / 10.0;
    out["warnings"] = warnings_;
    return out.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void PackRun::write_failure_report() {
    for (std::deque<AtomicFile>* group : {&backups_, &pictures_, &files_})
        group->clear();
    std::error_code ignored;
    for (const std::string& folder : made_folders_)
        std::filesystem::remove(folder, ignored); // only if it is empty
    if (request_.report.empty())
        return;
    std::string error;
    report_file_.discard();
    if (!report_file_.open(request_.report, error) || !report_file_.write(report(), error) ||
        !report_file_.commit(error))
        say(error);
}

void PackRun::say_result() const {
    if (request_.quiet)
        return;
    double coverage = 0;
    for (const double tile : result_.coverage)
        coverage += tile / double(settings_.tiles);
    char text[200];
    std::snprintf(
        text, sizeof text, "%zu %s in %u x %u texels%s, %.1f %% covered, %.4g texels per unit",
        result_.charts.size(), result_.charts.size() == 1 ? "chart" : "charts", settings_.width,
        settings_.height,
        settings_.tiles == 1 ? "" : (" on " + std::to_string(settings_.tiles) + " tiles").c_str(),
        100.0 * coverage, result_.texels_per_unit);
    say(text);
    for (const std::string& output : request_.outputs)
        if (output != "-")
            say("mesh:    " + output);
    if (!request_.report.empty() && request_.report != "-")
        say("report:  " + request_.report);
    for (uint32_t tile = 0; tile < settings_.tiles && !request_.layout.empty(); ++tile)
        say("picture: " + request_.layout_of(tile));
}

int PackRun::run() {
    if (read() && open_outputs() && collect() && pack() && verify() && write() && publish()) {
        progress_.clear();
        say_result();
        return exit_done;
    }
    progress_.clear();
    say(reason_);
    write_failure_report();
    return code_;
}

} // namespace

int pack_command(const Words& words) {
    PackRequest request;
    std::string error;
    if (!parse_pack_request(words, request, error)) {
        say(error + "\nsee 'tessora pack --help'");
        return exit_usage;
    }
    if (request.help) {
        std::fputs(pack_help().text().c_str(), stdout);
        return exit_done;
    }
    return run_pack(request);
}

int run_pack(const PackRequest& request) { return PackRun(request).run(); }

} // namespace app
