#include "host/view/cameras.h"

#include "host/graph/evaluate.h"
#include "host/graph/scene.h"
#include "host/ui/panels.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace host {

using graph::DagNode;
using graph::DagPath;
using graph::Node;

namespace {

constexpr double k_pi = 3.14159265358979323846;
constexpr double k_degree = k_pi / 180.0;

double number_of(Node& node, const char* plug, double absent) {
    graph::Slot* const slot = node.find_plug(plug);
    if (slot == nullptr)
        return absent;
    graph::evaluate(*slot);
    return slot->value.is_number() ? slot->value.number() : absent;
}

/// Sets a number unless the plug is locked or connected.
void set_number(Node& node, const char* plug, double value) {
    if (graph::Slot* const slot = node.find_plug(plug))
        graph::set_value(*slot, graph::PlugValue::of_double(value));
}

MMatrix world_matrix(const DagPath& path) {
    MMatrix matrix;
    for (const auto& node : path)
        matrix = node->local_matrix() * matrix;
    return matrix;
}

MVector row(const MMatrix& matrix, unsigned int index) {
    return MVector(matrix[index][0], matrix[index][1], matrix[index][2]);
}

void set_position(const DagPath& camera, const MPoint& world) {
    DagPath above(camera.begin(), camera.end() - 2);
    const MPoint place = world * world_matrix(above).inverse();
    Node& transform = *camera[camera.size() - 2];
    set_number(transform, "translateX", place.x);
    set_number(transform, "translateY", place.y);
    set_number(transform, "translateZ", place.z);
}

bool can_move(const DagPath& camera) { return camera.size() >= 2; }

MPoint center_of_interest(const DagPath& camera, const MMatrix& world) {
    const double distance = number_of(*camera.back(), "centerOfInterest", 5.0);
    return MPoint(world[3][0], world[3][1], world[3][2]) - row(world, 2) * distance;
}

/// Computes half_width and half_height.
void find_extent(Node& shape, double aspect, CameraView& camera) {
    camera.is_orthographic = number_of(shape, "orthographic", 0.0) != 0.0;
    if (camera.is_orthographic) {
        camera.half_width = std::max(0.5 * number_of(shape, "orthographicWidth", 30.0), 1.0e-9);
        camera.half_height = camera.half_width / aspect;
        return;
    }
    constexpr double k_inch = 25.4; // film in inches, focal length in millimetres
    const double focal = std::max(number_of(shape, "focalLength", 35.0), 1.0e-3);
    const double film_width = number_of(shape, "horizontalFilmAperture", 1.41732) * k_inch;
    const double film_height = number_of(shape, "verticalFilmAperture", 0.94488) * k_inch;
    camera.half_width = 0.5 * film_width / focal;
    camera.half_height = camera.half_width / aspect;
    if (aspect < film_width / film_height) {
        camera.half_height = 0.5 * film_height / focal;
        camera.half_width = camera.half_height * aspect;
    }
}

void find_depths(const Bounds& drawn, CameraView& camera) {
    double nearest = camera.is_orthographic ? -1.0 : 0.1;
    double farthest = 1000.0;
    if (!drawn.is_empty) {
        const Bounds seen = drawn.moved(camera.view); // the camera looks along -z
        const double margin = 1.0e-3 * std::max(drawn.radius(), 1.0e-12);
        nearest = -seen.high.z - margin;
        farthest = -seen.low.z + margin;
    }
    if (!camera.is_orthographic) {
        farthest = std::max(farthest, 1.0e-6);
        nearest = std::max(nearest, farthest * 1.0e-4);
    }
    camera.depth_near = nearest;
    camera.depth_far = std::max(farthest, nearest + 1.0e-9 * (1.0 + std::fabs(nearest)));
}

MMatrix projection_of(const CameraView& camera) {
    MMatrix p;
    const double n = camera.depth_near, f = camera.depth_far;
    p[0][0] = 1.0 / camera.half_width;
    p[1][1] = 1.0 / camera.half_height;
    if (camera.is_orthographic) {
        p[2][2] = -2.0 / (f - n);
        p[3][2] = -(f + n) / (f - n);
    } else {
        p[2][2] = -(f + n) / (f - n);
        p[2][3] = -1.0;
        p[3][2] = -2.0 * f * n / (f - n);
        p[3][3] = 0.0;
    }
    return p;
}

} // namespace

// === Bounds ==================================================================================

