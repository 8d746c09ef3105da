#include "window/map_paint.h"

#include <algorithm>
#include <utility>

namespace window {
namespace {

constexpr double k_checker_texels = 16.0; // side of one square
constexpr double k_min_grid_pixels = 7.0; // between grid lines

void set_colour(const ImVec4& c, float alpha) { glColor4f(c.x, c.y, c.z, alpha); }

void quad(double left, double bottom, double right, double top) {
    glBegin(GL_QUADS);
    glVertex2d(left, bottom);
    glVertex2d(right, bottom);
    glVertex2d(right, top);
    glVertex2d(left, top);
    glEnd();
}

/// Saves all OpenGL state and matrices, unbinds buffers, and restores everything on destruction.
class SavedGlState {
public:
    SavedGlState() {
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
        glMatrixMode(GL_TEXTURE);
        glPushMatrix();
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    }
    ~SavedGlState() {
        glMatrixMode(GL_TEXTURE);
        glPopMatrix();
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
        glPopClientAttrib();
        glPopAttrib();
    }
    SavedGlState(const SavedGlState&) = delete;
    SavedGlState& operator=(const SavedGlState&) = delete;
};

void unbind_buffers() {
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

/// Corners of triangles in arrays with three corners for each triangle.
std::vector<uint32_t> corners_of(const std::vector<uint32_t>& triangles) {
    std::vector<uint32_t> corners;
    corners.reserve(3 * triangles.size());
    for (const uint32_t t : triangles)
        corners.insert(corners.end(), {3 * t, 3 * t + 1, 3 * t + 2});
    return corners;
}

/// Draws triangles `begin` to `end` of the bound element buffer.
void draw_triangles(uint32_t begin, uint32_t end) {
    if (begin < end)
        glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(3 * (end - begin)), GL_UNSIGNED_INT,
                       reinterpret_cast<const void*>(3 * sizeof(uint32_t) * size_t(begin)));
}

} // namespace

PaintBuffer::~PaintBuffer() {
    if (buffer_)
        glDeleteBuffers(1, &buffer_);
}

template <class Make>
void PaintBuffer::bind(size_t revision, Make make) {
    const bool is_new = buffer_ == 0;
    if (is_new)
        glGenBuffers(1, &buffer_);
    glBindBuffer(target_, buffer_);
    if (!is_new && revision == revision_)
        return;
    const auto& content = make();
    glBufferData(target_, static_cast<GLsizeiptr>(content.size() * sizeof(content[0])),
                 content.data(), GL_STATIC_DRAW);
    revision_ = revision;
}

MapPaint::~MapPaint() {
    if (checker_)
        glDeleteTextures(1, &checker_);
    if (picture_)
        glDeleteTextures(1, &picture_);
}

void MapPaint::update_textures(const State& state) {
    if (checker_ == 0) {
        const GLubyte texels[] = {255, 150, 150, 255};
        glGenTextures(1, &checker_);
        glBindTexture(GL_TEXTURE_2D, checker_);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE8, 2, 2, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE,
                     texels);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    update_picture(state);
}

void MapPaint::update_picture(const State& state) {
    if (picture_revision_ == state.picture_revision || state.picture.is_empty())
        return;
    picture_revision_ = state.picture_revision;
    if (picture_ == 0)
        glGenTextures(1, &picture_);
    glBindTexture(GL_TEXTURE_2D, picture_);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, state.picture.width, state.picture.height, 0, GL_RGB,
                 GL_UNSIGNED_BYTE, state.picture.rgb.data());
    glBindTexture(GL_TEXTURE_2D, 0);
}

/// Binds the checker or the picture, in coordinates of the texture.
void MapPaint::begin_texturing(const State& state) {
    const bool is_checker = state.display == Display::checker;
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, is_checker ? checker_ : picture_);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    if (is_checker) {
        glScaled(state.subject.texture.width / (2.0 * k_checker_texels),
                 state.subject.texture.height / (2.0 * k_checker_texels), 1.0);
    } else { // the picture's first row is its top
        glTranslated(0.0, 1.0, 0.0);
        glScaled(1.0, -1.0, 1.0);
    }
    glMatrixMode(GL_MODELVIEW);
}

/// Binds the corners' places, and the list of corners.
void MapPaint::bind_places(const State& state, Places places) {
    const bool is_flat = places == Places::texture;
    const auto values = [&]() -> const std::vector<float>& {
        return is_flat ? state.map.uvs() : state.map.points();
    };
    (is_flat ? uvs_ : points_).bind(state.map_revision, values);
    glVertexPointer(is_flat ? 2 : 3, GL_FLOAT, 0, nullptr);
    glEnableClientState(GL_VERTEX_ARRAY);
    order_.bind(state.map_revision, [&] { return corners_of(state.map.triangles_by_chart()); });
}

