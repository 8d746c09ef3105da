#include "atlas/atlas.h"
#include "atlas/geometry/buckets.h"
#include "atlas/pack/congruent.h"
#include "atlas/pack/pack.h"
#include "atlas/pack/spacing.h"
#include "atlas/pack/uv_charts.h"
#include "atlas/progress.h"
#include "atlas/road/emit.h"

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>

namespace tessora::atlas {
namespace {

constexpr uint32_t k_max_tiles = 100, k_max_side = 65536;
constexpr uint32_t k_tile_columns = 10;

/// Kept charts may be this much closer than the gutter, in texels.
constexpr double k_gap_tolerance = 0.01;

/// Kept charts may leave their tile by this share of it.
constexpr double k_range_tolerance = 1e-6;

Failure check(const UvMesh& mesh, const PackSettings& s) {
    const size_t triangles = mesh.indices.size / 3;
    const auto per_triangle = [&](size_t size) { return size == 0 || size == triangles; };
    const bool arrays = mesh.uvs.size % 2 == 0 && mesh.indices.size % 3 == 0 &&
                        mesh.indices.size < k_none && per_triangle(mesh.chart.size) &&
                        per_triangle(mesh.keep.size) && per_triangle(mesh.area.size);
    const bool texture = s.width > 0 && s.height > 0 && s.width <= k_max_side &&
                         s.height <= k_max_side && std::isfinite(s.gutter) && s.gutter >= 0;
    const bool density = s.density == Density::as_is || mesh.area.size == triangles;
    const bool fixed =
        s.density != Density::fixed || (std::isfinite(s.texels_per_unit) && s.texels_per_unit > 0);
    const bool areas = std::all_of(mesh.area.data, mesh.area.data + mesh.area.size,
                                   [](float a) { return std::isfinite(a) && a >= 0; });
    const bool rest =
        s.tiles > 0 && s.tiles <= k_max_tiles && s.effort >= 0 && s.effort <= k_max_effort;
    if (arrays && texture && density && fixed && areas && rest)
        return {};
    return {Status::invalid_argument, k_none};
}

/// Packing is all that is done here, so it may take more time than after unwrapping.
constexpr double k_patience = 4;

/// One call of pack().
class Repacking {
public:
    Repacking(const UvMesh& mesh, const PackSettings& settings, PackResult& result)
        : mesh_(mesh), settings_(settings), result_(result), w_(settings.width),
          h_(settings.height) {}

    Failure run() {
        Failure failure = find_uv_charts(mesh_, w_, h_, charts_);
        if (failure.status == Status::ok)
            failure = find_kept();
        if (failure.status != Status::ok)
            return failure;
        choose_scales();
        if (settings_.stack != Stack::none)
            stacks_ = find_stacks(charts_, scale_, settings_.stack == Stack::mirrored);
        stacks_.resize(charts_.charts.size());
        collect();
        failure = place();
        if (failure.status == Status::ok)
            write();
        return failure;
    }

private:
    uint32_t count() const { return uint32_t(charts_.charts.size()); }
    uint32_t columns() const { return std::min(settings_.tiles, k_tile_columns); }

    /// The spacing of the returned coordinates.
    double step() const {
        double step = 1.0 / 16777216;
        for (uint32_t reach = 1;
             reach < std::max(columns(), (settings_.tiles + k_tile_columns - 1) / k_tile_columns);
             reach *= 2)
            step *= 2;
        return step;
    }

    /// The gutter with room for rounding: see safe_gutter().
    double gutter() const {
        return double(settings_.gutter) + 1.0 / 1024 + 40 * std::max(w_, h_) * step();
    }
    double margin() const {
        return std::max(double(settings_.gutter) / 2, 10 * std::max(w_, h_) * step());
    }

