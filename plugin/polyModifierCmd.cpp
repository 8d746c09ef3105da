#include "plugin/polyModifierCmd.h"

#include <maya/MDagPath.h>
#include <maya/MFloatVector.h>
#include <maya/MFn.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MFnNumericData.h>
#include <maya/MGlobal.h>
#include <maya/MPlugArray.h>

#include <vector>

namespace {

/// A float3 plug's value; false when the plug does not hold one.
bool read_vector(const MPlug& plug, MObject& value, MFloatVector& vector) {
    if (!plug.getValue(value))
        return false;
    MStatus status;
    MFnNumericData data(value, &status);
    return status && data.getData(vector.x, vector.y, vector.z);
}

MStatus write_vector(MPlug& plug, const MFloatVector& vector) {
    MStatus status;
    MFnNumericData data;
    MObject value = data.create(MFnNumericData::k3Float, &status);
    if (!status)
        return status;
    status = data.setData(vector.x, vector.y, vector.z);
    if (!status)
        return status;
    return plug.setValue(value);
}

/// The element at a physical index, or false when the host has none to give.
bool element_at(const MPlug& array, unsigned int index, MPlug& element) {
    MStatus status;
    element = array.elementByPhysicalIndex(index, &status);
    return status && !element.isNull();
}

/// A NaN is neither below nor above zero: it counts as no tweak, as the comparisons have it.
bool is_tweaked(const MFloatVector& v) {
    return v.x < 0.0f || v.x > 0.0f || v.y < 0.0f || v.y > 0.0f || v.z < 0.0f || v.z > 0.0f;
}

/// What one x, y or z child of a tweak was connected to.
struct ChildLinks {
    MPlugArray destinations;
    MPlugArray source; // none or one
};

void collect_links(const MPlug& child, MDGModifier& modifier, ChildLinks& links) {
    if (!child.isConnected())
        return;
    child.connectedTo(links.destinations, false, true);
    for (unsigned int i = 0; i < links.destinations.length(); ++i)
        modifier.disconnect(child, links.destinations[i]);
    child.connectedTo(links.source, true, false);
    if (links.source.length() > 0)
        modifier.disconnect(links.source[0], child);
}

void restore_links(const MPlug& child, MDGModifier& modifier, ChildLinks& links) {
    for (unsigned int i = 0; i < links.destinations.length(); ++i)
        modifier.connect(child, links.destinations[i]);
    if (links.source.length() > 0)
        modifier.connect(links.source[0], child);
}

/// Copies the mesh below a transform of its own and gives the path to the copied shape.
MStatus duplicate_mesh(const MDagPath& mesh, MObject& transform, MDagPath& shape) {
    MStatus status;
    MFnDagNode mesh_fn(mesh, &status);
    if (!status)
        return status;
    transform = mesh_fn.duplicate(false, false, &status);
    if (!status)
        return status;
    MFnDagNode transform_fn(transform, &status);
    if (status)
        status = transform_fn.getPath(shape);
    if (status)
        status = shape.extendToShape();
    if (!status)
        MGlobal::deleteNode(transform);
    return status;
}

/// Removes a copied shape together with the transform of its own that it stands below.
void remove_duplicate(MObject shape) {
    MObject transform = MFnDagNode(shape).parent(0);
    MGlobal::deleteNode(transform);
}

} // namespace

polyModifierCmd::polyModifierCmd()
    : meshPathSet(false), nodeTypeSet(false), nodeNameSet(false), hasHistory(false),
      hasTweaks(false), recordsHistory(false) {}

polyModifierCmd::~polyModifierCmd() = default;

MStatus polyModifierCmd::initModifierNode(MObject) { return MS::kSuccess; }

MStatus polyModifierCmd::directModifier(MObject) { return MS::kSuccess; }

void polyModifierCmd::setMeshNode(const MDagPath& mesh) {
    meshPath = mesh;
    meshPathSet = true;
}

void polyModifierCmd::setModifierNodeType(const MTypeId& type) {
    nodeType = type;
    nodeTypeSet = true;
}

void polyModifierCmd::setModifierNodeName(const MString& typeName) {
    nodeTypeName = typeName;
    nodeNameSet = true;
}

MDagPath polyModifierCmd::getMeshNode() const { return meshPath; }

// === Doing, undoing, redoing =================================================================

