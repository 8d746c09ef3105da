#include "host/io/obj_mesh.h"

#include "polygon/separate.h"

namespace host {

namespace {

/// Copies the texture coordinates in use, in file order; unused ones are dropped.
void take_uvs(const ObjDocument& document, UvSet& set) {
    std::vector<int32_t> place(document.texture_count(), -1);
    for (const uint32_t id : document.corner_texture)
        if (id != k_obj_none)
            place[id] = 0;
    for (size_t i = 0; i < place.size(); ++i) {
        if (place[i] < 0)
            continue;
        place[i] = int32_t(set.u.size());
        set.u.push_back(document.texture_coords[2 * i]);
        set.v.push_back(document.texture_coords[2 * i + 1]);
    }
    set.corner_uvs.resize(document.corner_texture.size());
    for (size_t c = 0; c < set.corner_uvs.size(); ++c) {
        const uint32_t id = document.corner_texture[c];
        set.corner_uvs[c] = id == k_obj_none ? -1 : place[id];
    }
}

} // namespace

ObjOrigin::~ObjOrigin() = default;

UvSet uv_set_of_document(const ObjDocument& document) {
    UvSet set;
    take_uvs(document, set);
    return set;
}

bool mesh_of_document(const ObjDocument& document, Mesh& mesh) {
    std::vector<Float3> points(document.vertex_count());
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = {document.positions[3 * i], document.positions[3 * i + 1],
                     document.positions[3 * i + 2]};
    std::vector<uint32_t> counts(document.polygon_count());
    for (size_t p = 0; p < counts.size(); ++p)
        counts[p] = document.corner_begin[p + 1] - document.corner_begin[p];
    tessora::polygon::SeparateCorners corners(polygons_of(document),
                                              static_cast<uint32_t>(points.size()));
    corners.split_repeats();
    for (const uint32_t vertex : corners.copy_of())
        points.push_back(Float3(points[vertex]));
    const uint32_t* const vertices = corners.polygons().corner_vertex;
    if (!Mesh::make(std::move(points), std::move(counts),
                    {vertices, vertices + document.corner_vertex.size()}, mesh))
        return false;
    take_uvs(document, mesh.edit_uv_set(mesh.add_uv_set("map1")));
    return true;
}

} // namespace host