    /// The tiles of the kept charts.
    Failure find_kept() {
        tile_.assign(count(), 0);
        for (uint32_t c = 0; c < count(); ++c) {
            const UvChart& chart = charts_.charts[c];
            if (!chart.keep)
                continue;
            const Vec2 low{chart.low.x / w_, chart.low.y / h_};
            const Vec2 high{chart.high.x / w_, chart.high.y / h_};
            const double column = std::floor((low.x + high.x) / 2);
            const double row = std::floor((low.y + high.y) / 2);
            const double tile = row * k_tile_columns + column, e = k_range_tolerance;
            if (column < 0 || column >= k_tile_columns || row < 0 || tile >= settings_.tiles ||
                low.x < column - e || low.y < row - e || high.x > column + 1 + e ||
                high.y > row + 1 + e)
                return {Status::kept_chart_outside, chart.first_triangle};
            tile_[c] = uint32_t(tile);
            has_kept_ = true;
        }
        const uint32_t collision =
            find_kept_collision(charts_, double(settings_.gutter) - k_gap_tolerance);
        if (collision != k_none)
            return {Status::kept_charts_collide, charts_.charts[collision].first_triangle};
        return {};
    }

    /// The factor from texels to the unit in which all charts have the size they shall have
    /// relative to each other: a unit of length in space, unless sizes stay as they are.
    void choose_scales() {
        double space = 0, flat = 0, kept_space = 0, kept_flat = 0;
        for (const UvChart& chart : charts_.charts) {
            (chart.keep ? kept_space : space) += chart.space_area;
            (chart.keep ? kept_flat : flat) += chart.area;
        }
        kept_density_ = kept_space > 0 ? std::sqrt(kept_flat / kept_space) : 0;
        const bool as_is = settings_.density == Density::as_is;
        const double usual = !as_is && flat > 0 && space > 0 ? std::sqrt(space / flat) : 1;
        scale_.assign(count(), usual);
        for (uint32_t c = 0; c < count(); ++c) {
            const UvChart& chart = charts_.charts[c];
            if (!as_is && chart.area > 0 && chart.space_area > 0)
                scale_[c] = std::sqrt(chart.space_area / chart.area);
        }
    }

    /// The arrays for pack_charts(). A chart that others lie on is the union of them all.
    void collect() {
        std::vector<std::vector<uint32_t>> on(count());
        for (uint32_t c = 0; c < count(); ++c)
            if (stacks_[c].chart != k_none)
                on[stacks_[c].chart].push_back(c);
        edge_begin_.push_back(0);
        for (uint32_t c = 0; c < count(); ++c) {
            const UvChart& chart = charts_.charts[c];
            const bool triangles = chart.tangled || !on[c].empty();
            kind_.push_back(chart.keep  ? PackCharts::Kind::kept
                            : triangles ? PackCharts::Kind::triangles
                                        : PackCharts::Kind::border);
            if (stacks_[c].chart == k_none && kind_[c] != PackCharts::Kind::triangles) {
                append_points(c, {}, charts_.edges.data() + 2 * charts_.edge_begin[c],
                              charts_.edges.data() + 2 * charts_.edge_begin[c + 1]);
            } else if (stacks_[c].chart == k_none) {
                append_triangles(c, {});
                for (uint32_t other : on[c])
                    append_triangles(other, stacks_[other].motion);
            }
            edge_begin_.push_back(uint32_t(edges_.size() / 2));
        }
    }

    void append_points(uint32_t c, const PlaneMotion& motion, const uint32_t* begin,
                       const uint32_t* end) {
        const UvChart& chart = charts_.charts[c];
        const uint32_t first = charts_.class_begin[c];
        const auto offset = uint32_t(points_.size() / 2);
        for (uint32_t id = first; id < charts_.class_begin[c + 1]; ++id) {
            const Vec2 p = chart.keep ? charts_.points[id] - origin(tile_[c])
                                      : motion(charts_.points[id] * scale_[c]);
            points_.insert(points_.end(), {p.x, p.y});
        }
        for (const uint32_t* id = begin; id != end; ++id)
            edges_.push_back(*id - first + offset);
    }

