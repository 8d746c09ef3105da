#include "atlas/charts/patch.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {
namespace {

/// A triangle whose area shrinks below this factor counts as flipped.
constexpr double k_min_determinant = 1e-9;

/// A guard keeps this share of its area while vertices move, so that rounding cannot turn it over.
constexpr double k_min_guard_area = 1e-2;

/// Guards have energy below this share of their area. It keeps vertices from being stopped dead at
/// the least area, where no single vertex of a polygon can move on.
constexpr double k_small_guard = 0.5;

/// Energy of a guard per area in space, with its first two derivatives by x: its area in the
/// texture over that in space.
struct Barrier {
    double value, slope, curvature;
};

Barrier barrier(double x) {
    const double inverse = 1 / x, excess = k_small_guard * inverse - 1;
    const double decline = k_small_guard * inverse * inverse;
    return {excess * excess, -2 * excess * decline,
            2 * decline * decline + 4 * excess * decline * inverse};
}

} // namespace

StretchSums triangle_stretch(const Frame& f, Vec2 a, Vec2 b, Vec2 c) {
    StretchSums sums;
    sums.area = f.area();
    const double inverse_x = 1 / f.x1, inverse_y = 1 / f.y2;
    const Vec2 s = (b - a) * inverse_x;
    const Vec2 t = ((c - a) - s * f.x2) * inverse_y;
    const double det = cross(s, t);
    if (!(det > k_min_determinant)) {
        sums.flipped = 1;
        return sums;
    }
    sums.inverse = sums.area * 0.5 * (dot(s, s) + dot(t, t)) / (det * det);
    sums.flat_area = sums.area * det;
    return sums;
}

void Patch::clear() {
    uv.clear();
    pinned.clear();
    corner_.clear();
    frame_.clear();
    star_begin_.clear();
    guards_.clear();
    guard_begin_.clear();
}

void Patch::reserve(size_t vertices, size_t faces) {
    uv.reserve(vertices);
    pinned.reserve(vertices);
    corner_.reserve(3 * faces);
    frame_.reserve(faces);
}

uint32_t Patch::add_vertex(Vec2 p, bool pin) {
    uv.push_back(p);
    pinned.push_back(pin);
    return uint32_t(uv.size() - 1);
}

void Patch::add_face(const Frame& f, uint32_t a, uint32_t b, uint32_t c) {
    corner_.insert(corner_.end(), {a, b, c});
    frame_.push_back(f);
}

void Patch::add_guard(const Frame& f, uint32_t a, uint32_t b, uint32_t c) {
    guards_.push_back({{a, b, c}, shape_of(f)});
}

Patch::FaceShape Patch::shape_of(const Frame& f) {
    return {
        {f.x2 / f.y2, (f.x1 - f.x2) / f.y2, (f.x2 * (f.x2 - f.x1) + f.y2 * f.y2) / (f.x1 * f.y2)},
        f.area()};
}

void Patch::build_stars() {
    if (!star_begin_.empty())
        return;
    star_begin_.assign(uv.size() + 1, 0);
    for (uint32_t v : corner_)
        ++star_begin_[v + 1];
    for (size_t v = 0; v < uv.size(); ++v)
        star_begin_[v + 1] += star_begin_[v];
    star_.resize(corner_.size());
    std::vector<uint32_t> at(star_begin_.begin(), star_begin_.end() - 1);
    for (uint32_t t = 0; t < frame_.size(); ++t) {
        const uint32_t* v = &corner_[3 * t];
        const FaceShape s = shape_of(frame_[t]);
        const double* cot = s.cot;
        star_[at[v[0]]++] = {v[1], v[2], cot[0], cot[1], cot[2], s.area};
        star_[at[v[1]]++] = {v[2], v[0], cot[1], cot[2], cot[0], s.area};
        star_[at[v[2]]++] = {v[0], v[1], cot[2], cot[0], cot[1], s.area};
    }
    if (guards_.empty())
        return;
    guard_begin_.assign(uv.size() + 1, 0);
    for (const Guard& guard : guards_)
        for (uint32_t v : guard.corner)
            ++guard_begin_[v + 1];
    for (size_t v = 0; v < uv.size(); ++v)
        guard_begin_[v + 1] += guard_begin_[v];
    guard_star_.resize(3 * guards_.size());
    at.assign(guard_begin_.begin(), guard_begin_.end() - 1);
    for (const Guard& guard : guards_)
        for (uint32_t k = 0; k < 3; ++k) {
            const FaceShape& s = guard.shape;
            const uint32_t k1 = (k + 1) % 3, k2 = (k + 2) % 3;
            guard_star_[at[guard.corner[k]]++] = {
                {guard.corner[k1], guard.corner[k2], s.cot[k], s.cot[k1], s.cot[k2], s.area}, 0};
        }
}

