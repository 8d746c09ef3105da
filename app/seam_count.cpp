#include "app/seam_count.h"

#include <algorithm>

namespace app {

namespace {

constexpr int32_t k_unseen = -2;

/// UV ids at the two ends of an edge, in the first face visited.
struct EndUvs {
    int32_t first = k_unseen;
    int32_t second = k_unseen;
};

} // namespace

std::vector<VertexPair> find_seams(const host::Mesh& mesh, const host::UvSet& set) {
    const host::Connectivity& connectivity = mesh.connectivity();
    std::vector<EndUvs> seen(connectivity.edge_count());
    std::vector<bool> is_seam(connectivity.edge_count(), false);
    for (uint32_t polygon = 0; polygon < connectivity.polygon_count(); ++polygon) {
        const host::IndexSpan edges = connectivity.polygon_edges(polygon);
        const uint32_t corner = connectivity.first_corner(polygon);
        for (uint32_t i = 0; i < edges.size(); ++i) {
            const uint32_t edge = edges[i];
            int32_t a = set.corner_uvs[corner + i];
            int32_t b = set.corner_uvs[corner + (i + 1) % edges.size()];
            if (connectivity.edge(edge).first != connectivity.corner_vertex(corner + i))
                std::swap(a, b);
            if (connectivity.edge_polygons(edge).size() > 2)
                is_seam[edge] = true;
            else if (seen[edge].first == k_unseen)
                seen[edge] = {a, b};
            else if (connectivity.edge_polygons(edge).size() == 2)
                is_seam[edge] = a < 0 || b < 0 || seen[edge].first != a || seen[edge].second != b;
        }
    }
    std::vector<VertexPair> seams;
    for (uint32_t edge = 0; edge < connectivity.edge_count(); ++edge)
        if (is_seam[edge]) {
            const auto& ends = connectivity.edge(edge);
            seams.push_back(std::minmax(ends.first, ends.second));
        }
    std::sort(seams.begin(), seams.end());
    return seams;
}

} // namespace app
