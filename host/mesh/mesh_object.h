/// Meshes as objects of the host: mesh data, which travels through connections, and a plain shape
/// node below a transform, for programs and tests that need a path without a scene.
#pragma once

#include "host/mesh/mesh.h"

#include <maya/MDagPath.h>
#include <maya/MMatrix.h>
#include <maya/MObject.h>

namespace host {

/// Mesh data around a mesh. The object shares the mesh's storage until one of them is written.
MHOST_EXPORT MObject make_mesh_data(const Mesh& mesh);
/// Mesh data that holds no mesh yet.
MHOST_EXPORT MObject make_empty_mesh_data();

/// What a shape node or mesh data holds, brought up to date first; NULL when it holds none or its
/// evaluation failed. Valid until the object changes.
MHOST_EXPORT const Mesh* mesh_of(const MObject& object);

/// A shape named NAME + "Shape" below a transform NAME with this matrix, at the top level.
/// Returns the path to the shape.
MHOST_EXPORT MDagPath make_mesh_node(const MString& name, const Mesh& mesh,
                                     const MMatrix& matrix = MMatrix());

} // namespace host
