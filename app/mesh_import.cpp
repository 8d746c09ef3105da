#include "app/mesh_import.h"

#include "host/io/obj_mesh.h"
#include "host/mesh/pair_set.h"

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

/// Calls visit(a, b) with the end vertices of every diagonal of polygon p's triangulation, twice
/// per diagonal.
template <class Visit>
void visit_diagonals(const host::Mesh& mesh, uint32_t p, Visit visit) {
    const uint32_t corners = mesh.connectivity().corners_of(p);
    if (corners == 3)
        return;
    const host::IndexSpan vertices = mesh.connectivity().polygon_vertices(p);
    const host::IndexSpan triangles = mesh.triangles(p);
    for (uint32_t i = 0; i < triangles.size(); ++i) {
        const uint32_t a = triangles[i], b = triangles[i % 3 == 2 ? i - 2 : i + 1];
        const uint32_t apart = a < b ? b - a : a - b;
        if (apart != 1 && apart != corners - 1)
            visit(vertices[a], vertices[b]);
    }
}

/// Polygons with a diagonal that another polygon uses too, ascending.
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
    for (uint32_t p = 0; p < polygons; ++p) {
        bool is_torn = false;
        visit_diagonals(mesh, p, [&](uint32_t a, uint32_t b) { is_torn |= joined.contains(a, b); });
        if (is_torn)
            torn.push_back(p);
        else
            visit_diagonals(mesh, p, [&](uint32_t a, uint32_t b) { joined.insert(a, b); });
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