MStatus polyModifierCmd::doModifyPoly() {
    const bool meshValid = isMeshValid();
    if (!nodeTypeSet && !nodeNameSet)
        return MS::kFailure;
    if (!meshValid)
        return MS::kFailure;

    collectNodeState();
    if (hasHistory || recordsHistory) {
        // Only the connection's status decides: a node that lacks its mesh attributes cannot be
        // connected, and a node whose attributes were filled in part still does its work.
        MObject modifierNode;
        createModifierNode(modifierNode);
        initModifierNode(modifierNode);
        const MStatus status = connectNodes(modifierNode);
        if (!status)
            abandonHistory();
        return status;
    }
    cacheMeshData();
    cacheMeshTweaks();
    return directModifier(meshPath.node());
}

MStatus polyModifierCmd::redoModifyPoly() {
    if (!meshPathSet)
        return MS::kSuccess; // the first run found no mesh: there is nothing to do again
    if (!hasHistory && !recordsHistory)
        return directModifier(meshPath.node());
    if (!hasHistory) {
        const MStatus status = dagModifier.doIt();
        if (!status)
            return status;
    }
    // Undo gave the mesh its tweaks back; the tweak node, which comes back now, carries them too.
    if (hasTweaks) {
        MObject mesh = meshPath.node();
        MFnDependencyNode mesh_fn(mesh);
        MPlug tweaks = mesh_fn.findPlug("pnts", true);
        zeroMeshTweaks(tweaks);
    }
    return dgModifier.doIt();
}

MStatus polyModifierCmd::undoModifyPoly() {
    if (!meshPathSet)
        return MS::kSuccess; // the first run found no mesh: there is nothing to take back
    if (!hasHistory && !recordsHistory)
        return undoDirectModifier();

    MStatus status = dgModifier.undoIt();
    if (!hasHistory) {
        // Before the tweaks: the cached mesh is put back without any.
        const MStatus restored = undoCachedMesh();
        const MStatus undone = dagModifier.undoIt();
        if (status)
            status = restored ? undone : restored;
    }
    const MStatus tweaked = undoTweaks();
    return status ? tweaked : status;
}

/// The host deletes a command that failed, and so nobody can undo what it did up to there.
void polyModifierCmd::abandonHistory() {
    dgModifier.undoIt();
    MStatus status;
    const MObject duplicate = duplicatePath.node(&status);
    if (!hasHistory && status) {
        dagModifier.undoIt();
        remove_duplicate(duplicate);
    }
    undoTweaks();
}

// === The state of the mesh ===================================================================

bool polyModifierCmd::isMeshValid() {
    if (!meshPathSet)
        return false;
    meshPath.extendToShape();
    return meshPath.isValid() && meshPath.apiType() == MFn::kMesh;
}

void polyModifierCmd::collectNodeState() {
    meshPath.extendToShape();
    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh);
    hasHistory = mesh_fn.findPlug("inMesh", true).isConnected();

    hasTweaks = false;
    const MPlug tweaks = mesh_fn.findPlug("pnts", true);
    if (!tweaks.isNull()) {
        const unsigned int count = tweaks.numElements();
        for (unsigned int i = 0; i < count && !hasTweaks; ++i) {
            MPlug element;
            MObject value;
            MFloatVector vector;
            hasTweaks = element_at(tweaks, i, element) && read_vector(element, value, vector) &&
                        is_tweaked(vector);
        }
    }

    int answer = 0;
    MGlobal::executeCommand("constructionHistory -q -tgl", answer, false, false);
    recordsHistory = answer != 0;
}

MStatus polyModifierCmd::createModifierNode(MObject& modifierNode) {
    if (!nodeTypeSet && !nodeNameSet)
        return MS::kFailure;
    MStatus status;
    modifierNode = nodeTypeSet ? dgModifier.createNode(nodeType, &status)
                               : dgModifier.createNode(nodeTypeName, &status);
    MFnDependencyNode node_fn(modifierNode);
    if (node_fn.attribute("inMesh").isNull() || node_fn.attribute("outMesh").isNull()) {
        displayError("Invalid Modifier Node: inMesh and outMesh attributes are required.");
        return MS::kFailure;
    }
    return status;
}

// === The history path ========================================================================

