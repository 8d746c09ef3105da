/// What the history nodes of UVs have in common: a mesh in, a change of one of its UV sets, a mesh
/// out.
#pragma once

#include "host/graph/evaluate.h"
#include "host/graph/scene.h"
#include "host/mesh/mesh.h"

#include <string>
#include <vector>

namespace host::graph {

/// Values of attributes, evaluated.
double number_in(Node& node, const char* attribute);
std::string text_in(Node& node, const char* attribute);

/// What a type does to a UV set of the mesh that comes in.
using UvChange = void (*)(Node& node, Mesh& mesh, std::uint32_t set);
/// What a node does if the mesh lacks the set that it works on.
enum class MissingSet { passes_through, makes_it };

/// Computes `output` from the node's inputPolymesh by a change of the set uvSetName, by default the
/// current one. A node without effect (nodeState 1) passes its mesh on.
MStatus compute_uvs(Node& node, Slot& output, UvChange change, MissingSet missing);

/// The function that computes nodes of a type.
template <UvChange Change, MissingSet Missing = MissingSet::passes_through>
MStatus change_of_uvs(Node& node, Slot& output) {
    return compute_uvs(node, output, Change, Missing);
}

/// An attribute of such a type; `value`: the default of a number.
Ref<Attribute> uv_setting(const char* long_name, const char* short_name, AttributeKind kind,
                          double value = 0.0);

/// Adds a type with inputPolymesh, output and uvSetName, and more settings, which affect output.
void add_uv_type(Scene& scene, const char* name, unsigned int id, MStatus (*compute)(Node&, Slot&),
                 const std::vector<Ref<Attribute>>& settings);

} // namespace host::graph
