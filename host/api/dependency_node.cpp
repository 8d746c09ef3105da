/// Function sets for nodes, scene side: attributes, plugs, creation, duplication.
#include "host/base/fault.h"
#include "host/base/strictness.h"
#include "host/graph/dag.h"
#include "host/graph/edits.h"
#include "host/graph/undo.h"

#include <maya/MFnDagNode.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MPlugArray.h>

#include <functional>

using host::pass_fault;
using host::Ref;
using host::report;
using host::graph::Attribute;
using host::graph::DagNode;
using host::graph::Node;
using host::graph::NodeTypeRef;
using host::graph::Scene;
using host::graph::Slot;

namespace {

/// The node that a function set is attached to; sets `status` to a failure if there is none.
Node* node_for(const char* point, const MObject& object, MStatus& status) {
    status = pass_fault(point);
    Node* const node = status ? host::graph::node_of(object) : nullptr;
    if (status && node == nullptr)
        status = MS::kFailure;
    return node;
}

MStatus perform(host::graph::EditPtr edit) {
    return Scene::current().perform_api_call(std::move(edit));
}

MObject create(const NodeTypeRef& type, const MString& name, DagNode* parent, MStatus& status) {
    if (!type) {
        status = MS::kInvalidParameter;
        return MObject();
    }
    Scene& scene = Scene::current();
    Ref<Node> transform;
    if (type->shape && parent == nullptr) {
        transform = scene.make_node(scene.find_type("transform"), name.asChar());
        status = perform(host::graph::add_node_edit(*transform, nullptr));
        if (!status)
            return MObject();
        parent = transform->as_dag_node();
    }
    const Ref<Node> node =
        scene.make_node(type, transform ? transform->name_text() + "Shape" : name.asChar());
    status = node ? perform(host::graph::add_node_edit(*node, parent)) : MStatus(MS::kFailure);
    if (!status)
        return MObject();
    return MObject(transform ? transform.get() : node.get());
}

} // namespace

// === MFnDependencyNode =======================================================================

MTypeId MFnDependencyNode::typeId(MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::typeId", object_, status);
    report(ReturnStatus, status);
    return node == nullptr ? MTypeId() : MTypeId(node->node_type().id);
}

MString MFnDependencyNode::setName(const MString& name, MStatus* ReturnStatus) {
    MStatus status;
    Node* const node = node_for("MFnDependencyNode::setName", object_, status);
    if (node != nullptr && (node->locked || node->is_default))
        status = MS::kFailure;
    report(ReturnStatus, status);
    return status ? MString(Scene::current().rename(*node, name.asChar()).c_str()) : MString();
}

MPxNode* MFnDependencyNode::userNode(MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::userNode", object_, status);
    report(ReturnStatus, status);
    return node == nullptr ? NULL : node->user_node();
}

MObject MFnDependencyNode::create(const MString& type, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnDependencyNode::create");
    const MObject made =
        status ? ::create(Scene::current().find_type(type.asChar()), "", nullptr, status)
               : MObject();
    if (report(ReturnStatus, status))
        object_ = made;
    return made;
}

MObject MFnDependencyNode::create(const MTypeId& typeId, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnDependencyNode::create");
    const MObject made =
        status ? ::create(Scene::current().find_type(typeId.id()), "", nullptr, status) : MObject();
    if (report(ReturnStatus, status))
        object_ = made;
    return made;
}

unsigned int MFnDependencyNode::attributeCount(MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::attributeCount", object_, status);
    report(ReturnStatus, status);
    if (node == nullptr)
        return 0;
    return static_cast<unsigned int>(node->node_type().attributes().size() +
                                     node->dynamic_attributes().size());
}

MObject MFnDependencyNode::attribute(unsigned int index, MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::attribute", object_, status);
    if (node != nullptr) {
        const auto& own = node->node_type().attributes();
        const auto& added = node->dynamic_attributes();
        if (index < own.size()) {
            report(ReturnStatus, status);
            return MObject(own[index].get());
        }
        if (index - own.size() < added.size()) {
            report(ReturnStatus, status);
            return MObject(added[index - own.size()].get());
        }
        status = MS::kInvalidParameter;
    }
    report(ReturnStatus, status);
    return MObject();
}

