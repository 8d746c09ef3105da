#include "atlas/atlas.h"

#include "atlas/parallel.h"
#include "atlas/road/finish.h"
#include "atlas/road/make_charts.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

namespace tessora::atlas {
namespace {

Failure check_options(const Options& options, bool packs) {
    const bool stretch_ok = options.max_stretch >= 0 && options.max_stretch <= 1;
    const bool pack_ok = options.width > 0 && options.height > 0 && options.gutter >= 0 &&
                         std::isfinite(options.gutter);
    const bool effort_ok = options.effort >= 0 && options.effort <= k_max_effort;
    if (!stretch_ok || !effort_ok || (packs && !pack_ok))
        return {Status::invalid_argument, k_none};
    return {};
}

/// Everything that lives during one call of create() or partition(): the surface, its charts and
/// the progress.
struct ChartingCall {
    ChartingCall(const Mesh& m, const Options& o, bool p)
        : mesh(m), options(o), packs(p),
          executor(m.indices.size / 3 < o.min_parallel ? nullptr : o.executor), progress(o) {}
    /// Makes the charts and checks their number.
    Failure run() {
        if (!progress.stage(Stage::surface))
            return {Status::aborted, k_none};
        // Copies that their sheet's charts do not serve are rare; then they are laid out too.
        constexpr int k_most_rounds = 3;
        SheetOptions sheet_options;
        sheet_options.stack = options.stack;
        std::vector<uint8_t>& refused = sheet_options.refused;
        for (int round = 1;; ++round) {
            const Failure failure = chart_sheets(sheet_options);
            if (failure.status != Status::ok)
                return failure;
            const std::vector<uint32_t> unserved = finish();
            if (unserved.empty())
                break;
            refused.resize(mesh.indices.size / 3, round == k_most_rounds);
            for (uint32_t t = 0; t < refused.size(); ++t)
                if (round == k_most_rounds ||
                    std::binary_search(unserved.begin(), unserved.end(), sheets.copy[t]))
                    refused[t] = 1;
        }
        if (options.max_charts != 0 && finished.chart_count() > options.max_charts)
            return {Status::chart_limit, finished.chart_count()};
        return {};
    }
    /// Charts of everything but copies, as far as those are not refused, and loose triangles.
    Failure chart_sheets(const SheetOptions& sheet_options) {
        const Failure failure = build_surface(mesh, surface, executor);
        if (failure.status != Status::ok)
            return failure;
        const double area = surface.total_area * surface.unit * surface.unit;
        sheets = find_sheets(surface, sheet_options);
        const double repeated = repeated_area() * surface.unit * surface.unit;
        restrict_surface(mesh, sheets.kept, sheets.number, surface, executor);
        total_area = area / (surface.unit * surface.unit);
        // What merging weighs against the whole must not depend on how often a part repeats.
        surface.total_area += repeated / (surface.unit * surface.unit);
        stages = std::make_unique<ChartStages>(surface, options, progress);
        return make_charts(*stages, progress) ? Failure{} : Failure{Status::aborted, k_none};
    }
    /// Area of the copies that lie elsewhere in space.
    double repeated_area() const {
        double area = 0;
        for (uint32_t t = 0; t < surface.face_count; ++t)
            if (sheets.copy[t] != k_none && sheets.elsewhere[sheets.copy[t]])
                area += surface.frame[t].area();
        return area;
    }
    /// Fills `finished`; returns the copies that are not served.
    std::vector<uint32_t> finish() {
        // Where nothing has an area, what is laid out may have another unit than the whole mesh.
        constexpr double k_no_area = 1e-12; // in mean triangles
        const double unit = packs || !(total_area > k_no_area) ? 1 : 1 / std::sqrt(total_area);
        finished = finish_charts(stages->set, stretch_limit(options.max_stretch), unit, executor);
        return follow_sheets(mesh, surface, sheets, options, finished);
    }

    /// The finished charts; frees everything else but the progress.
    FinishedCharts release() {
        stages.reset();
        surface = {};
        sheets = {};
        return std::move(finished);
    }

    /// Those that are laid out, and copies.
    size_t triangles_with_area() const {
        const auto is_copy = [](uint32_t id) { return id != k_none; };
        return sheets.kept.size() +
               size_t(std::count_if(sheets.copy.begin(), sheets.copy.end(), is_copy));
    }

