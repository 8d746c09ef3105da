/// The cameras that the four model panels look through: what they see, and how a user moves them.
///
/// "modelPanel1" to "modelPanel4" look through top, front, side and persp, which every scene has.
/// A camera's place is its transform's translate and rotate, so scripts can move it as well. Moves
/// leave no trace in the undo queue. Film fit: the film covers the panel, as wide as it is if that
/// is enough; an orthographic panel is `orthographicWidth` wide.
///
/// Clip planes hug what is drawn instead of standing where the camera's attributes say: meshes of a
/// millimetre and of a kilometre keep the whole precision of the depth buffer.
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
    /// The box about this one's corners after they were moved.
    Bounds moved(const MMatrix& matrix) const;
    MPoint corner(int index) const; ///< 0 to 7
    MPoint center() const;
    double radius() const; ///< half the diagonal
};

/// A camera as it stands now. Row vectors: world * view * projection is in clip space.
struct CameraView {
    MMatrix view;
    MMatrix projection;
    bool is_orthographic = false;
    double depth_near = 0.0; ///< distance of the clip planes; near is negative behind an
    double depth_far = 1.0;  ///< orthographic camera
    double half_width = 1.0; ///< of what is seen: at distance 1, or everywhere if orthographic
    double half_height = 1.0;
};

/// Path to a panel's camera shape; empty for an unknown panel or when somebody took it away.
graph::DagPath panel_camera(int panel);
/// The camera's name as a user knows it: "persp".
std::string camera_name(const graph::DagPath& camera);

/// What a camera sees through a viewport. `drawn`: what lies between the clip planes.
CameraView read_camera(const graph::DagPath& camera, const Viewport& viewport, const Bounds& drawn);

/// Window coordinates of a point: pixels from the lower left corner of the framebuffer, and the
/// depth from 0 (near) to 1 (far). False behind the camera.
bool project(const CameraView& camera, const Viewport& viewport, const MPoint& point,
             double window[3]);
/// The ray through the middle of nothing but this spot: origin and unit direction in world space.
void ray_through(const CameraView& camera, const Viewport& viewport, double x, double y,
                 MPoint& origin, MVector& direction);

// === Moving ==================================================================================

/// What calls a function for each of the points it knows; it may be asked more than once.
using PointSink = std::function<void(const MPoint&)>;
using PointSource = std::function<void(const PointSink&)>;

/// Moves the camera, without turning it, to where the points fill `factor` of the panel in the
/// tighter direction and are in the middle of it (in the other one nearly so, where perspective
/// leaves room). Does nothing when there are no points.
void frame_points(const graph::DagPath& camera, const Viewport& viewport, const PointSource& points,
                  double factor = 0.9);
/// Turns about the centre of interest, in degrees: to the right, and up. Orthographic cameras do
/// not turn.
void orbit(const graph::DagPath& camera, double right, double up);
/// Moves in the plane of the panel, so that what is at the centre of interest follows the pointer
/// by so many pixels to the right and up.
void pan(const graph::DagPath& camera, const Viewport& viewport, double right, double up);
/// Brings the centre of interest nearer: `factor` 2 shows it twice as large. Above 0.
void zoom(const graph::DagPath& camera, double factor);

} // namespace host
