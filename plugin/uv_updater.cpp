#include "plugin/uv_updater.h"

#include "plugin/failure.h"
#include "plugin/unwrapper.h"

#include <maya/MFloatArray.h>
#include <maya/MFnMesh.h>
#include <maya/MIntArray.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MStringArray.h>

namespace {

constexpr const char* k_no_faces = "Data updater could not retrieve faces from mesh";
constexpr const char* k_no_mesh = "Data updater could not retrieve mesh_fn from mesh.";

/// Everything to be written, complete before the mesh is changed.
struct UvLayout {
    MFloatArray u;
    MFloatArray v;
    MIntArray counts; ///< corners per polygon
    MIntArray ids;    ///< a UV id per corner, polygon by polygon
};

void list_uvs(const array<Vertex>& atlas_vertices, UvLayout& layout) {
    for (uint32_t i = 0; i < atlas_vertices.count(); ++i) {
        const Vertex vertex = atlas_vertices.get(i);
        layout.u.append(vertex.u);
        layout.v.append(vertex.v);
    }
}

MStatus count_corners(MObject& mesh, MIntArray& counts) {
    MStatus status;
    MItMeshPolygon polygon(mesh, &status);
    if (!status)
        return fail_with(k_no_faces, status);
    MIntArray vertices;
    for (polygon.reset(); status && !polygon.isDone(); status = polygon.next()) {
        polygon.getVertices(vertices);
        counts.append(static_cast<int>(vertices.length()));
    }
    return status ? status : fail_with(k_no_faces, status);
}

/// Sets `ids` to `count` zeros, or fewer if memory runs out.
void set_zeros(array<uint32_t>& ids, uint32_t count) {
    if (ids.capacity() < count)
        ids.resize(count);
    ids.clear();
    for (uint32_t c = 0; c < count && c < ids.capacity(); ++c)
        ids.append(0);
}

/// Appends the UV id of every corner of polygon `p`, whose first triangle corner is `passed`.
/// `ids` is working memory that all polygons share.
void list_polygon_ids(uint32_t p, uint32_t passed, const CornerList& corners,
                      const array<uint32_t>& atlas_indices, array<uint32_t>& ids,
                      UvLayout& layout) {
    set_zeros(ids, p < layout.counts.length() ? static_cast<uint32_t>(layout.counts[p]) : 0);
    for (uint32_t j = 0; j < corners.count(); ++j) {
        // Deliberate: the last triangle wins, also if the triangles lie in different charts.
        const uint32_t id = atlas_indices.get(passed + j);
        ids.overwrite_at(corners.get(j), id);
    }
    for (uint32_t c = 0; c < ids.count(); ++c)
        layout.ids.append(static_cast<int>(ids.get(c)));
}

MStatus assign_corners(MFnMesh& mesh_fn, const UvLayout& layout, const MString& uv_set) {
    unsigned k = 0;
    for (unsigned p = 0; p < layout.counts.length(); ++p)
        for (int c = 0; c < layout.counts[p]; ++c, ++k) {
            // -1, which the host refuses, for an id that is missing because memory ran out.
            const int id = k < layout.ids.length() ? layout.ids[k] : -1;
            const MStatus status = mesh_fn.assignUV(static_cast<int>(p), c, id, &uv_set);
            if (!status)
                return fail_with("Data updater could not assign new UV's.", status);
        }
    return MS::kSuccess;
}

} // namespace

MStatus apply_uvs(const Unwrapper& unwrapper, MObject& mesh, const array<Vertex>& atlas_vertices,
                  const array<uint32_t>& atlas_indices, const array<CornerList*>& face_corners) {
    const MString& uv_set = unwrapper.settings().uv_set;
    UvLayout layout;
    list_uvs(atlas_vertices, layout);
    MStatus status = count_corners(mesh, layout.counts);
    if (!status)
        return status;
    uint32_t passed = 0;
    array<uint32_t> ids;
    for (uint32_t p = 0; p < face_corners.count(); ++p) {
        const CornerList& corners = *face_corners.get(p);
        list_polygon_ids(p, passed, corners, atlas_indices, ids, layout);
        passed += corners.count();
    }
    MFnMesh mesh_fn(mesh, &status);
    if (!status)
        return fail_with(k_no_mesh, status);
    status = ensure_uv_set(uv_set, mesh);
    if (!status)
        return fail_with("Unwrapping aborted because UV Set does not exist.", status);
    status = mesh_fn.clearUVs(&uv_set);
    if (!status)
        return fail_with("Data updater could not clear old UV's.", status);
    status = mesh_fn.setUVs(layout.u, layout.v, &uv_set);
    if (!status)
        return fail_with("Data updater could not set new UV's.", status);
    return assign_corners(mesh_fn, layout, uv_set);
}

MStatus ensure_uv_set(const MString& uv_set, MObject& mesh) {
    MStatus status;
    MFnMesh mesh_fn(mesh, &status);
    if (!status)
        return fail_with(k_no_mesh, status);
    MStringArray names;
    status = mesh_fn.getUVSetNames(names);
    if (!status)
        return status; // not knowing the sets, creating one could make a second of that name
    for (unsigned i = 0; i < names.length(); ++i)
        if (names[i] == uv_set)
            return MS::kSuccess;
    // A copy, because the host may write a changed name back into its argument.
    MString name = uv_set;
    status = mesh_fn.createUVSetDataMesh(name);
    if (!status)
        return fail_with("UV Set creation failed.", status);
    return MS::kSuccess;
}
