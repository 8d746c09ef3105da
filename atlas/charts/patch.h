/// A piece of a chart, or all of it, copied out for solving: local numbering, flat arrays.
///
/// Distortion is the symmetric Dirichlet energy sum A (|J|^2 + |J^-1|^2) (Smith and Schaefer,
/// "Bijective parameterization with free boundaries", 2015): it is least for an isometry, its
/// second term is the L2 stretch of Sander, Snyder, Gortler and Hoppe ("Texture mapping progressive
/// meshes", 2001), and it is infinite where a triangle flips.
#pragma once

#include "atlas/geometry/surface.h"

namespace tessora::atlas {

/// What decides about a chart's stretch; sums over triangles, so parts can be added up.
struct StretchSums {
    double area = 0;      ///< in space
    double inverse = 0;   ///< sum A (s1^-2 + s2^-2) / 2
    double flat_area = 0; ///< sum A s1 s2
    uint32_t flipped = 0; ///< triangles without positive area

    void add(const StretchSums& o) {
        area += o.area;
        inverse += o.inverse;
        flat_area += o.flat_area;
        flipped += o.flipped;
    }
    void remove(const StretchSums& o) {
        area -= o.area;
        inverse -= o.inverse;
        flat_area -= o.flat_area;
        flipped -= o.flipped;
    }
    /// L2 stretch, 1 for an isometry up to scale; only meaningful without flipped triangles.
    double l2() const { return std::sqrt(inverse * flat_area) / area; }
};

/// One triangle's share.
StretchSums triangle_stretch(const Frame& frame, Vec2 a, Vec2 b, Vec2 c);

class Patch {
public:
    void clear();
    /// Appends a vertex, gives its local number.
    uint32_t add_vertex(Vec2 uv, bool pinned);
    void add_face(const Frame& frame, uint32_t a, uint32_t b, uint32_t c);

    /// Minimises rigidity-weighted deviation from rotations (Liu, Zhang, Xu, Gotsman and Gortler,
    /// "A local/global approach to mesh parameterization", 2008). Needs no valid start, may flip
    /// triangles. False when the linear system cannot be factored.
    bool arap(int steps);
    /// Newton steps vertex by vertex on the symmetric Dirichlet energy. Never flips a triangle and
    /// never raises the energy; vertices next to a flipped triangle stay. Gives the energy's drop
    /// in the last sweep, relative to the energy.
    double relax(int sweeps);
    /// Tries to turn flipped triangles over: descends on an energy whose determinant is kept
    /// positive by a shrinking offset (Garanzha, Kaporin, Kudryavtseva, Protais, Ray and Sokolov,
    /// "Foldover-free maps in 50 lines of code", 2021), around the flipped triangles only.
    void untangle(int rounds);
    /// Places the vertices so that no triangle can flip, provided the outer loop is given in order
    /// and the triangulation is a disk (Tutte, "How to draw a graph", 1963; Floater,
    /// "Parametrization and smooth approximation of surface triangulations", 1997).
    bool tutte(const std::vector<uint32_t>& loop);
    StretchSums stretch() const;
    uint32_t flipped() const;

    std::vector<Vec2> uv;
    std::vector<uint8_t> pinned;

private:
    struct Shape { ///< cotangents at the three corners, the area and its inverse
        double cot[3], area, inverse_area;
    };
    /// A triangle seen from its corner p; q and r are the other two, in order.
    struct Spoke {
        uint32_t q, r;
        double cot_p, cot_q, cot_r, area, inverse_area;
    };
    struct Quadratic { ///< gradient and Hessian at one vertex
        Vec2 g;
        double xx, xy, yy;
    };
    void build_stars();
    double star_energy(uint32_t v, Vec2 p) const;
    bool derivatives(uint32_t v, Quadratic& q, double& energy) const;
    double longest_step(uint32_t v, Vec2 direction) const;
    double relax_vertex(uint32_t v);
    void stir(uint32_t v);
    void untangle_vertex(uint32_t v, double offset);
    double offset_energy(uint32_t v, Vec2 p, double offset) const;
    double total_energy() const;

    std::vector<uint32_t> corner_;
    std::vector<Shape> shape_;
    std::vector<Frame> frame_;
    std::vector<uint32_t> star_begin_; ///< per vertex: where its spokes begin in star_
    std::vector<Spoke> star_;          ///< copies of shape_ and corner_, in the order they are read
    std::vector<uint8_t> stirred_;     ///< per vertex: worth another look while relaxing
};

} // namespace tessora::atlas
