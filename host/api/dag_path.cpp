#include "host/base/fault.h"
#include "host/base/object.h"

#include <maya/MDagPath.h>

#include <algorithm>
#include <string>

using host::dag_face;
using host::pass_fault;
using host::report;

MDagPath::MDagPath() = default;
MDagPath::MDagPath(const MDagPath& other) = default;
MDagPath& MDagPath::operator=(const MDagPath& other) = default;
MDagPath::~MDagPath() = default;

bool MDagPath::isValid(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return !nodes_.empty();
}

MFn::Type MDagPath::apiType(MStatus* ReturnStatus) const { return node(ReturnStatus).apiType(); }

bool MDagPath::hasFn(MFn::Type type, MStatus* ReturnStatus) const {
    return node(ReturnStatus).hasFn(type);
}

MObject MDagPath::node(MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MDagPath::node");
    if (status && nodes_.empty())
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? nodes_.back() : MObject();
}

MObject MDagPath::transform(MStatus* ReturnStatus) const {
    const auto found = std::find_if(nodes_.rbegin(), nodes_.rend(), [](const MObject& node) {
        return node.hasFn(MFn::kTransform);
    });
    const bool is_there = found != nodes_.rend();
    report(ReturnStatus, is_there ? MS::kSuccess : MS::kFailure);
    return is_there ? *found : MObject();
}

unsigned int MDagPath::length(MStatus* ReturnStatus) const {
    report(ReturnStatus, nodes_.empty() ? MS::kInvalidParameter : MS::kSuccess);
    return static_cast<unsigned int>(nodes_.size());
}

MStatus MDagPath::numberOfShapesDirectlyBelow(unsigned int& count) const {
    if (nodes_.empty())
        return MS::kInvalidParameter;
    count = 0;
    for (unsigned int i = 0; i < childCount(); ++i)
        count += child(i).hasFn(MFn::kShape) ? 1 : 0;
    return MS::kSuccess;
}

MStatus MDagPath::extendToShapeDirectlyBelow(unsigned int index) {
    const MStatus fault = pass_fault("MDagPath::extendToShape");
    if (fault.error())
        return fault;
    if (nodes_.empty())
        return MS::kInvalidParameter;
    unsigned int shapes = 0;
    for (unsigned int i = 0; i < childCount(); ++i) {
        const MObject candidate = child(i);
        if (candidate.hasFn(MFn::kShape) && shapes++ == index) {
            nodes_.push_back(candidate);
            return MS::kSuccess;
        }
    }
    return MS::kInvalidParameter;
}

MStatus MDagPath::extendToShape() {
    unsigned int shapes = 0;
    if (nodes_.empty())
        return MS::kInvalidParameter;
    if (nodes_.back().hasFn(MFn::kShape))
        return pass_fault("MDagPath::extendToShape");
    numberOfShapesDirectlyBelow(shapes);
    return shapes == 1 ? extendToShapeDirectlyBelow(0) : MS::kFailure;
}

unsigned int MDagPath::childCount(MStatus* ReturnStatus) const {
    const host::DagFace* const face = nodes_.empty() ? nullptr : dag_face(nodes_.back());
    report(ReturnStatus, face == nullptr ? MS::kInvalidParameter : MS::kSuccess);
    return face == nullptr ? 0 : face->child_count();
}

MObject MDagPath::child(unsigned int index, MStatus* ReturnStatus) const {
    const bool is_there = index < childCount();
    report(ReturnStatus, is_there ? MS::kSuccess : MS::kInvalidParameter);
    return is_there ? dag_face(nodes_.back())->child(index) : MObject();
}

MStatus MDagPath::push(const MObject& node) {
    for (unsigned int i = 0; i < childCount(); ++i)
        if (child(i) == node) {
            nodes_.push_back(node);
            return MS::kSuccess;
        }
    return MS::kInvalidParameter;
}

MStatus MDagPath::pop(unsigned int count) {
    if (count > nodes_.size())
        return MS::kInvalidParameter;
    nodes_.resize(nodes_.size() - count);
    return MS::kSuccess;
}

MString MDagPath::fullPathName(MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MDagPath::fullPathName");
    if (status && nodes_.empty())
        status = MS::kInvalidParameter;
    if (!report(ReturnStatus, status))
        return MString();
    MString path;
    for (const MObject& node : nodes_)
        path = path + "|" + host::node_face(node)->name();
    return path;
}

MMatrix MDagPath::inclusiveMatrix(MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MDagPath::inclusiveMatrix");
    if (status && nodes_.empty())
        status = MS::kInvalidParameter;
    MMatrix matrix;
    if (report(ReturnStatus, status))
        for (const MObject& node : nodes_)
            matrix = dag_face(node)->local_matrix() * matrix;
    return matrix;
}

MMatrix MDagPath::exclusiveMatrix(MStatus* ReturnStatus) const {
    MDagPath above = *this;
    const MStatus status =
        report(ReturnStatus, nodes_.empty() ? MS::kInvalidParameter : MS::kSuccess);
    if (status.error() || above.pop().error() || above.nodes_.empty())
        return MMatrix();
    return above.inclusiveMatrix(ReturnStatus);
}

bool MDagPath::operator==(const MDagPath& other) const { return nodes_ == other.nodes_; }
bool MDagPath::operator!=(const MDagPath& other) const { return !(*this == other); }

MStatus MDagPath::getAPathTo(const MObject& node, MDagPath& path) {
    const MStatus fault = pass_fault("MDagPath::getAPathTo");
    if (fault.error())
        return fault;
    const host::DagFace* face = dag_face(node);
    if (face == nullptr)
        return MS::kInvalidParameter;
    std::vector<MObject> nodes = {node};
    while (face != nullptr && face->parent_count() > 0) {
        nodes.push_back(face->parent(0));
        face = dag_face(nodes.back());
    }
    std::reverse(nodes.begin(), nodes.end());
    path.nodes_ = std::move(nodes);
    return MS::kSuccess;
}
