/// The charts under construction: which triangle is in which chart, which half-edges are glued, and
/// where every UV vertex lies.
///
/// A chart is a set of triangles plus a set of glued half-edge pairs. A UV vertex ("node") is an
/// equivalence class of corners, joined by walking around a mesh vertex across glued half-edges;
/// its number is that of one of its corners. A half-edge that is not glued is border, even if the
/// triangles on both sides are in the same chart (a slit). So every chart is an oriented manifold
/// by construction, whatever the input was, and no two corners are ever joined across a cut.
#pragma once

#include "atlas/charts/patch.h"
#include "atlas/charts/polygons.h"
#include "atlas/geometry/border.h"
#include "atlas/geometry/surface.h"

namespace tessora::atlas {

struct Chart {
    std::vector<uint32_t> faces;
    std::vector<uint32_t> border;   ///< half-edges, loop by loop, each with the inside on its left
    std::vector<uint32_t> loop_end; ///< per loop: one past its last entry in `border`
    StretchSums stretch;
    double border_length = 0; ///< in space
    bool alive = true;        ///< false once it was merged into another chart
};

class ChartSet {
public:
    explicit ChartSet(const Surface& surface);

    const Surface& surface;
    std::vector<uint8_t> glued;  ///< per half-edge: 1 if it is glued to its mate
    std::vector<uint32_t> node;  ///< per corner: number of its node
    std::vector<Vec2> uv;        ///< per node
    std::vector<uint32_t> chart; ///< per triangle: number of its chart, k_none before it has one
    std::vector<Chart> charts;
    Polygons* polygons = nullptr; ///< of the surface, each in one chart; null if they do not matter
    /// Per node: its place in a list of nodes, for whoever makes such a list. Values of earlier
    /// lists remain, so a place counts only if the list has the node there. Threads may share it as
    /// long as they work on different charts.
    mutable std::vector<uint32_t> place;

    /// Glues or unglues h and its mate; nodes are not updated. h must have a mate.
    void set_glued(uint32_t h, bool value) {
        glued[h] = value;
        glued[surface.mate[h]] = value;
    }
    /// The chart of a triangle that is perhaps in neither of the two charts at hand: another thread
    /// may be moving it, with move_to_chart(), between two others.
    uint32_t chart_beside(uint32_t t) const { return __atomic_load_n(&chart[t], __ATOMIC_RELAXED); }
    void move_to_chart(uint32_t t, uint32_t to) {
        __atomic_store_n(&chart[t], to, __ATOMIC_RELAXED);
    }
    /// The half-edge after h on the border loop of h.
    uint32_t next_border(uint32_t h) const {
        uint32_t x = next_corner(h);
        while (glued[x])
            x = next_corner(surface.mate[x]);
        return x;
    }
    /// Calls visit(corner) for every corner of the node that corner c belongs to.
    template <class Visit>
    void for_node(uint32_t c, Visit visit) const {
        uint32_t at = c;
        do {
            visit(at);
            const uint32_t in = previous_corner(at);
            if (!glued[in]) { // border: visit the remaining corners, on the other side of c
                for (at = c; glued[at]; visit(at))
                    at = next_corner(surface.mate[at]);
                return;
            }
            at = surface.mate[in];
        } while (at != c);
    }
    /// Renumbers the node of corner c to c.
    void rename_node(uint32_t c) {
        for_node(c, [&](uint32_t at) { node[at] = c; });
    }
    /// Recomputes the nodes of the given triangles from the glued half-edges.
    void rebuild_nodes(const std::vector<uint32_t>& faces);
    /// Recomputes a chart's border, border length and stretch sums from its triangles.
    void refresh(Chart& c) const;
    /// Recomputes a chart's border and border length.
    void trace_border(Chart& c) const;
    /// Makes the border of chart `id` of those of the given half-edges that are on it: they must
    /// have at least one of every loop.
    void trace_border(uint32_t id, const std::vector<uint32_t>& candidates, Chart& c) const;
    StretchSums measure(const std::vector<uint32_t>& faces) const;
    /// A triangle's share of its chart's sums. The triangle that stands for a polygon answers for
    /// the polygon's corner triangles as well: it adds those that are flipped, and the excess of a
    /// convex quad's other diagonal.
    StretchSums measure_face(uint32_t t) const {
        StretchSums sums = triangle_stretch(surface.frame[t], uv[node[3 * t]], uv[node[3 * t + 1]],
                                            uv[node[3 * t + 2]]);
        if (polygons != nullptr && !polygons->empty() && polygons->lead(t) == t)
            add_polygon(t, sums);
        return sums;
    }
    /// The sums of a chart measured on the original triangles instead of their frames, which fatten
    /// slivers; triangles without area are left out.
    StretchSums true_stretch(const Chart& c) const;
    /// The UV polygons of a chart's border.
    void outline(const Chart& c, Outline& outline) const;
    /// Appends a chart and returns its number.
    uint32_t add_chart(Chart&& c);

private:
    void add_polygon(uint32_t lead, StretchSums& sums) const;
    void trace_loop(uint32_t h, Chart& c) const;
    static void clear_border(Chart& c);

    mutable std::vector<uint8_t>
        traced_; ///< per half-edge: workspace of trace_border; 0 between calls
};

/// The limit on L2 stretch for the option max_stretch = s: 1/(1-s), where s is the share of the
/// linear sampling rate that may be lost.
double stretch_limit(float max_stretch);

} // namespace tessora::atlas