void Bounds::add(const MPoint& p) {
    if (is_empty)
        low = high = p;
    is_empty = false;
    low = MPoint(std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z));
    high = MPoint(std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z));
}

void Bounds::add(const Bounds& other) {
    if (other.is_empty)
        return;
    add(other.low);
    add(other.high);
}

MPoint Bounds::corner(int index) const {
    return MPoint(index & 1 ? high.x : low.x, index & 2 ? high.y : low.y,
                  index & 4 ? high.z : low.z);
}

Bounds Bounds::moved(const MMatrix& matrix) const {
    Bounds box;
    for (int i = 0; i < 8 && !is_empty; ++i)
        box.add(corner(i) * matrix);
    return box;
}

MPoint Bounds::center() const {
    return MPoint(0.5 * (low.x + high.x), 0.5 * (low.y + high.y), 0.5 * (low.z + high.z));
}

double Bounds::radius() const { return is_empty ? 0.0 : 0.5 * (high - low).length(); }

// === Cameras =================================================================================

DagPath panel_camera(int panel) {
    static const char* const k_names[k_panel_count] = {"top", "front", "side", "persp"};
    if (panel < 0 || panel >= k_panel_count)
        return {};
    for (Node* const node : graph::Scene::current().named(k_names[panel])) {
        DagNode* const transform = node->as_dag_node();
        if (transform == nullptr || !transform->is_default)
            continue;
        for (DagNode* const child : transform->children())
            if (child->node_type().name == "camera")
                return {Ref<DagNode>(transform), Ref<DagNode>(child)};
    }
    return {};
}

std::string camera_name(const DagPath& camera) {
    return camera.size() < 2 ? "" : camera[camera.size() - 2]->name_text();
}

CameraView read_camera(const DagPath& camera, const Viewport& viewport, const Bounds& drawn) {
    CameraView seen;
    if (camera.empty())
        return seen;
    seen.view = world_matrix(camera).inverse();
    find_extent(*camera.back(), viewport.aspect(), seen);
    find_depths(drawn, seen);
    seen.projection = projection_of(seen);
    return seen;
}

bool project(const CameraView& camera, const Viewport& viewport, const MPoint& point,
             double window[3]) {
    const MPoint clip = point * camera.view * camera.projection;
    if (clip.w <= 0.0)
        return false;
    window[0] = viewport.x + 0.5 * (clip.x / clip.w + 1.0) * viewport.width;
    window[1] = viewport.y + 0.5 * (clip.y / clip.w + 1.0) * viewport.height;
    window[2] = 0.5 * (clip.z / clip.w + 1.0);
    return true;
}

void ray_through(const CameraView& camera, const Viewport& viewport, double x, double y,
                 MPoint& origin, MVector& direction) {
    const double right = (2.0 * (x - viewport.x) / viewport.width - 1.0) * camera.half_width;
    const double up = (2.0 * (y - viewport.y) / viewport.height - 1.0) * camera.half_height;
    const MMatrix world = camera.view.inverse();
    const bool flat = camera.is_orthographic;
    origin = (flat ? MPoint(right, up, -camera.depth_near) : MPoint()) * world;
    direction = ((flat ? MVector(0.0, 0.0, -1.0) : MVector(right, up, -1.0)) * world).normal();
}

// === Moving ==================================================================================

namespace {

/// The camera position (X, Z) that frames points along one axis of the panel.
///
/// A point (x, z), z towards the camera, is visible if |x - X| <= t (Z - z), with t the tangent of
/// half the field of view. So z + x / t bounds Z + X / t from below and z - x / t bounds Z - X / t;
/// where both bounds are met with equality the points are centred and fill the panel.
struct FramingBounds {
    double right = -k_far, left = -k_far;
    void add(double x, double z, double tangent) {
        right = std::max(right, z + x / tangent);
        left = std::max(left, z - x / tangent);
    }
    double distance() const { return 0.5 * (right + left); }
    double offset(double tangent) const { return 0.5 * (right - left) * tangent; }
    static constexpr double k_far = 1.0e300;
};

/// The points' bounds along the camera's axes, relative to the world origin.
struct Extent {
    Bounds box;
    FramingBounds sideways, upwards;
};

Extent extent_of(const PointSource& points, const MMatrix& world, double tangent_x,
                 double tangent_y) {
    Extent extent;
    points([&](const MPoint& point) {
        const MVector p(point);
        const MPoint seen(p * row(world, 0), p * row(world, 1), p * row(world, 2));
        extent.box.add(seen);
        extent.sideways.add(seen.x, seen.z, tangent_x);
        extent.upwards.add(seen.y, seen.z, tangent_y);
    });
    return extent;
}

} // namespace

