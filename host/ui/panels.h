/// The application's window and its model panels, as far as plug-ins can reach them.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MString.h>

namespace host {

/// The four panels that always exist, "modelPanel1" to "modelPanel4".
constexpr int k_panel_count = 4;

/// Number of a panel by name, -1 for an unknown one; and the name of a number.
MHOST_EXPORT int find_panel(const MString& name);
MHOST_EXPORT MString panel_name(int panel);

/// The panel that has the focus; -1: the application runs without views. The last one, at first.
MHOST_EXPORT int active_panel();
MHOST_EXPORT void set_active_panel(int panel);

/// Handle of the main window. Without a real window it is a token that is not NULL; NULL means that
/// the application has no main window at all.
MHOST_EXPORT void* main_window();
MHOST_EXPORT void set_main_window(void* handle);

/// What draws the panels. Without a renderer a panel has no camera, no size and no OpenGL.
class PanelRenderer {
public:
    virtual MStatus camera(int panel, MDagPath& path) = 0;
    virtual MStatus size(int panel, int& width, int& height) = 0;
    /// Asks for a redraw; `panel` -1 stands for all. `now`: before the call returns.
    virtual MStatus refresh(int panel, bool now) = 0;
    /// Makes the panel's OpenGL context current, and gives it back.
    virtual MStatus begin_gl(int panel) = 0;
    virtual MStatus end_gl(int panel) = 0;

protected:
    ~PanelRenderer() = default;
};

/// Not owned; NULL for none.
MHOST_EXPORT void set_panel_renderer(PanelRenderer* renderer);
MHOST_EXPORT PanelRenderer* panel_renderer();

} // namespace host
