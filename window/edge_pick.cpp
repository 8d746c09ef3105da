#include "window/edge_pick.h"

#include "host/mesh/uv_edit.h"
#include "window/uv_map.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace window {
namespace {

double distance_to_segment(const ScreenPoint& p, const ScreenPoint& a, const ScreenPoint& b) {
    const double dx = b.x - a.x, dy = b.y - a.y, length2 = dx * dx + dy * dy;
    double along = length2 > 0.0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length2 : 0.0;
    along = std::clamp(along, 0.0, 1.0);
    return std::hypot(a.x + along * dx - p.x, a.y + along * dy - p.y);
}

bool is_inside(const std::vector<ScreenPoint>& lasso, const ScreenPoint& p) {
    bool inside = false;
    for (size_t i = 0, j = lasso.size() - 1; i < lasso.size(); j = i++) {
        const ScreenPoint &a = lasso[i], &b = lasso[j];
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y))
            inside = !inside;
    }
    return inside;
}

double length_of(const host::Mesh& mesh, const std::vector<uint32_t>& edges) {
    double length = 0.0;
    for (const uint32_t edge : edges) {
        const auto& [a, b] = mesh.connectivity().edge(edge);
        const host::Float3 &p = mesh.points()[a], &q = mesh.points()[b];
        length += std::sqrt(double((p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y) +
                                   (p.z - q.z) * (p.z - q.z)));
    }
    return length;
}

/// The UVs of a polygon at both ends of one of its edges, lower vertex first.
std::pair<int32_t, int32_t> uvs_along(const host::Mesh& mesh, const host::UvSet& set,
                                      uint32_t polygon, uint32_t edge) {
    const host::Connectivity& polygons = mesh.connectivity();
    const host::IndexSpan sides = polygons.polygon_edges(polygon);
    const auto side = uint32_t(std::find(sides.begin(), sides.end(), edge) - sides.begin());
    const uint32_t first = polygons.first_corner(polygon) + side;
    const uint32_t second =
        polygons.first_corner(polygon) + (side + 1) % polygons.corners_of(polygon);
    const std::pair uvs(set.corner_uvs[first], set.corner_uvs[second]);
    return polygons.corner_vertex(first) < polygons.corner_vertex(second)
               ? uvs
               : std::pair(uvs.second, uvs.first);
}

bool is_seam(const host::Mesh& mesh, const host::UvSet& set, uint32_t edge) {
    const host::IndexSpan sides = mesh.connectivity().edge_polygons(edge);
    for (const uint32_t polygon : sides)
        if (uvs_along(mesh, set, polygon, edge) != uvs_along(mesh, set, *sides.begin(), edge))
            return true;
    return false;
}

/// The other seam at a vertex where a seam passes; k_none where it ends, meets others or the border
/// of the mesh.
uint32_t next_on_seam(const host::Mesh& mesh, const host::UvSet& set, uint32_t edge,
                      uint32_t vertex) {
    uint32_t next = k_none;
    for (const uint32_t other : mesh.connectivity().vertex_edges(vertex)) {
        if (mesh.connectivity().edge_polygons(other).size() < 2)
            return k_none;
        if (other == edge || !is_seam(mesh, set, other))
            continue;
        if (next != k_none)
            return k_none;
        next = other;
    }
    return next;
}

} // namespace

uint32_t nearest_edge(const host::Mesh& mesh, uint32_t polygon, const Projection& project,
                      const ScreenPoint& place) {
    uint32_t nearest = k_none;
    double least = std::numeric_limits<double>::max();
    for (const uint32_t edge : mesh.connectivity().polygon_edges(polygon)) {
        const auto& [a, b] = mesh.connectivity().edge(edge);
        ScreenPoint from, to;
        if (!project(mesh.points()[a], from) || !project(mesh.points()[b], to))
            continue;
        const double distance = distance_to_segment(place, from, to);
        if (distance < least) {
            least = distance;
            nearest = edge;
        }
    }
    return nearest;
}

std::vector<uint32_t> edges_inside(const host::Mesh& mesh, const Projection& project,
                                   const std::vector<ScreenPoint>& lasso,
                                   const std::function<bool(const host::Float3&)>& is_visible) {
    std::vector<uint32_t> inside;
    for (uint32_t edge = 0; edge < mesh.connectivity().edge_count(); ++edge) {
        const auto& [a, b] = mesh.connectivity().edge(edge);
        const host::Float3 &p = mesh.points()[a], &q = mesh.points()[b];
        const host::Float3 middle{0.5f * (p.x + q.x), 0.5f * (p.y + q.y), 0.5f * (p.z + q.z)};
        ScreenPoint place;
        if (project(middle, place) && is_inside(lasso, place) && is_visible(middle))
            inside.push_back(edge);
    }
    return inside;
}

std::vector<uint32_t> path_between(const host::Mesh& mesh, uint32_t from, uint32_t to) {
    const host::Connectivity& polygons = mesh.connectivity();
    const uint32_t starts[] = {polygons.edge(from).first, polygons.edge(from).second};
    const uint32_t ends[] = {polygons.edge(to).first, polygons.edge(to).second};
    std::vector<uint32_t> best;
    double least = 0.0; // length of `best`
    for (const uint32_t start : starts)
        for (const uint32_t end : ends) {
            std::vector<uint32_t> path = host::shortest_edge_path(mesh, start, end);
            path.push_back(from);
            path.push_back(to);
            std::sort(path.begin(), path.end());
            path.erase(std::unique(path.begin(), path.end()), path.end());
            const double length = length_of(mesh, path);
            if (best.empty() || length < least) {
                least = length;
                best = std::move(path);
            }
        }
    return best;
}

std::vector<uint32_t> seam_through(const host::Mesh& mesh, int uv_set, uint32_t edge) {
    std::vector<uint32_t> seam;
    if (uv_set < 0 || !is_seam(mesh, mesh.uv_set(uint32_t(uv_set)), edge))
        return seam;
    const host::UvSet& set = mesh.uv_set(uint32_t(uv_set));
    seam.push_back(edge);
    const auto [first, second] = mesh.connectivity().edge(edge);
    for (uint32_t vertex : {first, second}) {
        uint32_t next = next_on_seam(mesh, set, edge, vertex);
        while (next != k_none && next != edge) { // a closed seam comes back
            seam.push_back(next);
            const auto& [a, b] = mesh.connectivity().edge(next);
            vertex = a == vertex ? b : a;
            next = next_on_seam(mesh, set, next, vertex);
        }
        if (next == edge)
            break;
    }
    std::sort(seam.begin(), seam.end());
    return seam;
}

} // namespace window
