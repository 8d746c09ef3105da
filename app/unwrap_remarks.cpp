#include "app/unwrap_remarks.h"

#include "app/options.h"
#include "app/unwrap_options.h"
#include "host/commands/session.h"
#include "host/graph/mesh_node.h"
#include "host/graph/scene.h"

#include <cstdio>
#include <utility>

namespace app {
namespace {

using host::graph::MeshNode;
using host::graph::Node;
using host::graph::Scene;

struct FlagName {
    const char* short_name;
    const char* long_name;
};

constexpr FlagName k_flags[] = {{"-mc", "mapchannel"},   {"-cr", "charts"},
                                {"-st", "stretch"},      {"-pad", "padding"},
                                {"-w", "width"},         {"-h", "height"},
                                {"-hq", "high_quality"}, {"-adm", "adjacency_method"},
                                {"-e", "epsilon"},       {"-ks", "keep_seams"},
                                {"-ug", "use_grooves"},  {"-ga", "groove_angle"},
                                {"-ur", "use_ridges"},   {"-ra", "ridge_angle"}};

/// Meshes that were unwrapped and not reported yet.
std::vector<host::Ref<Node>>& unreported() {
    static auto* const meshes = new std::vector<host::Ref<Node>>;
    return *meshes;
}

MeshNode* mesh_below(host::graph::DagNode& node) {
    if (auto* mesh = dynamic_cast<MeshNode*>(&node))
        return mesh;
    for (host::graph::DagNode* child : node.children())
        if (auto* mesh = dynamic_cast<MeshNode*>(child))
            if (!mesh->is_intermediate())
                return mesh;
    return nullptr;
}

/// The mesh that the command works on: the first one selected.
MeshNode* selected_mesh() {
    for (const host::graph::SelectionItem& item : Scene::current().selection())
        if (host::graph::DagNode* dag = item.node->as_dag_node())
            if (MeshNode* mesh = mesh_below(*dag))
                return mesh;
    return nullptr;
}

void after_command(const std::string& name, const std::vector<std::string>& arguments) {
    if (name != "tessora")
        return;
    host::script::Output& output = host::script::Session::current().interpreter().output();
    for (const std::string& warning : warnings_about_flags(arguments))
        output.warning("tessora: " + warning + ".");
    MeshNode* mesh = selected_mesh();
    if (mesh)
        unreported().emplace_back(mesh);
    else
        output.warning("tessora: No mesh is selected, so nothing was unwrapped.");
}

double number(Node& node, const char* attribute) {
    const host::graph::Slot* slot = node.slot(attribute);
    return slot ? slot->value.number() : 0.0;
}

std::string report_on(MeshNode& mesh) {
    for (Node* node : Scene::current().history_of(mesh, false)) {
        if (node->node_type().name != "tessora_node")
            continue;
        const int charts = static_cast<int>(number(*node, "Charts_result"));
        char figures[64];
        std::snprintf(figures, sizeof figures, ": %d %s, stretch %.4f, on ", charts,
                      charts == 1 ? "chart" : "charts", number(*node, "Stretch_result"));
        return node->name_text() + figures + mesh.name_text();
    }
    return mesh.name_text() + ": unwrapped, without a node in its history";
}

} // namespace

std::vector<std::string> warnings_about_flags(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = arguments;
    for (std::string& word : words)
        for (const FlagName& flag : k_flags)
            if (word == flag.short_name || word == std::string("-") + flag.long_name)
                word = std::string("--") + flag.long_name;
    std::vector<std::string> warnings = warnings_about_settings(words);
    for (std::string& warning : warnings)
        warning.erase(0, 1); // a flag has one dash
    return warnings;
}

void watch_unwraps() { host::script::Session::current().on_plugin_command = after_command; }

std::vector<std::string> finished_unwraps() {
    std::vector<std::string> lines;
    for (const host::Ref<Node>& node : std::exchange(unreported(), {})) {
        auto& mesh = static_cast<MeshNode&>(*node);
        if (Scene::current().find(mesh.name_text()) && mesh.refresh())
            lines.push_back(report_on(mesh));
    }
    return lines;
}

std::string reason_of_failure(const std::string& told) {
    return told.empty() ? "the mesh could not be unwrapped" : told;
}

} // namespace app
