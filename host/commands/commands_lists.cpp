#include "host/commands/commands.h"
#include "host/graph/edits.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

#include <algorithm>
#include <unordered_set>

namespace host::script {

namespace {

using graph::DagNode;
using graph::Node;
using graph::Selection;
using graph::SelectionItem;
using graph::Slot;

void append(StringArray& names, const StringArray& more) {
    names.insert(names.end(), more.begin(), more.end());
}

/// Whether a node is of a type, or belongs to the group "dagNode" or "shape".
bool is_type(Node& node, const std::string& type) {
    if (node.node_type().name == type)
        return true;
    const DagNode* dag = node.as_dag_node();
    if (type == "dagNode")
        return dag != nullptr;
    if (type == "shape")
        return dag && dag->is_shape();
    return false;
}

// --- select -------------------------------------------------------------------------------------

bool holds(const Selection& selection, const SelectionItem& item) {
    return std::any_of(selection.begin(), selection.end(),
                       [&](const SelectionItem& other) { return other.same_thing(item); });
}

void drop(Selection& selection, const SelectionItem& item) {
    selection.erase(std::remove_if(selection.begin(), selection.end(),
                                   [&](const SelectionItem& o) { return o.same_thing(item); }),
                    selection.end());
}

Value select(Invocation& call) {
    static const FlagTable table = {{"r", "replace"}, {"add", "add"},     {"d", "deselect"},
                                    {"cl", "clear"},  {"tgl", "toggle"},  {"ne", "noExpand"},
                                    {"all", "all"},   {"hi", "hierarchy"}};
    const Flags flags(call, table);
    graph::Scene& scene = graph::Scene::current();
    const bool keep = flags.has("add") || flags.has("deselect") || flags.has("toggle");
    Selection selection = keep ? scene.selection() : Selection();
    if (flags.has("clear")) {
        perform(graph::select_edit(Selection()), "select", "clear");
        return Value();
    }
    if (flags.operands().empty() && !flags.has("all"))
        throw ScriptFault("select needs the name of an object.");
    Selection items;
    if (flags.has("all")) {
        for (DagNode* node : scene.top_level())
            if (!node->is_default)
                items.push_back(graph::SelectionItem(*node));
    } else {
        items = items_named(flags.names());
    }
    for (size_t i = 0; flags.has("hierarchy") && i < items.size(); ++i)
        if (DagNode* dag = items[i].node->as_dag_node())
            for (DagNode* child : dag->children())
                items.push_back(graph::SelectionItem(*child));
    for (const SelectionItem& item : items) {
        const bool there = holds(selection, item);
        if (there && (flags.has("deselect") || flags.has("toggle")))
            drop(selection, item);
        else if (!there && !flags.has("deselect"))
            selection.push_back(item);
    }
    perform(graph::select_edit(selection), "select", "selection");
    return Value();
}

// --- ls -----------------------------------------------------------------------------------------

struct Filter {
    StringArray types;
    bool shapes, dag_only, no_intermediate, intermediate;

    explicit Filter(const Flags& flags)
        : shapes(flags.has("shapes")), dag_only(flags.has("dagObjects")),
          no_intermediate(flags.has("noIntermediate")),
          intermediate(flags.has("intermediateObjects")) {
        for (const auto& use : flags.uses("type"))
            types.push_back(use[0].to_string());
    }

