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

/// The plug of a node's attribute `name`.
MStatus find_plug(MObject node, const char* name, MPlug& plug) {
    MStatus status;
    MFnDependencyNode node_fn(node, &status);
    if (status)
        plug = node_fn.findPlug(name, true, &status);
    return status;
}

MStatus find_plug(const MDagPath& path, const char* name, MPlug& plug) {
    MStatus status;
    const MObject node = path.node(&status);
    return status ? find_plug(node, name, plug) : status;
}

/// The plug of an attribute of a node that need not be in the scene yet.
MStatus attribute_plug(const MObject& node, const char* name, MPlug& plug) {
    MStatus status;
    MObject owner(node);
    MFnDependencyNode node_fn(owner, &status);
    const MObject attribute = status ? node_fn.attribute(name, &status) : MObject();
    if (status)
        plug = MPlug(owner, attribute);
    return status;
}

/// A float3 plug's value. Fails when the plug does not hold one.
MStatus read_vector(const MPlug& plug, MFloatVector& vector) {
    MObject value;
    MStatus status = plug.getValue(value);
    if (!status)
        return status;
    MFnNumericData data(value, &status);
    return status ? data.getData(vector.x, vector.y, vector.z) : status;
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

/// Calls `visit` with every element of an array plug that is not null, in physical order. Stops at
/// the first failure.
template <class Visit>
MStatus for_each_element(const MPlug& array, const Visit& visit) {
    MStatus status;
    const unsigned int count = array.numElements(&status);
    for (unsigned int i = 0; i < count && status; ++i) {
        MPlug element = array.elementByPhysicalIndex(i, &status);
        if (status && !element.isNull())
            status = visit(element);
    }
    return status;
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
MStatus take_links(const MPlug& tweak, MDGModifier& modifier, std::vector<ComponentLinks>& links) {
    MStatus status;
    const unsigned int components = tweak.numChildren(&status);
    for (unsigned int c = 0; c < components && status; ++c) {
        links.emplace_back();
        ComponentLinks& link = links.back();
        const MPlug component = tweak.child(c, &status);
        if (!status || !component.isConnected(&status))
            continue;
        component.connectedTo(link.destinations, false, true, &status);
        for (unsigned int i = 0; i < link.destinations.length() && status; ++i)
            status = modifier.disconnect(component, link.destinations[i]);
        if (status)
            component.connectedTo(link.source, true, false, &status);
        if (status && link.source.length() > 0)
            status = modifier.disconnect(link.source[0], component);
    }
    return status;
}

/// Records in `modifier` that the components of `tweak` get the links from `next` on.
MStatus give_links(const MPlug& tweak, MDGModifier& modifier, std::vector<ComponentLinks>& links,
                   size_t& next) {
    MStatus status;
    const unsigned int components = tweak.numChildren(&status);
    for (unsigned int c = 0; c < components && next < links.size() && status; ++c, ++next) {
        const ComponentLinks& link = links[next];
        const MPlug component = tweak.child(c, &status);
        for (unsigned int i = 0; i < link.destinations.length() && status; ++i)
            status = modifier.connect(component, link.destinations[i]);
        if (status && link.source.length() > 0)
            status = modifier.connect(link.source[0], component);
    }
    return status;
}

/// Sets all tweaks of a copied mesh to zero. The host copies tweaks with the shape; what uses the
/// copy adds the tweaks of the original itself.
MStatus zero_own_tweaks(MObject shape) {
    MPlug tweaks;
    const MStatus status = find_plug(shape, "pnts", tweaks);
    return status ? for_each_element(tweaks,
                                     [](MPlug& tweak) {
                                         return write_vector(tweak, MFloatVector(0.0f, 0.0f, 0.0f));
                                     })
                  : status;
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
        const MObject node = found ? shape.node(&found) : MObject();
        return found ? zero_own_tweaks(node) : found;
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
      hasTweaks(false), recordsHistory(false), applied(false), dgDone(false), dagDone(false),
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

    MStatus status = collectNodeState();
    if (!status)
        return status;
    if (hasHistory || recordsHistory) {
        // Only the status of the connection counts: a node without mesh attributes cannot be
        // connected anyway, and a node with some attributes unset still unwraps.
        status = guarded([&] { return insertModifier(); });
        if (!status)
            guarded([&] { return abandonHistory(); });
        applied = static_cast<bool>(status);
        return status;
    }
    // Nothing is modified that undo could not restore.
    status = cacheMeshData();
    if (status)
        status = cacheMeshTweaks();
    return status ? directModifier(meshPath.node()) : status;
}

MStatus polyModifierCmd::redoModifyPoly() {
    if (!meshPathSet)
        return MS::kSuccess; // the first run found no mesh, so there is nothing to redo
    if (!hasHistory && !recordsHistory)
        return directModifier(meshPath.node());
    if (!hasHistory) {
        const MStatus status = duplicateRemoval.undoIt();
        if (!status)
            return status;
    }
    MStatus status = hasHistory ? MStatus(MS::kSuccess) : dagModifier.doIt();
    dgDone = false;
    if (status)
        status = connectAll();
    if (!status)
        takeBackRedo();
    applied = static_cast<bool>(status);
    return status;
}

/// Takes back what a failed redo has done so far: the host may ask for undo next.
void polyModifierCmd::takeBackRedo() {
    if (dgDone)
        dgModifier.undoIt();
    if (!hasHistory)
        removeDuplicate();
    undoTweaks();
}

MStatus polyModifierCmd::undoModifyPoly() {
    if (!meshPathSet)
        return MS::kSuccess; // the first run found no mesh, so there is nothing to undo
    if (!hasHistory && !recordsHistory)
        return undoDirectModifier();
    if (!applied)
        return MS::kSuccess; // redo failed and took itself back

    applied = false;
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

MStatus polyModifierCmd::collectNodeState() {
    MStatus status = meshPath.extendToShape();
    MPlug meshIn, tweaks;
    if (status)
        status = find_plug(meshPath, "inMesh", meshIn);
    if (status)
        hasHistory = meshIn.isConnected(&status);
    if (status)
        status = find_plug(meshPath, "pnts", tweaks);
    if (!status)
        return status;

    hasTweaks = false;
    const unsigned int count = tweaks.numElements(&status);
    for (unsigned int i = 0; i < count && status && !hasTweaks; ++i) {
        // Deliberate: elements that the host does not return are skipped here.
        const MPlug tweak = tweaks.elementByPhysicalIndex(i);
        MFloatVector vector;
        if (!tweak.isNull())
            status = read_vector(tweak, vector);
        hasTweaks = is_tweaked(vector);
    }
    if (!status)
        return status;

    int answer = 0;
    status = MGlobal::executeCommand("constructionHistory -q -tgl", answer, false, false);
    recordsHistory = answer != 0;
    return status;
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
    MPlug modifierIn, modifierOut;
    status = attribute_plug(modifierNode, "inMesh", modifierIn);
    if (status)
        status = attribute_plug(modifierNode, "outMesh", modifierOut);
    if (status)
        status = dgModifier.connect(source, modifierIn);
    if (status)
        status = dgModifier.connect(modifierOut, meshIn);
    return status ? connectAll() : status;
}

/// Applies the recorded changes. A host may refuse to set a tweak that a connection feeds, and
/// leaves the last value that came through it: those tweaks are zeroed once they are disconnected.
/// So are those that undo has put back on the mesh, because the tweak node that redo brings back
/// holds them as well.
MStatus polyModifierCmd::connectAll() {
    dgDone = true;
    const MStatus status = dgModifier.doIt();
    return status ? zeroMeshTweaks() : status;
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
    MPlug tweakIn;
    status = attribute_plug(tweakNode, "inputPolymesh", tweakIn);
    if (status)
        status = dgModifier.connect(upstream, tweakIn);
    return status ? attribute_plug(tweakNode, "output", upstream) : status;
}

MStatus polyModifierCmd::detachUpstream(const MPlug& meshIn, MPlug& upstream) {
    MPlugArray sources;
    MStatus status;
    meshIn.connectedTo(sources, true, false, &status);
    if (!status)
        return status;
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
    status = shape_fn.setIntermediateObject(true);
    if (status)
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

MStatus polyModifierCmd::moveTweaks(const MObject& tweakNode) {
    MPlug meshTweaks;
    MStatus status = find_plug(meshPath, "pnts", meshTweaks);
    if (status)
        status = cacheMeshTweaks();
    std::vector<ComponentLinks> links;
    for (unsigned int i = 0; i < tweakIndices.length() && status; ++i) {
        const MPlug tweak = tweakAt(meshTweaks, i, status);
        if (status)
            status = take_links(tweak, dgModifier, links);
    }
    if (!status)
        return status;

    MPlug tweaks;
    status = attribute_plug(tweakNode, "tweak", tweaks);
    size_t next = 0;
    for (unsigned int i = 0; i < tweakIndices.length() && status; ++i) {
        MPlug tweak = tweakAt(tweaks, i, status);
        if (status)
            status = write_vector(tweak, tweakVectors[i]);
        if (status)
            status = give_links(tweak, dgModifier, links, next);
    }
    if (status)
        status = zeroMeshTweaks();
    if (status && !hasHistory && recordsHistory) {
        // Deliberate: the second pass looks up the copy's tweaks and zeroes the mesh's own again.
        MPlug duplicateTweaks;
        if (find_plug(duplicatePath, "pnts", duplicateTweaks))
            status = zeroMeshTweaks();
    }
    return status;
}

/// The element of a tweak array that belongs to cached tweak `i`.
MPlug polyModifierCmd::tweakAt(const MPlug& tweaks, unsigned int i, MStatus& status) const {
    return tweaks.elementByLogicalIndex(static_cast<unsigned int>(tweakIndices[i]), &status);
}

MStatus polyModifierCmd::zeroMeshTweaks() {
    return writeMeshTweaks([](unsigned int) { return MFloatVector(0.0f, 0.0f, 0.0f); });
}

/// Sets every cached tweak of the mesh to `value(i)`. Goes on after a failure, to set as many as
/// possible; returns the last one.
template <class Value>
MStatus polyModifierCmd::writeMeshTweaks(const Value& value) {
    if (!hasTweaks)
        return MS::kSuccess;
    MPlug tweaks;
    MStatus status = find_plug(meshPath, "pnts", tweaks);
    if (!status)
        return status;
    for (unsigned int i = 0; i < tweakIndices.length(); ++i) {
        MStatus written;
        MPlug tweak = tweakAt(tweaks, i, written);
        if (written)
            written = write_tweak(tweak, value(i));
        if (!written)
            status = written;
    }
    return status;
}

// === The direct path =========================================================================

MStatus polyModifierCmd::cacheMeshData() {
    MObject transform;
    MDagPath duplicate;
    MStatus status = duplicate_mesh(meshPath, transform, duplicate);
    if (!status)
        return status;
    status = guarded([&] {
        MPlug duplicateOut;
        const MStatus found = find_plug(duplicate, "outMesh", duplicateOut);
        return found ? duplicateOut.getValue(cachedMesh) : found;
    });
    const MStatus deleted = MGlobal::deleteNode(transform);
    return status ? deleted : status;
}

MStatus polyModifierCmd::cacheMeshTweaks() {
    tweakIndices.clear();
    tweakVectors.clear();
    if (!hasTweaks)
        return MS::kSuccess;
    MPlug tweaks;
    const MStatus status = find_plug(meshPath, "pnts", tweaks);
    return status ? for_each_element(tweaks, [&](const MPlug& tweak) { return cacheTweak(tweak); })
                  : status;
}

MStatus polyModifierCmd::cacheTweak(const MPlug& tweak) {
    MFloatVector vector;
    MStatus status = read_vector(tweak, vector);
    const unsigned int index = status ? tweak.logicalIndex(&status) : 0;
    if (status)
        status = tweakVectors.append(vector);
    return status ? tweakIndices.append(static_cast<int>(index)) : status;
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
        MPlug duplicateOut;
        MStatus written = find_plug(duplicate, "outMesh", duplicateOut);
        if (written)
            written = duplicateOut.setValue(cachedMesh);
        return written ? evaluateFrom(duplicateOut) : written;
    });
    const MStatus deleted = MGlobal::deleteNode(transform);
    const MStatus tweaked = undoTweaks();
    if (status)
        status = deleted ? tweaked : deleted;
    return status;
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
    return writeMeshTweaks([&](unsigned int i) { return tweakVectors[i]; });
}
