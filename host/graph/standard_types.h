/// The built-in node types.
#pragma once

#include "host/graph/scene.h"

namespace host::graph {

inline constexpr double k_degree = 3.14159265358979323846 / 180.0;

/// Adds transform, mesh, camera, polyTweak and the creators of primitives. Called once by the
/// scene.
void add_standard_types(Scene& scene);

void add_dag_types(Scene& scene);
void add_mesh_types(Scene& scene);
void add_primitive_types(Scene& scene);
void add_uv_types(Scene& scene);

/// The ids in a text such as "e[3] e[5:8]" that are below `count`.
std::vector<std::uint32_t> ids_in_text(const std::string& text, std::uint32_t count);

} // namespace host::graph