void frame_points(const DagPath& camera, const Viewport& viewport, const PointSource& points,
                  double factor) {
    if (!can_move(camera) || !(factor > 0.0))
        return;
    const CameraView seen = read_camera(camera, viewport, Bounds());
    const MMatrix world = world_matrix(camera);
    const double x = factor * seen.half_width, y = factor * seen.half_height;
    const Extent extent = extent_of(points, world, x, y);
    if (extent.box.is_empty)
        return;
    MPoint place = extent.box.center();
    const double middle = place.z;
    // Points without extent are framed as if they had this size.
    const double min_size = 1.0e-6 * (1.0 + (place - MPoint()).length());
    const double radius = std::max(extent.box.radius(), min_size);
    if (seen.is_orthographic) {
        const MVector size = extent.box.high - extent.box.low;
        const double width = std::max({size.x, size.y * viewport.aspect(), min_size}) / factor;
        set_number(*camera.back(), "orthographicWidth", width);
        // Keep the camera's depth unless the points would lie behind it.
        const MPoint here(world[3][0], world[3][1], world[3][2]);
        place.z = std::max(middle + 2.0 * radius, MVector(here) * row(world, 2));
    } else {
        place.x = extent.sideways.offset(x);
        place.y = extent.upwards.offset(y);
        place.z =
            std::max({extent.sideways.distance(), extent.upwards.distance(), middle + radius});
    }
    set_position(camera, MPoint(row(world, 0) * place.x + row(world, 1) * place.y +
                                row(world, 2) * place.z));
    set_number(*camera.back(), "centerOfInterest", place.z - middle);
}

namespace {

/// Turns the camera about its centre of interest to these angles, in radians.
void turn(const DagPath& camera, double elevation, double azimuth) {
    const MPoint center = center_of_interest(camera, world_matrix(camera));
    Node& transform = *camera[camera.size() - 2];
    set_number(transform, "rotateX", std::max(-0.5 * k_pi, std::min(elevation, 0.5 * k_pi)));
    set_number(transform, "rotateY", azimuth);
    const double distance = number_of(*camera.back(), "centerOfInterest", 5.0);
    set_position(camera, center + row(world_matrix(camera), 2) * distance);
}

bool can_turn(const DagPath& camera) {
    return can_move(camera) && number_of(*camera.back(), "orthographic", 0.0) == 0.0;
}

} // namespace

void orbit(const DagPath& camera, double right, double up) {
    if (!can_turn(camera))
        return;
    Node& transform = *camera[camera.size() - 2];
    turn(camera, number_of(transform, "rotateX", 0.0) - up * k_degree,
         number_of(transform, "rotateY", 0.0) - right * k_degree);
}

void face(const DagPath& camera, const MVector& direction) {
    const double length = direction.length();
    if (!can_turn(camera) || !(length > 0.0))
        return;
    // The camera looks along its -z, which rotateX tilts before rotateY turns it.
    turn(camera, -std::asin(std::clamp(direction.y / length, -1.0, 1.0)),
         std::atan2(direction.x, direction.z));
}

void pan(const DagPath& camera, const Viewport& viewport, double right, double up) {
    if (!can_move(camera) || viewport.is_empty())
        return;
    const CameraView seen = read_camera(camera, viewport, Bounds());
    const double distance = number_of(*camera.back(), "centerOfInterest", 5.0);
    const double unit =
        2.0 * seen.half_width / viewport.width * (seen.is_orthographic ? 1.0 : distance);
    const MMatrix world = world_matrix(camera);
    const MPoint here(world[3][0], world[3][1], world[3][2]);
    set_position(camera, here - row(world, 0) * (right * unit) - row(world, 1) * (up * unit));
}

void zoom(const DagPath& camera, double factor) {
    if (!can_move(camera) || !(factor > 0.0))
        return;
    Node& shape = *camera.back();
    if (number_of(shape, "orthographic", 0.0) != 0.0) {
        set_number(shape, "orthographicWidth",
                   number_of(shape, "orthographicWidth", 30.0) / factor);
        return;
    }
    const MMatrix world = world_matrix(camera);
    const MPoint center = center_of_interest(camera, world);
    const double distance = number_of(shape, "centerOfInterest", 5.0) / factor;
    set_position(camera, center + row(world, 2) * distance);
    set_number(shape, "centerOfInterest", distance);
}

} // namespace host
