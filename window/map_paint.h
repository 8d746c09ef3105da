/// Draws a UV map with OpenGL: in the plane of the texture, and as colours on the mesh.
///
/// Needs a current compatibility context. Colour arrays are rebuilt only when the map or the
/// display mode changes.
#pragma once

#include "window/state.h"
#include "window/uv_view.h"

#include <maya/MMatrix.h>

#include <GL/gl.h>

namespace window {

class MapPaint {
public:
    ~MapPaint();

    /// Draws the part of the texture that `view` shows, filling a viewport of the view's size.
    void paint_texture(const State& state, const UvView& view, bool has_grid);
    /// Tints the mesh already drawn, multiplying colours so that its shading stays visible.
    /// Expects the camera's matrices; restores all OpenGL state.
    void paint_mesh(const State& state, const MMatrix& to_world);

private:
    void update_arrays(const State& state);
    void update_picture(const State& state);
    void begin_texturing(const State& state);
    void paint_background(const State& state);
    void set_white_chart(const State& state, uint32_t chart);
    void paint_triangles(const State& state, const float* places, int dimensions);
    void paint_tint(const State& state);
    void paint_gutter(const State& state, const UvView& view) const;
    void paint_grid(const State& state, const UvView& view) const;
    void paint_outline(const State& state) const;
    void paint_lit(const State& state) const;
    void paint_marked(const State& state) const;
    void paint_picked(const State& state) const;
    void paint_seams(const State& state) const;

    size_t revision_ = 0;
    Display display_ = Display::plain;
    std::vector<uint32_t> colours_;
    uint32_t white_chart_ = k_none; ///< the chart set to white in colours_
    GLuint checker_ = 0;
    GLuint picture_ = 0;
    size_t picture_revision_ = 0;
};

} // namespace window