    void append_triangles(uint32_t c, const PlaneMotion& motion) {
        if (triangles_ == nullptr)
            triangles_ = std::make_unique<Buckets>(charts_.chart, count());
        std::vector<uint32_t> ids;
        for (uint32_t i = triangles_->begin[c]; i < triangles_->begin[c + 1]; ++i)
            for (uint32_t k = 0; k < 3; ++k)
                for (uint32_t corner : {k, (k + 1) % 3})
                    ids.push_back(charts_.corner_class[3 * triangles_->item[i] + corner]);
        append_points(c, motion, ids.data(), ids.data() + ids.size());
    }

    /// Lower left corner of the room for charts in a tile, in texels of the whole.
    Vec2 origin(uint32_t tile) const {
        return {tile % k_tile_columns * w_ + margin(),
                double(tile / k_tile_columns) * h_ + margin()};
    }

    Failure place() {
        PackOptions options;
        options.width = settings_.width;
        options.height = settings_.height;
        options.quality = settings_.quality;
        options.triangles = mesh_.indices.size / 3;
        options.turns = settings_.turns;
        options.align = settings_.align;
        options.tiles = settings_.tiles;
        options.effort = k_patience * effort_factor(settings_.effort);
        if (settings_.density == Density::fixed)
            options.min_scale = options.max_scale = settings_.texels_per_unit;
        else if (has_kept_)
            options.max_scale = settings_.density == Density::as_is ? 1 : kept_density_;
        Options callbacks;
        callbacks.progress = settings_.progress;
        callbacks.stage_progress = settings_.stage_progress;
        callbacks.user = settings_.user;
        ProgressMeter progress(callbacks, Stage::packing);
        progress.stage(Stage::packing);
        options.executor = settings_.executor;
        options.proceed = [&](double fraction) { return progress.advance(fraction); };
        PackRoom room;
        room.width = w_ - 2 * margin();
        room.height = h_ - 2 * margin();
        room.gutter = gutter();
        const auto span = [](const auto& v) {
            return Span<std::decay_t<decltype(v[0])>>{v.data(), v.size()};
        };
        packing_ =
            pack_charts({span(points_), span(edges_), span(edge_begin_), span(kind_), span(tile_)},
                        options, room);
        if (packing_.status == Status::does_not_fit)
            return {packing_.status, count()};
        if (packing_.status == Status::ok &&
            !(progress.stage(Stage::emission) && progress.finish()))
            packing_.status = Status::aborted;
        return {packing_.status, k_none};
    }

    /// Where chart c came to lie.
    PackedChart packed(uint32_t c) const {
        const UvChart& chart = charts_.charts[c];
        PackedChart out;
        out.first_triangle = chart.first_triangle;
        out.kept = chart.keep;
        out.mirrored = chart.mirrored;
        out.tangled = chart.tangled;
        out.tile = tile_[c];
        out.x = -double(out.tile % k_tile_columns) * w_;
        out.y = -double(out.tile / k_tile_columns) * h_;
        if (chart.keep)
            return out;
        out.stacked_on = stacks_[c].chart;
        const PlaneMotion& motion = stacks_[c].motion;
        const Placement& at = packing_.placements[out.stacked_on == k_none ? c : out.stacked_on];
        const Vec2 shift = motion.shift * packing_.scale;
        out.tile = at.tile;
        out.turned_over = motion.turns_over;
        out.scale = packing_.scale * scale_[c];
        out.cosine = at.cosine * motion.cosine - at.sine * motion.sine;
        out.sine = at.sine * motion.cosine + at.cosine * motion.sine;
        out.x = at.cosine * shift.x - at.sine * shift.y + at.x + margin();
        out.y = at.sine * shift.x + at.cosine * shift.y + at.y + margin();
        return out;
    }

    void write() {
        result_.chart = charts_.chart;
        result_.coverage.assign(settings_.tiles, 0);
        double space = 0, flat = 0;
        for (uint32_t c = 0; c < count(); ++c) {
            result_.charts.push_back(packed(c));
            const PackedChart& chart = result_.charts.back();
            const double area = charts_.charts[c].area * chart.scale * chart.scale;
            if (chart.stacked_on == k_none)
                result_.coverage[chart.tile] += area / (w_ * h_);
            if (!chart.kept && charts_.charts[c].space_area > 0) {
                space += charts_.charts[c].space_area;
                flat += area;
            }
        }
        result_.texels_per_unit = space > 0 ? std::sqrt(flat / space) : 0;
        round();
    }

