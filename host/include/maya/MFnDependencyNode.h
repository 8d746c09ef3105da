/// Function set for dependency nodes. Derived function sets may be attached to data objects;
/// methods that require a node then fail.
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

    /// The node's name without a path; fails on data objects.
    MString name(MStatus* ReturnStatus = NULL) const;
    /// The node's type name in ASCII scene files.
    MString typeName(MStatus* ReturnStatus = NULL) const;
    MTypeId typeId(MStatus* ReturnStatus = NULL) const;
    /// Renames the node and returns the name actually given.
    MString setName(const MString& name, MStatus* ReturnStatus = NULL);
    /// The plug-in's instance; NULL for built-in nodes.
    MPxNode* userNode(MStatus* ReturnStatus = NULL) const;

    /// Creates a node in the scene. If a command is running, undo of the command deletes the node.
    MObject create(const MString& type, MStatus* ReturnStatus = NULL);
    MObject create(const MTypeId& typeId, MStatus* ReturnStatus = NULL);

    unsigned int attributeCount(MStatus* ReturnStatus = NULL) const;
    /// Attributes are numbered in order of addition; those of the type come before dynamic ones.
    MObject attribute(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// Finds an attribute by long or short name; null and a failure if there is none.
    MObject attribute(const MString& attrName, MStatus* ReturnStatus = NULL) const;
    bool hasAttribute(const MString& name, MStatus* ReturnStatus = NULL) const;
    MStatus addAttribute(const MObject& attribute);
    MStatus removeAttribute(const MObject& attribute);
    MPlug findPlug(const MString& attrName, bool wantNetworkedPlug,
                   MStatus* ReturnStatus = NULL) const;
    MPlug findPlug(const MObject& attribute, bool wantNetworkedPlug,
                   MStatus* ReturnStatus = NULL) const;
    /// All plugs of the node that have connections.
    MStatus getConnections(MPlugArray& array) const;

    bool isDefaultNode(MStatus* ReturnStatus = NULL) const;
    bool isLocked(MStatus* ReturnStatus = NULL) const;
    bool isFromReferencedFile(MStatus* ReturnStatus = NULL) const;
    MStatus setLocked(bool locked);
};
