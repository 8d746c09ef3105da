/// Meshes as commands name them, and changes of their construction history.
#pragma once

#include "host/graph/mesh_node.h"
#include "host/graph/selection.h"
#include "host/mesh/mesh.h"
#include "host/script/flags.h"

#include <functional>
#include <string>
#include <vector>

namespace host::script {

/// The mesh shape of an item: the node itself, the shape below a transform, or the shape whose
/// components it names. Throws ScriptFault if there is none.
MHOST_EXPORT graph::MeshNode& mesh_shape(const graph::SelectionItem& item,
                                         const std::string& command);
/// The shape that all items belong to. Throws ScriptFault if there are several or none.
MHOST_EXPORT graph::MeshNode& only_mesh_shape(const graph::Selection& items,
                                              const std::string& command);
/// The evaluated mesh of a shape. Throws ScriptFault if it holds none.
MHOST_EXPORT const Mesh& mesh_of(graph::MeshNode& shape, const std::string& command);

/// Whether a change of the shape is to be a node of its history: it has one, or history is recorded
/// and the flag -constructionHistory does not say otherwise.
MHOST_EXPORT bool makes_history(graph::MeshNode& shape, const Flags& flags);

/// Inserts a node of a type with inputPolymesh and output into the history of a shape, undoable: at
/// the end or, if given, before a node that is there. A shape without history gets a hidden copy of
/// its mesh as the source. Throws ScriptFault if `before` is not in the history.
MHOST_EXPORT graph::Node& insert_history_node(graph::MeshNode& shape, const std::string& type,
                                              const std::string& name, graph::Node* before,
                                              const std::string& command);
/// The last node of the history of a shape; null if it has none.
MHOST_EXPORT graph::Node* last_history_node(graph::MeshNode& shape);

/// The mesh that enters a node of the history of a shape, evaluated. Throws ScriptFault if the node
/// is not in the history, or no mesh enters it.
const Mesh& mesh_before(graph::MeshNode& shape, graph::Node& node, const std::string& command);
/// The plug that a node computes a mesh in. Throws ScriptFault if there is none.
graph::Slot& mesh_output(graph::Node& node, const std::string& command);

/// Sets an attribute of a node, undoable. The plug must exist.
MHOST_EXPORT void set_attribute(graph::Node& node, const char* attribute,
                                const graph::PlugValue& value, const std::string& command);

/// Changes the mesh of a shape without history, undoable.
MHOST_EXPORT void change_mesh(graph::MeshNode& shape, const std::string& command,
                              const std::function<void(Mesh&)>& change);
/// Replaces the mesh of a shape without history, undoable.
void put_mesh(graph::MeshNode& shape, const Mesh& mesh, const std::string& command);

/// The UV set that the flag -uvSetName names, by default the current one. Throws ScriptFault if the
/// mesh does not have it, or has none.
MHOST_EXPORT std::uint32_t uv_set_of(const Flags& flags, const Mesh& mesh,
                                     const std::string& command);

/// Ids of components of a mesh, ascending, converted from whatever components or objects the items
/// name. `set`: for UVs.
MHOST_EXPORT std::vector<std::uint32_t> components_of(const graph::Selection& items,
                                                      graph::ComponentKind kind, const Mesh& mesh,
                                                      std::uint32_t set);

} // namespace host::script
