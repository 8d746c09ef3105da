/// The shortest border between two charts in a band around the one they have.
///
/// The atoms of the band are the nodes of a graph, their common edges its edges, with the edges'
/// weights as capacities; the inner parts of the charts are source and sink. The minimum cut of
/// that graph is the border of least weight (Y. Boykov, V. Kolmogorov, "Computing geodesics and
/// minimal surfaces via graph cuts", 2003). Unlike moves of single atoms it straightens waves of
/// any length, and it slides along the borders to third charts.
#pragma once

#include "atlas/charts/chart_set.h"
#include "atlas/charts/clusters.h"
#include "atlas/geometry/buckets.h"
#include "atlas/geometry/min_cut.h"

namespace tessora::atlas {

/// Length of an edge as a border, reduced on creases, where borders show less. h must have a mate.
double border_weight(const Surface& surface, uint32_t h);

class ShortestBorder {
public:
    /// `faces`: the triangles by atom. All arguments must outlive this.
    ShortestBorder(const ChartSet& set, const Atoms& atoms, const Buckets& faces);
    /// Lists the atoms of charts a and b that the shortest border within the given number of rings
    /// puts into the other chart, those next to the present border first. None if no border is
    /// shorter by 2 % or more.
    const std::vector<uint32_t>& find(uint32_t a, uint32_t b, uint32_t rings);

private:
    void collect(uint32_t a, uint32_t b, uint32_t rings);
    void weigh();
    void cut();
    template <class Visit>
    void for_edges(uint32_t atom, Visit visit) const;
    uint32_t chart_of(uint32_t atom) const { return set_.chart[faces_.item[faces_.begin[atom]]]; }
    bool stays(uint32_t atom) const;

    const ChartSet& set_;
    const Atoms& atoms_;
    const Buckets& faces_;
    std::vector<uint32_t> place_; ///< per atom: its place in band_, or k_none
    std::vector<uint32_t> band_;  ///< atoms, ring by ring
    std::vector<uint32_t> ring_;  ///< per atom of the band: 0 on the border
    uint32_t pair_[2] = {k_none, k_none};
    uint32_t core_[2] = {}; ///< per chart: the first ring whose atoms stay
    struct Edge {
        uint32_t from, to; ///< places in the band; `to` is k_none for an atom that stays
        uint32_t chart;    ///< of the atom at `to`
        double weight;
    };
    std::vector<Edge> edges_;
    double heaviest_ = 0;         ///< weight of an edge
    std::vector<int64_t> to_end_; ///< per atom of the band: capacities to source and sink
    MinCut graph_{0};
    std::vector<uint32_t> moving_;
};

} // namespace tessora::atlas
