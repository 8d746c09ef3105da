#include "atlas/atlas.h"

#include "atlas/pack/pack.h"
#include "atlas/road/emit.h"
#include "atlas/road/make_charts.h"

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>

namespace tessora::atlas {
namespace {

template <class T>
Span<T> span(const std::vector<T>& v) {
    return {v.data(), v.size()};
}

/// The charts as flat arrays for packing and emission, with consecutive numbers and one common
/// scale. See EmitCharts and PackCharts for the arrays.
struct ChartArrays {
    std::vector<uint32_t> corner_class, chart;
    std::vector<double> class_uv, chart_stretch;
    std::vector<uint8_t> over_limit;
    std::vector<uint32_t> edges, edge_begin;

    ChartArrays(const ChartSet& set, double limit, double unit);
    EmitCharts to_emit(const Mesh& mesh) const {
        return {mesh.indices, span(corner_class),  span(class_uv),
                span(chart),  span(chart_stretch), span(over_limit)};
    }
    PackCharts to_pack() const { return {span(class_uv), span(edges), span(edge_begin)}; }
};

/// Charts are numbered by their first triangle, classes by their first corner. Every chart gets the
/// area of its triangles in space, times unit squared.
ChartArrays::ChartArrays(const ChartSet& set, double limit, double unit) {
    const uint32_t faces = set.surface.face_count;
    std::vector<uint32_t> number(set.charts.size(), k_none), source;
    std::vector<double> scale;
    chart.resize(faces);
    for (uint32_t t = 0; t < faces; ++t) {
        const uint32_t c = set.chart[t];
        if (number[c] == k_none) {
            number[c] = uint32_t(source.size());
            source.push_back(c);
            const StretchSums& sums = set.charts[c].stretch;
            scale.push_back(unit * std::sqrt(sums.area / sums.flat_area));
            const double l2 = set.true_l2(set.charts[c]);
            chart_stretch.push_back(std::max(0.0, 1 - 1 / l2));
            over_limit.push_back(l2 > limit * (1 + 1e-6));
        }
        chart[t] = number[c];
    }
    std::vector<uint32_t> class_of_node(set.node.size(), k_none);
    corner_class.resize(set.node.size());
    for (uint32_t c = 0; c < set.node.size(); ++c) {
        uint32_t& id = class_of_node[set.node[c]];
        if (id == k_none) {
            id = uint32_t(class_uv.size() / 2);
            const Vec2 p = set.uv[set.node[c]] * scale[chart[c / 3]];
            class_uv.push_back(p.x);
            class_uv.push_back(p.y);
        }
        corner_class[c] = id;
    }
    edge_begin.push_back(0);
    for (uint32_t c : source) {
        for (uint32_t h : set.charts[c].border) {
            edges.push_back(corner_class[h]);
            edges.push_back(corner_class[next_corner(h)]);
        }
        edge_begin.push_back(uint32_t(edges.size() / 2));
    }
}

Failure check_options(const Options& options, bool packs) {
    const bool stretch_ok = options.max_stretch >= 0 && options.max_stretch <= 1;
    const bool pack_ok = options.width > 0 && options.height > 0 && options.gutter >= 0 &&
                         std::isfinite(options.gutter);
    if (!stretch_ok || (packs && !pack_ok))
        return {Status::invalid_argument, k_none};
    return {};
}

/// Everything that lives during one call of create() or partition(): the surface, its charts and
/// the progress.
struct ChartingCall {
    explicit ChartingCall(const Options& o) : options(o), progress(o) {}
    /// Makes the charts and checks their number.
    Failure run(const Mesh& mesh) {
        if (!progress.stage(Stage::surface))
            return {Status::aborted, k_none};
        const Failure failure = build_surface(mesh, surface);
        if (failure.status != Status::ok)
            return failure;
        stages = std::make_unique<ChartStages>(surface, options);
        if (!make_charts(*stages, progress))
            return {Status::aborted, k_none};
        if (options.max_charts != 0 && chart_count() > options.max_charts)
            return {Status::chart_limit, chart_count()};
        return {};
    }
    uint32_t chart_count() const {
        const std::vector<Chart>& charts = stages->set.charts;
        return uint32_t(
            std::count_if(charts.begin(), charts.end(), [](const Chart& c) { return c.alive; }));
    }
    ChartArrays arrays(double unit) const {
        return ChartArrays(stages->set, stretch_limit(options.max_stretch), unit);
    }

    const Options& options;
    ProgressMeter progress;
    Surface surface;
    std::unique_ptr<ChartStages> stages;
};

Failure create_charts(const Mesh& mesh, const Options& options, Result& result) {
    ChartingCall call(options);
    const Failure failure = call.run(mesh);
    if (failure.status != Status::ok)
        return failure;
    PackOptions pack_options;
    pack_options.width = options.width;
    pack_options.height = options.height;
    pack_options.gutter = options.gutter;
    pack_options.quality = options.quality;
    pack_options.triangles = call.surface.face_count;
    call.progress.stage(Stage::packing);
    pack_options.executor = options.executor;
    pack_options.proceed = [&](double fraction) { return call.progress.advance(fraction); };
    ChartArrays arrays = call.arrays(1);
    Packing packing = pack(arrays.to_pack(), pack_options);
    if (options.cut_to_pack && packing.status == Status::ok) {
        const auto pack_again = [&] {
            arrays = call.arrays(1);
            packing = pack(arrays.to_pack(), pack_options);
            return packing.status == Status::ok ? packing.scale : 0.0;
        };
        if (!cut_charts(*call.stages, options.max_charts, packing.scale, pack_again))
            pack_again();
    }
    if (packing.status == Status::does_not_fit)
        return {packing.status, call.chart_count()};
    if (packing.status != Status::ok)
        return {packing.status, k_none};
    if (!call.progress.stage(Stage::emission))
        return {Status::aborted, k_none};
    emit(arrays.to_emit(mesh), packing, pack_options, result);
    return call.progress.finish() ? Failure{} : Failure{Status::aborted, k_none};
}

Failure partition_charts(const Mesh& mesh, const Options& options, Result& result,
                         std::vector<uint32_t>& partition_adjacency) {
    ChartingCall call(options);
    const Failure failure = call.run(mesh);
    if (failure.status != Status::ok)
        return failure;
    if (!call.progress.stage(Stage::emission))
        return {Status::aborted, k_none};
    const double area = call.surface.total_area;
    const ChartArrays arrays = call.arrays(area > 0 ? 1 / std::sqrt(area) : 1);
    emit_unpacked(arrays.to_emit(mesh), result);
    partition_adjacency.assign(mesh.adjacency.data, mesh.adjacency.data + mesh.adjacency.size);
    for (size_t h = 0; h < partition_adjacency.size(); ++h)
        if (!call.stages->set.glued[h])
            partition_adjacency[h] = k_none;
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
