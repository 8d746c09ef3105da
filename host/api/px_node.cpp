/// MPxNode.
#include "host/base/fault.h"
#include "host/graph/registration.h"

#include <maya/MPlugArray.h>
#include <maya/MPxNode.h>

using host::pass_fault;
using host::graph::Attribute;
using host::graph::Node;
using host::graph::NodeType;

MObject MPxNode::message(host::graph::base_attributes().message.get());
MObject MPxNode::caching(host::graph::base_attributes().caching.get());
MObject MPxNode::state(host::graph::base_attributes().state.get());
MObject MPxNode::isHistoricallyInteresting(
    host::graph::base_attributes().is_historically_interesting.get());

MPxNode::MPxNode() : node_(NULL) {}
MPxNode::~MPxNode() = default;

void MPxNode::postConstructor() {}
MStatus MPxNode::compute(const MPlug&, MDataBlock&) { return MS::kUnknownParameter; }
MStatus MPxNode::setDependentsDirty(const MPlug&, MPlugArray&) { return MS::kSuccess; }
MStatus MPxNode::connectionMade(const MPlug&, const MPlug&, bool) { return MS::kUnknownParameter; }
MStatus MPxNode::connectionBroken(const MPlug&, const MPlug&, bool) {
    return MS::kUnknownParameter;
}
MPxNode::Type MPxNode::type() const { return kDependNode; }
bool MPxNode::isAbstractClass() const { return false; }

namespace {

const Node* node_behind(host::Object* object) { return static_cast<const Node*>(object); }

} // namespace

MObject MPxNode::thisMObject() const { return MObject(node_); }

MTypeId MPxNode::typeId() const {
    return node_ == NULL ? MTypeId() : MTypeId(node_behind(node_)->node_type().id);
}
MString MPxNode::typeName() const {
    return node_ == NULL ? MString() : node_behind(node_)->type_name();
}
MString MPxNode::name() const { return node_ == NULL ? MString() : node_behind(node_)->name(); }

MDataBlock MPxNode::forceCache(MDGContext&) { return forceCache(); }
MDataBlock MPxNode::forceCache() { return MDataBlock(thisMObject()); }

MStatus MPxNode::addAttribute(const MObject& attribute) {
    const MStatus status = pass_fault("MPxNode::addAttribute");
    if (!status)
        return status;
    NodeType* const type = host::graph::type_being_registered();
    Attribute* const added = host::graph::attribute_of(attribute);
    if (type == NULL)
        return MS::kFailure;
    return added == NULL ? MStatus(MS::kInvalidParameter) : type->add(added);
}

MStatus MPxNode::attributeAffects(const MObject& whenChanges, const MObject& isAffected) {
    const MStatus status = pass_fault("MPxNode::attributeAffects");
    if (!status)
        return status;
    NodeType* const type = host::graph::type_being_registered();
    const Attribute* const changed = host::graph::attribute_of(whenChanges);
    Attribute* const affected = host::graph::attribute_of(isAffected);
    if (type == NULL)
        return MS::kFailure;
    if (changed == NULL || affected == NULL)
        return MS::kInvalidParameter;
    return type->affects(*changed, *affected);
}

MStatus MPxNode::inheritAttributesFrom(const MString& parentClassName) {
    const MStatus status = pass_fault("MPxNode::inheritAttributesFrom");
    if (!status)
        return status;
    NodeType* const type = host::graph::type_being_registered();
    const host::graph::NodeTypeRef parent =
        host::graph::Scene::current().find_type(parentClassName.asChar());
    if (type == NULL)
        return MS::kFailure;
    return parent ? type->inherit(*parent) : MStatus(MS::kInvalidParameter);
}
