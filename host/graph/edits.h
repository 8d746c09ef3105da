/// Undoable changes of the scene. Graph modifiers, the undo queue and script commands all make
/// their changes through these edits, so every kind of change is implemented once.
///
/// A new edit has not been applied yet: the first call is `redo`, then `undo` and `redo` alternate.
/// An edit whose `redo` fails changes nothing. Edits keep the nodes they refer to alive.
#pragma once

#include "host/graph/scene.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace host::graph {

class MHOST_EXPORT Edit {
public:
    Edit() = default;
    Edit(const Edit&) = delete;
    Edit& operator=(const Edit&) = delete;
    virtual ~Edit();
    virtual MStatus redo() = 0;
    virtual MStatus undo() = 0;
    /// Whether the edit changes what a saved scene contains; selecting does not.
    virtual bool changes_scene() const { return true; }
};
using EditPtr = std::unique_ptr<Edit>;

/// Adds a node to the scene, a DAG node below `parent` (NULL: at the top level). If the name is
/// taken at that moment, the node gets a unique one.
MHOST_EXPORT EditPtr add_node_edit(Node& node, DagNode* parent);
/// Removes a node and everything below it, with its connections; undo restores both.
MHOST_EXPORT EditPtr remove_node_edit(Node& node);
/// `retain`: whether, after undo, the destination keeps the value that came through the connection
/// (as undo of a graph modifier does) or gets back the value it had before.
MHOST_EXPORT EditPtr connect_edit(Slot& source, Slot& destination, bool retain);
MHOST_EXPORT EditPtr disconnect_edit(Slot& source, Slot& destination);
MHOST_EXPORT EditPtr set_value_edit(Slot& slot, const PlugValue& value);
/// Any change that affects the values of one slot only. The slot's previous state is saved and
/// restored on undo.
MHOST_EXPORT EditPtr change_slot_edit(Slot& slot, std::function<MStatus(Slot&)> change);
MHOST_EXPORT EditPtr rename_edit(Node& node, const std::string& name);
/// NULL moves the node to the top level. Fails if `parent` is the node itself or below it.
MHOST_EXPORT EditPtr reparent_edit(DagNode& node, DagNode* parent);
/// Makes `node` an additional child of `parent`: an instance.
MHOST_EXPORT EditPtr instance_edit(DagNode& node, DagNode& parent);
MHOST_EXPORT EditPtr add_attribute_edit(Node& node, const Ref<Attribute>& attribute);
MHOST_EXPORT EditPtr remove_attribute_edit(Node& node, const Ref<Attribute>& attribute);
/// Two edits, to be performed before and after changes of the history above a computed plug. After
/// undo the plug has the value of before the changes, after redo the one of after them, each
/// without being computed: for nodes that compute only when they are asked to. The node's numbers
/// that affect nothing, which are results, too, are kept like the plug.
MHOST_EXPORT std::pair<EditPtr, EditPtr> keep_results_edits(Slot& output);
/// Properties of a plug that are not part of its value.
enum class PlugMark { locked, keyable, channel_box };
MHOST_EXPORT EditPtr mark_edit(Slot& slot, PlugMark mark, bool on);
MHOST_EXPORT EditPtr select_edit(const Selection& selection);

} // namespace host::graph
