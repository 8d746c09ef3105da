/// The meshes of the scene as a camera sees them.
#pragma once

#include "host/graph/mesh_node.h"
#include "host/view/cameras.h"

#include <vector>

namespace host {

/// One way to a visible mesh; an instanced shape is there once per way.
struct VisibleShape {
    graph::DagPath path;
    MMatrix to_world;
    graph::MeshNode* node = nullptr;
    bool is_selected = false; ///< as a whole: it, or something above it
};

/// Every mesh that is not hidden, by itself or from above, in the order of the hierarchy.
/// Intermediate shapes are not shown.
std::vector<VisibleShape> visible_shapes();

/// The box about a mesh, in its own space.
Bounds bounds_of(const Mesh& mesh);

/// Calls `sink` for every vertex of the visible meshes in world space, or for those of what is
/// selected: shapes, and the vertices of components. `only_selected` with nothing selected means
/// everything. Brings the meshes up to date.
void visit_scene_points(bool only_selected, const PointSink& sink);
/// The same, as something to frame.
PointSource scene_points(bool only_selected);

} // namespace host
