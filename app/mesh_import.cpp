#include "app/mesh_import.h"

#include "host/io/obj_mesh.h"
#include "polygon/separate.h"

#include <utility>

namespace app {
namespace {

using tessora::polygon::SeparateCorners;

MStatus make_mesh(const host::ObjDocument& document, const SeparateCorners& corners,
                  host::Mesh& mesh) {
    const std::vector<uint32_t>& copy_of = corners.copy_of();
    const size_t count = document.vertex_count();
    std::vector<host::Float3> points(count + copy_of.size());
    for (size_t i = 0; i < points.size(); ++i) {
        const float* const p = &document.unit_positions[3 * (i < count ? i : copy_of[i - count])];
        points[i] = {p[0], p[1], p[2]};
    }
    std::vector<uint32_t> counts(document.polygon_count());
    for (size_t p = 0; p < counts.size(); ++p)
        counts[p] = document.corner_begin[p + 1] - document.corner_begin[p];
    const uint32_t* const vertices = corners.polygons().corner_vertex;
    return host::Mesh::make(std::move(points), std::move(counts),
                            {vertices, vertices + document.corner_vertex.size()}, mesh);
}

} // namespace

MStatus import_mesh(const host::ObjDocument& document, ImportedMesh& imported, host::Mesh& mesh) {
    imported = ImportedMesh();
    SeparateCorners corners(host::polygons_of(document),
                            static_cast<uint32_t>(document.vertex_count()));
    imported.repeat_polygons = corners.split_repeats();
    for (;;) {
        const MStatus status = make_mesh(document, corners, mesh);
        imported.copy_of = corners.copy_of();
        if (!status)
            return status;
        // With these polygons isolated, the others may triangulate differently: check again.
        const std::vector<uint32_t> torn = tessora::polygon::torn_polygons(
            corners.polygons(), mesh.points().empty() ? nullptr : &mesh.points()[0].x,
            mesh.triangulation());
        if (torn.empty())
            return status;
        for (const uint32_t polygon : torn)
            corners.isolate(polygon);
        imported.isolated_polygons += torn.size();
    }
}

} // namespace app
