#include "app/mesh_import.h"

#include "host/io/obj_mesh.h"
#include "polygon/separate.h"

#include <utility>

namespace app {
namespace {

using tessora::polygon::SeparateCorners;

MStatus make_mesh(const host::ObjDocument& document, const SeparateCorners& corners,
                  ImportedMesh& imported, host::Mesh& mesh) {
    const uint32_t* const vertices = corners.polygons().corner_vertex;
    imported.corner_vertex.assign(vertices, vertices + document.corner_vertex.size());
    imported.copy_of = corners.copy_of();
    imported.positions = document.unit_positions;
    for (const uint32_t vertex : imported.copy_of)
        for (size_t k = 0; k < 3; ++k)
            imported.positions.push_back(document.unit_positions[3 * size_t(vertex) + k]);
    std::vector<host::Float3> points(imported.positions.size() / 3);
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = {imported.positions[3 * i], imported.positions[3 * i + 1],
                     imported.positions[3 * i + 2]};
    std::vector<uint32_t> counts(document.polygon_count());
    for (size_t p = 0; p < counts.size(); ++p)
        counts[p] = imported.corner_begin[p + 1] - imported.corner_begin[p];
    return host::Mesh::make(std::move(points), std::move(counts), imported.corner_vertex, mesh);
}

} // namespace

MStatus import_mesh(const host::ObjDocument& document, ImportedMesh& imported, host::Mesh& mesh) {
    imported = ImportedMesh();
    imported.corner_begin = document.corner_begin;
    SeparateCorners corners(host::polygons_of(document),
                            static_cast<uint32_t>(document.vertex_count()));
    imported.repeat_polygons = corners.split_repeats();
    for (;;) {
        const MStatus status = make_mesh(document, corners, imported, mesh);
        if (!status)
            return status;
        // With these polygons isolated, the others may triangulate differently: check again.
        const std::vector<uint32_t> torn = tessora::polygon::torn_polygons(
            corners.polygons(), imported.positions.data(), mesh.triangulation());
        if (torn.empty())
            return status;
        for (const uint32_t polygon : torn)
            corners.isolate(polygon);
        imported.isolated_polygons += torn.size();
    }
}

} // namespace app
