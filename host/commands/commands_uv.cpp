// Commands that cut and sew UVs along edges, and select edges: polyMapCut, polyMapSew,
// polyMapSewMove, polySelect.
#include "host/commands/commands.h"
#include "host/commands/mesh_history.h"
#include "host/graph/component_text.h"
#include "host/graph/edits.h"
#include "host/mesh/components.h"
#include "host/mesh/uv_edit.h"
#include "host/mesh/uv_move.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

#include <algorithm>
#include <limits>

namespace host::script {

namespace {

using graph::Component;
using graph::ComponentKind;
using graph::MeshNode;
using graph::Node;
using graph::PlugValue;
using graph::Scene;
using graph::Slot;

// --- polyMapCut, polyMapSew, polyMapSewMove -----------------------------------------------------

/// Edges of one mesh.
struct Edges {
    MeshNode* shape = nullptr;
    std::vector<std::uint32_t> ids; ///< ascending
};

/// The edges among the named items, or the selected ones if none is named.
Edges edges_named(const StringArray& names, const std::string& command) {
    graph::Selection items = items_named(names);
    items.erase(std::remove_if(items.begin(), items.end(),
                               [](const graph::SelectionItem& item) {
                                   return !item.component ||
                                          item.component->kind() != ComponentKind::edge;
                               }),
                items.end());
    if (items.empty())
        throw ScriptFault(command + ": Name or select edges of a mesh.");
    Edges edges;
    edges.shape = static_cast<MeshNode*>(items.front().node.get());
    for (const graph::SelectionItem& item : items) {
        if (item.node.get() != edges.shape)
            throw ScriptFault(command + ": The edges belong to several meshes; name those of one.");
        edges.ids.insert(edges.ids.end(), item.component->ids().begin(),
                         item.component->ids().end());
    }
    std::sort(edges.ids.begin(), edges.ids.end());
    edges.ids.erase(std::unique(edges.ids.begin(), edges.ids.end()), edges.ids.end());
    return edges;
}

/// The name of the UV set to work on: the one asked for or the current one. A mesh without UVs can
/// be cut all the same: the cut makes a set.
std::string set_to_edit(const Flags& flags, const Mesh& mesh, const std::string& command) {
    const std::string asked = flags.text("uvSetName", "");
    if (command == "polyMapCut" && asked.empty() && mesh.current_uv_set() < 0)
        return "map1";
    return mesh.uv_set(uv_set_of(flags, mesh, command)).name.asChar();
}

/// Sets what the flags of polyMapSewMove say, and caching and nodeState.
void set_more(Node& node, const Flags& flags, const std::string& command) {
    for (const char* attribute : {"caching", "nodeState", "numberFaces", "limitPieceSize"})
        if (flags.has(attribute))
            set_attribute(node, attribute, PlugValue::of_double(flags.value(attribute).to_real()),
                          command);
}

/// Inserts the node that does what the command is called. Returns its name.
std::string insert_edge_node(const Edges& edges, const std::string& command, const Flags& flags,
                             Node* before, const std::string& set) {
    Node& node = insert_history_node(*edges.shape, command,
                                     flags.text("name", (command + "1").c_str()), before, command);
    set_attribute(node, "inputComponents",
                  PlugValue::of_text(graph::component_text("e", edges.ids).c_str()), command);
    set_attribute(node, "uvSetName", PlugValue::of_text(set.c_str()), command);
    set_more(node, flags, command);
    return node.name_text();
}

using UvEdit = void (*)(Mesh&, std::uint32_t set, const std::vector<std::uint32_t>& edges,
                        const Flags&);

/// Does what the flag -before asks for: inserts the node above another one, whose results undo and
/// redo bring back without computing them.
Value insert_before(const Edges& edges, const std::string& command, const Flags& flags) {
    Node& before = node_named(flags.text("before", ""));
    const Mesh& mesh = mesh_before(*edges.shape, before, command);
    const std::string set = set_to_edit(flags, mesh, command);
    auto [first, last] = graph::keep_results_edits(mesh_output(before, command));
    perform(std::move(first), command, before.name_text());
    const std::string name = insert_edge_node(edges, command, flags, &before, set);
    perform(std::move(last), command, before.name_text());
    return StringArray{name};
}

/// Returns the name of the node, or nothing without history.
Value edit_edges(Invocation& call, const FlagTable& table, UvEdit edit) {
    const Flags flags(call, table);
    const Edges edges = edges_named(flags.names(), call.name);
    if (flags.has("before"))
        return insert_before(edges, call.name, flags);
    const std::string set = set_to_edit(flags, mesh_of(*edges.shape, call.name), call.name);
    if (makes_history(*edges.shape, flags))
        return StringArray{insert_edge_node(edges, call.name, flags, nullptr, set)};
    change_mesh(*edges.shape, call.name, [&](Mesh& mesh) {
        int id = mesh.find_uv_set(set.c_str());
        if (id < 0)
            id = static_cast<int>(mesh.add_uv_set(set.c_str()));
        edit(mesh, static_cast<std::uint32_t>(id), edges.ids, flags);
    });
    return Value();
}

FlagTable edge_flags() {
    return {{"ch", "constructionHistory", "b"}, {"n", "name", "s"},
            {"uvs", "uvSetName", "s"},          {"cch", "caching", "b"},
            {"nds", "nodeState", "i"},          {"bf", "before", "s"}};
}

Value map_cut(Invocation& call) {
    return edit_edges(call, edge_flags(),
                      [](Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& edges,
                         const Flags&) { cut_uvs(mesh, set, edges); });
}

Value map_sew(Invocation& call) {
    return edit_edges(call, edge_flags(),
                      [](Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& edges,
                         const Flags&) { sew_uvs(mesh, set, edges); });
}

Value map_sew_move(Invocation& call) {
    FlagTable table = edge_flags();
    table.push_back({"nf", "numberFaces", "i"});
    table.push_back({"lps", "limitPieceSize", "b"});
    return edit_edges(call, table,
                      [](Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& edges,
                         const Flags& flags) {
                          const bool is_limited = flags.boolean("limitPieceSize", false);
                          move_and_sew_uvs(mesh, set, edges,
                                           is_limited ? static_cast<std::uint32_t>(std::max(
                                                            flags.integer("numberFaces", 10), 0))
                                                      : std::numeric_limits<std::uint32_t>::max());
                      });
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
    graph::SelectionItem item(shape);
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
    const std::vector<std::uint32_t> edges = asked_edges(flags, mesh_of(shape, call.name));
    if (!flags.has("noSelection"))
        select_edges(shape, edges, flags);
    if (!flags.has("asSelectString"))
        return IntArray(edges.begin(), edges.end());
    StringArray names;
    for (const std::uint32_t edge : edges)
        names.push_back(name_of(shape) + ".e[" + std::to_string(edge) + "]");
    return names;
}

// --- polyListComponentConversion ----------------------------------------------------------------

struct PartName {
    const char* flag; ///< after "from" or "to"
    const char* text;
    MeshPart part;
};
constexpr PartName k_parts[] = {{"Vertex", "vtx", MeshPart::vertex},
                                {"Edge", "e", MeshPart::edge},
                                {"Face", "f", MeshPart::face},
                                {"UV", "map", MeshPart::uv}};

/// The kinds that the flags with a prefix name.
std::vector<const PartName*> asked_parts(const Flags& flags, const std::string& prefix) {
    std::vector<const PartName*> parts;
    for (const PartName& part : k_parts)
        if (flags.has((prefix + part.flag).c_str()))
            parts.push_back(&part);
    return parts;
}

/// All UVs of the shells that these UVs are in.
std::vector<std::uint32_t> whole_shells(const Mesh& mesh, std::uint32_t set,
                                        const std::vector<std::uint32_t>& uvs) {
    const UvShells shells = uv_shells(mesh, set);
    std::vector<bool> is_meant(shells.count);
    for (const std::uint32_t uv : uvs)
        if (shells.of_uv[uv] != k_no_shell)
            is_meant[shells.of_uv[uv]] = true;
    std::vector<std::uint32_t> all;
    for (std::uint32_t uv = 0; uv < shells.of_uv.size(); ++uv)
        if (shells.of_uv[uv] != k_no_shell && is_meant[shells.of_uv[uv]])
            all.push_back(uv);
    return all;
}

/// Components of one kind of one mesh, or (`is_whole`) all of it.
struct Given {
    MeshNode* shape = nullptr;
    bool is_whole = false;
    MeshPart part = MeshPart::face;
    std::vector<std::uint32_t> ids;
};

/// The items by mesh and kind, in the order in which these first come; of the kinds asked for.
std::vector<Given> grouped(const graph::Selection& items,
                           const std::vector<const PartName*>& kinds) {
    std::vector<Given> groups;
    for (const graph::SelectionItem& item : items) {
        Given given;
        given.shape = &mesh_shape(item, "polyListComponentConversion");
        given.is_whole = !item.component;
        if (item.component)
            given.part = static_cast<MeshPart>(item.component->kind());
        const bool is_asked = given.is_whole || kinds.empty() ||
                              std::any_of(kinds.begin(), kinds.end(), [&](const PartName* kind) {
                                  return kind->part == given.part;
                              });
        if (!is_asked)
            continue;
        auto group = std::find_if(groups.begin(), groups.end(), [&](const Given& other) {
            return other.shape == given.shape && other.is_whole == given.is_whole &&
                   other.part == given.part;
        });
        if (group == groups.end())
            group = groups.insert(groups.end(), given);
        if (item.component)
            group->ids.insert(group->ids.end(), item.component->ids().begin(),
                              item.component->ids().end());
    }
    return groups;
}

void append_converted(const Given& given, const PartName& to, const Flags& flags,
                      StringArray& names) {
    const Mesh& mesh = mesh_of(*given.shape, "polyListComponentConversion");
    const std::uint32_t set =
        mesh.current_uv_set() < 0 ? k_no_uv_set : static_cast<std::uint32_t>(mesh.current_uv_set());
    const bool is_internal = flags.has("internal");
    std::vector<std::uint32_t> ids;
    if (given.is_whole) {
        ids = all_components(mesh, to.part, set);
    } else if (flags.has("uvShell") && set != k_no_uv_set) {
        const std::vector<std::uint32_t> uvs =
            converted_components(mesh, set, given.part, given.ids, MeshPart::uv, false);
        ids = converted_components(mesh, set, MeshPart::uv, whole_shells(mesh, set, uvs), to.part,
                                   is_internal);
    } else {
        ids = converted_components(mesh, set, given.part, given.ids, to.part, is_internal);
    }
    for (const std::string& word : graph::component_words(graph::component_text(to.text, ids)))
        names.push_back(name_of(*given.shape->parents().front()) + "." + word);
}

/// Names the components of other kinds that touch those given or, with -internal, lie among them.
Value convert_components(Invocation& call) {
    static const FlagTable table = {{"fv", "fromVertex"}, {"fe", "fromEdge"}, {"ff", "fromFace"},
                                    {"fuv", "fromUV"},    {"tv", "toVertex"}, {"te", "toEdge"},
                                    {"tf", "toFace"},     {"tuv", "toUV"},    {"in", "internal"},
                                    {"uvs", "uvShell"}};
    const Flags flags(call, table);
    const std::vector<const PartName*> from = asked_parts(flags, "from");
    const std::vector<const PartName*> to = asked_parts(flags, "to");
    if (to.empty())
        throw ScriptFault("polyListComponentConversion needs -toVertex, -toEdge, -toFace or "
                          "-toUV.");
    StringArray names;
    for (const Given& given : grouped(items_named(flags.names()), from))
        for (const PartName* part : to)
            append_converted(given, *part, flags, names);
    return names;
}

} // namespace

void add_uv_commands(Interpreter& interpreter) {
    interpreter.add_command("polyMapCut", map_cut);
    interpreter.add_command("polyMapSew", map_sew);
    interpreter.add_command("polyMapSewMove", map_sew_move);
    interpreter.add_command("polySelect", poly_select);
    interpreter.add_command("polyListComponentConversion", convert_components);
}

} // namespace host::script
