/// Function set for DAG nodes: transforms and shapes.
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
    /// Attaches to the path's last node; world space is then available.
    virtual MStatus setObject(const MDagPath& path);

    unsigned int parentCount(MStatus* ReturnStatus = NULL) const;
    MObject parent(unsigned int index, MStatus* ReturnStatus = NULL) const;
    unsigned int childCount(MStatus* ReturnStatus = NULL) const;
    MObject child(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// The node's local transformation; the identity for a shape.
    MMatrix transformationMatrix(MStatus* ReturnStatus = NULL) const;

    /// A path to the node. Succeeds for every DAG node and fails for data objects.
    MStatus getPath(MDagPath& path) const;
    /// The path this function set was attached with; fails if it was attached without one.
    MDagPath dagPath(MStatus* ReturnStatus = NULL) const;
    MString fullPathName(MStatus* ReturnStatus = NULL) const;
    /// The shortest unique name of the node's path.
    MString partialPathName(MStatus* ReturnStatus = NULL) const;

    using MFnDependencyNode::create;
    /// Creates a node below `parent`. A shape without a parent gets a new transform; the transform
    /// is returned.
    MObject create(const MString& type, const MString& name, MObject& parent = MObject::kNullObj,
                   MStatus* ReturnStatus = NULL);
    /// Copies the node and everything below it, without connections, next to the original. A shape
    /// is copied with a new transform, which is returned. Vertex tweaks (pnts) may be copied as
    /// well, and the copies may remain when the running command is undone
    /// (docs/decisions/duplicate-and-tweaks.md).
    MObject duplicate(bool instance = false, bool instanceLeaf = false,
                      MStatus* ReturnStatus = NULL) const;
    /// Intermediate objects are hidden shapes that only feed construction history. Takes effect at
    /// once and is not undoable by itself.
    MStatus setIntermediateObject(bool isIntermediate);
    bool isIntermediateObject(MStatus* ReturnStatus = NULL) const;
    bool hasParent(const MObject& node, MStatus* ReturnStatus = NULL) const;
    bool hasChild(const MObject& node, MStatus* ReturnStatus = NULL) const;
    bool isInstanced(bool indirect = true, MStatus* ReturnStatus = NULL) const;

protected:
    MDagPath path_;
};