/// Draws all triangles but those of a chart.
void MapPaint::paint_triangles(const State& state, Places places, uint32_t left_out) {
    if (state.map.triangle_count() == 0)
        return;
    bind_places(state, places);
    const bool has_picture = state.display == Display::picture && picture_ != 0;
    if (state.display == Display::checker || has_picture) {
        begin_texturing(state);
        uvs_.bind(state.map_revision,
                  [&]() -> const std::vector<float>& { return state.map.uvs(); });
        glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    }
    colours_.bind(state.map_revision * k_display_count + static_cast<size_t>(state.display),
                  [&] { return corner_colours(state.map, state.display); });
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, nullptr);
    glEnableClientState(GL_COLOR_ARRAY);
    if (left_out == k_none) {
        draw_triangles(0, state.map.triangle_count());
    } else {
        draw_triangles(0, state.map.chart_begin()[left_out]);
        draw_triangles(state.map.chart_begin()[left_out + 1], state.map.triangle_count());
    }
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisable(GL_TEXTURE_2D);
    unbind_buffers();
}

/// Draws the triangles of a chart in the present colour.
void MapPaint::paint_chart(const State& state, Places places, uint32_t chart) {
    bind_places(state, places);
    draw_triangles(state.map.chart_begin()[chart], state.map.chart_begin()[chart + 1]);
    glDisableClientState(GL_VERTEX_ARRAY);
    unbind_buffers();
}

void MapPaint::bind_outline(const State& state) {
    outline_.bind(state.map_revision,
                  [&]() -> const std::vector<float>& { return state.map.outline(); });
    glVertexPointer(2, GL_FLOAT, 0, nullptr);
    glEnableClientState(GL_VERTEX_ARRAY);
}

void MapPaint::paint_gutter(const State& state, const UvView& view) {
    const double texel = view.pixels_per_side() /
                         std::max(state.subject.texture.width, state.subject.texture.height);
    const double wide = state.subject.gutter * texel; // line width; half falls inside the chart
    if (wide < 1.0 || state.map.outline().empty())
        return;
    glLineWidth(static_cast<GLfloat>(std::min(wide, 250.0)));
    glColor4f(0.36f, 0.40f, 0.46f, 1.0f);
    bind_outline(state);
    const auto ends = static_cast<GLsizei>(2 * state.map.outline_begin().back());
    glDrawArrays(GL_LINES, 0, ends);
    if (wide >= 3.0) { // round the corners
        glEnable(GL_POINT_SMOOTH);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glPointSize(static_cast<GLfloat>(std::min(wide, 250.0)));
        glDrawArrays(GL_POINTS, 0, ends);
        glDisable(GL_BLEND);
    }
    glDisableClientState(GL_VERTEX_ARRAY);
    unbind_buffers();
}

void MapPaint::paint_grid(const State& state, const UvView& view) const {
    double low[2], high[2];
    view.to_uv(0.0, view.height(), low[0], low[1]);
    view.to_uv(view.width(), 0.0, high[0], high[1]);
    const double texels[2] = {state.subject.texture.width, state.subject.texture.height};
    const int step = view.grid_step(state.subject.texture, k_min_grid_pixels);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glLineWidth(1.0f);
    glBegin(GL_LINES);
    for (int axis = 0; axis < 2; ++axis) {
        const double first = std::clamp(low[axis], 0.0, 1.0) * texels[axis];
        const double last = std::clamp(high[axis], 0.0, 1.0) * texels[axis];
        for (int line = static_cast<int>(first) / step * step; line <= last; line += step) {
            const double at = line / texels[axis];
            glColor4f(0.0f, 0.0f, 0.0f, line % (8 * step) == 0 ? 0.30f : 0.11f);
            glVertex2d(axis == 0 ? at : 0.0, axis == 0 ? 0.0 : at);
            glVertex2d(axis == 0 ? at : 1.0, axis == 0 ? 1.0 : at);
        }
    }
    glEnd();
    glDisable(GL_BLEND);
}

void MapPaint::paint_outline(const State& state) {
    if (state.map.outline().empty())
        return;
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    set_colour(colour::line, 0.85f);
    glLineWidth(1.2f * state.scale);
    bind_outline(state);
    glDrawArrays(GL_LINES, 0, static_cast<GLsizei>(2 * state.map.outline_begin().back()));
    glDisableClientState(GL_VERTEX_ARRAY);
    unbind_buffers();
    glDisable(GL_BLEND);
}

void MapPaint::paint_lit(const State& state) {
    const uint32_t lit = state.lit();
    if (lit == k_none)
        return;
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    set_colour(colour::warm, 0.70f);
    paint_chart(state, Places::texture, lit);
    set_colour(colour::warm, 1.0f);
    glLineWidth(2.5f * state.scale);
    bind_outline(state);
    const uint32_t begin = state.map.outline_begin()[lit], end = state.map.outline_begin()[lit + 1];
    glDrawArrays(GL_LINES, static_cast<GLint>(2 * begin), static_cast<GLsizei>(2 * (end - begin)));
    glDisableClientState(GL_VERTEX_ARRAY);
    unbind_buffers();
    glDisable(GL_BLEND);
}

