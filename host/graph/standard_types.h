/// The built-in node types.
#pragma once

#include "host/graph/scene.h"

namespace host::graph {

inline constexpr double k_degree = 3.14159265358979323846 / 180.0;

/// Adds transform, mesh, camera, polyTweak, the creators of primitives and the history nodes of
/// UVs. Called once by the scene.
void add_standard_types(Scene& scene);

void add_dag_types(Scene& scene);
void add_mesh_types(Scene& scene);
void add_primitive_types(Scene& scene);
void add_uv_types(Scene& scene);
void add_layout_type(Scene& scene);

} // namespace host::graph
