/// Changes of the scene that can be taken back. Graph modifiers record them, the undo queue keeps
/// them, script commands perform them: there is one implementation of every change.
///
/// An edit is made unapplied; then `redo` and `undo` alternate, `redo` first. An edit whose redo
/// failed changed nothing. Edits keep the nodes they speak of alive.
#pragma once

#include "host/graph/scene.h"

#include <functional>
#include <memory>
#include <optional>

namespace host::graph {

class MHOST_EXPORT Edit {
public:
    Edit() = default;
    Edit(const Edit&) = delete;
    Edit& operator=(const Edit&) = delete;
    virtual ~Edit();
    virtual MStatus redo() = 0;
    virtual MStatus undo() = 0;
};
using EditPtr = std::unique_ptr<Edit>;

/// The node enters the scene, below `parent` when it is a DAG node that has one. Its name is made
/// unique at that moment.
MHOST_EXPORT EditPtr add_node_edit(Node& node, DagNode* parent);
/// The node leaves the scene with everything below it; connections go with it and come back.
MHOST_EXPORT EditPtr remove_node_edit(Node& node);
/// `retain`: after undo the destination keeps what came through the connection, as the graph
/// modifiers have it. Otherwise undo brings its former value back.
MHOST_EXPORT EditPtr connect_edit(Slot& source, Slot& destination, bool retain);
MHOST_EXPORT EditPtr disconnect_edit(Slot& source, Slot& destination);
MHOST_EXPORT EditPtr set_value_edit(Slot& slot, const Value& value);
/// Any change of one slot's values and of nothing else, with the state before it kept.
MHOST_EXPORT EditPtr change_slot_edit(Slot& slot, std::function<MStatus(Slot&)> change);
MHOST_EXPORT EditPtr rename_edit(Node& node, const std::string& name);
/// NULL: to the top level. Below a node itself or one of its descendants it fails.
MHOST_EXPORT EditPtr reparent_edit(DagNode& node, DagNode* parent);
/// A further way to the node: an instance.
MHOST_EXPORT EditPtr instance_edit(DagNode& node, DagNode& parent);
MHOST_EXPORT EditPtr add_attribute_edit(Node& node, const Ref<Attribute>& attribute);
MHOST_EXPORT EditPtr remove_attribute_edit(Node& node, const Ref<Attribute>& attribute);
/// Locked, keyable and channel box marks of a plug.
enum class PlugMark { locked, keyable, channel_box };
MHOST_EXPORT EditPtr mark_edit(Slot& slot, PlugMark mark, bool on);
MHOST_EXPORT EditPtr select_edit(const Selection& selection);

} // namespace host::graph
