/// The atlas in the making: which triangle is in which chart, which half-edges are glued, and where
/// every UV vertex lies.
///
/// A chart is a set of triangles plus a set of *glued* half-edge pairs. A UV vertex ("node") is a
/// class of corners joined by walking around a vertex over glued half-edges; it carries the number
/// of one of its corners. A half-edge that is not glued is a border, even when both of its sides
/// are in the same chart (a slit). So every chart is an oriented manifold by construction, whatever
/// the input was, and no two corners are ever joined across a cut.
#pragma once

#include "atlas/charts/patch.h"
#include "atlas/geometry/border.h"
#include "atlas/geometry/surface.h"

namespace tessora::atlas {

struct Chart {
    std::vector<uint32_t> faces;
    std::vector<uint32_t> border;   ///< half-edges, loop by loop, each with the inside on its left
    std::vector<uint32_t> loop_end; ///< per loop: one past its last entry in `border`
    StretchSums stretch;
    double border_length = 0; ///< in space
    bool alive = true;
};

class ChartSet {
public:
    explicit ChartSet(const Surface& surface);

    const Surface& surface;
    std::vector<uint8_t> glued;  ///< per half-edge
    std::vector<uint32_t> node;  ///< per corner
    std::vector<Vec2> uv;        ///< per node
    std::vector<uint32_t> chart; ///< per triangle; k_none while in none
    std::vector<Chart> charts;

    bool glue_able(uint32_t h) const { return surface.mate[h] != k_none; }
    void set_glued(uint32_t h, bool value) {
        glued[h] = value;
        glued[surface.mate[h]] = value;
    }
    /// The next half-edge of the border that h is on.
    uint32_t next_border(uint32_t h) const {
        uint32_t x = next_corner(h);
        while (glued[x])
            x = next_corner(surface.mate[x]);
        return x;
    }
    /// Calls visit(corner) for the corners of c's node.
    template <class Visit>
    void for_node(uint32_t c, Visit visit) const {
        uint32_t at = c;
        do {
            visit(at);
            const uint32_t in = previous_corner(at);
            if (!glued[in]) { // came to a border: the rest lies on the other side of c
                for (at = c; glued[at]; visit(at))
                    at = next_corner(surface.mate[at]);
                return;
            }
            at = surface.mate[in];
        } while (at != c);
    }
    /// Gives the corners of c's node the number of c.
    void rename_node(uint32_t c) {
        for_node(c, [&](uint32_t at) { node[at] = c; });
    }
    /// Nodes of the given triangles anew from what is glued.
    void rebuild_nodes(const std::vector<uint32_t>& faces);
    /// Border, stretch sums and lengths of a chart anew from its triangles.
    void refresh(Chart& c) const;
    void trace_border(Chart& c) const;
    StretchSums measure(const std::vector<uint32_t>& faces) const;
    StretchSums measure_face(uint32_t t) const {
        return triangle_stretch(surface.frame[t], uv[node[3 * t]], uv[node[3 * t + 1]],
                                uv[node[3 * t + 2]]);
    }
    /// The L2 stretch of a chart against the triangles as they are, without the floor under
    /// slivers; 1 when no triangle has area.
    double true_l2(const Chart& c) const;
    void outline(const Chart& c, Outline& outline) const;
    /// Makes c a chart of the set; gives its number.
    uint32_t add_chart(Chart&& c);

private:
    mutable std::vector<uint8_t> traced_; ///< per half-edge: scratch of trace_border; 0 at rest
};

/// The limit on L2 stretch for a user's 0..1 setting: 1/(1-s), the sampling rate that may be lost.
double stretch_limit(float max_stretch);

} // namespace tessora::atlas
