/// Greedy merging of charts along common borders.
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
#include "atlas/progress.h"

#include <queue>
#include <unordered_map>

namespace tessora::atlas {

struct MergeOptions {
    const std::vector<float>& hardness; ///< per triangle, from measure_hardness
    bool thorough = true; ///< quality mode: solves the whole chart if needed, tries two arcs
                          ///< per pair and retries pairs that have changed
};

/// What merging may spend in one round.
struct MergeTerms {
    double limit;            ///< on L2 stretch
    double hardness_weight;  ///< 0..1: how much flat pieces of hard surfaces are worth keeping
    double slack;            ///< 0..1: how far a union may waste room in the texture; 1: any
    double min_hardness = 0; ///< mean hardness that a pair needs to be merged at all
};

class Merger {
public:
    Merger(Flattener& flattener, const MergeOptions& options);
    /// Which merges a round looks for.
    enum class Round {
        exact, ///< arcs along which both charts match without any solving
        free   ///< any merge whose stretch stays within the limit
    };
    /// Merges until no pair is left. False if the callback asked to stop.
    bool run(Round round, const MergeTerms& terms, ProgressMeter& progress);
    /// Glues the two sides of every slit that coincide in UV space; no coordinate changes.
    void zip();

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
    /// Two charts that share a border, in the order of merging.
    struct Pair {
        double priority;
        uint32_t a, b, version_a, version_b;
        bool operator<(const Pair& o) const {
            if (priority != o.priority)
                return priority < o.priority;
            if (a != o.a)
                return a > o.a;
            return b > o.b;
        }
    };
    struct FailedPair {
        uint32_t other, own_version, other_version;
    };
    /// What is known of a pair that failed: trying these versions again fails in the same way under
    /// every limit below the given one.
    struct Refusal {
        uint32_t version_a, version_b;
        double below;
    };
    /// Data that merging keeps for each chart.
    struct History {
        uint32_t version = 0; ///< merges so far; pairs queued for an earlier version are stale
        uint32_t parent = 0;  ///< the chart that absorbed this one; itself if none has
        Box box;              ///< of its outline
        double hard_area = 0; ///< sum of area times hardness
        std::vector<FailedPair> failures;
    };
    /// Workspace of push_pairs.
    struct SharedBorders {
        std::vector<double> length; ///< per chart: of the border shared with it; 0 when unused
        std::vector<uint32_t> charts;
    };
    /// Stretch sums that a triangle currently contributes to its chart's.
    struct FaceSums {
        double inverse = 0, flat_area = 0, excess = 0;
    };

    void push_pairs(uint32_t a);
    bool failed_before(const Pair& p);
    bool refused_before(const Pair& p) const;
    bool try_or_remember(const Pair& p);
    void forget_refusals_unless_same(Round round, const MergeTerms& terms);
    bool try_pair(uint32_t a, uint32_t b);
    void find_runs(uint32_t a, uint32_t b, std::vector<BorderRun>& runs) const;
    bool borders_chart(uint32_t h, uint32_t b) const;
    void find_runs_of_loop(uint32_t a, uint32_t b, uint32_t loop,
                           std::vector<BorderRun>& runs) const;
    bool try_run(uint32_t a, uint32_t b, const BorderRun& run);
    void commit(Chart&& joined);
    bool zip_edge(uint32_t h);
    double hardness(uint32_t a, uint32_t b) const;

    void take_arc(uint32_t a, uint32_t b, const BorderRun& run);
    void list_arc_nodes();
    void keep_matching_part();
    double align(Rigid& motion) const;
    bool sides_fit(double residual);
    bool nothing_else_borders() const;
    void splice_border(Chart& joined) const;
    void preview_outline(const Chart& joined, const Rigid& motion);
    Box box_of(const Outline& outline) const;
    bool is_exact(double residual) const;
    bool box_allowed(const Box& box, bool exact);
    bool is_last_limit();
    bool stretch_pays(const Chart& joined) const;

    void glue(const Rigid& motion);
    void unglue();
    void set_uv(uint32_t node, Vec2 p);
    bool solve(Chart& joined, const std::vector<Vec2>& gap);
    bool close_without_solving(Chart& joined, const std::vector<Vec2>& gap);
    void spread_gap(const std::vector<Vec2>& gap, uint32_t rings);
    bool within_limit(const StretchSums& sums);
    bool hopeless(const StretchSums& sums);
    bool worth_more_work() const;
    bool relax_band(uint32_t rings, bool global);
    bool legal_once_slits_close(Chart& joined);
    StretchSums joined_sums();
    void remember_band_sums();

    Flattener& flattener_;
    ChartSet& set_;
    const MergeOptions options_;
    Round round_ = Round::free;
    MergeTerms terms_{};
    std::priority_queue<Pair> queue_;
    std::vector<History> history_;                   ///< per chart
    std::unordered_map<uint64_t, Refusal> refusals_; ///< by pair_key
    double next_limit_ = 0; ///< least limit under which the pair being tried could fare better
    std::vector<FaceSums> face_sums_; ///< per triangle
    std::vector<FaceSums> band_sums_; ///< by joined_sums: of the band's triangles, then its leads
    SharedBorders shared_;
    Arc arc_;
    Band band_;
    std::vector<Vec2> shift_; ///< per node of the band: workspace of spread_gap
    std::vector<std::pair<uint32_t, Vec2>>
        moved_; ///< nodes with their coordinates before the merge
    Outline outline_;
    OutlineTester tester_;
};

} // namespace tessora::atlas
