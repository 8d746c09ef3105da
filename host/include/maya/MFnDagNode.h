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
    /// As short as it can be while it still names the node.
    MString partialPathName(MStatus* ReturnStatus = NULL) const;

    using MFnDependencyNode::create;
    /// A new node below `parent`; a shape without a parent gets a transform, which is returned.
    MObject create(const MString& type, const MString& name, MObject& parent = MObject::kNullObj,
                   MStatus* ReturnStatus = NULL);
    /// Copies the node and what is below it, without connections, beside the original. A shape gets
    /// a transform of its own, which is returned. Vertex tweaks of meshes stay behind: the copy has
    /// the shape's geometry without them (docs/decisions/duplicate-and-tweaks.md).
    MObject duplicate(bool instance = false, bool instanceLeaf = false,
                      MStatus* ReturnStatus = NULL) const;
    /// Hidden shapes that only feed a history. At once, and not undoable by itself.
    MStatus setIntermediateObject(bool isIntermediate);
    bool isIntermediateObject(MStatus* ReturnStatus = NULL) const;
    bool hasParent(const MObject& node, MStatus* ReturnStatus = NULL) const;
    bool hasChild(const MObject& node, MStatus* ReturnStatus = NULL) const;
    bool isInstanced(bool indirect = true, MStatus* ReturnStatus = NULL) const;

protected:
    MDagPath path_;
};
