/// Draws a UV map with OpenGL: flat, as the texture sees it, and on the mesh.
///
/// Needs a current compatibility context. Arrays are made again only when the map or the display
/// changed.
#pragma once

#include "window/state.h"
#include "window/uv_view.h"

#include <maya/MMatrix.h>

#include <GL/gl.h>

namespace window {

class MapPaint {
public:
    ~MapPaint();

    /// The texture from edge to edge of the viewport, which is as large as the view.
    void paint_texture(const State& state, const UvView& view, bool has_grid);
    /// Tints the surface that was drawn before: colours multiply, so that its light stays.
    /// Expects the camera's matrices; leaves them, and all other state, as they were.
    void paint_mesh(const State& state, const MMatrix& to_world);

private:
    void take(const State& state);
    void leave_plain(const State& state, uint32_t chart);
    void paint_triangles(const State& state, const float* places, int dimensions);
    void paint_gutter(const State& state, const UvView& view) const;
    void paint_grid(const State& state, const UvView& view) const;
    void paint_outline(const State& state) const;
    void paint_lit(const State& state) const;

    size_t revision_ = 0;
    Display display_ = Display::plain;
    std::vector<uint32_t> colours_;
    uint32_t plain_chart_ = k_none; ///< the one that is white in colours_
    GLuint checker_ = 0;
};

} // namespace window