/// Draws the selected polygons.
void MapPaint::paint_marked(const State& state) {
    if (state.marked.empty())
        return;
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    set_colour(colour::error, 0.75f);
    bind_places(state, Places::texture);
    marked_.bind(state.scene_revision, [&] { return corners_of(state.marked); });
    draw_triangles(0, static_cast<uint32_t>(state.marked.size()));
    glDisableClientState(GL_VERTEX_ARRAY);
    unbind_buffers();
    glDisable(GL_BLEND);
}

/// Draws the selected edges, on both sides of a seam.
void MapPaint::paint_picked(const State& state) const {
    if (state.picked_uvs.empty())
        return;
    set_colour(colour::warm, 1.0f);
    glLineWidth(3.0f * state.scale);
    glVertexPointer(2, GL_FLOAT, 0, state.picked_uvs.data());
    glEnableClientState(GL_VERTEX_ARRAY);
    glDrawArrays(GL_LINES, 0, static_cast<GLsizei>(state.picked_uvs.size() / 2));
    glDisableClientState(GL_VERTEX_ARRAY);
}

/// Draws the seams of UVs that no unwrap made, or that were edited after it, in the colour that
/// unwraps give seams they keep.
/// Expects the camera's matrices and the mesh's.
void MapPaint::paint_seams(const State& state) {
    if (!state.draws_seams() || state.map.seams().empty())
        return;
    glDisable(GL_BLEND);
    glDepthFunc(GL_LEQUAL);
    glColor3f(0.0f, 1.0f, 0.0f);
    glLineWidth(3.0f * state.scale);
    seams_.bind(state.map_revision,
                [&]() -> const std::vector<float>& { return state.map.seams(); });
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    glEnableClientState(GL_VERTEX_ARRAY);
    glDrawArrays(GL_LINES, 0, static_cast<GLsizei>(state.map.seams().size() / 3));
    glDisableClientState(GL_VERTEX_ARRAY);
    unbind_buffers();
}

/// Draws the unit square, with the picture on it in that mode.
void MapPaint::paint_background(const State& state) {
    if (state.display != Display::picture || picture_ == 0) {
        glColor4f(0.215f, 0.222f, 0.236f, 1.0f);
        return quad(0.0, 0.0, 1.0, 1.0);
    }
    begin_texturing(state);
    glColor4f(0.55f, 0.55f, 0.55f, 1.0f); // darker than under the charts
    glBegin(GL_QUADS);
    for (const auto& [u, v] : {std::pair(0.0, 0.0), {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}) {
        glTexCoord2d(u, v);
        glVertex2d(u, v);
    }
    glEnd();
    glDisable(GL_TEXTURE_2D);
}

void MapPaint::paint_texture(const State& state, const UvView& view, bool has_grid) {
    const SavedGlState saved;
    update_textures(state);
    glViewport(0, 0, static_cast<GLsizei>(view.width()), static_cast<GLsizei>(view.height()));
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_CULL_FACE);
    glClearColor(0.140f, 0.145f, 0.155f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, view.width(), view.height(), 0.0, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    double x, y;
    view.to_pixel(0.0, 0.0, x, y);
    glTranslated(x, y, 0.0);
    glScaled(view.pixels_per_unit(0), -view.pixels_per_unit(1), 1.0);
    paint_background(state);
    paint_gutter(state, view);
    paint_triangles(state, Places::texture, k_none);
    if (has_grid)
        paint_grid(state, view);
    paint_outline(state);
    paint_lit(state);
    paint_marked(state);
    paint_picked(state);
    glLineWidth(1.0f);
    glColor4f(0.42f, 0.45f, 0.50f, 1.0f);
    glBegin(GL_LINE_LOOP);
    glVertex2d(0.0, 0.0);
    glVertex2d(1.0, 0.0);
    glVertex2d(1.0, 1.0);
    glVertex2d(0.0, 1.0);
    glEnd();
}

void MapPaint::paint_mesh(const State& state, const MMatrix& to_world) {
    if (state.map.charts().empty())
        return;
    const SavedGlState saved;
    update_textures(state);
    glMultMatrixd(&to_world.matrix[0][0]);
    glDisable(GL_LIGHTING);
    glDepthMask(GL_FALSE);
    paint_tint(state);
    paint_seams(state);
}

/// Multiplies the colours of the mesh's faces, and lights the lit chart.
void MapPaint::paint_tint(const State& state) {
    glEnable(GL_BLEND);
    // Depth between the mesh's faces and the wireframe lines drawn on them.
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.5f, 1.5f);
    if (state.display != Display::plain) {
        glBlendFunc(GL_DST_COLOR, GL_ZERO);
        paint_triangles(state, Places::mesh, state.lit());
    }
    if (state.lit() != k_none) {
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        set_colour(colour::warm, 0.65f);
        paint_chart(state, Places::mesh, state.lit());
    }
    glDisable(GL_POLYGON_OFFSET_FILL);
}

} // namespace window
