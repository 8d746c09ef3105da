#include "host/view/offscreen.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>

namespace host {

namespace {

/// The calling thread's EGL binding, to be restored after drawing.
struct EglBinding {
    EGLenum api = EGL_OPENGL_API;
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLSurface draw = EGL_NO_SURFACE;
    EGLSurface read = EGL_NO_SURFACE;
    EGLContext context = EGL_NO_CONTEXT;

    static EglBinding now() {
        return {eglQueryAPI(), eglGetCurrentDisplay(), eglGetCurrentSurface(EGL_DRAW),
                eglGetCurrentSurface(EGL_READ), eglGetCurrentContext()};
    }
};

/// The surfaceless EGL display. Never terminated: one serves the whole process, and drivers leak
/// memory in eglTerminate.
EGLDisplay surfaceless_display() {
    static const EGLDisplay display = [] {
        const EGLDisplay found =
            eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        EGLint major = 0, minor = 0;
        return found != EGL_NO_DISPLAY && eglInitialize(found, &major, &minor) ? found
                                                                               : EGL_NO_DISPLAY;
    }();
    return display;
}

} // namespace

struct Offscreen::Parts {
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface surface = EGL_NO_SURFACE;
    EglBinding before;
    GlPanels* panels = nullptr;
    int width = 0, height = 0;
    GLuint framebuffer = 0, color = 0, depth = 0; ///< multisampled if requested
    GLuint resolved = 0, resolved_color = 0;      ///< 0: the framebuffer has one sample
};

Offscreen::Offscreen() : parts_(std::make_unique<Parts>()) {}

std::unique_ptr<Offscreen> Offscreen::make(std::string& error) {
    const EGLDisplay display = surfaceless_display();
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT,
                             EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_DEPTH_SIZE,
                             24,
                             EGL_NONE};
    const EGLint size[] = {EGL_WIDTH, 16, EGL_HEIGHT, 16, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    std::unique_ptr<Offscreen> made(new Offscreen);
    Parts& p = *made->parts_;
    const EglBinding before = EglBinding::now();
    if (display != EGL_NO_DISPLAY && eglBindAPI(EGL_OPENGL_API) &&
        eglChooseConfig(display, wanted, &config, 1, &count) && count > 0) {
        p.surface = eglCreatePbufferSurface(display, config, size);
        p.context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
        eglBindAPI(before.api);
    }
    if (p.surface != EGL_NO_SURFACE && p.context != EGL_NO_CONTEXT)
        return made;
    error = "the system gives no OpenGL without a screen (EGL surfaceless platform, desktop "
            "OpenGL, 24 bits of depth)";
    return nullptr;
}

Offscreen::~Offscreen() {
    drop_framebuffer();
    const EGLDisplay display = surfaceless_display();
    if (parts_->context != EGL_NO_CONTEXT)
        eglDestroyContext(display, parts_->context);
    if (parts_->surface != EGL_NO_SURFACE)
        eglDestroySurface(display, parts_->surface);
}

void Offscreen::set_panels(GlPanels* panels) { parts_->panels = panels; }

bool Offscreen::make_current() {
    Parts& p = *parts_;
    p.before = EglBinding::now();
    eglBindAPI(EGL_OPENGL_API);
    if (!eglMakeCurrent(surfaceless_display(), p.surface, p.surface, p.context)) {
        eglBindAPI(p.before.api);
        return false;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, p.framebuffer);
    return true;
}

void Offscreen::give_back() {
    const EglBinding& before = parts_->before;
    if (before.context == EGL_NO_CONTEXT) {
        eglMakeCurrent(surfaceless_display(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglBindAPI(before.api);
        return;
    }
    eglBindAPI(before.api);
    eglMakeCurrent(before.display, before.draw, before.read, before.context);
}

void Offscreen::redraw(int panel) {
    if (parts_->panels == nullptr)
        return;
    if (panel < 0)
        parts_->panels->draw_all();
    else
        parts_->panels->draw(panel);
}

void Offscreen::drop_framebuffer() {
    Parts& p = *parts_;
    if (p.framebuffer == 0 || !make_current())
        return;
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    for (GLuint* name : {&p.framebuffer, &p.resolved}) {
        glDeleteFramebuffers(1, name); // OpenGL ignores name 0
        *name = 0;
    }
    for (GLuint* name : {&p.color, &p.depth, &p.resolved_color}) {
        glDeleteRenderbuffers(1, name);
        *name = 0;
    }
    give_back();
    p.width = p.height = 0;
}

namespace {

GLuint make_store(GLenum format, int samples, int width, int height) {
    GLuint name = 0;
    glGenRenderbuffers(1, &name);
    glBindRenderbuffer(GL_RENDERBUFFER, name);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples > 1 ? samples : 0, format, width,
                                     height);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    return name;
}

/// Creates and binds a framebuffer with these renderbuffers; `depth` 0 for none. Returns true if
/// complete.
bool make_framebuffer(GLuint color, GLuint depth, GLuint& name) {
    glGenFramebuffers(1, &name);
    glBindFramebuffer(GL_FRAMEBUFFER, name);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

} // namespace

bool Offscreen::resize(int width, int height, int samples, std::string& error) {
    drop_framebuffer();
    Parts& p = *parts_;
    if (!make_current()) {
        error = "the OpenGL context cannot be made current";
        return false;
    }
    GLint max_size = 0, max_samples = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &max_size);
    glGetIntegerv(GL_MAX_SAMPLES, &max_samples);
    samples = std::min(samples, int(max_samples));
    bool good = width > 0 && height > 0 && width <= max_size && height <= max_size;
    if (good) {
        p.color = make_store(GL_RGBA8, samples, width, height);
        p.depth = make_store(GL_DEPTH_COMPONENT24, samples, width, height);
        if (samples > 1) {
            p.resolved_color = make_store(GL_RGBA8, 1, width, height);
            good = make_framebuffer(p.resolved_color, 0, p.resolved);
        }
        good = make_framebuffer(p.color, p.depth, p.framebuffer) && good;
    }
    give_back();
    if (!good) {
        drop_framebuffer();
        error = "no picture of " + std::to_string(width) + " x " + std::to_string(height) +
                " pixels can be drawn; " + std::to_string(max_size) + " each way at most";
        return false;
    }
    p.width = width;
    p.height = height;
    return true;
}

Picture Offscreen::read() {
    Parts& p = *parts_;
    if (p.framebuffer == 0 || !make_current())
        return {};
    if (p.resolved != 0) {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, p.framebuffer);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, p.resolved);
        glBlitFramebuffer(0, 0, p.width, p.height, 0, 0, p.width, p.height, GL_COLOR_BUFFER_BIT,
                          GL_NEAREST);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, p.resolved);
    }
    Picture picture = read_pixels(0, 0, p.width, p.height);
    give_back();
    return picture;
}

