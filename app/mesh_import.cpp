#include "app/mesh_import.h"

#include "host/io/obj_mesh.h"
#include "host/mesh/pair_set.h"
#include "host/mesh/twins.h"

#include <algorithm>
#include <utility>

namespace app {
namespace {

void add_place(const host::ObjDocument& document, uint32_t vertex, ImportedMesh& mesh) {
    for (size_t k = 0; k < 3; ++k)
        mesh.positions.push_back(document.unit_positions[3 * size_t(vertex) + k]);
}

void split_repeats(const host::ObjDocument& document, ImportedMesh& mesh) {
    host::DistinctCorners corners = host::distinct_corners(document);
    mesh.corner_vertex = std::move(corners.corner_vertex);
    mesh.copy_of = std::move(corners.copy_of);
    mesh.repeat_polygons = corners.repeat_polygons;
    for (const uint32_t vertex : mesh.copy_of)
        add_place(document, vertex, mesh);
}

MStatus make_mesh(const ImportedMesh& imported, host::Mesh& mesh) {
    std::vector<host::Float3> points(imported.positions.size() / 3);
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = {imported.positions[3 * i], imported.positions[3 * i + 1],
                     imported.positions[3 * i + 2]};
    std::vector<uint32_t> counts(imported.corner_begin.size() - 1);
    for (size_t p = 0; p < counts.size(); ++p)
        counts[p] = imported.corner_begin[p + 1] - imported.corner_begin[p];
    return host::Mesh::make(std::move(points), std::move(counts), imported.corner_vertex, mesh);
}

bool same_place(const host::Mesh& mesh, uint32_t a, uint32_t b) {
    const host::Float3 &p = mesh.points()[a], &q = mesh.points()[b];
    return p.x == q.x && p.y == q.y && p.z == q.z;
}

using VertexPairs = std::vector<std::pair<uint32_t, uint32_t>>;

/// The edges of polygon p's triangles that have two corners in one place.
VertexPairs null_edges(const host::Mesh& mesh, uint32_t p) {
    const host::IndexSpan vertices = mesh.connectivity().polygon_vertices(p);
    const host::IndexSpan triangles = mesh.triangles(p);
    VertexPairs edges;
    for (uint32_t i = 0; i < triangles.size(); i += 3) {
        const uint32_t a = vertices[triangles[i]], b = vertices[triangles[i + 1]],
                       c = vertices[triangles[i + 2]];
        if (same_place(mesh, a, b) || same_place(mesh, b, c) || same_place(mesh, c, a))
            for (const auto& ends : {std::minmax({a, b}), std::minmax({b, c}), std::minmax({c, a})})
                edges.push_back(ends);
    }
    return edges;
}

/// Calls visit(a, b) with the end vertices of every diagonal of polygon p's triangulation, twice
/// per diagonal. Diagonals that only cut off a triangle without area are left out.
template <class Visit>
void visit_diagonals(const host::Mesh& mesh, uint32_t p, Visit visit) {
    const uint32_t corners = mesh.connectivity().corners_of(p);
    if (corners == 3)
        return;
    const host::IndexSpan vertices = mesh.connectivity().polygon_vertices(p);
    const host::IndexSpan triangles = mesh.triangles(p);
    const VertexPairs left_out = null_edges(mesh, p);
    for (uint32_t i = 0; i < triangles.size(); ++i) {
        const uint32_t a = triangles[i], b = triangles[i % 3 == 2 ? i - 2 : i + 1];
        const uint32_t apart = a < b ? b - a : a - b;
        const std::pair<uint32_t, uint32_t> ends = std::minmax({vertices[a], vertices[b]});
        if (apart != 1 && apart != corners - 1 &&
            std::find(left_out.begin(), left_out.end(), ends) == left_out.end())
            visit(ends.first, ends.second);
    }
}

/// Polygons with a diagonal that is also an edge, or a diagonal of another polygon that is not
/// their twin, ascending. Twins have the same triangulation, and adjacency tells them apart.
std::vector<uint32_t> torn_polygons(const host::Mesh& mesh) {
    const host::Connectivity& connectivity = mesh.connectivity();
    std::vector<uint32_t> torn;
    const uint32_t polygons = connectivity.polygon_count();
    const uint32_t diagonals = connectivity.corner_count() - 3 * polygons;
    if (diagonals == 0)
        return torn;
    host::PairSet joined(connectivity.edge_count() + diagonals);
    for (uint32_t e = 0; e < connectivity.edge_count(); ++e)
        joined.insert(connectivity.edge(e).first, connectivity.edge(e).second);
    const std::vector<uint32_t> twins = host::first_twins(connectivity);
    std::vector<uint8_t> is_torn(polygons, 0);
    for (uint32_t p = 0; p < polygons; ++p) {
        if (twins[p] != p) {
            is_torn[p] = is_torn[twins[p]];
        } else {
            visit_diagonals(mesh, p,
                            [&](uint32_t a, uint32_t b) { is_torn[p] |= joined.contains(a, b); });
            if (!is_torn[p])
                visit_diagonals(mesh, p, [&](uint32_t a, uint32_t b) { joined.insert(a, b); });
        }
        if (is_torn[p])
            torn.push_back(p);
    }
    return torn;
}

void isolate(const host::ObjDocument& document, uint32_t polygon, ImportedMesh& mesh) {
    const auto file_vertices = static_cast<uint32_t>(document.vertex_count());
    for (uint32_t c = mesh.corner_begin[polygon]; c < mesh.corner_begin[polygon + 1]; ++c) {
        uint32_t& vertex = mesh.corner_vertex[c];
        const uint32_t source =
            vertex < file_vertices ? vertex : mesh.copy_of[vertex - file_vertices];
        vertex = static_cast<uint32_t>(file_vertices + mesh.copy_of.size());
        mesh.copy_of.push_back(source);
        add_place(document, source, mesh);
    }
}

} // namespace

MStatus import_mesh(const host::ObjDocument& document, ImportedMesh& imported, host::Mesh& mesh) {
    imported = ImportedMesh();
    imported.positions = document.unit_positions;
    imported.corner_begin = document.corner_begin;
    split_repeats(document, imported);
    for (;;) {
        const MStatus status = make_mesh(imported, mesh);
        if (!status)
            return status;
        // With these polygons isolated, the others may triangulate differently: check again.
        const std::vector<uint32_t> torn = torn_polygons(mesh);
        if (torn.empty())
            return status;
        for (const uint32_t polygon : torn)
            isolate(document, polygon, imported);
        imported.isolated_polygons += torn.size();
    }
}

} // namespace app
