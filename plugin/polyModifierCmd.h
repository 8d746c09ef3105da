/// Base of a command that modifies a polygon mesh and keeps construction history and undo right.
///
/// A subclass names the mesh (`setMeshNode`) and the node type (`setModifierNodeType`), then calls
/// `doModifyPoly` from its doIt, and `undoModifyPoly`/`redoModifyPoly` from undoIt/redoIt. Which of
/// two paths runs is decided here:
///
///  * The mesh has history, or the host records history: a modifier node is created, filled by
///    `initModifierNode` and inserted between the mesh and whatever fed it. A mesh without history
///    gets a hidden copy of itself as the source. Vertex tweaks move to a polyTweak node in front
///    of the modifier, because the mesh would otherwise add them after it.
///  * Neither: the mesh data and tweaks are cached and `directModifier` changes the mesh itself.
///
/// Every graph change is recorded in two modifiers owned by the command, so undo and redo replay or
/// reverse exactly what was done. Errors are carried in the returned status.
#pragma once

#include <maya/MDGModifier.h>
#include <maya/MDagModifier.h>
#include <maya/MDagPath.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MPlug.h>
#include <maya/MPxCommand.h>
#include <maya/MString.h>
#include <maya/MTypeId.h>

class polyModifierCmd : public MPxCommand {
public:
    polyModifierCmd();
    ~polyModifierCmd() override;

    /// Fills the new node's attributes. The node is not connected yet. The answer is not looked at.
    virtual MStatus initModifierNode(MObject modifierNode);

    /// Modifies the mesh node itself, when there is no history and none is recorded.
    virtual MStatus directModifier(MObject mesh);

protected:
    void setMeshNode(const MDagPath& mesh);
    void setModifierNodeType(const MTypeId& type);
    void setModifierNodeName(const MString& typeName);
    MDagPath getMeshNode() const;

    MStatus doModifyPoly();
    MStatus redoModifyPoly();
    MStatus undoModifyPoly();

private:
    bool isMeshValid();
    void collectNodeState();
    MStatus createModifierNode(MObject& modifierNode);

    MStatus connectNodes(const MObject& modifierNode);
    MStatus detachUpstream(const MPlug& meshIn, MPlug& upstream);
    MStatus insertDuplicate(const MObject& meshTransform, MPlug& upstream);
    MStatus hangDuplicate(MObject& shape, const MObject& ownTransform, const MObject& meshTransform,
                          MPlug& upstream);
    void abandonHistory();
    MStatus moveTweaks(MObject& tweakNode);
    void zeroMeshTweaks(MPlug& tweaks);

    MStatus cacheMeshData();
    void cacheMeshTweaks();
    MStatus undoDirectModifier();
    MStatus undoCachedMesh();
    MStatus undoTweaks();
    MStatus evaluateFrom(const MPlug& source);

    bool meshPathSet;
    MDagPath meshPath;
    MDagPath duplicatePath;
    bool nodeTypeSet;
    bool nodeNameSet;
    MTypeId nodeType;
    MString nodeTypeName;
    bool hasHistory;
    bool hasTweaks;
    bool recordsHistory;
    MIntArray tweakIndices;
    MFloatVectorArray tweakVectors;
    MObject cachedMesh;
    MDGModifier dgModifier;
    MDagModifier dagModifier;
};
