/// Which edges of a mesh are meant by a place on the screen, a lasso, or two edges.
#pragma once

#include "host/mesh/mesh.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace window {

struct ScreenPoint {
    double x = 0.0, y = 0.0;
};

/// Takes a point in object space to the screen; false if it lies behind the camera.
using Projection = std::function<bool(const host::Float3& point, ScreenPoint& place)>;

/// The edge of a polygon that comes nearest to a place on the screen; k_none if all of them lie
/// behind the camera.
uint32_t nearest_edge(const host::Mesh& mesh, uint32_t polygon, const Projection& project,
                      const ScreenPoint& place);

/// The edges whose middle lies inside of a closed line, even-odd, and is visible. Ascending.
/// `is_visible` is asked for points in object space that lie inside.
/// Cost: O(edges * corners of the lasso).
std::vector<uint32_t> edges_inside(const host::Mesh& mesh, const Projection& project,
                                   const std::vector<ScreenPoint>& lasso,
                                   const std::function<bool(const host::Float3&)>& is_visible);

/// The edges of the shortest way from one edge to another, both included; only these two if they
/// are not connected.
std::vector<uint32_t> path_between(const host::Mesh& mesh, uint32_t from, uint32_t to);

/// The edges of the seam that an edge lies on, ascending: up to where the seam ends, meets others
/// or the border of the mesh. Empty if the UVs are not cut along the edge. `uv_set`: -1 if none.
std::vector<uint32_t> seam_through(const host::Mesh& mesh, int uv_set, uint32_t edge);

} // namespace window
