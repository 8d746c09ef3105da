/// Charts of the same shape.
///
/// Two charts are congruent if a motion brings every point of one to a point of the other, up to
/// rounding, and their borders to each other. Motions are found by matching the border loops as
/// cyclic sequences of lengths and angles.
#pragma once

#include "atlas/pack/uv_charts.h"

namespace tessora::atlas {

/// q = (cosine * x - sine * y, sine * x + cosine * y) + shift for p = (x, y), with p.x negated
/// first if it turns over.
struct PlaneMotion {
    double cosine = 1, sine = 0;
    Vec2 shift;
    bool turns_over = false;
    Vec2 operator()(Vec2 p) const {
        const double x = turns_over ? -p.x : p.x;
        return Vec2{cosine * x - sine * p.y, sine * x + cosine * p.y} + shift;
    }
};

struct StackPlace {
    uint32_t chart = k_none; ///< the chart to lie on; k_none: it lies by itself
    PlaneMotion motion;      ///< onto that chart, in the units of the scaled charts
};

/// Finds for every chart the first one that is congruent to it; `scale` has a factor per chart.
/// Kept and tangled charts are left out.
std::vector<StackPlace> find_stacks(const UvCharts& charts, const std::vector<double>& scale,
                                    bool mirrored);

} // namespace tessora::atlas
