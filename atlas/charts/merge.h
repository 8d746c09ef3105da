/// Greedy merging of charts along common borders, with re-parametrisation.
///
/// Two disks glued along one connected arc of their borders are a disk, so merging never needs a
/// cutting step: closed shells and handles get their cut graph as the arcs that were never glued.
/// A merge is solved locally, in a band around the glued arc that grows only when it has to, so
/// that the work per triangle stays logarithmic in the size of the charts.
#pragma once

#include "atlas/charts/flatten.h"
#include "atlas/geometry/box.h"
#include "atlas/geometry/rigid.h"
#include "atlas/progress.h"

#include <queue>

namespace tessora::atlas {

struct MergeOptions {
    std::vector<uint8_t> hard; ///< per triangle, from find_hard_faces
    double limit = 1.176;      ///< on L2 stretch
    bool thorough = true;      ///< quality mode: global solves, more arcs, a second round
    bool packable = true;      ///< refuse shapes that waste the texture
};

class Merger {
public:
    Merger(Flattener& flattener, const MergeOptions& options);
    /// Which merges a round looks for.
    enum class Round {
        exact, ///< only along stretches of border where both sides fit without any solving
        free   ///< whatever the limit allows
    };
    /// Merges until no pair is left. False when the callback asked to stop.
    bool run(Round round, ProgressMeter& progress);
    /// Glues slits whose two sides coincide: it moves nothing.
    void zip();

private:
    /// A run of border half-edges of one chart whose mates are a run, reversed, of another.
    struct Arc {
        uint32_t loop = 0;             ///< of the first chart
        uint32_t first = 0, count = 0; ///< in its border; wraps around within the loop
        double length = 0;
    };
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
    struct FaceSums {
        double inverse = 0, flat_area = 0;
    };

    void push_pairs(uint32_t a);
    bool failed_before(const Pair& p);
    bool try_pair(uint32_t a, uint32_t b);
    void find_arcs(uint32_t a, uint32_t b, std::vector<Arc>& arcs) const;
    void take_arc(uint32_t a, const Arc& arc);
    void keep_fitting_part();
    bool zip_edge(uint32_t h);
    bool hard(uint32_t a) const { return options_.hard[set_.charts[a].faces[0]] != 0; }
    bool pays(uint32_t a, uint32_t b, const Chart& joined, double arc_length) const;
    double align(Rigid& motion) const;
    void splice_border(uint32_t a, uint32_t b, Chart& joined) const;
    void commit(uint32_t a, uint32_t b, Chart&& joined, const Box& box);

    bool try_arc(uint32_t a, uint32_t b, const Arc& arc);
    void preview_outline(uint32_t a, const Chart& joined, const Rigid& motion);
    Box box_of(const Outline& outline) const;
    bool packable(const Box& box, uint32_t a, uint32_t b, bool exact, double arc_length) const;
    void glue();
    void unglue();
    void set_uv(uint32_t n, Vec2 p);
    bool solve(uint32_t a, uint32_t b, Chart& joined, const std::vector<Vec2>& gap);
    bool grow_band(uint32_t rings);
    void clear_band();
    void spread_gap(uint32_t a, const std::vector<Vec2>& gap, uint32_t rings);
    bool patient() const;
    bool relax_band(uint32_t rings, bool global);
    StretchSums joined_sums(uint32_t a, uint32_t b) const;
    void remember_face(uint32_t t);

    Flattener& flattener_;
    ChartSet& set_;
    const MergeOptions options_;
    Round round_ = Round::free;
    std::priority_queue<Pair> queue_;
    std::vector<uint32_t> version_; ///< per chart: merges it has seen
    std::vector<uint32_t> parent_;  ///< per chart: the one that took it over, or itself
    std::vector<std::vector<FailedPair>> failures_;
    std::vector<Box> box_;       ///< per chart
    std::vector<double> shared_; ///< per chart: scratch of push_pairs
    std::vector<uint32_t> touched_;
    std::vector<FaceSums> face_sums_; ///< per triangle: what it adds to its chart's sums

    // The arc at hand.
    std::vector<uint32_t> edges_;           ///< half-edges of the chart that moves
    std::vector<uint32_t> node_a_, node_b_; ///< per arc vertex, of the two charts
    // The band around it.
    std::vector<uint32_t> band_faces_, band_nodes_;
    std::vector<uint32_t> depth_;  ///< per node: rings from the arc; k_none at rest
    std::vector<uint8_t> in_band_; ///< per triangle; 0 at rest
    std::vector<Vec2> shift_;      ///< per node: scratch of spread_gap
    std::vector<std::pair<uint32_t, Vec2>> backup_;
    Outline outline_;
    OutlineTester tester_;
};

} // namespace tessora::atlas
