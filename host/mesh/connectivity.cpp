#include "host/mesh/connectivity.h"

#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr std::uint32_t k_none = 0xFFFFFFFFu;

/// Exclusive prefix sum: turns counts at positions 1..n into start offsets.
void counts_to_starts(std::vector<std::uint32_t>& counts) {
    for (std::size_t i = 1; i < counts.size(); ++i)
        counts[i] += counts[i - 1];
}

} // namespace

Connectivity::Connectivity(std::uint32_t vertex_count, std::vector<std::uint32_t> counts,
                           std::vector<std::uint32_t> vertices)
    : vertex_count_(vertex_count), polygon_start_(std::move(counts)),
      vertices_(std::move(vertices)) {
    polygon_start_.insert(polygon_start_.begin(), 0);
    counts_to_starts(polygon_start_);
    corner_polygons_.resize(vertices_.size());
    for (std::uint32_t p = 0; p < polygon_count(); ++p)
        std::fill(corner_polygons_.begin() + polygon_start_[p],
                  corner_polygons_.begin() + polygon_start_[p + 1], p);
    list_vertex_corners();
    find_edges();
    list_edge_polygons();
    list_vertex_edges();
}

std::uint32_t Connectivity::next_corner(std::uint32_t corner) const {
    const std::uint32_t polygon = corner_polygons_[corner];
    return corner + 1 == polygon_start_[polygon + 1] ? polygon_start_[polygon] : corner + 1;
}

void Connectivity::list_vertex_corners() {
    vertex_corner_start_.assign(vertex_count_ + 1, 0);
    for (const std::uint32_t vertex : vertices_)
        vertex_corner_start_[vertex + 1] += 1;
    counts_to_starts(vertex_corner_start_);
    vertex_corners_.resize(vertices_.size());
    std::vector<std::uint32_t> fill(vertex_corner_start_.begin(), vertex_corner_start_.end() - 1);
    for (std::uint32_t corner = 0; corner < corner_count(); ++corner)
        vertex_corners_[fill[vertices_[corner]]++] = corner;
}

/// Collects the sides of all polygons at the smaller of their two vertices. Sorted by the other
/// vertex, equal sides are adjacent and form one edge. The first corner of each group represents
/// the edge until a pass over all corners numbers the edges.
void Connectivity::find_edges() {
    std::vector<std::uint32_t> start(vertex_count_ + 1, 0);
    for (std::uint32_t corner = 0; corner < corner_count(); ++corner)
        start[std::min(vertices_[corner], vertices_[next_corner(corner)]) + 1] += 1;
    counts_to_starts(start);
    struct Side {
        std::uint32_t far;
        std::uint32_t corner;
    };
    std::vector<Side> sides(corner_count());
    std::vector<std::uint32_t> fill(start.begin(), start.end() - 1);
    for (std::uint32_t corner = 0; corner < corner_count(); ++corner) {
        const auto ends = std::minmax(vertices_[corner], vertices_[next_corner(corner)]);
        sides[fill[ends.first]++] = Side{ends.second, corner};
    }
    std::vector<std::uint32_t> first_of_run(corner_count());
    for (std::uint32_t vertex = 0; vertex < vertex_count_; ++vertex) {
        const auto begin = sides.begin() + start[vertex];
        const auto end = sides.begin() + start[vertex + 1];
        std::sort(begin, end, [](const Side& a, const Side& b) {
            return a.far != b.far ? a.far < b.far : a.corner < b.corner;
        });
        std::uint32_t run = k_none;
        for (auto side = begin; side != end; ++side) {
            if (side == begin || side->far != (side - 1)->far)
                run = side->corner;
            first_of_run[side->corner] = run;
        }
    }
    corner_edges_.resize(corner_count());
    for (std::uint32_t corner = 0; corner < corner_count(); ++corner) {
        if (first_of_run[corner] == corner) {
            corner_edges_[corner] = edge_count();
            edges_.emplace_back(vertices_[corner], vertices_[next_corner(corner)]);
        } else {
            corner_edges_[corner] = corner_edges_[first_of_run[corner]];
        }
    }
}

void Connectivity::list_edge_polygons() {
    edge_start_.assign(edge_count() + 1, 0);
    std::vector<std::uint32_t> last(edge_count(), k_none);
    for (int pass = 0; pass < 2; ++pass) {
        std::vector<std::uint32_t> fill;
        if (pass == 1) {
            counts_to_starts(edge_start_);
            edge_polygons_.resize(edge_start_.back());
            fill.assign(edge_start_.begin(), edge_start_.end() - 1);
            std::fill(last.begin(), last.end(), k_none);
        }
        for (std::uint32_t corner = 0; corner < corner_count(); ++corner) {
            const std::uint32_t edge = corner_edges_[corner];
            const std::uint32_t polygon = corner_polygons_[corner];
            if (last[edge] == polygon) // a polygon that visits the edge twice
                continue;
            last[edge] = polygon;
            if (pass == 0)
                edge_start_[edge + 1] += 1;
            else
                edge_polygons_[fill[edge]++] = polygon;
        }
    }
}

void Connectivity::list_vertex_edges() {
    vertex_edge_start_.assign(vertex_count_ + 1, 0);
    for (const auto& ends : edges_) {
        vertex_edge_start_[ends.first + 1] += 1;
        if (ends.second != ends.first)
            vertex_edge_start_[ends.second + 1] += 1;
    }
    counts_to_starts(vertex_edge_start_);
    vertex_edges_.resize(vertex_edge_start_.back());
    std::vector<std::uint32_t> fill(vertex_edge_start_.begin(), vertex_edge_start_.end() - 1);
    for (std::uint32_t edge = 0; edge < edge_count(); ++edge) {
        const auto& ends = edges_[edge];
        vertex_edges_[fill[ends.first]++] = edge;
        if (ends.second != ends.first)
            vertex_edges_[fill[ends.second]++] = edge;
    }
}

} // namespace host
