/// Names to things and back, for the commands that work on the scene.
#pragma once

#include "host/graph/scene.h"
#include "host/script/value.h"

#include <string>
#include <vector>

namespace host::script {

/// The one node that a name or path means. Throws ScriptFault "No object matches name: X" or "More
/// than one object matches name: X".
graph::Node& node_named(const std::string& name);

/// What a list of names means, wild cards included; the selection when the list is empty. Throws
/// for a name that matches nothing.
graph::Selection items_named(const StringArray& names);

/// The plug "node.path". A path alone (".tx") is on the node selected last; one that a transform
/// lacks is looked up on its shape. Throws when there is none.
graph::Slot& plug_named(const std::string& name);

/// The same, with ranges: "a.pnts[0:3]" are four plugs. At most 50 million.
std::vector<graph::Slot*> plugs_named(const std::string& name);

/// The shortest name that means a node: "shape" or "group|shape".
std::string name_of(graph::Node& node);
std::string full_name_of(graph::Node& node);
/// "node.longName".
std::string name_of(graph::Slot& plug);

/// Throws ScriptFault with the command's name, what it was about, and the status in words.
void require(MStatus status, const std::string& command, const std::string& about);

/// Applies an edit through the scene; throws as above.
void perform(std::unique_ptr<graph::Edit> edit, const std::string& command,
             const std::string& about);

/// A number, text, vector or matrix that a plug holds, evaluated; angles in degrees. Throws when
/// the plug holds something that scripts cannot see.
Value value_of(graph::Slot& plug);

/// Gives a plug a value as a user does, undoable. Throws when it is locked, connected or of another
/// kind.
void set_plug(graph::Slot& plug, const Value& value, const std::string& command);

} // namespace host::script
