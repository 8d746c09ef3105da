/// Extends MDGModifier by changes of the DAG hierarchy.
#pragma once

#include <maya/MDGModifier.h>

class MHOST_EXPORT MDagModifier : public MDGModifier {
public:
    MDagModifier();
    ~MDagModifier() override;

    /// Creates a node below `parent`, or at the top level if null. A shape without a parent gets a
    /// new transform; the transform is returned.
    MObject createNode(const MString& type, const MObject& parent = MObject::kNullObj,
                       MStatus* ReturnStatus = NULL);
    MObject createNode(const MTypeId& typeId, const MObject& parent = MObject::kNullObj,
                       MStatus* ReturnStatus = NULL);
    /// A null parent moves the node to the top level, which fails for shapes.
    MStatus reparentNode(const MObject& node, const MObject& newParent = MObject::kNullObj);

private:
    MDagModifier(const MDagModifier&);
    MDagModifier& operator=(const MDagModifier&);
};