MObject MFnDependencyNode::attribute(const MString& attrName, MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::attribute", object_, status);
    Attribute* const found = node == nullptr ? nullptr : node->find_attribute(attrName.asChar());
    if (status && found == nullptr)
        status = MS::kInvalidParameter;
    report(ReturnStatus, status);
    return MObject(found);
}

bool MFnDependencyNode::hasAttribute(const MString& name, MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::hasAttribute", object_, status);
    report(ReturnStatus, status);
    return node != nullptr && node->find_attribute(name.asChar()) != nullptr;
}

MStatus MFnDependencyNode::addAttribute(const MObject& attribute) {
    MStatus status;
    Node* const node = node_for("MFnDependencyNode::addAttribute", object_, status);
    Attribute* const added = host::graph::attribute_of(attribute);
    if (!status)
        return status;
    return added == nullptr ? MStatus(MS::kInvalidParameter) : node->add_attribute(added);
}

MStatus MFnDependencyNode::removeAttribute(const MObject& attribute) {
    MStatus status;
    Node* const node = node_for("MFnDependencyNode::removeAttribute", object_, status);
    const Attribute* const removed = host::graph::attribute_of(attribute);
    if (!status)
        return status;
    return removed == nullptr ? MStatus(MS::kInvalidParameter) : node->remove_attribute(*removed);
}

MPlug MFnDependencyNode::findPlug(const MString& attrName, bool, MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::findPlug", object_, status);
    Attribute* const found = node == nullptr ? nullptr : node->find_attribute(attrName.asChar());
    if (status && found == nullptr)
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? MPlug(object_, MObject(found)) : MPlug();
}

MPlug MFnDependencyNode::findPlug(const MObject& attribute, bool, MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::findPlug", object_, status);
    const Attribute* const wanted = host::graph::attribute_of(attribute);
    if (status && (wanted == nullptr || !node->owns(*wanted)))
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? MPlug(object_, attribute) : MPlug();
}

MStatus MFnDependencyNode::getConnections(MPlugArray& array) const {
    MStatus status;
    Node* const node = node_for("MFnDependencyNode::getConnections", object_, status);
    if (!status)
        return status;
    array.clear();
    const std::function<void(Slot&)> visit = [&](Slot& slot) {
        if (slot.is_connected())
            array.append(MPlug(&slot));
        for (const auto& below : slot.below())
            visit(*below);
    };
    for (Slot* slot : node->slots())
        visit(*slot);
    return status;
}

bool MFnDependencyNode::isDefaultNode(MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::isDefaultNode", object_, status);
    report(ReturnStatus, status);
    return node != nullptr && node->is_default;
}

bool MFnDependencyNode::isLocked(MStatus* ReturnStatus) const {
    MStatus status;
    const Node* const node = node_for("MFnDependencyNode::isLocked", object_, status);
    report(ReturnStatus, status);
    return node != nullptr && node->locked;
}

bool MFnDependencyNode::isFromReferencedFile(MStatus* ReturnStatus) const {
    MStatus status;
    node_for("MFnDependencyNode::isFromReferencedFile", object_, status);
    report(ReturnStatus, status);
    return false; // this host has no file references
}

MStatus MFnDependencyNode::setLocked(bool locked) {
    MStatus status;
    Node* const node = node_for("MFnDependencyNode::setLocked", object_, status);
    if (status)
        node->locked = locked;
    return status;
}

// === MFnDagNode ==============================================================================

namespace {

DagNode* dag_for(const char* point, const MObject& object, MStatus& status) {
    Node* const node = node_for(point, object, status);
    DagNode* const dag = node == nullptr ? nullptr : node->as_dag_node();
    if (status && dag == nullptr)
        status = MS::kFailure;
    return dag;
}

} // namespace

MString MFnDagNode::partialPathName(MStatus* ReturnStatus) const {
    MStatus status;
    const DagNode* const node = dag_for("MFnDagNode::partialPathName", object_, status);
    report(ReturnStatus, status);
    if (node == nullptr)
        return MString();
    const host::graph::DagPath path = path_.isValid() ? host::graph::to_graph(path_) : node->path();
    return Scene::current().partial_name(path).c_str();
}