    bool passes(const SelectionItem& item) const {
        DagNode* dag = item.node->as_dag_node();
        if (dag_only && !dag)
            return false;
        if (shapes && !(dag && dag->is_shape()))
            return false;
        if (no_intermediate && dag && dag->is_intermediate())
            return false;
        if (intermediate && !(dag && dag->is_intermediate()))
            return false;
        if (types.empty())
            return true;
        return std::any_of(types.begin(), types.end(),
                           [&](const std::string& type) { return is_type(*item.node, type); });
    }
};

/// The items that `ls` lists before it filters them.
Selection candidates(const Flags& flags) {
    graph::Scene& scene = graph::Scene::current();
    Selection items;
    if (flags.has("selection")) {
        items = scene.selection();
    } else if (!flags.operands().empty()) {
        // A name without a match is not an error here.
        for (const std::string& name : flags.names()) {
            const Selection found = graph::resolve(name);
            items.insert(items.end(), found.begin(), found.end());
        }
    } else {
        for (const auto& node : scene.nodes())
            items.push_back(graph::SelectionItem(*node));
        return items;
    }
    if (!flags.has("dagObjects"))
        return items;
    Selection below;
    for (const SelectionItem& item : items)
        if (DagNode* dag = item.node->as_dag_node())
            graph::walk_down(*dag, [&](DagNode& node) {
                below.push_back(graph::SelectionItem(node));
                return true;
            });
    return below;
}

Value list(Invocation& call) {
    static const FlagTable table = {{"sl", "selection"},   {"typ", "type", "s"},
                                    {"l", "long"},         {"s", "shapes"},
                                    {"dag", "dagObjects"}, {"ni", "noIntermediate"},
                                    {"o", "objectsOnly"},  {"io", "intermediateObjects"},
                                    {"tl", "tail", "i"},   {"hd", "head", "i"}};
    const Flags flags(call, table);
    const Filter filter(flags);
    StringArray names;
    for (SelectionItem item : candidates(flags)) {
        if (!filter.passes(item))
            continue;
        if (flags.has("objectsOnly"))
            item = graph::SelectionItem(*item.node);
        append(names, graph::names_of(item, flags.has("long")));
    }
    const auto limit = [&](const char* flag) {
        return size_t(std::clamp(flags.integer(flag, 0), 0, int(names.size())));
    };
    if (flags.has("head"))
        names.resize(limit("head"));
    if (flags.has("tail"))
        names.erase(names.begin(), names.end() - long(limit("tail")));
    return names;
}

Value object_exists(Invocation& call) {
    require_arguments(call, 1, 1);
    const std::string name = call.arguments[0].to_string();
    return !name.empty() && !graph::resolve(name).empty();
}

Value node_type(Invocation& call) {
    require_arguments(call, 1, 1);
    const Selection items = items_named({call.arguments[0].to_string()});
    return items[0].node->node_type().name;
}

Value object_type(Invocation& call) {
    static const FlagTable table = {{"isa", "isAType", "s"}, {"i", "isType", "s"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    Node& node = *items_named(flags.names())[0].node;
    if (flags.has("isAType"))
        return is_type(node, flags.text("isAType", ""));
    if (flags.has("isType"))
        return node.node_type().name == flags.text("isType", "");
    return node.node_type().name;
}

// --- relations ----------------------------------------------------------------------------------

struct ConnectionLister {
    bool sources, destinations, plugs, pairs;
    std::string type;
    StringArray names;

    void add(Slot& own, Slot& other) {
        if (!type.empty() && !is_type(other.node(), type))
            return;
        if (pairs)
            names.push_back(name_of(own));
        names.push_back(plugs ? name_of(other) : name_of(other.node()));
    }
    void walk(Slot& slot) {
        if (sources && slot.source())
            add(slot, *slot.source());
        if (destinations)
            for (Slot* fed : slot.destinations())
                add(slot, *fed);
        for (const auto& below : slot.below())
            walk(*below);
    }
};

Value list_connections(Invocation& call) {
    static const FlagTable table = {{"s", "source", "b"},
                                    {"d", "destination", "b"},
                                    {"p", "plugs", "b"},
                                    {"c", "connections", "b"},
                                    {"t", "type", "s"}};
    const Flags flags(call, table);
    ConnectionLister lister{flags.boolean("source", true), flags.boolean("destination", true),
                            flags.boolean("plugs", false), flags.boolean("connections", false),
                            flags.text("type", ""),        {}};
    StringArray names = flags.names();
    if (names.empty())
        for (const SelectionItem& item : graph::Scene::current().selection())
            append(names, graph::names_of(item));
    for (const std::string& name : names) {
        if (name.find('.') != std::string::npos) {
            lister.walk(plug_named(name));
            continue;
        }
        for (const SelectionItem& item : items_named({name}))
            for (Slot* slot : item.node->slots())
                lister.walk(*slot);
    }
    return lister.names;
}

Value list_history(Invocation& call) {
    static const FlagTable table = {{"lv", "levels", "i"}};
    const Flags flags(call, table);
    const int levels = flags.integer("levels", 0);
    StringArray names;
    std::unordered_set<const Node*> seen;
    for (const SelectionItem& item : items_named(flags.names())) {
        Node* start = item.node.get();
        DagNode* dag = start->as_dag_node();
        for (DagNode* child : dag && !dag->is_shape() ? dag->children() : std::vector<DagNode*>())
            if (child->is_shape() && !child->is_intermediate())
                start = child;
        // Preorder, depth first: the node itself, then the nodes that feed it.
        std::vector<std::pair<Node*, int>> waiting = {{start, 1}};
        while (!waiting.empty()) {
            const auto [node, level] = waiting.back();
            waiting.pop_back();
            if (!seen.insert(node).second)
                continue;
            names.push_back(name_of(*node));
            if (levels > 0 && level >= levels)
                continue;
            std::vector<Node*> sources;
            std::vector<Slot*> stack(node->slots().begin(), node->slots().end());
            while (!stack.empty()) {
                Slot* slot = stack.back();
                stack.pop_back();
                if (slot->source())
                    sources.push_back(&slot->source()->node());
                for (const auto& below : slot->below())
                    stack.push_back(below.get());
            }
            for (Node* source : sources)
                waiting.emplace_back(source, level + 1);
        }
    }
    return names;
}

Value list_relatives(Invocation& call) {
    static const FlagTable table = {
        {"s", "shapes"},      {"p", "parent"},          {"c", "children"},
        {"f", "fullPath"},    {"pa", "path"},           {"ni", "noIntermediate"},
        {"typ", "type", "s"}, {"ad", "allDescendents"}, {"ap", "allParents"}};
    const Flags flags(call, table);
    StringArray names;
    std::vector<DagNode*> found;
    for (const SelectionItem& item : items_named(flags.names())) {
        DagNode* dag = item.node->as_dag_node();
        if (!dag)
            continue;
        if (flags.has("parent") || flags.has("allParents")) {
            const auto& parents = dag->parents();
            found.insert(found.end(), parents.begin(),
                         flags.has("parent") && !parents.empty() ? parents.begin() + 1
                                                                 : parents.end());
            continue;
        }
        const size_t first = found.size();
        found.insert(found.end(), dag->children().begin(), dag->children().end());
        for (size_t i = first; flags.has("allDescendents") && i < found.size(); ++i) {
            const std::vector<DagNode*> below = found[i]->children();
            found.insert(found.end(), below.begin(), below.end());
        }
    }
    const std::string type = flags.text("type", "");
    for (DagNode* node : found) {
        if (flags.has("shapes") && !node->is_shape())
            continue;
        if (flags.has("noIntermediate") && node->is_intermediate())
            continue;
        if (!type.empty() && !is_type(*node, type))
            continue;
        names.push_back(flags.has("fullPath") ? full_name_of(*node) : name_of(*node));
    }
    return names;
}

} // namespace

void add_list_commands(Interpreter& interpreter) {
    interpreter.add_command("select", select);
    interpreter.add_command("ls", list);
    interpreter.add_command("objExists", object_exists);
    interpreter.add_command("nodeType", node_type);
    interpreter.add_command("objectType", object_type);
    interpreter.add_command("listConnections", list_connections);
    interpreter.add_command("listHistory", list_history);
    interpreter.add_command("listRelatives", list_relatives);
}

} // namespace host::script
