#include "app/unwrap_run.h"

#include "app/atomic_file.h"
#include "app/command.h"
#include "app/exit_code.h"
#include "app/fingerprint.h"
#include "app/interrupt.h"
#include "app/layout_picture.h"
#include "app/measure_layout.h"
#include "app/mesh_parts.h"
#include "app/mesh_reader.h"
#include "app/mesh_rows.h"
#include "app/panel_view.h"
#include "app/progress_display.h"
#include "app/system.h"
#include "app/thumbnails.h"
#include "app/unwrap_driver.h"
#include "app/unwrap_packing.h"
#include "formats/mesh_file.h"
#include "host/base/threads.h"
#include "host/io/obj_reader.h"

#include <chrono>
#include <cstdio>
#include <new>
#include <nlohmann/json.hpp>

namespace app {
namespace {

/// Unwraps that look for a lower stretch once one with few enough charts is found.
constexpr int k_stretch_tries = 4;

class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(Clock::now() - begin_).count(); }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point begin_ = Clock::now();
};

/// One run of the command. A step that fails sets the exit code and the reason. Files appear under
/// their names only after all of them are complete.
class UnwrapRun {
public:
    explicit UnwrapRun(const UnwrapRequest& request);
    int run();
    UnwrapReport& report() { return report_; }

private:
    bool read();
    bool open_outputs();
    bool open_backup(std::string& error);
    bool unwrap_once(double stretch);
    bool search_stretch();
    bool unwrap();
    bool repack();
    bool unwrap_each();
    bool unwrap_part(const MeshPart& part);
    void add_figures(const MeshPart& part, const UnwrapReport& done);
    void take_view();
    bool verify();
    bool write_mesh();
    bool write_picture();
    bool write_thumbnails();
    bool publish();
    measure::Texture texture() const {
        return {double(outcome_.settings.width), double(outcome_.settings.height)};
    }
    void write_failure_report();
    void warn(const std::string& sentence);
    bool fail(int code, const std::string& reason);
    void say_result() const;

    const UnwrapRequest& request_;
    ProgressDisplay progress_;
    UnwrapReport report_;
    formats::MeshFile file_;
    formats::WriteOptions write_options_;
    UnwrapOutcome outcome_;
    Judgement judgement_;
    AtomicFile mesh_file_, layout_file_, view_file_, thumbnails_file_, report_file_, backup_file_;
    std::string view_png_; ///< drawn while the mesh is in the scene
    std::string view_error_;
    bool tried_ = false; ///< the mesh was unwrapped, so the user has seen the warnings about it
};

UnwrapRun::UnwrapRun(const UnwrapRequest& request)
    : request_(request),
      progress_(ProgressDisplay::style_for_stderr(request.quiet), request.input) {
    host::set_thread_count(static_cast<unsigned>(request.threads));
    report_.input = request.input;
    report_.output = request.output;
    report_.layout = request.layout;
    report_.view = request.view;
    report_.settings = request.settings;
    write_options_.format = request.format;
    formats::ply_uvs_of(request.settings.ply_uvs, write_options_.ply_uvs);
    for (const std::string& warning : request.warnings)
        warn(warning);
}

void UnwrapRun::warn(const std::string& sentence) {
    report_.warnings.push_back(sentence);
    if (!request_.quiet)
        say("warning: " + sentence);
}

bool UnwrapRun::fail(int code, const std::string& reason) {
    report_.code = code;
    report_.reason = reason;
    return false;
}

bool UnwrapRun::read() {
    const Stopwatch watch;
    if (request_.mesh) {
        file_.document = *request_.mesh;
        return true;
    }
    progress_.begin_stage("reading");
    host::IoError error;
    std::string reason;
    const formats::ReadOptions options = {request_.settings.texcoord,
                                          uint64_t(request_.max_input * double(1u << 30))};
    if (!read_mesh(request_.input, options, file_, error, &report_.input_hash))
        return fail(error.kind == host::IoError::too_large ? exit_limit : exit_input,
                    error.message);
    for (const std::string& path : file_.other_files)
        report_.other_hashes.emplace_back(path, file_fingerprint(path));
    if (!formats::can_write(file_, request_.output, write_options_, reason))
        return fail(exit_usage, reason);
    report_.seconds.read = watch.seconds();
    for (const std::string& warning : file_.document.warnings)
        warn(warning);
    if (const std::string warning =
            formats::warning_about_result(file_, request_.output, write_options_);
        !warning.empty())
        warn(warning);
    return true;
}

