/// Cameras of the four model panels: view and projection matrices, and moving them.
///
/// "modelPanel1" to "modelPanel4" look through top, front, side and persp, which every scene has.
/// A camera is placed by its transform's translate and rotate, so scripts can move it as well.
/// Moves are not undoable. Film fit: the film's width spans the panel unless its height would then
/// be too small; an orthographic panel is `orthographicWidth` wide.
///
/// Clip planes are fitted to the drawn geometry instead of taken from the camera's attributes, so
/// that meshes of any size use the full precision of the depth buffer.
#pragma once

#include "host/graph/dag.h"

#include <maya/MMatrix.h>
#include <maya/MPoint.h>

#include <functional>
#include <string>

namespace host {

/// A rectangle in pixels of the framebuffer; the origin is its lower left corner, as in OpenGL.
struct Viewport {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool is_empty() const { return width <= 0 || height <= 0; }
    double aspect() const { return is_empty() ? 1.0 : double(width) / height; }
};

/// An axis-aligned box.
struct Bounds {
    MPoint low, high;
    bool is_empty = true;

    void add(const MPoint& point);
    void add(const Bounds& other);
    /// The axis-aligned bounds of this box's transformed corners.
    Bounds moved(const MMatrix& matrix) const;
    MPoint corner(int index) const; ///< 0 to 7
    MPoint center() const;
    double radius() const; ///< half the diagonal
};

/// A camera's matrices. Row vectors: world * view * projection is in clip space.
struct CameraView {
    MMatrix view;
    MMatrix projection;
    bool is_orthographic = false;
    double depth_near = 0.0; ///< distance of the near plane; negative: behind the camera
    double depth_far = 1.0;
    /// Half the size of the view: at distance 1, or at every distance if orthographic.
    double half_width = 1.0;
    double half_height = 1.0;
};

/// Path to a panel's camera shape; empty if the panel or its camera does not exist.
graph::DagPath panel_camera(int panel);
/// The name of the camera's transform, such as "persp".
std::string camera_name(const graph::DagPath& camera);

/// A camera's matrices for a viewport. `drawn`: world bounds that the clip planes enclose.
CameraView read_camera(const graph::DagPath& camera, const Viewport& viewport, const Bounds& drawn);

/// Projects a point to window coordinates: pixels from the lower left corner of the framebuffer,
/// and depth from 0 (near) to 1 (far). Returns false behind the camera.
bool project(const CameraView& camera, const Viewport& viewport, const MPoint& point,
             double window[3]);
/// The ray through window coordinates (x, y): origin and unit direction in world space.
void ray_through(const CameraView& camera, const Viewport& viewport, double x, double y,
                 MPoint& origin, MVector& direction);

// === Moving ==================================================================================

/// Calls the sink for each of its points; may be called more than once.
using PointSink = std::function<void(const MPoint&)>;
using PointSource = std::function<void(const PointSink&)>;

/// Moves the camera, without turning it, so that the points are centred and fill `factor` of the
/// panel in the tighter direction (in the other one, perspective may leave them slightly off
/// centre). Does nothing without points.
void frame_points(const graph::DagPath& camera, const Viewport& viewport, const PointSource& points,
                  double factor = 0.9);
/// Turns about the centre of interest, angles in degrees. Does nothing to orthographic cameras.
void orbit(const graph::DagPath& camera, double right, double up);
/// Turns about the centre of interest until the camera looks against `direction`, in world space,
/// upright. Does nothing to orthographic cameras.
void face(const graph::DagPath& camera, const MVector& direction);
/// Moves parallel to the image plane, so that the centre of interest moves by so many pixels.
void pan(const graph::DagPath& camera, const Viewport& viewport, double right, double up);
/// Scales the view about the centre of interest: `factor` 2 shows it twice as large; > 0.
void zoom(const graph::DagPath& camera, double factor);

} // namespace host
