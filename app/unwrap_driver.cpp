#include "app/unwrap_driver.h"

#include "app/host_talk.h"
#include "host/mesh/mesh_object.h"
#include "plugin/unwrapper.h"

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <new>
#include <utility>

namespace app {
namespace {

constexpr int32_t k_out_of_memory = static_cast<int32_t>(0x8007000Eu);

/// A function of the atlas library, which the program does not link: the plug-in brings it along.
template <class Function>
Function* atlas_function(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_DEFAULT, name));
}

/// What the last atlas call came to: 0 or an error code.
int32_t last_atlas_result() {
    const auto function = atlas_function<int32_t()>("d3dx9_last_result");
    return function ? function() : 0;
}

std::string last_atlas_reason() {
    const auto function = atlas_function<const char*()>("d3dx9_last_reason");
    return function ? function() : "";
}

std::vector<uint32_t> triangles_over_limit() {
    const auto function = atlas_function<unsigned(const uint32_t**)>("d3dx9_over_limit");
    const uint32_t* triangles = nullptr;
    const unsigned count = function ? function(&triangles) : 0;
    return {triangles, triangles + count};
}

/// The file's coordinates as the set "map1", which every mesh has. The set starts without a corner
/// mapped.
void add_uv_set(const host::ObjDocument& document, host::Mesh& mesh) {
    host::UvSet& set = mesh.edit_uv_set(mesh.add_uv_set("map1"));
    const size_t count = document.has_uvs() ? document.texture_count() : 0;
    for (size_t i = 0; i < count; ++i) {
        // Coordinates that are no number are used by no corner.
        const float u = document.texture_coords[2 * i], v = document.texture_coords[2 * i + 1];
        set.u.push_back(std::isfinite(u) ? u : 0.0f);
        set.v.push_back(std::isfinite(v) ? v : 0.0f);
    }
    for (size_t c = 0; c < document.corner_texture.size(); ++c)
        if (document.corner_texture[c] != host::k_obj_none)
            set.corner_uvs[c] = static_cast<int32_t>(document.corner_texture[c]);
}

MStatus make_mesh(const host::ObjDocument& document, const ImportedMesh& imported,
                  host::Mesh& mesh) {
    std::vector<host::Float3> points(imported.positions.size() / 3);
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = {imported.positions[3 * i], imported.positions[3 * i + 1],
                     imported.positions[3 * i + 2]};
    std::vector<uint32_t> counts(imported.corner_begin.size() - 1);
    for (size_t p = 0; p < counts.size(); ++p)
        counts[p] = imported.corner_begin[p + 1] - imported.corner_begin[p];
    const MStatus status =
        host::Mesh::make(std::move(points), std::move(counts), imported.corner_vertex, mesh);
    if (status)
        add_uv_set(document, mesh);
    return status;
}

UnwrapSettings to_plugin(const UnwrapSettingsRequest& request) {
    UnwrapSettings settings;
    settings.uv_set = request.mapchannel.c_str();
    settings.charts = request.charts;
    settings.stretch = request.stretch;
    settings.padding = request.padding;
    settings.tex_width = request.width;
    settings.tex_height = request.height;
    settings.high_quality = request.high_quality;
    settings.keep_seams = request.keep_seams;
    settings.use_grooves = request.use_grooves;
    settings.groove_angle = request.groove_angle;
    settings.use_ridges = request.use_ridges;
    settings.ridge_angle = request.ridge_angle;
    settings.adjacency_method = request.adjacency_method;
    settings.epsilon = request.epsilon;
    settings.reserved_flag = true;
    return settings;
}

UnwrapSettingsRequest from_plugin(const UnwrapSettings& settings) {
    UnwrapSettingsRequest request;
    request.mapchannel = settings.uv_set.asChar();
    request.charts = settings.charts;
    request.stretch = settings.stretch;
    request.padding = settings.padding;
    request.width = settings.tex_width;
    request.height = settings.tex_height;
    request.high_quality = settings.high_quality;
    request.keep_seams = settings.keep_seams;
    request.use_grooves = settings.use_grooves;
    request.groove_angle = settings.groove_angle;
    request.use_ridges = settings.use_ridges;
    request.ridge_angle = settings.ridge_angle;
    request.adjacency_method = settings.adjacency_method;
    request.epsilon = settings.epsilon;
    return request;
}

