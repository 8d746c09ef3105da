/// Shortens the borders between charts.
///
/// The border of two charts moves to the shortest one beside it (shortest_border.h): atoms change
/// charts one after the other, and what surrounds them is relaxed. Single ears follow: an ear is an
/// atom whose border to the other chart, one run of edges, is longer than the run that is glued to
/// its own chart. All moves of a step are one transaction: if a chart is not legal afterwards, or
/// the stretch costs more than the seam was worth, they are undone. What a transaction costs
/// depends on what it moves, not on the size of the charts: their sums follow every triangle that
/// changes, their outlines are looked at where they have changed, and their lists of triangles are
/// made at the end.
#pragma once

#include "atlas/charts/band.h"
#include "atlas/charts/clusters.h"
#include "atlas/charts/flatten.h"
#include "atlas/charts/shortest_border.h"
#include "atlas/geometry/buckets.h"
#include "atlas/parallel.h"
#include "atlas/progress.h"

namespace tessora::atlas {

class BorderSmoother {
public:
    /// `hardness`: per triangle, from measure_hardness; ears of a hard surface have to fit as
    /// exactly as its regions (k_hard_stretch). All arguments must outlive the smoother.
    BorderSmoother(Flattener& flattener, const Atoms& atoms, const std::vector<float>& hardness);
    /// One pass over all pairs of neighbouring charts, in the order of their numbers. Pairs without
    /// a chart in common do not depend on each other and may be smoothed side by side; the result
    /// is the same. False if the callback asked to stop.
    bool run(ParallelFor executor, ProgressMeter& progress);
    /// Smooths the border between two legal charts only.
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

    /// One of the two charts of a transaction as it is to become.
    struct Side {
        uint32_t id = k_none;
        Chart chart; ///< its border and its sums
    };

    void smooth_pair(uint32_t a, uint32_t b);
    void begin(uint32_t a, uint32_t b);
    Side& side_of(uint32_t chart) { return sides_[sides_[1].id == chart]; }
    /// Whether triangles are added to sums or removed.
    using Count = void (StretchSums::*)(const StretchSums&);
    void count_face(uint32_t t, Count count);
    void count_band(Count count);
    /// The nodes of the run of edges that an ear faces the other chart with.
    struct Run {
        std::vector<uint32_t> node;
        std::vector<Vec2> from, to; ///< coordinates in its own chart and in the other one
        std::vector<double> weight; ///< 1 each
    };

    struct Pair {
        uint32_t a, b;
        uint32_t round; ///< after those of all earlier pairs that it has a chart in common with
    };

    BorderSmoother(const BorderSmoother& first, std::unique_ptr<Flattener> flattener);
    void list_pairs();
    bool run_rounds(ParallelFor executor, ProgressMeter& progress);
    void offer_atoms(uint32_t from, uint32_t to);
    bool exchange(uint32_t a, uint32_t b, std::vector<uint32_t> moving);
    double move_ears(uint32_t a, uint32_t b);
    double weight(const std::vector<uint32_t>& edges) const;
    bool keep_if_good(double saved);
    bool is_worth(double saved) const;
    void list_changed_nodes();
    bool has_changed(uint32_t node) const;
    bool stays_legal(Side& side);
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
    void regroup();

    std::unique_ptr<Flattener> own_flattener_; ///< of all but the first of several side by side
    Flattener& flattener_;
    ChartSet& set_;
    const Atoms& atoms_;
    const std::vector<float>& hardness_;
    const std::shared_ptr<const Buckets> faces_of_atoms_;
    const Buckets& faces_;             ///< triangles by atom
    std::vector<Pair> pairs_;          ///< workspace of run
    std::vector<uint32_t> candidates_; ///< workspace of smooth: atoms that may be ears
    Side sides_[2];
    std::vector<uint32_t> changed_nodes_; ///< workspace of keep_if_good, with places in set_
    std::vector<uint32_t> border_;        ///< workspace: half-edges that may be on a border
    std::vector<uint32_t> regrouped_;     ///< charts whose lists of triangles are out of date
    ShortestBorder shortest_;
    Band::Flags band_flags_;
    Band band_;
    Ear ear_;
    Run run_; ///< workspace of place_ear
    Undo undo_;
};

} // namespace tessora::atlas