/// The first backup holds the original and is never replaced.
bool UnwrapRun::open_backup(std::string& error) {
    const std::string backup = backup_name(request_.input);
    if (!has_backup(request_.input))
        return backup_file_.open(backup, error, AtomicFile::keep);
    warn(backup + " exists and is kept; " + request_.input + " is replaced without a new backup");
    return true;
}

/// Opens all outputs before the work, so that an unwritable one is not found only after it.
bool UnwrapRun::open_outputs() {
    std::string error;
    const bool good = (request_.mesh || mesh_file_.open(request_.output, error)) &&
                      (!request_.in_place || open_backup(error)) &&
                      (request_.layout.empty() || layout_file_.open(request_.layout, error)) &&
                      (request_.view.empty() || view_file_.open(request_.view, error)) &&
                      (request_.report.empty() || report_file_.open(request_.report, error));
    if (!good)
        return fail(exit_output, error);
    return request_.view.empty() || open_panels(error) || fail(exit_unwrap, "--view: " + error);
}

void UnwrapRun::take_view() {
    progress_.begin_stage("drawing");
    std::string error;
    if (!draw_panels(request_.view_picture, view_png_, error))
        view_error_ = "--view: " + error;
}

/// One unwrap through the plug-in, with the stretch limit given.
bool UnwrapRun::unwrap_once(double stretch) {
    const auto warning = [this](const std::string& sentence) {
        if (!tried_)
            warn(request_.input + ": " + sentence);
    };
    UnwrapVisitor visit;
    if (view_file_.is_open())
        visit = [this] { take_view(); };
    UnwrapSettingsRequest settings = request_.settings;
    settings.stretch = stretch;
    outcome_ = run_unwrap(file_.document, settings, warning, visit, progress_, report_.seconds);
    tried_ = true;
    if (outcome_.good)
        return true;
    return fail(outcome_.out_of_memory ? exit_limit : exit_unwrap,
                request_.input + ": " + outcome_.reason);
}

/// Looks for the least stretch with which there are at most --max_charts charts: the usual one,
/// then the most allowed, then between the two.
bool UnwrapRun::search_stretch() {
    const int most_charts = request_.settings.max_charts;
    const double ceiling = request_.settings.stretch;
    const double usual = std::min(ceiling, UnwrapSettingsRequest().stretch);
    int least = 0;
    double found = -1.0;
    const auto attempt = [&](double stretch) {
        if (!unwrap_once(stretch))
            return false;
        const int charts = outcome_.result.charts;
        char tried[80];
        std::snprintf(tried, sizeof tried, "stretch %.4g gives %d charts", stretch, charts);
        progress_.begin_stage(tried);
        least = least == 0 ? charts : std::min(least, charts);
        if (charts <= most_charts)
            found = stretch;
        return true;
    };
    if (!attempt(usual) || (found < 0.0 && ceiling > usual && !attempt(ceiling)))
        return false;
    double too_little = usual;
    for (int i = 0; i < k_stretch_tries && found > usual; ++i) {
        const double before = found, middle = (too_little + found) / 2.0;
        if (!attempt(middle))
            return false;
        if (found == before)
            too_little = middle;
    }
    char text[160];
    std::snprintf(text, sizeof text,
                  "%d charts cannot be had with stretch up to %.4g; the least found is %d",
                  most_charts, ceiling, least);
    if (found < 0.0)
        return fail(exit_unwrap, request_.input + ": " + text);
    return outcome_.settings.stretch == found || unwrap_once(found);
}

bool UnwrapRun::unwrap() {
    const bool good = request_.settings.max_charts > 0 ? search_stretch()
                                                       : unwrap_once(request_.settings.stretch);
    report_.settings = outcome_.settings;
    report_.mesh = MeshCounts{file_.document.polygon_count(), outcome_.triangles,
                              file_.document.vertex_count()};
    if (!good)
        return false;
    report_.result = outcome_.result;
    return view_error_.empty() || fail(exit_unwrap, view_error_);
}

/// Packs the charts again if a setting asks for it.
bool UnwrapRun::repack() {
    if (!wants_packing(outcome_.settings))
        return true;
    std::string reason;
    const int code = pack_again(file_.document, outcome_, progress_, reason);
    report_.settings = outcome_.settings;
    return code == exit_done || fail(code, request_.input + ": " + reason);
}

