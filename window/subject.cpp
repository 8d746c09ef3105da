#include "window/subject.h"

#include "host/graph/data.h"
#include "host/graph/edits.h"
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
        if (node->node_type().name == k_unwrap_node) {
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

UnwrapResults UnwrapResults::now() {
    UnwrapResults results;
    for (const Ref<Node>& node : Scene::current().nodes()) {
        const Slot* slot = node->node_type().name == k_unwrap_node ? node->slot(k_result) : nullptr;
        host::Object* data = slot ? slot->value.as_data() : nullptr;
        if (data && data->as_mesh() && data->as_mesh()->mesh())
            results.meshes_.emplace_back(node, *data->as_mesh()->mesh());
    }
    return results;
}

void UnwrapResults::restore() const {
    for (const auto& [node, mesh] : meshes_)
        node->slot(k_result)->value =
            host::graph::PlugValue::of_data(host::graph::mesh_data(&mesh).get());
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
