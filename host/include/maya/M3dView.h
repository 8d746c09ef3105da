/// A 3D view: a reference to one of the application's model panels, "modelPanel1" (top),
/// "modelPanel2" (front), "modelPanel3" (side) or "modelPanel4" (persp). Copies refer to the same
/// panel. All methods of a default-constructed view fail.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MNativeWindowHdl.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

class MHOST_EXPORT M3dView {
public:
    M3dView();
    M3dView(const M3dView& other);
    M3dView& operator=(const M3dView& other);
    ~M3dView();

    /// The view that has the focus; fails if there are no views.
    static M3dView active3dView(MStatus* ReturnStatus = NULL);
    /// The application's main window; NULL and a failure if there is none.
    static MNativeWindowHdl applicationShell(MStatus* ReturnStatus = NULL);
    /// Fails for an unknown panel; `view` is then unchanged.
    static MStatus getM3dViewFromModelPanel(const MString& modelPanelName, M3dView& view);

    /// The path of the panel's camera.
    MStatus getCamera(MDagPath& camera);
    /// Size of the panel in pixels.
    int portWidth(MStatus* ReturnStatus = NULL);
    int portHeight(MStatus* ReturnStatus = NULL);
    /// Requests a redraw of this panel, or of all panels.
    MStatus refresh(bool all = false, bool force = false);

    /// Makes the panel's OpenGL context current, or releases it. Every beginGL needs an endGL.
    MStatus beginGL();
    MStatus endGL();

private:
    int panel_ = -1;
};
