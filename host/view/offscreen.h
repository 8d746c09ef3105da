/// Panels without a window: a compatibility context that needs neither screen nor graphics card,
/// and a framebuffer of any size in it.
#pragma once

#include "host/view/gl_panels.h"
#include "host/view/picture.h"

#include <memory>
#include <string>

namespace host {

class Offscreen : public PanelSurface {
public:
    /// Null with a sentence in `error` when the system gives no context.
    static std::unique_ptr<Offscreen> make(std::string& error);
    virtual ~Offscreen();
    Offscreen(const Offscreen&) = delete;
    Offscreen& operator=(const Offscreen&) = delete;

    /// Makes the framebuffer anew; its content is lost. `samples`: colours per pixel that are
    /// averaged, 1 for none of that; fewer when the system cannot do as many.
    /// Errors: false with a sentence in `error`; the surface then has no framebuffer.
    bool resize(int width, int height, int samples, std::string& error);
    /// What was drawn. Empty without a framebuffer.
    Picture read();

    /// Whose panels `redraw` draws; not owned, null for nobody's.
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

/// Takes pictures of the panels. While one is taken the panels here are the application's panel
/// renderer, and otherwise only where there is no other.
class PanelPictures {
public:
    static std::unique_ptr<PanelPictures> make(std::string& error);
    ~PanelPictures();

    struct Request {
        int panel = -1; ///< one panel alone; -1: all four
        int width = 1280;
        int height = 960;
        int samples = 4;
        bool is_framed = false; ///< moves the cameras first, to where everything is seen
    };
    /// Errors: false with a sentence in `error`.
    bool take(const Request& request, Picture& picture, std::string& error);
    GlPanels& panels() { return panels_; }

private:
    explicit PanelPictures(std::unique_ptr<Offscreen> surface);
    std::unique_ptr<Offscreen> surface_;
    GlPanels panels_;
};

} // namespace host
