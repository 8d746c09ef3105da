/// The seam overlay that is drawn over the mesh in the four model panels.
#pragma once

#include "plugin/kit.h"

#include <maya/MCallbackIdArray.h>
#include <maya/MDagPath.h>
#include <maya/MIntArray.h>
#include <maya/MMessage.h>
#include <maya/MPointArray.h>
#include <maya/MPxNode.h>
#include <maya/MSpace.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

#include <vector>

/// Owned by the node. Its address is the client data of the callbacks, so it must not move or be
/// destroyed while a callback is attached.
struct VisualizationData {
    MCallbackIdArray callback_ids; ///< attached post-render callbacks, at most one per panel
    MDagPath mesh_path;            ///< the shape whose seams are drawn
    MIntArray existing_seams;      ///< vertex-id pairs: UV borders before the last unwrap
    MIntArray new_seams;           ///< vertex-id pairs: seams that the last unwrap introduced
    const MPxNode* node = nullptr; ///< the owner, once it was evaluated
};

/// Red, green and blue, 0 to 1, of the two lists of seams.
inline constexpr float k_existing_seam_color[3] = {0.0f, 1.0f, 0.0f};
inline constexpr float k_new_seam_color[3] = {0.0f, 0.0f, 1.0f};
inline constexpr float k_seam_width = 3.0f; ///< in pixels

/// Positions of the mesh's vertices in world or object space; false if the mesh was deleted or
/// cannot be read. Evaluates the mesh, which may unwrap it and so rewrite the seam lists.
bool read_points(const MDagPath& path, MSpace::Space space, MPointArray& points);

/// Calls `send(point)` for both ends of every seam. Leaves out pairs with a vertex that the mesh no
/// longer has: its history may have changed since the unwrap. Ignores an odd last entry.
template <class Send>
void for_each_end(const MIntArray& seams, const MPointArray& points, Send send) {
    const auto exists = [&](int id) {
        return id >= 0 && static_cast<unsigned int>(id) < points.length();
    };
    for (unsigned int i = 0; i + 1 < seams.length(); i += 2) {
        if (!exists(seams[i]) || !exists(seams[i + 1]))
            continue;
        send(points[static_cast<unsigned int>(seams[i])]);
        send(points[static_cast<unsigned int>(seams[i + 1])]);
    }
}

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

#if KIT_HAS_MODERN_DRAWING
/// Copies, without callbacks, of what is attached for the mesh below a transform: of several nodes
/// in its history, in the order in which they were attached.
std::vector<VisualizationData> attached_below(const MObject& transform);
#endif
