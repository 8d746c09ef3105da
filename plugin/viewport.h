/// The seam overlay: which panels draw it, what it draws, when it goes away.
#pragma once

#include <maya/MCallbackIdArray.h>
#include <maya/MDagPath.h>
#include <maya/MIntArray.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

/// Owned by the node. Its address is the client data of every callback, so it neither moves nor
/// dies while a callback is attached.
struct VisualizationData {
    MCallbackIdArray callback_ids; ///< post-render callbacks now attached, one per panel at most
    MDagPath mesh_path;            ///< the shape whose seams are drawn
    MIntArray existing_seams;      ///< vertex-id pairs: UV borders before the last unwrap
    MIntArray new_seams;           ///< vertex-id pairs: seams that the last unwrap introduced
};

/// Attaches the drawing to the four model panels, after detaching what was attached. Failure when
/// a panel refused; the others are attached all the same.
MStatus attach_viewport_callbacks(VisualizationData& data);

/// Removes every callback. The id list is empty afterwards, whatever happened.
MStatus detach_viewport_callbacks(VisualizationData& data);

/// The post-render callback: existing seams green, new seams blue, 3 pixels wide.
void draw_seams(const MString& panel, void* client_data);
