/// The scene's visible meshes in world space.
#pragma once

#include "host/graph/mesh_node.h"
#include "host/view/cameras.h"

#include <vector>

namespace host {

/// One path to a visible mesh; an instanced shape occurs once per path.
struct VisibleShape {
    graph::DagPath path;
    MMatrix to_world;
    graph::MeshNode* node = nullptr;
    bool is_selected = false; ///< the shape or one of its parents, not components of it
};

/// Every mesh that is neither intermediate nor hidden, itself or by a parent, in DAG order.
std::vector<VisibleShape> visible_shapes();

/// Bounds of a mesh in object space.
Bounds bounds_of(const Mesh& mesh);

/// Calls `sink` for every vertex of the visible meshes, in world space; if `only_selected` and
/// something is selected, only for vertices of selected shapes and components. Evaluates the
/// meshes.
void visit_scene_points(bool only_selected, const PointSink& sink);
/// visit_scene_points as a point source for frame_points.
PointSource scene_points(bool only_selected);

} // namespace host