/// A guard that is smaller than the floor already may stay so, but must not shrink further.
void Patch::set_guard_floors() {
    for (uint32_t v = 0; v < uv.size() && !guards_.empty(); ++v)
        for (uint32_t i = guard_begin_[v]; i < guard_begin_[v + 1]; ++i) {
            GuardSpoke& g = guard_star_[i];
            const double now = doubled_area(uv[v], uv[g.spoke.q], uv[g.spoke.r]);
            const double floor = std::min(k_min_guard_area * 2 * g.spoke.area, now);
            g.least = std::max(2 * k_min_guard_determinant * g.spoke.area, floor);
        }
}

/// Energy of the triangles around v with v moved to p; infinite if one of them is flipped.
double Patch::star_energy(uint32_t v, Vec2 p) const {
    double energy = 0;
    if (!guards_.empty())
        for (uint32_t i = guard_begin_[v]; i < guard_begin_[v + 1]; ++i) {
            const GuardSpoke& g = guard_star_[i];
            const double doubled = doubled_area(p, uv[g.spoke.q], uv[g.spoke.r]);
            if (!(doubled >= g.least))
                return std::numeric_limits<double>::infinity();
            const double x = 0.5 * doubled * (1 / g.spoke.area);
            if (x < k_small_guard)
                energy += g.spoke.area * barrier(x).value;
        }
    const Spoke* const spokes = star_.data() + star_begin_[v];
    const uint32_t count = star_begin_[v + 1] - star_begin_[v];
    for (uint32_t i = 0; i < count; i += 2) {
        const bool second = i + 1 < count;
        const SpokePair s(spokes[i], spokes[i + second], uv);
        const Lanes doubled = s.doubled_area(p), least = 2 * k_min_determinant * s.area;
        if (!(doubled[0] > least[0] && doubled[1] > least[1]))
            return std::numeric_limits<double>::infinity();
        const Lanes inverse = 2 * s.area / doubled;
        const Lanes term = 0.5 * s.doubled_norm(p) * (1 + inverse * inverse);
        energy += term[0];
        if (second)
            energy += term[1];
    }
    return energy;
}

/// Adds a guard's energy with its corner at p, and the derivatives.
void Patch::add_barrier(const Spoke& s, Vec2 p, Quadratic& h, double& energy) const {
    const Vec2 q = uv[s.q], r = uv[s.r];
    const double x = 0.5 * doubled_area(p, q, r) * (1 / s.area);
    if (!(x > 0 && x < k_small_guard))
        return;
    const Barrier b = barrier(x);
    const Vec2 dx = Vec2{q.y - r.y, r.x - q.x} * (0.5 * (1 / s.area));
    h.g = h.g + dx * (s.area * b.slope);
    h.xx += s.area * b.curvature * dx.x * dx.x;
    h.yy += s.area * b.curvature * dx.y * dx.y;
    h.xy += s.area * b.curvature * dx.x * dx.y;
    energy += s.area * b.value;
}

