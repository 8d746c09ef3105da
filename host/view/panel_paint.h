/// The layers of a panel, each a function that sets the OpenGL state it needs. The caller loads the
/// camera's matrices, and saves and restores the state around the whole panel.
#pragma once

#include "host/view/mesh_buffers.h"

#include <string>

namespace host {

/// A mesh in the scene, ready to be drawn.
struct DrawnShape {
    MeshBuffer* buffer = nullptr;
    MMatrix to_world;
    bool is_selected = false;
    std::vector<std::pair<ElementBuffer, graph::ComponentKind>> selected_parts;
};

/// Spacing and extent of the ground grid.
struct Grid {
    double step = 1.0;
    int lines = 12; ///< on each side of the origin
    double extent() const { return step * lines; }
};

/// Picks a decimal step so that the scene spans about ten to thirty grid lines.
Grid grid_for(const Bounds& scene);
/// Bounds of the grid in the plane it is drawn in: the ground (xz), or for an orthographic camera
/// the coordinate plane it faces.
Bounds grid_bounds(const Grid& grid, const CameraView& camera);

/// Resets to fixed-function drawing with no buffers, textures or programs bound.
void set_common_state();
void load_camera(const CameraView& camera);
/// Clears colour and depth of the rectangle.
void paint_background(const Viewport& viewport);
void paint_grid(const Grid& grid, const CameraView& camera);
void paint_surface(const DrawnShape& shape, const CameraView& camera);
/// Draws polygon edges, fainter where dense. `is_alone`: in wireframe mode, without faces.
void paint_wire(const DrawnShape& shape, const CameraView& camera, const Viewport& viewport,
                bool is_alone);
void paint_parts(const DrawnShape& shape, const CameraView& camera);
/// Draws a name in a stroke font, centred at the bottom. Unknown letters leave a gap.
void paint_name(const std::string& name, const Viewport& viewport);
/// Sets the state in which post-render callbacks draw: depth test on, lighting and textures off,
/// the camera's matrices.
void set_overlay_state(const CameraView& camera);

} // namespace host
