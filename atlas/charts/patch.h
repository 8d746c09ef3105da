/// A triangulated piece of a chart, copied into flat arrays with its own vertex numbers, and the
/// solvers that flatten it.
///
/// Distortion is the symmetric Dirichlet energy sum A (|J|^2 + |J^-1|^2) (Smith and Schaefer,
/// "Bijective parameterization with free boundaries", 2015), where J is the Jacobian of a
/// triangle's map to the plane and A its area in space. It is smallest for an isometry, its second
/// term is the L2 stretch of Sander, Snyder, Gortler and Hoppe ("Texture mapping progressive
/// meshes", 2001), and it tends to infinity where a triangle collapses.
#pragma once

#include "atlas/geometry/lanes.h"
#include "atlas/geometry/surface.h"

#include <functional>

namespace tessora::atlas {

/// The sums over triangles that determine a chart's L2 stretch; sums of parts can be added.
/// s1 >= s2 are the singular values of J, A is the area in space.
struct StretchSums {
    double area = 0;      ///< sum A
    double inverse = 0;   ///< sum A (s1^-2 + s2^-2) / 2
    double flat_area = 0; ///< sum A s1 s2
    double excess = 0;    ///< what `inverse` grows by when every quad takes its worse diagonal
    uint32_t flipped = 0; ///< number of triangles without positive area

    void add(const StretchSums& o) {
        area += o.area;
        inverse += o.inverse;
        flat_area += o.flat_area;
        excess += o.excess;
        flipped += o.flipped;
    }
    /// Takes back what add() added, up to rounding.
    void remove(const StretchSums& o) {
        area -= o.area;
        inverse -= o.inverse;
        flat_area -= o.flat_area;
        excess -= o.excess;
        flipped -= o.flipped;
    }
    /// L2 stretch, 1 for an isometry up to scale; meaningless if a triangle is flipped.
    double l2() const { return std::sqrt(inverse * flat_area) / area; }
    /// The same with every convex quad divided along the diagonal that stretches it more. This is
    /// what the caller's limit holds for.
    double worst_l2() const { return std::sqrt((inverse + excess) * flat_area) / area; }
};

/// The sums of a single triangle with the UV corners a, b, c.
/// A guard whose area shrinks below this factor counts as flipped.
constexpr double k_min_guard_determinant = 1e-6;

StretchSums triangle_stretch(const Frame& frame, Vec2 a, Vec2 b, Vec2 c);

class Patch {
public:
    void clear();
    /// Appends a vertex and returns its number. A pinned vertex is not moved by any solver.
    uint32_t add_vertex(Vec2 uv, bool pinned);
    void add_face(const Frame& frame, uint32_t a, uint32_t b, uint32_t c);
    /// Makes room for that much at once.
    void reserve(size_t vertices, size_t faces);

    /// As-rigid-as-possible flattening (Liu, Zhang, Xu, Gotsman and Gortler, "A local/global
    /// approach to mesh parameterization", 2008): `steps` alternations of per-triangle rotations
    /// and a global solve. Accepts any start and may flip triangles. False if the linear system
    /// cannot be factored.
    bool arap(int steps) {
        return arap(steps, [] { return true; });
    }
    /// The same, with a call after every step, which may move vertices; false ends it.
    bool arap(int steps, const std::function<bool()>& after_step);
    /// Newton steps on the symmetric Dirichlet energy, one vertex after another. Never flips a
    /// triangle and never raises the energy; vertices of flipped triangles are not moved. Returns
    /// the drop of the energy in the last sweep, relative to the smallest possible energy.
    double relax(int sweeps);
    /// Tries to turn flipped triangles over, moving only vertices near them: minimises an energy
    /// whose determinant is kept positive by an offset that shrinks from round to round (Garanzha,
    /// Kaporin, Kudryavtseva, Protais, Ray and Sokolov, "Foldover-free maps in 50 lines of code",
    /// 2021).
    void untangle(int rounds);
    /// Tutte's embedding: the outer loop, given in order, on a circle and every other vertex at the
    /// mean of its neighbours (Tutte, "How to draw a graph", 1963; Floater, "Parametrization and
    /// smooth approximation of surface triangulations", 1997). No triangle flips if the patch is a
    /// disk. Ignores pins. False if the linear system cannot be factored.
    bool tutte(const std::vector<uint32_t>& loop);
    /// Adds a triangle that only has to stay positive: it has no stretch, and energy only once it
    /// has less than half its area.
    void add_guard(const Frame& frame, uint32_t a, uint32_t b, uint32_t c);
    StretchSums stretch() const;
    uint32_t flipped() const; ///< number of triangles and guards without positive area
    /// Appends the corners of those triangles and guards.
    void add_flipped_corners(std::vector<uint32_t>& corners) const;

