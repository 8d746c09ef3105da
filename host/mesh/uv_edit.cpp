#include "host/mesh/uv_edit.h"

#include "host/mesh/uv_move.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <queue>

namespace host {
namespace {

constexpr std::uint32_t k_no_edge = 0xFFFFFFFFu;

/// Disjoint sets of the numbers 0 to n-1.
class Sets {
public:
    explicit Sets(size_t count) : leaders_(count) {
        std::iota(leaders_.begin(), leaders_.end(), size_t{0});
    }
    size_t leader(size_t item) {
        while (leaders_[item] != item)
            item = leaders_[item] = leaders_[leaders_[item]];
        return item;
    }
    /// The smaller leader leads both.
    void join(size_t a, size_t b) {
        a = leader(a);
        b = leader(b);
        leaders_[std::max(a, b)] = std::min(a, b);
    }

private:
    std::vector<size_t> leaders_;
};

/// The corner of a polygon at a vertex; the polygon must have the vertex.
std::uint32_t corner_at(const Connectivity& mesh, std::uint32_t polygon, std::uint32_t vertex) {
    std::uint32_t corner = mesh.first_corner(polygon);
    while (mesh.corner_vertex(corner) != vertex)
        ++corner;
    return corner;
}

/// Splits the UVs at a vertex between the groups of corners that `is_cut` leaves connected.
std::uint32_t split_vertex(const Connectivity& mesh, UvSet& set, std::uint32_t vertex,
                           const std::vector<bool>& is_cut) {
    const IndexSpan corners = mesh.vertex_corners(vertex);
    Sets groups(corners.size());
    const auto place = [&](std::uint32_t corner) {
        return static_cast<size_t>(std::find(corners.begin(), corners.end(), corner) -
                                   corners.begin());
    };
    for (const std::uint32_t edge : mesh.vertex_edges(vertex)) {
        const IndexSpan polygons = mesh.edge_polygons(edge);
        for (std::uint32_t i = 1; i < polygons.size() && !is_cut[edge]; ++i) {
            const std::uint32_t a = corner_at(mesh, polygons[0], vertex);
            const std::uint32_t b = corner_at(mesh, polygons[i], vertex);
            if (set.corner_uvs[a] == set.corner_uvs[b])
                groups.join(place(a), place(b));
        }
    }
    std::uint32_t added = 0;
    std::map<std::int32_t, size_t> owner;                           // group that keeps a UV
    std::map<std::pair<std::int32_t, size_t>, std::int32_t> copies; // of a UV, for a group
    for (std::uint32_t i = 0; i < corners.size(); ++i) {
        std::int32_t& uv = set.corner_uvs[corners[i]];
        const size_t group = groups.leader(i);
        if (uv < 0 || owner.try_emplace(uv, group).first->second == group)
            continue;
        const auto [copy, is_new] = copies.try_emplace({uv, group}, 0);
        if (is_new) {
            copy->second = static_cast<std::int32_t>(set.u.size());
            set.u.push_back(set.u[static_cast<size_t>(uv)]);
            set.v.push_back(set.v[static_cast<size_t>(uv)]);
            ++added;
        }
        uv = copy->second;
    }
    return added;
}

double length(const Mesh& mesh, std::uint32_t edge) {
    const auto [a, b] = mesh.connectivity().edge(edge);
    const Float3 &p = mesh.points()[a], &q = mesh.points()[b];
    return std::hypot(static_cast<double>(p.x - q.x), static_cast<double>(p.y - q.y),
                      static_cast<double>(p.z - q.z));
}

std::uint32_t other_end(const Connectivity& mesh, std::uint32_t edge, std::uint32_t vertex) {
    const auto [a, b] = mesh.edge(edge);
    return a == vertex ? b : a;
}

/// The edge that continues `edge` beyond `vertex`: of four edges the one that shares no polygon
/// with it.
std::uint32_t continuation(const Connectivity& mesh, std::uint32_t edge, std::uint32_t vertex) {
    const IndexSpan edges = mesh.vertex_edges(vertex);
    if (edges.size() != 4)
        return k_no_edge;
    const IndexSpan own = mesh.edge_polygons(edge);
    for (const std::uint32_t next : edges) {
        const IndexSpan polygons = mesh.edge_polygons(next);
        const bool is_beside =
            std::any_of(polygons.begin(), polygons.end(), [&](std::uint32_t polygon) {
                return std::find(own.begin(), own.end(), polygon) != own.end();
            });
        if (next != edge && !is_beside)
            return next;
    }
    return k_no_edge;
}

} // namespace

std::uint32_t cut_uvs(Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& edges) {
    const Connectivity& polygons = mesh.connectivity();
    const std::vector<std::int32_t>& mapped = mesh.uv_set(set).corner_uvs;
    if (std::all_of(mapped.begin(), mapped.end(), [](std::int32_t uv) { return uv < 0; }))
        project_uvs(mesh, set);
    UvSet& uvs = mesh.edit_uv_set(set);
    std::vector<bool> is_cut(polygons.edge_count());
    std::vector<std::uint32_t> vertices;
    for (const std::uint32_t edge : edges) {
        if (edge >= polygons.edge_count())
            continue;
        is_cut[edge] = true;
        vertices.push_back(polygons.edge(edge).first);
        vertices.push_back(polygons.edge(edge).second);
    }
    std::sort(vertices.begin(), vertices.end());
    vertices.erase(std::unique(vertices.begin(), vertices.end()), vertices.end());
    std::uint32_t added = 0;
    for (const std::uint32_t vertex : vertices)
        added += split_vertex(polygons, uvs, vertex, is_cut);
    return added;
}

std::uint32_t sew_uvs(Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& edges) {
    const Connectivity& polygons = mesh.connectivity();
    UvSet& uvs = mesh.edit_uv_set(set);
    Sets merged(uvs.u.size());
    for (const std::uint32_t edge : edges) {
        if (edge >= polygons.edge_count() || polygons.edge_polygons(edge).size() != 2)
            continue;
        const auto [first, second] = polygons.edge(edge);
        for (const std::uint32_t vertex : {first, second}) {
            std::int32_t ends[2];
            for (std::uint32_t i = 0; i < 2; ++i)
                ends[i] =
                    uvs.corner_uvs[corner_at(polygons, polygons.edge_polygons(edge)[i], vertex)];
            if (ends[0] >= 0 && ends[1] >= 0)
                merged.join(static_cast<size_t>(ends[0]), static_cast<size_t>(ends[1]));
        }
    }
    std::vector<double> u(uvs.u.size()), v(uvs.u.size());
    std::vector<std::uint32_t> members(uvs.u.size());
    std::uint32_t count = 0;
    for (size_t i = 0; i < uvs.u.size(); ++i) {
        const size_t leader = merged.leader(i);
        u[leader] += static_cast<double>(uvs.u[i]);
        v[leader] += static_cast<double>(uvs.v[i]);
        ++members[leader];
        count += leader != i;
    }
    for (size_t i = 0; i < uvs.u.size(); ++i)
        if (members[i] > 1) {
            uvs.u[i] = static_cast<float>(u[i] / members[i]);
            uvs.v[i] = static_cast<float>(v[i] / members[i]);
        }
    for (std::int32_t& uv : uvs.corner_uvs)
        if (uv >= 0)
            uv = static_cast<std::int32_t>(merged.leader(static_cast<size_t>(uv)));
    return count;
}

void copy_uvs(Mesh& mesh, std::uint32_t from, std::uint32_t to) {
    UvSet copy = mesh.uv_set(from);
    copy.name = mesh.uv_set(to).name;
    mesh.edit_uv_set(to) = std::move(copy);
}

std::vector<std::uint32_t> edge_loop(const Mesh& mesh, std::uint32_t edge) {
    const Connectivity& polygons = mesh.connectivity();
    std::vector<std::uint32_t> loop = {edge};
    const auto walk = [&](std::uint32_t vertex) {
        for (std::uint32_t at = edge; loop.size() <= polygons.edge_count();) {
            at = continuation(polygons, at, vertex);
            if (at == k_no_edge)
                return false;
            loop.push_back(at);
            if (at == edge)
                return true;
            vertex = other_end(polygons, at, vertex);
        }
        return true;
    };
    if (walk(polygons.edge(edge).second))
        return loop;
    std::reverse(loop.begin(), loop.end());
    walk(polygons.edge(edge).first);
    return loop;
}

std::vector<std::uint32_t> shortest_edge_path(const Mesh& mesh, std::uint32_t from,
                                              std::uint32_t to) {
    const Connectivity& polygons = mesh.connectivity();
    std::vector<double> distance(polygons.vertex_count(), std::numeric_limits<double>::infinity());
    std::vector<std::uint32_t> back(polygons.vertex_count(), k_no_edge);
    using Entry = std::pair<double, std::uint32_t>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
    distance[from] = 0.0;
    queue.push({0.0, from});
    while (!queue.empty() && queue.top().second != to) {
        const auto [at, vertex] = queue.top();
        queue.pop();
        if (at > distance[vertex])
            continue;
        for (const std::uint32_t edge : polygons.vertex_edges(vertex)) {
            const std::uint32_t next = other_end(polygons, edge, vertex);
            const double there = at + length(mesh, edge);
            if (!(there < distance[next]))
                continue;
            distance[next] = there;
            back[next] = edge;
            queue.push({there, next});
        }
    }
    std::vector<std::uint32_t> path;
    for (std::uint32_t vertex = to; back[vertex] != k_no_edge && vertex != from;) {
        path.push_back(back[vertex]);
        vertex = other_end(polygons, back[vertex], vertex);
    }
    std::reverse(path.begin(), path.end());
    return path;
}

} // namespace host
