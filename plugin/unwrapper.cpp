#include "plugin/unwrapper.h"

#include "plugin/atlas_stage.h"
#include "plugin/failure.h"
#include "plugin/guarded.h"
#include "plugin/mesh_collector.h"
#include "plugin/seams.h"
#include "plugin/uv_updater.h"

#include <maya/M3dView.h>

#include <utility>

namespace {

/// The result of the second stage.
struct Atlas {
    array<Vertex> vertices;
    array<uint32_t> indices;
};

/// Fails if the host has no main window, which the atlas stage needs for its device.
MStatus find_main_window() {
    MStatus status;
    M3dView::active3dView(&status);
    if (status)
        M3dView::applicationShell(&status);
    return status;
}

/// Hands the lists over, so that they do not take memory while the atlas is made; the corner lists
/// stay.
MStatus generate(Unwrapper& unwrapper, MeshData& data, Atlas& atlas) {
    show_stage("Tessora: generating UV set");
    const bool done = generate_atlas(unwrapper, std::move(data.vertices), std::move(data.indices),
                                     std::move(data.cut_edges), std::move(data.real_edges),
                                     atlas.vertices, atlas.indices);
    return done ? MS::kSuccess : MS::kFailure;
}

MStatus apply(const Unwrapper& unwrapper, MObject& mesh, const MeshData& data, const Atlas& atlas) {
    show_stage("Tessora: applying UV set");
    array<CornerList*> face_corners;
    face_corners.append_array(data.face_corners);
    return apply_uvs(unwrapper, mesh, atlas.vertices, atlas.indices, face_corners);
}

} // namespace

Unwrapper::Unwrapper(UnwrapSettings* settings) : settings_(settings) { progress_reserved = false; }

MStatus Unwrapper::unwrap(MObject mesh, MIntArray* existing_seams, MIntArray* new_seams) {
    return guarded([&] { return run_stages(mesh, existing_seams, new_seams); });
}

MStatus Unwrapper::run_stages(MObject& mesh, MIntArray* existing_seams, MIntArray* new_seams) {
    MStatus status = find_main_window();
    if (!status)
        return fail_with("Could not access Maya HWND.", status);

    MeshData data;
    Atlas atlas;
    if (existing_seams != nullptr)
        existing_seams->clear();
    clamp_settings(*settings_);

    show_stage("Tessora: extracting required data");
    // If seams are not kept, every seam found later counts as new.
    status = collect_mesh_data(*this, mesh, data, settings_->keep_seams ? existing_seams : nullptr);
    if (!status)
        return status;

    status = generate(*this, data, atlas);
    if (!status)
        return status;
    status = apply(*this, mesh, data, atlas);
    if (!status)
        return status;

    free_corner_lists(data.face_corners);
    status = collect_mesh_data(*this, mesh, new_seams);
    if (status && new_seams != nullptr)
        subtract_seams(*new_seams, existing_seams != nullptr ? *existing_seams : MIntArray());
    return status;
}
