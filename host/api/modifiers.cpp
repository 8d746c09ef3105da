/// MDGModifier and MDagModifier: recording edits and applying them.
#include "host/base/fault.h"
#include "host/graph/modifier.h"
#include "host/graph/script_host.h"
#include "host/graph/undo.h"

#include <maya/MDGModifier.h>
#include <maya/MDagModifier.h>

using host::pass_fault;
using host::Ref;
using host::report;
using host::graph::DagNode;
using host::graph::Edit;
using host::graph::EditPtr;
using host::graph::Modifier;
using host::graph::Node;
using host::graph::NodeTypeRef;
using host::graph::PlugValue;
using host::graph::Scene;
using host::graph::Slot;

namespace {

/// Runs script statements; undo reverts the edits that they recorded.
class RunCommand : public Edit {
public:
    explicit RunCommand(const MString& text) : text_(text.asChar()) {}

    MStatus redo() override {
        if (host::graph::script_host() == nullptr)
            return MS::kFailure;
        auto& queue = host::graph::UndoQueue::current();
        host::graph::CommandResult ignored;
        queue.open(text_);
        const MStatus status = host::graph::script_host()->execute(text_, false, true, ignored);
        edits_ = queue.take();
        return status;
    }
    MStatus undo() override {
        MStatus status;
        for (auto edit = edits_.rbegin(); edit != edits_.rend(); ++edit) {
            const MStatus one = (*edit)->undo();
            status = status ? one : status;
        }
        return status;
    }

private:
    std::string text_;
    std::vector<EditPtr> edits_;
};

/// Creates a node and records an edit that adds it to the scene.
MObject create(Modifier& modifier, const NodeTypeRef& type, DagNode* parent, MStatus& status) {
    const Ref<Node> node = Scene::current().make_node(type);
    if (!node) {
        status = MS::kFailure;
        return MObject();
    }
    modifier.record(host::graph::add_node_edit(*node, parent));
    return MObject(node.get());
}

MObject create_plain(const char* point, Modifier& modifier, const NodeTypeRef& type, MStatus* out) {
    MStatus status = pass_fault(point);
    if (status && (!type || type->dag))
        status = MS::kInvalidParameter;
    const MObject node = status ? create(modifier, type, nullptr, status) : MObject();
    report(out, status);
    return node;
}

} // namespace

MDGModifier::MDGModifier() : modifier_(std::make_shared<Modifier>()) {}
MDGModifier::~MDGModifier() = default;

MObject MDGModifier::createNode(const MTypeId& typeId, MStatus* ReturnStatus) {
    return create_plain("MDGModifier::createNode", *modifier_,
                        Scene::current().find_type(typeId.id()), ReturnStatus);
}

MObject MDGModifier::createNode(const MString& type, MStatus* ReturnStatus) {
    return create_plain("MDGModifier::createNode", *modifier_,
                        Scene::current().find_type(type.asChar()), ReturnStatus);
}

MStatus MDGModifier::deleteNode(const MObject& node) {
    const MStatus status = pass_fault("MDGModifier::deleteNode");
    Node* const wanted = host::graph::node_of(node);
    if (!status)
        return status;
    if (wanted == nullptr)
        return MS::kInvalidParameter;
    modifier_->record(host::graph::remove_node_edit(*wanted));
    return status;
}

MStatus MDGModifier::renameNode(const MObject& node, const MString& newName) {
    const MStatus status = pass_fault("MDGModifier::renameNode");
    Node* const wanted = host::graph::node_of(node);
    if (!status)
        return status;
    if (wanted == nullptr)
        return MS::kInvalidParameter;
    modifier_->record(host::graph::rename_edit(*wanted, newName.asChar()));
    return status;
}

MStatus MDGModifier::connect(const MPlug& source, const MPlug& dest) {
    const MStatus status = pass_fault("MDGModifier::connect");
    if (!status)
        return status;
    if (source.host_slot() == NULL || dest.host_slot() == NULL)
        return MS::kInvalidParameter;
    modifier_->record(host::graph::connect_edit(*source.host_slot(), *dest.host_slot(), true));
    return status;
}

MStatus MDGModifier::connect(const MObject& sourceNode, const MObject& sourceAttr,
                             const MObject& destNode, const MObject& destAttr) {
    return connect(MPlug(sourceNode, sourceAttr), MPlug(destNode, destAttr));
}

MStatus MDGModifier::disconnect(const MPlug& source, const MPlug& dest) {
    const MStatus status = pass_fault("MDGModifier::disconnect");
    if (!status)
        return status;
    if (source.host_slot() == NULL || dest.host_slot() == NULL)
        return MS::kInvalidParameter;
    modifier_->record(host::graph::disconnect_edit(*source.host_slot(), *dest.host_slot()));
    return status;
}

MStatus MDGModifier::disconnect(const MObject& sourceNode, const MObject& sourceAttr,
                                const MObject& destNode, const MObject& destAttr) {
    return disconnect(MPlug(sourceNode, sourceAttr), MPlug(destNode, destAttr));
}

