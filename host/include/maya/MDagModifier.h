/// Records changes of the hierarchy besides those of the dependency graph.
#pragma once

#include <maya/MDGModifier.h>

class MHOST_EXPORT MDagModifier : public MDGModifier {
public:
    MDagModifier();
    ~MDagModifier() override;

    /// Below `parent`, at the top level without one. A shape without a parent gets a transform, and
    /// that is what is returned.
    MObject createNode(const MString& type, const MObject& parent = MObject::kNullObj,
                       MStatus* ReturnStatus = NULL);
    MObject createNode(const MTypeId& typeId, const MObject& parent = MObject::kNullObj,
                       MStatus* ReturnStatus = NULL);
    /// Null: to the top level, where shapes cannot go.
    MStatus reparentNode(const MObject& node, const MObject& newParent = MObject::kNullObj);

private:
    MDagModifier(const MDagModifier&);
    MDagModifier& operator=(const MDagModifier&);
};
