#include "app/mesh_import.h"

namespace app {

ImportedMesh import_mesh(const host::ObjDocument& document) {
    ImportedMesh mesh;
    mesh.positions = document.positions;
    mesh.corner_begin = document.corner_begin;
    mesh.corner_vertex = document.corner_vertex;
    // The last polygon that named each vertex, counted from 1.
    std::vector<uint32_t> named_by(document.vertex_count(), 0);
    for (uint32_t p = 0; p < document.polygon_count(); ++p) {
        const size_t before = mesh.copy_of.size();
        for (uint32_t c = mesh.corner_begin[p]; c < mesh.corner_begin[p + 1]; ++c) {
            uint32_t& vertex = mesh.corner_vertex[c];
            if (named_by[vertex] != p + 1) {
                named_by[vertex] = p + 1;
                continue;
            }
            mesh.copy_of.push_back(vertex);
            for (size_t k = 0; k < 3; ++k)
                mesh.positions.push_back(document.positions[3 * size_t(vertex) + k]);
            vertex = static_cast<uint32_t>(document.vertex_count() + mesh.copy_of.size() - 1);
        }
        mesh.split_polygons += mesh.copy_of.size() > before;
    }
    return mesh;
}

} // namespace app
