#include "atlas/pack/pack.h"

#include "atlas/pack/search.h"
#include "atlas/pack/shelves.h"
#include "atlas/pack/single.h"
#include "atlas/pack/straight.h"

#include <algorithm>
#include <cmath>

namespace tessora::atlas {
namespace {

/// Layouts are given up if the largest chart would be shorter than this, in texels.
constexpr double k_min_extent = 1.0 / 16;

/// Straight border has runs of this many texels.
constexpr double k_straight_run = 12;

/// Charts with more than this share of straight border parallel to one pair of axes stand straight.
constexpr double k_straight_share = 0.06;

/// Up to this many charts may leave much of the texture empty if they stand straight. Then those
/// with a smaller share tilt, if that makes all larger by more than this factor.
constexpr size_t k_few_charts = 3;
constexpr double k_mostly_straight = 0.5, k_worth_tilting = 1.015;

/// Share of the room that charts usually fill.
constexpr double k_likely_fill = 0.75;

double covered(const ChartChains& chains, double scale, const PackOptions& options) {
    double area = 0;
    for (const ChartShape& shape : chains.shapes)
        area += shape.kept ? shape.area : shape.area * scale * scale;
    return area / (double(options.width) * double(options.height) * options.tiles);
}

/// The scale at which the charts would fill most of the room, in texels per chart unit.
double likely_scale(const ChartChains& chains, const PackOptions& options, const PackRoom& room) {
    double area = 0;
    for (const ChartShape& shape : chains.shapes)
        area += shape.kept ? 0 : shape.area;
    if (options.max_scale > 0)
        return options.max_scale;
    return area > 0 ? std::sqrt(k_likely_fill * room.width * room.height * options.tiles / area)
                    : 1;
}

/// `axis` or a direction a multiple of a quarter turn from it, whichever is nearest to the x axis.
Vec2 nearest_to_x(Vec2 axis) {
    if (std::abs(axis.y) > std::abs(axis.x))
        axis = {axis.y, -axis.x};
    return axis.x < 0 ? Vec2{-axis.x, -axis.y} : axis;
}

/// Sets the charts' axes and how they may turn from there: those with more than `straight_share` of
/// straight border stand along it. Returns how many do.
size_t choose_axes(ChartChains& chains, const PackOptions& options, const PackRoom& room,
                   double straight_share) {
    const double min_run = k_straight_run / likely_scale(chains, options, room);
    size_t standing = 0;
    for (ChartShape& shape : chains.shapes) {
        if (shape.kept || shape.chain_begin == shape.chain_end)
            continue;
        const bool free = options.turns == Turns::any;
        shape.turns_finely = free && !options.align;
        if (!free && !options.align) {
            stand_along(chains, {1, 0}, shape);
            continue;
        }
        const StraightBorder straight =
            shape.apart ? StraightBorder{} : find_straight_border(chains, shape, min_run);
        const bool stands = straight.length > straight_share * straight.perimeter;
        if (stands)
            stand_along(chains, straight.axis, shape);
        standing += stands;
        shape.turns_finely = shape.turns_finely && !stands;
        if (options.turns == Turns::none)
            stand_along(chains, nearest_to_x(shape.axis), shape);
    }
    return standing;
}

/// The scales that layouts may have, in texels per chart unit.
struct ScaleRange {
    double least, most;
};

/// `extent`: the longest side of a chart's box.
ScaleRange scales_for(double extent, const PackOptions& options, const PackRoom& room) {
    // Points have no size to scale; any factor keeps them points.
    ScaleRange range{1, 1};
    if (extent > 0)
        range = {k_min_extent / extent,
                 std::sqrt(room.width * room.width + room.height * room.height) / extent};
    if (options.max_scale > 0)
        range.most = std::min(range.most, options.max_scale);
    range.least = std::max(range.least, options.min_scale);
    return range;
}

/// Places the charts `present`, each with the turns that its shape allows, around the kept ones.
Status place(const ChartChains& chains, const std::vector<uint32_t>& present, bool kept,
             const PackOptions& options, const PackRoom& room, ScaleRange scales,
             Packing& packing) {
    if (present.size() == 1 && !kept)
        return place_single(chains, present[0], room, options.turns != Turns::none, scales.most,
                            scales.least, packing)
                   ? Status::ok
                   : Status::does_not_fit;
    const SearchResult found =
        search_layout(chains, room, scales.most, scales.least, options, packing);
    if (found == SearchResult::aborted)
        return Status::aborted;
    const bool placed =
        found == SearchResult::found ||
        (!kept && pack_boxes(chains, room, options.tiles, scales.most, scales.least, packing));
    return placed ? Status::ok : Status::does_not_fit;
}

Packing lay_out(const ChartChains& chains, const PackOptions& options, const PackRoom& room) {
    Packing packing;
    packing.placements.assign(chains.shapes.size(), Placement());
    std::vector<uint32_t> present;
    bool kept = false;
    double extent = 0;
    for (uint32_t i = 0; i < chains.shapes.size(); ++i) {
        const ChartShape& shape = chains.shapes[i];
        if (shape.chain_begin == shape.chain_end)
            continue;
        kept = kept || shape.kept;
        if (shape.kept)
            continue;
        present.push_back(i);
        extent = std::max({extent, shape.length, shape.width});
    }
    if (present.empty())
        return packing;
    packing.status = Status::does_not_fit;
    const ScaleRange scales = scales_for(extent, options, room);
    if (std::min(room.width, room.height) < 1 || present.size() / options.tiles > room.capacity ||
        scales.most < scales.least)
        return packing;
    packing.status = place(chains, present, kept, options, room, scales, packing);
    if (packing.status == Status::ok)
        packing.coverage = covered(chains, packing.scale, options);
    return packing;
}

/// The options of a part of the work, which reports its progress from `begin` to `end`.
PackOptions part_of(const PackOptions& options, double begin, double end) {
    PackOptions part = options;
    if (options.proceed)
        part.proceed = [&options, begin, end](double done) {
            return options.proceed(begin + (end - begin) * done);
        };
    return part;
}

} // namespace

InnerRectangle inner_rectangle(uint32_t width, uint32_t height, float gutter) {
    const double w = width, h = height, left = 1 - double(gutter) / std::min(w, h);
    return {w * left, h * left, std::max(w, h) * left};
}

double safe_gutter(uint32_t width, uint32_t height, float gutter) {
    return double(gutter) + 1.0 / 1024 + 40.0 * std::max(width, height) / 16777216.0;
}

uint64_t gutter_capacity(uint32_t width, uint32_t height, float gutter) {
    const InnerRectangle inner = inner_rectangle(width, height, gutter);
    if (!(inner.width > 0) || !(inner.height > 0))
        return 0;
    if (!(gutter > 0))
        return ~uint64_t(0);
    const double columns = std::floor(inner.width / gutter) + 1;
    const double rows = std::floor(inner.height / gutter) + 1;
    const double product = columns * rows;
    return product < 9e18 ? uint64_t(product) : ~uint64_t(0);
}

PackRoom room_of(const PackOptions& options) {
    const InnerRectangle inner = inner_rectangle(options.width, options.height, options.gutter);
    return {inner.width, inner.height, safe_gutter(options.width, options.height, options.gutter),
            gutter_capacity(options.width, options.height, options.gutter)};
}

Packing pack_charts(const PackCharts& charts, const PackOptions& options, const PackRoom& room) {
    ChartChains chains = chain_borders(charts);
    const bool may_tilt = chains.shapes.size() <= k_few_charts && options.turns == Turns::any &&
                          !options.align && options.tiles == 1;
    if (!may_tilt) {
        choose_axes(chains, options, room, k_straight_share);
        return lay_out(chains, options, room);
    }
    ChartChains tilted = chains;
    const size_t standing = choose_axes(chains, options, room, k_straight_share);
    if (choose_axes(tilted, options, room, k_mostly_straight) == standing)
        return lay_out(chains, options, room);
    PackOptions whole = options;
    if (!options.quick)
        whole.wanted = 0; // one that ends early would make the other seem better
    const Packing straight = lay_out(chains, part_of(whole, 0, 0.5), room);
    if (straight.status == Status::aborted)
        return straight;
    const Packing other = lay_out(tilted, part_of(whole, 0.5, 1), room);
    const bool better =
        other.status == Status::ok &&
        (straight.status != Status::ok || other.scale > k_worth_tilting * straight.scale);
    return better || other.status == Status::aborted ? other : straight;
}

} // namespace tessora::atlas