MStatus MDGModifier::addAttribute(const MObject& node, const MObject& attribute) {
    Node* const owner = host::graph::node_of(node);
    host::graph::Attribute* const added = host::graph::attribute_of(attribute);
    if (owner == nullptr || added == nullptr)
        return MS::kInvalidParameter;
    modifier_->record(host::graph::add_attribute_edit(*owner, added));
    return MS::kSuccess;
}

MStatus MDGModifier::removeAttribute(const MObject& node, const MObject& attribute) {
    Node* const owner = host::graph::node_of(node);
    host::graph::Attribute* const removed = host::graph::attribute_of(attribute);
    if (owner == nullptr || removed == nullptr)
        return MS::kInvalidParameter;
    modifier_->record(host::graph::remove_attribute_edit(*owner, removed));
    return MS::kSuccess;
}

namespace {

MStatus record_value(Modifier& modifier, const MPlug& plug, const PlugValue& value) {
    const MStatus status = pass_fault("MDGModifier::newPlugValue");
    if (!status)
        return status;
    if (plug.host_slot() == NULL)
        return MS::kInvalidParameter;
    modifier.record(host::graph::set_value_edit(*plug.host_slot(), value));
    return status;
}

} // namespace

MStatus MDGModifier::newPlugValue(const MPlug& plug, MObject& value) {
    return record_value(*modifier_, plug, PlugValue::of_data(value.host_object()).deep_copy());
}
MStatus MDGModifier::newPlugValueDouble(const MPlug& plug, double value) {
    return record_value(*modifier_, plug, PlugValue::of_double(value));
}
MStatus MDGModifier::newPlugValueFloat(const MPlug& plug, float value) {
    return record_value(*modifier_, plug, PlugValue::of_float(value));
}
MStatus MDGModifier::newPlugValueInt(const MPlug& plug, int value) {
    return record_value(*modifier_, plug, PlugValue::of_int(value));
}
MStatus MDGModifier::newPlugValueBool(const MPlug& plug, bool value) {
    return record_value(*modifier_, plug, PlugValue::of_bool(value));
}
MStatus MDGModifier::newPlugValueString(const MPlug& plug, const MString& value) {
    return record_value(*modifier_, plug, PlugValue::of_text(value));
}

MStatus MDGModifier::commandToExecute(const MString& command) {
    const MStatus status = pass_fault("MDGModifier::commandToExecute");
    if (status)
        modifier_->record(std::make_unique<RunCommand>(command));
    return status;
}

MStatus MDGModifier::doIt() {
    const MStatus status = pass_fault("MDGModifier::doIt");
    return status ? modifier_->redo() : status;
}

MStatus MDGModifier::undoIt() {
    const MStatus status = pass_fault("MDGModifier::undoIt");
    return status ? modifier_->undo() : status;
}

// === MDagModifier ============================================================================

MDagModifier::MDagModifier() = default;
MDagModifier::~MDagModifier() = default;

namespace {

MObject create_dag(Modifier& modifier, const NodeTypeRef& type, const MObject& parent,
                   MStatus* out) {
    MStatus status = pass_fault("MDagModifier::createNode");
    Node* const above = host::graph::node_of(parent);
    if (status && (!type || !type->dag ||
                   (!parent.isNull() && (above == nullptr || above->as_dag_node() == nullptr))))
        status = MS::kInvalidParameter;
    if (!status) {
        report(out, status);
        return MObject();
    }
    DagNode* below = above == nullptr ? nullptr : above->as_dag_node();
    MObject transform;
    if (type->shape && below == nullptr) {
        transform = create(modifier, Scene::current().find_type("transform"), nullptr, status);
        below = host::graph::node_of(transform)->as_dag_node();
    }
    const MObject node = create(modifier, type, below, status);
    report(out, status);
    return transform.isNull() ? node : transform;
}

} // namespace

MObject MDagModifier::createNode(const MString& type, const MObject& parent,
                                 MStatus* ReturnStatus) {
    return create_dag(*modifier_, Scene::current().find_type(type.asChar()), parent, ReturnStatus);
}

MObject MDagModifier::createNode(const MTypeId& typeId, const MObject& parent,
                                 MStatus* ReturnStatus) {
    return create_dag(*modifier_, Scene::current().find_type(typeId.id()), parent, ReturnStatus);
}

MStatus MDagModifier::reparentNode(const MObject& node, const MObject& newParent) {
    const MStatus status = pass_fault("MDagModifier::reparentNode");
    if (!status)
        return status;
    Node* const moved = host::graph::node_of(node);
    Node* const parent = host::graph::node_of(newParent);
    if (moved == nullptr || moved->as_dag_node() == nullptr ||
        (!newParent.isNull() && (parent == nullptr || parent->as_dag_node() == nullptr)))
        return MS::kInvalidParameter;
    modifier_->record(host::graph::reparent_edit(
        *moved->as_dag_node(), parent == nullptr ? nullptr : parent->as_dag_node()));
    return status;
}
