/// Function set for nodes of the dependency graph. Data objects may be attached through derived
/// function sets; what needs a node then fails.
#pragma once

#include <maya/MFnBase.h>
#include <maya/MPlug.h>
#include <maya/MString.h>
#include <maya/MTypeId.h>

class MPlugArray;
class MPxNode;

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
    MTypeId typeId(MStatus* ReturnStatus = NULL) const;
    /// Gives the name that the node really got.
    MString setName(const MString& name, MStatus* ReturnStatus = NULL);
    /// The plug-in's instance; NULL for the host's own nodes.
    MPxNode* userNode(MStatus* ReturnStatus = NULL) const;

    /// A new node in the scene; what is made through a running command is taken back with it.
    MObject create(const MString& type, MStatus* ReturnStatus = NULL);
    MObject create(const MTypeId& typeId, MStatus* ReturnStatus = NULL);

    unsigned int attributeCount(MStatus* ReturnStatus = NULL) const;
    /// In order of addition, those of the type first.
    MObject attribute(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// By long or short name; the null object and a failure when there is none.
    MObject attribute(const MString& attrName, MStatus* ReturnStatus = NULL) const;
    bool hasAttribute(const MString& name, MStatus* ReturnStatus = NULL) const;
    MStatus addAttribute(const MObject& attribute);
    MStatus removeAttribute(const MObject& attribute);
    MPlug findPlug(const MString& attrName, bool wantNetworkedPlug,
                   MStatus* ReturnStatus = NULL) const;
    MPlug findPlug(const MObject& attribute, bool wantNetworkedPlug,
                   MStatus* ReturnStatus = NULL) const;
    /// All connections of the node, as plugs of it.
    MStatus getConnections(MPlugArray& array) const;

    bool isDefaultNode(MStatus* ReturnStatus = NULL) const;
    bool isLocked(MStatus* ReturnStatus = NULL) const;
    bool isFromReferencedFile(MStatus* ReturnStatus = NULL) const;
    MStatus setLocked(bool locked);
};