/// Measures the new layout independently of the engine; a layout that breaks a guarantee is not
/// written.
bool UnwrapRun::verify() {
    const Stopwatch watch;
    progress_.begin_stage("verifying");
    const measure::Promise promise = {double(outcome_.settings.padding), outcome_.settings.stretch};
    judgement_ = judge_layout(file_.document, outcome_.mesh, &outcome_.uvs, texture(), promise);
    report_.measures = measures_json(judgement_, false);
    report_.seconds.verify = watch.seconds();
    // Charts of a stack may lie on each other; for stacks there is another check.
    const auto is_excused = [&](const measure::Breach& breach) {
        const std::string name = breach.name;
        return outcome_.settings.stack != "none" &&
               (name == "overlaps" || name == "mirrored" || name == "gap");
    };
    std::vector<std::string> breaches = outcome_.stack_breaches;
    for (const measure::Breach& breach : judgement_.breaches)
        if (!is_excused(breach))
            breaches.push_back(breach_text(breach));
    if (breaches.empty())
        return true;
    return fail(exit_verification, request_.input + ": " + refusal_text(breaches));
}

/// Unwraps a mesh of the file as a request of its own, and takes its coordinates and figures over.
bool UnwrapRun::unwrap_part(const MeshPart& part) {
    UnwrapRequest request = request_;
    request.mesh = &part.document;
    request.input = part.document.name;
    request.output = request.report = std::string();
    request.settings.each_mesh = request.in_place = false;
    request.silent = true;
    request.warnings.clear();
    UnwrapRun run(request);
    const int code = run.run();
    set_results_published(false); // the file's result is not
    const UnwrapReport& done = run.report();
    report_.warnings.insert(report_.warnings.end(), done.warnings.begin(), done.warnings.end());
    if (code != exit_done)
        return fail(code, done.reason);
    const auto first = int32_t(outcome_.uvs.u.size());
    const auto append = [](const std::vector<float>& from, std::vector<float>& to) {
        to.insert(to.end(), from.begin(), from.end());
    };
    append(done.uvs.u, outcome_.uvs.u);
    append(done.uvs.v, outcome_.uvs.v);
    for (size_t c = 0; c < part.corners.size(); ++c)
        outcome_.uvs.corner_uv[part.corners[c]] = first + done.uvs.corner_uv[c];
    add_figures(part, done);
    return true;
}

/// Adds the figures of a mesh to the file's.
void UnwrapRun::add_figures(const MeshPart& part, const UnwrapReport& done) {
    UnwrapResult& all = outcome_.result;
    all.charts += done.result->charts;
    all.stretch = std::max(all.stretch, done.result->stretch);
    all.existing_seam_edges += done.result->existing_seam_edges;
    all.new_seam_edges += done.result->new_seam_edges;
    for (const uint32_t polygon : done.result->over_limit)
        all.over_limit.push_back(part.polygons[polygon]);
    outcome_.triangles += done.mesh->triangles;
    const auto add = [](const std::optional<double>& from, std::optional<double>& to) {
        to = to.value_or(0.0) + from.value_or(0.0);
    };
    add(done.seconds.collect, report_.seconds.collect);
    add(done.seconds.generate, report_.seconds.generate);
    add(done.seconds.apply, report_.seconds.apply);
    add(done.seconds.verify, report_.seconds.verify);
    report_.meshes.push_back({part.name, done});
    report_.meshes.back().report.uvs = host::ObjUvs();
}

/// A texture for each mesh of the file.
bool UnwrapRun::unwrap_each() {
    std::vector<MeshPart> parts;
    std::string error;
    if (!split_meshes(file_, parts, error))
        return fail(exit_input, request_.input + ": " + error);
    outcome_.uvs.corner_uv.assign(file_.document.corner_vertex.size(), -1);
    for (const MeshPart& part : parts)
        if (!unwrap_part(part))
            return false;
    std::sort(outcome_.result.over_limit.begin(), outcome_.result.over_limit.end());
    report_.settings = in_range(request_.settings);
    report_.mesh = MeshCounts{file_.document.polygon_count(), outcome_.triangles,
                              file_.document.vertex_count()};
    report_.result = outcome_.result;
    return true;
}

bool UnwrapRun::write_mesh() {
    if (request_.mesh) {
        report_.uvs = outcome_.uvs;
        return true;
    }
    progress_.begin_stage("writing");
    std::string text, error;
    if (!formats::format_mesh(file_, outcome_.uvs, request_.output, write_options_, text, error))
        return fail(exit_unwrap, request_.input + ": " + error);
    report_.output_hash = fingerprint(text);
    if (!mesh_file_.write(text, error) ||
        (backup_file_.is_open() && !backup_file_.write(file_.original(), error)))
        return fail(exit_output, error);
    return true;
}

