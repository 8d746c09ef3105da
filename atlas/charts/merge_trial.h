/// One attempt to merge two charts.
///
/// Two disks glued along one connected arc of their borders are a disk again, so merging never
/// needs a cutting step: a closed surface or a handle keeps its cut where no arc was glued. A merge
/// solves only a band around the glued arc, which grows when the result is not legal, so the work
/// per triangle stays logarithmic in the size of the charts.
/// docs/atlas.md, "Merging", explains the rules and holds the measurements behind their thresholds.
#pragma once

#include "atlas/charts/band.h"
#include "atlas/charts/flatten.h"
#include "atlas/geometry/box.h"
#include "atlas/geometry/rigid.h"

namespace tessora::atlas {

struct MergeOptions {
    const std::vector<float>& hardness; ///< per triangle, from measure_hardness
    bool thorough = true; ///< quality mode: solves the whole chart if needed, tries two arcs
                          ///< per pair and retries pairs that have changed
};

/// Which merges a round looks for.
enum class MergeRound {
    exact, ///< arcs along which both charts match without any solving
    free   ///< any merge whose stretch stays within the limit
};

/// What merging may spend in one round.
struct MergeTerms {
    double limit;            ///< on L2 stretch
    double slack;            ///< 0..1: how far a union may waste room in the texture and spend
                             ///< stretch that its seam is not worth; 1: any
    double min_hardness = 0; ///< mean hardness that a pair needs to be merged at all
};

/// What every trial reads, beside the charts.
struct MergeState {
    /// Of a chart.
    struct Extent {
        Box box;              ///< of its outline
        double hard_area = 0; ///< sum of area times hardness
    };
    /// Stretch sums that a triangle currently contributes to its chart's.
    struct FaceSums {
        double inverse = 0, flat_area = 0, excess = 0;
    };

    MergeState(const ChartSet& set, const MergeOptions& options, ParallelFor executor);
    /// The mean over both charts, weighted by area.
    double hardness(uint32_t a, uint32_t b) const {
        return (extent[a].hard_area + extent[b].hard_area) /
               (set.charts[a].stretch.area + set.charts[b].stretch.area);
    }

    const ChartSet& set;
    const MergeOptions options;
    MergeRound round = MergeRound::free;
    MergeTerms terms{};
    double charts = 1;               ///< number of them when the round began
    std::vector<Extent> extent;      ///< per chart
    std::vector<FaceSums> face_sums; ///< per triangle
    Band::Flags band_flags;
};

/// A merge that succeeded.
struct Union {
    /// What changes in the set.
    struct Change {
        std::vector<uint32_t> edges;               ///< half-edges of a to be glued
        std::vector<uint32_t> nodes;               ///< of b, which take over a's along those edges
        std::vector<std::pair<uint32_t, Vec2>> uv; ///< nodes with their coordinates
    };
    uint32_t a = 0, b = 0; ///< a becomes part of b
    Chart chart;           ///< without its triangles
    Box box;
    std::vector<std::pair<uint32_t, MergeState::FaceSums>> face_sums; ///< of triangles that changed
    Change change;
};

/// Tries merges one after another; keeps its memory between them. What comes of a trial depends on
/// nothing but its two charts and the state, and it writes only to what belongs to these charts, so
/// that trials of different charts may run at the same time.
class MergeTrial {
public:
    MergeTrial(Flattener& flattener, MergeState& state);

    /// Chooses what to try for two charts that have a common border. The only step that looks at
    /// other charts' triangles: none of these may be merged meanwhile.
    void begin(uint32_t a, uint32_t b);
    /// Tries what begin() chose. True if the charts were glued; the set then has them in place, but
    /// still lists two charts.
    bool run();
    /// After a run that glued the charts: what it made of them. Call once.
    Union take_union();
    /// Restores the two charts and stores in `change` what would make the union again.
    void take_back(Union::Change& change);
    /// After a run: every limit below this one leads to the same result.
    double next_limit() const { return next_limit_; }

private:
    /// Consecutive border half-edges of one chart whose mates are consecutive, in reverse, on the
    /// border of another.
    struct BorderRun {
        uint32_t loop = 0;             ///< border loop of the first chart
        uint32_t first = 0, count = 0; ///< first entry of its border and number of entries; wraps
                                       ///< around within the loop
        double length = 0;
    };
    /// The arc being glued, seen from both charts. Chart a moves onto chart b.
    struct Arc {
        uint32_t a = 0, b = 0;
        std::vector<uint32_t> edges;          ///< half-edges of a, in the order of its border
        std::vector<uint32_t> node_a, node_b; ///< per arc vertex, one more than edges
        double length = 0;                    ///< in space
    };

    void find_runs();
    bool borders_chart(uint32_t h, uint32_t b) const;
    void find_runs_of_loop(uint32_t loop);
    bool try_run(const BorderRun& run);

    void take_arc(const BorderRun& run);
    void list_arc_nodes();
    void keep_matching_part();
    double align(Rigid& motion) const;
    bool sides_fit(double residual);
    bool nothing_else_borders() const;
    void splice_border();
    void preview_outline(const Rigid& motion);
    bool is_exact(double residual) const;
    bool box_allowed(const Box& box, bool exact);
    bool is_last_limit();
    bool set_affordable_stretch(const Box& box, bool exact);

    void glue(const Rigid& motion);
    void unglue();
    void set_uv(uint32_t node, Vec2 p);
    bool solve(const std::vector<Vec2>& gap);
    bool close_without_solving(const std::vector<Vec2>& gap);
    void spread_gap(const std::vector<Vec2>& gap, uint32_t rings);
    bool within_limit(const StretchSums& sums);
    bool hopeless(const StretchSums& sums);
    bool worth_more_work() const;
    bool relax_band(uint32_t rings, bool global);
    bool legal_once_slits_close();
    /// Calls visit(t) for the band's triangles and then for its leads.
    template <class Visit>
    void for_measured_faces(Visit visit) const {
        for (uint32_t t : band_.faces())
            visit(t);
        for (uint32_t t : band_.leads())
            if (!band_.has_face(t))
                visit(t);
    }
    StretchSums joined_sums();

    Flattener& flattener_;
    ChartSet& set_;
    MergeState& state_;
    std::vector<BorderRun> runs_; ///< longest first
    bool alone_ = false;          ///< the charts border on each other and themselves only
    double next_limit_ = 0;       ///< least limit under which the pair could fare better
    double affordable_l2_ = 0;    ///< L2 stretch above which the union is not worth its seam
    Arc arc_;
    Chart joined_; ///< the union, without its triangles
    Band band_;
    std::vector<MergeState::FaceSums> band_sums_; ///< by joined_sums: of the triangles it measured
    std::vector<Vec2> shift_;                     ///< per node of the band: workspace of spread_gap
    std::vector<std::pair<uint32_t, Vec2>>
        moved_; ///< nodes with their coordinates before the merge
    Outline outline_;
    OutlineTester tester_;
};

} // namespace tessora::atlas
