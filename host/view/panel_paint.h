/// What a panel is painted of, each with the OpenGL state it needs. The caller has set the matrices
/// of the camera, and saves and restores the state around the whole panel.
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
    std::vector<std::pair<ElementBuffer, std::array<float, 4>>> highlights; ///< faces
};

/// Which lines the ground has.
struct Grid {
    double step = 1.0;
    int lines = 12; ///< to each side of the origin
    double extent() const { return step * lines; }
};

/// A decimal step that gives the scene's surroundings some ten to thirty lines.
Grid grid_for(const Bounds& scene);
/// The plane that a camera looks at: the ground (x, z), or the one an orthographic camera faces.
Bounds grid_bounds(const Grid& grid, const CameraView& camera);

/// What every panel begins with, after the state was saved: fixed function, nothing bound.
void set_common_state();
void load_camera(const CameraView& camera);
/// Clears the rectangle, colour and depth.
void paint_background(const Viewport& viewport);
void paint_grid(const Grid& grid, const CameraView& camera);
void paint_surface(const DrawnShape& shape, const CameraView& camera);
/// The polygon edges, fainter where they crowd. `is_alone`: there is no surface below them.
void paint_wire(const DrawnShape& shape, const CameraView& camera, const Viewport& viewport,
                bool is_alone);
void paint_parts(const DrawnShape& shape, const CameraView& camera);
/// A name in line letters at the middle of the bottom. Letters it does not know leave a gap.
void paint_name(const std::string& name, const Viewport& viewport);
/// What callbacks find: depth test on, lighting and textures off, the camera's matrices.
void set_overlay_state(const CameraView& camera);

} // namespace host
