#include "tests/plugin_in_host/modern_kit.h"

#include <algorithm>
#include <sstream>

// The names of the host's own classes from here on.
#undef MPxNode
#undef M3dView
#undef MFnDagNode
#undef MFnPlugin

namespace modern_kit {

Record& record() {
    static Record all;
    return all;
}

} // namespace modern_kit

using modern_kit::record;

// === Nodes and views =========================================================================

void MBoundingBox::expand(const MPoint& point) {
    const double* const from = &point.x;
    for (int axis = 0; axis < 3; ++axis) {
        double &low = (&min.x)[axis], &high = (&max.x)[axis];
        low = is_empty ? from[axis] : std::min(low, from[axis]);
        high = is_empty ? from[axis] : std::max(high, from[axis]);
    }
    is_empty = false;
}

ModernView::RendererName ModernView::getRendererName(MStatus* status) const {
    *status = MS::kSuccess;
    return kViewport2Renderer;
}

MBoundingBox ModernDagNode::boundingBox() const {
    MPointArray points;
    MFnMesh(dagPath()).getPoints(points, MSpace::kObject);
    MBoundingBox box;
    for (unsigned int i = 0; i < points.length(); ++i)
        box.expand(points[i]);
    return box;
}

MStatus ModernPlugin::registerNode(const MString& name, const MTypeId& id, MCreatorFunction creator,
                                   MInitializeFunction initialize, MPxNode::Type type,
                                   const MString* classification) {
    if (type != MPxNode::kLocatorNode)
        return MFnPlugin::registerNode(name, id, creator, initialize, type, classification);
    const MStatus status = record().locator_status;
    if (status)
        record().locators.push_back(
            {name.asChar(), classification->asChar(), id.id(), creator, initialize});
    return status;
}

MStatus ModernPlugin::deregisterNode(const MTypeId& id) {
    auto& all = record().locators;
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const modern_kit::Locator& one) { return one.id == id.id(); });
    if (found == all.end())
        return MFnPlugin::deregisterNode(id);
    all.erase(found);
    return MS::kSuccess;
}

// === Drawing =================================================================================

namespace MHWRender {

void MUIDrawManager::beginDrawable() { calls.push_back("begin"); }
void MUIDrawManager::endDrawable() { calls.push_back("end"); }

void MUIDrawManager::setDepthPriority(unsigned int priority) {
    calls.push_back("depth priority " + std::to_string(priority));
}

void MUIDrawManager::setLineWidth(float width) {
    std::ostringstream words;
    words << "width " << width;
    calls.push_back(words.str());
}

void MUIDrawManager::setColor(const MColor& color) {
    std::ostringstream words;
    words << "color " << color.r << ' ' << color.g << ' ' << color.b << ' ' << color.a;
    calls.push_back(words.str());
}

void MUIDrawManager::lineList(const MPointArray& points, bool draw2D) {
    calls.push_back(draw2D ? "lines on the screen" : "lines");
    lists.push_back(points);
}

MStatus MDrawRegistry::registerDrawOverrideCreator(const MString& classification,
                                                   const MString& registrant,
                                                   DrawOverrideCreator creator) {
    const MStatus status = record().drawing_status;
    if (status)
        record().drawings.push_back({classification.asChar(), registrant.asChar(), creator});
    return status;
}

MStatus MDrawRegistry::deregisterDrawOverrideCreator(const MString& classification,
                                                     const MString& registrant) {
    auto& all = record().drawings;
    const auto found = std::find_if(all.begin(), all.end(), [&](const modern_kit::Drawing& one) {
        return one.classification == classification.asChar() &&
               one.registrant == registrant.asChar();
    });
    if (found == all.end())
        return MS::kFailure;
    all.erase(found);
    return MS::kSuccess;
}

} // namespace MHWRender
