/// Scenes in the host's ASCII format. Nodes are saved with their construction history. Statements
/// that the host cannot interpret are kept as text and written back on saving.
#pragma once

#include "host/graph/node.h"
#include "host/script/interpreter.h"

#include <string>
#include <utility>
#include <vector>

namespace host {

/// Statements of the scene file that the host cannot interpret, as text: nodes of unknown types,
/// attributes that nodes here lack, connections to either, missing plug-ins.
struct MHOST_EXPORT SceneNotes {
    /// The notes of the current scene.
    static SceneNotes& current();

    /// createNode or select statements, each with the statements about that node, in file order.
    std::vector<std::string> unknown_nodes;
    /// Statements about unknown attributes of a node that exists.
    std::vector<std::pair<Ref<graph::Node>, std::string>> unknown_settings;
    /// Failed connectAttr and parent statements, and every statement of an unknown command.
    std::vector<std::string> unknown_connections;
    std::vector<std::string> requirements; ///< `requires` of plug-ins that could not be loaded
    std::vector<std::pair<std::string, std::string>> file_info;

    void clear() { *this = SceneNotes(); }
};

/// Adds the nodes of a scene text to the current scene, which the caller empties first to open a
/// file. Nodes whose names are taken get new ones. Tries to load the plug-ins that the file
/// requires. The whole text is parsed first: a syntax error changes nothing.
/// Errors: script::ScriptError with file, line and column. Unknown nodes, attributes and plug-ins
///         cause at most a warning.
MHOST_EXPORT void read_scene(const std::string& text, const std::string& file,
                             script::Interpreter& interpreter);

/// Returns the scene as text with `name` in its header. Equal scenes give equal bytes.
MHOST_EXPORT std::string write_scene(const std::string& name);

} // namespace host
