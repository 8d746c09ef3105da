/// Offscreen panels: a surfaceless EGL compatibility context, which needs neither a screen nor a
/// graphics card, with a framebuffer object of any size.
#pragma once

#include "host/view/gl_panels.h"
#include "host/view/pixels.h"

#include <memory>
#include <string>

namespace host {

class Offscreen : public PanelSurface {
public:
    /// Returns null and sets `error` to a sentence if no context can be created.
    static std::unique_ptr<Offscreen> make(std::string& error);
    virtual ~Offscreen();
    Offscreen(const Offscreen&) = delete;
    Offscreen& operator=(const Offscreen&) = delete;

    /// Recreates the framebuffer. `samples` for multisampling, 1 to disable; reduced to the maximum
    /// that the driver supports.
    /// Errors: returns false with a sentence in `error`; the surface then has no framebuffer.
    bool resize(int width, int height, int samples, std::string& error);
    /// Reads back the framebuffer; empty without one.
    Picture read();

    /// The panels that `redraw` draws; not owned, null for none.
    void set_panels(GlPanels* panels);

    bool make_current() override;
    void give_back() override;
    void redraw(int panel) override;

private:
    Offscreen();
    struct Parts;
    void drop_framebuffer();
    std::unique_ptr<Parts> parts_;
};

/// Takes pictures of the panels. It is the application's panel renderer while taking a picture, and
/// otherwise only if there is no other.
class PanelPictures {
public:
    /// Returns null and sets `error` to a sentence if no context can be created.
    static std::unique_ptr<PanelPictures> make(std::string& error);
    ~PanelPictures();

    struct Request {
        int panel = -1; ///< one panel alone; -1: all four
        int width = 1280;
        int height = 960;
        int samples = 4;
        bool is_framed = false; ///< first move the cameras to frame the whole scene
    };
    /// Errors: returns false with a sentence in `error`.
    bool take(const Request& request, Picture& picture, std::string& error);
    GlPanels& panels() { return panels_; }

private:
    explicit PanelPictures(std::unique_ptr<Offscreen> surface);
    std::unique_ptr<Offscreen> surface_;
    GlPanels panels_;
};

} // namespace host