    std::vector<Vec2> uv;
    std::vector<uint8_t> pinned;

private:
    /// Cotangents at a triangle's corners and its area in space.
    struct FaceShape {
        double cot[3], area;
    };
    /// A triangle seen from one of its corners, p; q and r are the other two, in order.
    struct Spoke {
        uint32_t q, r;
        double cot_p, cot_q, cot_r, area;
    };
    /// Two spokes of a vertex side by side, with the coordinates at their ends.
    struct SpokePair {
        Lanes qx, qy, rx, ry, cot_p, cot_q, cot_r, area;

        SpokePair(const Spoke& a, const Spoke& b, const std::vector<Vec2>& uv)
            : qx{uv[a.q].x, uv[b.q].x}, qy{uv[a.q].y, uv[b.q].y}, rx{uv[a.r].x, uv[b.r].x},
              ry{uv[a.r].y, uv[b.r].y}, cot_p{a.cot_p, b.cot_p}, cot_q{a.cot_q, b.cot_q},
              cot_r{a.cot_r, b.cot_r}, area{a.area, b.area} {}
        /// Twice the triangles' areas in the plane with the hub at p.
        Lanes doubled_area(Vec2 p) const {
            return (qx - p.x) * (ry - p.y) - (qy - p.y) * (rx - p.x);
        }
        /// Twice A |J|^2 with the hub at p.
        Lanes doubled_norm(Vec2 p) const {
            const Lanes qrx = rx - qx, qry = ry - qy, prx = p.x - rx, pry = p.y - ry;
            const Lanes pqx = p.x - qx, pqy = p.y - qy;
            return cot_p * (qrx * qrx + qry * qry) + cot_q * (prx * prx + pry * pry) +
                   cot_r * (pqx * pqx + pqy * pqy);
        }
    };
    /// Gradient and Hessian of an energy at one vertex.
    struct Quadratic {
        Vec2 g;
        double xx = 0, xy = 0, yy = 0;
    };
    /// A guard seen from one of its corners.
    struct GuardSpoke {
        Spoke spoke;
        double least; ///< twice the area that relax keeps
    };
    struct Guard {
        uint32_t corner[3];
        FaceShape shape;
    };
    /// The vertices that untangle moves, in the order in which it moves them.
    struct MovingVertices {
        std::vector<uint32_t> list;
        std::vector<uint8_t> has; ///< per vertex
    };
    /// Calls add(a, b, second) for the spokes of v and then for those of its guards, two at a time
    /// in order; where a last one stands alone, it is both a and b and `second` is false.
    template <class Add>
    void for_pairs(uint32_t v, Add add) const {
        const Spoke* const spokes = star_.data() + star_begin_[v];
        const uint32_t count = star_begin_[v + 1] - star_begin_[v];
        for (uint32_t i = 0; i < count; i += 2)
            add(spokes[i], spokes[i + (i + 1 < count)], i + 1 < count);
        const uint32_t guards = guard_count(v);
        for (uint32_t i = 0; i < guards; i += 2) {
            const GuardSpoke* const g = &guard_star_[guard_begin_[v] + i];
            add(g[0].spoke, g[i + 1 < guards].spoke, i + 1 < guards);
        }
    }
    void build_stars();
    void set_guard_floors();
    static FaceShape shape_of(const Frame& frame);
    double star_energy(uint32_t v, Vec2 p) const;
    void add_barrier(const Spoke& s, Vec2 p, Quadratic& q, double& energy) const;
    bool derivatives(uint32_t v, Quadratic& q, double& energy) const;
    static bool descent_direction(Quadratic q, double min_curvature, Vec2& direction);
    double longest_step(uint32_t v, Vec2 direction) const;
    double relax_vertex(uint32_t v);
    void activate_star(uint32_t v);
    bool is_flipped(uint32_t t) const;
    bool is_flipped(const Guard& guard) const;
    uint32_t guard_count(uint32_t v) const {
        return guards_.empty() ? 0 : guard_begin_[v + 1] - guard_begin_[v];
    }
    double offset_energy(uint32_t v, Vec2 p, double offset) const;
    Quadratic offset_derivatives(uint32_t v, double offset, double& energy) const;
    uint32_t add_flipped(MovingVertices& moving) const;
    void untangle_vertex(uint32_t v, double offset);

    std::vector<uint32_t> corner_;     ///< 3 per triangle: vertex
    std::vector<Frame> frame_;         ///< per triangle
    std::vector<uint32_t> star_begin_; ///< per vertex: where its spokes begin in star_
    std::vector<Spoke> star_; ///< shapes and corners in the order in which relax reads them
    std::vector<Guard> guards_;
    std::vector<uint32_t> guard_begin_; ///< per vertex, into guard_star_; empty without guards
    std::vector<GuardSpoke> guard_star_;
    std::vector<uint8_t> active_; ///< per vertex: its star has changed since relax last moved it
};

} // namespace tessora::atlas