/// Value, gradient and Hessian of star_energy at v. False if a triangle around it is flipped.
bool Patch::derivatives(uint32_t v, Quadratic& h, double& energy) const {
    h = {};
    energy = 0;
    const Vec2 p = uv[v];
    const Spoke* const spokes = star_.data() + star_begin_[v];
    const uint32_t count = star_begin_[v + 1] - star_begin_[v];
    for (uint32_t i = 0; i < count; i += 2) {
        const bool second = i + 1 < count;
        const SpokePair s(spokes[i], spokes[i + second], uv);
        const Lanes doubled = s.doubled_area(p), least = 2 * k_min_determinant * s.area;
        if (!(doubled[0] > least[0] && doubled[1] > least[1]))
            return false;
        const Lanes norm = 0.5 * s.doubled_norm(p); // A |J|^2
        const Lanes dn_x = (p.x - s.rx) * s.cot_q + (p.x - s.qx) * s.cot_r;
        const Lanes dn_y = (p.y - s.ry) * s.cot_q + (p.y - s.qy) * s.cot_r;
        const Lanes e = 2 * s.area / doubled, e2 = e * e; // 1/det
        const Lanes half_inverse = 0.5 * (1 / s.area);
        const Lanes dd_x = (s.qy - s.ry) * half_inverse, dd_y = (s.rx - s.qx) * half_inverse;
        const Lanes k1 = 1 + e2, k2 = -2 * e2 * e, k3 = 6 * norm * e2 * e2;
        const Lanes k2_norm = k2 * norm, m = (s.cot_q + s.cot_r) * k1;
        const Lanes nx = dn_x * k1, ny = dn_y * k1, dx = dd_x * k2_norm, dy = dd_y * k2_norm;
        const Lanes xx = m + 2 * k2 * dn_x * dd_x + k3 * dd_x * dd_x;
        const Lanes yy = m + 2 * k2 * dn_y * dd_y + k3 * dd_y * dd_y;
        const Lanes xy = k2 * (dn_x * dd_y + dn_y * dd_x) + k3 * dd_x * dd_y;
        const Lanes term = norm * k1;
        for (int l = 0; l <= int(second); ++l) {
            h.g = h.g + Vec2{nx[l], ny[l]} + Vec2{dx[l], dy[l]};
            h.xx += xx[l];
            h.yy += yy[l];
            h.xy += xy[l];
            energy += term[l];
        }
    }
    for (uint32_t i = 0; i < guard_count(v); ++i)
        add_barrier(guard_star_[guard_begin_[v] + i].spoke, p, h, energy);
    return true;
}

/// The largest factor <= 1 for `direction` with which every triangle around v keeps at least a
/// tenth of its area.
double Patch::longest_step(uint32_t v, Vec2 direction) const {
    double step = 1;
    const Vec2 p = uv[v];
    for (uint32_t i = star_begin_[v]; i < star_begin_[v + 1]; ++i) {
        const Vec2 q = uv[star_[i].q], r = uv[star_[i].r];
        const double now = doubled_area(p, q, r);
        const double change = direction.x * (q.y - r.y) + direction.y * (r.x - q.x);
        if (change * step < -0.9 * now)
            step = -0.9 * now / change;
    }
    if (!guards_.empty())
        for (uint32_t i = guard_begin_[v]; i < guard_begin_[v + 1]; ++i) {
            const GuardSpoke& g = guard_star_[i];
            const Vec2 q = uv[g.spoke.q], r = uv[g.spoke.r];
            const double spare = doubled_area(p, q, r) - g.least;
            const double change = direction.x * (q.y - r.y) + direction.y * (r.x - q.x);
            if (change * step < -0.9 * spare)
                step = std::max(0.0, -0.9 * spare / change);
        }
    return step;
}

/// Newton's direction. The Hessian is shifted first so that its smaller eigenvalue is at least
/// `min_curvature` times the larger magnitude, which makes it a descent direction. False if the
/// Hessian vanishes.
bool Patch::descent_direction(Quadratic h, double min_curvature, Vec2& direction) {
    const double mean = 0.5 * (h.xx + h.yy);
    const double half = 0.5 * (h.xx - h.yy);
    const double radius = std::sqrt(half * half + h.xy * h.xy);
    const double floor = min_curvature * (std::fabs(mean) + radius);
    if (mean - radius < floor) {
        const double shift = floor - (mean - radius);
        h.xx += shift;
        h.yy += shift;
    }
    const double det = h.xx * h.yy - h.xy * h.xy;
    if (!(det > 0))
        return false;
    direction = Vec2{h.xy * h.g.y - h.yy * h.g.x, h.xy * h.g.x - h.xx * h.g.y} * (1 / det);
    return true;
}