// === Pictures ================================================================================

std::unique_ptr<PanelPictures> PanelPictures::make(std::string& error) {
    std::unique_ptr<Offscreen> surface = Offscreen::make(error);
    return surface ? std::unique_ptr<PanelPictures>(new PanelPictures(std::move(surface)))
                   : nullptr;
}

PanelPictures::PanelPictures(std::unique_ptr<Offscreen> surface)
    : surface_(std::move(surface)), panels_(*surface_) {
    surface_->set_panels(&panels_);
    if (panels_.replaced() != nullptr)
        set_panel_renderer(panels_.replaced());
}

PanelPictures::~PanelPictures() = default;

bool PanelPictures::take(const Request& request, Picture& picture, std::string& error) {
    if (!surface_->resize(request.width, request.height, request.samples, error))
        return false;
    if (request.panel < 0)
        panels_.arrange_four(request.width, request.height, 4);
    else
        panels_.arrange_one(request.panel, request.width, request.height);
    for (int panel = 0; request.is_framed && panel < k_panel_count; ++panel)
        if (!panels_.viewport(panel).is_empty())
            panels_.frame(panel, false);
    PanelRenderer* const other = panel_renderer();
    set_panel_renderer(&panels_);
    const bool drawn = panels_.draw_all();
    set_panel_renderer(other);
    if (!drawn) {
        error = "a panel cannot be drawn: its camera is gone, or it is being drawn already";
        return false;
    }
    picture = surface_->read();
    return true;
}

} // namespace host
