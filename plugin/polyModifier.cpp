#include "plugin/polyModifier.h"

#include "plugin/guarded.h"

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

/// Sets one component of a tweak, unless a connection feeds it.
MStatus write_component(MPlug component, float value) {
    MPlugArray source;
    component.connectedTo(source, true, false);
    return source.length() > 0 ? MStatus(MS::kSuccess) : component.setValue(value);
}

/// Sets a tweak. If it refuses a value as a whole because components are fed by connections, the
/// other components are set.
MStatus write_tweak(MPlug& tweak, const MFloatVector& vector) {
    const MStatus status = write_vector(tweak, vector);
    if (status || tweak.numConnectedChildren() == 0)
        return status;
    const float values[] = {vector.x, vector.y, vector.z};
    MStatus result;
    for (unsigned int c = 0; c < tweak.numChildren() && c < 3; ++c) {
        const MStatus written = write_component(tweak.child(c), values[c]);
        if (!written)
            result = written;
    }
    return result;
}

/// The element at a physical index; false if the host does not return one.
bool element_at(const MPlug& array, unsigned int index, MPlug& element) {
    MStatus status;
    element = array.elementByPhysicalIndex(index, &status);
    return status && !element.isNull();
}

/// Written with < and >, so that a NaN counts as zero.
bool is_tweaked(const MFloatVector& v) {
    return v.x < 0.0f || v.x > 0.0f || v.y < 0.0f || v.y > 0.0f || v.z < 0.0f || v.z > 0.0f;
}

/// The connections of one component (x, y or z) of a tweak.
struct ComponentLinks {
    MPlugArray destinations;
    MPlugArray source; ///< at most one
};

/// Appends one entry per component of `tweak`, and records in `modifier` that its connections go.
void take_links(const MPlug& tweak, MDGModifier& modifier, std::vector<ComponentLinks>& links) {
    const unsigned int components = tweak.numChildren();
    for (unsigned int c = 0; c < components; ++c) {
        links.emplace_back();
        ComponentLinks& link = links.back();
        const MPlug component = tweak.child(c);
        if (!component.isConnected())
            continue;
        component.connectedTo(link.destinations, false, true);
        for (unsigned int i = 0; i < link.destinations.length(); ++i)
            modifier.disconnect(component, link.destinations[i]);
        component.connectedTo(link.source, true, false);
        if (link.source.length() > 0)
            modifier.disconnect(link.source[0], component);
    }
}

/// Records in `modifier` that the components of `tweak` get the links from `next` on.
void give_links(const MPlug& tweak, MDGModifier& modifier, std::vector<ComponentLinks>& links,
                size_t& next) {
    const unsigned int components = tweak.numChildren();
    for (unsigned int c = 0; c < components && next < links.size(); ++c, ++next) {
        const ComponentLinks& link = links[next];
        const MPlug component = tweak.child(c);
        for (unsigned int i = 0; i < link.destinations.length(); ++i)
            modifier.connect(component, link.destinations[i]);
        if (link.source.length() > 0)
            modifier.connect(link.source[0], component);
    }
}

/// Sets all tweaks of a copied mesh to zero. The host copies tweaks with the shape; what uses the
/// copy adds the tweaks of the original itself.
MStatus zero_own_tweaks(MObject shape) {
    MFnDependencyNode shape_fn(shape);
    const MPlug tweaks = shape_fn.findPlug("pnts", true);
    const unsigned int count = tweaks.isNull() ? 0 : tweaks.numElements();
    for (unsigned int i = 0; i < count; ++i) {
        MPlug tweak;
        if (!element_at(tweaks, i, tweak))
            continue;
        const MStatus status = write_vector(tweak, MFloatVector(0.0f, 0.0f, 0.0f));
        if (!status)
            return status;
    }
    return MS::kSuccess;
}

/// Copies the mesh without its tweaks; the copied shape stands below a new `transform`.
MStatus duplicate_mesh(const MDagPath& mesh, MObject& transform, MDagPath& shape) {
    MStatus status;
    MFnDagNode mesh_fn(mesh, &status);
    if (!status)
        return status;
    transform = mesh_fn.duplicate(false, false, &status);
    if (!status)
        return status;
    status = guarded([&] {
        MStatus found;
        MFnDagNode transform_fn(transform, &found);
        if (found)
            found = transform_fn.getPath(shape);
        if (found)
            found = shape.extendToShape();
        return found ? zero_own_tweaks(shape.node()) : found;
    });
    if (!status) {
        MGlobal::deleteNode(transform);
        transform = MObject::kNullObj;
    }
    return status;
}

} // namespace

polyModifierCmd::polyModifierCmd()
    : meshPathSet(false), nodeTypeSet(false), nodeNameSet(false), hasHistory(false),
      hasTweaks(false), recordsHistory(false), dgDone(false), dagDone(false),
      duplicateRemoved(false) {}