/// One damped Newton step at a vertex. Returns the energy saved.
double Patch::relax_vertex(uint32_t v) {
    constexpr double k_min_curvature = 1e-2, k_min_gain = 1e-12, k_backtrack = 0.4;
    constexpr int k_tries = 6;
    Quadratic h;
    double energy;
    Vec2 direction;
    if (!derivatives(v, h, energy) || !descent_direction(h, k_min_curvature, direction))
        return 0;
    if (!(-dot(direction, h.g) > k_min_gain * energy))
        return 0;
    double step = 1;
    for (int i = 0; i < k_tries; ++i, step *= k_backtrack) {
        const Vec2 p = uv[v] + direction * step;
        const double after = star_energy(v, p);
        if (after < energy) {
            uv[v] = p;
            activate_star(v);
            return energy - after;
        }
        if (i == 0)
            step = longest_step(v, direction) / k_backtrack;
    }
    return 0;
}

void Patch::activate_star(uint32_t v) {
    active_[v] = 1;
    for (uint32_t i = star_begin_[v]; i < star_begin_[v + 1]; ++i)
        active_[star_[i].q] = active_[star_[i].r] = 1;
}

double Patch::relax(int sweeps) {
    build_stars();
    set_guard_floors();
    double saved = 0, energy = 0;
    for (const Frame& frame : frame_)
        energy += 4 * frame.area(); // the energy of an isometry
    active_.assign(uv.size(), 1);
    for (int i = 0; i < sweeps; ++i) {
        saved = 0;
        for (uint32_t v = 0; v < uv.size(); ++v) {
            if (pinned[v] || !active_[v])
                continue;
            active_[v] = 0;
            saved += relax_vertex(v);
        }
        if (saved < 1e-6 * energy)
            break;
    }
    return saved / energy;
}

StretchSums Patch::stretch() const {
    StretchSums sums;
    for (uint32_t t = 0; t < frame_.size(); ++t) {
        const Vec2 a = uv[corner_[3 * t]], b = uv[corner_[3 * t + 1]], c = uv[corner_[3 * t + 2]];
        const FaceShape shape = shape_of(frame_[t]);
        sums.area += shape.area;
        const double doubled = doubled_area(a, b, c);
        if (!(doubled > 2 * k_min_determinant * shape.area)) {
            ++sums.flipped;
            continue;
        }
        const double norm = shape.cot[0] * dot(c - b, c - b) + shape.cot[1] * dot(a - c, a - c) +
                            shape.cot[2] * dot(b - a, b - a);
        const double inverse = 2 * shape.area / doubled;
        sums.inverse += 0.25 * norm * inverse * inverse;
        sums.flat_area += 0.5 * doubled;
    }
    for (const Guard& guard : guards_)
        sums.flipped += is_flipped(guard);
    return sums;
}

bool Patch::is_flipped(uint32_t t) const {
    const uint32_t* v = &corner_[3 * t];
    const double doubled = doubled_area(uv[v[0]], uv[v[1]], uv[v[2]]);
    return !(doubled > 2 * k_min_determinant * frame_[t].area());
}

bool Patch::is_flipped(const Guard& guard) const {
    const uint32_t* v = guard.corner;
    return !(doubled_area(uv[v[0]], uv[v[1]], uv[v[2]]) >
             2 * k_min_guard_determinant * guard.shape.area);
}

uint32_t Patch::flipped() const {
    uint32_t count = 0;
    for (const Guard& guard : guards_)
        count += is_flipped(guard);
    for (uint32_t t = 0; t < frame_.size(); ++t)
        count += is_flipped(t);
    return count;
}

void Patch::add_flipped_corners(std::vector<uint32_t>& corners) const {
    for (const Guard& guard : guards_)
        if (is_flipped(guard))
            corners.insert(corners.end(), guard.corner, guard.corner + 3);
    for (uint32_t t = 0; t < frame_.size(); ++t)
        if (is_flipped(t))
            corners.insert(corners.end(), &corner_[3 * t], &corner_[3 * t] + 3);
}

} // namespace tessora::atlas
