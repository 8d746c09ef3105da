/// The main window and the model panels, as plug-ins see them.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MString.h>

namespace host {

/// The four panels that always exist, "modelPanel1" to "modelPanel4".
constexpr int k_panel_count = 4;

/// Index of a panel by name, -1 if unknown; and the name of an index.
MHOST_EXPORT int find_panel(const MString& name);
MHOST_EXPORT MString panel_name(int panel);

/// The panel with the focus, initially the last one; -1: the application runs without views.
MHOST_EXPORT int active_panel();
MHOST_EXPORT void set_active_panel(int panel);

/// Handle of the main window. Without a screen it is an arbitrary non-NULL address; NULL means that
/// the application has no main window.
MHOST_EXPORT void* main_window();
MHOST_EXPORT void set_main_window(void* handle);

/// Draws the panels. Without a renderer, panels have no camera, size or OpenGL context.
class PanelRenderer {
public:
    virtual MStatus camera(int panel, MDagPath& path) = 0;
    virtual MStatus size(int panel, int& width, int& height) = 0;
    /// Requests a redraw of a panel, -1 for all. `now`: redraw before returning.
    virtual MStatus refresh(int panel, bool now) = 0;
    /// Makes the panel's OpenGL context current, and restores the previous one.
    virtual MStatus begin_gl(int panel) = 0;
    virtual MStatus end_gl(int panel) = 0;

protected:
    ~PanelRenderer() = default;
};

/// Sets the renderer; not owned, NULL for none.
MHOST_EXPORT void set_panel_renderer(PanelRenderer* renderer);
MHOST_EXPORT PanelRenderer* panel_renderer();

} // namespace host