MObject MFnDagNode::create(const MString& type, const MString& name, MObject& parent,
                           MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnDagNode::create");
    Node* const above = host::graph::node_of(parent);
    const NodeTypeRef found = Scene::current().find_type(type.asChar());
    if (status && (!found || !found->dag ||
                   (!parent.isNull() && (above == nullptr || above->as_dag_node() == nullptr))))
        status = MS::kInvalidParameter;
    const MObject made =
        status ? ::create(found, name, above == nullptr ? nullptr : above->as_dag_node(), status)
               : MObject();
    if (report(ReturnStatus, status))
        object_ = made;
    return made;
}

MObject MFnDagNode::duplicate(bool instance, bool instanceLeaf, MStatus* ReturnStatus) const {
    MStatus status;
    DagNode* const node = dag_for("MFnDagNode::duplicate", object_, status);
    Scene& scene = Scene::current();
    if (status && instance) {
        // Instancing a transform creates a new transform that shares the original's children.
        const Ref<Node> made = scene.make_node(scene.find_type("transform"), node->name_text());
        DagNode* const shown =
            node->is_shape() && !node->parents().empty() ? node->parents().front() : node;
        status = perform(host::graph::add_node_edit(
            *made, shown->parents().empty() ? nullptr : shown->parents().front()));
        for (size_t i = 0; status && i < shown->children().size(); ++i)
            status =
                perform(host::graph::instance_edit(*shown->children()[i], *made->as_dag_node()));
        report(ReturnStatus, status);
        return status ? MObject(made.get()) : MObject();
    }
    if (status && instanceLeaf)
        status = MS::kNotImplemented;
    std::vector<Scene::Copy> copies;
    if (status)
        status = scene.duplicate(*node, host::is_strict(), copies);
    for (size_t i = 0; status && i < copies.size(); ++i)
        status = perform(host::graph::add_node_edit(*copies[i].node, copies[i].parent));
    report(ReturnStatus, status);
    return status ? MObject(copies.front().node.get()) : MObject();
}

MStatus MFnDagNode::setIntermediateObject(bool isIntermediate) {
    MStatus status;
    DagNode* const node = dag_for("MFnDagNode::setIntermediateObject", object_, status);
    if (!status)
        return status;
    return host::graph::set_value(*node->slot(*host::graph::dag_attributes().intermediate),
                                  host::graph::PlugValue::of_bool(isIntermediate));
}

bool MFnDagNode::isIntermediateObject(MStatus* ReturnStatus) const {
    MStatus status;
    DagNode* const node = dag_for("MFnDagNode::isIntermediateObject", object_, status);
    report(ReturnStatus, status);
    return node != nullptr && node->is_intermediate();
}

bool MFnDagNode::hasParent(const MObject& node, MStatus* ReturnStatus) const {
    MStatus status;
    const DagNode* const self = dag_for("MFnDagNode::hasParent", object_, status);
    report(ReturnStatus, status);
    for (unsigned int i = 0; self != nullptr && i < self->parent_count(); ++i)
        if (self->parent(i) == node)
            return true;
    return false;
}

bool MFnDagNode::hasChild(const MObject& node, MStatus* ReturnStatus) const {
    MStatus status;
    const DagNode* const self = dag_for("MFnDagNode::hasChild", object_, status);
    report(ReturnStatus, status);
    for (unsigned int i = 0; self != nullptr && i < self->child_count(); ++i)
        if (self->child(i) == node)
            return true;
    return false;
}

bool MFnDagNode::isInstanced(bool indirect, MStatus* ReturnStatus) const {
    MStatus status;
    const DagNode* const self = dag_for("MFnDagNode::isInstanced", object_, status);
    report(ReturnStatus, status);
    if (self == nullptr)
        return false;
    return indirect ? self->all_paths().size() > 1 : self->parent_count() > 1;
}

// === MDagPath: methods that need the scene ===================================================

MDagPath::MDagPath(const std::vector<MObject>& nodes) : nodes_(nodes) {}

MString MDagPath::partialPathName(MStatus* ReturnStatus) const {
    report(ReturnStatus, nodes_.empty() ? MS::kInvalidParameter : MS::kSuccess);
    const host::graph::DagPath path = host::graph::to_graph(*this);
    return path.empty() ? fullPathName() : MString(Scene::current().partial_name(path).c_str());
}
