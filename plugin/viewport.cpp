#include "plugin/viewport.h"

#include <maya/M3dView.h>
#include <maya/MFnMesh.h>
#include <maya/MMatrix.h>
#include <maya/MMessage.h>
#include <maya/MObjectHandle.h>
#include <maya/MPointArray.h>
#include <maya/MUiMessage.h>

#include <GL/gl.h>

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

/// World positions of the mesh; false if the mesh was deleted or cannot be read.
bool read_points(const MDagPath& path, MPointArray& points) {
    MStatus status;
    const MObject node = path.node(&status);
    if (!status || !MObjectHandle(node).isValid())
        return false;
    MFnMesh mesh_fn(path, &status);
    return status && mesh_fn.getPoints(points, MSpace::kWorld);
}

/// GL_LINES ignores a last vertex without a partner.
void draw_lines(const MIntArray& seams, const MPointArray& points) {
    glBegin(GL_LINES);
    for (unsigned int i = 0; i < seams.length(); ++i) {
        const MPoint& point = points[static_cast<unsigned int>(seams[i])];
        glVertex3f(static_cast<float>(point.x), static_cast<float>(point.y),
                   static_cast<float>(point.z));
    }
    glEnd();
}

} // namespace

MStatus detach_viewport_callbacks(VisualizationData& data) {
    std::string errors;
    MStatus status;
    for (unsigned int i = 0; i < data.callback_ids.length(); ++i) {
        status = MMessage::removeCallback(data.callback_ids[i]);
        if (!status)
            errors += "Failed to clear viewport callback " + std::to_string(i) + "\n";
    }
    data.callback_ids.clear();
    return report(errors, status);
}

MStatus attach_viewport_callbacks(VisualizationData& data) {
    std::string errors;
    MStatus status;
    detach_viewport_callbacks(data);
    for (const char* panel : k_panels) {
        const MString name(panel);
        // Deliberate: the id of a failed registration is kept too, so that the list has one entry
        // per panel; removing it later fails and reports that.
        data.callback_ids.append(
            MUiMessage::add3dViewPostRenderMsgCallback(name, draw_seams, &data, &status));
        if (status)
            continue;
        draw_seams(name, &data);
        errors += std::string("Could not attach postrender callback to panel ") + panel + ": " +
                  status.errorString().asChar() + "\n";
    }
    return report(errors, status);
}

void draw_seams(const MString& panel, void* client_data) {
    VisualizationData& data = *static_cast<VisualizationData*>(client_data);
    // Copies, because reading the mesh evaluates it, and an unwrap during that rewrites the lists.
    const MDagPath path = data.mesh_path;
    const MIntArray existing_seams = data.existing_seams;
    const MIntArray new_seams = data.new_seams;

    MPointArray points;
    if (!read_points(path, points)) {
        detach_viewport_callbacks(data);
        return;
    }
    M3dView view;
    if (!M3dView::getM3dViewFromModelPanel(panel, view))
        return;
    MDagPath camera;
    view.getCamera(camera);
    double model_view[4][4];
    camera.inclusiveMatrix().inverse().get(model_view);

    view.beginGL();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    // Row vectors with the translation in the last row: the memory order that OpenGL expects.
    glLoadMatrixd(&model_view[0][0]);
    glColor3f(0.0f, 1.0f, 0.0f);
    glLineWidth(3.0f);
    draw_lines(existing_seams, points);
    glColor3f(0.0f, 0.0f, 1.0f);
    draw_lines(new_seams, points);
    glLineWidth(1.0f);
    glPopMatrix();
    view.endGL();
}
