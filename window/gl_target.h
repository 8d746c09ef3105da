/// An offscreen render target shown as a texture. It persists between frames, so that a panel is
/// redrawn only when its content changes.
///
/// Needs a current compatibility context with framebuffer objects (OpenGL 3.0) while it lives.
#pragma once

#include <GL/gl.h>

namespace window {

class GlTarget {
public:
    GlTarget() = default;
    ~GlTarget();
    GlTarget(const GlTarget&) = delete;
    GlTarget& operator=(const GlTarget&) = delete;

    /// Size in pixels. Returns true if it changed; the content is then undefined.
    bool resize(int width, int height);
    int width() const { return width_; }
    int height() const { return height_; }

    /// Directs drawing here until `unbind`, which also resolves the samples into the texture.
    void bind();
    void unbind();
    GLuint texture() const { return texture_; }

private:
    void release();
    int width_ = 0, height_ = 0;
    int samples_ = 0;
    GLuint texture_ = 0;
    GLuint frame_ = 0, smooth_frame_ = 0; ///< resolved; multisampled
    GLuint colour_ = 0, depth_ = 0;
};

} // namespace window
