// Turning flipped triangles over, for Patch.
#include "atlas/charts/patch.h"

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
        const Spoke& s = star_[i];
        const Vec2 q = uv[s.q], r = uv[s.r];
        const double norm = 0.5 * (s.cot_p * dot(r - q, r - q) + s.cot_q * dot(p - r, p - r) +
                                   s.cot_r * dot(p - q, p - q));
        const double x = lifted(doubled_area(p, q, r) / (2 * s.area), offset);
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
        const Spoke& s = star_[i];
        const Vec2 q = uv[s.q], r = uv[s.r];
        const Vec2 pr = p - r, pq = p - q;
        const double norm =
            0.5 * (s.cot_p * dot(r - q, r - q) + s.cot_q * dot(pr, pr) + s.cot_r * dot(pq, pq));
        const double d = doubled_area(p, q, r) / (2 * s.area);
        const double x = lifted(d, offset), inverse = 1 / x;
        const double slope = x / std::sqrt(d * d + offset * offset);
        const Vec2 dn = pr * s.cot_q + pq * s.cot_r;
        const Vec2 dx = Vec2{q.y - r.y, r.x - q.x} * (0.5 * slope / s.area);
        const double k1 = 1 + inverse * inverse, k2 = -2 * inverse * inverse * inverse;
        const double k3 = 6 * norm * inverse * inverse * inverse * inverse;
        g = g + dn * k1 + dx * (k2 * norm);
        xx += (s.cot_q + s.cot_r) * k1 + k3 * dx.x * dx.x;
        yy += (s.cot_q + s.cot_r) * k1 + k3 * dx.y * dx.y;
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
    const auto choose = [&](uint32_t v) {
        if (!chosen[v] && !pinned[v]) {
            chosen[v] = 1;
            active.push_back(v);
        }
    };
    double offset = 0.3;
    for (int round = 0; round < rounds; round++, offset *= 0.6) {
        bool clean = true;
        for (uint32_t t = 0; t < shape_.size(); t++) {
            const double doubled =
                doubled_area(uv[corner_[3 * t]], uv[corner_[3 * t + 1]], uv[corner_[3 * t + 2]]);
            if (doubled > 2e-9 * shape_[t].area)
                continue;
            clean = false;
            for (uint32_t c = 3 * t; c < 3 * t + 3;
                 c++) { // the triangle and its neighbours' corners
                const uint32_t hub = corner_[c];
                choose(hub);
                for (uint32_t i = star_begin_[hub]; i < star_begin_[hub + 1]; i++) {
                    choose(star_[i].q);
                    choose(star_[i].r);
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
