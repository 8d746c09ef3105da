// Turning flipped triangles over, for Patch.
#include "atlas/patch.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// A positive stand-in for the determinant: nearly d when d is well above the offset, small and
/// still falling with d below it.
double lifted(double d, double offset) {
    const double root = std::sqrt(d * d + offset * offset);
    return d >= 0 ? 0.5 * (d + root) : 0.5 * offset * offset / (root - d);
}

} // namespace

double Patch::offset_energy(uint32_t v, Vec2 p, double offset) const {
    double energy = 0;
    for (uint32_t i = star_begin_[v]; i < star_begin_[v + 1]; i++) {
        const uint32_t c = star_[i], c1 = next_corner(c), c2 = previous_corner(c);
        const Shape& shape = shape_[c / 3];
        const Vec2 q = uv[corner_[c1]], r = uv[corner_[c2]];
        const double norm =
            0.5 * (shape.cot[c % 3] * dot(r - q, r - q) + shape.cot[c1 % 3] * dot(p - r, p - r) +
                   shape.cot[c2 % 3] * dot(p - q, p - q));
        const double x = lifted(doubled_area(p, q, r) / (2 * shape.area), offset);
        energy += norm * (1 + 1 / (x * x));
    }
    return energy;
}

/// One damped Gauss-Newton step at v.
void Patch::untangle_vertex(uint32_t v, double offset) {
    const Vec2 p = uv[v];
    Vec2 g;
    double xx = 0, xy = 0, yy = 0;
    for (uint32_t i = star_begin_[v]; i < star_begin_[v + 1]; i++) {
        const uint32_t c = star_[i], c1 = next_corner(c), c2 = previous_corner(c);
        const Shape& shape = shape_[c / 3];
        const Vec2 q = uv[corner_[c1]], r = uv[corner_[c2]];
        const double ar = shape.cot[c1 % 3], aq = shape.cot[c2 % 3];
        const Vec2 pr = p - r, pq = p - q;
        const double norm =
            0.5 * (shape.cot[c % 3] * dot(r - q, r - q) + ar * dot(pr, pr) + aq * dot(pq, pq));
        const double d = doubled_area(p, q, r) / (2 * shape.area);
        const double x = lifted(d, offset), inverse = 1 / x;
        const double slope = x / std::sqrt(d * d + offset * offset);
        const Vec2 dn = pr * ar + pq * aq;
        const Vec2 dx = Vec2{q.y - r.y, r.x - q.x} * (0.5 * slope / shape.area);
        const double k1 = 1 + inverse * inverse, k2 = -2 * inverse * inverse * inverse;
        const double k3 = 6 * norm * inverse * inverse * inverse * inverse;
        g = g + dn * k1 + dx * (k2 * norm);
        xx += (ar + aq) * k1 + k3 * dx.x * dx.x;
        yy += (ar + aq) * k1 + k3 * dx.y * dx.y;
        xy += k3 * dx.x * dx.y;
    }
    const double mean = 0.5 * (xx + yy), half = 0.5 * (xx - yy);
    const double radius = std::sqrt(half * half + xy * xy);
    const double floor = 1e-6 * (std::fabs(mean) + radius);
    if (mean - radius < floor) {
        xx += floor - (mean - radius);
        yy += floor - (mean - radius);
    }
    const double det = xx * yy - xy * xy;
    if (!(det > 0))
        return;
    const Vec2 direction = Vec2{xy * g.y - yy * g.x, xy * g.x - xx * g.y} * (1 / det);
    const double before = offset_energy(v, p, offset);
    double step = 1;
    for (int i = 0; i < 8; i++, step *= 0.5)
        if (offset_energy(v, p + direction * step, offset) < before) {
            uv[v] = p + direction * step;
            return;
        }
}

void Patch::untangle(int rounds) {
    build_stars();
    std::vector<uint32_t> active;
    std::vector<uint8_t> chosen(uv.size(), 0);
    double offset = 0.3;
    for (int round = 0; round < rounds; round++, offset *= 0.6) {
        bool clean = true;
        for (uint32_t t = 0; t < shape_.size(); t++) {
            const double doubled =
                doubled_area(uv[corner_[3 * t]], uv[corner_[3 * t + 1]], uv[corner_[3 * t + 2]]);
            if (doubled > 2e-9 * shape_[t].area)
                continue;
            clean = false;
            for (uint32_t c = 3 * t; c < 3 * t + 3; c++) // the triangle and its neighbours' corners
                for (uint32_t i = star_begin_[corner_[c]]; i < star_begin_[corner_[c] + 1]; i++)
                    for (uint32_t k = 0; k < 3; k++) {
                        const uint32_t v = corner_[star_[i] / 3 * 3 + k];
                        if (!chosen[v] && !pinned[v]) {
                            chosen[v] = 1;
                            active.push_back(v);
                        }
                    }
        }
        if (clean)
            return;
        for (int sweep = 0; sweep < 3; sweep++)
            for (uint32_t v : active)
                untangle_vertex(v, offset);
    }
}

} // namespace tessora::atlas
