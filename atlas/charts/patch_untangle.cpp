// Turning flipped triangles over, for Patch.
#include "atlas/charts/patch.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// A positive, increasing stand-in for the determinant d: close to d where d is well above the
/// offset, small but never 0 below it.
double lifted(double d, double offset) {
    const double root = std::sqrt(d * d + offset * offset);
    return d >= 0 ? 0.5 * (d + root) : 0.5 * offset * offset / (root - d);
}

} // namespace

/// The symmetric Dirichlet energy around v with v moved to p and every determinant lifted: finite
/// for flipped triangles too.
double Patch::offset_energy(uint32_t v, Vec2 p, double offset) const {
    double energy = 0;
    const auto add = [&](const Spoke& s) {
        const Vec2 q = uv[s.q], r = uv[s.r];
        const double norm = 0.5 * (s.cot_p * dot(r - q, r - q) + s.cot_q * dot(p - r, p - r) +
                                   s.cot_r * dot(p - q, p - q));
        const double x = lifted(doubled_area(p, q, r) / (2 * s.area), offset);
        energy += norm * (1 + 1 / (x * x));
    };
    for (uint32_t i = star_begin_[v]; i < star_begin_[v + 1]; ++i)
        add(star_[i]);
    for (uint32_t i = 0; i < guard_count(v); ++i)
        add(guard_star_[guard_begin_[v] + i].spoke);
    return energy;
}

/// Gradient and Gauss-Newton approximation of the Hessian of offset_energy at v.
Patch::Quadratic Patch::offset_derivatives(uint32_t v, double offset) const {
    Quadratic h;
    const Vec2 p = uv[v];
    const auto add = [&](const Spoke& s) {
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
        h.g = h.g + dn * k1 + dx * (k2 * norm);
        h.xx += (s.cot_q + s.cot_r) * k1 + k3 * dx.x * dx.x;
        h.yy += (s.cot_q + s.cot_r) * k1 + k3 * dx.y * dx.y;
        h.xy += k3 * dx.x * dx.y;
    };
    for (uint32_t i = star_begin_[v]; i < star_begin_[v + 1]; ++i)
        add(star_[i]);
    for (uint32_t i = 0; i < guard_count(v); ++i)
        add(guard_star_[guard_begin_[v] + i].spoke);
    return h;
}

/// One damped step at v.
void Patch::untangle_vertex(uint32_t v, double offset) {
    constexpr double k_min_curvature = 1e-6;
    constexpr int k_halvings = 8;
    Vec2 direction;
    if (!descent_direction(offset_derivatives(v, offset), k_min_curvature, direction))
        return;
    const Vec2 p = uv[v];
    const double before = offset_energy(v, p, offset);
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
    for (uint32_t t = 0; t < shape_.size(); ++t)
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
