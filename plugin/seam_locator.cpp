#include "plugin/seam_locator.h"

#if KIT_HAS_MODERN_DRAWING

#include "plugin/guarded.h"
#include "plugin/viewport.h"

#include <maya/MBoundingBox.h>
#include <maya/MColor.h>
#include <maya/MDagPath.h>
#include <maya/MFnDagNode.h>
#include <maya/MHWGeometry.h>
#include <maya/MUIDrawManager.h>
#include <maya/MUserData.h>

#include <new>

namespace {

/// The lines of one frame in the space of the mesh and the locator beside it: two points a line.
class SeamLines : public MUserData {
public:
#if KIT_OWNS_DRAW_DATA
    SeamLines() = default;
#else
    SeamLines() : MUserData(false) {} // is handed back for the next frame
#endif
    void clear() {
        existing_ends.clear();
        new_ends.clear();
    }
    MPointArray existing_ends;
    MPointArray new_ends;
};

MStatus append_ends(const MIntArray& seams, const MPointArray& points, MPointArray& ends) {
    MStatus status;
    for_each_end(seams, points, [&](const MPoint& point) {
        if (status)
            status = ends.append(point);
    });
    return status;
}

MStatus read_lines(const MObject& transform, SeamLines& lines) {
    for (const VisualizationData& data : attached_below(transform)) {
        MPointArray points;
        if (!read_points(data.mesh_path, MSpace::kObject, points))
            continue;
        MStatus status = append_ends(data.existing_seams, points, lines.existing_ends);
        if (status)
            status = append_ends(data.new_seams, points, lines.new_ends);
        if (!status)
            return status;
    }
    return MS::kSuccess;
}

void draw_lines(const MPointArray& ends, const float color[3], MHWRender::MUIDrawManager& manager) {
    if (ends.length() == 0)
        return;
    manager.setColor(MColor(color[0], color[1], color[2]));
    manager.lineList(ends, false);
}

/// The host wants a function to draw with; all drawing is left to the draw manager.
void draw_nothing(const MHWRender::MDrawContext&, const MUserData*) {}

} // namespace

// === The locator =============================================================================

const char* const SeamLocator::type_name = "tessora_seams";
const char* const SeamLocator::classification = "drawdb/geometry/tessora_seams";
const char* const SeamLocator::registrant = "tessora";
const MTypeId SeamLocator::id(0x113C41);

void* SeamLocator::creator() { return new (std::nothrow) SeamLocator; }
MStatus SeamLocator::initialize() { return MS::kSuccess; }

// === Its drawing =============================================================================

// Without a third argument an override is always dirty: the host asks for its data in every frame,
// so that the lines follow the mesh and the last unwrap.
SeamDrawing::SeamDrawing(const MObject& locator)
    : MHWRender::MPxDrawOverride(locator, draw_nothing) {}

MHWRender::MPxDrawOverride* SeamDrawing::creator(const MObject& locator) {
    return new (std::nothrow) SeamDrawing(locator);
}

MHWRender::DrawAPI SeamDrawing::supportedDrawAPIs() const { return MHWRender::kAllDevices; }

bool SeamDrawing::isBounded(const MDagPath&, const MDagPath&) const { return true; }

MBoundingBox SeamDrawing::boundingBox(const MDagPath& locator, const MDagPath&) const {
    MBoundingBox box;
    guarded([&] {
        // All that is attached below the transform belongs to its one mesh.
        const std::vector<VisualizationData> shown = attached_below(locator.transform());
        if (!shown.empty())
            box = MFnDagNode(shown.front().mesh_path).boundingBox();
        return MStatus(MS::kSuccess);
    });
    return box;
}

MUserData* SeamDrawing::prepareForDraw(const MDagPath& locator, const MDagPath&,
                                       const MHWRender::MFrameContext&, MUserData* old) {
    auto* lines = dynamic_cast<SeamLines*>(old);
    if (lines == nullptr)
        lines = new (std::nothrow) SeamLines;
    if (lines == nullptr)
        return nullptr;
    lines->clear();
    const MStatus read = guarded([&] { return read_lines(locator.transform(), *lines); });
    if (!read)
        lines->clear(); // memory ran out: some of the seams would look like all of them
    return lines;
}

bool SeamDrawing::hasUIDrawables() const { return true; }

void SeamDrawing::addUIDrawables(const MDagPath&, MHWRender::MUIDrawManager& manager,
                                 const MHWRender::MFrameContext&, const MUserData* data) {
    const auto* const lines = dynamic_cast<const SeamLines*>(data);
    if (lines == nullptr || (lines->existing_ends.length() == 0 && lines->new_ends.length() == 0))
        return;
    manager.beginDrawable();
    // In front of the surface that they lie on, as the host's own lines of active objects.
    manager.setDepthPriority(MHWRender::MRenderItem::sActiveLineDepthPriority);
    manager.setLineWidth(k_seam_width);
    draw_lines(lines->existing_ends, k_existing_seam_color, manager);
    draw_lines(lines->new_ends, k_new_seam_color, manager);
    manager.endDrawable();
}

#endif
