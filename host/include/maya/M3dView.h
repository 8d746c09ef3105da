/// A 3D view: a value that refers to one of the application's model panels, "modelPanel1" (top),
/// "modelPanel2" (front), "modelPanel3" (side) and "modelPanel4" (persp). Copies refer to the same
/// panel. A view that refers to none fails in every method.
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

    /// The view that has the focus; fails when there is no view at all.
    static M3dView active3dView(MStatus* ReturnStatus = NULL);
    /// The application's main window; NULL and a failure when it has none.
    static MNativeWindowHdl applicationShell(MStatus* ReturnStatus = NULL);
    /// Fails for an unknown panel and leaves `view` alone.
    static MStatus getM3dViewFromModelPanel(const MString& modelPanelName, M3dView& view);

    /// Path to the camera that the panel looks through.
    MStatus getCamera(MDagPath& camera);
    /// Size of the panel in pixels.
    int portWidth(MStatus* ReturnStatus = NULL);
    int portHeight(MStatus* ReturnStatus = NULL);
    /// Asks for a redraw of this panel, or of all.
    MStatus refresh(bool all = false, bool force = false);

    /// Makes the panel's OpenGL context current and gives it back. Every beginGL needs its endGL.
    MStatus beginGL();
    MStatus endGL();

private:
    int panel_ = -1;
};
