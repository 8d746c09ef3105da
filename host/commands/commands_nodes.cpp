#include "host/commands/commands.h"
#include "host/graph/edits.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

#include <algorithm>
#include <cmath>

namespace host::script {

namespace {

using graph::DagNode;
using graph::Node;
using graph::Scene;
using graph::Selection;
using graph::SelectionItem;
using graph::Slot;

DagNode& dag_named(const std::string& name) {
    DagNode* dag = node_named(name).as_dag_node();
    if (!dag)
        throw ScriptFault("\"" + name + "\" has no place in the hierarchy.");
    return *dag;
}

void select_nodes(const std::vector<Node*>& nodes, const std::string& command) {
    Selection selection;
    for (Node* node : nodes)
        selection.push_back(graph::SelectionItem(*node));
    perform(graph::select_edit(selection), command, "selection");
}

// --- createNode ---------------------------------------------------------------------------------

/// Name of the transform created above a shape: "cube1" for "cubeShape1".
std::string transform_name(const std::string& shape, const std::string& type) {
    const size_t at = shape.rfind("Shape");
    if (at == std::string::npos)
        return shape.empty() ? type + "1" : shape + "Transform";
    return shape.substr(0, at) + shape.substr(at + 5);
}

DagNode& make_transform(const std::string& name) {
    Scene& scene = Scene::current();
    const Ref<Node> node = scene.make_node(scene.find_type("transform"), name);
    if (!node)
        throw ScriptFault("createNode: A transform could not be made.");
    perform(graph::add_node_edit(*node, nullptr), "createNode", name);
    return *node->as_dag_node();
}

Value create_node(Invocation& call) {
    static const FlagTable table = {
        {"n", "name", "s"}, {"p", "parent", "s"}, {"s", "shared"}, {"ss", "skipSelect"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    Scene& scene = Scene::current();
    const std::string type_name = flags.names()[0];
    const graph::NodeTypeRef type = scene.find_type(type_name);
    if (!type)
        throw ScriptFault("createNode: Unknown node type \"" + type_name + "\".");
    const std::string name = flags.text("name", "");
    if (flags.has("shared"))
        if (Node* node = scene.find(name)) {
            if (!flags.has("skipSelect"))
                select_nodes({node}, "createNode");
            return name_of(*node);
        }
    DagNode* parent = flags.has("parent") ? &dag_named(flags.text("parent", "")) : nullptr;
    if (parent && !type->dag)
        throw ScriptFault("createNode: A " + type_name + " has no place in the hierarchy.");
    if (!parent && type->shape)
        parent = &make_transform(transform_name(name, type_name));
    const Ref<Node> node = scene.make_node(type, name);
    if (!node)
        throw ScriptFault("createNode: A " + type_name + " could not be made.");
    perform(graph::add_node_edit(*node, parent), "createNode", type_name);
    if (!flags.has("skipSelect"))
        select_nodes({node.get()}, "createNode");
    return name_of(*node);
}

// --- delete -------------------------------------------------------------------------------------

std::vector<DagNode*> mesh_shapes(const Selection& items) {
    std::vector<DagNode*> shapes;
    const auto take = [&](DagNode* node) {
        if (node->node_type().name == "mesh" && !node->is_intermediate())
            shapes.push_back(node);
    };
    for (const SelectionItem& item : items) {
        DagNode* dag = item.node->as_dag_node();
        if (!dag)
            continue;
        take(dag);
        for (DagNode* child : dag->children())
            take(child);
    }
    return shapes;
}

/// Keeps the mesh that the construction history computes and removes the history's nodes.
void delete_history(DagNode& shape) {
    Slot* in = shape.slot("inMesh");
    Slot* source = in ? in->source() : nullptr;
    if (!source)
        return;
    const std::string name = name_of(shape);
    require(graph::evaluate(*in), "delete", name);
    const std::vector<Node*> history = Scene::current().history_of(shape, true);
    perform(graph::disconnect_edit(*source, *in), "delete", name);
    for (Node* node : history)
        perform(graph::remove_node_edit(*node), "delete", name_of(*node));
}

/// Appends the nodes of the construction histories of all meshes at and below a node.
void collect_histories(DagNode& node, std::vector<Ref<Node>>& nodes) {
    graph::walk_down(node, [&](DagNode& one) {
        if (one.node_type().name == "mesh")
            for (Node* upstream : Scene::current().history_of(one, true))
                if (!upstream->as_dag_node())
                    nodes.emplace_back(upstream);
        return true;
    });
}

/// Removes an object together with the history that nothing else uses. Left behind, such nodes
/// could not be seen or selected, and would hold on to their meshes.
void remove_object(Node& object) {
    std::vector<Ref<Node>> history;
    if (DagNode* dag = object.as_dag_node())
        collect_histories(*dag, history);
    perform(graph::remove_node_edit(object), "delete", name_of(object));
    for (const Ref<Node>& node : history)
        if (node->is_valid() && !node->is_default && !node->locked)
            perform(graph::remove_node_edit(*node), "delete", node->name_text());
}

Value remove(Invocation& call) {
    static const FlagTable table = {{"ch", "constructionHistory"}, {"all", "all"}};
    const Flags flags(call, table);
    Scene& scene = Scene::current();
    Selection items;
    if (flags.has("all")) {
        for (const auto& node : scene.nodes())
            if (!node->is_default)
                items.push_back(graph::SelectionItem(*node));
    } else {
        items = items_named(flags.names());
        if (items.empty())
            throw ScriptFault("delete: Nothing is named or selected.");
    }
    if (flags.has("constructionHistory")) {
        for (DagNode* shape : mesh_shapes(items))
            delete_history(*shape);
        return Value();
    }
    for (const SelectionItem& item : items) {
        if (item.plug || item.component)
            throw ScriptFault("delete: Only whole objects can be deleted.");
        if (!item.node->is_valid())
            continue; // removed together with another item
        if (item.node->is_default || item.node->locked)
            throw ScriptFault("delete: \"" + name_of(*item.node) + "\" cannot be deleted.");
        remove_object(*item.node);
    }
    return Value();
}

// --- rename, duplicate --------------------------------------------------------------------------

Value rename(Invocation& call) {
    require_arguments(call, 1, 2);
    const bool named = call.arguments.size() == 2;
    const Selection items =
        items_named(named ? StringArray{call.arguments[0].to_string()} : StringArray());
    if (items.size() != 1)
        throw ScriptFault("rename needs one object.");
    Node& node = *items[0].node;
    const std::string wanted = call.arguments.back().to_string();
    if (wanted.empty())
        throw ScriptFault("rename needs a name.");
    if (node.is_default || node.locked)
        throw ScriptFault("rename: \"" + name_of(node) + "\" cannot be renamed.");
    const std::string before = node.name_text();
    perform(graph::rename_edit(node, wanted), "rename", before);
    // A shape named after its transform is renamed with it.
    if (DagNode* dag = node.as_dag_node())
        for (DagNode* child : dag->children()) {
            const std::string stem = transform_name(child->name_text(), "");
            if (child->is_shape() && stem == before) {
                std::string name = node.name_text();
                const size_t digits = name.find_last_not_of("0123456789") + 1;
                name.insert(digits, "Shape");
                perform(graph::rename_edit(*child, name), "rename", before);
            }
        }
    return name_of(node);
}

Value duplicate(Invocation& call) {
    static const FlagTable table = {{"n", "name", "s"}, {"rr", "returnRootsOnly"}};
    const Flags flags(call, table);
    Scene& scene = Scene::current();
    const Selection items = items_named(flags.names());
    if (items.empty())
        throw ScriptFault("duplicate: Nothing is named or selected.");
    std::vector<Node*> roots, all;
    for (const SelectionItem& item : items) {
        std::vector<Scene::Copy> copies;
        require(scene.duplicate(*item.node, true, copies), "duplicate", name_of(*item.node));
        for (size_t i = 0; i < copies.size(); ++i) {
            perform(graph::add_node_edit(*copies[i].node, copies[i].parent), "duplicate",
                    name_of(*item.node));
            (i == 0 ? roots : all).push_back(copies[i].node.get());
        }
        if (flags.has("name"))
            perform(graph::rename_edit(*roots.back(), flags.text("name", "")), "duplicate",
                    name_of(*item.node));
    }
    select_nodes(roots, "duplicate");
    StringArray names;
    for (Node* node : roots)
        names.push_back(name_of(*node));
    if (!flags.has("returnRootsOnly"))
        for (Node* node : all)
            names.push_back(name_of(*node));
    return names;
}

// --- parent -------------------------------------------------------------------------------------

/// Sets translate, rotate (XYZ order) and scale to those of a matrix without shear.
void set_local_matrix(DagNode& node, const MMatrix& matrix) {
    double scale[3], m[3][3];
    for (unsigned i = 0; i < 3; ++i) {
        scale[i] = std::sqrt(matrix[i][0] * matrix[i][0] + matrix[i][1] * matrix[i][1] +
                             matrix[i][2] * matrix[i][2]);
        for (unsigned j = 0; j < 3; ++j)
            m[i][j] = scale[i] > 0 ? matrix[i][j] / scale[i] : 0.0;
    }
    if (matrix.det4x4() < 0) {
        scale[0] = -scale[0];
        for (double& cell : m[0])
            cell = -cell;
    }
    const double across = std::sqrt(m[0][0] * m[0][0] + m[0][1] * m[0][1]);
    const bool locked = across < 1e-9;
    const double rotation[3] = {
        locked ? std::atan2(-m[2][1], m[1][1]) : std::atan2(m[1][2], m[2][2]),
        std::atan2(-m[0][2], across), locked ? 0.0 : std::atan2(m[0][1], m[0][0])};
    const auto set = [&](const char* name, unsigned i, double value) {
        Slot& plug = *node.slot(name)->child(i);
        perform(graph::set_value_edit(plug, graph::PlugValue::of_double(value)), "parent",
                name_of(plug));
    };
    for (unsigned i = 0; i < 3; ++i) {
        set("translate", i, matrix[3][i]);
        set("rotate", i, rotation[i]);
        set("scale", i, scale[i]);
    }
}

/// Removes the new parent, which is named last, from the items. Returns null with -world.
DagNode* take_parent(Selection& items, const Flags& flags) {
    if (flags.has("world"))
        return nullptr;
    if (items.size() < 2)
        throw ScriptFault("parent needs children and a parent.");
    DagNode* parent = items.back().node->as_dag_node();
    if (!parent || parent->is_shape())
        throw ScriptFault("parent: \"" + name_of(*items.back().node) + "\" holds no children.");
    items.pop_back();
    return parent;
}

/// Moves a node below `parent`, or with -addObject instances it there. Unless -relative is given,
/// its world-space position is kept.
void set_parent(DagNode& child, DagNode* parent, const Flags& flags) {
    const std::string name = name_of(child);
    if (child.is_shape() && !flags.has("shape"))
        throw ScriptFault("parent: \"" + name +
                          "\" is a shape; move its transform, or use -shape.");
    if (parent && (parent == &child || child.is_ancestor_of(*parent)))
        throw ScriptFault("parent: \"" + name + "\" cannot stand below itself.");
    if (flags.has("addObject")) {
        if (!parent)
            throw ScriptFault("parent: -addObject needs a parent.");
        perform(graph::instance_edit(child, *parent), "parent", name);
        return;
    }
    const MMatrix local = graph::world_matrix(&child) * graph::world_matrix(parent).inverse();
    perform(graph::reparent_edit(child, parent), "parent", name);
    if (!flags.has("relative") && !child.is_shape())
        set_local_matrix(child, local);
}

Value parent(Invocation& call) {
    static const FlagTable table = {
        {"w", "world"}, {"r", "relative"}, {"s", "shape"}, {"add", "addObject"}};
    const Flags flags(call, table);
    Selection items = items_named(flags.names());
    DagNode* const new_parent = take_parent(items, flags);
    std::vector<Node*> moved;
    for (const SelectionItem& item : items) {
        DagNode* child = item.node->as_dag_node();
        if (!child)
            throw ScriptFault("parent: \"" + name_of(*item.node) +
                              "\" has no place in the hierarchy.");
        set_parent(*child, new_parent, flags);
        moved.push_back(child);
    }
    select_nodes(moved, "parent");
    StringArray names;
    for (Node* node : moved)
        names.push_back(name_of(*node));
    return names;
}

} // namespace

void add_node_commands(Interpreter& interpreter) {
    interpreter.add_command("createNode", create_node);
    interpreter.add_command("delete", remove);
    interpreter.add_command("rename", rename);
    interpreter.add_command("duplicate", duplicate);
    interpreter.add_command("parent", parent);
}

} // namespace host::script
