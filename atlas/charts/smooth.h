/// Shortens the borders between charts.
///
/// The border of two charts moves to the shortest one beside it (shortest_border.h): atoms change
/// charts one after the other, and what surrounds them is relaxed. Single ears follow: an ear is an
/// atom whose border to the other chart, one run of edges, is longer than the run that is glued to
/// its own chart. All moves of a step are one transaction: if a chart is not legal afterwards, or
/// the stretch costs more than the seam was worth, they are undone.
#pragma once

#include "atlas/charts/band.h"
#include "atlas/charts/clusters.h"
#include "atlas/charts/flatten.h"
#include "atlas/charts/shortest_border.h"
#include "atlas/geometry/buckets.h"
#include "atlas/progress.h"

namespace tessora::atlas {

class BorderSmoother {
public:
    /// `hardness`: per triangle, from measure_hardness; ears of a hard surface have to fit as
    /// exactly as its regions (k_hard_stretch). All arguments must outlive the smoother.
    BorderSmoother(Flattener& flattener, const Atoms& atoms, const std::vector<float>& hardness);
    /// One pass over all pairs of neighbouring charts. False if the callback asked to stop.
    bool run(ProgressMeter& progress);
    /// Smooths the border between two charts only.
    void smooth(uint32_t a, uint32_t b);

private:
    /// Old values of everything that moving the ears between two charts has changed.
    struct Undo {
        std::vector<std::pair<uint32_t, uint32_t>> node;  ///< corner, its node
        std::vector<std::pair<uint32_t, Vec2>> uv;        ///< node, its coordinates
        std::vector<std::pair<uint32_t, uint8_t>> glued;  ///< half-edge, whether it was glued
        std::vector<std::pair<uint32_t, uint32_t>> chart; ///< triangle, its chart
    };
    struct PlacedCorner {
        uint32_t corner;
        Vec2 uv;
    };
    /// An atom that may move to another chart.
    struct Ear {
        std::vector<uint32_t> loop;       ///< its outer half-edges, in order
        std::vector<uint32_t> facing;     ///< those whose mates are in the other chart
        std::vector<uint32_t> holding;    ///< those glued to its own chart
        std::vector<PlacedCorner> placed; ///< its corners where they would lie in the other chart
    };

    void list_neighbours(uint32_t a);
    void offer_atoms(uint32_t from, uint32_t to);
    bool exchange(uint32_t a, uint32_t b, std::vector<uint32_t> moving);
    double move_ears(uint32_t a, uint32_t b);
    double weight(const std::vector<uint32_t>& edges) const;
    bool keep_if_good(uint32_t a, uint32_t b, double saved);
    uint32_t chart_of(uint32_t atom) const { return set_.chart[faces_.item[faces_.begin[atom]]]; }
    bool find_ear(uint32_t atom, uint32_t to);
    bool find_runs(uint32_t to);
    void relax_moved();
    bool keeps_topology() const;
    bool trace_atom(uint32_t atom);
    bool is_interior(uint32_t corner) const;
    bool place_ear(uint32_t atom, double max_smooth_stretch);
    bool corners_stay_convex(uint32_t atom) const;
    void move_ear(uint32_t atom, uint32_t to);
    void set_node(uint32_t corner, Vec2 p);
    void set_glued(uint32_t h, uint8_t value);
    void undo();
    void regroup(uint32_t a, uint32_t b);

    Flattener& flattener_;
    ChartSet& set_;
    const Atoms& atoms_;
    const std::vector<float>& hardness_;
    const Buckets faces_;              ///< triangles by atom
    std::vector<uint32_t> neighbours_; ///< workspace of run: of the current chart, ascending
    std::vector<uint32_t> candidates_; ///< workspace of smooth: atoms that may be ears
    ShortestBorder shortest_;
    Band::Flags band_flags_;
    Band band_;
    Ear ear_;
    Undo undo_;
};

} // namespace tessora::atlas
