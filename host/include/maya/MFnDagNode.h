/// Function set for nodes of the DAG: transforms and shapes.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MFnDependencyNode.h>

class MHOST_EXPORT MFnDagNode : public MFnDependencyNode {
public:
    MFnDagNode();
    MFnDagNode(const MDagPath& path, MStatus* ReturnStatus = NULL);
    MFnDagNode(MObject& object, MStatus* ReturnStatus = NULL);
    MFnDagNode(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnDagNode() override;

    MFn::Type type() const override;
    using MFnBase::setObject;
    MStatus setObject(MObject& object) override;
    /// Attaches to the node at the end of a path; world space is then available.
    virtual MStatus setObject(const MDagPath& path);

    unsigned int parentCount(MStatus* ReturnStatus = NULL) const;
    MObject parent(unsigned int index, MStatus* ReturnStatus = NULL) const;
    unsigned int childCount(MStatus* ReturnStatus = NULL) const;
    MObject child(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// The node's own transformation; the identity for a shape.
    MMatrix transformationMatrix(MStatus* ReturnStatus = NULL) const;

    /// A path to the node: always found for a DAG node, never for data objects.
    MStatus getPath(MDagPath& path) const;
    /// The path this function set was attached with; fails when it was attached without one.
    MDagPath dagPath(MStatus* ReturnStatus = NULL) const;
    MString fullPathName(MStatus* ReturnStatus = NULL) const;

protected:
    MDagPath path_;
};
