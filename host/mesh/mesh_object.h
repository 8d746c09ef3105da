/// Meshes as host objects: mesh data, which travels along connections, and standalone shape nodes
/// below a transform, for programs and tests that need a DAG path but no scene.
#pragma once

#include "host/mesh/mesh.h"

#include <maya/MDagPath.h>
#include <maya/MMatrix.h>
#include <maya/MObject.h>

namespace host {

/// Creates mesh data. It shares the mesh's storage until either is written.
MHOST_EXPORT MObject make_mesh_data(const Mesh& mesh);
/// Creates mesh data without a mesh.
MHOST_EXPORT MObject make_empty_mesh_data();

/// The mesh of a shape node or mesh data, after evaluation; NULL if it has none or evaluation
/// failed. Valid until the object changes.
MHOST_EXPORT const Mesh* mesh_of(const MObject& object);

/// Creates a top-level transform NAME with this matrix and a shape NAME + "Shape" below it. Returns
/// the path to the shape.
MHOST_EXPORT MDagPath make_mesh_node(const MString& name, const Mesh& mesh,
                                     const MMatrix& matrix = MMatrix());

} // namespace host
