/// Draws a UV map with OpenGL: in the plane of the texture, and as colours on the mesh.
///
/// Needs a current compatibility context. Buffers are filled only when the map, the display mode or
/// the selection changes, not when another chart is lit or the view moves.
#pragma once

#include "window/state.h"
#include "window/uv_view.h"

#include <maya/MMatrix.h>

#include <GL/gl.h>
#include <GL/glext.h>

namespace window {

/// A buffer of OpenGL, filled when its content is older than what it is made of.
class PaintBuffer {
public:
    explicit PaintBuffer(GLenum target) : target_(target) {}
    ~PaintBuffer();
    PaintBuffer(const PaintBuffer&) = delete;
    PaintBuffer& operator=(const PaintBuffer&) = delete;

    /// Binds it, and first fills it with what `make()` returns, a vector, unless that was done for
    /// the same `revision`.
    template <class Make>
    void bind(size_t revision, Make make);

private:
    GLenum target_;
    GLuint buffer_ = 0;
    size_t revision_ = 0;
};

class MapPaint {
public:
    ~MapPaint();

    /// Draws the part of the texture that `view` shows, filling a viewport of the view's size.
    void paint_texture(const State& state, const UvView& view, bool has_grid);
    /// Tints the mesh already drawn, multiplying colours so that its shading stays visible.
    /// Expects the camera's matrices; restores all OpenGL state.
    void paint_mesh(const State& state, const MMatrix& to_world);

private:
    void update_textures(const State& state);
    void update_picture(const State& state);
    void begin_texturing(const State& state);
    void paint_background(const State& state);
    enum class Places { texture, mesh };
    void bind_places(const State& state, Places places);
    void bind_outline(const State& state);
    void paint_triangles(const State& state, Places places, uint32_t left_out);
    void paint_chart(const State& state, Places places, uint32_t chart);
    void paint_tint(const State& state);
    void paint_gutter(const State& state, const UvView& view);
    void paint_grid(const State& state, const UvView& view) const;
    void paint_outline(const State& state);
    void paint_lit(const State& state);
    void paint_marked(const State& state);
    void paint_picked(const State& state) const;
    void paint_seams(const State& state);

    PaintBuffer points_{GL_ARRAY_BUFFER}, uvs_{GL_ARRAY_BUFFER}, colours_{GL_ARRAY_BUFFER},
        outline_{GL_ARRAY_BUFFER}, seams_{GL_ARRAY_BUFFER};
    /// Corners of the triangles, chart by chart; and of the selected ones.
    PaintBuffer order_{GL_ELEMENT_ARRAY_BUFFER}, marked_{GL_ELEMENT_ARRAY_BUFFER};
    GLuint checker_ = 0;
    GLuint picture_ = 0;
    size_t picture_revision_ = 0;
};

} // namespace window