/// Different edges among flat pairs of vertex ids, added vertices counting as the file's own.
uint64_t count_edges(const MIntArray& pairs, const host::ObjDocument& document,
                     const ImportedMesh& mesh) {
    const auto file_vertex = [&](int id) {
        const size_t vertex = static_cast<size_t>(id);
        return vertex < document.vertex_count() ? static_cast<uint32_t>(vertex)
                                                : mesh.copy_of[vertex - document.vertex_count()];
    };
    std::vector<std::pair<uint32_t, uint32_t>> edges;
    for (unsigned i = 0; i + 1 < pairs.length(); i += 2)
        edges.push_back(std::minmax({file_vertex(pairs[i]), file_vertex(pairs[i + 1])}));
    std::sort(edges.begin(), edges.end());
    return static_cast<uint64_t>(std::unique(edges.begin(), edges.end()) - edges.begin());
}

/// The polygons of ascending triangles; a polygon of n corners is n - 2 triangles.
std::vector<uint32_t> polygons_of(const std::vector<uint32_t>& triangles,
                                  const ImportedMesh& mesh) {
    std::vector<uint32_t> polygons;
    uint32_t polygon = 0;
    for (const uint32_t triangle : triangles) {
        while (mesh.corner_begin[polygon + 1] - 2 * (polygon + 1) <= triangle)
            ++polygon;
        if (polygons.empty() || polygons.back() != polygon)
            polygons.push_back(polygon);
    }
    return polygons;
}

/// The corners' coordinates after the unwrap.
bool take_uvs(const MObject& object, const MString& set_name, host::ObjUvs& uvs) {
    const host::Mesh* mesh = host::mesh_of(object);
    const int position = mesh ? mesh->find_uv_set(set_name) : -1;
    if (position < 0)
        return false;
    const host::UvSet& set = mesh->uv_set(static_cast<uint32_t>(position));
    uvs.u = set.u;
    uvs.v = set.v;
    uvs.corner_uv = set.corner_uvs;
    return true;
}

void fail(const std::string& message, UnwrapOutcome& outcome) {
    const bool atlas_failed = last_atlas_result() < 0;
    outcome.out_of_memory = last_atlas_result() == k_out_of_memory;
    outcome.reason = atlas_failed ? last_atlas_reason() : message;
    if (outcome.reason.empty())
        outcome.reason = "the mesh could not be unwrapped";
}

void put_seconds(const StageListener& stages, StageSeconds& seconds) {
    const auto of = [&](const char* stage) -> std::optional<double> {
        const auto found = stages.seconds().find(stage);
        return found == stages.seconds().end() ? std::nullopt : std::optional(found->second);
    };
    seconds.collect = of("extracting required data");
    seconds.generate = of("generating UV set");
    seconds.apply = of("applying UV set");
}

/// The part between a mesh of the host and its new coordinates.
void unwrap_object(MObject& object, UnwrapSettings& settings, const host::ObjDocument& document,
                   const ImportedMesh& mesh, UnwrapOutcome& outcome) {
    MessageListener messages;
    MIntArray existing_seams, new_seams;
    Unwrapper unwrapper(&settings);
    begin_progress();
    const MStatus status = unwrapper.unwrap(object, &existing_seams, &new_seams);
    end_progress();
    if (!status)
        return fail(messages.last(), outcome);
    outcome.good = take_uvs(object, settings.uv_set, outcome.uvs);
    if (!outcome.good)
        return fail("the mesh has no UV set " + std::string(settings.uv_set.asChar()), outcome);
    outcome.result.charts = settings.charts_result;
    outcome.result.stretch = settings.stretch_result;
    outcome.result.over_limit = polygons_of(triangles_over_limit(), mesh);
    outcome.result.existing_seam_edges = count_edges(existing_seams, document, mesh);
    outcome.result.new_seam_edges = count_edges(new_seams, document, mesh);
}

} // namespace

UnwrapOutcome run_unwrap(const host::ObjDocument& document, const ImportedMesh& mesh,
                         const UnwrapSettingsRequest& request, Progress& progress,
                         StageSeconds& seconds) {
    UnwrapOutcome outcome;
    outcome.settings = request;
    outcome.triangles = mesh.corner_vertex.size() - 2 * (mesh.corner_begin.size() - 1);
    host::Mesh host_mesh;
    const MStatus made = make_mesh(document, mesh, host_mesh);
    if (!made) {
        outcome.out_of_memory = made == MS::kInsufficientMemory;
        outcome.reason = outcome.out_of_memory ? "not enough memory for the mesh"
                                               : "the host does not take the mesh";
        return outcome;
    }
    MObject object = host::make_mesh_data(host_mesh);
    host_mesh = host::Mesh(); // the object alone holds it, so that writing needs no copy
    UnwrapSettings settings = to_plugin(request);
    StageListener stages(progress);
    unwrap_object(object, settings, document, mesh, outcome);
    stages.finish();
    put_seconds(stages, seconds);
    outcome.settings = from_plugin(settings);
    return outcome;
}

} // namespace app
