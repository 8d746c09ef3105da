// Commands that cut, sew and select edges: polyMapCut, polyMapSew, polySelect.
#include "host/commands/commands.h"
#include "host/graph/edits.h"
#include "host/graph/mesh_node.h"
#include "host/mesh/mesh.h"
#include "host/mesh/uv_edit.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

#include <algorithm>

namespace host::script {

namespace {

using graph::Component;
using graph::ComponentKind;
using graph::MeshNode;
using graph::Node;
using graph::Scene;
using graph::Slot;

/// Edges of one mesh.
struct Edges {
    MeshNode* shape = nullptr;
    std::vector<std::uint32_t> ids; ///< ascending
};

/// "e[3] e[5:8]". `ids`: ascending.
std::string text_of(const std::vector<std::uint32_t>& ids) {
    std::string text;
    for (size_t i = 0; i < ids.size();) {
        size_t end = i + 1;
        while (end < ids.size() && ids[end] == ids[end - 1] + 1)
            ++end;
        text += (text.empty() ? "e[" : " e[") + std::to_string(ids[i]) +
                (end - i > 1 ? ":" + std::to_string(ids[end - 1]) : "") + "]";
        i = end;
    }
    return text;
}

/// The edges among the named items, or the selected ones if none is named.
Edges edges_named(const StringArray& names, const std::string& command) {
    Edges edges;
    for (const graph::SelectionItem& item : items_named(names)) {
        if (!item.component || item.component->kind() != ComponentKind::edge)
            continue;
        auto* shape = static_cast<MeshNode*>(item.node.get());
        if (edges.shape && edges.shape != shape)
            throw ScriptFault(command + ": The edges belong to several meshes; name those of one.");
        edges.shape = shape;
        for (const int id : item.component->ids())
            edges.ids.push_back(static_cast<std::uint32_t>(id));
    }
    if (!edges.shape)
        throw ScriptFault(command + ": Name or select edges of a mesh.");
    std::sort(edges.ids.begin(), edges.ids.end());
    edges.ids.erase(std::unique(edges.ids.begin(), edges.ids.end()), edges.ids.end());
    return edges;
}

void set_text(Node& node, const char* attribute, const std::string& text,
              const std::string& command) {
    perform(graph::set_value_edit(*node.slot(attribute), graph::PlugValue::of_text(text.c_str())),
            command, attribute);
}

/// Where the mesh of a shape comes from; for a shape without history, a hidden copy of it.
Slot& source_of(MeshNode& shape, const std::string& command) {
    Slot& input = *shape.slot(*graph::mesh_attributes().in_mesh);
    if (Slot* source = input.source())
        return *source;
    if (!input.value.as_data() || !input.value.as_data()->as_mesh()->mesh())
        throw ScriptFault(command + ": \"" + name_of(shape) + "\" holds no mesh.");
    Scene& scene = Scene::current();
    const Ref<Node> copy = scene.make_node(scene.find_type("mesh"), shape.name_text() + "Orig");
    perform(graph::add_node_edit(*copy, shape.parents().front()), command, shape.name_text());
    perform(
        graph::set_value_edit(*copy->slot("intermediateObject"), graph::PlugValue::of_bool(true)),
        command, "intermediateObject");
    const Mesh mesh = *input.value.as_data()->as_mesh()->mesh();
    perform(graph::change_slot_edit(
                *copy->slot(*graph::mesh_attributes().in_mesh),
                [copy, mesh](Slot&) { return static_cast<MeshNode&>(*copy).set_mesh(mesh); }),
            command, copy->name_text());
    return *copy->slot(*graph::mesh_attributes().out_mesh);
}

/// Inserts a node at the end of the history of a shape. Returns its name.
std::string insert(MeshNode& shape, const char* type, const std::string& name,
                   const std::string& edges, const std::string& uv_set) {
    Scene& scene = Scene::current();
    Slot& source = source_of(shape, type);
    Slot& input = *shape.slot(*graph::mesh_attributes().in_mesh);
    const Ref<Node> node = scene.make_node(scene.find_type(type), name);
    perform(graph::add_node_edit(*node, nullptr), type, name);
    set_text(*node, "inputComponents", edges, type);
    set_text(*node, "uvSetName", uv_set, type);
    if (input.source())
        perform(graph::disconnect_edit(source, input), type, name);
    perform(graph::connect_edit(source, *node->slot("inputPolymesh"), false), type, name);
    perform(graph::connect_edit(*node->slot("output"), input, false), type, name);
    return node->name_text();
}

/// Changes the mesh of a shape without history and records none.
void change(MeshNode& shape, const std::string& command, const std::function<void(Mesh&)>& edit) {
    Slot& input = *shape.slot(*graph::mesh_attributes().in_mesh);
    const Mesh* held = input.value.as_data() ? input.value.as_data()->as_mesh()->mesh() : nullptr;
    if (!held)
        throw ScriptFault(command + ": \"" + name_of(shape) + "\" holds no mesh.");
    Mesh mesh = *held;
    edit(mesh);
    const Ref<Node> keep(&shape);
    perform(
        graph::change_slot_edit(
            input, [keep, mesh](Slot&) { return static_cast<MeshNode&>(*keep).set_mesh(mesh); }),
        command, name_of(shape));
}

/// The name of the UV set to edit: the one asked for, or the current one.
std::string uv_set_of(const Flags& flags, const Mesh& mesh, const std::string& command) {
    const std::string asked = flags.text("uvSetName", "");
    if (!asked.empty() && mesh.find_uv_set(asked.c_str()) < 0)
        throw ScriptFault(command + ": There is no UV set \"" + asked + "\".");
    if (asked.empty() && mesh.current_uv_set() < 0)
        throw ScriptFault(command + ": The mesh has no UV set.");
    return asked.empty()
               ? mesh.uv_set(static_cast<std::uint32_t>(mesh.current_uv_set())).name.asChar()
               : asked;
}

using UvEdit = std::uint32_t (*)(Mesh&, std::uint32_t, const std::vector<std::uint32_t>&);

/// polyMapCut and polyMapSew. Returns the name of the node, or nothing without history.
Value edit_edges(Invocation& call, const char* type, UvEdit edit) {
    static const FlagTable table = {
        {"ch", "constructionHistory", "b"}, {"n", "name", "s"}, {"uvs", "uvSetName", "s"}};
    const Flags flags(call, table);
    const Edges edges = edges_named(flags.names(), call.name);
    require(edges.shape->refresh(), call.name, name_of(*edges.shape));
    const Mesh* mesh = edges.shape->mesh();
    if (!mesh)
        throw ScriptFault(call.name + ": \"" + name_of(*edges.shape) + "\" holds no mesh.");
    const std::string set = uv_set_of(flags, *mesh, call.name);
    const bool has_history = edges.shape->slot(*graph::mesh_attributes().in_mesh)->source();
    const bool records = flags.boolean("constructionHistory", Scene::current().records_history);
    const std::string name = flags.text("name", (std::string(type) + "1").c_str());
    if (has_history || records)
        return StringArray{insert(*edges.shape, type, name, text_of(edges.ids), set)};
    change(*edges.shape, call.name, [&](Mesh& changed) {
        edit(changed, static_cast<std::uint32_t>(changed.find_uv_set(set.c_str())), edges.ids);
    });
    return Value();
}

// --- polySelect ---------------------------------------------------------------------------------

MeshNode& mesh_named(const StringArray& names) {
    const graph::Selection items = items_named(names);
    for (const graph::SelectionItem& item : items) {
        graph::DagNode* dag = item.node->as_dag_node();
        if (auto* mesh = dynamic_cast<MeshNode*>(dag))
            return *mesh;
        for (graph::DagNode* child : dag ? dag->children() : std::vector<graph::DagNode*>())
            if (auto* mesh = dynamic_cast<MeshNode*>(child))
                if (!mesh->is_intermediate())
                    return *mesh;
    }
    throw ScriptFault("polySelect: Name or select a mesh.");
}

std::uint32_t checked(int32_t id, std::uint32_t count, const char* kind) {
    if (id < 0 || static_cast<std::uint32_t>(id) >= count)
        throw ScriptFault("polySelect: The mesh has no " + std::string(kind) + " " +
                          std::to_string(id) + ".");
    return static_cast<std::uint32_t>(id);
}

std::vector<std::uint32_t> asked_edges(const Flags& flags, const Mesh& mesh) {
    const Connectivity& polygons = mesh.connectivity();
    if (flags.has("edgeLoop"))
        return edge_loop(mesh,
                         checked(flags.integer("edgeLoop", 0), polygons.edge_count(), "edge"));
    if (!flags.has("shortestEdgePath"))
        throw ScriptFault("polySelect needs -edgeLoop or -shortestEdgePath.");
    const auto end = [&](size_t i) {
        return checked(flags.value("shortestEdgePath", i).to_int(), polygons.vertex_count(),
                       "vertex");
    };
    return shortest_edge_path(mesh, end(0), end(1));
}

void select_edges(MeshNode& shape, const std::vector<std::uint32_t>& edges, const Flags& flags) {
    graph::SelectionItem item = graph::item_of(shape);
    item.component =
        new Component(ComponentKind::edge, std::vector<int>(edges.begin(), edges.end()));
    graph::Selection selection;
    if (flags.has("add"))
        selection = Scene::current().selection();
    if (!edges.empty())
        selection.push_back(item);
    perform(graph::select_edit(selection), "polySelect", "selection");
}

Value poly_select(Invocation& call) {
    static const FlagTable table = {{"el", "edgeLoop", "i"},
                                    {"sep", "shortestEdgePath", "ii"},
                                    {"ass", "asSelectString"},
                                    {"ns", "noSelection"},
                                    {"add", "add"},
                                    {"r", "replace"}};
    const Flags flags(call, table);
    flags.require_operands(0, 1);
    MeshNode& shape = mesh_named(flags.names());
    require(shape.refresh(), call.name, name_of(shape));
    if (!shape.mesh())
        throw ScriptFault("polySelect: \"" + name_of(shape) + "\" holds no mesh.");
    const std::vector<std::uint32_t> edges = asked_edges(flags, *shape.mesh());
    if (!flags.has("noSelection"))
        select_edges(shape, edges, flags);
    if (!flags.has("asSelectString"))
        return IntArray(edges.begin(), edges.end());
    StringArray names;
    for (const std::uint32_t edge : edges)
        names.push_back(name_of(shape) + ".e[" + std::to_string(edge) + "]");
    return names;
}

} // namespace

void add_uv_commands(Interpreter& interpreter) {
    interpreter.add_command(
        "polyMapCut", [](Invocation& call) { return edit_edges(call, "polyMapCut", cut_uvs); });
    interpreter.add_command(
        "polyMapSew", [](Invocation& call) { return edit_edges(call, "polyMapSew", sew_uvs); });
    interpreter.add_command("polySelect", poly_select);
}

} // namespace host::script
