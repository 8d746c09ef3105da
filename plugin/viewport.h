/// The seam overlay that is drawn over the mesh in the four model panels.
#pragma once

#include <maya/MCallbackIdArray.h>
#include <maya/MDagPath.h>
#include <maya/MIntArray.h>
#include <maya/MMessage.h>
#include <maya/MPxNode.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

/// Owned by the node. Its address is the client data of the callbacks, so it must not move or be
/// destroyed while a callback is attached.
struct VisualizationData {
    MCallbackIdArray callback_ids; ///< attached post-render callbacks, at most one per panel
    MDagPath mesh_path;            ///< the shape whose seams are drawn
    MIntArray existing_seams;      ///< vertex-id pairs: UV borders before the last unwrap
    MIntArray new_seams;           ///< vertex-id pairs: seams that the last unwrap introduced
    const MPxNode* node = nullptr; ///< the owner, once it was evaluated
};

/// Appends the id of a registered callback. If memory for that runs out the callback is removed: an
/// id that is not kept could never be removed later.
void keep_callback(MCallbackIdArray& ids, MCallbackId id);

/// Detaches all callbacks, then attaches one to each of the four model panels. A panel that fails
/// makes the result a failure; the other panels are attached nevertheless.
MStatus attach_viewport_callbacks(VisualizationData& data);

/// Removes every callback. The id list is empty afterwards, also on failure.
MStatus detach_viewport_callbacks(VisualizationData& data);

/// The post-render callback: draws existing seams green and new seams blue, 3 pixels wide. Detaches
/// all callbacks if the mesh cannot be read, or if node or mesh is no longer in the scene: undoing
/// the node's creation does not call its pre-removal callback.
void draw_seams(const MString& panel, void* client_data);
