#include "atlas/charts/regions.h"

#include <algorithm>

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

/// Between the limit for smooth surfaces and k_hard_stretch, interpolated by the hardness.
RegionTerms region_terms(double limit, double hardness) {
    constexpr double k_mostly_smooth = 0.1;
    const double hard_limit = std::min(limit, k_hard_stretch);
    return {limit + (hard_limit - limit) * hardness, hardness < k_mostly_smooth};
}

} // namespace

bool make_regions(Flattener& flattener, const Atoms& atoms, const ClusterTree& tree,
                  const std::vector<float>& hardness, double limit, double component_limit,
                  ProgressMeter& progress) {
    const Components components = find_components(flattener.set.surface);
    std::vector<uint32_t> component_size(components.count, 0);
    for (uint32_t c : components.of_face)
        ++component_size[c];
    std::vector<uint32_t> stack(tree.roots.rbegin(), tree.roots.rend());
    while (!stack.empty()) {
        const ClusterTree::Region& region = tree.regions[stack.back()];
        stack.pop_back();
        const uint32_t* begin = tree.faces.data() + region.begin;
        const uint32_t* end = tree.faces.data() + region.end;
        if (!progress.advance(double(region.begin) / double(tree.faces.size())))
            return false;
        // A whole component has no neighbour to merge with: it need not save stretch for later.
        const bool whole = region.end - region.begin == component_size[components.of_face[*begin]];
        const double hard = mean_hardness(flattener.set.surface, hardness, begin, end);
        if (flattener.flatten_region(begin, end, region.normal,
                                     region_terms(whole ? component_limit : limit, hard)))
            continue;
        if (region.left == ClusterTree::k_no_child) {
            flatten_polygons(flattener, atoms, begin, end);
        } else {
            stack.push_back(region.right);
            stack.push_back(region.left);
        }
    }
    return true;
}

} // namespace tessora::atlas