MStatus polyModifierCmd::connectNodes(const MObject& modifierNode) {
    MStatus status;
    MFnDagNode mesh_fn(meshPath, &status);
    if (!status)
        return status;
    const MObject meshTransform = mesh_fn.parent(0, &status);
    if (!status)
        return status;
    const MPlug meshIn = mesh_fn.findPlug("inMesh", true, &status);
    if (!status)
        return status;

    MPlug source;
    status = hasHistory ? detachUpstream(meshIn, source) : insertDuplicate(meshTransform, source);
    if (!status)
        return status;

    MObject modifier(modifierNode);
    MFnDependencyNode modifier_fn(modifier);
    const MPlug modifierIn(modifier, modifier_fn.attribute("inMesh"));
    const MPlug modifierOut(modifier, modifier_fn.attribute("outMesh"));

    MObject tweakNode;
    status = moveTweaks(tweakNode);
    if (!status)
        return status;
    if (hasTweaks) {
        MFnDependencyNode tweak_fn(tweakNode);
        status = dgModifier.connect(source, MPlug(tweakNode, tweak_fn.attribute("inputPolymesh")));
        if (!status)
            return status;
        source = MPlug(tweakNode, tweak_fn.attribute("output"));
    }
    status = dgModifier.connect(source, modifierIn);
    if (!status)
        return status;
    status = dgModifier.connect(modifierOut, meshIn);
    if (!status)
        return status;
    return dgModifier.doIt();
}

MStatus polyModifierCmd::detachUpstream(const MPlug& meshIn, MPlug& upstream) {
    MPlugArray sources;
    meshIn.connectedTo(sources, true, false);
    if (sources.length() == 0)
        return MS::kFailure;
    upstream = sources[0];
    return dgModifier.disconnect(upstream, meshIn);
}

MStatus polyModifierCmd::insertDuplicate(const MObject& meshTransform, MPlug& upstream) {
    MObject duplicateTransform;
    MDagPath path;
    MStatus status = duplicate_mesh(meshPath, duplicateTransform, path);
    if (!status)
        return status;
    MObject duplicateShape = path.node();
    status = hangDuplicate(duplicateShape, duplicateTransform, meshTransform, upstream);
    if (status)
        status = MDagPath::getAPathTo(duplicateShape, duplicatePath);
    if (status)
        return status;
    dagModifier.undoIt();
    remove_duplicate(duplicateShape);
    return status;
}

MStatus polyModifierCmd::hangDuplicate(MObject& shape, const MObject& ownTransform,
                                       const MObject& meshTransform, MPlug& upstream) {
    // The copy has to stand below the mesh's transform before its own goes, and the host carries
    // out one of the two a time.
    MStatus status = dagModifier.reparentNode(shape, meshTransform);
    if (status)
        status = dagModifier.doIt();
    if (!status)
        return status;

    MFnDagNode shape_fn(shape, &status);
    if (!status)
        return status;
    shape_fn.setIntermediateObject(true);
    upstream = shape_fn.findPlug("outMesh", true, &status);
    if (!status)
        return status;

    status = dagModifier.deleteNode(ownTransform);
    return status ? dagModifier.doIt() : status;
}

MStatus polyModifierCmd::moveTweaks(MObject& tweakNode) {
    tweakIndices.clear();
    tweakVectors.clear();
    if (!hasTweaks)
        return MS::kSuccess;

    MStatus status;
    tweakNode = dgModifier.createNode("polyTweak", &status);
    if (!status)
        return status;
    MFnDependencyNode tweak_fn(tweakNode);
    const MPlug tweaks(tweakNode, tweak_fn.attribute("tweak"));

    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh);
    MPlug meshTweaks = mesh_fn.findPlug("pnts", true, &status);
    if (!status)
        return status;

    std::vector<MObject> values;
    std::vector<ChildLinks> links;
    const unsigned int count = meshTweaks.numElements();
    for (unsigned int i = 0; i < count; ++i) {
        MPlug element;
        MObject value;
        MFloatVector vector;
        if (!element_at(meshTweaks, i, element) || !read_vector(element, value, vector))
            continue;
        values.push_back(value);
        tweakIndices.append(static_cast<int>(element.logicalIndex()));
        tweakVectors.append(vector);
        const unsigned int children = element.numChildren();
        for (unsigned int c = 0; c < children; ++c) {
            links.emplace_back();
            collect_links(element.child(c), dgModifier, links.back());
        }
    }

    size_t next = 0;
    for (unsigned int i = 0; i < tweakIndices.length(); ++i) {
        MPlug element = tweaks.elementByLogicalIndex(static_cast<unsigned int>(tweakIndices[i]));
        element.setValue(values[i]);
        const unsigned int children = element.numChildren();
        for (unsigned int c = 0; c < children && next < links.size(); ++c, ++next)
            restore_links(element.child(c), dgModifier, links[next]);
    }

    zeroMeshTweaks(meshTweaks);
    if (!hasHistory && recordsHistory) {
        // Deliberate: the second pass asks for the copy's tweaks and writes the mesh's own again;
        // the copy feeds the chain through its output, which carries no tweaks of the mesh.
        MObject duplicate = duplicatePath.node();
        MFnDependencyNode duplicate_fn(duplicate);
        if (!duplicate_fn.findPlug("pnts", true).isNull())
            zeroMeshTweaks(meshTweaks);
    }
    return MS::kSuccess;
}

