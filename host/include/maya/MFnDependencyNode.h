/// Function set for nodes of the dependency graph. Data objects may be attached through derived
/// function sets; what needs a node then fails.
#pragma once

#include <maya/MFnBase.h>
#include <maya/MString.h>

class MHOST_EXPORT MFnDependencyNode : public MFnBase {
public:
    MFnDependencyNode();
    MFnDependencyNode(MObject& object, MStatus* ReturnStatus = NULL);
    MFnDependencyNode(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnDependencyNode() override;

    MFn::Type type() const override;

    /// The node's name without any path; fails on data objects.
    MString name(MStatus* ReturnStatus = NULL) const;
    /// The name of the node's type in ASCII scene files.
    MString typeName(MStatus* ReturnStatus = NULL) const;
};
