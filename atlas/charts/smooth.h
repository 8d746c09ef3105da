/// Straightens the borders between charts.
///
/// An ear is a polygon of one chart that a neighbouring chart surrounds along one run of its edges
/// longer than what holds it to its own chart. It goes over to the neighbour, into the gap that the
/// neighbour's outline has there. Edges on a crease count less, so that borders slide into creases.
/// The moves between two charts stand or fall together: when one of the charts is not legal
/// afterwards, all of them are taken back.
#pragma once

#include "atlas/charts/clusters.h"
#include "atlas/charts/flatten.h"
#include "atlas/geometry/buckets.h"
#include "atlas/progress.h"

namespace tessora::atlas {

class BorderSmoother {
public:
    /// `hard`, per triangle, is that of find_hard_faces: ears of a hard surface have to fit as
    /// exactly as its regions. Both arguments have to outlive the smoother.
    BorderSmoother(Flattener& flattener, const Atoms& atoms, const std::vector<uint8_t>& hard);
    /// One pass over all pairs of neighbouring charts. False when the callback asked to stop.
    bool run(ProgressMeter& progress);
    /// The border between two charts alone.
    void smooth(uint32_t a, uint32_t b);

private:
    /// Everything one ear changed, so that it can be taken back.
    struct Undo {
        std::vector<std::pair<uint32_t, uint32_t>> node;  ///< corner, its node before
        std::vector<std::pair<uint32_t, Vec2>> uv;        ///< node, where it was
        std::vector<std::pair<uint32_t, uint8_t>> glued;  ///< half-edge, whether it was
        std::vector<std::pair<uint32_t, uint32_t>> chart; ///< triangle, its chart before
    };
    struct Placed {
        uint32_t corner;
        Vec2 uv;
    };

    void list_neighbours(uint32_t a);
    void offer_atoms(uint32_t from, uint32_t to);
    bool find_ear(uint32_t atom, uint32_t to);
    bool trace_atom(uint32_t atom);
    bool is_interior(uint32_t corner) const;
    double weight(uint32_t h) const;
    bool place_ear(uint32_t atom);
    void move_ear(uint32_t atom, uint32_t to);
    void set_node(uint32_t corner, Vec2 p);
    void set_glued(uint32_t h, uint8_t value);
    void take_back();
    void regroup(uint32_t a, uint32_t b);

    Flattener& flattener_;
    ChartSet& set_;
    const Atoms& atoms_;
    const std::vector<uint8_t>& hard_;
    const Buckets faces_;              ///< triangles of every atom
    std::vector<uint32_t> neighbours_; ///< of the chart at hand, ascending
    std::vector<uint32_t> todo_;       ///< atoms that may be ears
    // The ear at hand.
    std::vector<uint32_t> loop_;  ///< its outer half-edges, in order
    std::vector<uint32_t> run_;   ///< those that face the other chart
    std::vector<uint32_t> stays_; ///< those glued to its own
    std::vector<Placed> placed_;  ///< its corners where they would lie
    Undo undo_;
};

} // namespace tessora::atlas
