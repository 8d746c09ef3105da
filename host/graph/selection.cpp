#include "host/graph/selection.h"

#include "host/graph/scene.h"
#include "host/mesh/mesh.h"

#include <algorithm>
#include <cctype>

namespace host::graph {

Component::Component(ComponentKind kind, std::vector<int> ids)
    : Object(MFn::kComponent), kind_(kind), ids_(std::move(ids)) {
    std::sort(ids_.begin(), ids_.end());
    ids_.erase(std::unique(ids_.begin(), ids_.end()), ids_.end());
}
Component::~Component() = default;

namespace {

struct ComponentName {
    const char* text;
    ComponentKind kind;
};
constexpr ComponentName k_components[] = {{"vtx", ComponentKind::vertex},
                                          {"e", ComponentKind::edge},
                                          {"f", ComponentKind::face},
                                          {"map", ComponentKind::uv}};

bool has_wild_card(const std::string& text) {
    return text.find_first_of("*?") != std::string::npos;
}

bool fits(const char* pattern, const char* text) {
    for (; *pattern != '\0'; ++pattern, ++text) {
        if (*pattern == '*') {
            for (const char* rest = text;; ++rest) {
                if (fits(pattern + 1, rest))
                    return true;
                if (*rest == '\0')
                    return false;
            }
        }
        if (*text == '\0' || (*pattern != '?' && *pattern != *text))
            return false;
    }
    return *text == '\0';
}

/// Number of components of a kind in a mesh shape.
int component_count(DagNode& shape, ComponentKind kind) {
    MeshFace* face = shape.as_mesh();
    if (face == nullptr || !face->refresh() || face->mesh() == nullptr)
        return 0;
    const Mesh& mesh = *face->mesh();
    const int set = mesh.current_uv_set();
    switch (kind) {
    case ComponentKind::vertex:
        return static_cast<int>(mesh.connectivity().vertex_count());
    case ComponentKind::edge:
        return static_cast<int>(mesh.connectivity().edge_count());
    case ComponentKind::face:
        return static_cast<int>(mesh.connectivity().polygon_count());
    case ComponentKind::uv:
        return set < 0 ? 0 : static_cast<int>(mesh.uv_set(static_cast<uint32_t>(set)).u.size());
    }
    return 0;
}

/// Parses "[3]", "[0:7]" or "[*]" into ids. `text` begins with a bracket. Returns false on other
/// text or ids outside 0..count-1.
bool parse_range(const std::string& text, int count, std::vector<int>& ids) {
    if (text.back() != ']')
        return false;
    const std::string inner = text.substr(1, text.size() - 2);
    int first = 0;
    int last = count - 1;
    if (inner != "*") {
        const size_t colon = inner.find(':');
        const auto number = [](const std::string& digits, int& out) {
            if (digits.empty() || digits.size() > 9 ||
                !std::all_of(digits.begin(), digits.end(),
                             [](unsigned char c) { return std::isdigit(c) != 0; }))
                return false;
            out = std::stoi(digits);
            return true;
        };
        if (!number(inner.substr(0, colon), first))
            return false;
        last = first;
        if (colon != std::string::npos && inner.substr(colon + 1) != "*" &&
            !number(inner.substr(colon + 1), last))
            return false;
        if (colon != std::string::npos && inner.substr(colon + 1) == "*")
            last = count - 1;
        if (first > last || last >= count)
            return false;
    }
    for (int id = first; id <= last; ++id)
        ids.push_back(id);
    return !ids.empty();
}

/// The mesh shape whose components an item refers to: its node, or the node's first shape that is
/// not an intermediate object, which then takes the node's place.
DagNode* component_shape(SelectionItem& item) {
    DagNode* node = item.node->as_dag_node();
    if (node == nullptr || node->as_mesh() != nullptr)
        return node;
    for (DagNode* child : node->children())
        if (child->as_mesh() != nullptr && !child->is_intermediate()) {
            item.descend(*child);
            return child;
        }
    return nullptr;
}

/// Resolves the text after the first dot of a pattern, a component or a plug, into `item`.
bool add_part(SelectionItem& item, const std::string& part) {
    const size_t bracket = part.find('[');
    if (bracket != std::string::npos) {
        for (const ComponentName& name : k_components) {
            if (part.compare(0, bracket, name.text) != 0)
                continue;
            SelectionItem at_shape = item;
            DagNode* shape = component_shape(at_shape);
            std::vector<int> ids;
            if (shape == nullptr ||
                !parse_range(part.substr(bracket), component_count(*shape, name.kind), ids))
                return false;
            item = at_shape;
            item.component = new Component(name.kind, std::move(ids));
            return true;
        }
    }
    item.plug = item.node->find_plug(part, false);
    DagNode* const dag = item.node->as_dag_node();
    if (item.plug != nullptr || dag == nullptr)
        return item.plug != nullptr;
    // Attributes not found on a transform are looked up on its visible shape.
    for (DagNode* child : dag->children()) {
        if (!child->is_shape() || child->is_intermediate())
            continue;
        item.plug = child->find_plug(part, false);
        item.descend(*child);
        return item.plug != nullptr;
    }
    return false;
}

Selection match_nodes(const std::string& pattern) {
    Scene& scene = Scene::current();
    if (!has_wild_card(pattern))
        return scene.find_all(pattern);
    Selection found;
    const bool by_path = pattern.find('|') != std::string::npos;
    for (const Ref<Node>& node : scene.nodes()) {
        DagNode* dag = node->as_dag_node();
        if (dag == nullptr || (!by_path && scene.has_one_path(*dag))) {
            if (!by_path && fits(pattern.c_str(), node->name_text().c_str()))
                found.emplace_back(*node);
            continue;
        }
        for (const DagPath& path : dag->all_paths()) {
            std::string text = by_path ? full_name(path) : node->name_text();
            if (by_path && pattern.front() != '|')
                text.erase(0, 1);
            if (fits(pattern.c_str(), text.c_str()))
                found.emplace_back(path);
        }
    }
    return found;
}

std::vector<std::string> component_ranges(const Component& component) {
    static const char* const k_texts[] = {"vtx", "e", "f", "map"};
    const std::string head = std::string(".") + k_texts[static_cast<int>(component.kind())] + "[";
    std::vector<std::string> texts;
    const std::vector<int>& ids = component.ids();
    for (size_t i = 0; i < ids.size();) {
        size_t j = i + 1;
        while (j < ids.size() && ids[j] == ids[j - 1] + 1)
            ++j;
        std::string text = head + std::to_string(ids[i]);
        if (j - i > 1)
            text += ":" + std::to_string(ids[j - 1]);
        texts.push_back(text + "]");
        i = j;
    }
    return texts;
}

} // namespace

SelectionItem::SelectionItem(Node& node) : node(&node) {
    DagNode* const dag = node.as_dag_node();
    if (dag != nullptr && !Scene::current().has_one_path(*dag))
        path_ = dag->path();
}

SelectionItem::SelectionItem(const DagPath& path) : node(path.back().get()) {
    if (!Scene::current().has_one_path(*path.back()))
        path_ = path;
}

DagPath SelectionItem::path() const {
    return path_.empty() && is_dag() ? node->as_dag_node()->path() : path_;
}

void SelectionItem::descend(DagNode& child) {
    if (path_.empty() && child.parents().size() > 1)
        path_ = path();
    if (!path_.empty())
        path_.emplace_back(&child);
    node = &child;
}

bool SelectionItem::same_thing(const SelectionItem& other) const {
    return node == other.node && plug == other.plug && component == other.component &&
           (path_ == other.path_ || path() == other.path());
}

Selection resolve(const std::string& pattern) {
    const size_t dot = pattern.find('.');
    Selection found = match_nodes(pattern.substr(0, dot));
    if (dot == std::string::npos)
        return found;
    Selection parts;
    for (SelectionItem& item : found)
        if (add_part(item, pattern.substr(dot + 1)))
            parts.push_back(std::move(item));
    return parts;
}

std::vector<std::string> names_of(const SelectionItem& item, bool full) {
    const Scene& scene = Scene::current();
    std::string name = item.node->name_text();
    if (item.is_dag())
        name = full ? full_name(item.path()) : scene.partial_name(item);
    if (item.plug != nullptr)
        return {name + "." + item.plug->path()};
    if (!item.component)
        return {name};
    // Components are listed with the name of the transform, as users expect.
    DagPath above = full ? DagPath() : item.path();
    if (above.size() > 1) {
        above.pop_back();
        SelectionItem transform(above);
        if (component_shape(transform) == item.node.get())
            name = scene.partial_name(above);
    }
    std::vector<std::string> names = component_ranges(*item.component);
    for (std::string& text : names)
        text = name + text;
    return names;
}

} // namespace host::graph
