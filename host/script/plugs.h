/// Looks up nodes and plugs by name, and names by node or plug, for commands that work on the
/// scene.
#pragma once

#include "host/graph/scene.h"
#include "host/script/value.h"

#include <string>
#include <vector>

namespace host::script {

/// Returns the node with a name or path. Throws ScriptFault "No object matches name: X" or "More
/// than one object matches name: X".
graph::Node& node_named(const std::string& name);

/// Resolves a list of names with wildcards; the selection if the list is empty. Throws ScriptFault
/// for a name without a match.
MHOST_EXPORT graph::Selection items_named(const StringArray& names);

/// Returns the plug "node.path". Without a node (".tx") it is on the node selected last; if a
/// transform lacks the attribute, it is looked up on its shapes. Throws ScriptFault if not found.
graph::Slot& plug_named(const std::string& name);

/// Returns the plugs of a name with index ranges: "a.pnts[0:3]" is four plugs. At most 50 million.
std::vector<graph::Slot*> plugs_named(const std::string& name);

/// The shortest unique name of a node: "shape" or "group|shape".
std::string name_of(graph::Node& node);
std::string full_name_of(graph::Node& node);
/// "node.longName".
std::string name_of(graph::Slot& plug);

/// Throws ScriptFault "COMMAND: ABOUT: error text of the status" unless the status is success.
MHOST_EXPORT void require(MStatus status, const std::string& command, const std::string& about);

/// Applies an edit to the scene, undoable. Throws as `require` does.
void perform(std::unique_ptr<graph::Edit> edit, const std::string& command,
             const std::string& about);

/// Evaluates a plug and returns its number, text, vector or matrix; angles in degrees. Throws
/// ScriptFault for types that the script language lacks.
Value value_of(graph::Slot& plug);

/// Sets the value of a plug, undoable; angles in degrees. Throws ScriptFault if the plug is locked,
/// connected or of another type.
void set_plug(graph::Slot& plug, const Value& value, const std::string& command);

} // namespace host::script