polyModifierCmd::~polyModifierCmd() = default;
polyModifierNode::~polyModifierNode() = default;
polyModifierFty::~polyModifierFty() = default;

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
        // Only the status of the connection counts: a node without mesh attributes cannot be
        // connected anyway, and a node with some attributes unset still unwraps.
        const MStatus status = guarded([&] { return insertModifier(); });
        if (!status)
            guarded([&] { return abandonHistory(); });
        return status;
    }
    cacheMeshData();
    cacheMeshTweaks();
    return directModifier(meshPath.node());
}

MStatus polyModifierCmd::redoModifyPoly() {
    if (!meshPathSet)
        return MS::kSuccess; // the first run found no mesh, so there is nothing to redo
    if (!hasHistory && !recordsHistory)
        return directModifier(meshPath.node());
    if (!hasHistory) {
        const MStatus status = restoreDuplicate();
        if (!status)
            return status;
    }
    // Undo put the tweaks back on the mesh; the tweak node that redo restores holds them as well.
    zeroMeshTweaks();
    return connectAll();
}

MStatus polyModifierCmd::undoModifyPoly() {
    if (!meshPathSet)
        return MS::kSuccess; // the first run found no mesh, so there is nothing to undo
    if (!hasHistory && !recordsHistory)
        return undoDirectModifier();

    MStatus status = dgModifier.undoIt();
    if (!hasHistory) {
        // Before the tweaks: this replaces the mesh data, without tweaks.
        const MStatus restored = undoCachedMesh();
        const MStatus removed = removeDuplicate();
        if (status)
            status = restored ? removed : restored;
    }
    const MStatus tweaked = undoTweaks();
    return status ? tweaked : status;
}

/// Takes back what a failed connection has done so far. The host deletes a command that failed, so
/// its undo never runs.
MStatus polyModifierCmd::abandonHistory() {
    if (dgDone)
        dgModifier.undoIt();
    if (dagDone)
        dagModifier.undoIt();
    if (!duplicateTransform.isNull())
        MGlobal::deleteNode(duplicateTransform);
    return undoTweaks();
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

MStatus polyModifierCmd::insertModifier() {
    MObject modifierNode;
    createModifierNode(modifierNode);
    initModifierNode(modifierNode);
    return connectNodes(modifierNode);
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

    if (hasTweaks) {
        status = insertTweakNode(source);
        if (!status)
            return status;
    }
    MObject modifier(modifierNode);
    MFnDependencyNode modifier_fn(modifier);
    const MPlug modifierIn(modifier, modifier_fn.attribute("inMesh"));
    const MPlug modifierOut(modifier, modifier_fn.attribute("outMesh"));
    status = dgModifier.connect(source, modifierIn);
    if (status)
        status = dgModifier.connect(modifierOut, meshIn);
    return status ? connectAll() : status;
}

/// Applies the recorded changes. A host may refuse to set a tweak that a connection feeds, and
/// leaves the last value that came through it: those tweaks are zeroed once they are disconnected.
MStatus polyModifierCmd::connectAll() {
    dgDone = true;
    const MStatus status = dgModifier.doIt();
    if (status)
        zeroMeshTweaks();
    return status;
}

/// Moves the tweaks to a polyTweak node fed by `upstream`, which becomes that node's output.
MStatus polyModifierCmd::insertTweakNode(MPlug& upstream) {
    MStatus status;
    MObject tweakNode = dgModifier.createNode("polyTweak", &status);
    if (!status)
        return status;
    status = moveTweaks(tweakNode);
    if (!status)
        return status;
    MFnDependencyNode tweak_fn(tweakNode);
    status = dgModifier.connect(upstream, MPlug(tweakNode, tweak_fn.attribute("inputPolymesh")));
    if (!status)
        return status;
    upstream = MPlug(tweakNode, tweak_fn.attribute("output"));
    return MS::kSuccess;
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
    MDagPath path;
    MStatus status = duplicate_mesh(meshPath, duplicateTransform, path);
    if (!status)
        return status;
    MObject shape = path.node();
    // The copy must be reparented before its own transform is deleted, each with its own doIt.
    status = dagModifier.reparentNode(shape, meshTransform);
    if (status)
        status = doDagModifier();
    if (!status)
        return status;

    MFnDagNode shape_fn(shape, &status);
    if (!status)
        return status;
    shape_fn.setIntermediateObject(true);
    upstream = shape_fn.findPlug("outMesh", true, &status);
    if (!status)
        return status;

    status = dagModifier.deleteNode(duplicateTransform);
    if (status)
        status = doDagModifier();
    return status ? MDagPath::getAPathTo(shape, duplicatePath) : status;
}

MStatus polyModifierCmd::doDagModifier() {
    dagDone = true;
    return dagModifier.doIt();
}

/// Takes the copy out of the scene. The host does not undo `duplicate`, so that undoing
/// `dagModifier` leaves the copy below its own transform; a modifier of its own deletes both.
MStatus polyModifierCmd::removeDuplicate() {
    const MStatus undone = dagModifier.undoIt();
    MStatus removed;
    if (!duplicateRemoved)
        removed = duplicateRemoval.deleteNode(duplicateTransform);
    duplicateRemoved = true;
    if (removed)
        removed = duplicateRemoval.doIt();
    return undone ? removed : undone;
}

/// Brings the copy back below the mesh's transform.
MStatus polyModifierCmd::restoreDuplicate() {
    MStatus status = duplicateRemoval.undoIt();
    return status ? dagModifier.doIt() : status;
}

MStatus polyModifierCmd::moveTweaks(const MObject& tweakNode) {
    MStatus status;
    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh);
    const MPlug meshTweaks = mesh_fn.findPlug("pnts", true, &status);
    if (!status)
        return status;
    status = cacheMeshTweaks();
    if (!status)
        return status;

    MFnDependencyNode tweak_fn(tweakNode);
    const MPlug tweaks(tweakNode, tweak_fn.attribute("tweak"));
    std::vector<ComponentLinks> links;
    for (unsigned int i = 0; i < tweakIndices.length(); ++i)
        take_links(tweakAt(meshTweaks, i), dgModifier, links);
    size_t next = 0;
    for (unsigned int i = 0; i < tweakIndices.length(); ++i) {
        MPlug tweak = tweakAt(tweaks, i);
        write_vector(tweak, tweakVectors[i]);
        give_links(tweak, dgModifier, links, next);
    }

    zeroMeshTweaks();
    if (!hasHistory && recordsHistory) {
        // Deliberate: the second pass looks up the copy's tweaks and zeroes the mesh's own again.
        MObject duplicate = duplicatePath.node();
        MFnDependencyNode duplicate_fn(duplicate);
        if (!duplicate_fn.findPlug("pnts", true).isNull())
            zeroMeshTweaks();
    }
    return MS::kSuccess;
}

