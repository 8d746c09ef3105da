#include "app/unwrap_driver.h"

#include "app/atlas_library.h"
#include "app/command.h"
#include "app/mesh_import.h"
#include "app/message_listener.h"
#include "app/seam_count.h"
#include "app/session_setup.h"
#include "app/stage_times.h"
#include "app/unwrap_remarks.h"
#include "host/commands/session.h"
#include "host/graph/edits.h"
#include "host/graph/mesh_node.h"
#include "host/ui/stages.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <utility>

namespace app {
namespace {

/// Adds the UV set "map1", which every mesh has, with the file's texture coordinates, if any.
void add_uv_set(const host::ObjDocument& document, host::Mesh& mesh) {
    host::UvSet& set = mesh.edit_uv_set(mesh.add_uv_set("map1"));
    const size_t count = document.has_uvs() ? document.texture_count() : 0;
    for (size_t i = 0; i < count; ++i) {
        // No corner uses a NaN or infinite coordinate: the reader has unmapped those.
        const float u = document.texture_coords[2 * i], v = document.texture_coords[2 * i + 1];
        set.u.push_back(std::isfinite(u) ? u : 0.0f);
        set.v.push_back(std::isfinite(v) ? v : 0.0f);
    }
    for (size_t c = 0; c < document.corner_texture.size(); ++c)
        if (document.corner_texture[c] != host::k_obj_none)
            set.corner_uvs[c] = static_cast<int32_t>(document.corner_texture[c]);
}

template <class T>
void clamp(T& value, T low, T high) {
    if (!(value > low)) // NaN becomes the lower end
        value = low;
    else if (value > high)
        value = high;
}

/// The script statement that runs the plug-in's command. %.17g keeps doubles exact.
std::string command_text(const UnwrapSettingsRequest& request) {
    const auto real = [](double value) {
        char text[40];
        std::snprintf(text, sizeof text, "%.17g", value);
        return std::string(text);
    };
    const auto flag = [](const char* name, const std::string& value) {
        return std::string(" -") + name + " " + value;
    };
    const auto count = [](int value) { return std::to_string(value); };
    return "tessora" + flag("mapchannel", host::script::quoted(request.mapchannel)) +
           flag("charts", count(request.charts)) + flag("stretch", real(request.stretch)) +
           flag("padding", count(request.padding)) + flag("width", count(request.width)) +
           flag("height", count(request.height)) +
           flag("high_quality", count(request.high_quality)) +
           flag("keep_seams", count(request.keep_seams)) +
           flag("use_grooves", count(request.use_grooves)) +
           flag("groove_angle", real(request.groove_angle)) +
           flag("use_ridges", count(request.use_ridges)) +
           flag("ridge_angle", real(request.ridge_angle)) +
           flag("adjacency_method", count(request.adjacency_method)) +
           flag("epsilon", real(request.epsilon));
}

/// Seams as pairs of the file's vertices; an added vertex counts as the one it copies.
std::vector<VertexPair> seams_of(const host::Mesh& mesh, const std::string& set_name,
                                 const host::ObjDocument& document, const ImportedMesh& imported) {
    const int set = mesh.find_uv_set(set_name.c_str());
    if (set < 0)
        return {};
    const auto file_vertex = [&](uint32_t vertex) {
        return vertex < document.vertex_count()
                   ? vertex
                   : imported.copy_of[vertex - document.vertex_count()];
    };
    std::vector<VertexPair> seams = find_seams(mesh, mesh.uv_set(static_cast<uint32_t>(set)));
    for (VertexPair& seam : seams)
        seam = std::minmax({file_vertex(seam.first), file_vertex(seam.second)});
    std::sort(seams.begin(), seams.end());
    seams.erase(std::unique(seams.begin(), seams.end()), seams.end());
    return seams;
}

/// Maps ascending triangle ids to polygon ids; a polygon of n corners has n - 2 triangles.
std::vector<uint32_t> polygons_of(const std::vector<uint32_t>& triangles,
                                  const host::ObjDocument& mesh) {
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

/// Copies the result out of the mesh. Returns false if the UV set is missing.
bool take_uvs(const host::Mesh& mesh, const std::string& set_name, host::ObjUvs& uvs) {
    const int position = mesh.find_uv_set(set_name.c_str());
    if (position < 0)
        return false;
    const host::UvSet& set = mesh.uv_set(static_cast<uint32_t>(position));
    uvs.u = set.u;
    uvs.v = set.v;
    uvs.corner_uv = set.corner_uvs;
    return true;
}

void fail(const std::string& message, bool out_of_memory, UnwrapOutcome& outcome) {
    const bool atlas_failed = last_atlas_result() < 0;
    outcome.out_of_memory = out_of_memory || atlas_ran_out_of_memory();
    outcome.reason = reason_of_failure(atlas_failed ? last_atlas_reason() : message);
}

/// During an unwrap, prints warnings of scripts, keeps the last error and discards printed text.
class ScriptTalk : public host::script::Output {
public:
    ScriptTalk() { host::script::Session::current().set_output(this); }
    ~ScriptTalk() { host::script::Session::current().set_output(nullptr); }
    ScriptTalk(const ScriptTalk&) = delete;
    ScriptTalk& operator=(const ScriptTalk&) = delete;
    void print(const std::string&) override {}
    void warning(const std::string& text) override { say(text); }
    void error(const std::string& text) override { last_ = text; }
    const std::string& last() const { return last_; }

private:
    std::string last_;
};

/// The host's scene with the mesh to unwrap; the destructor clears the scene.
class MeshScene {
public:
    ~MeshScene() { host::graph::Scene::current().clear(); }

    /// Adds the mesh to the scene as a shape and selects it.
    void import(const host::Mesh& mesh) {
        host::graph::Scene& scene = host::graph::Scene::current();
        const auto transform = scene.make_node(scene.find_type("transform"), "mesh");
        scene.add(*transform, nullptr);
        const auto shape = scene.make_node(scene.find_type("mesh"), "meshShape");
        scene.add(*shape, transform->as_dag_node());
        shape_ = static_cast<host::graph::MeshNode*>(shape.get());
        shape_->set_mesh(mesh);
        scene.select({host::graph::SelectionItem(*transform)});
    }

    /// Evaluates the shape's mesh; the plug-in's node computes the unwrap here.
    const host::Mesh* pull(MStatus& status) {
        status = shape_->refresh();
        return shape_->mesh();
    }

    /// A numeric attribute of the node connected to the shape's inMesh; 0 if there is no node.
    double result(const char* attribute) const {
        const host::graph::Slot* source = shape_->slot("inMesh")->source();
        const host::graph::Slot* plug = source ? source->node().slot(attribute) : nullptr;
        return plug ? plug->value.number() : 0.0;
    }

private:
    host::graph::MeshNode* shape_ = nullptr;
};

/// Runs the plug-in's command on the mesh, evaluates the node and collects the results.
void unwrap_mesh(const host::Mesh& mesh, const host::ObjDocument& document,
                 const ImportedMesh& imported, const UnwrapVisitor& visit, UnwrapOutcome& outcome) {
    const UnwrapSettingsRequest& settings = outcome.settings;
    std::vector<VertexPair> existing;
    if (settings.keep_seams)
        existing = seams_of(mesh, settings.mapchannel, document, imported);
    MessageListener messages;
    ScriptTalk talk;
    MeshScene scene;
    scene.import(mesh);
    host::set_layout_effort(settings.effort);
    if (!host::script::Session::current().run(command_text(settings), "unwrap", false).ok)
        return fail(messages.last().empty() ? talk.last() : messages.last(),
                    messages.ran_out_of_memory(), outcome);
    MStatus status;
    const host::Mesh* unwrapped = scene.pull(status);
    if (!status || !unwrapped)
        return fail(messages.last(),
                    messages.ran_out_of_memory() || status == MS::kInsufficientMemory, outcome);
    outcome.good = take_uvs(*unwrapped, settings.mapchannel, outcome.uvs);
    if (!outcome.good)
        return fail(std::string(), false, outcome);
    outcome.result.charts = static_cast<int>(scene.result("Charts_result"));
    outcome.result.stretch = scene.result("Stretch_result");
    outcome.result.over_limit = polygons_of(triangles_over_limit(), document);
    outcome.result.existing_seam_edges = existing.size();
    const std::vector<VertexPair> seams =
        seams_of(*unwrapped, settings.mapchannel, document, imported);
    std::vector<VertexPair> added;
    std::set_difference(seams.begin(), seams.end(), existing.begin(), existing.end(),
                        std::back_inserter(added));
    outcome.result.new_seam_edges = added.size();
    if (visit)
        visit();
}

/// Whether an unwrap with these settings succeeds. Prints nothing.
bool can_unwrap(const host::Mesh& mesh, const UnwrapSettingsRequest& settings) {
    MessageListener messages(true);
    ScriptTalk talk;
    MeshScene scene;
    scene.import(mesh);
    if (!host::script::Session::current().run(command_text(settings), "unwrap", false).ok)
        return false;
    MStatus status;
    return scene.pull(status) && status;
}

/// The smallest texture with room for the charts, among those of the asked shape doubled again and
/// again: "; 512 x 512 texels have room". Every size is tried by an unwrap.
std::string advice_on_size(const host::Mesh& mesh, UnwrapSettingsRequest settings) {
    constexpr int k_largest = 8192;
    while (2 * std::max(settings.width, settings.height) <= k_largest) {
        settings.width *= 2;
        settings.height *= 2;
        if (can_unwrap(mesh, settings))
            return "; " + std::to_string(settings.width) + " x " + std::to_string(settings.height) +
                   " texels have room";
        if (!atlas_had_no_room())
            break;
    }
    return std::string();
}

bool make_mesh(const host::ObjDocument& document, ImportedMesh& imported, host::Mesh& mesh,
               UnwrapOutcome& outcome) {
    if (import_mesh(document, imported, mesh)) {
        add_uv_set(document, mesh);
        return true;
    }
    outcome.out_of_memory = true;
    outcome.reason = "not enough memory for the mesh";
    return false;
}

/// Warns about peculiarities of the mesh, before the work begins.
void warn_of(const host::ObjDocument& document, const ImportedMesh& mesh,
             const UnwrapSettingsRequest& request, const UnwrapWarning& warn) {
    if (mesh.repeat_polygons)
        warn("polygons that name a vertex twice: " + std::to_string(mesh.repeat_polygons) +
             "; each repeat counts as a vertex of its own, and the file keeps its vertices");
    if (mesh.isolated_polygons)
        warn("polygons that other polygons leave no way to divide: " +
             std::to_string(mesh.isolated_polygons) + "; each is laid out by itself");
    if (request.keep_seams && !document.has_uvs())
        warn("--keep_seams: the mesh has no texture coordinates, so every edge between two "
             "polygons counts as a seam and is cut");
}

} // namespace

UnwrapSettingsRequest in_range(UnwrapSettingsRequest request) {
    clamp(request.charts, 0, 64);
    clamp(request.stretch, 0.0, 1.0);
    clamp(request.padding, 0, 32);
    clamp(request.width, 8, 8192);
    clamp(request.height, 8, 8192);
    clamp(request.groove_angle, 0.0, 180.0);
    clamp(request.ridge_angle, 0.0, 180.0);
    clamp(request.adjacency_method, 0, 1);
    clamp(request.epsilon, 0.001, 1000.0);
    clamp(request.max_charts, 0, 1000000000);
    clamp(request.density, 0.0, 1e9);
    clamp(request.effort, 0, 10);
    return request;
}

UnwrapOutcome run_unwrap(const host::ObjDocument& document, const UnwrapSettingsRequest& request,
                         const UnwrapWarning& warn, const UnwrapVisitor& visit,
                         ProgressDisplay& progress, StageSeconds& seconds) {
    UnwrapOutcome outcome;
    outcome.settings = in_range(request);
    outcome.triangles = document.corner_vertex.size() - 2 * document.polygon_count();
    ImportedMesh imported;
    if (!make_mesh(document, imported, outcome.mesh, outcome) || !load_plugin(outcome.reason))
        return outcome;
    warn_of(document, imported, request, warn);
    StageTimes stages(progress);
    unwrap_mesh(outcome.mesh, document, imported, visit, outcome);
    if (!outcome.good && atlas_had_no_room())
        outcome.reason += advice_on_size(outcome.mesh, outcome.settings);
    stages.finish();
    stages.store(seconds);
    return outcome;
}

} // namespace app
