/// The poly-modifier framework: base classes of a command, a node and a factory that modify polygon
/// meshes and keep construction history and undo right.
///
/// A subclass of the command names the mesh (`setMeshNode`) and the node type
/// (`setModifierNodeType`), then calls `doModifyPoly` from its doIt, and
/// `undoModifyPoly`/`redoModifyPoly` from undoIt/redoIt. Which of two paths runs is decided here:
///
///  * History path, if the mesh has history or the host records history: a modifier node is
///    created, filled by `initModifierNode` and inserted between the mesh and its source. A mesh
///    without history gets a hidden copy of itself as the source. Vertex tweaks move to a polyTweak
///    node in front of the modifier, because the mesh would otherwise add them after it.
///  * Direct path, otherwise: the mesh data and tweaks are cached for undo, and `directModifier`
///    changes the mesh itself.
///
/// Every graph change is recorded in modifiers owned by the command, so undo and redo reverse and
/// repeat exactly what was done. Errors are carried in the returned status.
#pragma once

#include <maya/MDGModifier.h>
#include <maya/MDagModifier.h>
#include <maya/MDagPath.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MPlug.h>
#include <maya/MPxCommand.h>
#include <maya/MPxNode.h>
#include <maya/MString.h>
#include <maya/MTypeId.h>

class polyModifierCmd : public MPxCommand {
public:
    polyModifierCmd();
    ~polyModifierCmd() override;

    /// Fills the new node's attributes. The node is not connected yet. The status is ignored.
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
    MStatus collectNodeState();
    MStatus insertModifier();
    MStatus createModifierNode(MObject& modifierNode);
    MStatus connectNodes(const MObject& modifierNode);
    MStatus connectAll();
    MStatus detachUpstream(const MPlug& meshIn, MPlug& upstream);
    MStatus abandonHistory();
    void takeBackRedo();

    MStatus insertDuplicate(const MObject& meshTransform, MPlug& upstream);
    MStatus doDagModifier();
    MStatus removeDuplicate();

    MStatus insertTweakNode(MPlug& upstream);
    MStatus moveTweaks(const MObject& tweakNode);
    MPlug tweakAt(const MPlug& tweaks, unsigned int i, MStatus& status) const;
    template <class Value>
    MStatus writeMeshTweaks(const Value& value);
    MStatus zeroMeshTweaks();

    MStatus cacheMeshData();
    MStatus cacheMeshTweaks();
    /// `tweakVectors` has at least as many entries as `tweakIndices`, also on failure.
    MStatus cacheTweak(const MPlug& tweak);
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
    // Beyond the two modifiers: what has been done so far, and the removal of the hidden copy.
    bool applied; ///< the history path's changes are in the scene
    bool dgDone;
    bool dagDone;
    bool duplicateRemoved;
    MObject duplicateTransform; ///< the copy's own transform; null without a copy
    MDagModifier duplicateRemoval;
};

/// Base of a node that the command inserts into a mesh's history.
///
/// The concrete node declares the attributes "inMesh" and "outMesh": the command finds the place to
/// connect by these names.
class polyModifierNode : public MPxNode {
public:
    ~polyModifierNode() override;
};

/// Base of a factory: an object that performs a modification outside the dependency graph.
///
/// A modification that is needed in two places (the modifier node's compute and the command's
/// direct path) can be written once as a factory and owned by both.
class polyModifierFty {
public:
    polyModifierFty() = default;
    polyModifierFty(const polyModifierFty&) = delete;
    polyModifierFty& operator=(const polyModifierFty&) = delete;
    virtual ~polyModifierFty();

    virtual MStatus doIt() = 0;
};
