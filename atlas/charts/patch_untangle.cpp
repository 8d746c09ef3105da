// Turning flipped triangles over, for Patch.
#include "atlas/charts/patch.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// A positive, increasing stand-in for the determinant d: close to d where d is well above the
/// offset, small but never 0 below it. `root` is sqrt(d^2 + offset^2).
Lanes lifted(Lanes d, Lanes root, double offset) {
    return where_not_negative(d, 0.5 * (d + root), 0.5 * offset * offset / (root - d));
}

} // namespace

/// The symmetric Dirichlet energy around v with v moved to p and every determinant lifted: finite
/// for flipped triangles too.
double Patch::offset_energy(uint32_t v, Vec2 p, double offset) const {
    double energy = 0;
    const auto add = [&](const Spoke& a, const Spoke& b, bool second) {
        const SpokePair s(a, b, uv);
        const Lanes norm = 0.5 * s.doubled_norm(p), d = s.doubled_area(p) / (2 * s.area);
        const Lanes x = lifted(d, sqrt(d * d + offset * offset), offset);
        const Lanes term = norm * (1 + 1 / (x * x));
        energy += term[0];
        if (second)
            energy += term[1];
    };
    for_pairs(v, add);
    return energy;
}

/// Gradient and Gauss-Newton approximation of the Hessian of offset_energy at v, and the energy.
Patch::Quadratic Patch::offset_derivatives(uint32_t v, double offset, double& energy) const {
    Quadratic h;
    energy = 0;
    const Vec2 p = uv[v];
    const auto add = [&](const Spoke& a, const Spoke& b, bool second) {
        const SpokePair s(a, b, uv);
        const Lanes norm = 0.5 * s.doubled_norm(p), d = s.doubled_area(p) / (2 * s.area);
        const Lanes root = sqrt(d * d + offset * offset), x = lifted(d, root, offset);
        const Lanes inverse = 1 / x, slope = x / root, half_slope = 0.5 * slope / s.area;
        const Lanes dn_x = (p.x - s.rx) * s.cot_q + (p.x - s.qx) * s.cot_r;
        const Lanes dn_y = (p.y - s.ry) * s.cot_q + (p.y - s.qy) * s.cot_r;
        const Lanes dx_x = (s.qy - s.ry) * half_slope, dx_y = (s.rx - s.qx) * half_slope;
        const Lanes k1 = 1 + inverse * inverse, k2 = -2 * inverse * inverse * inverse;
        const Lanes k3 = 6 * norm * inverse * inverse * inverse * inverse;
        const Lanes k2_norm = k2 * norm, m = (s.cot_q + s.cot_r) * k1;
        const Lanes nx = dn_x * k1, ny = dn_y * k1, gx = dx_x * k2_norm, gy = dx_y * k2_norm;
        const Lanes xx = m + k3 * dx_x * dx_x, yy = m + k3 * dx_y * dx_y, xy = k3 * dx_x * dx_y;
        const Lanes term = norm * (1 + 1 / (x * x));
        for (int l = 0; l <= int(second); ++l) {
            h.g = h.g + Vec2{nx[l], ny[l]} + Vec2{gx[l], gy[l]};
            h.xx += xx[l];
            h.yy += yy[l];
            h.xy += xy[l];
            energy += term[l];
        }
    };
    for_pairs(v, add);
    return h;
}

/// One damped step at v.
void Patch::untangle_vertex(uint32_t v, double offset) {
    constexpr double k_min_curvature = 1e-6;
    constexpr int k_halvings = 8;
    double before = 0;
    Vec2 direction;
    if (!descent_direction(offset_derivatives(v, offset, before), k_min_curvature, direction))
        return;
    const Vec2 p = uv[v];
    double step = 1;
    for (int i = 0; i < k_halvings; ++i, step *= 0.5)
        if (offset_energy(v, p + direction * step, offset) < before) {
            uv[v] = p + direction * step;
            return;
        }
}

/// Adds the corners of flipped triangles and guards, and the neighbours of these, to the vertices
/// that move. Returns the number of flipped ones.
uint32_t Patch::add_flipped(MovingVertices& moving) const {
    const auto add = [&](uint32_t v) {
        if (!moving.has[v] && !pinned[v]) {
            moving.has[v] = 1;
            moving.list.push_back(v);
        }
    };
    uint32_t count = 0;
    const auto add_around = [&](const uint32_t* corner) {
        ++count;
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t hub = corner[k];
            add(hub);
            for (uint32_t i = star_begin_[hub]; i < star_begin_[hub + 1]; ++i) {
                add(star_[i].q);
                add(star_[i].r);
            }
        }
    };
    for (uint32_t t = 0; t < frame_.size(); ++t)
        if (is_flipped(t))
            add_around(&corner_[3 * t]);
    for (const Guard& guard : guards_)
        if (is_flipped(guard))
            add_around(guard.corner);
    return count;
}

void Patch::untangle(int rounds) {
    constexpr double k_first_offset = 0.3, k_offset_factor = 0.6;
    constexpr int k_sweeps = 3;
    // More flipped triangles than this that do not get fewer in the first round do not later on.
    constexpr uint32_t k_many = 64;
    build_stars();
    MovingVertices moving;
    moving.has.assign(uv.size(), 0);
    double offset = k_first_offset;
    uint32_t flipped_before = 0;
    for (int round = 0; round < rounds; ++round, offset *= k_offset_factor) {
        const uint32_t flipped_now = add_flipped(moving);
        if (flipped_now == 0 || (round == 1 && flipped_now > std::max(k_many, flipped_before)))
            return;
        flipped_before = flipped_now;
        for (int sweep = 0; sweep < k_sweeps; ++sweep)
            for (uint32_t v : moving.list)
                untangle_vertex(v, offset);
    }
}

} // namespace tessora::atlas
