#include "plugin/viewport.h"

#include "plugin/guarded.h"
#include "plugin/kit.h"
#include "plugin/opengl.h"

#include <maya/M3dView.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnMesh.h>
#include <maya/MGlobal.h>
#include <maya/MMatrix.h>
#include <maya/MMessage.h>
#include <maya/MObjectHandle.h>
#include <maya/MPointArray.h>
#include <maya/MUiMessage.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace {

const char* const k_panels[] = {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"};

/// Writes the collected lines and one more line end.
MStatus report(const std::string& errors, const MStatus& status) {
    if (errors.empty())
        return status;
    std::cerr << errors << std::endl;
    return MS::kFailure;
}

void send_vertex(const MPoint& point) {
    glVertex3f(static_cast<float>(point.x), static_cast<float>(point.y),
               static_cast<float>(point.z));
}

void draw_lines(const MIntArray& seams, const MPointArray& points) {
    glBegin(GL_LINES);
    for_each_end(seams, points, send_vertex);
    glEnd();
}

void set_color(const float color[3]) { glColor3f(color[0], color[1], color[2]); }

KIT_DEPRECATED_BEGIN
void begin_gl(M3dView& view) { view.beginGL(); }
void end_gl(M3dView& view) { view.endGL(); }
KIT_DEPRECATED_END

#if KIT_HAS_MODERN_VIEWPORT
/// What to say of a panel in which the overlay of a mesh cannot draw.
MString modern_warning(const MDagPath& mesh) {
    const MString text("Seams are drawn in panels of the legacy viewport only.");
#if KIT_HAS_MODERN_DRAWING
    return text + " To see them in the modern one, type: createNode -parent \"" +
           MFnDagNode(mesh.transform()).fullPathName() + "\" tessora_seams";
#else
    (void)mesh;
    return text;
#endif
}
#endif

/// Whether the panel shows the modern viewport, where the overlay cannot draw. Warns the first
/// time.
bool is_modern(const M3dView& view, const MDagPath& mesh) {
#if KIT_HAS_MODERN_VIEWPORT
    MStatus status;
    if (view.getRendererName(&status) != M3dView::kViewport2Renderer || !status)
        return false;
    static bool has_warned = false;
    if (!has_warned)
        MGlobal::displayWarning(modern_warning(mesh));
    has_warned = true;
    return true;
#else
    (void)view;
    (void)mesh;
    return false;
#endif
}

/// Whether the node was removed from the scene, for example because its creation was undone.
bool is_removed(const MPxNode* node) {
    return node != nullptr && !MObjectHandle(node->thisMObject()).isValid();
}

MStatus remove_callbacks(const MCallbackIdArray& ids) {
    std::string errors;
    MStatus status;
    for (unsigned int i = 0; i < ids.length(); ++i) {
        status = MMessage::removeCallback(ids[i]);
        if (status)
            continue;
        // Memory for the text may run out; the other callbacks are removed nevertheless.
        guarded([&] {
            errors += "Failed to clear viewport callback " + std::to_string(i) + "\n";
            return status;
        });
    }
    return report(errors, status);
}

MStatus attach_callbacks(VisualizationData& data) {
    std::string errors;
    MStatus status;
    for (const char* panel : k_panels) {
        const MString name(panel);
        // Deliberate: the id of a failed registration is kept too, so that the list has one entry
        // per panel; removing it later fails and reports that.
        keep_callback(data.callback_ids,
                      MUiMessage::add3dViewPostRenderMsgCallback(name, draw_seams, &data, &status));
        if (status)
            continue;
        draw_seams(name, &data);
        errors += std::string("Could not attach postrender callback to panel ") + panel + ": " +
                  status.errorString().asChar() + "\n";
    }
    return report(errors, status);
}

void draw(const MString& panel, VisualizationData& data) {
    // Copies, because reading the mesh evaluates it, and an unwrap during that rewrites the lists.
    const MDagPath path = data.mesh_path;
    const MIntArray existing_seams = data.existing_seams;
    const MIntArray new_seams = data.new_seams;

    MPointArray points;
    if (is_removed(data.node) || !read_points(path, MSpace::kWorld, points)) {
        detach_viewport_callbacks(data);
        return;
    }
    M3dView view;
    if (!M3dView::getM3dViewFromModelPanel(panel, view) || is_modern(view, path))
        return;
    MDagPath camera;
    view.getCamera(camera);
    double model_view[4][4];
    camera.inclusiveMatrix().inverse().get(model_view);

    begin_gl(view);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    // Row vectors with the translation in the last row: the memory order that OpenGL expects.
    glLoadMatrixd(&model_view[0][0]);
    set_color(k_existing_seam_color);
    glLineWidth(k_seam_width);
    draw_lines(existing_seams, points);
    set_color(k_new_seam_color);
    draw_lines(new_seams, points);
    glLineWidth(1.0f);
    glPopMatrix();
    end_gl(view);
}

#if KIT_HAS_MODERN_DRAWING
/// What is attached, in any panel or in none: locators of the modern viewport show it as well.
std::vector<VisualizationData*> attached;

void forget(VisualizationData& data) {
    attached.erase(std::remove(attached.begin(), attached.end(), &data), attached.end());
}
void remember(VisualizationData& data) {
    guarded([&] {
        attached.push_back(&data);
        return MStatus(MS::kSuccess);
    });
}
#else
void forget(VisualizationData&) {}
void remember(VisualizationData&) {}
#endif

} // namespace

bool read_points(const MDagPath& path, MSpace::Space space, MPointArray& points) {
    MStatus status;
    const MObject node = path.node(&status);
    if (!status || !MObjectHandle(node).isValid())
        return false;
    MFnMesh mesh_fn(path, &status);
    return status && mesh_fn.getPoints(points, space);
}

void keep_callback(MCallbackIdArray& ids, MCallbackId id) {
    const MStatus kept = guarded([&] { return ids.append(id); });
    if (!kept)
        MMessage::removeCallback(id);
}

MStatus detach_viewport_callbacks(VisualizationData& data) {
    const MStatus status = guarded([&] { return remove_callbacks(data.callback_ids); });
    data.callback_ids.clear();
    forget(data);
    return status;
}

MStatus attach_viewport_callbacks(VisualizationData& data) {
    detach_viewport_callbacks(data);
    remember(data);
    return guarded([&] { return attach_callbacks(data); });
}

void draw_seams(const MString& panel, void* client_data) {
    guarded([&] {
        draw(panel, *static_cast<VisualizationData*>(client_data));
        return MStatus(MS::kSuccess);
    });
}

#if KIT_HAS_MODERN_DRAWING
std::vector<VisualizationData> attached_below(const MObject& transform) {
    std::vector<VisualizationData> found;
    for (const VisualizationData* data : attached) {
        const MDagPath& path = data->mesh_path;
        if (!path.isValid() || path.transform() != transform || is_removed(data->node))
            continue;
        found.push_back(*data);
        found.back().callback_ids.clear();
    }
    return found;
}
#endif
