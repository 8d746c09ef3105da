#include "atlas/charts/regions.h"

#include "atlas/parallel.h"

#include <algorithm>
#include <atomic>

namespace tessora::atlas {
namespace {

/// Makes one chart per polygon of a leaf.
void flatten_polygons(Flattener& flattener, const Atoms& atoms, const uint32_t* begin,
                      const uint32_t* end) {
    std::vector<uint32_t> faces(begin, end);
    std::stable_sort(faces.begin(), faces.end(),
                     [&](uint32_t a, uint32_t b) { return atoms.of_face[a] < atoms.of_face[b]; });
    for (auto first = faces.begin(), last = first; first != faces.end(); first = last) {
        while (last != faces.end() && atoms.of_face[*last] == atoms.of_face[*first])
            ++last;
        flattener.flatten_polygon(std::vector<uint32_t>(first, last));
    }
}

/// The stretch between the limit for smooth surfaces and k_hard_stretch, interpolated by the
/// hardness.
RegionTerms region_terms(double limit, double hardness) {
    constexpr double k_mostly_smooth = 0.1;
    const double hard_limit = std::min(limit, k_hard_stretch);
    RegionTerms terms;
    terms.max_stretch = limit + (hard_limit - limit) * hardness;
    terms.may_skip_solver = hardness < k_mostly_smooth;
    return terms;
}

/// A region that became a chart, or a leaf that could not and falls apart into its polygons.
struct Piece {
    const ClusterTree::Region* region;
    bool is_chart;
    Chart chart;
};

class RegionMaker {
public:
    RegionMaker(const Surface& surface, const ClusterTree& tree, const std::vector<float>& hardness,
                const RegionLimits& limits, ProgressMeter& progress)
        : surface_(surface), tree_(tree), hardness_(hardness), limits_(limits), progress_(progress),
          components_(find_components(surface)), component_size_(components_.count, 0) {
        for (uint32_t c : components_.of_face)
            ++component_size_[c];
    }

    /// Descends from a root and lists what comes of it in `pieces`. May run for several roots at
    /// the same time, each with a flattener of its own.
    void descend(uint32_t root, Flattener& flattener, std::vector<Piece>& pieces) {
        std::vector<uint32_t> stack{root};
        while (!stack.empty()) {
            const ClusterTree::Region& region = tree_.regions[stack.back()];
            stack.pop_back();
            if (!progress_.advance(double(done_) / double(tree_.faces.size())))
                return;
            Chart chart;
            const uint32_t* faces = tree_.faces.data();
            const bool is_chart = flattener.flatten_region(faces + region.begin, faces + region.end,
                                                           region.normal, terms_of(region), chart);
            if (is_chart || region.left == ClusterTree::k_no_child) {
                pieces.push_back({&region, is_chart, std::move(chart)});
                done_ += region.end - region.begin;
            } else {
                stack.push_back(region.right);
                stack.push_back(region.left);
            }
        }
    }

private:
    RegionTerms terms_of(const ClusterTree::Region& region) const {
        const uint32_t* const begin = tree_.faces.data() + region.begin;
        const uint32_t* const end = tree_.faces.data() + region.end;
        // A whole component has no neighbour to merge with: it need not save stretch for later.
        const bool whole =
            region.end - region.begin == component_size_[components_.of_face[*begin]];
        RegionTerms terms = region_terms(whole ? limits_.component : limits_.region,
                                         mean_hardness(surface_, hardness_, begin, end));
        // A ring, or a strip bent around much empty space, packs better in parts.
        constexpr double k_max_void = 0.1;
        if (!whole && region.left != ClusterTree::k_no_child)
            terms.max_void = k_max_void * surface_.total_area;
        return terms;
    }

    const Surface& surface_;
    const ClusterTree& tree_;
    const std::vector<float>& hardness_;
    const RegionLimits limits_;
    ProgressMeter& progress_;
    const Components components_;
    std::vector<uint32_t> component_size_;
    std::atomic<size_t> done_{0}; ///< triangles
};

} // namespace

bool make_regions(Flattener& flattener, const Atoms& atoms, const ClusterTree& tree,
                  const std::vector<float>& hardness, const RegionLimits& limits,
                  ParallelFor executor, ProgressMeter& progress) {
    ChartSet& set = flattener.set;
    RegionMaker maker(set.surface, tree, hardness, limits, progress);
    std::vector<std::vector<Piece>> pieces(tree.roots.size());
    WorkspacePool<Flattener> flatteners(flattener);
    const auto another = [&] { return std::make_unique<Flattener>(set, flattener.options); };
    parallel_for(executor, tree.roots.size(), [&](size_t i) {
        if (set.chart[tree.faces[tree.regions[tree.roots[i]].begin]] != k_none)
            return;
        const auto lease = flatteners.lease(another);
        maker.descend(tree.roots[i], *lease, pieces[i]);
    });
    if (!progress.advance(1))
        return false;
    // In the order of the tree, whichever thread was first.
    for (std::vector<Piece>& of_root : pieces)
        for (Piece& piece : of_root)
            if (piece.is_chart)
                set.add_chart(std::move(piece.chart));
            else
                flatten_polygons(flattener, atoms, tree.faces.data() + piece.region->begin,
                                 tree.faces.data() + piece.region->end);
    return true;
}

} // namespace tessora::atlas
