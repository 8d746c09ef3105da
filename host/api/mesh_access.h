/// What the mesh function set and the mesh iterators share.
#pragma once

#include "host/api/fault.h"
#include "host/mesh/mesh.h"

#include <maya/MDagPath.h>
#include <maya/MFloatVector.h>
#include <maya/MPoint.h>
#include <maya/MSpace.h>

namespace host {

/// The mesh of an attached object; NULL when nothing is attached or it holds none.
inline const Mesh* current_mesh(const MObject& object) {
    const MeshFace* const face = mesh_face(object);
    return face == nullptr ? nullptr : face->mesh();
}

/// Attaches an iterator: passes the fault point, brings the mesh up to date and checks that the
/// object is one that holds a mesh. `component` must be null: iterators go over whole meshes.
/// Errors: kInvalidParameter for another kind of object or a component; kFailure without geometry.
MStatus attach_mesh(const char* point, const MObject& object, const MObject& component,
                    MObject& attached);
/// The same for a path, which may end at the transform above the shape.
MStatus attach_mesh(const char* point, const MDagPath& path, const MObject& component,
                    MObject& attached, MDagPath& attached_path);

/// Position of a UV set: by name, the current one for NULL.
/// Errors: kInvalidParameter for an unknown name; kFailure when there is no set at all.
MStatus find_set(const Mesh& mesh, const MString* name, std::uint32_t& set);

/// Works out the triangles or the normals if nobody has yet.
MStatus ready_triangles(const Mesh& mesh);
MStatus ready_normals(const Mesh& mesh);

/// Whether an array got the length that was asked for.
template <class A>
MStatus resize(A& array, std::size_t length) {
    return array.length() == length ? MStatus(MS::kSuccess)
                                    : array.setLength(static_cast<unsigned int>(length));
}

/// Copies ids to an array of the interface.
template <class A>
MStatus copy_ids(const IndexSpan& ids, A& array) {
    const MStatus status = resize(array, ids.size());
    for (std::uint32_t i = 0; status && i < ids.size(); ++i)
        array[i] = static_cast<int>(ids[i]);
    return status;
}

/// Turns object-space points and normals into the space asked for.
class SpaceMap {
public:
    /// `status` is kInvalidParameter when the space needs a path and there is none.
    SpaceMap(MSpace::Space space, const MDagPath& path, MStatus& status);
    MPoint point(const Float3& p) const {
        const MPoint result(static_cast<double>(p.x), static_cast<double>(p.y),
                            static_cast<double>(p.z));
        return is_world_ ? result * matrix_ : result;
    }
    /// Unit length in, unit length out.
    MVector normal(const MVector& n) const { return is_world_ ? (n * normals_).normal() : n; }

private:
    bool is_world_;
    MMatrix matrix_;
    MMatrix normals_; ///< inverse transpose
};

} // namespace host
