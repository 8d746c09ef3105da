/// Rigid motions of the plane, and the one that fits corresponding points best.
#pragma once

#include "atlas/geometry/vec.h"

#include <vector>

namespace tessora::atlas {

struct Rigid {
    double cosine = 1, sine = 0;
    Vec2 shift;
    Vec2 operator()(Vec2 p) const {
        return Vec2{cosine * p.x - sine * p.y, sine * p.x + cosine * p.y} + shift;
    }
};

/// The motion of `from` onto `to` that minimises the weighted sum of squared distances (Procrustes,
/// without reflection). Returns the weighted root mean square distance that remains, or -1 if the
/// points do not determine a motion.
inline double fit_rigid(const std::vector<Vec2>& from, const std::vector<Vec2>& to,
                        const std::vector<double>& weight, Rigid& motion) {
    double total = 0;
    Vec2 centre_from, centre_to;
    for (size_t i = 0; i < from.size(); ++i) {
        total += weight[i];
        centre_from = centre_from + from[i] * weight[i];
        centre_to = centre_to + to[i] * weight[i];
    }
    if (!(total > 0))
        return -1;
    centre_from = centre_from * (1 / total);
    centre_to = centre_to * (1 / total);
    double cosine = 0, sine = 0;
    for (size_t i = 0; i < from.size(); ++i) {
        const Vec2 p = from[i] - centre_from, q = to[i] - centre_to;
        cosine += weight[i] * dot(p, q);
        sine += weight[i] * cross(p, q);
    }
    const double norm = std::sqrt(cosine * cosine + sine * sine);
    if (!(norm > 0))
        return -1;
    motion.cosine = cosine / norm;
    motion.sine = sine / norm;
    motion.shift = {};
    motion.shift = centre_to - motion(centre_from);
    double squares = 0;
    for (size_t i = 0; i < from.size(); ++i) {
        const Vec2 gap = motion(from[i]) - to[i];
        squares += weight[i] * dot(gap, gap);
    }
    return std::sqrt(squares / total);
}

} // namespace tessora::atlas
