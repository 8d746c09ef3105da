#include "host/commands/mesh_history.h"

#include "host/graph/edits.h"
#include "host/mesh/components.h"
#include "host/script/plugs.h"

#include <algorithm>

namespace host::script {

using graph::Component;
using graph::ComponentKind;
using graph::DagNode;
using graph::MeshNode;
using graph::Node;
using graph::PlugValue;
using graph::Scene;
using graph::Slot;

namespace {

Slot& input_of(MeshNode& shape) { return *shape.slot(*graph::mesh_attributes().in_mesh); }

/// The mesh that a shape without history stores.
const Mesh& held_mesh(MeshNode& shape, const std::string& command) {
    Object* data = input_of(shape).value.as_data();
    const Mesh* mesh = data ? data->as_mesh()->mesh() : nullptr;
    if (!mesh)
        throw ScriptFault(command + ": \"" + name_of(shape) + "\" holds no mesh.");
    return *mesh;
}

/// Where the mesh of a shape comes from; for a shape without history, a hidden copy of it.
Slot& source_of(MeshNode& shape, const std::string& command) {
    if (Slot* source = input_of(shape).source())
        return *source;
    const Mesh mesh = held_mesh(shape, command);
    Scene& scene = Scene::current();
    const Ref<Node> made = scene.make_node(scene.find_type("mesh"), shape.name_text() + "Orig");
    auto& copy = static_cast<MeshNode&>(*made);
    perform(graph::add_node_edit(copy, shape.parents().front()), command, shape.name_text());
    set_attribute(copy, "intermediateObject", PlugValue::of_bool(true), command);
    put_mesh(copy, mesh, command);
    return *copy.slot(*graph::mesh_attributes().out_mesh);
}

/// The plug through which a mesh enters a node of the history; null if none is connected.
Slot* mesh_input(Node& node) {
    for (Slot* slot : node.slots())
        if (slot->attribute().kind() == graph::AttributeKind::mesh && slot->source())
            return slot;
    return nullptr;
}

/// The plug through which a mesh enters `node`, which must be in the history of `shape`.
Slot& input_before(MeshNode& shape, Node& node, const std::string& command) {
    Slot* input = &input_of(shape);
    // A history is a chain; the number of nodes bounds a circle of connections.
    for (size_t left = Scene::current().nodes().size(); input && input->source() && left > 0;
         --left) {
        Node& above = input->source()->node();
        input = mesh_input(above);
        if (&above == &node && input)
            return *input;
    }
    throw ScriptFault(command + ": \"" + node.name_text() + "\" is not in the history of \"" +
                      name_of(shape) + "\".");
}

} // namespace

MeshNode& mesh_shape(const graph::SelectionItem& item, const std::string& command) {
    DagNode* dag = item.node->as_dag_node();
    if (dag && !dag->is_shape())
        for (DagNode* child : dag->children())
            if (child->node_type().name == "mesh" && !child->is_intermediate())
                dag = child;
    auto* mesh = dynamic_cast<MeshNode*>(dag);
    if (!mesh)
        throw ScriptFault(command + ": \"" + name_of(*item.node) + "\" is no mesh.");
    return *mesh;
}

MeshNode& only_mesh_shape(const graph::Selection& items, const std::string& command) {
    if (items.empty())
        throw ScriptFault(command + ": Name or select a mesh or components of one.");
    MeshNode& shape = mesh_shape(items.front(), command);
    for (const graph::SelectionItem& item : items)
        if (&mesh_shape(item, command) != &shape)
            throw ScriptFault(command + ": Several meshes are named; name one.");
    return shape;
}

const Mesh& mesh_of(MeshNode& shape, const std::string& command) {
    require(shape.refresh(), command, name_of(shape));
    const Mesh* mesh = shape.mesh();
    if (!mesh)
        throw ScriptFault(command + ": \"" + name_of(shape) + "\" holds no mesh.");
    return *mesh;
}

bool makes_history(MeshNode& shape, const Flags& flags) {
    return input_of(shape).source() ||
           flags.boolean("constructionHistory", Scene::current().records_history);
}

Node& insert_history_node(MeshNode& shape, const std::string& type, const std::string& name,
                          Node* before, const std::string& command) {
    Scene& scene = Scene::current();
    Slot& input = before ? input_before(shape, *before, command) : input_of(shape);
    Slot& source = before ? *input.source() : source_of(shape, command);
    const Ref<Node> node = scene.make_node(scene.find_type(type), name);
    perform(graph::add_node_edit(*node, nullptr), command, name);
    if (input.source())
        perform(graph::disconnect_edit(source, input), command, name);
    perform(graph::connect_edit(source, *node->slot("inputPolymesh"), false), command, name);
    perform(graph::connect_edit(*node->slot("output"), input, false), command, name);
    return *node;
}

Node* last_history_node(MeshNode& shape) {
    Slot* source = input_of(shape).source();
    return source ? &source->node() : nullptr;
}

const Mesh& mesh_before(MeshNode& shape, Node& node, const std::string& command) {
    Slot& input = input_before(shape, node, command);
    require(graph::evaluate(input), command, node.name_text());
    Object* data = input.value.as_data();
    const Mesh* mesh = data ? data->as_mesh()->mesh() : nullptr;
    if (!mesh)
        throw ScriptFault(command + ": No mesh enters \"" + node.name_text() + "\".");
    return *mesh;
}

Slot& mesh_output(Node& node, const std::string& command) {
    for (graph::Attribute* output : node.node_type().outputs())
        if (output->kind() == graph::AttributeKind::mesh)
            return *node.slot(*output);
    throw ScriptFault(command + ": \"" + node.name_text() + "\" computes no mesh.");
}

void set_attribute(Node& node, const char* attribute, const PlugValue& value,
                   const std::string& command) {
    perform(graph::set_value_edit(*node.slot(attribute), value), command, attribute);
}

void change_mesh(MeshNode& shape, const std::string& command,
                 const std::function<void(Mesh&)>& change) {
    Mesh mesh = held_mesh(shape, command);
    change(mesh);
    put_mesh(shape, mesh, command);
}

void put_mesh(MeshNode& shape, const Mesh& mesh, const std::string& command) {
    const Ref<Node> keep(&shape);
    perform(graph::change_slot_edit(
                input_of(shape),
                [keep, mesh](Slot&) { return static_cast<MeshNode&>(*keep).set_mesh(mesh); }),
            command, name_of(shape));
}

std::uint32_t uv_set_of(const Flags& flags, const Mesh& mesh, const std::string& command) {
    const std::string asked = flags.text("uvSetName", "");
    const int set = asked.empty() ? mesh.current_uv_set() : mesh.find_uv_set(asked.c_str());
    if (set < 0)
        throw ScriptFault(command + (asked.empty() ? ": The mesh has no UV set."
                                                   : ": There is no UV set \"" + asked + "\"."));
    return static_cast<std::uint32_t>(set);
}

std::vector<std::uint32_t> components_of(const graph::Selection& items, ComponentKind kind,
                                         const Mesh& mesh, std::uint32_t set) {
    std::vector<std::uint32_t> all;
    for (const graph::SelectionItem& item : items) {
        const bool is_whole = !item.component;
        std::vector<std::uint32_t> ids;
        if (!is_whole)
            ids.assign(item.component->ids().begin(), item.component->ids().end());
        const ComponentKind from = is_whole ? ComponentKind::face : item.component->kind();
        if (is_whole)
            ids = all_components(mesh, MeshPart::face, set);
        const std::vector<std::uint32_t> found = converted_components(
            mesh, set, static_cast<MeshPart>(from), ids, static_cast<MeshPart>(kind), false);
        all.insert(all.end(), found.begin(), found.end());
    }
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

} // namespace host::script
