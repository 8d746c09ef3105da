#include "host/view/panel_paint.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

const GLvoid* const k_buffer_start = nullptr;

/// Polygon offset factor of faces; large enough for lines three pixels wide to stay in front.
constexpr float k_offset = 2.0f;

void load_model(const MMatrix& to_world, const CameraView& camera) {
    const MMatrix matrix = to_world * camera.view;
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(&matrix.matrix[0][0]);
}

void set_light(GLenum light, float x, float y, float z, float strength) {
    const GLfloat direction[] = {x, y, z, 0.0f};
    const GLfloat color[] = {strength, strength, strength, 1.0f};
    const GLfloat none[] = {0.0f, 0.0f, 0.0f, 1.0f};
    glLightfv(light, GL_POSITION, direction);
    glLightfv(light, GL_DIFFUSE, color);
    glLightfv(light, GL_AMBIENT, none);
    glLightfv(light, GL_SPECULAR, none);
    glEnable(light);
}

/// Lights fixed to the camera: a key light from the upper left, a fill light from the right.
void set_lights() {
    const GLfloat ambient[] = {0.30f, 0.30f, 0.32f, 1.0f};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    set_light(GL_LIGHT0, -0.45f, 0.75f, 0.70f, 0.58f);
    set_light(GL_LIGHT1, 0.80f, 0.05f, 0.55f, 0.22f);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_NORMALIZE);
    glEnable(GL_LIGHTING);
}

void unset_lights() {
    glDisable(GL_LIGHTING);
    glDisable(GL_COLOR_MATERIAL);
    glDisable(GL_NORMALIZE);
}

void draw_elements(GLenum mode, GLuint vertices, GLsizei stride, const ElementBuffer& elements) {
    if (elements.count == 0)
        return;
    glBindBuffer(GL_ARRAY_BUFFER, vertices);
    glVertexPointer(3, GL_FLOAT, stride, k_buffer_start);
    glEnableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, elements.name);
    glDrawElements(mode, elements.count, GL_UNSIGNED_INT, k_buffer_start);
    glDisableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

/// Length in pixels of a world length at the centre of a shape.
double pixels_of(double length, const DrawnShape& shape, const CameraView& camera,
                 const Viewport& viewport) {
    const MVector along = MVector(length, 0.0, 0.0) * shape.to_world;
    const MPoint center = shape.buffer->bounds.center() * shape.to_world * camera.view;
    const double distance = camera.is_orthographic ? 1.0 : std::max(-center.z, camera.depth_near);
    return along.length() * 0.5 * viewport.width / (camera.half_width * distance);
}

void blend(bool is_on) {
    if (is_on) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    } else {
        glDisable(GL_BLEND);
    }
}

/// Normal axis of the grid plane: an orthographic camera's view axis (0, 1, 2), else y.
int plane_normal(const CameraView& camera) {
    int axis = 1;
    for (int i = 0; camera.is_orthographic && i < 3; ++i)
        if (std::fabs(camera.view[unsigned(i)][2]) > 0.9)
            axis = i;
    return axis;
}

MPoint plane_point(int normal, double a, double b) {
    return normal == 0 ? MPoint(0, a, b) : (normal == 1 ? MPoint(a, 0, b) : MPoint(a, b, 0));
}

void grid_line(int normal, double a, double b, double c, double d) {
    const MPoint from = plane_point(normal, a, b), to = plane_point(normal, c, d);
    glVertex3d(from.x, from.y, from.z);
    glVertex3d(to.x, to.y, to.z);
}

} // namespace

Grid grid_for(const Bounds& scene) {
    Grid grid;
    if (scene.is_empty)
        return grid;
    double reach = 0.0;
    for (int i = 0; i < 8; ++i) {
        const MPoint corner = scene.corner(i);
        reach = std::max({reach, std::fabs(corner.x), std::fabs(corner.y), std::fabs(corner.z)});
    }
    if (!(reach > 1.0e-30) || !(reach < 1.0e30))
        return grid;
    grid.step = std::pow(10.0, std::floor(std::log10(0.5 * reach)));
    grid.lines = int(std::ceil(1.25 * reach / grid.step));
    return grid;
}

Bounds grid_bounds(const Grid& grid, const CameraView& camera) {
    const int normal = plane_normal(camera);
    Bounds bounds;
    bounds.add(plane_point(normal, -grid.extent(), -grid.extent()));
    bounds.add(plane_point(normal, grid.extent(), grid.extent()));
    return bounds;
}

void set_common_state() {
    for (const GLenum off :
         {GL_BLEND, GL_CULL_FACE, GL_FOG, GL_LIGHTING, GL_LINE_SMOOTH, GL_LINE_STIPPLE,
          GL_POLYGON_SMOOTH, GL_STENCIL_TEST, GL_TEXTURE_2D, GL_ALPHA_TEST, GL_COLOR_LOGIC_OP})
        glDisable(off);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glShadeModel(GL_SMOOTH);
    glLineWidth(1.0f);
    glUseProgram(0);
}

