/// MFnBase, and the parts of the node and data function sets that do not need the scene.
#include "host/base/fault.h"
#include "host/base/object.h"
#include "host/mesh/mesh_object.h"

#include <maya/MFnDagNode.h>
#include <maya/MFnData.h>
#include <maya/MFnMeshData.h>

using host::dag_face;
using host::node_face;
using host::pass_fault;
using host::report;

// === MFnBase =====================================================================================

MFnBase::MFnBase() = default;
MFnBase::MFnBase(const MFnBase& other) = default;
MFnBase& MFnBase::operator=(const MFnBase& other) = default;
MFnBase::~MFnBase() = default;

MFn::Type MFnBase::type() const { return MFn::kBase; }

bool MFnBase::hasObj(const MObject& object) const { return object.hasFn(type()); }

bool MFnBase::hasObj(MFn::Type wanted) const {
    for (MFn::Type t = wanted; t != MFn::kInvalid; t = host::type_above(t))
        if (t == type())
            return true;
    return wanted == MFn::kMeshData && type() == MFn::kMesh;
}

MObject MFnBase::object(MStatus* ReturnStatus) const {
    report(ReturnStatus, object_.isNull() ? MS::kFailure : MS::kSuccess);
    return object_;
}

MStatus MFnBase::setObject(MObject& object) { return attach(object, "MFnBase::setObject"); }

MStatus MFnBase::setObject(const MObject& object) {
    MObject handle = object;
    return setObject(handle);
}

MStatus MFnBase::accepts(const MObject& object) const {
    return hasObj(object) ? MS::kSuccess : MS::kInvalidParameter;
}

MStatus MFnBase::attach(const MObject& object, const char* point) {
    object_ = MObject();
    MStatus status = pass_fault(point);
    if (status)
        status = accepts(object);
    if (status)
        object_ = object;
    return status;
}

// === MFnDependencyNode ===========================================================================

MFnDependencyNode::MFnDependencyNode() = default;

MFnDependencyNode::MFnDependencyNode(MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnDependencyNode::setObject"));
}

MFnDependencyNode::MFnDependencyNode(const MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnDependencyNode::setObject"));
}

MFnDependencyNode::~MFnDependencyNode() = default;

MFn::Type MFnDependencyNode::type() const { return MFn::kDependencyNode; }

MString MFnDependencyNode::name(MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MFnDependencyNode::name");
    if (status && node_face(object_) == nullptr)
        status = MS::kFailure;
    return report(ReturnStatus, status) ? node_face(object_)->name() : MString();
}

MString MFnDependencyNode::typeName(MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MFnDependencyNode::typeName");
    if (status && node_face(object_) == nullptr)
        status = MS::kFailure;
    return report(ReturnStatus, status) ? node_face(object_)->type_name() : MString();
}

// === MFnDagNode ==================================================================================

MFnDagNode::MFnDagNode() = default;

MFnDagNode::MFnDagNode(const MDagPath& path, MStatus* ReturnStatus) {
    report(ReturnStatus, MFnDagNode::setObject(path));
}

MFnDagNode::MFnDagNode(MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnDagNode::setObject"));
}

MFnDagNode::MFnDagNode(const MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnDagNode::setObject"));
}

MFnDagNode::~MFnDagNode() = default;

MFn::Type MFnDagNode::type() const { return MFn::kDagNode; }

MStatus MFnDagNode::setObject(MObject& object) {
    path_ = MDagPath();
    return attach(object, "MFnDagNode::setObject");
}

MStatus MFnDagNode::setObject(const MDagPath& path) {
    path_ = MDagPath();
    const MStatus status = attach(path.node(), "MFnDagNode::setObject");
    if (status)
        path_ = path;
    return status;
}

unsigned int MFnDagNode::parentCount(MStatus* ReturnStatus) const {
    const host::DagFace* const face = dag_face(object_);
    report(ReturnStatus, face == nullptr ? MS::kFailure : MS::kSuccess);
    return face == nullptr ? 0 : face->parent_count();
}

MObject MFnDagNode::parent(unsigned int index, MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MFnDagNode::parent");
    if (status && index >= parentCount())
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? dag_face(object_)->parent(index) : MObject();
}

unsigned int MFnDagNode::childCount(MStatus* ReturnStatus) const {
    const host::DagFace* const face = dag_face(object_);
    report(ReturnStatus, face == nullptr ? MS::kFailure : MS::kSuccess);
    return face == nullptr ? 0 : face->child_count();
}

MObject MFnDagNode::child(unsigned int index, MStatus* ReturnStatus) const {
    MStatus status = pass_fault("MFnDagNode::child");
    if (status && index >= childCount())
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? dag_face(object_)->child(index) : MObject();
}

MMatrix MFnDagNode::transformationMatrix(MStatus* ReturnStatus) const {
    const host::DagFace* const face = dag_face(object_);
    report(ReturnStatus, face == nullptr ? MS::kFailure : MS::kSuccess);
    return face == nullptr ? MMatrix() : face->local_matrix();
}

MStatus MFnDagNode::getPath(MDagPath& path) const {
    const MStatus fault = pass_fault("MFnDagNode::getPath");
    if (fault.error())
        return fault;
    if (path_.isValid()) {
        path = path_;
        return MS::kSuccess;
    }
    return MDagPath::getAPathTo(object_, path);
}

MDagPath MFnDagNode::dagPath(MStatus* ReturnStatus) const {
    report(ReturnStatus, path_.isValid() ? MS::kSuccess : MS::kFailure);
    return path_;
}

MString MFnDagNode::fullPathName(MStatus* ReturnStatus) const {
    MDagPath path;
    const MStatus status = report(ReturnStatus, getPath(path));
    return status ? path.fullPathName(ReturnStatus) : MString();
}

// === Data ========================================================================================

MFnData::MFnData() = default;

MFnData::MFnData(MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnData::setObject"));
}

MFnData::MFnData(const MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnData::setObject"));
}

MFnData::~MFnData() = default;

MFn::Type MFnData::type() const { return MFn::kData; }

MFnMeshData::MFnMeshData() = default;

MFnMeshData::MFnMeshData(MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnMeshData::setObject"));
}

MFnMeshData::MFnMeshData(const MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnMeshData::setObject"));
}

MFnMeshData::~MFnMeshData() = default;

MFn::Type MFnMeshData::type() const { return MFn::kMeshData; }

MObject MFnMeshData::create(MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnMeshData::create");
    MObject made;
    if (status)
        status = host::guard_memory([&] { made = host::make_empty_mesh_data(); });
    object_ = made;
    report(ReturnStatus, status);
    return made;
}
