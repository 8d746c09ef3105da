#include "host/api/mesh_access.h"

namespace host {

MStatus attach_mesh(const char* point, const MObject& object, const MObject& component,
                    MObject& attached) {
    attached = MObject();
    const MStatus fault = pass_fault(point);
    if (fault.error())
        return fault;
    MeshFace* const face = mesh_face(object);
    if (face == nullptr || !component.isNull())
        return MS::kInvalidParameter;
    const MStatus status = face->refresh();
    if (status.error())
        return status;
    if (face->mesh() == nullptr)
        return MS::kFailure;
    attached = object;
    return MS::kSuccess;
}

MStatus attach_mesh(const char* point, const MDagPath& path, const MObject& component,
                    MObject& attached, MDagPath& attached_path) {
    attached_path = path;
    if (attached_path.hasFn(MFn::kTransform))
        attached_path.extendToShape();
    return attach_mesh(point, attached_path.node(), component, attached);
}

MStatus find_set(const Mesh& mesh, const MString* name, std::uint32_t& set) {
    const int found = name == NULL ? mesh.current_uv_set() : mesh.find_uv_set(*name);
    if (found < 0)
        return name == NULL ? MS::kFailure : MS::kInvalidParameter;
    set = static_cast<std::uint32_t>(found);
    return MS::kSuccess;
}

MStatus ready_triangles(const Mesh& mesh) {
    if (mesh.is_triangulated() || mesh.connectivity().polygon_count() == 0)
        return MS::kSuccess;
    return guard_memory([&] { mesh.triangles(0); });
}

MStatus ready_normals(const Mesh& mesh) {
    if (mesh.connectivity().polygon_count() == 0)
        return MS::kSuccess;
    return guard_memory([&] { mesh.normal(0); });
}

void SpaceMap::read_world(const MDagPath& path, MStatus& status) {
    const MMatrix matrix = path.inclusiveMatrix(&status);
    world_ = World{matrix, matrix.inverse().transpose()};
}

} // namespace host