    /// The place of a class in the texture, and in its chart before the turn.
    void locate(uint32_t id, const PackedChart& chart, double* exact, double* own) const {
        Vec2 p = charts_.points[id];
        if (chart.turned_over)
            p.x = -p.x;
        own[0] = p.x;
        own[1] = p.y;
        p = p * chart.scale;
        exact[0] =
            (chart.cosine * p.x - chart.sine * p.y + chart.x) / w_ + chart.tile % k_tile_columns;
        exact[1] = (chart.sine * p.x + chart.cosine * p.y + chart.y) / h_ +
                   double(chart.tile / k_tile_columns);
    }

    /// Rounds the new coordinates; kept charts have the bits they came with.
    void round() {
        std::vector<double> exact(2 * charts_.points.size()), own(2 * charts_.points.size());
        for (uint32_t c = 0; c < count(); ++c)
            for (uint32_t id = charts_.class_begin[c]; id < charts_.class_begin[c + 1]; ++id)
                locate(id, result_.charts[c], &exact[2 * size_t(id)], &own[2 * size_t(id)]);
        std::vector<uint32_t> moved, classes, chart;
        for (uint32_t t = 0; t < charts_.chart.size(); ++t)
            if (!result_.charts[charts_.chart[t]].kept) {
                moved.push_back(t);
                chart.push_back(charts_.chart[t]);
                classes.insert(classes.end(), charts_.corner_class.begin() + 3 * ptrdiff_t(t),
                               charts_.corner_class.begin() + 3 * ptrdiff_t(t) + 3);
            }
        EmitCharts emitted;
        emitted.indices = emitted.corner_class = {classes.data(), classes.size()};
        emitted.class_uv = {own.data(), own.size()};
        emitted.chart = {chart.data(), chart.size()};
        Result rounded;
        emit_at(emitted, exact, step(), rounded);
        result_.uvs.resize(2 * mesh_.indices.size);
        for (size_t corner = 0; corner < mesh_.indices.size; ++corner)
            for (size_t k = 0; k < 2; ++k)
                result_.uvs[2 * corner + k] = mesh_.uvs[2 * size_t(mesh_.indices[corner]) + k];
        for (size_t i = 0; i < classes.size(); ++i)
            for (size_t k = 0; k < 2; ++k)
                result_.uvs[2 * (3 * size_t(moved[i / 3]) + i % 3) + k] =
                    rounded.uvs[2 * size_t(rounded.indices[i]) + k];
        for (uint32_t t : rounded.lost)
            result_.lost.push_back(moved[t]);
    }

    const UvMesh& mesh_;
    const PackSettings& settings_;
    PackResult& result_;
    double w_, h_;
    UvCharts charts_;
    std::vector<double> scale_;          ///< per chart: from texels to its unit
    std::vector<uint32_t> tile_;         ///< per chart: of the kept ones
    std::vector<StackPlace> stacks_;     ///< per chart
    std::unique_ptr<Buckets> triangles_; ///< by chart; null before it is needed
    std::vector<double> points_;
    std::vector<uint32_t> edges_, edge_begin_;
    std::vector<PackCharts::Kind> kind_;
    Packing packing_;
    double kept_density_ = 0;
    bool has_kept_ = false;
};

} // namespace

Failure pack(const UvMesh& mesh, const PackSettings& settings, PackResult& result) noexcept {
    Failure failure;
    try {
        result = PackResult{};
        failure = check(mesh, settings);
        if (failure.status == Status::ok)
            failure = Repacking(mesh, settings, result).run();
    } catch (const std::bad_alloc&) {
        failure = {Status::out_of_memory, k_none};
    } catch (const std::length_error&) {
        failure = {Status::out_of_memory, k_none};
    }
    if (failure.status != Status::ok)
        result = PackResult{};
    return failure;
}

} // namespace tessora::atlas