/// The element of a tweak array that belongs to cached tweak `i`.
MPlug polyModifierCmd::tweakAt(const MPlug& tweaks, unsigned int i) const {
    return tweaks.elementByLogicalIndex(static_cast<unsigned int>(tweakIndices[i]));
}

void polyModifierCmd::zeroMeshTweaks() {
    if (!hasTweaks)
        return;
    MObject mesh = meshPath.node();
    MFnDependencyNode mesh_fn(mesh);
    const MPlug tweaks = mesh_fn.findPlug("pnts", true);
    for (unsigned int i = 0; i < tweakIndices.length(); ++i) {
        MPlug tweak = tweakAt(tweaks, i);
        write_tweak(tweak, MFloatVector(0.0f, 0.0f, 0.0f));
    }
}

// === The direct path =========================================================================

MStatus polyModifierCmd::cacheMeshData() {
    MObject transform;
    MDagPath duplicate;
    MStatus status = duplicate_mesh(meshPath, transform, duplicate);
    if (!status)
        return status;
    status = guarded([&] {
        MObject shape = duplicate.node();
        return MFnDependencyNode(shape).findPlug("outMesh", true).getValue(cachedMesh);
    });
    MGlobal::deleteNode(transform);
    return status;
}

MStatus polyModifierCmd::cacheMeshTweaks() {
    tweakIndices.clear();
    tweakVectors.clear();
    if (!hasTweaks)
        return MS::kSuccess;
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
        MStatus kept = tweakVectors.append(vector);
        if (kept)
            kept = tweakIndices.append(static_cast<int>(element.logicalIndex()));
        if (!kept)
            return kept;
    }
    return MS::kSuccess;
}

/// Writes the mesh data of `source` into the mesh through its input: connects the two, evaluates
/// once and disconnects.
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
    status = guarded([&] {
        return MGlobal::executeCommand(
            MString("dgeval -src ") + mesh_fn.partialPathName() + ".inMesh", false, false);
    });
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

    // A mesh adds its tweaks to data written to its output, so the data goes in through its input.
    MObject transform;
    MDagPath duplicate;
    status = duplicate_mesh(meshPath, transform, duplicate);
    if (!status)
        return status;
    status = guarded([&] {
        MObject shape = duplicate.node();
        MPlug duplicateOut = MFnDependencyNode(shape).findPlug("outMesh", true);
        const MStatus written = duplicateOut.setValue(cachedMesh);
        return written ? evaluateFrom(duplicateOut) : written;
    });
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
        MPlug tweak = tweakAt(tweaks, i);
        const MStatus written = write_tweak(tweak, tweakVectors[i]);
        if (!written)
            status = written;
    }
    return status;
}
