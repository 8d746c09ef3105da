#include "host/ui/panels.h"

#include "host/base/fault.h"

#include <maya/M3dView.h>

using host::pass_fault;
using host::report;

namespace {

struct Views {
    int active = host::k_panel_count - 1;
    void* window = this; ///< arbitrary non-NULL address while there is no real window
    host::PanelRenderer* renderer = nullptr;
};

Views& views() {
    static Views the_views;
    return the_views;
}

/// Checks common to all methods of M3dView: fault point, known panel, renderer.
MStatus begin(const char* point, int panel) {
    const MStatus fault = pass_fault(point);
    if (fault.error())
        return fault;
    return panel < 0 || views().renderer == nullptr ? MS::kFailure : MS::kSuccess;
}

struct PanelSize {
    int width = 0, height = 0;
};

/// A panel's size, zero if `status` receives an error.
PanelSize size_of(const char* point, int panel, MStatus* status) {
    PanelSize size;
    MStatus result = begin(point, panel);
    if (result)
        result = views().renderer->size(panel, size.width, size.height);
    report(status, result);
    return size;
}

} // namespace

namespace host {

int find_panel(const MString& name) {
    for (int panel = 0; panel < k_panel_count; ++panel)
        if (panel_name(panel) == name)
            return panel;
    return -1;
}

MString panel_name(int panel) { return MString("modelPanel") + (panel + 1); }

int active_panel() { return views().active; }
void set_active_panel(int panel) { views().active = panel < k_panel_count ? panel : -1; }

void* main_window() { return views().window; }
void set_main_window(void* handle) { views().window = handle; }

void set_panel_renderer(PanelRenderer* renderer) { views().renderer = renderer; }
PanelRenderer* panel_renderer() { return views().renderer; }

} // namespace host

M3dView::M3dView() = default;
M3dView::M3dView(const M3dView& other) = default;
M3dView& M3dView::operator=(const M3dView& other) = default;
M3dView::~M3dView() = default;

M3dView M3dView::active3dView(MStatus* ReturnStatus) {
    M3dView view;
    MStatus status = pass_fault("M3dView::active3dView");
    if (status && views().active < 0)
        status = MS::kFailure;
    if (report(ReturnStatus, status))
        view.panel_ = views().active;
    return view;
}

MNativeWindowHdl M3dView::applicationShell(MStatus* ReturnStatus) {
    MStatus status = pass_fault("M3dView::applicationShell");
    if (status && views().window == nullptr)
        status = MS::kFailure;
    return report(ReturnStatus, status) ? views().window : nullptr;
}

MStatus M3dView::getM3dViewFromModelPanel(const MString& modelPanelName, M3dView& view) {
    const MStatus fault = pass_fault("M3dView::getM3dViewFromModelPanel");
    const int panel = host::find_panel(modelPanelName);
    if (fault.error() || panel < 0)
        return fault.error() ? fault : MS::kInvalidParameter;
    view.panel_ = panel;
    return MS::kSuccess;
}

MStatus M3dView::getCamera(MDagPath& camera) {
    const MStatus status = begin("M3dView::getCamera", panel_);
    return status ? views().renderer->camera(panel_, camera) : status;
}

int M3dView::portWidth(MStatus* ReturnStatus) {
    return size_of("M3dView::portWidth", panel_, ReturnStatus).width;
}

int M3dView::portHeight(MStatus* ReturnStatus) {
    return size_of("M3dView::portHeight", panel_, ReturnStatus).height;
}

MStatus M3dView::refresh(bool all, bool force) {
    const MStatus status = begin("M3dView::refresh", panel_);
    return status ? views().renderer->refresh(all ? -1 : panel_, force) : status;
}

MStatus M3dView::beginGL() {
    const MStatus status = begin("M3dView::beginGL", panel_);
    return status ? views().renderer->begin_gl(panel_) : status;
}

MStatus M3dView::endGL() {
    const MStatus status = begin("M3dView::endGL", panel_);
    return status ? views().renderer->end_gl(panel_) : status;
}