void load_camera(const CameraView& camera) {
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(&camera.projection.matrix[0][0]);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(&camera.view.matrix[0][0]);
}

void paint_background(const Viewport& viewport) {
    glViewport(viewport.x, viewport.y, viewport.width, viewport.height);
    glScissor(viewport.x, viewport.y, viewport.width, viewport.height);
    glEnable(GL_SCISSOR_TEST);
    glDepthMask(GL_TRUE);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glDisable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glBegin(GL_QUADS);
    glColor3f(0.60f, 0.63f, 0.67f);
    glVertex2f(-1.0f, -1.0f);
    glVertex2f(1.0f, -1.0f);
    glColor3f(0.84f, 0.86f, 0.88f);
    glVertex2f(1.0f, 1.0f);
    glVertex2f(-1.0f, 1.0f);
    glEnd();
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
}

void paint_grid(const Grid& grid, const CameraView& camera) {
    load_camera(camera);
    const int normal = plane_normal(camera);
    const double extent = grid.extent();
    blend(true);
    glDepthMask(GL_FALSE);
    glBegin(GL_LINES);
    for (int i = -grid.lines; i <= grid.lines; ++i) {
        glColor4f(0.25f, 0.27f, 0.30f, i == 0 ? 0.75f : 0.22f);
        grid_line(normal, i * grid.step, -extent, i * grid.step, extent);
        grid_line(normal, -extent, i * grid.step, extent, i * grid.step);
    }
    glEnd();
    glDepthMask(GL_TRUE);
    blend(false);
}

void paint_surface(const DrawnShape& shape, const CameraView& camera) {
    const MeshBuffer& buffer = *shape.buffer;
    set_lights();
    load_model(shape.to_world, camera);
    // A mirroring transform reverses the winding; without this, lighting would be inside out.
    glFrontFace(shape.to_world.det4x4() < 0.0 ? GL_CW : GL_CCW);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(k_offset, 2.0f);
    glColor3f(0.92f, 0.91f, 0.89f);
    glBindBuffer(GL_ARRAY_BUFFER, buffer.surface);
    glNormalPointer(GL_FLOAT, sizeof(SurfaceVertex),
                    static_cast<const char*>(k_buffer_start) + offsetof(SurfaceVertex, normal));
    glEnableClientState(GL_NORMAL_ARRAY);
    draw_elements(GL_TRIANGLES, buffer.surface, sizeof(SurfaceVertex), buffer.triangles);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisable(GL_POLYGON_OFFSET_FILL);
    unset_lights();
}

void paint_wire(const DrawnShape& shape, const CameraView& camera, const Viewport& viewport,
                bool is_alone) {
    const MeshBuffer& buffer = *shape.buffer;
    const double pixels = pixels_of(buffer.edge_length, shape, camera, viewport);
    const double room = std::min(std::max((pixels - 5.0) / 15.0, 0.0), 1.0);
    float alpha = float(0.35 * room);
    if (shape.is_selected)
        alpha = float(0.12 + 0.60 * room);
    if (is_alone)
        alpha = float(std::min(std::max(pixels / 8.0, 0.15), 0.9));
    if (alpha < 0.02f)
        return;
    load_model(shape.to_world, camera);
    blend(true);
    glDepthMask(is_alone ? GL_TRUE : GL_FALSE);
    if (shape.is_selected)
        glColor4f(0.95f, 0.45f, 0.05f, alpha);
    else
        glColor4f(0.08f, 0.10f, 0.14f, alpha);
    draw_elements(GL_LINES, buffer.points, sizeof(Float3), buffer.edges);
    glDepthMask(GL_TRUE);
    blend(false);
}

void paint_parts(const DrawnShape& shape, const CameraView& camera) {
    const MeshBuffer& buffer = *shape.buffer;
    load_model(shape.to_world, camera);
    blend(true);
    glDepthMask(GL_FALSE);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(0.5f * k_offset, 1.0f); // between the surface and the lines on it
    glLineWidth(2.0f);
    glPointSize(5.0f);
    for (const auto& [elements, kind] : shape.selected_parts) {
        const bool is_face = kind == graph::ComponentKind::face;
        glColor4f(0.95f, 0.45f, 0.05f, is_face ? 0.55f : 1.0f);
        if (is_face)
            draw_elements(GL_TRIANGLES, buffer.surface, sizeof(SurfaceVertex), elements);
        else
            draw_elements(kind == graph::ComponentKind::edge ? GL_LINES : GL_POINTS, buffer.points,
                          sizeof(Float3), elements);
    }
    glLineWidth(1.0f);
    glPointSize(1.0f);
    glDisable(GL_POLYGON_OFFSET_FILL);
    glDepthMask(GL_TRUE);
    blend(false);
}

void set_overlay_state(const CameraView& camera) {
    load_camera(camera);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
}

} // namespace host