void polyModifierCmd::zeroMeshTweaks(MPlug& tweaks) {
    for (unsigned int i = 0; i < tweakIndices.length(); ++i) {
        MPlug element = tweaks.elementByLogicalIndex(static_cast<unsigned int>(tweakIndices[i]));
        write_vector(element, MFloatVector(0.0f, 0.0f, 0.0f));
    }
}

// === The direct path =========================================================================

MStatus polyModifierCmd::cacheMeshData() {
    MObject transform;
    MDagPath duplicate;
    MStatus status = duplicate_mesh(meshPath, transform, duplicate);
    if (!status)
        return status;
    MObject shape = duplicate.node();
    MFnDependencyNode shape_fn(shape);
    status = shape_fn.findPlug("outMesh", true).getValue(cachedMesh);
    MGlobal::deleteNode(transform);
    return status;
}

void polyModifierCmd::cacheMeshTweaks() {
    tweakIndices.clear();
    tweakVectors.clear();
    if (!hasTweaks)
        return;
    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh);
    const MPlug tweaks = mesh_fn.findPlug("pnts", true);
    const unsigned int count = tweaks.numElements();
    for (unsigned int i = 0; i < count; ++i) {
        MPlug element;
        MObject value;
        MFloatVector vector;
        if (!element_at(tweaks, i, element) || !read_vector(element, value, vector))
            continue;
        tweakIndices.append(static_cast<int>(element.logicalIndex()));
        tweakVectors.append(vector);
    }
}

/// Makes the mesh take over what `source` delivers, by a connection that lasts for one evaluation.
MStatus polyModifierCmd::evaluateFrom(const MPlug& source) {
    MStatus status;
    MFnDagNode mesh_fn(meshPath, &status);
    if (!status)
        return status;
    const MPlug meshIn = mesh_fn.findPlug("inMesh", true, &status);
    if (!status)
        return status;
    MDGModifier connection;
    status = connection.connect(source, meshIn);
    if (status)
        status = connection.doIt();
    if (!status)
        return status;
    status = MGlobal::executeCommand(
        MString("dgeval -src ") + mesh_fn.partialPathName() + ".inMesh", false, false);
    const MStatus undone = connection.undoIt();
    return status ? undone : status;
}

MStatus polyModifierCmd::undoDirectModifier() {
    MStatus status;
    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh, &status);
    if (!status)
        return status;
    if (!hasTweaks)
        return mesh_fn.findPlug("outMesh", true).setValue(cachedMesh);

    // A mesh with tweaks would add them to whatever is written: the data goes in by its input.
    MObject transform;
    MDagPath duplicate;
    status = duplicate_mesh(meshPath, transform, duplicate);
    if (!status)
        return status;
    MObject shape = duplicate.node();
    MFnDependencyNode shape_fn(shape);
    MPlug duplicateOut = shape_fn.findPlug("outMesh", true);
    status = duplicateOut.setValue(cachedMesh);
    if (status)
        status = evaluateFrom(duplicateOut);
    MGlobal::deleteNode(transform);
    const MStatus tweaked = undoTweaks();
    return status ? tweaked : status;
}

// === Putting back ============================================================================

MStatus polyModifierCmd::undoCachedMesh() {
    if (hasHistory)
        return MS::kSuccess;
    MStatus status;
    MObject duplicate = duplicatePath.node(&status);
    if (!status)
        return status;
    MFnDependencyNode duplicate_fn(duplicate, &status);
    if (!status)
        return status;
    const MPlug duplicateOut = duplicate_fn.findPlug("outMesh", true);
    if (hasTweaks)
        return evaluateFrom(duplicateOut);

    MObject data;
    status = duplicateOut.getValue(data);
    if (!status)
        return status;
    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh);
    return mesh_fn.findPlug("outMesh", true).setValue(data);
}

MStatus polyModifierCmd::undoTweaks() {
    if (!hasTweaks)
        return MS::kSuccess;
    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh);
    MPlug tweaks = mesh_fn.findPlug("pnts", true);
    MStatus status;
    for (unsigned int i = 0; i < tweakIndices.length(); ++i) {
        MPlug element = tweaks.elementByLogicalIndex(static_cast<unsigned int>(tweakIndices[i]));
        const MStatus written = write_vector(element, tweakVectors[i]);
        if (!written)
            status = written;
    }
    return status;
}