bool UnwrapRun::write_picture() {
    std::string png, error;
    if (view_file_.is_open() && !view_file_.write(view_png_, error))
        return fail(exit_output, error);
    if (!layout_file_.is_open())
        return true;
    const PictureSubject subject = {judgement_.layout, judgement_.measures, texture(),
                                    double(outcome_.settings.padding)};
    PictureKind kind = PictureKind::layout;
    picture_kind(request_.picture, kind);
    if (!draw_picture(kind, subject, png, error) || !layout_file_.write(png, error))
        return fail(exit_output, error);
    return true;
}

bool UnwrapRun::write_thumbnails() {
    if (request_.thumbnails.empty())
        return true;
    const std::string name = thumbnails_name(nlohmann::ordered_json::parse(to_json(report_)));
    const std::string path = request_.thumbnails + "/" + name;
    if (file_exists(path)) // of the same result
        return true;
    std::string png, error;
    const PictureSubject subject = {judgement_.layout, judgement_.measures, texture(),
                                    double(outcome_.settings.padding)};
    return (thumbnails_file_.open(path, error) && draw_thumbnails(subject, png, error) &&
            thumbnails_file_.write(png, error)) ||
           fail(exit_output, error);
}

/// All files are complete. Pipes and devices come first: they can fail or block for long, so they
/// must be interruptible, and no file may have changed by then. Signals are blocked during the
/// renames. The mesh comes last, so that it is unchanged unless everything else succeeded.
bool UnwrapRun::publish() {
    report_.peak_mb = peak_memory_mb();
    std::string error;
    if (report_file_.is_open() && !report_file_.write(to_json(report_), error))
        return fail(exit_output, error);
    AtomicFile* const files[] = {&backup_file_,     &layout_file_, &view_file_,
                                 &thumbnails_file_, &report_file_, &mesh_file_};
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

void UnwrapRun::write_failure_report() {
    mesh_file_.discard();
    backup_file_.discard();
    layout_file_.discard();
    view_file_.discard();
    thumbnails_file_.discard();
    if (request_.report.empty())
        return;
    report_.result.reset();
    report_.peak_mb = peak_memory_mb();
    std::string error;
    report_file_.discard();
    if (!report_file_.open(request_.report, error) ||
        !report_file_.write(to_json(report_), error) || !report_file_.commit(error))
        say(error);
}

void UnwrapRun::say_result() const {
    if (request_.quiet)
        return;
    char stretch[32];
    std::snprintf(stretch, sizeof stretch, "%.4f", outcome_.result.stretch);
    std::string line = request_.input + ": " + std::to_string(outcome_.result.charts) +
                       (outcome_.result.charts == 1 ? " chart" : " charts") + ", stretch " +
                       stretch;
    if (!report_.meshes.empty())
        line += ", in " + std::to_string(report_.meshes.size()) +
                (report_.meshes.size() == 1 ? " texture" : " textures");
    if (!outcome_.result.over_limit.empty())
        line += ", polygons over the limit: " + std::to_string(outcome_.result.over_limit.size());
    say(line);
    const std::pair<const char*, const std::string&> files[] = {{"mesh:    ", request_.output},
                                                                {"report:  ", request_.report},
                                                                {"picture: ", request_.layout},
                                                                {"view:    ", request_.view}};
    for (const auto& [label, path] : files)
        if (!path.empty() && path != "-")
            say(label + path);
}

int UnwrapRun::run() {
    bool good = read() && open_outputs() &&
                (request_.settings.each_mesh ? unwrap_each() : unwrap() && repack() && verify());
    if (good) {
        const Stopwatch writing;
        good = write_mesh() && write_picture() && write_thumbnails();
        report_.seconds.write = writing.seconds();
        good = good && publish();
    }
    progress_.clear();
    if (good) {
        say_result();
        return exit_done;
    }
    if (!request_.silent)
        say(report_.reason);
    write_failure_report();
    return report_.code;
}

} // namespace

int run_unwrap_request(const UnwrapRequest& request, UnwrapReport& report) {
    set_results_published(false);
    UnwrapRun run(request);
    const int code = run.run();
    report = std::move(run.report());
    return code;
}

} // namespace app
