/// Functions shared by MFnMesh and the mesh iterators.
#pragma once

#include "host/base/fault.h"
#include "host/mesh/mesh.h"

#include <maya/MDagPath.h>
#include <maya/MFloatVector.h>
#include <maya/MPoint.h>
#include <maya/MSpace.h>

#include <optional>

namespace host {

/// The mesh of an attached object; NULL if no object is attached or it holds no mesh.
inline const Mesh* current_mesh(const MObject& object) {
    const MeshFace* const face = mesh_face(object);
    return face == nullptr ? nullptr : face->mesh();
}

/// Attaches an iterator: passes the fault point, updates the mesh and checks that the object can
/// hold one. `component` must be null, because iterators always visit the whole mesh.
/// Errors: kInvalidParameter for another kind of object or a component; kFailure if it has no
///         geometry.
MStatus attach_mesh(const char* point, const MObject& object, const MObject& component,
                    MObject& attached);
/// Attaches an iterator to a path, which may end at the shape or at the transform above it. Checks
/// and errors: as for an object.
MStatus attach_mesh(const char* point, const MDagPath& path, const MObject& component,
                    MObject& attached, MDagPath& attached_path);

/// Finds a UV set by name; NULL means the current one.
/// Errors: kInvalidParameter for an unknown name; kFailure if the mesh has no UV sets.
MStatus find_set(const Mesh& mesh, const MString* name, std::uint32_t& set);

/// Computes triangles or normals if they are not cached yet.
MStatus ready_triangles(const Mesh& mesh);
MStatus ready_normals(const Mesh& mesh);

/// Resizes an array; returns false if that failed.
template <class A>
MStatus resize(A& array, std::size_t length) {
    return array.length() == length ? MStatus(MS::kSuccess)
                                    : array.setLength(static_cast<unsigned int>(length));
}

/// Copies ids to a public array.
template <class A>
MStatus copy_ids(const IndexSpan& ids, A& array) {
    const MStatus status = resize(array, ids.size());
    for (std::uint32_t i = 0; status && i < ids.size(); ++i)
        array[i] = static_cast<int>(ids[i]);
    return status;
}

/// Transforms object-space points and normals into the requested space.
class SpaceMap {
public:
    /// Sets `status` to kInvalidParameter if the space requires a path and `path` is invalid.
    SpaceMap(MSpace::Space space, const MDagPath& path, MStatus& status) {
        status = MS::kSuccess;
        if (space == MSpace::kWorld)
            read_world(path, status);
        else if (space <= MSpace::kInvalid || space >= MSpace::kLast)
            status = MS::kInvalidParameter;
    }
    MPoint point(const Float3& p) const {
        const MPoint result(static_cast<double>(p.x), static_cast<double>(p.y),
                            static_cast<double>(p.z));
        return world_ ? result * world_->matrix : result;
    }
    /// Takes and returns unit normals.
    MVector normal(const MVector& n) const { return world_ ? (n * world_->normals).normal() : n; }

private:
    void read_world(const MDagPath& path, MStatus& status);

    struct World {
        MMatrix matrix;
        MMatrix normals; ///< inverse transpose of the transformation
    };
    std::optional<World> world_; ///< empty in object space
};

} // namespace host
