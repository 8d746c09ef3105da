#include "window/subject.h"

#include "host/graph/data.h"
#include "host/graph/edits.h"
#include "host/graph/evaluate.h"
#include "host/script/value.h"

#include <algorithm>
#include <filesystem>

namespace window {
namespace {

using host::Ref;
using host::graph::MeshNode;
using host::graph::Node;
using host::graph::Scene;
using host::graph::Slot;

constexpr const char* k_unwrap_node = "tessora_node";
constexpr const char* k_result = "outMesh"; // of an unwrap node

bool is_hidden(host::graph::DagNode& node) {
    Slot* visibility = node.slot("visibility");
    return visibility && visibility->value.number() == 0.0;
}

MeshNode* first_mesh(host::graph::DagNode& node) {
    if (auto* mesh = dynamic_cast<MeshNode*>(&node))
        return mesh->is_intermediate() ? nullptr : mesh;
    for (host::graph::DagNode* child : node.children())
        if (MeshNode* mesh = first_mesh(*child))
            return mesh;
    return nullptr;
}

MeshNode* choose(const Subject& last) {
    for (const host::graph::SelectionItem& item : Scene::current().selection()) {
        if (host::graph::DagNode* dag = item.node->as_dag_node())
            if (MeshNode* mesh = first_mesh(*dag))
                return mesh;
    }
    const std::vector<MeshNode*> meshes = visible_meshes();
    for (MeshNode* mesh : meshes)
        if (last.shape && mesh == last.shape.get())
            return mesh;
    return meshes.empty() ? nullptr : meshes.back();
}

/// True for attributes that every node has.
bool is_common(const host::graph::Attribute& attribute) {
    for (const char* name : {"caching", "isHistoricallyInteresting", "nodeState", "frozen"})
        if (attribute.long_name() == name)
            return true;
    return false;
}

double number(Node& node, const char* attribute) {
    const Slot* slot = node.slot(attribute);
    return slot ? slot->value.number() : 0.0;
}

bool keeps_borders(Node& node) { return number(node, "Keep_Borders") != 0.0; }

/// The mesh that a plug of a node has; null if none.
const host::Mesh* mesh_in(Node& node, const char* plug) {
    const Slot* slot = node.slot(plug);
    host::Object* data = slot ? slot->value.as_data() : nullptr;
    return data && data->as_mesh() ? data->as_mesh()->mesh() : nullptr;
}

/// Whether both have the same UV sets in the same storage.
bool shares_uvs(const host::Mesh& a, const host::Mesh& b) {
    if (a.uv_set_count() != b.uv_set_count())
        return false;
    for (uint32_t set = 0; set < a.uv_set_count(); ++set)
        if (&a.uv_set(set) != &b.uv_set(set))
            return false;
    return true;
}

/// Reads texture size, gutter and UV set of an unwrap node, clamped as the node clamps them.
void read_settings(Node& node, Subject& subject) {
    subject.texture.width = std::clamp(number(node, "Texture_Width"), 8.0, 8192.0);
    subject.texture.height = std::clamp(number(node, "Texture_Height"), 8.0, 8192.0);
    subject.gutter = std::clamp(number(node, "Padding"), 0.0, 32.0);
    const Slot* set = node.slot("UV_Set");
    if (set && set->value.kind() == host::graph::ValueKind::text) {
        const int position = subject.mesh.find_uv_set(set->value.as_text());
        if (position >= 0)
            subject.uv_set = position;
    }
}

} // namespace

std::string Subject::name_of(const Ref<Node>& node) { return node->name_text(); }

std::vector<MeshNode*> visible_meshes() {
    std::vector<MeshNode*> meshes;
    for (const Ref<Node>& node : Scene::current().nodes()) {
        auto* mesh = dynamic_cast<MeshNode*>(node.get());
        if (!mesh || mesh->is_intermediate())
            continue;
        bool is_shown = true;
        for (const auto& on_path : mesh->path())
            is_shown = is_shown && !is_hidden(*on_path);
        if (is_shown)
            meshes.push_back(mesh);
    }
    return meshes;
}

bool is_unwrap(const Node& node) { return node.node_type().name == k_unwrap_node; }

bool is_overlay_on(Node& node) { return number(node, k_overlay_attribute) != 0.0; }

Subject find_subject(const Subject& last) {
    Subject subject;
    MeshNode* shape = choose(last);
    const host::Mesh* mesh = shape ? shape->mesh() : nullptr;
    if (!mesh)
        return subject;
    subject.shape = shape;
    subject.mesh = *mesh;
    subject.uv_set = mesh->current_uv_set();
    const std::vector<Node*> history = Scene::current().history_of(*shape, false);
    for (Node* node : history)
        if (is_unwrap(*node)) {
            subject.node = node;
            subject.has_later_edits = node != history.front();
            read_settings(*node, subject);
            break;
        }
    return subject;
}

bool update_meshes() {
    bool is_good = true;
    for (MeshNode* mesh : visible_meshes())
        // A node whose overlay was switched computes with the second request only.
        is_good = mesh->refresh() && mesh->refresh() && is_good;
    return is_good;
}

void show_overlay(Node& node, bool is_on) {
    Slot* slot = node.slot(k_overlay_attribute);
    // A node that unwraps shows its overlay even if it is switched off: only a change counts.
    for (const bool state : {!is_on, is_on}) {
        if (slot)
            host::graph::set_value(*slot, host::graph::PlugValue::of_bool(state));
        update_meshes();
    }
}

UnwrapResults UnwrapResults::now() {
    UnwrapResults results;
    for (const Ref<Node>& node : Scene::current().nodes())
        if (const host::Mesh* mesh = is_unwrap(*node) ? mesh_in(*node, k_result) : nullptr)
            results.results_.push_back({node, *mesh, keeps_borders(*node)});
    return results;
}

void UnwrapResults::restore() const {
    for (const Result& result : results_)
        result.node->slot(k_result)->value =
            host::graph::PlugValue::of_data(host::graph::mesh_data(&result.mesh).get());
}

std::vector<Ref<Node>> UnwrapResults::with_stale_seams() const {
    std::vector<Ref<Node>> nodes;
    for (const Result& result : results_) {
        const host::Mesh* now = mesh_in(*result.node, k_result);
        const host::Mesh* input = mesh_in(*result.node, "inMesh");
        const bool has_computed = !now || !shares_uvs(*now, result.mesh);
        // One that stopped half-way leaves its input there.
        const bool has_new_layout = has_computed && (!now || !input || !shares_uvs(*now, *input));
        if (has_new_layout ||
            (has_computed && (result.keeps_borders || keeps_borders(*result.node))))
            nodes.push_back(result.node);
    }
    return nodes;
}

std::vector<Slot*> editable_slots(Node& node) {
    std::vector<Slot*> inputs, outputs;
    for (const auto& attribute : node.node_type().attributes()) {
        const bool is_scalar =
            attribute->is_number() || attribute->kind() == host::graph::AttributeKind::text;
        if (!is_scalar || attribute->is_array() || attribute->flags.hidden || is_common(*attribute))
            continue;
        Slot* slot = node.slot(*attribute);
        if (!slot)
            continue;
        const bool is_input = attribute->flags.writable && !slot->source();
        (is_input ? inputs : outputs).push_back(slot);
    }
    inputs.insert(inputs.end(), outputs.begin(), outputs.end());
    return inputs;
}

std::string statement_for_file(const std::string& path, bool import) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    const std::string name = host::script::quoted(path);
    if (extension == ".mel")
        return "source " + name + ";";
    if (extension != ".obj" && extension != ".ma")
        return std::string();
    return (import ? "file -import " : "file -open -force ") + name + ";";
}

std::string refusal_of(const std::string& path) {
    return path + ": neither a mesh, nor a scene (.ma), nor a script (.mel).";
}

std::vector<std::string> statements_for_drop(const std::vector<std::string>& paths, bool replaces,
                                             std::vector<std::string>& refused) {
    std::vector<std::string> statements;
    for (const std::string& path : paths) {
        const std::string statement = statement_for_file(path, !replaces);
        if (statement.empty()) {
            refused.push_back(path);
            continue;
        }
        statements.push_back(statement);
        replaces = replaces && statement.compare(0, 5, "file ") != 0;
    }
    return statements;
}

} // namespace window
