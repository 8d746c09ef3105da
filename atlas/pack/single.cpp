#include "atlas/pack/single.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Turns tried over a right angle, and how often the steps around the best one are halved.
constexpr int k_turns = 128, k_refinements = 10;

/// The room is taken smaller by this factor, so that rounding errors do not reach beyond it.
constexpr double k_slack = 1 - 1e-9;

struct Fit {
    Turn turn;
    Vec2 low; ///< corner of the turned chart's box
    double scale = 0;
};

class SingleChart {
public:
    SingleChart(const ChartChains& chains, const ChartShape& shape, const PackRoom& room)
        : points_(chains.points.data() + chains.chain_begin[shape.chain_begin]),
          end_(chains.points.data() + chains.chain_begin[shape.chain_end]), room_(room) {}

    /// The largest scale at which the chart fits, turned so; `most` if it is a point.
    Fit fit(Turn turn, double most) const {
        Vec2 low = turned(*points_, turn), high = low;
        for (const Vec2* p = points_; p < end_; ++p) {
            const Vec2 q = turned(*p, turn);
            low = {std::min(low.x, q.x), std::min(low.y, q.y)};
            high = {std::max(high.x, q.x), std::max(high.y, q.y)};
        }
        double scale = most;
        if (high.x > low.x)
            scale = std::min(scale, k_slack * room_.width / (high.x - low.x));
        if (high.y > low.y)
            scale = std::min(scale, k_slack * room_.height / (high.y - low.y));
        return {turn, low, scale};
    }

private:
    const Vec2 *points_, *end_;
    const PackRoom& room_;
};

/// The turn by twice the angle whose tangent is `half`, after `base`.
Turn turn_by(double half, Turn base) {
    const double size = 1 + half * half;
    const Vec2 t = turned({base.cosine, base.sine}, {(1 - half * half) / size, 2 * half / size});
    return {t.x / length(t), t.y / length(t)};
}

} // namespace

bool place_single(const ChartChains& chains, uint32_t chart, const PackRoom& room, bool quarters,
                  double max_scale, double min_scale, Packing& packing) {
    const ChartShape& shape = chains.shapes[chart];
    const SingleChart single(chains, shape, room);
    const Turn along{shape.axis.x, -shape.axis.y};
    Fit best = single.fit(along, max_scale);
    const auto consider = [&](Turn base, double half) {
        const Fit fit = single.fit(turn_by(half, base), max_scale);
        const bool better = fit.scale > best.scale;
        best = better ? fit : best;
        return better;
    };
    const Turn bases[] = {along, {-along.sine, along.cosine}};
    if (quarters)
        consider(bases[1], 0);
    for (const Turn base : bases) {
        if (!shape.turns_finely)
            break;
        double middle = 0, step = 1.0 / k_turns;
        for (int i = 0; i < k_turns; ++i)
            if (consider(base, i * step))
                middle = i * step;
        for (int i = 0; i < k_refinements; ++i) {
            step /= 2;
            for (const double half : {middle - step, middle + step})
                if (consider(base, half))
                    middle = half;
        }
    }
    if (best.scale < min_scale)
        return false;
    packing.scale = best.scale;
    packing.placements[chart] = {best.turn.cosine, best.turn.sine, -best.low.x * best.scale,
                                 -best.low.y * best.scale, 0};
    return true;
}

} // namespace tessora::atlas
