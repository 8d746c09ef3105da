#include "host/graph/scene.h"

#include "host/base/strictness.h"
#include "host/graph/callbacks.h"
#include "host/graph/plugin_nodes.h"
#include "host/graph/standard_types.h"
#include "host/graph/undo.h"

#include <algorithm>
#include <new>

namespace host::graph {

Scene& Scene::current() {
    // Never destroyed: at process exit, plug-in code that its nodes refer to may already be
    // unloaded.
    static Scene* const scene = [] {
        auto* made = new Scene;
        add_standard_types(*made);
        made->make_default_nodes();
        return made;
    }();
    return *scene;
}

Scene::Scene() = default;

// === Types ===================================================================================

MStatus Scene::add_type(const NodeTypeRef& type) {
    if (type->name.empty() || types_by_name_.count(type->name) != 0 ||
        (type->id != 0 && types_by_id_.count(type->id) != 0))
        return MS::kInvalidParameter;
    types_.push_back(type);
    types_by_name_[type->name] = type;
    if (type->id != 0)
        types_by_id_[type->id] = type;
    return MS::kSuccess;
}

MStatus Scene::remove_type(const std::string& name) {
    const NodeTypeRef type = find_type(name);
    if (!type)
        return MS::kInvalidParameter;
    types_by_name_.erase(name);
    types_by_id_.erase(type->id);
    types_.erase(std::find(types_.begin(), types_.end(), type));
    type->is_unknown = true;
    type->creator = nullptr;
    type->compute = nullptr;
    for (Node* node : type->instances) {
        // Callbacks on the node were registered by the plug-in's instance.
        if (is_strict())
            Callbacks::current().abandon(*node, type->plugin);
        else
            Callbacks::current().forget(*node);
        PluginNodes::destroy_instance(*node);
        node->set_type(MFn::kUnknown);
    }
    return MS::kSuccess;
}

NodeTypeRef Scene::find_type(const std::string& name) const {
    const auto found = types_by_name_.find(name);
    return found == types_by_name_.end() ? nullptr : found->second;
}

NodeTypeRef Scene::find_type(unsigned int id) const {
    const auto found = types_by_id_.find(id);
    return found == types_by_id_.end() ? nullptr : found->second;
}

// === Nodes ===================================================================================

Ref<Node> Scene::make_node(const NodeTypeRef& type, const std::string& name) {
    if (!type)
        return {};
    Ref<Node> node;
    if (type->make != nullptr)
        node = type->make(type);
    else if (type->dag)
        node = new DagNode(type);
    else
        node = new Node(type);
    if (name.empty())
        node->name_ = unused_name((type->base_name.empty() ? type->name : type->base_name) + "1");
    else if (type->shape)
        node->name_ = legal_name(name); // made unique by add(), because that depends on its parent
    else
        node->name_ = free_name(legal_name(name), node.get(), nullptr);
    if (type->creator != nullptr && !PluginNodes::create_instance(*node))
        return {};
    return node;
}

MStatus Scene::add(Node& node, DagNode* parent) {
    DagNode* dag = node.as_dag_node();
    if (node.in_scene_ || (parent != nullptr && (dag == nullptr || !parent->in_scene_)))
        return MS::kFailure;
    if (dag != nullptr && parent == nullptr && dag->is_shape())
        return MS::kInvalidParameter; // shapes cannot be at the top level
    node.name_ = free_name(node.name_, &node, parent);
    enter(node);
    try {
        if (dag != nullptr)
            attach(*dag, parent, SIZE_MAX);
    } catch (const std::bad_alloc&) {
        leave(node);
        throw;
    }
    is_modified = true;
    return MS::kSuccess;
}

/// If memory runs out, the scene is unchanged.
void Scene::enter(Node& node) {
    if (node.order_in_scene_ == 0)
        node.order_in_scene_ = ++entered_count_;
    const auto place = entered_.emplace(node.order_in_scene_, &node).first;
    try {
        by_name_[node.name_].push_back(&node);
    } catch (const std::bad_alloc&) {
        entered_.erase(place);
        unindex(node);
        throw;
    }
    node.in_scene_ = true;
    list_is_stale_ = true;
}

void Scene::leave(Node& node) {
    node.in_scene_ = false;
    unindex(node);
    list_is_stale_ = true;
    entered_.erase(node.order_in_scene_);
}

void Scene::attach(DagNode& node, DagNode* parent, size_t index, size_t rank) {
    std::vector<DagNode*>& siblings = parent == nullptr ? top_level_ : parent->children_;
    index = std::min(index, siblings.size());
    node.parents_.reserve(node.parents_.size() + 1); // so that nothing fails half way
    siblings.insert(siblings.begin() + static_cast<std::ptrdiff_t>(index), &node);
    if (parent == nullptr)
        return;
    extra_parents_ += node.parents_.empty() ? 0 : 1;
    node.parents_.insert(node.parents_.begin() +
                             static_cast<std::ptrdiff_t>(std::min(rank, node.parents_.size())),
                         parent);
}

void Scene::detach(DagNode& node, DagNode* parent) {
    std::vector<DagNode*>& siblings = parent == nullptr ? top_level_ : parent->children_;
    const auto at = std::find(siblings.begin(), siblings.end(), &node);
    if (at != siblings.end())
        siblings.erase(at);
    if (parent == nullptr)
        return;
    node.parents_.erase(std::find(node.parents_.begin(), node.parents_.end(), parent));
    extra_parents_ -= node.parents_.empty() ? 0 : 1;
}

void Scene::collect_subtree(Node& node, std::vector<Ref<Node>>& nodes) const {
    DagNode* dag = node.as_dag_node();
    if (dag == nullptr) {
        nodes.push_back(&node);
        return;
    }
    const auto holds = [&](const DagNode* one) {
        return std::any_of(nodes.begin(), nodes.end(),
                           [&](const Ref<Node>& held) { return held.get() == one; });
    };
    walk_down(*dag, [&](DagNode& one) {
        // A node with another parent outside the removed hierarchy stays in the scene.
        const bool goes = &one == dag || one.parents_.size() == 1 ||
                          std::all_of(one.parents_.begin(), one.parents_.end(), holds);
        if (goes)
            nodes.push_back(&one);
        return goes;
    });
}

Removal Scene::remove(Node& node, RemovalCause cause) {
    Removal removal;
    if (!node.in_scene_)
        return removal;
    const Ref<Node> keep(&node);
    std::vector<Ref<Node>> nodes;
    collect_subtree(node, nodes);
    if (cause == RemovalCause::deletion || !is_strict())
        for (const Ref<Node>& one : nodes)
            Callbacks::current().fire_pre_removal(*one);

    removal.nodes = nodes;
    for (const Ref<Node>& one : nodes)
        break_connections(*one, removal.connections);
    for (auto one = nodes.rbegin(); one != nodes.rend(); ++one) {
        if (DagNode* dag = (*one)->as_dag_node()) {
            std::vector<DagNode*> parents = dag->parents_;
            if (parents.empty())
                parents.push_back(nullptr);
            // Children that stay in the scene are only detached from this parent.
            for (DagNode* child : std::vector<DagNode*>(dag->children_))
                detach_recorded(*child, dag, removal);
            for (DagNode* parent : parents)
                detach_recorded(*dag, parent, removal);
        }
        leave(**one);
    }
    Selection kept;
    for (const SelectionItem& item : selection_)
        if (item.node->in_scene_)
            kept.push_back(item);
    if (kept.size() != selection_.size()) {
        removal.selection_changed = true;
        removal.selection = selection_;
        selection_ = std::move(kept);
    }
    is_modified = true;
    return removal;
}

void Scene::detach_recorded(DagNode& child, DagNode* parent, Removal& removal) {
    const std::vector<DagNode*>& siblings = parent == nullptr ? top_level_ : parent->children_;
    const auto at = std::find(siblings.begin(), siblings.end(), &child);
    if (at == siblings.end())
        return;
    const auto& parents = child.parents_;
    const auto rank = std::find(parents.begin(), parents.end(), parent) - parents.begin();
    removal.places.push_back(
        {parent, &child, static_cast<size_t>(at - siblings.begin()), static_cast<size_t>(rank)});
    detach(child, parent);
}

void Scene::break_connections(Node& node, std::vector<BrokenConnection>& broken) {
    const std::function<void(Slot&)> visit = [&](Slot& slot) {
        const auto cut = [&](Slot& source, Slot& destination) {
            broken.push_back({&source.node(), &destination.node(), &source, &destination,
                              destination.links().own_value});
            sever(source, destination);
        };
        if (slot.source() != nullptr)
            cut(*slot.source(), slot);
        for (Slot* destination : std::vector<Slot*>(slot.destinations()))
            cut(slot, *destination);
        for (size_t i = 0; i < slot.below().size(); ++i)
            visit(*slot.below()[i]);
    };
    for (Slot* slot : std::vector<Slot*>(node.slots()))
        visit(*slot);
}

void Scene::restore(const Removal& removal) {
    for (const Ref<Node>& node : removal.nodes)
        if (!node->in_scene_)
            enter(*node);
    for (auto place = removal.places.rbegin(); place != removal.places.rend(); ++place)
        attach(*place->child, place->parent.get(), place->index, place->rank);
    for (auto one = removal.connections.rbegin(); one != removal.connections.rend(); ++one) {
        if (one->destination->source() != nullptr)
            continue;
        join(*one->source, *one->destination);
        one->destination->links().own_value = one->own_value;
    }
    if (removal.selection_changed)
        selection_ = removal.selection;
    is_modified = true;
}

const std::vector<Ref<Node>>& Scene::nodes() const {
    if (list_is_stale_) {
        list_.clear();
        list_.reserve(entered_.size());
        for (const auto& entry : entered_)
            list_.push_back(entry.second);
        list_is_stale_ = false;
    }
    return list_;
}

void Scene::clear() {
    UndoQueue::current().clear();
    selection_.clear();
    while (!entered_.empty()) {
        const Ref<Node> node = entered_.begin()->second;
        remove(*node);
    }
    next_number_.clear();
    make_default_nodes();
    records_history = true;
    UndoQueue::current().mark_saved();
}

// === Hierarchy and connections ===============================================================

void Scene::join(Slot& source, Slot& destination) {
    Slot::link(source, destination);
    destination.links().own_value = PlugValue();
    destination.dirty = true;
    announce_change(destination);
    PluginNodes::connection_made(source, destination);
}

void Scene::sever(Slot& source, Slot& destination) {
    PlugValue own_value = std::move(destination.links().own_value);
    destination.links().own_value = PlugValue();
    Slot::unlink(source, destination);
    if (!own_value.is_none())
        destination.value = own_value;
    destination.was_set = true;
    destination.dirty = false;
    announce_change(destination);
    PluginNodes::connection_broken(source, destination);
}

MStatus Scene::connect(Slot& source, Slot& destination) {
    if (!can_connect(source, destination) || &source == &destination)
        return MS::kInvalidParameter;
    for (const Slot* at = &source; at != nullptr; at = at->parent())
        if (!at->attribute().flags.readable || !at->attribute().flags.connectable)
            return MS::kInvalidParameter;
    for (const Slot* at = &destination; at != nullptr; at = at->parent())
        if (!at->attribute().flags.connectable)
            return MS::kInvalidParameter;
    const MStatus status = may_set(destination);
    if (!status)
        return status;
    if (destination.fed_below() > 0)
        return MS::kFailure;
    join(source, destination);
    is_modified = true;
    return MS::kSuccess;
}

MStatus Scene::disconnect(Slot& source, Slot& destination) {
    if (destination.source() != &source)
        return MS::kFailure;
    if (destination.locked)
        return MS::kFailure;
    sever(source, destination);
    is_modified = true;
    return MS::kSuccess;
}

MStatus Scene::reparent(DagNode& node, DagNode* parent, size_t index) {
    if (!node.in_scene_ || (parent != nullptr && !parent->in_scene_))
        return MS::kFailure;
    if (parent == &node || (parent != nullptr && node.is_ancestor_of(*parent)) ||
        (parent != nullptr && parent->is_shape()) || (parent == nullptr && node.is_shape()))
        return MS::kInvalidParameter;
    detach(node, node.parents_.empty() ? nullptr : node.parents_.front());
    attach(node, parent, index, 0); // first, so that the node's default path leads through it
    if (!name_is_free(node.name_, &node, parent))
        rename(node, node.name_);
    is_modified = true;
    return MS::kSuccess;
}

MStatus Scene::add_instance(DagNode& node, DagNode& parent) {
    if (&node == &parent || node.is_ancestor_of(parent) || parent.is_shape() ||
        std::find(node.parents_.begin(), node.parents_.end(), &parent) != node.parents_.end())
        return MS::kInvalidParameter;
    attach(node, &parent, SIZE_MAX);
    is_modified = true;
    return MS::kSuccess;
}

MStatus Scene::remove_instance(DagNode& node, DagNode& parent) {
    if (node.parents_.size() < 2)
        return MS::kFailure;
    detach(node, &parent);
    is_modified = true;
    return MS::kSuccess;
}

// === Edits ============================================================================

MStatus Scene::perform(std::unique_ptr<Edit> edit) {
    const MStatus status = edit->redo();
    if (status) {
        is_modified = is_modified || edit->changes_scene();
        UndoQueue::current().record(std::move(edit));
    }
    return status;
}

MStatus Scene::perform_api_call(std::unique_ptr<Edit> edit) {
    if (!is_strict())
        return perform(std::move(edit));
    const MStatus status = edit->redo();
    is_modified = is_modified || (status && edit->changes_scene());
    return status;
}

void Scene::make_default_nodes() {
    struct Camera {
        const char* name;
        double at[3];
        double turn[3]; // degrees
        bool orthographic;
    };
    static const Camera k_cameras[] = {
        {"persp", {28, 21, 28}, {-27.9383527296, 45, 0}, false},
        {"top", {0, 100.1, 0}, {-90, 0, 0}, true},
        {"front", {0, 0, 100.1}, {0, 0, 0}, true},
        {"side", {100.1, 0, 0}, {0, 90, 0}, true},
    };
    const DagAttributes& a = dag_attributes();
    for (const Camera& camera : k_cameras) {
        const Ref<Node> transform = make_node(find_type("transform"), camera.name);
        const Ref<Node> shape = make_node(find_type("camera"), std::string(camera.name) + "Shape");
        transform->is_default = shape->is_default = true;
        add(*transform, nullptr);
        add(*shape, transform->as_dag_node());
        for (unsigned int i = 0; i < 3; ++i) {
            set_value(*transform->slot(*a.translate)->child(i), PlugValue::of_double(camera.at[i]));
            set_value(*transform->slot(*a.rotate)->child(i),
                      PlugValue::of_double(camera.turn[i] * k_degree));
        }
        set_value(*transform->slot(*a.visibility), PlugValue::of_bool(false));
        set_value(*shape->slot("orthographic"), PlugValue::of_bool(camera.orthographic));
    }
    is_modified = false;
}

} // namespace host::graph