    const Mesh& mesh;
    const Options& options;
    const bool packs;
    const ParallelFor executor; ///< null also for small meshes
    ProgressMeter progress;
    Surface surface; ///< of what is laid out
    Sheets sheets;
    double total_area = 0; ///< of the whole mesh, in the surface's unit
    std::unique_ptr<ChartStages> stages;
    FinishedCharts finished;
};

/// How reluctantly more charts are made than merging leaves, so that they cover more of the
/// texture: from 0 to 1, where none are. The more stretch a caller allows, the more he wants few
/// charts rather than room; at 1 half of the sampling rate may be lost.
double reluctance(const Options& options) {
    constexpr float k_usual_stretch = 0.15f, k_free_stretch = 0.5f;
    const float beyond =
        (options.max_stretch - k_usual_stretch) / (k_free_stretch - k_usual_stretch);
    return std::min(1.0, std::max(0.0, double(beyond)));
}

/// Whether charts may be cut in two for the texture. Quality mode does so where several charts
/// share the texture: what unfolds into a net or two stays whole. Twins follow their sheet, which
/// would double every cut.
bool may_cut(const ChartingCall& call) {
    constexpr uint32_t k_one_net = 1;
    if (call.options.cut_to_pack)
        return true;
    return call.options.quality == Quality::quality && reluctance(call.options) < 1 &&
           call.finished.chart_count() > k_one_net &&
           std::all_of(call.sheets.elsewhere.begin(), call.sheets.elsewhere.end(),
                       [](uint8_t elsewhere) { return elsewhere != 0; });
}

/// Cuts charts where that lets all of them grow. Quick layouts judge the cuts: what a cut has to
/// gain is more than a thorough layout gains on a quick one. Returns the quick layout of the charts
/// that are left, with coverage 0 if there is none.
Packing cut_to_pack(ChartingCall& call, PackOptions options) {
    options.quick = true;
    options.effort = effort_factor((call.options.effort + k_usual_effort) / 2); // many layouts
    CutOptions cut;
    cut.max_charts = call.options.max_charts;
    cut.always = call.options.cut_to_pack;
    cut.effort = call.options.effort;
    cut.reluctance = cut.always ? 0 : reluctance(call.options);
    std::vector<Packing> layouts;
    const uint32_t kept = cut_charts(*call.stages, cut, [&] {
        layouts.emplace_back();
        if (!call.finish().empty())
            return 0.0; // a copy cannot follow the latest cut
        Packing packing = pack_finished(call.finished, options);
        if (packing.status != Status::ok)
            return 0.0;
        options.wanted = std::max(options.wanted, packing.coverage);
        layouts.back() = std::move(packing);
        return layouts.back().coverage;
    });
    call.finish();
    return kept == k_none ? Packing() : std::move(layouts[kept]);
}

/// Finished charts and where they lie.
struct Layout {
    FinishedCharts charts;
    Packing packing;
};

PackOptions pack_options(const ChartingCall& call, ProgressMeter& progress) {
    PackOptions options;
    options.width = call.options.width;
    options.height = call.options.height;
    options.gutter = call.options.gutter;
    options.quality = call.options.quality;
    options.effort = effort_factor(call.options.effort);
    options.triangles = call.triangles_with_area();
    options.executor =
        options.triangles < call.options.min_parallel ? nullptr : call.options.executor;
    options.proceed = [&](double fraction) { return progress.advance(fraction); };
    return options;
}

/// Quality mode does not look at fast mode's charts where its own cover so much of the texture.
constexpr double k_surely_filled = 0.9;

/// Charts that cover so little more of the texture do not outweigh a smaller number of charts.
constexpr double k_equal_coverage = 0.002;

/// The coverage that a number of charts is wanted to have, none below it being of use.
using Wanted = std::function<double(uint32_t charts)>;

/// Makes and packs the charts. From the first `share` of the packing stage on, progress is left to
/// the caller. Packing may end early where less than `wanted` is to be expected.
Failure lay_out(ChartingCall& call, double share, Layout& layout, const Wanted& wanted = nullptr) {
    const Failure failure = call.run();
    if (failure.status != Status::ok)
        return failure;
    call.progress.stage(Stage::packing);
    PackOptions options = pack_options(call, call.progress);
    call.progress.part(0, share);
    Packing quick;
    if (may_cut(call)) {
        call.progress.part(0, share / 2);
        quick = cut_to_pack(call, options);
        call.progress.part(share / 2, share);
    } else if (wanted) {
        options.wanted = wanted(call.finished.chart_count());
    }
    if (options.wanted < 1)
        layout.packing = pack_finished(call.finished, options);
    // Cuts are chosen by quick layouts, so the one that is left is often a lucky one.
    if (layout.packing.status == Status::ok && quick.coverage > layout.packing.coverage)
        layout.packing = std::move(quick);
    layout.charts = call.release();
    const Status status = layout.packing.status;
    return {status, status == Status::does_not_fit ? layout.charts.chart_count() : k_none};
}

/// A layout with other options than the caller's. Made at once by make(), or beside the caller's by
/// make_beside(), which another thread may call.
class OtherLayout {
public:
    OtherLayout(const Mesh& mesh, const Options& options) : mesh_(mesh), options_(options) {
        options_.progress = nullptr;
    }
    /// The calling meter's part advances by all stages of it.
    void make(ProgressMeter& progress, const Wanted& wanted) {
        options_.user = &progress;
        options_.stage_progress = [](Stage stage, float fraction, void* user) {
            const double done = ProgressMeter::whole(stage, double(fraction));
            return static_cast<ProgressMeter*>(user)->advance(done) ? 0 : 1;
        };
        run(wanted);
    }
    /// Reports no progress, stops when drop() was called, and keeps exceptions for take().
    void make_beside(ProgressMeter& progress) noexcept {
        beside_ = &progress;
        options_.user = this;
        options_.stage_progress = [](Stage, float, void* user) {
            const OtherLayout& self = *static_cast<OtherLayout*>(user);
            return self.dropped_ || !self.beside_->poll() ? 1 : 0;
        };
        try {
            if (!dropped_)
                run(nullptr);
        } catch (...) {
            thrown_ = std::current_exception();
        }
    }
    /// Nobody needs it any more.
    void drop() { dropped_ = true; }
    bool was_made_beside() const { return beside_ != nullptr; }
    /// After it was made: moves the layout out.
    Failure take(Layout& layout) {
        if (thrown_)
            std::rethrow_exception(thrown_);
        layout = std::move(layout_);
        return failure_;
    }

private:
    void run(const Wanted& wanted) {
        ChartingCall call(mesh_, options_, true);
        failure_ = lay_out(call, 1, layout_, wanted);
    }

