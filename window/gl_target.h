/// A picture that OpenGL draws into and that the window shows: kept between frames, so that a panel
/// is drawn again only when something in it changed.
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

    /// In pixels. True when the size changed; what was drawn is lost then.
    bool resize(int width, int height);
    int width() const { return width_; }
    int height() const { return height_; }

    /// Draws go here from now on, until `unbind`, which also smooths the edges of what was drawn.
    void bind();
    void unbind();
    GLuint texture() const { return texture_; }

private:
    void release();
    int width_ = 0, height_ = 0;
    int samples_ = 0;
    GLuint texture_ = 0;
    GLuint frame_ = 0, smooth_frame_ = 0; ///< what is shown; what is drawn into
    GLuint colour_ = 0, depth_ = 0;
};

} // namespace window
