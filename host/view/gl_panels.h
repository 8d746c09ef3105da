/// Draws the four model panels with OpenGL into a framebuffer that a PanelSurface provides.
///
/// `GlPanels` draws a panel into a rectangle of the framebuffer: background, grid, shaded meshes,
/// wireframe and selection, then the panel's post-render callbacks (where plug-ins draw overlays),
/// then the camera's name. Meshes are kept in buffers that are rebuilt only when a mesh changes.
/// Faces have a polygon offset, so that lines on the surface are not hidden. All OpenGL state is
/// restored after a draw.
///
/// Requires a compatibility context, version 2.1 or later, with a 24-bit depth buffer.
#pragma once

#include "host/graph/selection.h"
#include "host/ui/panels.h"
#include "host/view/cameras.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace host {

/// A framebuffer and the OpenGL context that owns it.
class PanelSurface {
public:
    /// Makes the context current and binds the framebuffer. Returns false if there is no context
    /// (any more). Calls do not nest; each successful one is followed by one `give_back`.
    virtual bool make_current() = 0;
    /// Restores the context and binding from before `make_current`.
    virtual void give_back() = 0;
    /// Called to show a panel (-1: all) at once: draw it with `GlPanels::draw` and present it
    /// before returning. Not called during a draw.
    virtual void redraw(int panel) = 0;

protected:
    ~PanelSurface() = default;
};

enum class Appearance { shaded, wireframe };

/// Display options of a panel.
struct PanelStyle {
    Appearance appearance = Appearance::shaded;
    bool has_wire = true; ///< polygon edges on shaded meshes, faded out where dense
    bool has_grid = true;
    bool has_name = true; ///< the camera's name at the bottom
    bool has_selection = true;
};

/// Counters since construction, for tests and benchmarks.
struct DrawCounts {
    uint64_t panels = 0;         ///< panels drawn
    uint64_t buffers_built = 0;  ///< meshes and components turned into buffers
    uint64_t buffers_held = 0;   ///< buffers in existence now
    uint64_t bytes_uploaded = 0; ///< handed to OpenGL for buffers
};

class GlPanels : public PanelRenderer {
public:
    /// Installs itself as the application's panel renderer (`set_panel_renderer`); the destructor
    /// reinstates the one replaced. The surface is not owned.
    explicit GlPanels(PanelSurface& surface);
    virtual ~GlPanels();
    GlPanels(const GlPanels&) = delete;
    GlPanels& operator=(const GlPanels&) = delete;

    /// The panel renderer that this one replaced; null if none.
    PanelRenderer* replaced() const;

    /// A panel's rectangle; an empty one hides the panel.
    void set_viewport(int panel, const Viewport& viewport);
    const Viewport& viewport(int panel) const;
    /// Lays out top and persp above front and side, with a gap; or one panel alone.
    void arrange_four(int width, int height, int gap);
    void arrange_one(int panel, int width, int height);

    PanelStyle& style(int panel);

    /// Draws a panel. Returns false if there is no context or camera, or during another draw.
    bool draw(int panel);
    /// Draws all panels that are not hidden.
    bool draw_all();

    /// True if a redraw was requested (M3dView::refresh) since the panel was last drawn.
    bool needs_redraw(int panel) const;

    /// Frames the selection if `only_selected` and there is one, else everything.
    void frame(int panel, bool only_selected, double factor = 0.9);
    /// The matrices that the next draw will use.
    CameraView camera_view(int panel);

    const DrawCounts& counts() const;
    /// Releases all buffers, as the destructor does; does nothing if the context is gone.
    void release_buffers();

    // PanelRenderer: called by plug-ins through M3dView.
    MStatus camera(int panel, MDagPath& path) override;
    MStatus size(int panel, int& width, int& height) override;
    MStatus refresh(int panel, bool now) override;
    /// Outside of a draw this also sets the panel's viewport and matrices, until `end_gl`.
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