    const Mesh& mesh_;
    Options options_;
    ProgressMeter* beside_ = nullptr;
    std::atomic<bool> dropped_{false};
    Failure failure_;
    Layout layout_;
    std::exception_ptr thrown_;
};

/// What quality mode tries beside the caller's options: fast mode, and with more effort also less
/// stretch, which gives other charts.
std::deque<OtherLayout> others_than(const Mesh& mesh, const Options& options) {
    constexpr std::pair<int, float> k_less_stretch[] = {{6, 0.6f}, {8, 0.35f}};
    std::deque<OtherLayout> others;
    Options other = options;
    other.quality = Quality::fast;
    others.emplace_back(mesh, other);
    other.quality = options.quality;
    for (const auto& [effort, factor] : k_less_stretch) {
        other.max_stretch = options.max_stretch * factor;
        if (options.effort >= effort)
            others.emplace_back(mesh, other);
    }
    return others;
}

/// Whether the mesh, which may be double-sided, unfolds without stretch as one chart.
bool is_net(const FinishedCharts& charts) {
    constexpr double k_no_stretch = 1e-3;
    return charts.worst_l2.size() == 1 && charts.chart_count() <= 2 &&
           std::all_of(charts.chart_stretch.begin(), charts.chart_stretch.end(),
                       [](double stretch) { return stretch < k_no_stretch; });
}

/// The coverage that so many other charts must exceed to be better than a layout: its own, and the
/// price of those that are more, or without the price of those that are fewer. Who allows more
/// stretch than usual wants fewer charts: there nothing is enough for more.
double to_exceed(const Layout& layout, uint32_t other_charts, const Options& options) {
    const double covered = layout.packing.coverage;
    const double charts = layout.charts.chart_count(), others = other_charts;
    if (others == charts)
        return covered;
    if (others < charts) { // at most one doubling counts, or few charts would excuse any void
        const double more = std::min(others, charts - others);
        return covered -
               std::max(k_equal_coverage, price_of_charts(others, more, options.effort, 0));
    }
    if (reluctance(options) > 0)
        return 1;
    return covered + price_of_charts(charts, others - charts, options.effort, 0);
}

/// Whether another layout is better. One that seemed hopeless when it was begun is not, since it
/// may or may not have been finished.
bool is_better(const Layout& other, const Layout& layout, const Options& options) {
    const double least = to_exceed(layout, other.charts.chart_count(), options);
    return other.packing.coverage > least && other.packing.attainable >= least;
}

/// Whether the layout in quality mode is compared with others. A net stays whole, however badly it
/// fills the texture: that is what the user expects of a cube.
bool asks_others(const Failure& failure, const Layout& layout) {
    if (failure.status == Status::ok)
        return layout.packing.coverage < k_surely_filled && !is_net(layout.charts);
    return failure.status == Status::does_not_fit || failure.status == Status::chart_limit;
}

/// Compares the layout in quality mode with others and keeps the best, while progress goes from
/// `share` to `end`.
Failure choose_best(std::deque<OtherLayout>& others, const Options& options,
                    ProgressMeter& progress, double share, double end, Failure failure,
                    Layout& layout) {
    if (!asks_others(failure, layout))
        return failure;
    if (failure.status == Status::chart_limit)
        progress.stage(Stage::packing);
    for (size_t i = 0; i < others.size() && failure.status != Status::aborted; ++i) {
        progress.part(share + (end - share) * double(i) / double(others.size()),
                      share + (end - share) * double(i + 1) / double(others.size()));
        const Wanted wanted = [&](uint32_t charts) {
            return failure.status == Status::ok ? to_exceed(layout, charts, options) : 0;
        };
        if (!others[i].was_made_beside())
            others[i].make(progress, wanted);
        Layout other;
        const Failure found = others[i].take(other);
        if (found.status == Status::ok &&
            (failure.status != Status::ok || is_better(other, layout, options)))
            layout = std::move(other);
        if (found.status == Status::ok || found.status == Status::aborted)
            failure = found;
    }
    return failure;
}

/// Lays out with the caller's options on the calling thread if possible, which alone reports
/// progress, and with the others beside it. Those wait if the executor has one thread only, and
/// stop when they are not asked for.
Failure lay_out_all(ChartingCall& call, double share, std::deque<OtherLayout>& others,
                    Layout& layout) {
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<bool> own_begun{false};
    std::atomic<size_t> next{0};
    Failure failure;
    const auto own = [&] {
        failure = lay_out(call, share, layout);
        if (!asks_others(failure, layout))
            for (OtherLayout& other : others)
                other.drop();
    };
    parallel_for(call.executor, 1 + others.size(), [&](size_t) {
        if (std::this_thread::get_id() == caller) {
            if (!own_begun.exchange(true))
                own();
            return; // what is left is made later, with progress
        }
        const size_t i = next++;
        if (i < others.size())
            others[i].make_beside(call.progress);
        else if (!own_begun.exchange(true))
            own();
    });
    return failure;
}

Failure choose_layout(ChartingCall& call, Layout& layout);

/// With more effort than usual also makes what less effort finds, and takes it if it covers more:
/// so more effort never covers less. The calling meter's part advances by all of it.
Failure compare_with_less_effort(ChartingCall& call, Failure failure, Layout& layout) {
    Options less = call.options;
    --less.effort;
    less.progress = nullptr;
    less.user = &call.progress;
    less.stage_progress = [](Stage stage, float fraction, void* user) {
        const double done = ProgressMeter::whole(stage, double(fraction));
        return static_cast<ProgressMeter*>(user)->advance(done) ? 0 : 1;
    };
    ChartingCall other_call(call.mesh, less, true);
    Layout other;
    const Failure found = choose_layout(other_call, other);
    if (found.status == Status::aborted)
        return found;
    if (found.status != Status::ok ||
        (failure.status == Status::ok && other.packing.coverage <= layout.packing.coverage))
        return failure;
    layout = std::move(other);
    return found;
}

/// Layouts made beside each other take the memory of all: larger meshes have one after the other.
constexpr size_t k_most_beside = 2'000'000; // triangles

/// Makes the best layout for the call's options.
Failure choose_layout(ChartingCall& call, Layout& layout) {
    constexpr double k_own_share = 0.7; // of the packing stage; the rest is fast mode's layout
    const Options& options = call.options;
    const bool patient = options.effort > k_usual_effort;
    const double end = patient ? 0.5 : 1, own = k_own_share * end;
    Failure failure;
    if (options.quality == Quality::fast) {
        failure = lay_out(call, end, layout);
    } else {
        std::deque<OtherLayout> others = others_than(call.mesh, options);
        const bool beside = k_has_threads && call.executor != nullptr &&
                            call.mesh.indices.size / 3 <= k_most_beside;
        failure = beside ? lay_out_all(call, own, others, layout) : lay_out(call, own, layout);
        failure = choose_best(others, options, call.progress, own, end, failure, layout);
    }
    // Fast mode makes the same charts with less effort.
    const bool other_charts =
        failure.status == Status::chart_limit && options.quality != Quality::fast;
    if (!patient ||
        (failure.status != Status::ok && failure.status != Status::does_not_fit && !other_charts))
        return failure;
    call.progress.part(end, 1);
    return compare_with_less_effort(call, failure, layout);
}

Failure create_charts(const Mesh& mesh, const Options& options, Result& result) {
    ChartingCall call(mesh, options, true);
    ProgressMeter& progress = call.progress;
    Layout layout;
    const Failure failure = choose_layout(call, layout);
    if (failure.status != Status::ok)
        return failure;
    if (!progress.stage(Stage::emission))
        return {Status::aborted, k_none};
    emit(layout.charts.to_emit(mesh), layout.packing, pack_options(call, progress), result);
    report_rounded_stretch(mesh, result, call.executor);
    return progress.finish() ? Failure{} : Failure{Status::aborted, k_none};
}

Failure partition_charts(const Mesh& mesh, const Options& options, Result& result,
                         std::vector<uint32_t>& partition_adjacency) {
    ChartingCall call(mesh, options, false);
    const Failure failure = call.run();
    if (failure.status != Status::ok)
        return failure;
    if (!call.progress.stage(Stage::emission))
        return {Status::aborted, k_none};
    emit_unpacked(call.finished.to_emit(mesh), result);
    report_rounded_stretch(mesh, result, call.executor);
    partition_adjacency = open_adjacency(mesh, call.stages->set, call.sheets, call.finished);
    return call.progress.finish() ? Failure{} : Failure{Status::aborted, k_none};
}

/// Runs a call; lets no exception escape and leaves no partial result behind.
template <class Call>
Failure guarded(Result& result, Call call) noexcept {
    Failure failure;
    try {
        result = Result{};
        failure = call();
    } catch (const std::bad_alloc&) {
        failure = {Status::out_of_memory, k_none};
    } catch (const std::length_error&) {
        failure = {Status::out_of_memory, k_none};
    }
    if (failure.status != Status::ok)
        result = Result{};
    return failure;
}

} // namespace

Failure create(const Mesh& mesh, const Options& options, Result& result) noexcept {
    return guarded(result, [&]() -> Failure {
        const Failure failure = check_options(options, true);
        return failure.status != Status::ok ? failure : create_charts(mesh, options, result);
    });
}

Failure partition(const Mesh& mesh, const Options& options, Result& result,
                  std::vector<uint32_t>& partition_adjacency) noexcept {
    return guarded(result, [&]() -> Failure {
        partition_adjacency.clear();
        const Failure failure = check_options(options, false);
        return failure.status != Status::ok
                   ? failure
                   : partition_charts(mesh, options, result, partition_adjacency);
    });
}

const char* describe(Status status) noexcept {
    switch (status) {
    case Status::ok:
        return "the atlas was made";
    case Status::invalid_argument:
        return "an array or an option is out of range";
    case Status::index_out_of_range:
        return "a triangle names a vertex that does not exist";
    case Status::adjacency_out_of_range:
        return "the adjacency names a triangle that does not exist";
    case Status::non_finite_position:
        return "a vertex position is not a finite number";
    case Status::does_not_fit:
        return "the gutter leaves no room for the charts in a texture of this size";
    case Status::chart_limit:
        return "more charts are needed than the chart limit allows";
    case Status::aborted:
        return "the caller stopped the work";
    case Status::out_of_memory:
        return "memory ran out";
    case Status::non_finite_uv:
        return "a texture coordinate is not a finite number";
    case Status::kept_charts_collide:
        return "charts that are to stay where they are lie closer than the gutter";
    case Status::kept_chart_outside:
        return "a chart that is to stay where it is lies in no tile";
    }
    return "unknown status";
}

const char* describe(Stage stage) noexcept {
    switch (stage) {
    case Stage::surface:
        return "Reading the surface";
    case Stage::clusters:
        return "Grouping triangles";
    case Stage::regions:
        return "Flattening regions";
    case Stage::merging:
        return "Merging charts";
    case Stage::smoothing:
        return "Smoothing borders";
    case Stage::packing:
        return "Packing charts";
    case Stage::emission:
        return "Writing coordinates";
    }
    return "Working";
}

} // namespace tessora::atlas
