/// Draws the four model panels with OpenGL, whoever the context and the pixels belong to.
///
/// `GlPanels` draws a panel into a rectangle of the framebuffer that its surface has bound:
/// background, grid, shaded meshes, wireframe and selection, then the post-render callbacks of the
/// panel (plug-ins draw their overlays there), then the camera's name. Meshes live in buffers that
/// are rebuilt only when a mesh changed. Faces are pushed back by a polygon offset, so that lines
/// on the surface are whole. All OpenGL state is as before after a draw.
///
/// A surface: compatibility profile 2.1 or later with a depth buffer of 24 bits.
#pragma once

#include "host/graph/selection.h"
#include "host/ui/panels.h"
#include "host/view/cameras.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace host {

/// The framebuffer and its context.
class PanelSurface {
public:
    /// Makes the context current with the framebuffer bound. False: there is none (any more).
    /// Calls are not nested; each that succeeds is followed by one `give_back`.
    virtual bool make_current() = 0;
    /// Makes current and binds what was before.
    virtual void give_back() = 0;
    /// Somebody wants to see a panel drawn before the call returns; -1: all. Draws it with
    /// `GlPanels::draw` and shows it. Not called during a draw.
    virtual void redraw(int panel) = 0;

protected:
    ~PanelSurface() = default;
};

enum class Appearance { shaded, wireframe };

/// How a panel looks.
struct PanelStyle {
    Appearance appearance = Appearance::shaded;
    bool has_wire = true; ///< polygon edges on shaded meshes, where they are far enough apart
    bool has_grid = true;
    bool has_name = true; ///< the camera's name at the bottom
    bool has_selection = true;
};

/// Parts of a mesh that light up, such as the chart under the pointer.
struct Highlight {
    graph::Ref<graph::Node> shape;
    graph::Ref<graph::Component> parts; ///< keep the object as long as the parts stay the same
    std::array<float, 4> color = {1.0f, 0.75f, 0.1f, 0.6f};
};

/// What the drawing cost so far.
struct DrawCounts {
    uint64_t panels = 0;         ///< panels drawn
    uint64_t buffers_built = 0;  ///< meshes and components turned into buffers
    uint64_t buffers_held = 0;   ///< now
    uint64_t bytes_uploaded = 0; ///< handed to OpenGL for buffers
};

class GlPanels : public PanelRenderer {
public:
    /// Becomes the application's panel renderer (`set_panel_renderer`); when it goes, the one that
    /// it replaced is it again. The surface is not owned.
    explicit GlPanels(PanelSurface& surface);
    virtual ~GlPanels();
    GlPanels(const GlPanels&) = delete;
    GlPanels& operator=(const GlPanels&) = delete;

    /// The panel renderer before this one; null if there was none.
    PanelRenderer* replaced() const;

    /// Where a panel is; an empty rectangle hides it.
    void set_viewport(int panel, const Viewport& viewport);
    const Viewport& viewport(int panel) const;
    /// Top and persp above, front and side below, with a gap between them; or one panel alone.
    void arrange_four(int width, int height, int gap);
    void arrange_one(int panel, int width, int height);

    PanelStyle& style(int panel);
    std::vector<Highlight>& highlights();

    /// Draws a panel. False: no context, no camera, or a draw is going on already.
    bool draw(int panel);
    /// Draws all panels that are not hidden.
    bool draw_all();
    /// While something computes: meshes are drawn as they were last, without asking the graph for
    /// newer ones, and without callbacks, which would ask too.
    void set_frozen(bool is_frozen);
    bool is_frozen() const;

    /// Somebody asked for a redraw (M3dView::refresh) since the panel was drawn last.
    bool needs_redraw(int panel) const;

    /// Frames everything, or what is selected (everything if nothing is).
    void frame(int panel, bool only_selected, double factor = 0.9);
    /// The camera as it would draw now.
    CameraView camera_view(int panel);

    const DrawCounts& counts() const;
    /// Drops all buffers. The destructor does it too, unless the surface has no context any more.
    void release_buffers();

    // What plug-ins reach through M3dView.
    MStatus camera(int panel, MDagPath& path) override;
    MStatus size(int panel, int& width, int& height) override;
    MStatus refresh(int panel, bool now) override;
    /// Outside of a draw the panel's viewport, projection and view are set until `end_gl`.
    MStatus begin_gl(int panel) override;
    MStatus end_gl(int panel) override;

private:
    struct Parts;
    bool enter();
    void leave();
    bool draw_entered(int panel);
    std::unique_ptr<Parts> parts_;
};

} // namespace host
